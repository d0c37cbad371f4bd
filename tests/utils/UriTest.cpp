#include <Lodex/utils/COSUri.h>
#include <Lodex/utils/PathName.h>

#include <gtest/gtest.h>

using Lodex::COSUri;
using Lodex::CString;
using Lodex::PathName;

using Path = std::vector<CString>;

TEST(COSUri, FullAddress)
{
    const COSUri uri(CString("lodex:SGrid/Reek/property/PORO"));
    EXPECT_EQ(uri.scheme(), CString("lodex"));
    EXPECT_EQ(uri.path(), (Path{"SGrid", "Reek", "property", "PORO"}));
    EXPECT_EQ(uri.object_type(), CString("SGrid"));
    EXPECT_EQ(uri.object_name(), CString("Reek"));
    EXPECT_EQ(uri.name(), CString("PORO"));
    EXPECT_EQ(uri.text(), CString("lodex:SGrid/Reek/property/PORO"));
}

TEST(COSUri, PlainNameIsOneComponent)
{
    for (const char* name : {"PORO", "PERM I", "50%", "a%zz", "Größe", "FACIES: code", "FACIES:2"}) {
        const COSUri uri{CString(name)};
        EXPECT_EQ(uri.scheme(), CString());
        EXPECT_EQ(uri.path(), Path{name});
        EXPECT_EQ(uri.name(), CString(name));
        EXPECT_EQ(uri.object_type(), CString());
        EXPECT_EQ(uri.object_name(), CString());
    }
}

TEST(COSUri, EmptyText)
{
    const COSUri uri(CString(""));
    EXPECT_TRUE(uri.path().empty());
    EXPECT_EQ(uri.name(), CString());
    EXPECT_EQ(uri.text(), CString());
    EXPECT_EQ(COSUri().text(), CString());
    EXPECT_EQ(COSUri(CString("lodex:")).name(), CString());
    EXPECT_EQ(COSUri(CString("lodex:")).scheme(), CString("lodex"));
}

TEST(COSUri, Decoding)
{
    EXPECT_EQ(COSUri(CString("lodex:SGrid/a%2Fb%20c")).object_name(), CString("a/b c"));
    EXPECT_EQ(COSUri(CString("lodex:SGrid/%c3%B6")).name(), CString("ö"));
    EXPECT_EQ(COSUri(CString("lodex:Reek")).path(), Path{"Reek"});
    EXPECT_EQ(COSUri(CString("%")).name(), CString("%"));
    EXPECT_EQ(COSUri(CString("%2")).name(), CString("%2"));
    EXPECT_EQ(COSUri(CString("%25")).name(), CString("%"));
    EXPECT_EQ(COSUri(CString("%2g")).name(), CString("%2g"));
}

TEST(COSUri, OtherSchemesAndSlashes)
{
    EXPECT_EQ(COSUri(CString("file:///data/x")).scheme(), CString("file"));
    EXPECT_EQ(COSUri(CString("file:///data/x")).path(), (Path{"data", "x"}));
    EXPECT_EQ(COSUri(CString("SGrid/Reek")).path(), (Path{"SGrid", "Reek"}));
    EXPECT_EQ(COSUri(CString("SGrid/Reek/")).name(), CString("Reek"));
    EXPECT_EQ(COSUri(CString("1a:b/c")).scheme(), CString());
    EXPECT_EQ(COSUri(CString(":a/b")).path(), (Path{":a", "b"}));
}

TEST(COSUri, MadeFromPartsItReadsBack)
{
    const COSUri uri("SGrid", "a:b/c%2F+\"; ö", "property", "50 % / 2");
    EXPECT_EQ(uri.text(), CString("lodex:SGrid/a%3Ab%2Fc%252F%2B%22%3B%20%C3%B6/property/50%20%25%20%2F%202"));
    const COSUri back(uri.text());
    EXPECT_EQ(back.scheme(), uri.scheme());
    EXPECT_EQ(back.path(), uri.path());
    EXPECT_EQ(back.object_name(), CString("a:b/c%2F+\"; ö"));
    EXPECT_EQ(back.name(), CString("50 % / 2"));
    EXPECT_EQ(COSUri("SGrid", "Reek").text(), CString("lodex:SGrid/Reek"));
    EXPECT_EQ(COSUri("SGrid", "Reek").name(), CString("Reek"));
}

TEST(COSUri, EveryByteReadsBack)
{
    std::string bytes;
    for (int c = 0; c < 256; ++c)
        bytes += static_cast<char>(c);
    const COSUri back(COSUri("T", bytes).text());
    EXPECT_EQ(back.object_name().str(), bytes);
}

TEST(PathName, BaseAndDirectory)
{
    EXPECT_EQ(PathName::basename("Porosity/Arithmetic"), CString("Arithmetic"));
    EXPECT_EQ(PathName::dirname("Porosity/Arithmetic"), CString("Porosity"));
    EXPECT_EQ(PathName::basename("a/b/c"), CString("c"));
    EXPECT_EQ(PathName::dirname("a/b/c"), CString("a/b"));
    EXPECT_EQ(PathName::basename("plain"), CString("plain"));
    EXPECT_EQ(PathName::dirname("plain"), CString());
    EXPECT_EQ(PathName::basename("a/"), CString());
    EXPECT_EQ(PathName::dirname("/a"), CString());
    EXPECT_EQ(PathName::basename(""), CString());
}
