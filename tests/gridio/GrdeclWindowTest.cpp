// Long files are read through a window: it must not show in the model, in the messages or in the errors.

#include "GridTestTools.h"

#include <lodex/gridio/GrdeclFormat.h>
#include <lodex/gridio/GrdeclReader.h>
#include <lodex/gridio/GrdeclWriter.h>

#include <gtest/gtest.h>
#include <random>

namespace lodex {
namespace {

constexpr grdecl::TextWindow small{.whole = 0, .step = 16 * 1024};

struct Outcome {
    GridModel model;
    std::vector<Message> messages;
    std::string error;
};

template <class Read> Outcome outcome_of(const Read& read)
{
    try {
        ReadResult result = read();
        return {std::move(result.model), std::move(result.messages), ""};
    } catch (const FileError& error) {
        return {{}, {}, error.what()};
    }
}

/// Reads the text at once and through small windows; returns the error, empty when there is none.
std::string read_both_ways(const test::TemporaryFolder& folder, const std::string& text,
                           const ReadOptions& options = {})
{
    const auto path = folder.write("m.grdecl", text);
    const Outcome whole = outcome_of([&] { return grdecl::read_text(text, path, options); });
    const Outcome windows = outcome_of([&] { return grdecl::read_file(path, options, small); });
    EXPECT_EQ(windows.error, whole.error);
    EXPECT_EQ(test::difference(windows.model, whole.model), "");
    EXPECT_EQ(windows.messages, whole.messages);
    return whole.error;
}

std::string text_of(const GridModel& model, bool run_lengths)
{
    const test::TemporaryFolder folder;
    WriteOptions options;
    options.run_lengths = run_lengths;
    GrdeclFormat().write(model, folder / "m.grdecl", options);
    return test::file_text(folder / "m.grdecl");
}

TEST(GrdeclWindows, ManyWindowsGiveTheSameModel)
{
    const test::TemporaryFolder folder;
    const GridModel model = test::full_model(30, 20, 12);
    for (const bool run_lengths : {false, true}) {
        const std::string text = text_of(model, run_lengths);
        ASSERT_GT(text.size(), 10 * small.step);
        EXPECT_EQ(read_both_ways(folder, text), "");
        EXPECT_EQ(test::difference(grdecl::read_file(folder / "m.grdecl", {}, small).model, model), "");
        ReadOptions options;
        options.properties_only = true;
        EXPECT_EQ(read_both_ways(folder, text, options), "");
    }
}

TEST(GrdeclWindows, ArraysBeforeTheSizeAreReadAgainLater)
{
    const test::TemporaryFolder folder;
    std::string text = text_of(test::full_model(30, 20, 12), false);
    const std::size_t start = text.find("SPECGRID");
    const std::size_t end = text.find('/', start) + 2;
    const std::string size = text.substr(start, end - start);
    text.erase(start, end - start);
    EXPECT_EQ(read_both_ways(folder, text + size), "");
}

TEST(GrdeclWindows, BlanksCommentsAndTextsLongerThanAWindow)
{
    const test::TemporaryFolder folder;
    const std::string blanks(3 * small.step + 17, ' ');
    const std::string lines(3 * small.step + 5, '\n');
    const std::string comment = "-- " + std::string(3 * small.step, 'x') + "\n";
    const std::string grid = "SPECGRID\n 2 1 1 1 F /\nCOORD\n 36*1.5 /\nZCORN\n 8*0" + lines + " 8*1 /\n";
    EXPECT_EQ(read_both_ways(folder, blanks + "\n" + grid + lines + comment + "PORO\n" + blanks + "0.25 " + comment
                                         + "0.5" + lines + comment + "/\n" + comment + blanks),
              "");
    // A keyword behind many blanks, and its data behind many more.
    EXPECT_EQ(read_both_ways(folder, grid + blanks + "PORO" + blanks + "\n1 2 /\n" + blanks + "UNKNOWN" + blanks
                                         + "\n 'a' " + comment + " /\n"),
              "");
    // Text that is kept is longer than what is in memory, and ends with blanks.
    std::string kept = grid + "WHATEVER\n";
    for (int i = 0; i < 10'000; ++i) {
        kept += " word" + std::to_string(i) + " 'and text' /\n";
    }
    EXPECT_EQ(read_both_ways(folder, kept + lines + "SUMMARY\n" + kept + lines), "");
    EXPECT_EQ(read_both_ways(folder, kept + " and no end" + lines), "");
    EXPECT_EQ(read_both_ways(folder, grid + "SKIP\n" + comment + lines + "ENDSKIP\nPORO 1 2 /\n"), "");
    EXPECT_EQ(read_both_ways(folder, grid + "EDIT\n12 13" + comment + "PORO 1 2 /\n"), "");
    // A region of many runs, and a note that is none.
    std::string region = "SPECGRID\n 100 100 10 1 F /\n-- LODEX REGION \"r\" model 0\n";
    for (int i = 0; i < 10'000; ++i) {
        region += "--| 3 4 3\n";
    }
    ReadOptions options;
    options.properties_only = true;
    EXPECT_EQ(read_both_ways(folder, region, options), "");
    EXPECT_EQ(read_both_ways(folder, region + "--| 1\n", options), "");
    EXPECT_EQ(read_both_ways(folder, region + "--| x\n", options), "");
}

TEST(GrdeclWindows, WordsThatNoWindowHoldsAreErrors)
{
    const test::TemporaryFolder folder;
    const std::string grid = "SPECGRID\n 2 1 1 1 F /\n";
    const std::string digits(40'000, '1');
    const auto message = [&](const std::string& text) {
        const auto path = folder.write("m.grdecl", grid + text + std::string(100'000, '\n'));
        return outcome_of([&] { return grdecl::read_file(path, {}, small); }).error;
    };
    const std::string start = folder.path().string() + "/m.grdecl:";
    EXPECT_EQ(message("PORO\n" + digits + " 2 /\n"), start + "4: a word of more than 4096 characters");
    EXPECT_EQ(message("MAPUNITS\n" + digits + " /\n"), start + "4: a word of more than 4096 characters");
    EXPECT_EQ(message("MAPUNITS\n '" + digits + "' /\n"), start + "4: a text in quotes of more than 4096 characters");
    EXPECT_EQ(message("INCLUDE\n " + digits + " /\n"), start + "4: a word of more than 4096 characters");
}

TEST(GrdeclWindows, BrokenTextsEndTheSameWay)
{
    const test::TemporaryFolder folder;
    const std::string base = text_of(test::full_model(12, 9, 6), false);
    std::mt19937_64 random(20240117); // NOLINT: the same texts every time
    const auto below = [&random](std::size_t n) { return static_cast<std::size_t>(random() % n); };
    int errors = 0;
    for (int i = 0; i < 300; ++i) {
        std::string text = base;
        for (std::size_t n = 1 + below(3); n > 0; --n) {
            const std::size_t at = below(text.size());
            const std::size_t count = std::min(1 + below(40'000), text.size() - at);
            switch (below(8)) {
            case 0: text.resize(at + 1); break;
            case 1: text.insert(at, count, ' '); break;
            case 2: text.insert(at, count, '\n'); break;
            case 3: text.insert(at, "--" + std::string(count, '-') + '\n'); break;
            case 4: text[at] = static_cast<char>(below(256)); break;
            case 5: text.insert(at, text.substr(below(text.size()), count)); break;
            case 6: text.erase(at, count); break;
            default: text.insert(at, "\nPORO\n"); break;
            }
        }
        errors += read_both_ways(folder, text).empty() ? 0 : 1;
        if (HasFailure()) {
            FAIL() << "text " << i;
        }
    }
    EXPECT_GT(errors, 50);
    EXPECT_LT(errors, 290);
}

TEST(GrdeclWindows, FilesThatChangeWhileTheyAreRead)
{
    const test::TemporaryFolder folder;
    const std::string text = text_of(test::full_model(30, 20, 12), false);
    const auto path = folder / "m.grdecl";
    const auto message = [&](const auto& change) {
        folder.write("m.grdecl", text);
        // Not within one step of the file system's clock.
        std::filesystem::last_write_time(path, std::filesystem::file_time_type::clock::now() - std::chrono::hours(1));
        ReadOptions options;
        int calls = 0;
        options.progress = [&](double) {
            if (++calls == 8) {
                change();
            }
            return true;
        };
        return outcome_of([&] { return grdecl::read_file(path, options, small); }).error;
    };
    const std::string start = path.string() + ": changed while it was read";
    const std::string size = std::to_string(text.size());
    EXPECT_EQ(message([&] { std::filesystem::resize_file(path, text.size() / 2); }),
              start + " (" + size + " bytes at first, then " + std::to_string(text.size() / 2) + ")");
    EXPECT_EQ(message([&] { std::filesystem::resize_file(path, text.size() + 1); }),
              start + " (" + size + " bytes at first, then " + std::to_string(text.size() + 1) + ")");
    // As long as before, with numbers that do not read: the change is the reason.
    EXPECT_EQ(message([&] { folder.write("m.grdecl", std::string(text.size(), 'x')); }), start);
    // Removed, or replaced by another file: the one that was opened is read to its end.
    EXPECT_EQ(message([&] { std::filesystem::remove(path); }), "");
    EXPECT_EQ(message([&] {
                  folder.write("other", "nothing");
                  std::filesystem::rename(folder / "other", path);
              }),
              "");
}

TEST(GrdeclWindows, FieldModels)
{
    const auto data = test::field_data();
    if (!data) {
        return;
    }
    for (const char* const file : {"spe9/SPE9.DATA", "spe9/SPE9_CP_SHORT.DATA", "spe10_model1/SPE10_MODEL1_CP.DATA",
                                   "model1/FAULTS_MODEL_1.DATA", "simpleb8/simpleb8.grdecl", "reek/reek_sim_grid.grdecl",
                                   "tiny/Cart2D_Fault.GRDECL", "tiny/emerald443.grdecl"}) {
        const ReadResult whole = grdecl::read_file(*data / file, {});
        const ReadResult windows = grdecl::read_file(*data / file, {}, small);
        EXPECT_EQ(test::difference(whole.model, windows.model), "") << file;
        EXPECT_EQ(whole.messages, windows.messages) << file;
    }
}

} // namespace
} // namespace lodex
