// Rows of a subdivision and their manager, without a dialog around them or with a bare one.

#include "DialogTest.h"

#include "sgresize/LQSGSubdivideAxisEditorMngr.h"

#include <Lodex/gviews/Picking.h>

#include <QApplication>
#include <QClipboard>
#include <QLabel>
#include <QScrollArea>
#include <QVBoxLayout>

#include <sstream>

namespace {

using namespace Kelvane;
using Texts = std::vector<std::string>;

QStringList entries(const QComboBox* box)
{
    QStringList list;
    for (int i = 0; i < box->count(); ++i)
        list.append(box->itemText(i));
    return list;
}

class SubdivideRows : public RowsTest<LQSGSubdivideAxisEditorMngr> {
protected:
    [[nodiscard]] std::string sections() const
    {
        std::ostringstream text;
        manager.write_sections(text);
        return text.str();
    }
};

TEST_F(SubdivideRows, PanelTexts)
{
    Texts labels;
    for (const QLabel* label : parent.findChildren<QLabel*>())
        labels.push_back(label->text().toStdString());
    EXPECT_EQ(labels,
              (Texts{"    From cell            To cell               Amount     Stratigraphy            Thickness",
                     "Sections to be subdivided"}));
    auto* scroll = parent.findChild<QScrollArea*>("scrollview");
    ASSERT_TRUE(scroll);
    EXPECT_EQ(scroll->widget(), manager.table());
}

TEST_F(SubdivideRows, StartsWithOneRowThatCannotBeRemoved)
{
    ASSERT_EQ(manager.number_of_sections(), 1);
    EXPECT_EQ(manager.table()->rowCount(), 1);
    EXPECT_FALSE(row(0).remove()->isEnabled());
    EXPECT_EQ(manager.get_sections(0)->remove_button(), row(0).remove());
    EXPECT_EQ(manager.get_sections(1), nullptr);
    manager.remove_section(manager.get_sections(0));
    EXPECT_EQ(manager.number_of_sections(), 1);
}

TEST_F(SubdivideRows, ARowBeforeAnyGrid)
{
    const RowWidgets first = row(0);
    EXPECT_EQ(first.from()->minimum(), 1);
    EXPECT_EQ(first.from()->maximum(), 9999);
    EXPECT_EQ(first.from()->value(), 1);
    EXPECT_EQ(first.to()->minimum(), 1);
    EXPECT_EQ(first.to()->maximum(), 9999);
    EXPECT_EQ(first.to()->value(), 9999);
    EXPECT_EQ(first.amount()->minimum(), 2);
    EXPECT_EQ(first.amount()->maximum(), 9999);
    EXPECT_EQ(first.amount()->value(), 2);
    EXPECT_EQ(first.strati()->currentText(), "Proportional");
    EXPECT_EQ(first.thickness()->text(), "");
    EXPECT_FALSE(first.thickness()->isEnabled());
    const auto* editor = manager.get_sections(0);
    EXPECT_EQ(editor->from_section(), 1);
    EXPECT_EQ(editor->to_section(), 9999);
    EXPECT_EQ(editor->amount_section(), 2);
    EXPECT_EQ(editor->thickness_value(), 0.0F);
    EXPECT_EQ(editor->max(), 9999);
}

TEST_F(SubdivideRows, RowTexts)
{
    const RowWidgets first = row(0);
    EXPECT_EQ(first.from()->toolTip(), "First cell index of the section to be subdivided");
    EXPECT_EQ(first.to()->toolTip(), "Last cell index of the section to be subdivided");
    EXPECT_EQ(first.amount()->toolTip(), "Number of cells to be substituted to the current cell");
    EXPECT_EQ(first.strati()->toolTip(), "Stratigraphy of the new cells");
    EXPECT_EQ(first.thickness()->toolTip(), "");
    for (const char* name : {"pick_from_", "pick_to_"}) {
        ASSERT_TRUE(first.pick(name)) << name;
        EXPECT_EQ(first.pick(name)->toolTip(), "Select cell section by picking in the Camera");
        EXPECT_FALSE(first.pick(name)->icon().isNull());
    }
    EXPECT_EQ(first.add()->text(), " N ");
    EXPECT_EQ(first.add()->toolTip(), "add a new section editor after this line");
    EXPECT_EQ(first.remove()->text(), " D ");
    EXPECT_EQ(first.remove()->toolTip(), "delete current section editor");
    EXPECT_FALSE(first.add()->autoDefault());
    EXPECT_FALSE(first.remove()->autoDefault());
}

TEST_F(SubdivideRows, ChoicesAndKeywordsOfEachAxis)
{
    const std::vector<std::pair<const char*, QStringList>> choices{
        {"Axis K", {"Proportional", "Parallel to Base", "Parallel to Top"}},
        {"Axis J", {"Proportional", "Parallel to J-", "Parallel to J+"}},
        {"Axis I", {"Proportional", "Parallel to I-", "Parallel to I+"}}};
    for (const auto& [axis, expected] : choices) {
        manager.set_axis(axis);
        manager.update_axis();
        EXPECT_EQ(entries(row(0).strati()), expected);
        EXPECT_EQ(row(0).strati()->currentIndex(), 0) << axis;
        const auto* editor = manager.get_sections(0);
        EXPECT_STREQ(editor->strati_type(), "proportional");
        EXPECT_EQ(editor->strati_type_info(), Lodex::LayerInfo::Proportional);
        row(0).strati()->setCurrentIndex(1);
        EXPECT_STREQ(editor->strati_type(), "parallel_to_base");
        EXPECT_EQ(editor->strati_type_info(), Lodex::LayerInfo::ParallelToBase);
        row(0).strati()->setCurrentIndex(2);
        EXPECT_STREQ(editor->strati_type(), "parallel_to_top");
        EXPECT_EQ(editor->strati_type_info(), Lodex::LayerInfo::ParallelToTop);
    }
}

TEST_F(SubdivideRows, AnotherAxisStartsProportionalAgainWithTheThicknessAsTyped)
{
    row(0).strati()->setCurrentIndex(2);
    row(0).thickness()->setText("7");
    EXPECT_TRUE(row(0).thickness()->isEnabled());
    manager.set_axis("Axis I");
    manager.update_axis();
    EXPECT_EQ(row(0).strati()->currentText(), "Proportional");
    EXPECT_FALSE(row(0).thickness()->isEnabled());
    EXPECT_EQ(row(0).thickness()->text(), "7");
}

TEST_F(SubdivideRows, AChoiceStaysWhileTheBoundsMove)
{
    manager.update_manual_frame(21);
    row(0).strati()->setCurrentIndex(1);
    row(0).from()->setValue(4);
    row(0).to()->setValue(8);
    manager.update_manual_frame(7);
    EXPECT_EQ(row(0).strati()->currentIndex(), 1);
    EXPECT_TRUE(row(0).thickness()->isEnabled());
}

TEST_F(SubdivideRows, ThicknessIsForTheLayeringsThatHaveOne)
{
    QTest::keyClick(row(0).strati(), Qt::Key_Down);
    EXPECT_EQ(row(0).strati()->currentText(), "Parallel to Base");
    EXPECT_TRUE(row(0).thickness()->isEnabled());
    QTest::keyClick(row(0).strati(), Qt::Key_Down);
    EXPECT_TRUE(row(0).thickness()->isEnabled());
    QTest::keyClick(row(0).strati(), Qt::Key_Home);
    EXPECT_FALSE(row(0).thickness()->isEnabled());
}

TEST_F(SubdivideRows, ThicknessIsReadInTheCLocale)
{
    const QLocale former;
    QLocale::setDefault(QLocale(QLocale::German));
    row(0).thickness()->setText("2.5");
    EXPECT_EQ(manager.get_sections(0)->thickness_value(), 2.5F);
    EXPECT_EQ(manager.get_sections(0)->thickness(), "2.5");
    row(0).thickness()->setText("two");
    EXPECT_EQ(manager.get_sections(0)->thickness_value(), 0.0F);
    QLocale::setDefault(former);
}

TEST_F(SubdivideRows, TheThicknessTakesNoSecondCommand)
{
    parent.show();
    row(0).strati()->setCurrentIndex(1);
    QTest::keyClicks(row(0).thickness(), "1;2\"3");
    EXPECT_EQ(row(0).thickness()->text(), "123");
    for (const char* text : {"1;lodex destroy objects G", "1\"", "1\n2"}) {
        QApplication::clipboard()->setText(text);
        row(0).thickness()->clear();
        row(0).thickness()->paste();
        for (const char refused : {';', '"', '\n'})
            EXPECT_FALSE(row(0).thickness()->text().contains(refused)) << text;
    }
}

TEST_F(SubdivideRows, BoundsFromTheGrid)
{
    manager.update_manual_frame(11);
    EXPECT_EQ(row(0).from()->maximum(), 10);
    EXPECT_EQ(row(0).to()->maximum(), 10);
    EXPECT_EQ(row(0).from()->value(), 1);
    EXPECT_EQ(row(0).to()->value(), 10);
    row(0).set_run(7, 9);
    manager.update_manual_frame(6);
    EXPECT_EQ(row(0).from()->value(), 5);
    EXPECT_EQ(row(0).to()->value(), 5);
    manager.update_manual_frame(11);
    EXPECT_EQ(row(0).to()->value(), 5);
    row(0).set_run(3, 9);
    manager.update_manual_frame(6);
    EXPECT_EQ(row(0).from()->value(), 3);
    EXPECT_EQ(row(0).to()->value(), 5);
    manager.update_manual_frame(2);
    EXPECT_EQ(row(0).from()->value(), 1);
    EXPECT_EQ(row(0).to()->value(), 1);
    EXPECT_EQ(row(0).from()->maximum(), 1);
}

TEST_F(SubdivideRows, NoSectionsLeaveTheRowsAsTheyAre)
{
    manager.update_manual_frame(11);
    manager.update_manual_frame(1);
    manager.update_manual_frame(0);
    EXPECT_EQ(row(0).to()->maximum(), 10);
    manager.get_sections(0)->set_min(0);
    EXPECT_EQ(row(0).from()->value(), 1);
}

TEST_F(SubdivideRows, FromAndToDragEachOther)
{
    manager.update_manual_frame(21);
    row(0).set_run(3, 5);
    row(0).from()->setValue(5);
    EXPECT_EQ(row(0).to()->value(), 5);
    row(0).from()->setValue(12);
    EXPECT_EQ(row(0).to()->value(), 12);
    row(0).to()->setValue(4);
    EXPECT_EQ(row(0).from()->value(), 4);
    EXPECT_EQ(manager.get_sections(0)->from_section(), 4);
    EXPECT_EQ(manager.get_sections(0)->to_section(), 4);
}

TEST_F(SubdivideRows, NewRows)
{
    manager.update_manual_frame(21);
    row(0).set_run(2, 6);
    QTest::mouseClick(row(0).add(), Qt::LeftButton);
    ASSERT_EQ(manager.number_of_sections(), 2);
    EXPECT_EQ(row(1).from()->value(), 7);
    EXPECT_EQ(row(1).from()->maximum(), 20);
    EXPECT_EQ(row(1).to()->value(), 20);
    EXPECT_EQ(row(1).to()->maximum(), 20);
    EXPECT_TRUE(row(0).remove()->isEnabled());
    EXPECT_TRUE(row(1).remove()->isEnabled());

    // Below the last section there is none: the row shares it until someone says otherwise.
    QTest::mouseClick(row(1).add(), Qt::LeftButton);
    EXPECT_EQ(row(2).from()->value(), 20);
    EXPECT_FALSE(manager.check_intersections());

    // In between.
    QTest::mouseClick(row(0).add(), Qt::LeftButton);
    ASSERT_EQ(manager.number_of_sections(), 4);
    EXPECT_EQ(row(1).from()->value(), 7);
    for (int i = 0; i < 4; ++i)
        EXPECT_EQ(manager.get_sections(i)->remove_button(), row(i).remove());
    manager.add_section(nullptr);
    EXPECT_EQ(manager.get_sections(4)->remove_button(), row(4).remove());
}

TEST_F(SubdivideRows, RemovingRows)
{
    manager.update_manual_frame(21);
    row(0).set_run(1, 4);
    QTest::mouseClick(row(0).add(), Qt::LeftButton);
    QTest::mouseClick(row(0).remove(), Qt::LeftButton);
    run_deferred_deletes();
    ASSERT_EQ(manager.number_of_sections(), 1);
    ASSERT_EQ(manager.table()->rowCount(), 1);
    EXPECT_EQ(row(0).from()->value(), 5);
    EXPECT_FALSE(row(0).remove()->isEnabled());
    QTest::mouseClick(row(0).remove(), Qt::LeftButton);
    EXPECT_EQ(manager.number_of_sections(), 1);
}

TEST_F(SubdivideRows, Intersections)
{
    manager.update_manual_frame(41);
    row(0).set_run(1, 5);
    manager.add_section(manager.get_sections(0));
    row(1).set_run(5, 9);
    EXPECT_FALSE(manager.check_intersections());
    EXPECT_EQ(fatal(), Texts{"Section Editor intersection: Read message & please check your data\n"});
    EXPECT_EQ(errors(),
              Texts{"Direction vertical. Section Editor 1 from 1 to 5 intersects Section Editor 2 from 5 to 9\n"});
    messages.clear();
    row(0).set_run(5, 9);
    row(1).set_run(3, 5);
    EXPECT_FALSE(manager.check_intersections());
    EXPECT_EQ(errors(), Texts{"Section Editor 1 from 5 to 9 intersects Section Editor 2 from 3 to 5\n"});
    messages.clear();
    row(0).set_run(1, 4);
    row(1).set_run(5, 8);
    EXPECT_TRUE(manager.check_intersections());
    EXPECT_TRUE(messages.entries.empty());
}

TEST_F(SubdivideRows, SectionsText)
{
    manager.update_manual_frame(21);
    row(0).set_division(1, 1, 2, 0, "");
    EXPECT_EQ(sections(), "0+1+proportional+");
    row(0).set_division(3, 4, 3, 0, "1");
    manager.add_section(manager.get_sections(0));
    row(1).set_division(7, 7, 2, 2, "0.5");
    EXPECT_EQ(sections(), "2+2+proportional+1+3+2+proportional+1+6+1+parallel_to_top+0.5");
    // In the order of the table, and as typed.
    row(0).set_division(9, 10, 2, 1, "abc");
    EXPECT_EQ(sections(), "8+1+parallel_to_base+abc+9+1+parallel_to_base+abc+6+1+parallel_to_top+0.5");
    row(0).set_division(9, 10, 2, 0, "");
    EXPECT_EQ(sections(), "8+1+proportional++9+1+proportional++6+1+parallel_to_top+0.5");
}

TEST_F(SubdivideRows, PaintedSections)
{
    manager.set_axis("Axis J");
    manager.update_manual_frame(21);
    row(0).set_run(3, 5);
    manager.add_section(manager.get_sections(0));
    row(1).set_run(9, 9);
    std::ostringstream triples;
    EXPECT_EQ(manager.write_painted_sections(triples), 4);
    EXPECT_EQ(triples.str(), " 2 1 2  2 1 3  2 1 4  2 1 8 ");
}

TEST_F(SubdivideRows, TheTabKeyFollowsTheRow)
{
    const QList<QWidget*> order = manager.get_sections(0)->tab_order();
    const RowWidgets first = row(0);
    EXPECT_EQ(order, (QList<QWidget*>{first.from(), first.pick("pick_from_"), first.to(), first.pick("pick_to_"),
                                      first.amount(), first.strati(), first.thickness(), first.add(), first.remove()}));
}

TEST_F(SubdivideRows, TheWheelTurnsOnlyWhatHasTheFocus)
{
    parent.show();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&parent));
    row(0).from()->setFocus();
    const auto turn = [](QWidget* widget) {
        QWheelEvent event(QPointF(5, 5), widget->mapToGlobal(QPointF(5, 5)), {}, QPoint(0, -120), Qt::NoButton,
                          Qt::NoModifier, Qt::NoScrollPhase, false);
        QCoreApplication::sendEvent(widget, &event);
    };
    turn(row(0).strati());
    turn(row(0).amount());
    EXPECT_EQ(row(0).strati()->currentIndex(), 0);
    EXPECT_EQ(row(0).amount()->value(), 2);
    row(0).strati()->setFocus();
    turn(row(0).strati());
    EXPECT_EQ(row(0).strati()->currentIndex(), 1);
}

TEST_F(SubdivideRows, PickButtonsStartTheToolOfTheirBound)
{
    auto* graphics = Lodex::GraphicLib::instance();
    QTest::mouseClick(row(0).pick("pick_to_"), Qt::LeftButton);
    EXPECT_EQ(graphics->tool(), manager.get_sections(0)->pick_to());
    EXPECT_EQ(manager.get_sections(0)->pick_to()->axis(), 3);
    manager.set_axis("Axis J");
    manager.update_pick_axis();
    EXPECT_EQ(manager.get_sections(0)->pick_from()->axis(), 2);
    EXPECT_EQ(manager.get_sections(0)->pick_to()->axis(), 2);
    QTest::mouseClick(row(0).pick("pick_from_"), Qt::LeftButton);
    EXPECT_EQ(graphics->tool(), manager.get_sections(0)->pick_from());
    graphics->reset_tool();
}

TEST_F(SubdivideRows, CopiesHaveTheAxisButNoRows)
{
    manager.set_axis("Axis J");
    const LQSGSubdivideAxisEditorMngr copy(manager);
    EXPECT_EQ(copy.axis_name(), "Axis J");
    EXPECT_EQ(copy.number_of_sections(), 0);
    EXPECT_EQ(copy.table(), nullptr);
    LQSGSubdivideAxisEditorMngr assigned("Axis I", nullptr);
    assigned = manager;
    EXPECT_EQ(assigned.get_axis_direction().str(), "second axis");
    EXPECT_EQ(assigned.number_of_sections(), 0);
    EXPECT_EQ(manager.number_of_sections(), 1);
}

} // namespace
