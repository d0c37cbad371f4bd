#include "frame/WidgetHelpers.h"
#include "tests/frame/Catalogue.h"

#include <QBoxLayout>
#include <QFormLayout>
#include <QFrame>
#include <QGridLayout>
#include <QLabel>

namespace {

using Kelvane::add_separator;
using Kelvane::build_unused_name;

TEST(UnusedName, AFreeNameStaysAndIsNotCounted)
{
    const CleanCatalogue catalogue;
    QString name = "before";
    EXPECT_FALSE(build_unused_name("A", name));
    EXPECT_EQ(name, "A");
}

TEST(UnusedName, TheFirstSuffixIsZero)
{
    const CleanCatalogue catalogue;
    add_box("A");
    QString name;
    EXPECT_TRUE(build_unused_name("A", name));
    EXPECT_EQ(name, "A_0");
    add_box("A_0");
    EXPECT_TRUE(build_unused_name("A", name));
    EXPECT_EQ(name, "A_1");
    EXPECT_TRUE(build_unused_name("A_0", name));
    EXPECT_EQ(name, "A_0_0");
}

TEST(UnusedName, ManyNames)
{
    const CleanCatalogue catalogue;
    add_box("A", {1, 1, 1});
    for (int n = 0; n <= 10; ++n)
        add_box("A_" + std::to_string(n), {1, 1, 1});
    QString name;
    EXPECT_TRUE(build_unused_name("A", name));
    EXPECT_EQ(name, "A_11");
}

TEST(UnusedName, NamesWithBlanksAndOtherLetters)
{
    const CleanCatalogue catalogue;
    add_box("Größe 1", {1, 1, 1});
    QString name;
    EXPECT_TRUE(build_unused_name("Größe 1", name));
    EXPECT_EQ(name, QString::fromUtf8("Größe 1_0"));
}

TEST(UnusedName, ObjectsOfEveryTypeTakeTheirName)
{
    const CleanCatalogue catalogue;
    add_other_object("A");
    QString name;
    EXPECT_TRUE(build_unused_name("A", name));
    EXPECT_EQ(name, "A_0");
}

TEST(Separator, TitleAndRule)
{
    QWidget parent;
    auto* layout = new QVBoxLayout(&parent);
    add_separator(&parent, layout, true, "Regions", "#ff0000");
    ASSERT_EQ(layout->count(), 1);
    auto* row = qobject_cast<QHBoxLayout*>(layout->itemAt(0)->layout());
    ASSERT_TRUE(row);
    ASSERT_EQ(row->count(), 2);
    const auto* label = qobject_cast<QLabel*>(row->itemAt(0)->widget());
    ASSERT_TRUE(label);
    EXPECT_EQ(label->parentWidget(), &parent);
    EXPECT_EQ(label->textFormat(), Qt::RichText);
    EXPECT_EQ(label->text(), "<nobr><font color=\"#ff0000\">Regions</font></nobr>");
    EXPECT_EQ(row->stretch(0), 0);
    const auto* rule = qobject_cast<QFrame*>(row->itemAt(1)->widget());
    ASSERT_TRUE(rule);
    EXPECT_EQ(rule->frameShape(), QFrame::HLine);
    EXPECT_EQ(rule->frameShadow(), QFrame::Sunken);
    EXPECT_EQ(row->stretch(1), 1);
}

TEST(Separator, WithoutATitleOnlyTheRule)
{
    QWidget parent;
    auto* layout = new QVBoxLayout(&parent);
    add_separator(&parent, layout, true, "", "");
    ASSERT_EQ(layout->itemAt(0)->layout()->count(), 1);
    EXPECT_FALSE(qobject_cast<QLabel*>(layout->itemAt(0)->layout()->itemAt(0)->widget()));
}

TEST(Separator, WithoutARuleOnlyTheTitleInTheDefaultColour)
{
    QWidget parent;
    auto* layout = new QVBoxLayout(&parent);
    add_separator(&parent, layout, false, "100 %2 of %1", "");
    ASSERT_EQ(layout->itemAt(0)->layout()->count(), 1);
    const auto* label = qobject_cast<QLabel*>(layout->itemAt(0)->layout()->itemAt(0)->widget());
    ASSERT_TRUE(label);
    EXPECT_EQ(label->text(), "<nobr><font color=\"#004fa3\">100 %2 of %1</font></nobr>");
}

TEST(Separator, NothingWithoutAParentOrALayout)
{
    QWidget parent;
    auto* layout = new QVBoxLayout(&parent);
    add_separator(nullptr, layout, true, "x", "");
    add_separator(&parent, nullptr, true, "x", "");
    EXPECT_EQ(layout->count(), 0);
    EXPECT_TRUE(parent.findChildren<QLabel*>().isEmpty());
}

TEST(Separator, GoesIntoEveryKindOfLayout)
{
    QWidget grid_parent;
    auto* grid = new QGridLayout(&grid_parent);
    grid->addWidget(new QLabel("a"), 0, 0);
    grid->addWidget(new QLabel("b"), 0, 1);
    add_separator(&grid_parent, grid, true, "x", "");
    int row = 0, column = 0, rows = 0, columns = 0;
    grid->getItemPosition(2, &row, &column, &rows, &columns);
    EXPECT_EQ(row, 1);
    EXPECT_EQ(column, 0);
    EXPECT_EQ(columns, 2);

    QWidget form_parent;
    auto* form = new QFormLayout(&form_parent);
    add_separator(&form_parent, form, true, "x", "");
    EXPECT_EQ(form->rowCount(), 1);
}

} // namespace
