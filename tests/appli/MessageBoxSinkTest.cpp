#include <lodex/appli/MessageBoxSink.h>

#include <lodex/qtools/BusyState.h>

#include <gtest/gtest.h>

#include <QApplication>
#include <QPushButton>
#include <QTest>

#include <thread>

using Lodex::Format;
using Lodex::Logger;
using lodex::MessageBoxSink;

TEST(MessageBoxSink, ShowsFatalMessagesWithoutTheLineEnd)
{
    MessageBoxSink sink;
    Logger::fatal(Format("%1\n").arg("Please provide a <b>new</b> sgrid name"));
    EXPECT_EQ(sink.box(), nullptr) << "not inside the call";
    QCoreApplication::processEvents();
    ASSERT_NE(sink.box(), nullptr);
    EXPECT_TRUE(sink.box()->isVisible());
    EXPECT_EQ(sink.box()->text(), "Please provide a <b>new</b> sgrid name");
    EXPECT_EQ(sink.box()->textFormat(), Qt::PlainText);
    EXPECT_EQ(sink.box()->icon(), QMessageBox::Critical);
    QTest::mouseClick(sink.box()->button(QMessageBox::Ok), Qt::LeftButton);
    EXPECT_EQ(sink.box(), nullptr);
}

TEST(MessageBoxSink, AddsToTheOpenBox)
{
    MessageBoxSink sink;
    Logger::fatal("first\n");
    QCoreApplication::processEvents();
    QMessageBox* box = sink.box();
    Logger::fatal("second\n");
    Logger::fatal("third\n");
    QCoreApplication::processEvents();
    EXPECT_EQ(sink.box(), box);
    EXPECT_EQ(box->text(), "first\nsecond\nthird");
    box->close();
    Logger::fatal("fourth\n");
    QCoreApplication::processEvents();
    ASSERT_NE(sink.box(), nullptr);
    EXPECT_EQ(sink.box()->text(), "fourth") << "a closed box is forgotten";
}

TEST(MessageBoxSink, BoxThatDiesWithItsWindowIsForgotten)
{
    MessageBoxSink sink;
    Logger::fatal("first\n");
    QCoreApplication::processEvents();
    delete sink.box();
    Logger::fatal("second\n");
    QCoreApplication::processEvents();
    ASSERT_NE(sink.box(), nullptr);
    EXPECT_EQ(sink.box()->text(), "second");
}

TEST(MessageBoxSink, PassesOverOtherLevels)
{
    MessageBoxSink sink;
    Logger::error("error\n");
    Logger::warning("warning\n");
    Logger::info("info\n");
    QCoreApplication::processEvents();
    EXPECT_EQ(sink.box(), nullptr);
}

TEST(MessageBoxSink, CanBeSwitchedOff)
{
    MessageBoxSink sink;
    sink.set_enabled(false);
    Logger::fatal("unseen\n");
    QCoreApplication::processEvents();
    EXPECT_EQ(sink.box(), nullptr);
    sink.set_enabled(true);
    Logger::fatal("seen\n");
    QCoreApplication::processEvents();
    ASSERT_NE(sink.box(), nullptr);
    EXPECT_EQ(sink.box()->text(), "seen");
}

TEST(MessageBoxSink, WaitsUntilTheCommandIsOver)
{
    MessageBoxSink sink;
    lodex::BusyState::instance().enter();
    Logger::fatal("failed\n");
    QCoreApplication::processEvents();
    EXPECT_EQ(sink.box(), nullptr);
    lodex::BusyState::instance().leave();
    ASSERT_NE(sink.box(), nullptr);
    EXPECT_EQ(sink.box()->text(), "failed");
}

TEST(MessageBoxSink, TakesMessagesFromOtherThreads)
{
    MessageBoxSink sink;
    std::thread([] { Logger::fatal("from elsewhere\n"); }).join();
    QCoreApplication::processEvents();
    ASSERT_NE(sink.box(), nullptr);
    EXPECT_EQ(sink.box()->text(), "from elsewhere");
}

TEST(MessageBoxSink, DeadSinkIsForgotten)
{
    {
        MessageBoxSink sink;
        Logger::fatal("shown\n");
        QCoreApplication::processEvents();
        Logger::fatal("on its way\n");
    }
    Logger::fatal("nobody\n");
    QCoreApplication::processEvents();
    for (const QWidget* window : QApplication::topLevelWidgets())
        EXPECT_NE(window->objectName(), "messageBox");
}
