// The project in the window: new, open, save, the question before something is lost, what comes back with a project.

#include "MessageList.h"
#include "WorkbenchTest.h"

#include "apps/workbench/ConsoleEdit.h"
#include "apps/workbench/DisplayPanel.h"
#include "apps/workbench/MainWindow.h"
#include "apps/workbench/SectionPanel.h"
#include "lodex/project/Project.h"

#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QDockWidget>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QFileDialog>
#include <QLineEdit>
#include <QMenu>
#include <QMessageBox>
#include <QMimeData>
#include <QPushButton>
#include <QSettings>
#include <QSpinBox>
#include <QTabWidget>
#include <QTest>
#include <QTimer>
#include <QUrl>

using namespace lodex;

namespace {

class ProjectTest : public WorkbenchTest {
protected:
    ProjectTest()
    {
        forget_project();
        QApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    }
    ~ProjectTest() override
    {
        clear();
        forget_project();
    }

    static void settle()
    {
        for (int n = 0; n < 3; ++n) {
            QApplication::processEvents();
            QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        }
    }
    [[nodiscard]] QString path(const std::string& name) const { return QString::fromStdString(file(name).string()); }

    /// Writes a project with one grid of this name and leaves nothing open.
    QString write_project(const std::string& name, const std::string& grid)
    {
        add_numbers(add_box(grid), "NUMBER");
        EXPECT_TRUE(run("lodex save project \"" + file(name).string() + "\""));
        clear();
        forget_project();
        return path(name);
    }
    static QMessageBox* question(MainWindow& window)
    {
        settle();
        return window.findChild<QMessageBox*>("unsavedQuestion");
    }
    static void answer(MainWindow& window, const char* button)
    {
        QMessageBox* const box = question(window);
        ASSERT_NE(box, nullptr);
        box->findChild<QPushButton*>(button)->click();
        settle();
        EXPECT_EQ(question(window), nullptr);
    }
    /// Types a path into the file dialog that the next action brings up.
    static void choose_file(const QString& path)
    {
        QTimer::singleShot(0, qApp, [path] {
            auto* dialog = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
            ASSERT_NE(dialog, nullptr);
            dialog->findChild<QLineEdit*>("fileNameEdit")->setText(path);
            QMetaObject::invokeMethod(dialog, "accept");
        });
    }
    static void trigger(MainWindow& window, const char* action) { window.findChild<QAction*>(action)->trigger(); }
};

TEST_F(ProjectTest, TitleAndMarkFollowTheProject)
{
    MainWindow window;
    window.show();
    EXPECT_EQ(window.windowTitle(), "Untitled[*] - lodex workbench");
    EXPECT_FALSE(window.isWindowModified());
    EXPECT_FALSE(window.unsaved());
    ASSERT_TRUE(window.run("lodex create sgrid name Box size 2+2+2 spacing 1+1+1"));
    EXPECT_TRUE(window.isWindowModified());
    choose_file(path("field.lodex-project"));
    trigger(window, "saveProject"); // has no file yet, so that it asks
    EXPECT_EQ(window.windowTitle(), "field.lodex-project[*] - lodex workbench");
    EXPECT_FALSE(window.isWindowModified());
    EXPECT_TRUE(std::filesystem::exists(file("field.lodex-project")));
    EXPECT_EQ(window.recent_projects(), QStringList({path("field.lodex-project")}));

    auto* console = window.findChild<ConsoleEdit*>("console");
    QTest::keyClicks(console, "lodex on SGrid Box fill_property PORO value 0.3");
    QTest::keyClick(console, Qt::Key_Return);
    EXPECT_TRUE(window.isWindowModified());
    const auto before = std::filesystem::last_write_time(file("field.lodex-project"));
    QTest::qWait(20);
    trigger(window, "saveProject"); // knows its file
    EXPECT_FALSE(window.isWindowModified());
    EXPECT_GT(std::filesystem::last_write_time(file("field.lodex-project")), before);

    choose_file(path("other.lodex-project"));
    trigger(window, "saveProjectAs");
    EXPECT_EQ(window.windowTitle(), "other.lodex-project[*] - lodex workbench");
    EXPECT_EQ(window.recent_projects(), QStringList({path("other.lodex-project"), path("field.lodex-project")}));

    trigger(window, "newProject"); // nobody is asked: everything is saved
    EXPECT_EQ(window.windowTitle(), "Untitled[*] - lodex workbench");
    EXPECT_TRUE(window.tree()->grids().empty());
    EXPECT_TRUE(Interpreter::instance().journal().empty());
    EXPECT_FALSE(window.unsaved());

    choose_file(path("field.lodex-project"));
    trigger(window, "openProject");
    ASSERT_NE(find_grid("Box"), nullptr);
    EXPECT_NE(find_grid("Box")->model().find_property("PORO"), nullptr);
    EXPECT_EQ(window.recent_projects().front(), path("field.lodex-project"));
}

TEST_F(ProjectTest, WhatIsNotSavedIsAskedForBeforeItGoes)
{
    const QString other = write_project("other.lodex-project", "Other");
    MainWindow window;
    window.set_asks(true);
    window.show();
    ASSERT_TRUE(window.run("lodex create sgrid name Box size 2+2+2 spacing 1+1+1"));
    ASSERT_TRUE(window.run(QStringLiteral("lodex save project \"%1\"").arg(path("box.lodex-project"))));
    window.open_project_file(path("box.lodex-project"));
    EXPECT_EQ(question(window), nullptr) << "everything is saved";
    ASSERT_TRUE(window.run("lodex on SGrid Box fill_property PORO value 0.3"));

    // Cancel: nothing happens, neither on opening nor on closing.
    window.open_project_file(other);
    answer(window, "unsavedCancel");
    EXPECT_NE(find_grid("Box"), nullptr);
    EXPECT_EQ(find_grid("Other"), nullptr);
    window.close();
    EXPECT_TRUE(window.isVisible());
    answer(window, "unsavedCancel");
    EXPECT_TRUE(window.isVisible());
    QMessageBox* box = nullptr;
    window.close();
    box = question(window);
    window.close();
    EXPECT_EQ(question(window), box) << "asked once";
    QTest::keyClick(box, Qt::Key_Escape);
    settle();
    EXPECT_TRUE(window.isVisible());

    // Save: into the project's file, then it goes on.
    trigger(window, "newProject");
    answer(window, "unsavedSave");
    EXPECT_TRUE(window.tree()->grids().empty());
    window.open_project_file(path("box.lodex-project"));
    ASSERT_NE(find_grid("Box"), nullptr);
    EXPECT_NE(find_grid("Box")->model().find_property("PORO"), nullptr);

    // Discard: it goes on, and the file is what it was.
    ASSERT_TRUE(window.run("lodex on SGrid Box destroy_property PORO"));
    window.open_project_file(other);
    answer(window, "unsavedDiscard");
    EXPECT_NE(find_grid("Other"), nullptr);
    EXPECT_EQ(find_grid("Box"), nullptr);
    window.open_project_file(path("box.lodex-project"));
    EXPECT_NE(find_grid("Box")->model().find_property("PORO"), nullptr);

    // Saving that fails loses nothing.
    ASSERT_TRUE(window.run("lodex on SGrid Box destroy_property PORO"));
    std::filesystem::remove(file("box.lodex-project"));
    std::filesystem::create_directory(file("box.lodex-project"));
    trigger(window, "newProject");
    answer(window, "unsavedSave");
    EXPECT_NE(find_grid("Box"), nullptr);
    window.close();
    answer(window, "unsavedDiscard");
    EXPECT_FALSE(window.isVisible());
}

TEST_F(ProjectTest, ViewAndSelectionComeBackWithTheProject)
{
    const CameraPlace place{.focus = {1210, 2080, 1530}, .height = 333, .azimuth = 40, .elevation = 55};
    {
        MainWindow window;
        window.show();
        add_numbers(add_box("First", {6, 5, 4}), "NUMBER");
        add_numbers(add_box("Second", {4, 3, 5}), "NUMBER");
        ASSERT_TRUE(window.run("lodex on SGrid First fill_property PORO lognormal 0.2+0.3 seed 1;"
                               "lodex on SGrid First define_region low property NUMBER max 9"));
        window.show_property("First", "PORO");
        DisplayPanel& panel = *window.display();
        panel.show_layers({1, 2});
        panel.show_region("low");
        panel.set_view(7, true, false);
        window.findChild<QTabWidget*>("views")->setCurrentIndex(1);
        window.findChild<QDockWidget*>("cellDock")->hide();
        window.findChild<QComboBox*>("sectionAxis")->setCurrentIndex(1);
        window.findChild<QSpinBox*>("sectionNumber")->setValue(2);
        settle();
        window.camera()->set_place(place);
        ASSERT_TRUE(window.run(QStringLiteral("lodex save project \"%1\"").arg(path("view.lodex-project"))));
        EXPECT_FALSE(window.unsaved());
    }
    clear();
    forget_project();
    MainWindow window;
    window.show();
    window.open_project_file(path("view.lodex-project"));
    settle();
    EXPECT_EQ(window.tree()->item(), (TreeItem{TreeItem::Kind::Property, "First", "PORO"}));
    EXPECT_EQ(window.display()->grid(), find_grid("First"));
    const GridDisplay display = window.camera()->display(find_grid("First"));
    EXPECT_EQ(display.colour, ColourBy::of_property("PORO"));
    EXPECT_EQ(display.filter.ranges[2], (std::vector<IndexRange>{{1, 2}}));
    EXPECT_EQ(display.filter.region, "low");
    EXPECT_EQ(window.camera()->vertical_exaggeration(), 7);
    EXPECT_TRUE(window.camera()->orthographic());
    EXPECT_FALSE(window.camera()->axes_shown());
    const auto there = window.camera()->place();
    ASSERT_TRUE(there);
    for (std::size_t n = 0; n < 3; ++n)
        EXPECT_NEAR(there->focus[n], place.focus[n], 1e-6);
    EXPECT_DOUBLE_EQ(there->height, place.height);
    EXPECT_DOUBLE_EQ(there->azimuth, place.azimuth);
    EXPECT_DOUBLE_EQ(there->elevation, place.elevation);
    EXPECT_EQ(window.findChild<QTabWidget*>("views")->currentIndex(), 1);
    EXPECT_TRUE(window.findChild<QDockWidget*>("cellDock")->isHidden());
    EXPECT_EQ(window.findChild<QComboBox*>("sectionAxis")->currentIndex(), 1);
    EXPECT_EQ(window.findChild<QSpinBox*>("sectionNumber")->value(), 2);
    EXPECT_FALSE(window.unsaved()) << "looking at something is no change";
    // The other grid keeps its own look.
    window.tree()->select("Second");
    EXPECT_EQ(window.camera()->display(find_grid("Second")).colour, ColourBy::of_property("NUMBER"));
    EXPECT_TRUE(window.camera()->display(find_grid("Second")).filter.region.empty());
}

TEST_F(ProjectTest, AStateWithoutSenseDoesNoHarm)
{
    MainWindow window;
    window.show();
    add_numbers(add_box("Box"), "NUMBER");
    CamerasPart cameras(window);
    WindowPart parts(window);
    const std::string before = cameras.save();
    for (const char* text : {"", "{", "[]", "17", "{\"version\":2,\"exaggeration\":50}",
                             "{\"version\":1,\"grids\":{\"Box\":{\"filter\":{\"slices\":[[[\"a\",1]]]}}}}",
                             "{\"version\":1,\"grids\":[3],\"place\":{\"focus\":[1]}}"}) {
        cameras.restore(text);
        parts.restore(text);
        settle();
        EXPECT_EQ(window.camera()->vertical_exaggeration(), 1) << text;
    }
    cameras.restore("{\"version\":1,\"grids\":{\"Gone\":{}},\"exaggeration\":3}");
    EXPECT_EQ(window.camera()->vertical_exaggeration(), 3);
    parts.restore("{\"version\":1,\"selected\":{\"kind\":\"property\",\"grid\":\"Gone\"},\"panels\":{\"x\":true},"
                  "\"section\":\"9 9\"}");
    EXPECT_EQ(window.tree()->selected(), find_grid("Box"));
    window.section()->restore_state("0 99999 2 none");
    cameras.restore(before);
    EXPECT_EQ(cameras.save(), before);
}

TEST_F(ProjectTest, ADroppedProjectIsOpenedAndABrokenOneIsNot)
{
    const QString project = write_project("field.any", "Field");
    std::ofstream(file("broken.lodex-project"), std::ios::binary) << "LODEX PROJECT\nand nothing behind it";
    EXPECT_TRUE(is_project_file(project)) << "by its content, whatever its name";
    EXPECT_FALSE(is_project_file(path("missing")));
    MessageList messages;
    MainWindow window;
    window.show();
    ASSERT_TRUE(window.run("lodex create sgrid name Box size 2+2+2 spacing 1+1+1"));
    const auto drop = [&](const QString& what) {
        QMimeData data;
        data.setUrls({QUrl::fromLocalFile(what)});
        QDragEnterEvent enter(QPoint(50, 50), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(&window, &enter);
        QDropEvent event(QPointF(50, 50), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(&window, &event);
        settle();
    };
    drop(path("broken.lodex-project"));
    EXPECT_NE(find_grid("Box"), nullptr) << "what was open stays";
    EXPECT_FALSE(messages.of(Lodex::LogLevel::Fatal).empty() && messages.of(Lodex::LogLevel::Error).empty());
    EXPECT_TRUE(window.unsaved());
    drop(project);
    EXPECT_EQ(find_grid("Box"), nullptr);
    ASSERT_NE(find_grid("Field"), nullptr);
    EXPECT_EQ(window.windowTitle(), "field.any[*] - lodex workbench");
}

TEST_F(ProjectTest, TheJournalIsThatOfTheProject)
{
    const QString other = write_project("other.lodex-project", "Other"); // its journal is empty
    MainWindow window;
    window.show();
    ASSERT_TRUE(window.run("lodex create sgrid name Box size 2+2+2 spacing 1+1+1;"
                           "lodex on SGrid Box fill_property A value 1; lodex on SGrid Box fill_property B value 2"));
    ASSERT_TRUE(window.run(QStringLiteral("lodex save project \"%1\"").arg(path("box.lodex-project"))));
    auto* journal = window.findChild<QPlainTextEdit*>("journalText");
    const QString text = journal->toPlainText();
    EXPECT_EQ(text.count("lodex"), 3);
    window.open_project_file(other);
    EXPECT_EQ(journal->toPlainText(), "");
    for (int n = 0; n < 4; ++n)
        ASSERT_TRUE(window.run(QStringLiteral("lodex on SGrid Other fill_property P%1 value 1").arg(n)));
    window.open_project_file(path("box.lodex-project"));
    EXPECT_EQ(journal->toPlainText(), text);
}

TEST_F(ProjectTest, RecentProjectsAndTheWishToReopenAreKept)
{
    QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, path("settings"));
    const QString first = write_project("first.lodex-project", "First"),
                  second = write_project("second.lodex-project", "Second");
    {
        MainWindow window(nullptr, MainWindow::Memory::Settings);
        window.show();
        window.open_project_file(first);
        window.open_project_file(second);
        window.close();
    }
    EXPECT_EQ(MainWindow::user_settings()->value("lastProject").toString(), second);
    EXPECT_TRUE(MainWindow::reopens_last(*MainWindow::user_settings()));
    clear();
    forget_project();
    MainWindow window(nullptr, MainWindow::Memory::Settings);
    window.show();
    EXPECT_EQ(window.recent_projects(), QStringList({second, first}));
    auto* menu = window.findChild<QMenu*>("menu_RecentProjects");
    emit menu->aboutToShow();
    ASSERT_GE(menu->actions().size(), 3);
    EXPECT_EQ(menu->actions()[1]->text(), "first.lodex-project");
    menu->actions()[1]->trigger();
    EXPECT_NE(find_grid("First"), nullptr);
    window.findChild<QAction*>("reopenLast")->setChecked(false);
    EXPECT_FALSE(MainWindow::reopens_last(*MainWindow::user_settings()));
}

} // namespace
