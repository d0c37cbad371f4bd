#include <lodex/utils/LogSinks.h>

#include "MessageList.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <thread>

#include <unistd.h>

using lodex::FileSink;
using lodex::ScreenSink;
using Lodex::CString;
using Lodex::Format;
using Lodex::Logger;
using Lodex::LogLevel;
using Lodex::LogSink;

namespace {

/// A folder of its own that goes away with the test.
class TemporaryFolder {
public:
    TemporaryFolder()
        : path_(std::filesystem::temp_directory_path() /
                ("lodex_logger_" + std::to_string(getpid()) + "_" +
                 testing::UnitTest::GetInstance()->current_test_info()->name()))
    {
        std::filesystem::remove_all(path_);
        std::filesystem::create_directories(path_);
    }
    ~TemporaryFolder() { std::filesystem::remove_all(path_); }
    [[nodiscard]] std::filesystem::path operator/(const char* name) const { return path_ / name; }

private:
    std::filesystem::path path_;
};

std::vector<std::string> lines_of(const std::filesystem::path& path)
{
    std::ifstream in(path);
    std::vector<std::string> lines;
    for (std::string line; std::getline(in, line);)
        lines.push_back(line);
    return lines;
}

std::string digits_as_zeros(std::string text)
{
    std::ranges::replace_if(text, [](char c) { return c >= '0' && c <= '9'; }, '0');
    return text;
}

} // namespace

TEST(Logger, LevelsAndOrder)
{
    MessageList messages;
    Logger::fatal(Format("%1\n").arg("no grid"));
    Logger::error("details\n");
    Logger::warning("odd\n");
    Logger::info("done\n");
    const std::vector<std::pair<LogLevel, std::string>> expected{{LogLevel::Fatal, "no grid\n"},
                                                                 {LogLevel::Error, "details\n"},
                                                                 {LogLevel::Warning, "odd\n"},
                                                                 {LogLevel::Info, "done\n"}};
    EXPECT_EQ(messages.entries, expected);
}

TEST(Logger, EverySinkHearsUntilItIsRemoved)
{
    MessageList first;
    {
        const MessageList second;
        Logger::add_sink(&first); // a second time: no effect
        Logger::info("one");
        EXPECT_EQ(second.entries.size(), 1u);
    }
    Logger::info("two");
    EXPECT_EQ(first.of(LogLevel::Info), (std::vector<std::string>{"one", "two"}));
    Logger::remove_sink(&first);
    Logger::info("three");
    EXPECT_EQ(first.entries.size(), 2u);
    Logger::remove_sink(&first);
    Logger::add_sink(nullptr);
}

TEST(Logger, EmptyMessagesAreLeftOut)
{
    const MessageList messages;
    Logger::info("");
    EXPECT_TRUE(messages.entries.empty());
}

TEST(Logger, ASinkThatThrowsDoesNotStopTheOthers)
{
    class Thrower : public LogSink {
        void message(LogLevel, const CString&) override { throw std::runtime_error("full"); }
    } thrower;
    Logger::add_sink(&thrower);
    const MessageList messages;
    EXPECT_NO_THROW(Logger::error("x"));
    Logger::remove_sink(&thrower);
    EXPECT_EQ(messages.entries.size(), 1u);
}

TEST(Logger, ASinkMayRemoveItselfOrOthersWhileItIsCalled)
{
    MessageList victim;
    class Remover : public LogSink {
    public:
        explicit Remover(LogSink* other) : other_(other) {}
        int calls = 0;

    private:
        void message(LogLevel, const CString&) override
        {
            ++calls;
            Logger::remove_sink(this);
            Logger::remove_sink(other_);
        }
        LogSink* other_;
    } remover(&victim);
    Logger::remove_sink(&victim);
    Logger::add_sink(&remover);
    Logger::add_sink(&victim);
    Logger::info("a");
    Logger::info("b");
    EXPECT_EQ(remover.calls, 1);
    EXPECT_TRUE(victim.entries.empty());
}

TEST(Logger, ManyThreadsOneSinkAndRemovalMeanwhile)
{
    MessageList stays; // not thread-safe by itself: the logger calls it once at a time
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([] {
            for (int n = 0; n < 500; ++n)
                Logger::info(Format("%1").arg(n));
        });
    }
    for (int n = 0; n < 100; ++n) {
        auto passing = std::make_unique<MessageList>();
        std::this_thread::yield();
        passing.reset(); // the removal waits for a message under way
    }
    for (auto& thread : threads)
        thread.join();
    EXPECT_EQ(stays.entries.size(), 2000u);
}

namespace {
std::string last_internal_error;
}

TEST(InternalError, GoesToTheLogAndToTheHandler)
{
    const MessageList messages;
    const auto former = Lodex::set_internal_error_handler([](const char* file, int line, const CString& message) {
        last_internal_error = std::string(file) + "|" + std::to_string(line) + "|" + message.str();
    });
    Lodex::Lodex_assert_internal_error("xmpropertyupscale", 12, Format("Pointer is nil: %1\n").arg("fine_grid_"));
    EXPECT_EQ(messages.of(LogLevel::Error),
              std::vector<std::string>{"Internal error in xmpropertyupscale, line 12: Pointer is nil: fine_grid_\n"});
    EXPECT_EQ(last_internal_error, "xmpropertyupscale|12|Pointer is nil: fine_grid_\n");

    EXPECT_NE(Lodex::set_internal_error_handler(former), nullptr);
    last_internal_error.clear();
    Lodex::Lodex_assert_internal_error("sources/frame/xmcommand.cpp", 3, Format("100% %1"));
    EXPECT_EQ(messages.of(LogLevel::Error).back(), "Internal error in xmcommand.cpp, line 3: 100% %1");
    EXPECT_TRUE(last_internal_error.empty());
}

TEST(ScreenSink, OneLinePerMessageWithItsLevel)
{
    std::ostringstream out;
    const ScreenSink sink(out);
    Logger::info("created grid\n");
    Logger::warning("names were mended");
    Logger::error("cannot\n\n");
    Logger::fatal("no grid\r\n");
    EXPECT_EQ(out.str(), "created grid\nwarning: names were mended\nerror: cannot\nerror: no grid\n");
}

TEST(ScreenSink, LeastLevelAndQuiet)
{
    std::ostringstream out;
    ScreenSink sink(out, LogLevel::Warning);
    Logger::info("i");
    Logger::warning("w");
    EXPECT_EQ(out.str(), "warning: w\n");
    sink.set_least_level(LogLevel::Info);
    sink.set_quiet(true);
    out.str("");
    Logger::info("i");
    Logger::warning("w");
    Logger::error("e");
    EXPECT_EQ(out.str(), "error: e\n");
    sink.set_quiet(false);
    out.str("");
    Logger::info("i");
    EXPECT_EQ(out.str(), "i\n");
}

TEST(ScreenSink, TakesItselfOut)
{
    std::ostringstream out;
    {
        const ScreenSink sink(out);
    }
    Logger::info("x");
    EXPECT_EQ(out.str(), "");
}

TEST(FileSink, AppendsTimeLevelAndText)
{
    const TemporaryFolder folder;
    {
        const FileSink sink(folder / "a.log");
        Logger::info("first\n");
        EXPECT_EQ(lines_of(folder / "a.log").size(), 1u) << "written at once";
    }
    {
        const FileSink sink(folder / "a.log");
        Logger::error("second\nline two\n");
    }
    const auto lines = lines_of(folder / "a.log");
    ASSERT_EQ(lines.size(), 3u);
    EXPECT_EQ(digits_as_zeros(lines[0]), "0000-00-00T00:00:00Z info first");
    EXPECT_EQ(digits_as_zeros(lines[1]), "0000-00-00T00:00:00Z error second");
    EXPECT_EQ(lines[2], "    line two");
}

TEST(FileSink, SaysWhenTheFileCannotBeOpened)
{
    const TemporaryFolder folder;
    try {
        const FileSink sink(folder / "missing/a.log");
        FAIL() << "no exception";
    } catch (const std::runtime_error& error) {
        EXPECT_EQ(std::string(error.what()), "Cannot open the log file " + (folder / "missing/a.log").string());
    }
}

TEST(LevelName, Words)
{
    EXPECT_EQ(lodex::level_name(LogLevel::Info), CString("info"));
    EXPECT_EQ(lodex::level_name(LogLevel::Warning), CString("warning"));
    EXPECT_EQ(lodex::level_name(LogLevel::Error), CString("error"));
    EXPECT_EQ(lodex::level_name(LogLevel::Fatal), CString("fatal"));
}
