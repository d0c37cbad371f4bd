#include "Pictures.h"
#include "WorkbenchTest.h"

#include "apps/workbench/ConsoleEdit.h"
#include "apps/workbench/MainWindow.h"
#include "apps/workbench/ReportDialog.h"
#include "apps/workbench/DisplayPanel.h"
#include "apps/workbench/SectionPanel.h"
#include "apps/workbench/ShortcutsDialog.h"
#include "apps/workbench/Theme.h"
#include "apps/workbench/Translations.h"
#include "apps/workbench/plots/ComparisonWindow.h"
#include "apps/workbench/plots/NumbersWindow.h"

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QListWidget>
#include <QTabWidget>
#include <QTest>

using namespace lodex;

namespace {

/// Saves pictures for people to look at.
class PicturesTest : public WorkbenchTest {
protected:
    ~PicturesTest() override { use_theme(Theme::System); }

    void look_at(QWidget& widget, const QString& name)
    {
        QApplication::processEvents();
        ASSERT_TRUE(widget.grab().save(folder_ + QStringLiteral("/workbench_") + name + QStringLiteral(".png")));
    }
    void main_window(const QString& theme)
    {
        MainWindow window;
        window.resize(1280, 820);
        window.show();
        look_at(window, "empty_" + theme);
        ASSERT_TRUE(window.run("lodex create example name Example"));
        auto* console = window.findChild<ConsoleEdit*>("console");
        for (const char* text : {"lodex help create example", "lodex on SGrid Example set_layer units A",
                                 "lodex on Style Example set attribute *sections "
                                 "value \" 5 3 1 4 3 1 5 3 1 90 1 1 20 2 0 0\"; lodex on Style Example update"}) {
            QTest::keyClicks(console, QString::fromLatin1(text));
            QTest::keyClick(console, Qt::Key_Return);
        }
        look_at(window, "painted_" + theme);
        ASSERT_TRUE(window.run(
            "lodex sgrid_merge_multiple_sections name Coarse sgrid Example direction \"vertical\" sections 0+4 "
            "copy_properties 1 copy_regions 1"));
        window.findChild<QComboBox*>("sectionAxis")->setCurrentIndex(1);
        auto* colour_by = window.findChild<QComboBox*>("colourBy");
        colour_by->setCurrentText("FACIES");
        window.findChild<QTabWidget*>("lowerTabs")->setCurrentIndex(1);
        window.findChild<QTabWidget*>("views")->setCurrentIndex(1);
        look_at(window, "facies_" + theme);
        colour_by->setCurrentText("PERMZ");
        look_at(*window.section(), "permeability_" + theme);
        colour_by->setCurrentText("unit");
        look_at(*window.section(), "unit_" + theme);
        window.findChild<QAction*>("report")->trigger();
        look_at(*window.findChild<ReportDialog*>(), "report_" + theme);
        window.findChild<QAction*>("shortcuts")->trigger();
        look_at(*window.findChild<ShortcutsDialog*>(), "shortcuts_" + theme);
        look_at(*window.display(), "display_" + theme);
        numbers(window, theme);
        comparison(window, theme);
    }

    void numbers(MainWindow& window, const QString& theme)
    {
        window.tree()->select(TreeItem{.kind = TreeItem::Kind::Property, .grid = "Example", .name = "PERMX"});
        NumbersWindow* numbers = window.open_numbers();
        numbers->findChild<QCheckBox*>("numbersLogBins")->setChecked(true);
        look_at(*numbers, "histogram_log_" + theme);
        numbers->findChild<QComboBox*>("numbersProperty")->setCurrentText("FACIES");
        look_at(*numbers, "histogram_facies_" + theme);
        auto* pages = numbers->findChild<QTabWidget*>("numbersPages");
        pages->setCurrentIndex(1);
        auto* list = numbers->findChild<QListWidget*>("numbersProfileList");
        for (int row = 0; row < std::min(3, list->count()); ++row)
            list->item(row)->setCheckState(Qt::Checked);
        look_at(*numbers, "profile_own_" + theme);
        numbers->findChild<QCheckBox*>("numbersOwnRanges")->setChecked(false);
        look_at(*numbers, "profile_" + theme);
        pages->setCurrentIndex(2);
        numbers->findChild<QComboBox*>("numbersProperty")->setCurrentText("PORO");
        numbers->findChild<QComboBox*>("numbersOther")->setCurrentText("PERMX");
        numbers->findChild<QCheckBox*>("numbersLogY")->setChecked(true);
        look_at(*numbers, "cross_" + theme);
        numbers->close();
    }
    void comparison(MainWindow& window, const QString& theme)
    {
        window.tree()->select("Coarse");
        ComparisonWindow* comparison = window.open_comparison();
        look_at(*comparison, "comparison_empty_" + theme);
        comparison->choose("Example", "PORO", "Coarse", "PORO", "stratigraphic");
        comparison->compare();
        look_at(*comparison, "comparison_" + theme);
        comparison->close();
    }

    QString folder_ = picture_folder();
};

TEST_F(PicturesTest, LightTheme)
{
    main_window("light");
}

TEST_F(PicturesTest, French)
{
    ASSERT_TRUE(use_language("fr")) << "built without the linguist tools";
    MainWindow window;
    window.resize(1360, 860);
    window.show();
    EXPECT_TRUE(window.run("lodex create example name Example size 12+10+12"));
    look_at(window, "french");
    look_at(*window.open_numbers(), "numbers_french");
    QWidget* merge = window.open_dialog("mergeSections");
    look_at(*merge, "merge_french");
    merge->close();
    use_language("en");
}

TEST_F(PicturesTest, DarkTheme)
{
    use_theme(Theme::Dark);
    main_window("dark");
}

} // namespace
