#include "WorkbenchTest.h"

#include "apps/workbench/GridList.h"

#include <QApplication>

#include <memory>
#include <vector>

using namespace lodex;

namespace {

class GridListTest : public WorkbenchTest {
protected:
    static QStringList names(const GridList& list)
    {
        QStringList texts;
        for (int row = 0; row < list.topLevelItemCount(); ++row)
            texts.append(list.topLevelItem(row)->text(GridList::NameColumn));
        return texts;
    }
    /// Collects the grids that the list tells to be selected.
    static std::shared_ptr<std::vector<CornerPointGrid*>> told_by(const GridList& list)
    {
        auto told = std::make_shared<std::vector<CornerPointGrid*>>();
        QObject::connect(&list, &GridList::grid_selected, [told](CornerPointGrid* grid) { told->push_back(grid); });
        return told;
    }
};

TEST_F(GridListTest, ListsWhatIsThereAndWhatComes)
{
    add_box("First");
    GridList list;
    EXPECT_EQ(names(list), QStringList({"First"}));
    EXPECT_EQ(list.selected(), find_grid("First"));
    const auto told = told_by(list);
    CornerPointGrid* second = add_box("Second");
    EXPECT_EQ(names(list), QStringList({"First", "Second"}));
    EXPECT_EQ(list.selected(), second) << "what comes is selected";
    EXPECT_EQ(*told, std::vector{second});
}

TEST_F(GridListTest, TellsSizeCellsAndVolume)
{
    GridList list;
    GridModel model = make_box({4, 3, 5}, {100, 50, 10});
    model.active[0] = 0;
    model.active[59] = 0;
    model.frame.grid_units = "FEET";
    add_grid("Box", std::move(model));
    const QTreeWidgetItem* item = list.topLevelItem(0);
    EXPECT_EQ(item->text(GridList::SizeColumn), "4 × 3 × 5");
    EXPECT_EQ(item->text(GridList::CellsColumn), "60");
    EXPECT_EQ(item->text(GridList::ActiveColumn), "58");
    EXPECT_EQ(item->text(GridList::VolumeColumn), "") << "not inside the command that makes the grid";
    QApplication::processEvents();
    const QString blank(QChar(0x202f));
    EXPECT_EQ(item->text(GridList::VolumeColumn),
              "2" + blank + "900" + blank + "000" + QChar(0xa0) + "ft" + QChar(0xb3));
}

TEST_F(GridListTest, HugeVolumesHaveAnExponent)
{
    GridList list;
    add_grid("Huge", make_box({1, 1, 1}, {1e6, 1e6, 1e3}));
    QApplication::processEvents();
    EXPECT_EQ(list.topLevelItem(0)->text(GridList::VolumeColumn), "1e+15");
}

TEST_F(GridListTest, FollowsRenamingAndDestruction)
{
    GridList list;
    add_box("A");
    add_box("B");
    add_box("C");
    list.select("B");
    ASSERT_TRUE(run("lodex rename object B name Other grid"));
    EXPECT_EQ(names(list), QStringList({"A", "Other grid", "C"}));
    EXPECT_EQ(list.selected(), find_grid("Other grid"));
    ASSERT_TRUE(run("lodex destroy objects Other grid"));
    EXPECT_EQ(names(list), QStringList({"A", "C"}));
    ASSERT_NE(list.selected(), nullptr);
    ASSERT_TRUE(run("lodex destroy objects A+C"));
    EXPECT_EQ(list.selected(), nullptr);
    EXPECT_TRUE(names(list).isEmpty());
}

TEST_F(GridListTest, SelectionOfTheLastOneThatGoesIsTold)
{
    GridList list;
    add_box("Only");
    const auto told = told_by(list);
    ASSERT_TRUE(run("lodex destroy objects Only"));
    ASSERT_FALSE(told->empty());
    EXPECT_EQ(told->back(), nullptr);
}

TEST_F(GridListTest, GridThatGoesBeforeItsVolumeIsThere)
{
    GridList list;
    add_box("Short");
    ASSERT_TRUE(run("lodex destroy objects Short"));
    QApplication::processEvents();
    EXPECT_EQ(list.topLevelItemCount(), 0);
}

} // namespace
