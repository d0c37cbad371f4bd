#include "MessageList.h"
#include "WorkbenchTest.h"

#include "apps/workbench/MainWindow.h"
#include "apps/workbench/plots/ComparisonWindow.h"
#include "apps/workbench/plots/NumbersWindow.h"
#include "apps/workbench/plots/Plots.h"

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QClipboard>
#include <QComboBox>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPointer>
#include <QPushButton>
#include <QTableWidget>
#include <QTabWidget>
#include <QTimer>

using namespace lodex;

namespace {

class PlotWindowsTest : public WorkbenchTest {
protected:
    PlotWindowsTest()
    {
        window.show();
        grid = add_box("Box", {4, 3, 4});
        add_numbers(grid, "NUMBER");
        EXPECT_TRUE(run("lodex on SGrid Box fill_property PORO value 0.25"));
    }
    static void settle()
    {
        QApplication::processEvents();
        QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    template <class Widget> static Widget* part(QWidget* of, const char* name)
    {
        auto* found = of->findChild<Widget*>(name);
        EXPECT_NE(found, nullptr) << name;
        return found;
    }
    static QString cell(const QTableWidget* table, const QString& what, int column)
    {
        for (int row = 0; row < table->rowCount(); ++row) {
            if (table->item(row, 0)->text() == what)
                return table->item(row, column)->text();
        }
        return QStringLiteral("(none)");
    }
    static void choose_file(const std::filesystem::path& path)
    {
        QTimer::singleShot(0, qApp, [path] {
            auto* dialog = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
            ASSERT_NE(dialog, nullptr);
            dialog->findChild<QLineEdit*>("fileNameEdit")->setText(QString::fromStdString(path.string()));
            QMetaObject::invokeMethod(dialog, "accept");
        });
    }

    MainWindow window;
    CornerPointGrid* grid;
};

TEST_F(PlotWindowsTest, NumbersOpenOnTheSelectedPropertyAndFollowTheGrid)
{
    window.tree()->select(TreeItem{TreeItem::Kind::Property, "Box", "NUMBER"});
    QPointer<NumbersWindow> numbers = window.open_numbers();
    ASSERT_TRUE(numbers);
    auto* property = part<QComboBox>(numbers, "numbersProperty");
    const auto* statistics = part<QTableWidget>(numbers, "numbersStatistics");
    EXPECT_EQ(property->currentText(), "NUMBER");
    EXPECT_EQ(cell(statistics, "Defined cells", 1), "48");
    EXPECT_EQ(cell(statistics, "Mean", 1), "23.5");
    EXPECT_EQ(part<HistogramPlot>(numbers, "numbersHistogram")->data().values, 48);
    EXPECT_EQ(numbers->table().rows.size(), 40u);

    ASSERT_TRUE(run("lodex on SGrid Box fill_property NUMBER value 7; lodex on SGrid Box fill_property NEW value 1"));
    EXPECT_EQ(property->currentText(), "NUMBER") << "the choice stays";
    EXPECT_EQ(cell(statistics, "Mean", 1), "7");
    EXPECT_GE(property->findText("NEW"), 0);

    part<QTabWidget>(numbers, "numbersPages")->setCurrentIndex(1);
    EXPECT_EQ(numbers->table().rows.size(), 4u) << "one row per K layer";
    EXPECT_EQ(numbers->table().heading, QStringList({"K layer", "NUMBER"}));
    part<QPushButton>(numbers, "numbersCopy")->click();
    EXPECT_TRUE(QApplication::clipboard()->text().startsWith("K layer\tNUMBER\n1\t7\n"));
    choose_file(file("profile.csv"));
    part<QPushButton>(numbers, "numbersSave")->click();
    EXPECT_TRUE(content(file("profile.csv")).starts_with("K layer,NUMBER\r\n1,7\r\n"));
    choose_file(file("profile.png"));
    part<QPushButton>(numbers, "numbersPicture")->click();
    EXPECT_FALSE(QImage(QString::fromStdString(file("profile.png").string())).isNull());

    ASSERT_TRUE(run("lodex destroy objects Box"));
    settle();
    EXPECT_FALSE(numbers) << "closes with its grid";
}

TEST_F(PlotWindowsTest, NumbersOfARegion)
{
    ASSERT_TRUE(run("lodex on SGrid Box define_region low property NUMBER min 0 max 5"));
    window.tree()->select(TreeItem{TreeItem::Kind::Region, "Box", "low"});
    NumbersWindow* numbers = window.open_numbers();
    part<QComboBox>(numbers, "numbersProperty")->setCurrentText("NUMBER");
    EXPECT_EQ(part<QComboBox>(numbers, "numbersRegion")->currentText(), "low");
    EXPECT_EQ(cell(part<QTableWidget>(numbers, "numbersStatistics"), "Sum", 1), "15");
}

TEST_F(PlotWindowsTest, AGridWithoutPropertiesShowsAnEmptyPlot)
{
    CornerPointGrid* bare = add_box("Bare");
    NumbersWindow* numbers = window.open_numbers();
    for (int page = 0; page < 3; ++page) {
        part<QTabWidget>(numbers, "numbersPages")->setCurrentIndex(page);
        settle();
        EXPECT_TRUE(numbers->table().rows.empty());
    }
    EXPECT_FALSE(numbers->grab().isNull());
    static_cast<void>(bare);
}

TEST_F(PlotWindowsTest, ComparisonConservesTotalsOverAMerge)
{
    ASSERT_TRUE(
        run("lodex sgrid_merge_multiple_sections name Coarse sgrid Box direction \"vertical\" sections 0+1+2+3"));
    ASSERT_EQ(find_grid("Coarse")->model().size, (GridSize{4, 3, 2}));
    const QPushButton* offer = part<QPushButton>(&window, "compareOffer");
    EXPECT_TRUE(offer->isHidden());
    ASSERT_TRUE(
        run("lodex on SGrid Box upscale_porosity fine_porosity NUMBER Coarse Coarse coarse_porosity MEAN mapper "
            "geometric upscaler Arithmetic weight_using_volume 1"));
    ASSERT_FALSE(offer->isHidden()) << "a property that was carried over is worth a look";
    EXPECT_EQ(offer->text(), "Compare NUMBER of Box with MEAN of Coarse");
    part<QPushButton>(&window, "compareOffer")->click();
    QPointer<ComparisonWindow> comparison = window.findChild<ComparisonWindow*>();
    ASSERT_TRUE(comparison);
    const auto* table = part<QTableWidget>(comparison, "comparisonTable");
    EXPECT_EQ(cell(table, "Cells", 1), "48");
    EXPECT_EQ(cell(table, "Cells", 2), "24");
    EXPECT_EQ(cell(table, "Bulk volume", 1), cell(table, "Bulk volume", 2));
    EXPECT_EQ(cell(table, "Sum of value × volume", 1), cell(table, "Sum of value × volume", 2));
    EXPECT_EQ(cell(table, "Mean by volume", 2), "23.5");
    EXPECT_EQ(cell(table, "Mean by volume", 3), "0 %");
    EXPECT_TRUE(part<QLabel>(comparison, "comparisonVerdict")
                    ->text()
                    .startsWith("24 coarse cells compared. Mean difference 0"));
    EXPECT_EQ(part<CrossPlot>(comparison, "comparisonPlot")->pairs().x.size(), 24u);

    part<QPushButton>(comparison, "comparisonDifference")->click();
    EXPECT_NE(find_grid("Coarse")->model().find_property("MEAN_difference"), nullptr);
    EXPECT_EQ(window.tree()->item(), (TreeItem{TreeItem::Kind::Property, "Coarse", "MEAN_difference"}));
    EXPECT_EQ(part<QComboBox>(&window, "colourBy")->currentText(), "MEAN_difference");
    EXPECT_EQ(Interpreter::instance().journal().back().find("lodex on SGrid \"Box\" compare_property"), 0u);

    // Grids that go are no longer offered; the window goes on.
    ASSERT_TRUE(run("lodex destroy objects Coarse"));
    settle();
    EXPECT_EQ(part<QComboBox>(comparison, "comparisonCoarse")->findText("Coarse"), -1);
    EXPECT_FALSE(part<QPushButton>(comparison, "comparisonCompare")->isEnabled());
    comparison->close();
    settle();
    EXPECT_FALSE(comparison);
}

TEST_F(PlotWindowsTest, ComparisonKnowsWhichGridCameFromWhich)
{
    ASSERT_TRUE(run("lodex sgrid_merge_multiple_sections name Coarse sgrid Box direction \"vertical\" sections 0+1+2+3 "
                    "copy_properties 1"));
    for (const char* selected : {"Box", "Coarse"}) {
        window.tree()->select(TreeItem{TreeItem::Kind::Property, selected, "PORO"});
        ComparisonWindow* comparison = window.open_comparison();
        EXPECT_EQ(part<QComboBox>(comparison, "comparisonFine")->currentText(), "Box") << selected;
        EXPECT_EQ(part<QComboBox>(comparison, "comparisonCoarse")->currentText(), "Coarse") << selected;
        EXPECT_EQ(part<QComboBox>(comparison, "comparisonFineProperty")->currentText(), "PORO");
        EXPECT_EQ(part<QComboBox>(comparison, "comparisonCoarseProperty")->currentText(), "PORO");
    }
}

} // namespace
