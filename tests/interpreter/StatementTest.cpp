#include "lodex/interpreter/Lists.h"
#include "lodex/interpreter/Statement.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>

using namespace lodex;

namespace {

std::vector<std::string> texts(std::string_view submission)
{
    std::vector<std::string> list;
    for (const Statement& statement : parse_statements(submission))
        list.push_back(statement.text);
    return list;
}

std::vector<std::string> resolve(std::string_view list, const std::set<std::string>& names)
{
    std::size_t longest = 0;
    for (const std::string& name : names)
        longest = std::max(longest, name.size());
    return resolve_joined(list, [&](const std::string& name) { return names.contains(name); }, longest, "region");
}

std::string resolve_error(std::string_view list, const std::set<std::string>& names)
{
    try {
        (void)resolve(list, names);
    } catch (const CommandError& error) {
        return error.what();
    }
    return "no error";
}

using Texts = std::vector<std::string>;

} // namespace

TEST(Statements, AreSeparatedBySemicolonsAndLineEndsOutsideQuotes)
{
    EXPECT_EQ(texts("lodex a;lodex b\nlodex c"), (Texts{"lodex a", "lodex b", "lodex c"}));
    EXPECT_EQ(texts("lodex a \"x;y\" ; lodex b"), (Texts{"lodex a \"x;y\"", "lodex b"}));
}

TEST(Statements, BlanksAroundAreFreeAndEmptyOnesAreSkipped)
{
    EXPECT_EQ(texts(";; \n  lodex a\t ;\r\n ; "), (Texts{"lodex a"}));
    EXPECT_TRUE(texts("").empty());
    EXPECT_TRUE(texts(" \n;\t").empty());
}

TEST(Statements, EverythingBehindTheFirstNulIsIgnored)
{
    EXPECT_EQ(texts(std::string_view("lodex a\0;lodex b", 16)), (Texts{"lodex a"}));
    EXPECT_TRUE(texts(std::string_view("\0lodex a", 8)).empty());
}

TEST(Statements, AByteOrderMarkInFrontIsPassedOver)
{
    const auto statements = parse_statements("\xEF\xBB\xBFlodex a\nlodex b");
    ASSERT_EQ(statements.size(), 2u);
    EXPECT_EQ(statements[0].text, "lodex a");
    EXPECT_EQ(statements[0].position.column, 1);
    EXPECT_EQ(texts("\xEF\xBB\xBF"), Texts{});
    EXPECT_EQ(texts("lodex \xEF\xBB\xBF"), Texts{"lodex \xEF\xBB\xBF"}) << "only in front";
}

TEST(Statements, ALineThatBeginsWithAHashIsAComment)
{
    EXPECT_EQ(texts("# first; still comment \"\nlodex a\n  # more\nlodex b"), (Texts{"lodex a", "lodex b"}));
    EXPECT_EQ(texts("lodex a #1"), (Texts{"lodex a #1"})) << "inside a statement it is an ordinary character";
}

TEST(Statements, KnowTheirPlace)
{
    const auto statements = parse_statements("lodex a\n  lodex  b \"c d\" e");
    ASSERT_EQ(statements.size(), 2u);
    EXPECT_EQ(statements[1].position.line, 2);
    EXPECT_EQ(statements[1].position.column, 3);
    ASSERT_EQ(statements[1].words.size(), 4u);
    EXPECT_EQ(statements[1].words[1].position.column, 10);
    EXPECT_TRUE(statements[1].words[2].quoted);
    EXPECT_EQ(statements[1].words[2].text, "c d");
    EXPECT_EQ(statements[1].words[3].position.column, 18);
}

TEST(Statements, AQuoteThatIsNotClosedIsAnErrorWithItsPlace)
{
    for (const char* text : {"lodex a \"b", "lodex a \"b\nlodex c\""}) {
        try {
            (void)parse_statements(text);
            FAIL() << text;
        } catch (const CommandError& error) {
            EXPECT_STREQ(error.what(), "a double quote is not closed on its line");
            EXPECT_EQ(error.position().line, 1);
            EXPECT_EQ(error.position().column, 9);
        }
    }
}

TEST(Statements, AValueIsTheRawTextWithoutItsQuotes)
{
    const Statement statement = parse_statements("lodex \"A\"+\"B C\" two  blanks \"quoted  text\"").front();
    EXPECT_EQ(value_of_words(statement, 1, 4), "A+B C");
    EXPECT_EQ(value_of_words(statement, 4, 6), "two  blanks");
    EXPECT_EQ(value_of_words(statement, 6, 7), "quoted  text");
    EXPECT_EQ(value_of_words(statement, 3, 3), "");
}

TEST(Lists, AreCutAtPlusSigns)
{
    EXPECT_EQ(split_joined("0+2+3+5++8+9"), (Texts{"0", "2", "3", "5", "", "8", "9"}));
    EXPECT_EQ(split_joined("0+2+"), (Texts{"0", "2", ""}));
    EXPECT_TRUE(split_joined("").empty());
}

TEST(Lists, APlusBehindTheExponentBelongsToTheNumber)
{
    EXPECT_EQ(split_joined_numbers("1e+5+2"), (Texts{"1e+5", "2"}));
    EXPECT_EQ(split_joined_numbers("1.E+05+2.5e+1"), (Texts{"1.E+05", "2.5e+1"}));
    EXPECT_EQ(split_joined_numbers("1+2e-3+4"), (Texts{"1", "2e-3", "4"}));
    EXPECT_EQ(split_joined_numbers("e+5"), (Texts{"e", "5"})) << "no number before the e";
}

TEST(JoinedNames, ArePiecesThatExist)
{
    EXPECT_EQ(resolve("A+B", {"A", "B"}), (Texts{"A", "B"}));
    EXPECT_EQ(resolve("A+B+", {"A", "B"}), (Texts{"A", "B"}));
    EXPECT_TRUE(resolve("", {"A"}).empty());
}

TEST(JoinedNames, APlusMayStandForABlank)
{
    EXPECT_EQ(resolve("Upper+Reef+Zone+2", {"Upper Reef", "Zone 2"}), (Texts{"Upper Reef", "Zone 2"}));
    EXPECT_EQ(resolve("Upper Reef+B", {"Upper Reef", "B"}), (Texts{"Upper Reef", "B"}));
}

TEST(JoinedNames, TheFewestRunsWin)
{
    EXPECT_EQ(resolve("A+B", {"A", "B", "A B"}), (Texts{"A B"}));
    EXPECT_EQ(resolve("A+B+C", {"A", "B", "C", "B C"}), (Texts{"A", "B C"}));
}

TEST(JoinedNames, TwoEquallyShortReadingsAreAnError)
{
    EXPECT_EQ(resolve_error("A+B+C", {"A", "C", "A B", "B C"}), "the list \"A+B+C\" can be read in two ways");
}

TEST(JoinedNames, NoReadingNamesWhatIsLeft)
{
    EXPECT_EQ(resolve_error("A+X+B", {"A", "B"}), "there is no region \"X+B\"");
    EXPECT_EQ(resolve_error("X", {}), "there is no region \"X\"");
}

TEST(JoinedLists, BlanksAroundThePiecesAreFree)
{
    EXPECT_EQ(split_joined(" 0+2 + 3+\t5 "), (Texts{"0", "2", "3", "5"}));
    EXPECT_EQ(split_joined(" + "), (Texts{"", ""}));
    EXPECT_EQ(split_joined_numbers("1e+2 + 3"), (Texts{"1e+2", "3"}));
    EXPECT_EQ(resolve("Upper + Reef + B", {"Upper Reef", "B"}), (Texts{"Upper Reef", "B"}));
}

TEST(JoinedLists, LongOnesAreReadInTime)
{
    // Trying every run of these pieces would take some 10^10 steps.
    constexpr std::size_t count = 100000;
    std::string list, unknown = "B";
    for (std::size_t i = 0; i < count; ++i) {
        list += "A+";
        unknown += "+A";
    }
    const Texts names = resolve(list, {"A", "A B"});
    EXPECT_EQ(names, Texts(count, "A"));
    EXPECT_EQ(resolve_error(unknown, {"A", "A B"}), "there is no region \"" + unknown + "\"");
    EXPECT_EQ(resolve("A B C", {"A B C"}), Texts{"A B C"});
}
