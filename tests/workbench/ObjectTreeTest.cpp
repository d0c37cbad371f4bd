#include "WorkbenchTest.h"

#include "apps/workbench/ItemDetails.h"
#include "apps/workbench/ObjectTree.h"
#include "lodex/volumes/ActivityModel.h"

#include <QApplication>

#include <memory>
#include <vector>

using namespace lodex;
using Kind = TreeItem::Kind;

namespace {

class ObjectTreeTest : public WorkbenchTest {
protected:
    static QStringList names(const ObjectTree& tree)
    {
        QStringList texts;
        for (int row = 0; row < tree.topLevelItemCount(); ++row)
            texts.append(tree.topLevelItem(row)->text(ObjectTree::NameColumn));
        return texts;
    }
    /// Everything below a grid, "Group/item".
    static QStringList below(const QTreeWidgetItem* grid)
    {
        QStringList texts;
        for (int group = 0; group < grid->childCount(); ++group) {
            for (int row = 0; row < grid->child(group)->childCount(); ++row)
                texts.append(grid->child(group)->text(0) + "/" + grid->child(group)->child(row)->text(0));
        }
        return texts;
    }
    /// Collects the grids that the tree tells to be selected.
    static std::shared_ptr<std::vector<CornerPointGrid*>> told_by(const ObjectTree& tree)
    {
        auto told = std::make_shared<std::vector<CornerPointGrid*>>();
        QObject::connect(&tree, &ObjectTree::grid_selected, [told](CornerPointGrid* grid) { told->push_back(grid); });
        return told;
    }
    static QString value(const ItemDetails& details, const QString& what)
    {
        const auto items = details.findItems(what, Qt::MatchExactly);
        return items.isEmpty() ? QStringLiteral("(none)") : items.front()->text(1);
    }
};

TEST_F(ObjectTreeTest, FollowsTheCatalogue)
{
    add_box("First");
    ObjectTree tree;
    EXPECT_EQ(names(tree), QStringList({"First"}));
    EXPECT_EQ(tree.selected(), find_grid("First"));
    const auto told = told_by(tree);
    CornerPointGrid* second = add_box("Second", {2, 2, 2});
    EXPECT_EQ(names(tree), QStringList({"First", "Second"}));
    EXPECT_EQ(tree.topLevelItem(1)->text(ObjectTree::DetailColumn), "2 × 2 × 2");
    EXPECT_EQ(tree.selected(), second) << "what comes is selected";
    tree.select("First");
    ASSERT_TRUE(run("lodex rename object First name Other"));
    EXPECT_EQ(names(tree), QStringList({"Other", "Second"}));
    EXPECT_EQ(tree.selected(), find_grid("Other"));
    ASSERT_TRUE(run("lodex destroy objects Other"));
    EXPECT_EQ(names(tree), QStringList({"Second"}));
    EXPECT_EQ(tree.selected(), second);
    Lodex::GeobaseLib::instance()->clear();
    EXPECT_EQ(tree.topLevelItemCount(), 0);
    EXPECT_EQ(tree.selected(), nullptr);
    EXPECT_EQ(told->back(), nullptr);
    EXPECT_EQ(told->front(), second);
}

TEST_F(ObjectTreeTest, ShowsWhatBelongsToAGridAndFollowsIt)
{
    CornerPointGrid* grid = add_box("Box", {4, 3, 5});
    ObjectTree tree;
    EXPECT_TRUE(below(tree.topLevelItem(0)).isEmpty());
    add_numbers(grid, "NUMBER");
    ASSERT_TRUE(run("lodex on SGrid Box define_region low property NUMBER min 0 max 9; "
                    "lodex on SGrid Box set_layers units \"Upper\"+\"Lower\" sizes 2+3; "
                    "lodex on SGrid Box create_coarsening_activity halves modifications 3+1+4+2"));
    EXPECT_EQ(below(tree.topLevelItem(0)),
              QStringList({"Properties/NUMBER", "Regions/low", "Units/Upper", "Units/Lower", "Activities/halves"}));

    // What is selected and what is open stays when the grid changes.
    const TreeItem lower{Kind::Unit, "Box", "Lower", 1};
    tree.select(lower);
    EXPECT_EQ(tree.item(), lower);
    EXPECT_EQ(tree.selected(), grid);
    ASSERT_TRUE(run("lodex on SGrid Box fill_property PORO value 0.2"));
    EXPECT_EQ(tree.item(), lower);
    EXPECT_TRUE(tree.topLevelItem(0)->child(2)->isExpanded());
    EXPECT_FALSE(tree.topLevelItem(0)->child(0)->isExpanded());
    EXPECT_TRUE(below(tree.topLevelItem(0)).contains("Properties/PORO"));
    ASSERT_TRUE(run("lodex rename object Box name Case"));
    EXPECT_EQ(tree.item(), (TreeItem{Kind::Unit, "Case", "Lower", 1}));
    // An item that goes leaves its grid selected.
    ASSERT_TRUE(run("lodex on SGrid Case set_layers units \"All\" sizes 5"));
    EXPECT_EQ(tree.item().kind, Kind::Grid);
    EXPECT_EQ(tree.selected(), grid);
}

TEST_F(ObjectTreeTest, DetailsOfEveryKind)
{
    CornerPointGrid* grid = add_box("Box", {4, 3, 5}); // cells of 100 by 50 by 10
    add_numbers(grid, "NUMBER");
    ASSERT_TRUE(run("lodex on SGrid Box define_region low property NUMBER min 0 max 9; "
                    "lodex on SGrid Box set_layers units \"Upper\"+\"Lower\" sizes 2+3; "
                    "lodex on SGrid Box create_coarsening_activity halves modifications 3+1+4+2"));
    ItemDetails details;
    const auto show = [&](const TreeItem& item) {
        details.show_item(item);
        QApplication::processEvents();
    };
    const QString blank(QChar(0x202f));
    show({Kind::Grid, "Box"});
    EXPECT_EQ(value(details, "Cells"), "60");
    EXPECT_EQ(value(details, "Bulk volume, active").remove(blank), "3000000");
    show({Kind::Property, "Box", "NUMBER"});
    EXPECT_EQ(value(details, "Minimum"), "0");
    EXPECT_EQ(value(details, "Mean"), "29.5");
    EXPECT_EQ(value(details, "Maximum"), "59");
    show({Kind::Region, "Box", "low"});
    EXPECT_EQ(value(details, "Cells"), "10");
    EXPECT_EQ(value(details, "Bulk volume, active").remove(blank), "500000");
    show({Kind::Unit, "Box", "Lower", 1});
    EXPECT_EQ(value(details, "K layers"), "3 to 5");
    EXPECT_EQ(value(details, "Active cells"), "36");
    show({Kind::Activity, "Box", "halves", 0});
    EXPECT_EQ(value(details, "K 1 to 4"), "merged by 2");
    show({});
    EXPECT_EQ(details.topLevelItemCount(), 0);
}

TEST_F(ObjectTreeTest, DiscretePropertiesTellTheirCodes)
{
    CornerPointGrid* grid = add_box("Box", {2, 1, 2});
    grid->change([](GridModel& model) {
        model.properties.push_back(
            {.name = "FACIES", .values = std::vector<std::int32_t>{1, 1, 2, 2}, .code_names = {{1, "channel"}}});
        model.properties.back().no_data = 2.0;
    });
    ItemDetails details;
    details.show_item({Kind::Property, "Box", "FACIES"});
    QApplication::processEvents();
    EXPECT_EQ(value(details, "channel (1)"), "2 cells");
    EXPECT_EQ(value(details, "Active cells with a value"), "2");
}

} // namespace
