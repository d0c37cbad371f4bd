#include "GridTestTools.h"

#include <lodex/gridio/GridFormat.h>

#include <algorithm>
#include <gtest/gtest.h>
#include <sys/stat.h>

namespace lodex {
namespace {

std::string message_of(const std::function<void()>& work)
{
    try {
        work();
    } catch (const FileError& error) {
        return error.what();
    }
    return "no error";
}

TEST(GridFormats, GrdeclHasRegisteredItself)
{
    const GridFormat* const format = GridFormats::find("GrdEcl");
    ASSERT_NE(format, nullptr);
    EXPECT_EQ(format->name(), "grdecl");
    EXPECT_TRUE(format->can_read());
    EXPECT_TRUE(format->can_write());
    const auto all = GridFormats::all();
    EXPECT_EQ(std::count(all.begin(), all.end(), format), 1);
    EXPECT_TRUE(std::is_sorted(all.begin(), all.end(),
                               [](const auto* a, const auto* b) { return a->name() < b->name(); }));
    EXPECT_EQ(GridFormats::find("no such format"), nullptr);
}

TEST(GridFormats, KnowsAFileByItsContent)
{
    const test::TemporaryFolder folder;
    for (const std::string text : {"SPECGRID\n1 1 1 1 F /", "-- comment\n\n  RUNSPEC\n", "PORO 5*0.1 /", "NOECHO\n", "FIPZON\n",
                                   "FAULTS\n"}) {
        const auto path = folder.write("model.bin", text);
        EXPECT_EQ(GridFormats::for_reading(path).name(), "grdecl") << text;
    }
    EXPECT_EQ(GridFormats::for_reading(folder.write("a.GRDECL", "-- nothing but a comment")).name(), "grdecl");
    EXPECT_EQ(GridFormats::for_reading(folder.write("a.data", std::string("\0\1\2", 3))).name(), "grdecl");
}

TEST(GridFormats, SaysWhyAFileCannotBeRead)
{
    const test::TemporaryFolder folder;
    const std::string name = folder.path().string();
    const auto message = [](const std::filesystem::path& path) {
        return message_of([&] { (void)GridFormats::for_reading(path); });
    };
    EXPECT_EQ(message(folder / "none.grdecl"), name + "/none.grdecl: cannot be read: No such file or directory");
    EXPECT_EQ(message(folder.path()), name + ": is a folder, expected a file");
    EXPECT_EQ(message("/dev/null"), "/dev/null: is not a regular file");
    ASSERT_EQ(::mkfifo((folder / "pipe.grdecl").c_str(), 0600), 0);
    EXPECT_EQ(message(folder / "pipe.grdecl"), name + "/pipe.grdecl: is not a regular file");
    const std::string unknown = message(folder.write("a.txt", "Dear reader,\n"));
    EXPECT_TRUE(unknown.starts_with(name + "/a.txt: is of no known format (known: ")) << unknown;
    EXPECT_NE(unknown.find("grdecl"), std::string::npos);
}

TEST(GridFormats, ChoosesTheFormatToWrite)
{
    EXPECT_EQ(GridFormats::for_writing("out/model.grdecl").name(), "grdecl");
    EXPECT_EQ(GridFormats::for_writing("out/MODEL.GRDECL").name(), "grdecl");
    EXPECT_EQ(GridFormats::for_writing("out/model", "GRDECL").name(), "grdecl");
    EXPECT_TRUE(message_of([] { (void)GridFormats::for_writing("a.xyz"); })
                    .starts_with("a.xyz: the ending \".xyz\" belongs to no format that can be written (known: "));
    EXPECT_TRUE(message_of([] { (void)GridFormats::for_writing("a.grdecl", "xyz"); })
                    .starts_with("a.grdecl: there is no format \"xyz\" (known: "));
}

} // namespace
} // namespace lodex
