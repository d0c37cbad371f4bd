#include "Pictures.h"
#include "WorkbenchTest.h"

#include "apps/workbench/ConsoleEdit.h"
#include "apps/workbench/MainWindow.h"
#include "apps/workbench/ReportDialog.h"
#include "apps/workbench/SectionPanel.h"

#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QTabWidget>
#include <QTest>

using namespace lodex;

namespace {

/// Saves pictures for people to look at.
class PicturesTest : public WorkbenchTest {
protected:
    PicturesTest() : light_(QApplication::palette()) {}
    ~PicturesTest() override { QApplication::setPalette(light_); }

    static void use_dark_theme()
    {
        QPalette palette;
        const QColor window(45, 45, 48), base(30, 30, 30), text(225, 225, 225), dim(130, 130, 130);
        palette.setColor(QPalette::Window, window);
        palette.setColor(QPalette::Base, base);
        palette.setColor(QPalette::AlternateBase, window);
        palette.setColor(QPalette::Button, window);
        palette.setColor(QPalette::ToolTipBase, window);
        for (const auto role :
             {QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::ToolTipText, QPalette::BrightText})
            palette.setColor(role, text);
        for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
            palette.setColor(QPalette::Disabled, role, dim);
        palette.setColor(QPalette::PlaceholderText, dim);
        palette.setColor(QPalette::Highlight, QColor(38, 79, 120));
        palette.setColor(QPalette::HighlightedText, Qt::white);
        QApplication::setPalette(palette);
    }
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
        look_at(window, "facies_" + theme);
        colour_by->setCurrentText("PERMZ");
        look_at(*window.section(), "permeability_" + theme);
        colour_by->setCurrentText("unit");
        look_at(*window.section(), "unit_" + theme);
        window.findChild<QAction*>("report")->trigger();
        look_at(*window.findChild<ReportDialog*>(), "report_" + theme);
    }

    QString folder_ = picture_folder();

private:
    QPalette light_;
};

TEST_F(PicturesTest, LightTheme)
{
    main_window("light");
}

TEST_F(PicturesTest, DarkTheme)
{
    use_dark_theme();
    main_window("dark");
}

} // namespace
