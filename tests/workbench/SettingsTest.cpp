#include "MessageList.h"
#include "WorkbenchTest.h"

#include "apps/workbench/ConsoleEdit.h"
#include "apps/workbench/MainWindow.h"

#include <QAction>
#include <QApplication>
#include <QDockWidget>
#include <QMenu>
#include <QSettings>
#include <QTest>

using namespace lodex;

namespace {

/// Settings go to a folder of the test's own.
class SettingsTest : public WorkbenchTest {
protected:
    SettingsTest()
    {
        QSettings::setPath(QSettings::IniFormat, QSettings::UserScope,
                           QString::fromStdString(file("settings").string()));
    }

    std::filesystem::path write_box(const std::string& name)
    {
        add_box("Writer", {3, 2, 2});
        EXPECT_TRUE(
            run("lodex export sgrid Writer file \"" + file(name).string() + "\"; lodex destroy objects Writer"));
        return file(name);
    }
};

TEST_F(SettingsTest, LayoutRecentFilesAndCommandsComeBack)
{
    const QString first = QString::fromStdString(write_box("first.grdecl").string()),
                  second = QString::fromStdString(write_box("second.grdecl").string());
    {
        MainWindow window(nullptr, MainWindow::Memory::Settings);
        window.show();
        EXPECT_TRUE(window.recent_files().isEmpty());
        ASSERT_TRUE(window.import_files({first, second, first}));
        EXPECT_FALSE(window.import_files({"/nowhere/missing.grdecl"}));
        EXPECT_EQ(window.recent_files(), QStringList({first, second})) << "newest first, each once, only what came in";
        auto* console = window.findChild<ConsoleEdit*>("console");
        QTest::keyClicks(console, "lodex help report");
        QTest::keyClick(console, Qt::Key_Return);
        window.findChild<QDockWidget*>("displayDock")->hide();
        window.resize(1100, 700);
        window.close();
    }
    clear();
    MainWindow window(nullptr, MainWindow::Memory::Settings);
    window.show();
    QApplication::processEvents();
    EXPECT_EQ(window.recent_files(), QStringList({first, second}));
    EXPECT_TRUE(window.findChild<QDockWidget*>("displayDock")->isHidden());
    EXPECT_FALSE(window.findChild<QDockWidget*>("objectsDock")->isHidden());
    EXPECT_EQ(window.findChild<ConsoleEdit*>("console")->history(), QStringList({"lodex help report"}));

    auto* menu = window.findChild<QMenu*>("menu_Recent");
    emit menu->aboutToShow();
    ASSERT_EQ(menu->actions().size(), 2);
    EXPECT_EQ(menu->actions()[1]->text(), "second.grdecl");
    EXPECT_EQ(menu->actions()[1]->toolTip(), second);
    menu->actions()[1]->trigger();
    EXPECT_NE(find_grid("second"), nullptr);
    EXPECT_EQ(window.recent_files().front(), second);

    window.findChild<QAction*>("resetLayout")->trigger();
    EXPECT_FALSE(window.findChild<QDockWidget*>("displayDock")->isHidden());
}

TEST_F(SettingsTest, AWindowWithoutMemoryLeavesTheSettingsAlone)
{
    {
        MainWindow window;
        window.show();
        ASSERT_TRUE(window.import_files({QString::fromStdString(write_box("box.grdecl").string())}));
        window.close();
    }
    EXPECT_TRUE(MainWindow::user_settings()->allKeys().isEmpty());
    const MainWindow window;
    EXPECT_TRUE(window.recent_files().isEmpty());
}

TEST_F(SettingsTest, BrokenSettingsDoNoHarm)
{
    {
        const auto settings = MainWindow::user_settings();
        settings->setValue("layout", QByteArray("nonsense"));
        settings->setValue("geometry", 17);
        settings->setValue("recentFiles", 3.5);
    }
    MainWindow window(nullptr, MainWindow::Memory::Settings);
    window.show();
    EXPECT_FALSE(window.findChild<QDockWidget*>("objectsDock")->isHidden());
}

} // namespace
