// Copies for recovery: when they are made, what interrupts them, whose they are, and what a killed session gives back.

#include "MessageList.h"
#include "WorkbenchTest.h"

#include "apps/workbench/Autosave.h"
#include "apps/workbench/ConsoleEdit.h"
#include "apps/workbench/MainWindow.h"
#include "apps/workbench/RecoveryBar.h"
#include "apps/workbench/Watch.h"
#include "apps/workbench/Workbench.h"
#include "lodex/project/Project.h"

#include <QAction>
#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QLabel>
#include <QMessageBox>
#include <QProcess>
#include <QPushButton>
#include <QSettings>
#include <QTest>

#include <csignal>

using namespace lodex;
using namespace std::chrono_literals;

namespace {

constexpr Autosave::Times quick{.settle = 60ms, .idle = 20ms, .between = 400ms};
constexpr Autosave::Times never{.settle = 10h, .idle = 10h, .between = 10h};

class AutosaveTest : public WorkbenchTest {
protected:
    AutosaveTest()
    {
        forget_project();
        QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, text("settings"));
    }
    ~AutosaveTest() override
    {
        clear();
        forget_project();
    }

    [[nodiscard]] QString text(const std::string& name) const { return QString::fromStdString(file(name).string()); }
    [[nodiscard]] QString folder() const { return text("recovery"); }
    [[nodiscard]] QStringList sessions() const
    {
        return QDir(folder()).entryList({"session-*"}, QDir::Dirs);
    }
    static void settle()
    {
        for (int n = 0; n < 3; ++n) {
            QApplication::processEvents();
            QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        }
    }
    static void make_field(const std::string& size = "12+10+12")
    {
        EXPECT_TRUE(run("lodex create example name Example size " + size));
    }
    /// Bytes of the whole model.
    std::string model(const std::string& grid) const
    {
        const std::string path = file("model.roff").string();
        EXPECT_TRUE(run("lodex export sgrid \"" + grid + "\" file \"" + path + "\""));
        return content(path);
    }
};

TEST_F(AutosaveTest, AChangeIsKeptAfterAWhileAndTheCopyGoesWhenItIsSaved)
{
    Autosave autosave(folder(), quick);
    MainWindow window;
    window.set_autosave(&autosave);
    window.show();
    QTest::qWait(200);
    EXPECT_TRUE(sessions().isEmpty()) << "there is nothing to keep";
    make_field();
    ASSERT_TRUE(QTest::qWaitFor([&] { return autosave.has_copy(); }, 5000));
    ASSERT_EQ(sessions().size(), 1);
    EXPECT_TRUE(project_changed()) << "a copy is no save";
    EXPECT_TRUE(project_path().empty());
    ASSERT_TRUE(window.run("lodex on SGrid Example fill_property NEW value 3"));
    const auto copies = [&] { return QDir(folder() + '/' + sessions().front()).entryList({"copy-*"}, QDir::Files); };
    const QStringList first = copies();
    ASSERT_EQ(first.size(), 1);
    ASSERT_TRUE(QTest::qWaitFor([&] { return copies().size() == 1 && copies() != first; }, 5000))
        << "a newer one takes its place";
    ASSERT_TRUE(window.run(QStringLiteral("lodex save project \"%1\"").arg(text("field.lodex-project"))));
    EXPECT_FALSE(autosave.has_copy());
    EXPECT_TRUE(sessions().isEmpty());
    QTest::qWait(200);
    EXPECT_TRUE(sessions().isEmpty()) << "saved: nothing to keep";
    ASSERT_TRUE(window.run("lodex on SGrid Example fill_property NEW value 4"));
    ASSERT_TRUE(QTest::qWaitFor([&] { return autosave.has_copy(); }, 5000));
    window.close();
    EXPECT_TRUE(sessions().isEmpty()) << "a session that ends well leaves nothing";
}

TEST_F(AutosaveTest, NoCopyWhileACommandRunsOrTheUserIsAtWork)
{
    Autosave autosave(folder(), {.settle = 60ms, .idle = 300ms, .between = 400ms});
    MainWindow window;
    window.set_autosave(&autosave);
    window.show();
    make_field();
    auto* console = window.findChild<ConsoleEdit*>("console");
    for (int n = 0; n < 8; ++n) { // somebody types
        QTest::keyClick(console, Qt::Key_X);
        QTest::qWait(60);
        EXPECT_FALSE(autosave.has_copy()) << n;
    }
    EXPECT_EQ(console->text(), "xxxxxxxx");
    bool refused = false;
    GridWatch watch; // hears of the change while the command runs
    watch.changed = [&] { refused = Interpreter::instance().busy() && !autosave.keep_now(); };
    watch.observe(find_grid("Example"));
    ASSERT_TRUE(window.run("lodex on SGrid Example fill_property NEW value 3"));
    EXPECT_TRUE(refused);
    ASSERT_TRUE(QTest::qWaitFor([&] { return autosave.has_copy(); }, 5000));
}

TEST_F(AutosaveTest, InputStopsACopyAndIsNotLost)
{
    Autosave autosave(folder(), never);
    MainWindow window;
    window.set_autosave(&autosave);
    window.show();
    make_field("60+60+60");
    auto* console = window.findChild<ConsoleEdit*>("console");
    bool typed = false, ended = true;
    QObject::connect(&autosave, &Autosave::progress, [&](double) {
        if (std::exchange(typed, true))
            return;
        QTest::keyClick(console, Qt::Key_A);
        QTest::mouseClick(window.findChild<QPushButton*>("logClear"), Qt::LeftButton);
        EXPECT_EQ(console->text(), "") << "not while the project is written";
    });
    QObject::connect(&autosave, &Autosave::finished, [&](bool done) { ended = done; });
    // A fast machine may write the copy before anything can happen: then a larger one.
    for (const char* size : {"120+100+100", "200+200+100"}) {
        (void)autosave.keep_now();
        if (typed)
            break;
        ASSERT_TRUE(run("lodex destroy objects Example"));
        make_field(size);
    }
    if (!typed)
        (void)autosave.keep_now();
    ASSERT_TRUE(typed);
    EXPECT_FALSE(ended);
    EXPECT_FALSE(autosave.has_copy());
    settle();
    EXPECT_EQ(console->text(), "a") << "it happens afterwards";
    EXPECT_TRUE(QDir(folder() + '/' + sessions().value(0)).entryList({"copy-*"}, QDir::Files).isEmpty());
    EXPECT_TRUE(autosave.keep_now()) << "it is tried again";
    EXPECT_TRUE(autosave.has_copy());
    autosave.clear();
}

TEST_F(AutosaveTest, AFolderThatCannotBeWrittenToIsToldOnce)
{
    std::ofstream(file("recovery")) << "no folder";
    MessageList messages;
    Autosave autosave(folder(), never);
    make_field("4+4+4");
    EXPECT_FALSE(autosave.keep_now());
    EXPECT_FALSE(autosave.keep_now());
    int told = 0;
    for (const std::string& warning : messages.of(Lodex::LogLevel::Warning))
        told += warning.find("recovery") != std::string::npos ? 1 : 0;
    EXPECT_EQ(told, 1);
    EXPECT_TRUE(autosave.left_behind().isEmpty());
}

TEST_F(AutosaveTest, WorkbenchesDoNotTakeFromEachOther)
{
    Autosave mine(folder(), never);
    make_field("4+4+4");
    ASSERT_TRUE(mine.keep_now());
    EXPECT_TRUE(mine.left_behind().isEmpty()) << "not what it keeps itself";
    {
        // The other one has a lock file of this process as well: it lives.
        Autosave other(folder(), never);
        EXPECT_TRUE(other.left_behind().isEmpty());
        ASSERT_TRUE(other.keep_now());
        EXPECT_EQ(sessions().size(), 2);
        EXPECT_TRUE(mine.left_behind().isEmpty());
        other.clear();
    }
    EXPECT_EQ(sessions().size(), 1);
    mine.clear();
    EXPECT_TRUE(sessions().isEmpty());
}

TEST_F(AutosaveTest, WhatIsHalfWrittenIsNoOffer)
{
    QDir().mkpath(folder() + "/session-1-1");
    std::ofstream(file("recovery") / "session-1-1" / "copy-1") << "half";
    QDir().mkpath(folder() + "/session-2-1");
    std::ofstream(file("recovery") / "session-2-1" / "about.json") << "{\"file\": \"../../x\", \"grids\": 3}";
    Autosave autosave(folder(), never);
    EXPECT_TRUE(autosave.left_behind().isEmpty());
    EXPECT_TRUE(sessions().isEmpty()) << "it is cleared away";
}

/// A workbench of its own in a process of its own, without a display.
class KilledSessionTest : public AutosaveTest {
protected:
    void start(const QStringList& arguments)
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert("QT_QPA_PLATFORM", "offscreen");
        environment.insert("XDG_DATA_HOME", text("data"));
        environment.insert("XDG_CONFIG_HOME", text("config"));
        process_.setProcessEnvironment(environment);
        process_.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        process_.start(QStringLiteral(BUILD_BIN_DIR "/lodex-workbench"),
                       QStringList{"--keep-after", "0.2"} + arguments);
        ASSERT_TRUE(process_.waitForStarted());
    }
    [[nodiscard]] QString its_folder() const { return text("data") + "/lodex-workbench/recovery"; }
    /// Waits for the copy of the other process and kills it.
    void kill_after_copy()
    {
        const auto kept = [this] {
            const QStringList found = QDir(its_folder()).entryList({"session-*"}, QDir::Dirs);
            return !found.isEmpty() && QFile::exists(its_folder() + '/' + found.front() + "/about.json");
        };
        ASSERT_TRUE(QTest::qWaitFor(kept, 60000));
        Autosave here(its_folder(), never);
        EXPECT_TRUE(here.left_behind().isEmpty()) << "it is alive";
        ::kill(static_cast<pid_t>(process_.processId()), SIGKILL);
        ASSERT_TRUE(process_.waitForFinished(30000));
        EXPECT_EQ(process_.exitStatus(), QProcess::CrashExit);
    }
    static QPushButton* button(Workbench& bench, const char* name)
    {
        return bench.window().findChild<QPushButton*>(name);
    }

    QProcess process_;
};

TEST_F(KilledSessionTest, TheNextStartRecoversTheSameModelBitForBit)
{
    make_field("14+12+16");
    ASSERT_TRUE(run("lodex export sgrid Example file \"" + file("field.roff").string() + "\""));
    clear();
    ASSERT_TRUE(run("lodex import file \"" + file("field.roff").string() + "\" name field"));
    const std::string before = model("field");
    const std::vector<std::string> journal = Interpreter::instance().journal();
    clear();
    forget_project();

    start({text("field.roff")});
    kill_after_copy();

    Workbench bench({.files = {}, .recovery = its_folder(), .times = never, .asks = true});
    bench.window().show();
    bench.start();
    auto* bar = bench.window().findChild<RecoveryBar*>("recoveryBar");
    ASSERT_TRUE(bar->isVisible());
    ASSERT_EQ(bar->waiting().size(), 1);
    EXPECT_EQ(bar->waiting().front().grids, QStringList{"field"});
    EXPECT_GT(bar->waiting().front().bytes, 1000);
    EXPECT_LT(std::abs(bar->waiting().front().when.secsTo(QDateTime::currentDateTime())), 300);
    const QString told = bar->findChild<QLabel*>("recoveryText")->text();
    EXPECT_TRUE(told.contains("field")) << told.toStdString();
    EXPECT_TRUE(bench.window().tree()->grids().empty()) << "nothing else is opened before the answer";
    button(bench, "recoveryRecover")->click();
    settle();
    EXPECT_FALSE(bar->isVisible());
    ASSERT_NE(find_grid("field"), nullptr);
    EXPECT_TRUE(model("field") == before) << "bit for bit";
    EXPECT_EQ(Interpreter::instance().journal().at(0), journal.at(0));
    EXPECT_TRUE(bench.window().unsaved());
    EXPECT_EQ(bench.window().windowTitle(), "Recovered[*] - lodex workbench");
    EXPECT_TRUE(bench.autosave().has_copy()) << "what was recovered stays on the disk until it is saved";
    Autosave third(its_folder(), never);
    EXPECT_TRUE(third.left_behind().isEmpty()) << "and belongs to this session now";

    ASSERT_TRUE(bench.window().run(QStringLiteral("lodex save project \"%1\"").arg(text("saved.lodex-project"))));
    EXPECT_FALSE(bench.window().unsaved());
    EXPECT_TRUE(QDir(its_folder()).entryList({"session-*"}, QDir::Dirs).isEmpty());
    EXPECT_TRUE(model("field") == before) << "also when the copy is gone";
    bench.window().close();
}

TEST_F(KilledSessionTest, LaterAsksAgainAndDiscardDeletes)
{
    make_field("6+5+4");
    ASSERT_TRUE(run("lodex save project \"" + file("field.lodex-project").string() + "\"; "
                    "lodex export sgrid Example file \"" + file("extra.roff").string() + "\""));
    clear();
    forget_project();
    start({text("field.lodex-project"), text("extra.roff")}); // a saved project, then a change
    kill_after_copy();
    {
        Workbench bench({.files = {}, .recovery = its_folder(), .times = never, .asks = false});
        bench.window().show();
        bench.start();
        EXPECT_TRUE(bench.window().findChild<QLabel*>("recoveryText")->text().contains("field.lodex-project"));
        button(bench, "recoveryLater")->click();
        settle();
        EXPECT_FALSE(bench.window().findChild<RecoveryBar*>()->isVisible());
        ASSERT_NE(find_grid("Example"), nullptr) << "what every start opens";
        EXPECT_FALSE(bench.window().unsaved()) << "nobody need save the example";
        bench.window().close();
    }
    clear();
    forget_project();
    {
        Workbench bench({.files = {}, .recovery = its_folder(), .times = never, .asks = false});
        bench.window().show();
        bench.start();
        ASSERT_TRUE(bench.window().findChild<RecoveryBar*>()->isVisible()) << "asked again";
        button(bench, "recoveryDiscard")->click();
        settle();
        EXPECT_NE(find_grid("Example"), nullptr);
        bench.window().close();
    }
    EXPECT_TRUE(QDir(its_folder()).entryList({"session-*"}, QDir::Dirs).isEmpty());
}

TEST_F(KilledSessionTest, AnEndedSessionLeavesNothingAndItsProjectComesBack)
{
    make_field("6+5+4");
    ASSERT_TRUE(run("lodex save project \"" + file("field.lodex-project").string() + "\""));
    clear();
    forget_project();
    {
        Workbench bench({.files = {text("field.lodex-project")}, .recovery = folder(), .times = quick, .asks = true});
        bench.window().show();
        bench.start();
        ASSERT_NE(find_grid("Example"), nullptr);
        QTest::qWait(200);
        EXPECT_TRUE(sessions().isEmpty());
        bool closed = false;
        QObject::connect(&bench, &Workbench::closed, [&] { closed = true; });
        bench.window().close();
        EXPECT_TRUE(closed) << "nothing to ask";
    }
    clear();
    forget_project();
    Workbench bench({.files = {}, .recovery = folder(), .times = never, .asks = true});
    bench.window().show();
    bench.start();
    ASSERT_NE(find_grid("Example"), nullptr);
    EXPECT_EQ(find_grid("Example")->model().size, (GridSize{6, 5, 4}));
    EXPECT_EQ(QString::fromStdString(project_path().string()), text("field.lodex-project"));
    bench.window().close();
}

} // namespace
