#include "GridTestTools.h"

#include <lodex/gridio/GrdeclFormat.h>
#include <lodex/gridio/GrdeclReader.h>

#include <algorithm>
#include <csignal>
#include <gtest/gtest.h>
#include <sstream>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace lodex {
namespace {

std::string written(const GridModel& model, const WriteOptions& options = {})
{
    const test::TemporaryFolder folder;
    GrdeclFormat().write(model, folder / "out.grdecl", options);
    return test::file_text(folder / "out.grdecl");
}

GridModel small_model()
{
    GridModel model;
    model.size = {2, 1, 1};
    model.coord = std::vector<float>{0, 0, 0, 0, 0, 1, 1, 0, 0, 1, 0, 1, 2, 0, 0, 2, 0, 1,
                                     0, 1, 0, 0, 1, 1, 1, 1, 0, 1, 1, 1, 2, 1, 0, 2, 1, 1};
    model.zcorn = std::vector<double>{0, 0, 0, 0, 0, 0, 0, 0, 1.1, 1, 1, 1, 1, 1, 1, 1};
    model.active = {1, 0};
    PropertyData property;
    property.name = "PORO";
    property.values = std::vector<float>{0.25F, 0.1F};
    model.properties.push_back(property);
    return model;
}

TEST(GrdeclWrite, TheTextOfASmallGrid)
{
    GridModel model = small_model();
    model.faults = {{"F1", {0, 0}, {0, 0}, {0, 0}, "I"}};
    model.frame.grid_units = "METRES";
    model.kept = {{"NOECHO", "", "a.grdecl", 1}, {"RUNSPEC", "", "a.grdecl", 2}, {"OIL", "", "a.grdecl", 3}};
    model.regions = {{"R", {0, 1}, true}};
    model.layers = {{"Upper", 1, 1.5F, Lodex::LayerInfo::ParallelToTop}};
    model.properties[0].unit = "v/v";
    EXPECT_EQ(written(model), "-- LODEX GRID 1\n"
                              "GRIDUNIT\n 'METRES' /\n\n"
                              "SPECGRID\n 2 1 1 1 F /\n\n"
                              "-- LODEX LAYER \"Upper\" 1 1.5 top\n"
                              "-- LODEX STORE COORD store float\n"
                              "COORD\n0 0 0 0 0 1\n1 0 0 1 0 1\n2 0 0 2 0 1\n0 1 0 0 1 1\n1 1 0 1 1 1\n2 1 0 2 1 1\n/\n\n"
                              "-- LODEX STORE ZCORN store double\n"
                              "ZCORN\n0 0 0 0 0 0 0 0 1.1 1 1 1 1 1 1 1\n/\n\n"
                              "ACTNUM\n1 0\n/\n\n"
                              "-- LODEX PROPERTY PORO unit \"v/v\"\n"
                              "PORO\n0.25 0.1\n/\n\n"
                              "FAULTS\n 'F1' 1 1 1 1 1 1 'I' /\n/\n\n"
                              "-- LODEX REGION \"R\" model 1\n--| 1 1\n"
                              "-- LODEX FROM \"a.grdecl\" 1\nNOECHO\n"
                              "-- LODEX KEPT \"RUNSPEC\" \"a.grdecl\" 2\n--|\n"
                              "-- LODEX KEPT \"OIL\" \"a.grdecl\" 3\n--|\n");
}

TEST(GrdeclWrite, RunLengths)
{
    WriteOptions options;
    options.run_lengths = true;
    const std::string text = written(small_model(), options);
    EXPECT_NE(text.find("ZCORN\n8*0 1.1 7*1\n/"), std::string::npos) << text;
}

TEST(GrdeclWrite, EverythingComesBackBitByBit)
{
    for (const GridSize size : {GridSize{7, 5, 4}, GridSize{1, 1, 1}, GridSize{1, 9, 2}, GridSize{11, 1, 1}, GridSize{1, 1, 8}}) {
        const GridModel model = test::full_model(size[0], size[1], size[2]);
        for (const bool run_lengths : {false, true}) {
            WriteOptions options;
            options.run_lengths = run_lengths;
            const std::string text = written(model, options);
            const ReadResult back = grdecl::read_text(text, "out.grdecl", {});
            EXPECT_EQ(test::difference(model, back.model), "");
            EXPECT_EQ(written(back.model, options), text);
            std::istringstream lines(text);
            for (std::string line; std::getline(lines, line);) {
                EXPECT_LE(line.size(), 128U) << line;
            }
        }
    }
}

TEST(GrdeclWrite, AFileOfAnEarlierDayReadsTheSame)
{
    const GridModel model = test::full_model(2, 2, 2);
    const ReadResult old = GrdeclFormat().read(test::test_data() / "grdecl/everything.grdecl", {});
    EXPECT_EQ(test::difference(model, old.model), "");
    EXPECT_EQ(written(model), test::file_text(test::test_data() / "grdecl/everything.grdecl"));
}

TEST(GrdeclWrite, NamesThatAreNoKeywordsAreReported)
{
    const test::TemporaryFolder folder;
    const GridModel model = test::full_model(3, 2, 2);
    const WriteResult result = GrdeclFormat().write(model, folder / "out.grdecl", {});
    EXPECT_EQ(result.bytes, std::filesystem::file_size(folder / "out.grdecl"));
    std::vector<std::string> texts;
    for (const Message& message : result.messages) {
        EXPECT_EQ(message.file, (folder / "out.grdecl").string());
        texts.push_back(message.text);
    }
    EXPECT_EQ(texts, (std::vector<std::string>{
                         "property \"Rock type \"A\\B\"\" is written as ROCK_TYP",
                         "property \"COORD\" is written as COORD2",
                         "property \"a_very_long_property_name\" is written as A_VERY_L",
                         "property \"permx\" is written as PERMX2",
                         "property ALONGERNAME has a name of more than 8 characters, which some programs do not read",
                         "keyword WELLDIMS is written as a comment: it does not belong among grid keywords",
                         "keyword PVTW is written as a comment: it does not belong among grid keywords"}));
}

TEST(GrdeclWrite, KeptTextThatWouldReadAsSomethingElseBecomesAComment)
{
    GridModel model = small_model();
    // One number per cell of this grid, an open quote, an unclosed record, no keyword at all.
    model.kept = {{"MYTABLE", "\n 1 2 /", "a", 1}, {"OPEN", "\n 'x", "a", 2}, {"UNCLOSED", "\n 1 2 3", "a", 3},
                  {"no keyword", "text\nof two lines", "a", 4}, {"PORO", " 1 2 /", "a", 5},
                  {"BOX", "\n 1 1 1 1 1 1 /", "a", 6}, {"NTG", " 0.5 /", "a", 7}, {"ENDBOX", "", "a", 8}};
    const std::string text = written(model);
    EXPECT_EQ(test::difference(model, grdecl::read_text(text, "out.grdecl", {}).model), "");
    EXPECT_NE(text.find("-- LODEX KEPT \"PORO\" \"a\" 5\n"), std::string::npos);
    // Keywords that belong together stay as they are when nothing is in their way.
    model.kept.erase(model.kept.begin(), model.kept.begin() + 5);
    const std::string together = written(model);
    EXPECT_NE(together.find("\nBOX\n 1 1 1 1 1 1 /\n"), std::string::npos) << together;
    EXPECT_NE(together.find("\nNTG 0.5 /\n"), std::string::npos);
    EXPECT_EQ(test::difference(model, grdecl::read_text(together, "out.grdecl", {}).model), "");
}

TEST(GrdeclWrite, OtherProgramsSeePlainKeywords)
{
    // Without its comments the file still reads, with the same geometry in 64 bits.
    const GridModel model = test::full_model(4, 3, 2);
    std::istringstream lines(written(model));
    std::string text;
    for (std::string line; std::getline(lines, line);) {
        text += line.starts_with("--") ? "" : line + '\n';
    }
    const GridModel plain = grdecl::read_text(text, "plain.grdecl", {}).model;
    EXPECT_EQ(plain.size, model.size);
    EXPECT_EQ(plain.active, model.active);
    ASSERT_EQ(plain.zcorn.size(), model.zcorn.size());
    for (std::size_t i = 0; i < plain.zcorn.size(); ++i) {
        EXPECT_NEAR(plain.zcorn[i], model.zcorn[i], 1e-4);
    }
    EXPECT_TRUE(plain.regions.empty());
    EXPECT_NE(plain.find_property("ROCK_TYP"), nullptr);
}

TEST(GrdeclWrite, ModelsThatDoNotFitAreRefused)
{
    const test::TemporaryFolder folder;
    const auto path = folder / "out.grdecl";
    const auto message = [&](const GridModel& model) {
        try {
            GrdeclFormat().write(model, path, {});
        } catch (const FileError& error) {
            return error.reason();
        }
        return std::string("no error");
    };
    GridModel model = small_model();
    model.active.push_back(1);
    EXPECT_EQ(message(model), "ACTNUM has 3 values, expected 2");
    model = small_model();
    model.zcorn = std::vector<float>(15);
    EXPECT_EQ(message(model), "ZCORN has 15 values, expected 16");
    model = small_model();
    model.properties[0].values = std::vector<double>(1);
    EXPECT_EQ(message(model), "property PORO has 1 value, expected 2");
    model = small_model();
    model.properties[0].values = std::vector<double>{1, -std::numeric_limits<double>::infinity()};
    EXPECT_EQ(message(model), "PORO has the value -inf at position 2, which the format cannot hold");
    model = small_model();
    model.size = {0, 1, 1};
    EXPECT_EQ(message(model), "the grid has 0 x 1 x 1 cells, expected 1 or more along each axis");
    EXPECT_TRUE(folder.names().empty());
}

TEST(GrdeclWrite, UndefinedDepthsAreRefused)
{
    const test::TemporaryFolder folder;
    GridModel model = small_model();
    model.zcorn = std::vector<float>(16, std::numeric_limits<float>::quiet_NaN());
    EXPECT_THROW(GrdeclFormat().write(model, folder / "out.grdecl", {}), FileError);
    EXPECT_TRUE(folder.names().empty());
}

TEST(GrdeclWrite, GridWithoutGeometryKeepsItsProperties)
{
    GridModel model = small_model();
    model.coord = {};
    model.zcorn = {};
    ReadOptions options;
    options.properties_only = true;
    EXPECT_EQ(test::difference(model, grdecl::read_text(written(model), "out.grdecl", options).model), "");
}

TEST(GrdeclWrite, CancelAtAnyStepLeavesTheOldFileAndNothingElse)
{
    const test::TemporaryFolder folder;
    const auto path = folder.write("out.grdecl", "old");
    const GridModel model = test::full_model(30, 30, 30);
    int steps = 0;
    WriteOptions options;
    double last = 0;
    options.progress = [&](double done) {
        EXPECT_GE(done, last);
        EXPECT_LE(done, 1);
        last = done;
        ++steps;
        return true;
    };
    const test::TemporaryFolder elsewhere;
    GrdeclFormat().write(model, elsewhere / "whole.grdecl", options);
    EXPECT_GT(steps, 10);
    for (int stop = 1; stop <= steps; ++stop) {
        int step = 0;
        options.progress = [&](double) { return ++step < stop; };
        EXPECT_THROW(GrdeclFormat().write(model, path, options), Cancelled);
        EXPECT_EQ(test::file_text(path), "old");
        EXPECT_EQ(folder.names(), std::vector<std::string>{"out.grdecl"});
    }
}

TEST(GrdeclWrite, FullDiskLeavesTheOldFileAndNothingElse)
{
    const test::TemporaryFolder folder;
    const auto path = folder.write("out.grdecl", "old");
    const GridModel model = test::full_model(30, 30, 30);
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        ::signal(SIGXFSZ, SIG_IGN);
        constexpr rlim_t limit = 1'500'000;
        const rlimit limits{limit, limit};
        if (::setrlimit(RLIMIT_FSIZE, &limits) != 0) {
            ::_exit(3);
        }
        try {
            GrdeclFormat().write(model, path, {});
        } catch (const FileError& error) {
            ::_exit(error.reason() == "cannot be written: File too large" ? 0 : 1);
        }
        ::_exit(2);
    }
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 0);
    EXPECT_EQ(test::file_text(path), "old");
    EXPECT_EQ(folder.names(), std::vector<std::string>{"out.grdecl"});
}

} // namespace
} // namespace lodex
