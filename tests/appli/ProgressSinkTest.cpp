#include <lodex/appli/GuiServices.h>
#include <lodex/qtools/BusyState.h>

#include <Lodex/xtools/XMQShell.h>

#include <gtest/gtest.h>

#include <QDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPointer>
#include <QProgressBar>
#include <QPushButton>
#include <QTest>
#include <QTimer>

#include <chrono>
#include <functional>
#include <thread>

using Lodex::ProgressTracer;
using lodex::QtProgressSink;
using namespace std::chrono_literals;

namespace {

/// Puts a sink under the tracers.
struct WithSink {
    explicit WithSink(std::chrono::milliseconds delay = 0ms) : sink(delay), former(ProgressTracer::set_sink(&sink)) {}
    ~WithSink() { ProgressTracer::set_sink(former); }
    WithSink(const WithSink&) = delete;
    WithSink& operator=(const WithSink&) = delete;

    template <class T> [[nodiscard]] T* part(const char* name) const
    {
        return sink.window() ? sink.window()->findChild<T*>(name) : nullptr;
    }

    QtProgressSink sink;
    Lodex::ProgressSink* former;
};

/// Works until cancelled or the time is over; true when cancelled.
bool work(ProgressTracer& tracer, std::chrono::milliseconds time, const std::function<void()>& each = {})
{
    QElapsedTimer timer;
    timer.start();
    while (timer.elapsed() < time.count()) {
        std::this_thread::sleep_for(2ms);
        if (each)
            each();
        if (!tracer.set_done(static_cast<double>(timer.elapsed()) / static_cast<double>(time.count())))
            return true;
    }
    return false;
}

} // namespace

TEST(ProgressSink, ShortWorkShowsNothing)
{
    const WithSink with(500ms);
    ProgressTracer tracer("Short work");
    EXPECT_FALSE(work(tracer, 100ms, [&] { EXPECT_EQ(with.sink.window(), nullptr); }));
    EXPECT_TRUE(lodex::BusyState::instance().busy());
}

TEST(ProgressSink, LongWorkShowsTitleAndBar)
{
    const WithSink with(50ms);
    QPointer<QWidget> window;
    {
        ProgressTracer tracer("Merging <b>layers</b> ...\n");
        EXPECT_FALSE(work(tracer, 300ms));
        window = with.sink.window();
        ASSERT_FALSE(window.isNull());
        EXPECT_TRUE(window->isVisible());
        EXPECT_EQ(window->windowModality(), Qt::ApplicationModal);
        EXPECT_EQ(with.part<QLabel>("progressTitle")->text(), "Merging <b>layers</b> ...");
        EXPECT_EQ(with.part<QLabel>("progressTitle")->textFormat(), Qt::PlainText);
        auto* bar = with.part<QProgressBar>("progressBar");
        EXPECT_GT(bar->value(), bar->maximum() / 2);
        EXPECT_EQ(QApplication::overrideCursor()->shape(), Qt::BusyCursor);
    }
    EXPECT_EQ(with.sink.window(), nullptr);
    EXPECT_EQ(QApplication::overrideCursor(), nullptr);
    EXPECT_FALSE(lodex::BusyState::instance().busy());
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_TRUE(window.isNull());
}

TEST(ProgressSink, CancelStopsTheWork)
{
    const WithSink with(20ms);
    for (const bool escape : {false, true}) {
        ProgressTracer tracer("Work");
        QElapsedTimer since_click;
        const bool cancelled = work(tracer, 5s, [&] {
            if (!with.sink.window() || since_click.isValid())
                return;
            since_click.start();
            if (escape)
                QTest::keyClick(with.sink.window(), Qt::Key_Escape);
            else
                QTest::mouseClick(with.part<QPushButton>("progressCancel"), Qt::LeftButton);
            EXPECT_FALSE(with.part<QPushButton>("progressCancel")->isEnabled());
        });
        EXPECT_TRUE(cancelled);
        EXPECT_LT(since_click.elapsed(), 1000);
        EXPECT_TRUE(tracer.cancelled());
        EXPECT_TRUE(with.sink.window()->isVisible()) << "until the work has stopped";
    }
    ProgressTracer next("Next work");
    EXPECT_FALSE(work(next, 60ms)) << "the wish does not outlive its work";
}

TEST(ProgressSink, ClosingItsWindowMeansCancel)
{
    const WithSink with(20ms);
    ProgressTracer tracer("Work");
    EXPECT_TRUE(work(tracer, 5s, [&] {
        if (with.sink.window())
            with.sink.window()->close();
    }));
}

TEST(ProgressSink, NoButtonCanBeEnteredAgain)
{
    QPushButton apply("Apply");
    apply.show();
    const WithSink with(100ms);
    int runs = 0;
    QObject::connect(&apply, &QPushButton::clicked, [&] {
        ++runs;
        ProgressTracer tracer("Work");
        work(tracer, 300ms, [&] {
            QTest::mouseClick(&apply, Qt::LeftButton); // before and after the window has come
            QTest::keyClick(&apply, Qt::Key_Space);
        });
    });
    QTest::mouseClick(&apply, Qt::LeftButton);
    EXPECT_EQ(runs, 1);
    EXPECT_FALSE(apply.isDown());
    QTest::mouseClick(&apply, Qt::LeftButton);
    EXPECT_EQ(runs, 2) << "afterwards it can";
}

TEST(ProgressSink, ShellCannotBeClosedMeanwhile)
{
    const WithSink with(30ms);
    auto* body = new QDialog;
    auto* edit = new QLineEdit(body);
    QPointer<Lodex::XMQShell> shell = new Lodex::XMQShell(body, "BusyShell", "Busy");
    shell->show();
    {
        ProgressTracer tracer("Work");
        work(tracer, 150ms, [&] {
            QTest::keyClick(edit, Qt::Key_Escape);
            shell->widget()->close();
            EXPECT_TRUE(shell->widget()->isVisible());
        });
        // A program may ask for it; it comes about when the work is over.
        QTimer::singleShot(0, shell, &Lodex::XMQShell::close);
        work(tracer, 150ms);
        ASSERT_FALSE(shell.isNull());
        EXPECT_FALSE(shell->widget()->isVisible());
    }
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_TRUE(shell.isNull());
}

TEST(ProgressSink, QuestionOfTheWorkItselfCanBeAnswered)
{
    for (const auto delay : {0ms, 10000ms}) {
        const WithSink with(delay);
        ProgressTracer tracer("Work");
        work(tracer, 50ms);
        QMessageBox question;
        question.setStandardButtons(QMessageBox::Yes | QMessageBox::No);
        QTimer::singleShot(0, &question, [&] {
            QTest::mouseClick(question.button(QMessageBox::No), Qt::LeftButton);
        });
        QTimer::singleShot(2000, &question, &QDialog::reject); // so that a failure does not hang
        QElapsedTimer timer;
        timer.start();
        EXPECT_EQ(question.exec(), QMessageBox::No);
        EXPECT_LT(timer.elapsed(), 1500);
    }
}

TEST(ProgressSink, ModalDialogThatStartedTheWorkIsLocked)
{
    QDialog wizard;
    wizard.setModal(true);
    QPushButton finish("Finish", &wizard);
    wizard.show();
    const WithSink with(10000ms); // its own window does not come up
    int runs = 0;
    QObject::connect(&finish, &QPushButton::clicked, [&] {
        ++runs;
        ProgressTracer tracer("Work");
        work(tracer, 100ms, [&] { QTest::mouseClick(&finish, Qt::LeftButton); });
    });
    QTest::mouseClick(&finish, Qt::LeftButton);
    EXPECT_EQ(runs, 1);
}

TEST(ProgressSink, OtherEventsGoOn)
{
    const WithSink with(30ms);
    int ticks = 0;
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, [&] { ++ticks; });
    timer.start(10);
    ProgressTracer tracer("Work");
    work(tracer, 300ms);
    EXPECT_GE(ticks, 3);
}

TEST(ProgressSink, WorkFromATimerInsideDoesNotTurnTheLoopAgain)
{
    const WithSink with(20ms);
    int inner = 0;
    QTimer::singleShot(60, qApp, [&] {
        ++inner;
        ProgressTracer tracer("Inner");
        EXPECT_FALSE(work(tracer, 50ms));
    });
    {
        ProgressTracer tracer("Outer");
        EXPECT_FALSE(work(tracer, 250ms));
        EXPECT_EQ(inner, 1);
        EXPECT_NE(with.sink.window(), nullptr) << "the inner one does not end the outer one's window";
    }
    EXPECT_EQ(with.sink.window(), nullptr);
}

TEST(ProgressSink, OtherThreadsAreLeftAlone)
{
    const WithSink with(0ms);
    bool cancelled = true;
    std::thread([&] {
        ProgressTracer tracer("Elsewhere");
        cancelled = work(tracer, 50ms);
    }).join();
    EXPECT_FALSE(cancelled);
    EXPECT_EQ(with.sink.window(), nullptr);
    EXPECT_FALSE(lodex::BusyState::instance().busy());
}

TEST(GuiServices, StandUnderTheLibrariesWhileTheyLive)
{
    Lodex::ProgressSink* const before = ProgressTracer::set_sink(nullptr);
    {
        lodex::GuiServices services;
        EXPECT_EQ(ProgressTracer::set_sink(&services.progress()), &services.progress());
        EXPECT_TRUE(services.messages().is_enabled());
    }
    EXPECT_EQ(ProgressTracer::set_sink(before), nullptr);
}
