#include "frame/CommandText.h"
#include "frame/Help.h"
#include "tests/frame/Catalogue.h"

#include "MessageList.h"

#include <Lodex/xtools/XMHelpManager.h>

#include <clocale>
#include <locale>

namespace {

using namespace Kelvane;

/// Numbers as some countries write them.
struct CommaNumbers : std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

TEST(CommandText, NumbersAreWrittenInTheCLocaleWithSixDigits)
{
    const std::locale former = std::locale::global(std::locale(std::locale::classic(), new CommaNumbers));
    auto stream = command_stream();
    stream << 50.0 << ' ' << 0.1 << ' ' << 12.3456789 << ' ' << 1234567 << ' ' << 1e-7;
    std::locale::global(former);
    EXPECT_EQ(stream.str(), "50 0.1 12.3457 1234567 1e-07");
}

TEST(CommandText, Flags)
{
    EXPECT_EQ(flag_text(true), '1');
    EXPECT_EQ(flag_text(false), '0');
}

TEST(CommandText, SubmissionEndsWithANul)
{
    CommandLog log;
    auto stream = command_stream();
    stream << "lodex update all cameras";
    EXPECT_TRUE(submit_command(stream));
    EXPECT_EQ(stream.str(), std::string("lodex update all cameras\0", 25));
    EXPECT_EQ(log.take(), "lodex update all cameras");
}

TEST(CommandText, AFailureOfTheInterpreterIsReturned)
{
    MessageList messages;
    auto stream = command_stream();
    stream << "lodex no_such_verb at all";
    EXPECT_FALSE(submit_command(stream));
    EXPECT_FALSE(messages.entries.empty());
}

TEST(Help, Keys)
{
    EXPECT_EQ(help_topic_key("dox_FlowUnitAnalysis").str(), "help:?context=Dorvan&topic=dox_FlowUnitAnalysis");
    EXPECT_EQ(help_document_key("LQSGSectionMerge").str(),
              "help:user-doc/sgrid_new.html#LQSGSectionMerge;winhelp:Lodex");
    EXPECT_EQ(help_document_key("LQSGSectionSubdivide").str(),
              "help:user-doc/sgrid_new.html#LQSGSectionSubdivide;winhelp:Lodex");
}

TEST(Help, OpensTheManagerOnTheKey)
{
    MessageList messages;
    const auto key = help_document_key("LQSGSectionMerge");
    show_help(key);
    EXPECT_EQ(Lodex::XMHelpManager::instance()->current_key(), key);
    EXPECT_TRUE(messages.entries.empty());
    for (QWidget* window : QApplication::topLevelWidgets())
        window->close();
}

} // namespace
