#include <lodex/utils/Names.h>

#include <gtest/gtest.h>

#include <array>
#include <random>
#include <string>

using lodex::check_object_name;
using lodex::mend_object_name;
using namespace std::string_view_literals;

namespace {
constexpr std::array keywords{"name"sv, "sgrid"sv, "direction"sv};
}

TEST(Names, LegalNames)
{
    for (const char* name : {"Reek", "reek coarse 2", "PERM_I", "a", "%1", "a/b", "Größe", "貯留層", "k=1..3", "region_00",
                             "Everywhere", "all_regions 2", "na\xE2\x80\x8D" "me"})
        EXPECT_EQ(check_object_name(name), std::nullopt) << name;
}

TEST(Names, IllegalNamesAndTheirMessages)
{
    EXPECT_EQ(check_object_name(""), "A name must not be empty.");
    EXPECT_EQ(check_object_name("a;b"), "The name \"a;b\" must not hold the character ; .");
    EXPECT_EQ(check_object_name("a\"b"), "The name \"a\"b\" must not hold the character \" .");
    EXPECT_EQ(check_object_name("a+b"), "The name \"a+b\" must not hold the character + .");
    EXPECT_EQ(check_object_name("a\tb"), "The name \"a?b\" must not hold control characters.");
    EXPECT_EQ(check_object_name(" a"), "The name \" a\" must not begin or end with a blank.");
    EXPECT_EQ(check_object_name("a "), "The name \"a \" must not begin or end with a blank.");
    EXPECT_EQ(check_object_name(" "), "The name \" \" must not begin or end with a blank.");
    EXPECT_EQ(check_object_name("a  b"), "The name \"a  b\" must not hold two blanks in a row.");
    EXPECT_EQ(check_object_name("a\xFF"), "The name \"a?\" is not valid UTF-8 text.");
}

TEST(Names, ReservedNames)
{
    for (const char* name : {"everywhere", "all_regions", "all_properties", "region_0"})
        EXPECT_EQ(check_object_name(name), "The name \"" + std::string(name) + "\" is reserved.");
    EXPECT_EQ(lodex::reserved_names().size(), 4u);
}

TEST(Names, KeywordsOfTheVerbAreRefusedAsWords)
{
    EXPECT_EQ(check_object_name("my sgrid", keywords),
              "The name \"my sgrid\" must not hold the word \"sgrid\", which is a keyword of the command.");
    EXPECT_TRUE(check_object_name("name", keywords).has_value());
    EXPECT_TRUE(check_object_name("name of it", keywords).has_value());
    EXPECT_EQ(check_object_name("sgrid2", keywords), std::nullopt);
    EXPECT_EQ(check_object_name("Name", keywords), std::nullopt);
    EXPECT_EQ(check_object_name("my sgrid"), std::nullopt);
}

TEST(Names, EveryControlCharacterIsRefused)
{
    for (int c = 0; c < 256; ++c) {
        const bool control = c < 0x20 || c == 0x7F;
        if (!control)
            continue;
        const std::string name = std::string("a") + static_cast<char>(c) + "b";
        EXPECT_TRUE(check_object_name(name).has_value()) << c;
        EXPECT_EQ(mend_object_name(name), "a_b") << c;
    }
}

TEST(Names, UnprintableUnicodeIsRefused)
{
    for (const char* name : {"a\xC2\x85", "a\xE2\x80\xA8", "\xEF\xBB\xBF" "a", "a\xE2\x80\xAE" "b", "a\xE2\x80\x8B",
                             "\xEF\xBF\xBF",
                             "\xF0\x9F\xBF\xBF"})
        EXPECT_TRUE(check_object_name(name).has_value());
}

TEST(Names, BrokenUtf8IsRefused)
{
    for (const char* name : {"\x80", "\xC3", "\xC0\xAF", "\xE0\x80\x80", "\xED\xA0\x80", "\xF4\x90\x80\x80",
                             "\xF8\x88\x80\x80\x80",
                             "a\xE2\x82", "\xF0\x9F\x98"})
        EXPECT_TRUE(check_object_name(name).has_value());
    EXPECT_EQ(check_object_name("\xF0\x9F\x98\x80"), std::nullopt);
}

TEST(Names, Mending)
{
    EXPECT_EQ(mend_object_name("PORO"), "PORO");
    EXPECT_EQ(mend_object_name("  PORO \r\n"), "PORO");
    EXPECT_EQ(mend_object_name("PERM+X;\"Y\""), "PERM_X__Y_");
    EXPECT_EQ(mend_object_name("a   b"), "a b");
    EXPECT_EQ(mend_object_name(""), "unnamed");
    EXPECT_EQ(mend_object_name(" \t "), "unnamed");
    EXPECT_EQ(mend_object_name("everywhere"), "everywhere_");
    EXPECT_EQ(mend_object_name(" region_0"), "region_0_");
    EXPECT_EQ(mend_object_name("Gr\xF6\xDF" "e"), "Gr__e");
    EXPECT_EQ(mend_object_name("Größe"), "Größe");
    EXPECT_EQ(mend_object_name("the name of sgrid", keywords), "the name_ of sgrid_");
    EXPECT_EQ(mend_object_name(std::string_view("PORO\0\0\0\0", 8)), "PORO");
    constexpr std::array chain{"name"sv, "name_"sv};
    EXPECT_EQ(mend_object_name("name", chain), "name__");
}

TEST(Names, WhateverComesInAMendedNameIsLegalAndStays)
{
    std::mt19937 random(3);
    const std::string alphabet = std::string("ab ;\"+\t\n_\xC3\xB6\xE2\x80\xA8\xFF\x7F") + '\0';
    for (int n = 0; n < 20000; ++n) {
        std::string name;
        for (std::size_t length = random() % 8; length > 0; --length)
            name += alphabet[random() % alphabet.size()];
        const std::string mended = mend_object_name(name, keywords);
        ASSERT_EQ(check_object_name(mended, keywords), std::nullopt) << mended;
        ASSERT_EQ(mend_object_name(mended, keywords), mended);
        if (!check_object_name(name, keywords)) {
            ASSERT_EQ(mended, name);
        }
    }
}
