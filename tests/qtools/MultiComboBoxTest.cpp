#include "Pictures.h"

#include <Lodex/qtools/LQMultiComboBox.h>

#include <gtest/gtest.h>

#include <QAbstractItemView>
#include <QDir>
#include <QHelpEvent>
#include <QSignalSpy>
#include <QTest>
#include <QToolTip>
#include <QWheelEvent>

using Lodex::LQMultiComboBox;

namespace {

LQMultiComboBox* filled(LQMultiComboBox& box, const QStringList& names, bool multi = false)
{
    box.setMultiSelection(multi);
    for (const QString& name : names)
        box.insertItem(name);
    return &box;
}

QPoint row_centre(const LQMultiComboBox& box, int row)
{
    return box.view()->visualRect(box.model()->index(row, 0)).center();
}

void click_row(const LQMultiComboBox& box, int row)
{
    QTest::mouseClick(box.view()->viewport(), Qt::LeftButton, {}, row_centre(box, row));
}

/// Counts the pixels that differ between two pictures of one size.
int differing_pixels(const QImage& a, const QImage& b)
{
    int count = 0;
    for (int y = 0; y < a.height(); ++y) {
        for (int x = 0; x < a.width(); ++x)
            count += a.pixel(x, y) != b.pixel(x, y);
    }
    return count;
}

} // namespace

TEST(MultiComboBox, SelectsNothingByItself)
{
    LQMultiComboBox box;
    QSignalSpy selected(&box, &LQMultiComboBox::selectionChanged);
    QSignalSpy index(&box, &QComboBox::currentIndexChanged);
    filled(box, {"A", "B"});
    EXPECT_EQ(box.items(), QStringList({"A", "B"}));
    EXPECT_EQ(box.currentIndex(), -1);
    EXPECT_TRUE(box.currentText().isEmpty());
    EXPECT_TRUE(box.selectedItems().isEmpty());
    box.addItem("C"); // what the toolkit offers besides
    EXPECT_EQ(box.currentIndex(), -1);
    EXPECT_EQ(selected.count(), 0);
    EXPECT_EQ(index.count(), 0);
}

TEST(MultiComboBox, SingleSelectionHoldsOneEntry)
{
    LQMultiComboBox box;
    filled(box, {"A", "B", "C"});
    QSignalSpy selected(&box, &LQMultiComboBox::selectionChanged);
    box.setSelected(1, true);
    EXPECT_EQ(box.currentText(), "B");
    EXPECT_EQ(box.currentIndex(), 1);
    EXPECT_EQ(selected.count(), 1);
    box.setSelected(1, true);
    EXPECT_EQ(selected.count(), 1) << "nothing changed";
    box.setSelected(2, true);
    EXPECT_EQ(box.selectedItems(), QStringList("C"));
    EXPECT_EQ(selected.count(), 2);
    box.setSelected(0, false);
    EXPECT_EQ(box.currentText(), "C") << "unselecting another entry keeps this one";
    box.setSelected(2, false);
    EXPECT_EQ(box.currentIndex(), -1);
    EXPECT_EQ(selected.count(), 3);
    box.setSelected(-1, true);
    box.setSelected(3, true);
    EXPECT_EQ(box.currentIndex(), -1);
    box.setCurrentIndex(0);
    EXPECT_EQ(box.selectedItems(), QStringList("A"));
    EXPECT_EQ(selected.count(), 4);
    EXPECT_TRUE(box.isSelected(0));
    EXPECT_FALSE(box.isSelected(1));
    EXPECT_FALSE(box.isSelected(-1));
}

TEST(MultiComboBox, SetSelectedItemsTakesTheFirstNameThatIsThere)
{
    LQMultiComboBox box;
    filled(box, {"A", "B", "C"});
    box.setSelectedItems({"X", "C", "A"});
    EXPECT_EQ(box.currentText(), "C");
    box.setSelectedItems({"X"});
    EXPECT_EQ(box.currentIndex(), -1);
    EXPECT_TRUE(box.currentText().isEmpty());
}

TEST(MultiComboBox, MultipleSelectionJoinsInListOrder)
{
    LQMultiComboBox box;
    filled(box, {"A", "B b", "C"}, true);
    QSignalSpy selected(&box, &LQMultiComboBox::selectionChanged);
    box.setSelectedItems({"C", "A", "nowhere"});
    EXPECT_EQ(box.currentText(), "A+C");
    EXPECT_EQ(box.selectedItems(), QStringList({"A", "C"}));
    EXPECT_EQ(selected.count(), 1) << "once for the whole change";
    box.setSelected(1, true);
    EXPECT_EQ(box.currentText(), "A+B b+C");
    box.setSelected(0, false);
    EXPECT_EQ(box.currentText(), "B b+C");
    EXPECT_EQ(box.currentIndex(), 1) << "the first selected entry";
    EXPECT_EQ(selected.count(), 3);
    box.setSelectedItems({"C", "B b"});
    EXPECT_EQ(selected.count(), 3) << "the same set";
    box.setSelectedItems({});
    EXPECT_TRUE(box.currentText().isEmpty());
    EXPECT_EQ(box.currentIndex(), -1);
    EXPECT_EQ(selected.count(), 4);
}

TEST(MultiComboBox, SwitchingTheModeKeepsTheFirstSelectedEntry)
{
    LQMultiComboBox box;
    filled(box, {"A", "B", "C"}, true);
    box.setSelectedItems({"B", "C"});
    QSignalSpy selected(&box, &LQMultiComboBox::selectionChanged);
    box.setMultiSelection(false);
    EXPECT_EQ(box.selectedItems(), QStringList("B"));
    EXPECT_EQ(selected.count(), 1);
    EXPECT_FALSE(box.itemData(2, Qt::CheckStateRole).isValid()) << "no check marks left";
    box.setMultiSelection(true);
    EXPECT_EQ(box.selectedItems(), QStringList("B"));
    EXPECT_EQ(selected.count(), 1);
}

TEST(MultiComboBox, InsertingBeforeTheSelectionKeepsIt)
{
    for (const bool multi : {false, true}) {
        LQMultiComboBox box;
        filled(box, {"B", "C"}, multi);
        box.setSelectedItems({"C"});
        QSignalSpy selected(&box, &LQMultiComboBox::selectionChanged);
        box.insertItem("A", 0);
        EXPECT_EQ(box.items(), QStringList({"A", "B", "C"}));
        EXPECT_EQ(box.selectedItems(), QStringList("C"));
        EXPECT_EQ(box.currentIndex(), 2);
        box.insertItem("D", -1);
        EXPECT_EQ(box.itemText(3), "D");
        box.removeItem(0);
        EXPECT_EQ(box.selectedItems(), QStringList("C"));
        EXPECT_EQ(selected.count(), 0);
    }
}

TEST(MultiComboBox, RemovingTheSelectedEntrySelectsNoOther)
{
    for (const bool multi : {false, true}) {
        LQMultiComboBox box;
        filled(box, {"A", "B", "C"}, multi);
        box.setSelectedItems({"B"});
        QSignalSpy selected(&box, &LQMultiComboBox::selectionChanged);
        box.removeItem(1);
        EXPECT_EQ(box.currentIndex(), -1);
        EXPECT_TRUE(box.currentText().isEmpty());
        EXPECT_EQ(selected.count(), 1);
        box.removeItem(7);
        EXPECT_EQ(box.count(), 2);
        box.setSelectedItems({"C"});
        box.clear();
        EXPECT_EQ(box.count(), 0);
        EXPECT_TRUE(box.currentText().isEmpty());
        EXPECT_EQ(selected.count(), 3);
    }
}

TEST(MultiComboBox, RefillIsSilentWhenTheSelectionComesBack)
{
    for (const bool multi : {false, true}) {
        LQMultiComboBox box;
        filled(box, {"A", "B"}, multi);
        box.setSelectedItems({"B"});
        QSignalSpy selected(&box, &LQMultiComboBox::selectionChanged);
        QSignalSpy text(&box, &QComboBox::currentTextChanged);
        box.beginRefill();
        box.beginRefill();
        box.clear();
        filled(box, {"C", "B", "A"}, multi);
        box.setSelectedItems({"B"});
        box.endRefill();
        EXPECT_EQ(selected.count(), 0);
        box.endRefill();
        EXPECT_EQ(selected.count(), 0);
        EXPECT_EQ(text.count(), 0);
        EXPECT_EQ(box.currentText(), "B");

        box.beginRefill();
        box.clear();
        box.insertItem("A");
        box.endRefill();
        EXPECT_EQ(selected.count(), 1);
        EXPECT_EQ(text.count(), 1);
        EXPECT_EQ(text.at(0).at(0).toString(), "");
        box.endRefill(); // one too many does no harm
        EXPECT_EQ(selected.count(), 1);
    }
}

TEST(MultiComboBox, RefillTellsTheNewIndexAndTextOnce)
{
    LQMultiComboBox box;
    filled(box, {"A", "B"});
    box.setSelectedItems({"A"});
    QSignalSpy selected(&box, &LQMultiComboBox::selectionChanged);
    QSignalSpy index(&box, &QComboBox::currentIndexChanged);
    QSignalSpy text(&box, &QComboBox::currentTextChanged);
    box.beginRefill();
    box.clear();
    filled(box, {"B", "C"});
    box.setSelectedItems({"C"});
    box.endRefill();
    ASSERT_EQ(index.count(), 1);
    EXPECT_EQ(index.at(0).at(0).toInt(), 1);
    ASSERT_EQ(text.count(), 1);
    EXPECT_EQ(text.at(0).at(0).toString(), "C");
    EXPECT_EQ(selected.count(), 1);
}

TEST(MultiComboBox, SlotMayChangeTheSelectionAgain)
{
    LQMultiComboBox box;
    filled(box, {"A", "B"}, true);
    int calls = 0;
    QObject::connect(&box, &LQMultiComboBox::selectionChanged, [&] {
        ++calls;
        if (box.currentText() == "A")
            box.setSelected(1, true);
    });
    box.setSelected(0, true);
    EXPECT_EQ(box.currentText(), "A+B");
    EXPECT_EQ(calls, 2);
}

TEST(MultiComboBox, UserChoosesInSingleSelection)
{
    LQMultiComboBox box;
    filled(box, {"A", "B", "C"});
    box.show();
    QSignalSpy chosen(&box, &QComboBox::textActivated);
    QSignalSpy selected(&box, &LQMultiComboBox::selectionChanged);
    static_cast<QComboBox&>(box).showPopup();
    QTest::keyClick(box.view(), Qt::Key_Home);
    QTest::keyClick(box.view(), Qt::Key_Down);
    QTest::keyClick(box.view(), Qt::Key_Return);
    EXPECT_EQ(chosen.count(), 1);
    EXPECT_EQ(chosen.at(0).at(0).toString(), box.currentText());
    EXPECT_EQ(box.currentText(), "B");
    EXPECT_EQ(selected.count(), 1);
    EXPECT_FALSE(box.view()->isVisible());

    QTest::keyClicks(&box, "c"); // type-ahead on the closed box
    EXPECT_EQ(box.currentText(), "C");
    EXPECT_EQ(chosen.count(), 2);
    EXPECT_EQ(selected.count(), 2);
    box.setSelectedItems({"A"});
    EXPECT_EQ(chosen.count(), 2) << "a program's choice is not the user's";
}

TEST(MultiComboBox, ClicksInTheListToggleAndLeaveItOpen)
{
    LQMultiComboBox box;
    filled(box, {"A", "B", "C"}, true);
    box.show();
    QSignalSpy selected(&box, &LQMultiComboBox::selectionChanged);
    static_cast<QComboBox&>(box).showPopup();
    // The release of the click that opened the list: neither selects nor closes.
    QTest::mouseRelease(box.view()->viewport(), Qt::LeftButton, {}, row_centre(box, 0));
    EXPECT_TRUE(box.selectedItems().isEmpty());
    click_row(box, 0);
    click_row(box, 2);
    EXPECT_EQ(box.currentText(), "A+C");
    EXPECT_TRUE(box.view()->isVisible());
    click_row(box, 0);
    EXPECT_EQ(box.currentText(), "C");
    EXPECT_EQ(selected.count(), 3);
    EXPECT_EQ(box.itemData(2, Qt::CheckStateRole).toInt(), Qt::Checked);
    static_cast<QComboBox&>(box).hidePopup();
    EXPECT_EQ(box.currentText(), "C");
}

TEST(MultiComboBox, KeysInTheListToggleSelectAllAndClose)
{
    LQMultiComboBox box;
    filled(box, {"alpha", "beta", "gamma"}, true);
    box.show();
    QTest::keyClick(&box, Qt::Key_Space);
    ASSERT_TRUE(box.view()->isVisible()) << "the space bar opens the list";
    QTest::keyClick(box.view(), Qt::Key_Space);
    EXPECT_EQ(box.currentText(), "alpha");
    QTest::keyClicks(box.view(), "g"); // type-ahead
    QTest::keyClick(box.view(), Qt::Key_Space);
    EXPECT_EQ(box.currentText(), "alpha+gamma");
    QTest::keyClick(box.view(), Qt::Key_Space);
    EXPECT_EQ(box.currentText(), "alpha");
    QTest::keyClick(box.view(), Qt::Key_A, Qt::ControlModifier);
    EXPECT_EQ(box.currentText(), "alpha+beta+gamma");
    QTest::keyClick(box.view(), Qt::Key_Return);
    EXPECT_FALSE(box.view()->isVisible());
    EXPECT_EQ(box.currentText(), "alpha+beta+gamma");

    QTest::qWait(QApplication::keyboardInputInterval() + 50); // the next letter begins a new search
    QTest::keyClicks(&box, "b"); // type-ahead on the closed box opens the list at the entry
    ASSERT_TRUE(box.view()->isVisible());
    EXPECT_EQ(box.view()->currentIndex().row(), 1);
    QTest::keyClick(box.view(), Qt::Key_Escape);
    EXPECT_FALSE(box.view()->isVisible());
    EXPECT_EQ(box.currentText(), "alpha+beta+gamma");
}

TEST(MultiComboBox, ArrowKeysOnTheClosedBoxSelectNothing)
{
    LQMultiComboBox box;
    filled(box, {"A", "B"}, true);
    box.setSelectedItems({"A"});
    box.show();
    QTest::keyClick(&box, Qt::Key_Down);
    EXPECT_EQ(box.currentText(), "A");
    EXPECT_TRUE(box.view()->isVisible());
}

TEST(MultiComboBox, EnterAndEscapeBelongToTheDialog)
{
    LQMultiComboBox box;
    filled(box, {"A"}, true);
    for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Escape}) {
        QKeyEvent press(QEvent::KeyPress, key, Qt::NoModifier);
        press.accept();
        QApplication::sendEvent(&box, &press);
        EXPECT_FALSE(press.isAccepted());
    }
    EXPECT_FALSE(box.view()->isVisible());
}

TEST(MultiComboBox, WheelSelectsNothing)
{
    for (const bool multi : {false, true}) {
        LQMultiComboBox box;
        filled(box, {"A", "B"}, multi);
        box.setSelectedItems({"A"});
        box.show();
        box.setFocus();
        QWheelEvent turn(QPointF(5, 5), box.mapToGlobal(QPointF(5, 5)), {}, {0, -120}, Qt::NoButton, Qt::NoModifier,
                         Qt::NoScrollPhase, false);
        QApplication::sendEvent(&box, &turn);
        EXPECT_EQ(box.currentText(), "A");
        EXPECT_FALSE(turn.isAccepted()) << "what is around may scroll";
        EXPECT_EQ(box.focusPolicy(), Qt::StrongFocus);
    }
}

TEST(MultiComboBox, ToolTipListsTheSelection)
{
    LQMultiComboBox box;
    QStringList names;
    for (int i = 0; i < 40; ++i)
        names.append(QStringLiteral("region number %1").arg(i));
    filled(box, names, true);
    box.setToolTip("Select regions");
    box.setSelectedItems(names);
    box.show();
    QHelpEvent ask(QEvent::ToolTip, {3, 3}, box.mapToGlobal(QPoint(3, 3)));
    QApplication::sendEvent(&box, &ask);
    const QString text = QToolTip::text();
    EXPECT_TRUE(text.startsWith("Select regions\nregion number 0\nregion number 1\n")) << text.toStdString();
    EXPECT_TRUE(text.contains("region number 24"));
    EXPECT_FALSE(text.contains("region number 25"));
    EXPECT_TRUE(text.endsWith("... and 15 more")) << text.toStdString();
    QToolTip::hideText();
}

TEST(MultiComboBox, ShowsTheWholeSelectionAndElidesIt)
{
    LQMultiComboBox box;
    filled(box, {"upper reservoir", "lower reservoir", "aquifer"}, true);
    box.resize(160, box.sizeHint().height());
    const QImage none = box.grab().toImage();
    box.setSelectedItems({"aquifer"});
    const QImage one = box.grab().toImage();
    EXPECT_GT(differing_pixels(none, one), 30) << "the selection can be read";
    box.setSelectedItems({"upper reservoir"});
    const QImage first = box.grab().toImage();
    box.setSelectedItems({"upper reservoir", "lower reservoir"});
    const QImage both = box.grab().toImage();
    EXPECT_GT(differing_pixels(first, both), 0);
    EXPECT_EQ(both.size(), none.size());
    EXPECT_LT(box.sizeHint().width(), 400) << "long selections do not widen the dialog";
}

TEST(MultiComboBox, ListIsWideEnoughForItsNames)
{
    LQMultiComboBox box;
    const QString longest = "a region with quite a long name of its own";
    filled(box, {"short", longest}, true);
    box.resize(120, box.sizeHint().height());
    box.show();
    static_cast<QComboBox&>(box).showPopup();
    EXPECT_GE(box.view()->viewport()->width(), box.fontMetrics().horizontalAdvance(longest) + 40);
    static_cast<QComboBox&>(box).hidePopup();
    box.insertItem(QString(5000, 'x'));
    static_cast<QComboBox&>(box).showPopup();
    EXPECT_LE(box.view()->minimumWidth(), 600);
}

TEST(MultiComboBox, EditableBoxHoldsTypedText)
{
    LQMultiComboBox box;
    filled(box, {"PORO", "PERMX"});
    box.setEditable(true);
    QSignalSpy selected(&box, &LQMultiComboBox::selectionChanged);
    box.setEditText("porosity");
    EXPECT_EQ(box.currentText(), "porosity");
    EXPECT_EQ(box.selectedItems(), QStringList("porosity"));
    EXPECT_EQ(selected.count(), 1);
    box.setSelectedItems({"PERMX"});
    EXPECT_EQ(box.currentText(), "PERMX");
}

TEST(MultiComboBox, NamesOfAnyKindSurvive)
{
    const QStringList names = {"a+b", "<b>x</b>", "%1", "ä ö", "a & b"};
    LQMultiComboBox box;
    filled(box, names, true);
    box.setSelectedItems(names);
    EXPECT_EQ(box.selectedItems(), names);
    EXPECT_EQ(box.currentText(), names.join('+'));
    box.show();
    box.setToolTip({});
    box.setSelectedItems({"<b>x</b>"});
    QHelpEvent ask(QEvent::ToolTip, {3, 3}, box.mapToGlobal(QPoint(3, 3)));
    QApplication::sendEvent(&box, &ask);
    EXPECT_TRUE(QToolTip::text().contains("&lt;b&gt;")) << "a name is no markup: " << QToolTip::text().toStdString();
    QToolTip::hideText();
}

TEST(MultiComboBox, PictureForLookingAt)
{
    const QString folder = picture_folder();
    for (const bool multi : {false, true}) {
        LQMultiComboBox box;
        filled(box, {"all_regions", "fault_block_1", "A region with quite a long name of its own", "aquifer"}, multi);
        box.setSelectedItems({"fault_block_1", "aquifer"});
        box.resize(150, box.sizeHint().height());
        box.show();
        static_cast<QComboBox&>(box).showPopup();
        const QString name = multi ? "multi" : "single";
        EXPECT_TRUE(box.grab().save(folder + "/combo_" + name + ".png"));
        EXPECT_TRUE(box.view()->window()->grab().save(folder + "/combo_list_" + name + ".png"));
    }
}
