// Windows that close in any order, commands that run meanwhile, files that cannot be read, and the journal.

#include "MessageList.h"
#include "WorkbenchTest.h"

#include "apps/workbench/JournalView.h"
#include "apps/workbench/MainWindow.h"
#include "apps/workbench/plots/ComparisonWindow.h"
#include "apps/workbench/plots/NumbersWindow.h"
#include "lodex/appli/GuiServices.h"

#include <QAction>
#include <QApplication>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QMimeData>
#include <QPointer>
#include <QProcess>
#include <QPushButton>
#include <QStatusBar>
#include <QTest>
#include <QTimer>
#include <QUrl>

#include <algorithm>
#include <cstring>

using namespace lodex;
using Lodex::LogLevel;

namespace {

class WindowLifeTest : public WorkbenchTest {
protected:
    static void settle()
    {
        for (int n = 0; n < 3; ++n) {
            QApplication::processEvents();
            QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        }
    }
    /// A grid with units (without them the flow unit dialog asks first) and a property.
    static void add_field(const GridSize& size = {4, 3, 5})
    {
        add_numbers(add_box("Box", size), "NUMBER");
        EXPECT_TRUE(run("lodex on SGrid Box set_layers units \"All\" sizes " + std::to_string(size[2])));
    }
    /// Everything that the window can open on a grid.
    static QList<QPointer<QWidget>> open_all(MainWindow& window)
    {
        QList<QPointer<QWidget>> windows;
        for (const char* id :
             {"mergeSections", "subdivideSections", "upscaleGrid", "downscaleGrid", "upscaleProperty", "flowUnits"})
            windows.append(window.open_dialog(id));
        windows.append(window.open_numbers());
        windows.append(window.open_comparison());
        for (const char* id : {"report", "shortcuts"}) {
            window.findChild<QAction*>(id)->trigger();
        }
        for (const char* name : {"reportDialog", "shortcutsDialog"})
            windows.append(window.findChild<QWidget*>(name));
        return windows;
    }
    static int visible_windows()
    {
        return static_cast<int>(std::ranges::count_if(QApplication::topLevelWidgets(), &QWidget::isVisible));
    }
};

TEST_F(WindowLifeTest, WindowsCloseInAnyOrder)
{
    for (const int order : {0, 1, 2}) {
        auto window = std::make_unique<MainWindow>();
        window->show();
        add_field();
        QList<QPointer<QWidget>> windows = open_all(*window);
        settle();
        for (const auto& one : windows)
            EXPECT_TRUE(one && one->isVisible());
        if (order == 1)
            std::ranges::reverse(windows);
        if (order == 2) {
            window.reset(); // the main window goes first
            settle();
        }
        for (const auto& one : windows) {
            if (one)
                one->close();
            settle();
        }
        window.reset();
        settle();
        EXPECT_EQ(visible_windows(), 0) << order;
        clear();
    }
}

TEST_F(WindowLifeTest, TheGridMayGoWhileWindowsShowIt)
{
    MainWindow window;
    window.show();
    add_field();
    open_all(window);
    ASSERT_TRUE(window.run("lodex destroy objects Box"));
    settle();
    add_box("Other");
    settle();
    EXPECT_FALSE(window.grab().isNull());
    for (QWidget* other : QApplication::topLevelWidgets()) {
        if (other != &window)
            other->close();
    }
    settle();
}

TEST_F(WindowLifeTest, NothingClosesUnderARunningCommand)
{
    const GuiServices services;
    auto window = std::make_unique<MainWindow>();
    window->show();
    add_field({4, 4, 4});
    const QList<QPointer<QWidget>> windows = open_all(*window);
    settle();
    bool tried = false;
    int closed = 0;
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, [&] {
        if (!Interpreter::instance().busy() || tried)
            return;
        tried = true;
        for (const auto& one : windows)
            one->close();
        window->close();
        for (const auto& one : windows)
            closed += one && one->isVisible() ? 0 : 1;
        EXPECT_TRUE(window->isVisible());
        EXPECT_FALSE(window->run("lodex help")) << "no command inside a command";
    });
    timer.start(1);
    EXPECT_TRUE(window->run("lodex create example name Example size 90+90+60"));
    timer.stop();
    ASSERT_TRUE(tried) << "the command must let events run";
    EXPECT_EQ(closed, 0);
    settle();
    EXPECT_TRUE(window->isVisible());
    EXPECT_NE(find_grid("Example"), nullptr);
    for (const auto& one : windows) {
        if (one)
            one->close();
    }
    window.reset();
    settle();
}

TEST_F(WindowLifeTest, CancelStopsAtOnceAndLeavesNothing)
{
    const GuiServices services;
    MainWindow window;
    window.show();
    QTimer timer;
    QElapsedTimer since;
    qint64 took = -1;
    QObject::connect(&timer, &QTimer::timeout, [&] {
        for (QWidget* top : QApplication::topLevelWidgets()) {
            auto* cancel = top->findChild<QPushButton*>("progressCancel");
            if (cancel && cancel->isEnabled() && top->isVisible()) {
                since.start();
                cancel->click();
            }
        }
    });
    timer.start(5);
    const bool done = window.run("lodex create example name Example size 200+200+150");
    timer.stop();
    ASSERT_TRUE(since.isValid()) << "the progress window shows after half a second";
    took = since.elapsed();
    EXPECT_FALSE(done);
    EXPECT_LT(took, 1000);
    EXPECT_EQ(find_grid("Example"), nullptr);
    EXPECT_TRUE(Interpreter::instance().journal().empty());
    settle();
}

TEST_F(WindowLifeTest, ABrokenFileGivesAMessageAndTheWindowGoesOn)
{
    std::ofstream(file("broken.grdecl")) << "SPECGRID\n 2 2 2 1 F /\nCOORD\n 1 2 three /\n";
    std::ofstream(file("noise.roff"), std::ios::binary) << std::string("roff-bin\0garbage\xff\xfe", 18);
    std::ofstream(file("empty.egrid"));
    MessageList messages;
    MainWindow window;
    window.show();
    std::size_t problems = 0;
    for (const char* name : {"broken.grdecl", "noise.roff", "empty.egrid", "missing.grdecl"}) {
        const QString path = QString::fromStdString(file(name).string());
        EXPECT_FALSE(window.import_files({path})) << name;
        const std::size_t now = messages.of(LogLevel::Error).size() + messages.of(LogLevel::Fatal).size();
        EXPECT_GT(now, problems) << name;
        problems = now;
        QMimeData data;
        data.setUrls({QUrl::fromLocalFile(path)});
        QDragEnterEvent enter(QPoint(50, 50), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(&window, &enter);
        QDropEvent drop(QPointF(50, 50), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(&window, &drop);
        settle();
        const std::size_t after = messages.of(LogLevel::Error).size() + messages.of(LogLevel::Fatal).size();
        EXPECT_GT(after, problems) << name << ", dropped";
        problems = after;
        EXPECT_TRUE(Lodex::GeobaseLib::instance()->objects(Lodex::SGrid::static_type_id_()).empty()) << name;
    }
    EXPECT_TRUE(window.statusBar()->currentMessage().contains("could not be imported"));
    EXPECT_TRUE(window.run("lodex create sgrid name After size 2+2+2 spacing 1+1+1"));
    EXPECT_EQ(window.tree()->selected(), find_grid("After"));
}

TEST_F(WindowLifeTest, TheSavedJournalMakesTheSameGridInTheBatchRunner)
{
    MainWindow window;
    window.show();
    ASSERT_TRUE(window.run("lodex create example name Example size 12+10+12"));
    QWidget* merge = window.open_dialog("mergeSections");
    merge->findChild<QPushButton*>("apply_button")->click();
    ASSERT_NE(find_grid("Example_coarse"), nullptr);
    merge->close();
    ASSERT_TRUE(window.run(
        "lodex on SGrid Example upscale_porosity fine_porosity PORO Coarse Example_coarse coarse_porosity MEAN "
        "mapper geometric upscaler Arithmetic weight_using_volume 1"));
    save_journal(file("journal.lodex"));
    ASSERT_TRUE(window.run(
        QString::fromStdString("lodex export sgrid Example_coarse file \"" + file("window.roff").string() + "\"")));
    std::ofstream(file("export.lodex")) << "lodex export sgrid Example_coarse file \"" << file("batch.roff").string()
                                        << "\"\n";

    QProcess runner;
    runner.start(QStringLiteral(BUILD_BIN_DIR "/lodex"), {"run", QString::fromStdString(file("journal.lodex").string()),
                                                          QString::fromStdString(file("export.lodex").string())});
    ASSERT_TRUE(runner.waitForFinished(120000));
    EXPECT_EQ(runner.exitCode(), 0) << runner.readAllStandardError().toStdString();
    const std::string ours = content(file("window.roff")), batch = content(file("batch.roff"));
    EXPECT_GT(ours.size(), 1000u);
    EXPECT_TRUE(ours == batch) << "bit for bit";
}

} // namespace
