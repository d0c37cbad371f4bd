#include "DialogTest.h"

#include <QLabel>
#include <QScrollArea>
#include <QVBoxLayout>

namespace {

using namespace Kelvane;
using Texts = std::vector<std::string>;

const Texts unknown_axis{"Internal error: could not determined axis...\n", "Please report the problem\n"};

TEST(AxisManager, NamesNumbersAndKeywords)
{
    const MessageList messages;
    const LQSGAxisEditorMngr i("Axis I", nullptr), j("Axis J", nullptr), k("Axis K", nullptr);
    EXPECT_EQ(i.axis(), 1);
    EXPECT_EQ(j.axis(), 2);
    EXPECT_EQ(k.axis(), 3);
    EXPECT_EQ(i.get_axis_direction().str(), "first axis");
    EXPECT_EQ(j.get_axis_direction().str(), "second axis");
    EXPECT_EQ(k.get_axis_direction().str(), "vertical");
    EXPECT_TRUE(messages.entries.empty());
}

TEST(AxisManager, AnUnknownNameIsReportedAndKeepsTheKeyword)
{
    MessageList messages;
    LQSGAxisEditorMngr manager("Axis J", nullptr);
    manager.set_axis("Axis L");
    EXPECT_EQ(messages.of(Lodex::LogLevel::Error), unknown_axis);
    EXPECT_EQ(manager.axis_name(), "Axis L");
    EXPECT_EQ(manager.get_axis_direction().str(), "second axis");
    messages.clear();
    EXPECT_EQ(manager.axis(), 0);
    EXPECT_EQ(messages.of(Lodex::LogLevel::Error), unknown_axis);
    messages.clear();
    manager.set_axis("Axis K");
    EXPECT_TRUE(messages.entries.empty());
    EXPECT_EQ(manager.get_axis_direction().str(), "vertical");
}

TEST(AxisManager, NamesAreComparedToTheLetter)
{
    MessageList messages;
    for (const char* name : {"axis I", "Axis  I", "I", ""}) {
        messages.clear();
        const LQSGAxisEditorMngr manager(name, nullptr);
        EXPECT_EQ(messages.of(Lodex::LogLevel::Error), unknown_axis) << name;
        EXPECT_TRUE(manager.get_axis_direction().empty());
    }
}

/// Puts other words in the place of the axis names.
class AxisTranslator : public QTranslator {
public:
    [[nodiscard]] bool isEmpty() const override { return false; }
    [[nodiscard]] QString translate(const char* context, const char* text, const char*, int) const override
    {
        if (qstrcmp(context, "Kelvane::LQSGAxisEditorMngr") == 0 && qstrncmp(text, "Axis ", 5) == 0)
            return QStringLiteral("Achse ") + QLatin1Char(text[5]);
        return {};
    }
};

TEST(AxisManager, NamesAreComparedAfterTranslation)
{
    MessageList messages;
    AxisTranslator translator;
    QCoreApplication::installTranslator(&translator);
    LQSGAxisEditorMngr manager("Achse K", nullptr);
    EXPECT_EQ(manager.axis(), 3);
    EXPECT_EQ(manager.get_axis_direction().str(), "vertical");
    EXPECT_TRUE(messages.entries.empty());
    manager.set_axis("Axis K");
    EXPECT_EQ(messages.of(Lodex::LogLevel::Error), unknown_axis);
    QCoreApplication::removeTranslator(&translator);
}

TEST(AxisManager, CopiesShareTheDirection)
{
    LQSGAxisEditorMngr manager("Axis I", nullptr);
    const LQSGAxisEditorMngr copy(manager);
    LQSGAxisEditorMngr assigned("Axis J", nullptr);
    assigned = manager;
    EXPECT_EQ(assigned.axis_name(), "Axis I");
    manager.set_axis("Axis K");
    EXPECT_EQ(copy.axis_name(), "Axis I");
    EXPECT_EQ(copy.get_axis_direction().str(), "vertical");
    EXPECT_EQ(assigned.get_axis_direction().str(), "vertical");
}

/// A merge manager with its table, without a dialog.
class MergeManager : public RowsTest<LQSGMergeAxisEditorMngr> {
protected:
    /// Rows with these bounds, on an axis long enough.
    void set_rows(const std::vector<std::array<int, 2>>& bounds)
    {
        for (int i = 0; i < static_cast<int>(bounds.size()); ++i) {
            if (i > 0)
                manager.add_section(manager.get_sections(i - 1), true);
            row(i).set_run(bounds[static_cast<std::size_t>(i)][0], bounds[static_cast<std::size_t>(i)][1]);
        }
        messages.clear();
    }
};

TEST_F(MergeManager, StartsWithOneRowThatCannotBeRemoved)
{
    EXPECT_EQ(manager.number_of_sections(), 1);
    EXPECT_EQ(manager.table()->rowCount(), 1);
    EXPECT_FALSE(row(0).remove()->isEnabled());
    EXPECT_EQ(manager.get_sections(0)->remove_button(), row(0).remove());
    EXPECT_EQ(manager.get_sections(1), nullptr);
    manager.remove_section(manager.get_sections(0));
    EXPECT_EQ(manager.number_of_sections(), 1);
    EXPECT_EQ(manager.table()->rowCount(), 1);
}

TEST_F(MergeManager, PanelTexts)
{
    Texts labels;
    for (const QLabel* label : parent.findChildren<QLabel*>())
        labels.push_back(label->text().toStdString());
    EXPECT_EQ(labels, (Texts{"    From cell            To cell             With step    Section to keep",
                             "Sections to be merged                                      Property"}));
    auto* scroll = parent.findChild<QScrollArea*>("scrollview");
    ASSERT_TRUE(scroll);
    EXPECT_EQ(scroll->widget(), manager.table());
}

TEST_F(MergeManager, ARowBeforeAnyGrid)
{
    const RowWidgets first = row(0);
    EXPECT_EQ(first.from()->minimum(), 1);
    EXPECT_EQ(first.from()->value(), 1);
    EXPECT_EQ(first.to()->minimum(), 2);
    EXPECT_EQ(first.to()->maximum(), 9999);
    EXPECT_EQ(first.to()->value(), 9999);
    EXPECT_EQ(first.step()->minimum(), 2);
    EXPECT_EQ(first.step()->maximum(), 2);
    EXPECT_EQ(first.step()->value(), 2);
    EXPECT_EQ(first.property()->minimum(), 1);
    EXPECT_EQ(first.property()->maximum(), 9999);
    EXPECT_EQ(first.property()->value(), 1);
    EXPECT_EQ(manager.get_sections(0)->max(), first.from()->maximum());
    EXPECT_EQ(manager.get_sections(0)->allowed_max(), 9999);
}

TEST_F(MergeManager, RowTexts)
{
    const RowWidgets first = row(0);
    EXPECT_EQ(first.from()->toolTip(), "First cell section index");
    EXPECT_EQ(first.to()->toolTip(), "Last cell section index");
    EXPECT_EQ(first.step()->toolTip(), "Step between first and last section");
    EXPECT_EQ(first.property()->toolTip(), "Cell section index for property reference");
    for (const char* name : {"pick_from_", "pick_to_", "pick_property_section_"}) {
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

TEST_F(MergeManager, RowsWithoutThePropertyColumn)
{
    manager.add_section(manager.get_sections(0), false);
    EXPECT_FALSE(row(1).property());
    EXPECT_TRUE(row(1).add());
    EXPECT_EQ(manager.get_sections(1)->ref_section(), 1);
    QTest::mouseClick(row(1).add(), Qt::LeftButton);
    EXPECT_EQ(manager.number_of_sections(), 3);
    EXPECT_FALSE(row(2).property());
}

TEST_F(MergeManager, BoundsFromTheGridLetTheFirstRowRunOverTheWholeAxis)
{
    manager.update_manual_frame(11);
    EXPECT_EQ(row(0).from()->value(), 1);
    EXPECT_EQ(row(0).from()->maximum(), 9);
    EXPECT_EQ(row(0).to()->value(), 10);
    EXPECT_EQ(row(0).to()->maximum(), 10);
    EXPECT_EQ(row(0).step()->maximum(), 10);
    EXPECT_EQ(row(0).property()->minimum(), 1);
    EXPECT_EQ(row(0).property()->maximum(), 10);
    EXPECT_EQ(manager.get_sections(0)->to_section(), 10);
}

TEST_F(MergeManager, AShorterAxisMovesTheRow)
{
    manager.update_manual_frame(41);
    row(0).set_run(20, 30);
    row(0).property()->setValue(25);
    manager.update_manual_frame(11);
    EXPECT_EQ(row(0).from()->value(), 9);
    EXPECT_EQ(row(0).to()->value(), 10);
    EXPECT_EQ(row(0).property()->value(), 10);
    EXPECT_EQ(row(0).property()->maximum(), 10);
    EXPECT_EQ(row(0).step()->maximum(), 2);
}

TEST_F(MergeManager, ALongerAxisOnlyWidensTheBounds)
{
    manager.update_manual_frame(11);
    row(0).set_run(3, 8);
    manager.update_manual_frame(41);
    EXPECT_EQ(row(0).from()->value(), 3);
    EXPECT_EQ(row(0).to()->value(), 8);
    EXPECT_EQ(row(0).to()->maximum(), 40);
    EXPECT_EQ(row(0).property()->maximum(), 8);
}

TEST_F(MergeManager, NoSectionsLeaveTheRowsAsTheyAre)
{
    manager.update_manual_frame(11);
    manager.update_manual_frame(1);
    manager.update_manual_frame(0);
    EXPECT_EQ(row(0).to()->maximum(), 10);
}

TEST_F(MergeManager, AnAxisOfOneSectionHoldsNoGroup)
{
    manager.update_manual_frame(2);
    EXPECT_EQ(row(0).from()->value(), 1);
    EXPECT_EQ(row(0).to()->value(), 1);
    EXPECT_EQ(row(0).property()->value(), 1);
    EXPECT_EQ(row(0).step()->value(), 2);
    manager.update_manual_frame(11);
    EXPECT_EQ(row(0).from()->minimum(), 1);
    EXPECT_EQ(row(0).to()->minimum(), 2);
    EXPECT_EQ(row(0).to()->value(), 2);
    EXPECT_EQ(row(0).step()->minimum(), 2);
}

TEST_F(MergeManager, FromDragsTo)
{
    manager.update_manual_frame(21);
    row(0).set_run(3, 5);
    row(0).from()->setValue(5);
    EXPECT_EQ(row(0).to()->value(), 6);
    row(0).from()->setValue(12);
    EXPECT_EQ(row(0).to()->value(), 13);
    row(0).from()->setValue(20);
    EXPECT_EQ(row(0).from()->value(), 19);
    EXPECT_EQ(row(0).to()->value(), 20);
    EXPECT_EQ(manager.get_sections(0)->from_section(), 19);
    EXPECT_EQ(manager.get_sections(0)->to_section(), 20);
}

TEST_F(MergeManager, ToDragsFrom)
{
    manager.update_manual_frame(21);
    row(0).set_run(8, 15);
    row(0).to()->setValue(8);
    EXPECT_EQ(row(0).from()->value(), 7);
    row(0).to()->setValue(2);
    EXPECT_EQ(row(0).from()->value(), 1);
    row(0).to()->setValue(1);
    EXPECT_EQ(row(0).to()->value(), 2);
}

TEST_F(MergeManager, TheSectionToKeepStaysInTheRun)
{
    manager.update_manual_frame(21);
    row(0).set_run(5, 15);
    EXPECT_EQ(row(0).property()->value(), 5);
    row(0).property()->setValue(10);
    row(0).to()->setValue(8);
    EXPECT_EQ(row(0).property()->value(), 8);
    EXPECT_EQ(row(0).property()->minimum(), 5);
    EXPECT_EQ(row(0).property()->maximum(), 8);
    EXPECT_EQ(manager.get_sections(0)->ref_section(), 8);
    row(0).to()->setValue(20);
    row(0).from()->setValue(12);
    EXPECT_EQ(row(0).property()->value(), 12);
    EXPECT_EQ(manager.get_sections(0)->ref_section(), 12);
}

TEST_F(MergeManager, TheStepIsAtMostTheLengthOfTheRun)
{
    manager.update_manual_frame(21);
    row(0).set_run(5, 15);
    EXPECT_EQ(row(0).step()->maximum(), 11);
    row(0).step()->setValue(11);
    EXPECT_EQ(manager.get_sections(0)->jump(), 11);
    row(0).from()->setValue(10);
    EXPECT_EQ(row(0).step()->maximum(), 6);
    EXPECT_EQ(row(0).step()->value(), 6);
    row(0).to()->setValue(11);
    EXPECT_EQ(row(0).step()->maximum(), 2);
    EXPECT_EQ(manager.get_sections(0)->jump(), 2);
}

TEST_F(MergeManager, ATypedNumberIsTakenAsAWhole)
{
    parent.show();
    manager.update_manual_frame(41);
    row(0).set_run(5, 30);
    row(0).to()->setFocus();
    row(0).to()->selectAll();
    QTest::keyClicks(row(0).to(), "12");
    EXPECT_EQ(row(0).from()->value(), 5);
    EXPECT_EQ(manager.get_sections(0)->to_section(), 30);
    QTest::keyClick(row(0).to(), Qt::Key_Return);
    EXPECT_EQ(manager.get_sections(0)->to_section(), 12);
    EXPECT_EQ(row(0).from()->value(), 5);
    EXPECT_EQ(manager.number_of_sections(), 1);
}

TEST_F(MergeManager, TheWheelTurnsOnlyTheBoxThatHasTheFocus)
{
    parent.show();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&parent));
    manager.update_manual_frame(41);
    row(0).to()->setFocus();
    const auto turn = [](QSpinBox* box) {
        QWheelEvent event(QPointF(5, 5), box->mapToGlobal(QPointF(5, 5)), {}, QPoint(0, 120), Qt::NoButton,
                          Qt::NoModifier, Qt::NoScrollPhase, false);
        QCoreApplication::sendEvent(box, &event);
    };
    turn(row(0).from());
    EXPECT_EQ(row(0).from()->value(), 1);
    row(0).from()->setFocus();
    turn(row(0).from());
    EXPECT_EQ(row(0).from()->value(), 2);
}

TEST_F(MergeManager, ANewRowStartsBehindTheOneAboveAndEndsOneEarlier)
{
    manager.update_manual_frame(21);
    row(0).set_run(2, 6);
    QTest::mouseClick(row(0).add(), Qt::LeftButton);
    ASSERT_EQ(manager.number_of_sections(), 2);
    EXPECT_EQ(row(1).from()->value(), 7);
    EXPECT_EQ(row(1).to()->value(), 19);
    EXPECT_EQ(row(1).to()->maximum(), 19);
    EXPECT_EQ(row(1).from()->maximum(), 18);
    EXPECT_EQ(row(1).property()->minimum(), 7);
    EXPECT_EQ(row(1).property()->maximum(), 19);
    EXPECT_EQ(row(1).property()->value(), 7);
    EXPECT_EQ(row(1).step()->maximum(), 13);
    EXPECT_TRUE(row(0).remove()->isEnabled());
    EXPECT_TRUE(row(1).remove()->isEnabled());

    // Again one less below that row; the bounds come back with the grid.
    QTest::mouseClick(row(1).add(), Qt::LeftButton);
    EXPECT_EQ(row(2).to()->maximum(), 18);
    manager.update_manual_frame(21);
    EXPECT_EQ(row(2).to()->maximum(), 20);
}

TEST_F(MergeManager, ANewRowBehindTheEndOfTheAxisIsClamped)
{
    manager.update_manual_frame(11);
    QTest::mouseClick(row(0).add(), Qt::LeftButton);
    EXPECT_EQ(row(1).from()->value(), 8);
    EXPECT_EQ(row(1).to()->value(), 9);
}

TEST_F(MergeManager, RowsGoInBelowTheirButton)
{
    manager.update_manual_frame(41);
    set_rows({{1, 4}, {11, 14}});
    QTest::mouseClick(row(0).add(), Qt::LeftButton);
    ASSERT_EQ(manager.number_of_sections(), 3);
    ASSERT_EQ(manager.table()->rowCount(), 3);
    EXPECT_EQ(row(0).from()->value(), 1);
    EXPECT_EQ(row(1).from()->value(), 5);
    EXPECT_EQ(row(2).from()->value(), 11);
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(manager.get_sections(i)->from_section(), row(i).from()->value());
        EXPECT_EQ(manager.get_sections(i)->remove_button(), row(i).remove());
    }
}

TEST_F(MergeManager, ARowOfAnotherTableAddsAtTheEnd)
{
    manager.update_manual_frame(41);
    set_rows({{1, 4}, {11, 14}});
    manager.add_section(nullptr, true);
    ASSERT_EQ(manager.number_of_sections(), 3);
    EXPECT_EQ(manager.get_sections(2)->remove_button(), row(2).remove());
    EXPECT_EQ(row(1).from()->value(), 11);
}

TEST_F(MergeManager, ARowIsRemovableAsSoonAsItIsNotAlone)
{
    manager.add_section(nullptr, true);
    ASSERT_EQ(manager.number_of_sections(), 2);
    EXPECT_TRUE(row(0).remove()->isEnabled());
    EXPECT_TRUE(row(1).remove()->isEnabled());
}

TEST_F(MergeManager, RemovingRows)
{
    manager.update_manual_frame(41);
    set_rows({{1, 4}, {11, 14}, {21, 24}});
    QTest::mouseClick(row(1).remove(), Qt::LeftButton);
    run_deferred_deletes();
    ASSERT_EQ(manager.number_of_sections(), 2);
    ASSERT_EQ(manager.table()->rowCount(), 2);
    EXPECT_EQ(row(0).from()->value(), 1);
    EXPECT_EQ(row(1).from()->value(), 21);
    EXPECT_EQ(manager.get_sections(1)->from_section(), 21);
    EXPECT_TRUE(row(0).remove()->isEnabled());

    QTest::mouseClick(row(0).remove(), Qt::LeftButton);
    run_deferred_deletes();
    ASSERT_EQ(manager.number_of_sections(), 1);
    EXPECT_EQ(row(0).from()->value(), 21);
    EXPECT_FALSE(row(0).remove()->isEnabled());
    QTest::mouseClick(row(0).remove(), Qt::LeftButton);
    EXPECT_EQ(manager.number_of_sections(), 1);

    QTest::mouseClick(row(0).add(), Qt::LeftButton);
    EXPECT_TRUE(row(0).remove()->isEnabled());
}

TEST_F(MergeManager, TheTabKeyFollowsTheRows)
{
    manager.update_manual_frame(41);
    set_rows({{1, 4}, {11, 14}});
    QTest::mouseClick(row(0).add(), Qt::LeftButton);
    QList<QWidget*> expected;
    for (int i = 0; i < 3; ++i)
        expected += manager.get_sections(i)->tab_order();
    ASSERT_EQ(expected.size(), 27);
    QWidget* widget = expected.first();
    for (QWidget* next : expected.mid(1)) {
        do
            widget = widget->nextInFocusChain();
        while (widget != expected.first() && !expected.contains(widget));
        EXPECT_EQ(widget, next);
    }
}

TEST_F(MergeManager, SeparateRowsPass)
{
    manager.update_manual_frame(41);
    set_rows({{1, 4}, {5, 8}});
    EXPECT_TRUE(manager.check_intersections());
    row(0).set_run(9, 12);
    EXPECT_TRUE(manager.check_intersections());
    EXPECT_TRUE(messages.entries.empty());
}

TEST_F(MergeManager, ALaterRowThatStartsInsideNamesTheDirection)
{
    manager.update_manual_frame(41);
    set_rows({{1, 5}, {5, 9}});
    EXPECT_FALSE(manager.check_intersections());
    EXPECT_EQ(fatal(), Texts{"Section Editor intersection: Read message & please check your data\n"});
    EXPECT_EQ(errors(),
              Texts{"Direction vertical. Section Editor 1 from 1 to 5 intersects Section Editor 2 from 5 to 9\n"});
    ASSERT_EQ(messages.entries.size(), 2U);
    EXPECT_EQ(messages.entries[0].first, Lodex::LogLevel::Fatal);
}

TEST_F(MergeManager, ALaterRowThatReachesTheStartNamesNoDirection)
{
    manager.update_manual_frame(41);
    set_rows({{5, 9}, {3, 5}});
    EXPECT_FALSE(manager.check_intersections());
    EXPECT_EQ(fatal(), Texts{"Section Editor intersection: Read message & please check your data\n"});
    EXPECT_EQ(errors(), Texts{"Section Editor 1 from 5 to 9 intersects Section Editor 2 from 3 to 5\n"});
}

TEST_F(MergeManager, EqualStartsCountAsReaching)
{
    manager.update_manual_frame(41);
    set_rows({{5, 9}, {5, 6}});
    EXPECT_FALSE(manager.check_intersections());
    EXPECT_EQ(errors(), Texts{"Section Editor 1 from 5 to 9 intersects Section Editor 2 from 5 to 6\n"});
}

TEST_F(MergeManager, OnlyTheFirstConflictIsReported)
{
    manager.update_manual_frame(41);
    set_rows({{1, 4}, {11, 14}, {3, 12}});
    manager.set_axis("Axis J");
    EXPECT_FALSE(manager.check_intersections());
    EXPECT_EQ(errors(),
              Texts{"Direction second axis. Section Editor 1 from 1 to 4 intersects Section Editor 3 from 3 to 12\n"});
    EXPECT_EQ(messages.entries.size(), 2U);
}

TEST_F(MergeManager, CopiesHaveTheAxisButNoRows)
{
    manager.set_axis("Axis J");
    const LQSGMergeAxisEditorMngr copy(manager);
    EXPECT_EQ(copy.axis_name(), "Axis J");
    EXPECT_EQ(copy.get_axis_direction().str(), "second axis");
    EXPECT_EQ(copy.number_of_sections(), 0);
    EXPECT_EQ(copy.table(), nullptr);
    LQSGMergeAxisEditorMngr assigned("Axis I", nullptr);
    assigned = manager;
    EXPECT_EQ(assigned.axis_name(), "Axis J");
    EXPECT_EQ(assigned.number_of_sections(), 0);
    EXPECT_EQ(manager.number_of_sections(), 1);
    EXPECT_TRUE(assigned.check_intersections());
}

/// The table editors of the whole-grid dialogs are managers and objects of the toolkit at once.
class ObjectManager : public QObject, public LQSGMergeAxisEditorMngr {
    Q_OBJECT

public:
    ObjectManager() : LQSGAxisEditorMngr("Axis J", nullptr), LQSGMergeAxisEditorMngr("Axis J", nullptr) {}
    ObjectManager(const ObjectManager& other)
        : LQSGAxisEditorMngr(other), QObject(), LQSGMergeAxisEditorMngr(other)
    {
    }
    bool build_editor_axis(QWidget* parent, QVBoxLayout* layout) override
    {
        auto* table = new QTableWidget(0, LQSGSectionMergeEditor::ColumnCount, parent);
        layout->addWidget(table);
        set_table(table);
        build_sections_panel(true);
        return true;
    }
};

TEST(ObjectManager, BuildsItsRowsIntoATableOfItsOwn)
{
    QWidget parent;
    ObjectManager manager;
    manager.build_editor_axis(&parent, new QVBoxLayout(&parent));
    manager.update_manual_frame(6);
    manager.add_section(manager.get_sections(0), true);
    EXPECT_EQ(manager.table()->rowCount(), 2);
    EXPECT_EQ(manager.get_axis_direction().str(), "second axis");
    const ObjectManager copy(manager);
    EXPECT_EQ(copy.axis(), 2);
    EXPECT_EQ(copy.number_of_sections(), 0);
    manager.table()->setColumnHidden(LQSGSectionMergeEditor::PropertyColumn, true);
    EXPECT_EQ(manager.get_sections(0)->ref_section(), 1);
}

} // namespace

#include "test_axis_managers.moc"
