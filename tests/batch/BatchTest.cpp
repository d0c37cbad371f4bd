// The batch runner as its user sees it: exact standard output, standard error and exit status.

#include "lodex/utils/Version.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace {

struct Outcome {
    int status = -1;
    std::string out, err;
};

std::string read(const std::filesystem::path& path)
{
    std::ostringstream text;
    text << std::ifstream(path, std::ios::binary).rdbuf();
    return text.str();
}

class Batch : public testing::Test {
protected:
    Batch()
    {
        folder = std::filesystem::temp_directory_path() /
                 ("batch_test_" + std::to_string(getpid()) + "_" + testing::UnitTest::GetInstance()->current_test_info()->name());
        std::filesystem::create_directories(folder);
    }
    ~Batch() override { std::filesystem::remove_all(folder); }

    /// Runs the program in the test's folder with these shell words behind its name.
    [[nodiscard]] Outcome lodex(const std::string& words) const
    {
        const std::string command = "cd '" + folder.string() + "' && '" BUILD_BIN_DIR "/lodex' " + words + " >out.txt 2>err.txt </dev/null";
        const int status = std::system(command.c_str());
        return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, read(folder / "out.txt"), read(folder / "err.txt")};
    }
    void write(const std::string& name, const std::string& text) const
    {
        std::ofstream(folder / name, std::ios::binary) << text;
    }

    std::filesystem::path folder;
};

} // namespace

TEST_F(Batch, TellsItsVersion)
{
    const Outcome outcome = lodex("--version");
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.out, std::string("lodex ") + lodex::program_version() + "\n");
    EXPECT_EQ(outcome.err, "");
}

TEST_F(Batch, BadUsageEndsWithStatusTwo)
{
    for (const char* words : {"", "--nothing", "fly", "run", "-c", "info", "compare a", "run gone.lodex", "help no such verb",
                              "compare a b --abs -1"}) {
        const Outcome outcome = lodex(words);
        EXPECT_EQ(outcome.status, 2) << words;
        EXPECT_EQ(outcome.out, "") << words;
        EXPECT_NE(outcome.err, "") << words;
    }
    EXPECT_EQ(lodex("run gone.lodex").err, "gone.lodex: the script cannot be read: No such file or directory\n");
}

TEST_F(Batch, RunsTextAndAnswersOnStandardOutput)
{
    const Outcome outcome = lodex("-c 'lodex create sgrid name Box size 2+2+2 spacing 1+1+1; lodex report sgrid Box'");
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    const auto report = nlohmann::json::parse(outcome.out);
    EXPECT_EQ(report["active"], 8);
    EXPECT_EQ(outcome.err, "SGrid \"Box\": 2 x 2 x 2 cells\n");
}

TEST_F(Batch, QuietShowsErrorsAlone)
{
    EXPECT_EQ(lodex("--quiet -c 'lodex create sgrid name Box size 2+2+2 spacing 1+1+1'").err, "");
    const Outcome outcome = lodex("-c 'lodex destroy objects Box' --quiet");
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.err, "error: 1:23: there is no object \"Box\"\n  in: lodex destroy objects Box\n");
}

TEST_F(Batch, AFailedCommandEndsTheRunWithStatusOne)
{
    write("a.lodex", "lodex create sgrid name A size 1+1+1 spacing 1+1+1\nlodex destroy objects B\n"
                     "lodex create sgrid name C size 1+1+1 spacing 1+1+1\n");
    write("b.lodex", "lodex create sgrid name D size 1+1+1 spacing 1+1+1\n");
    const Outcome outcome = lodex("run a.lodex b.lodex --quiet --json report.json");
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(outcome.err, "error: a.lodex:2:23: there is no object \"B\"\n  in: lodex destroy objects B\n");
    const auto report = nlohmann::json::parse(read(folder / "report.json"));
    EXPECT_EQ(report["version"], lodex::program_version());
    EXPECT_EQ(report["inputs"], nlohmann::json({"a.lodex"}));
    ASSERT_EQ(report["commands"].size(), 3u);
    EXPECT_EQ(report["commands"][0]["status"], "done");
    EXPECT_EQ(report["commands"][0]["counts"]["cells"], 1);
    EXPECT_GE(report["commands"][0]["seconds"], 0);
    EXPECT_EQ(report["commands"][1]["status"], "failed");
    EXPECT_EQ(report["commands"][1]["line"], 2);
    EXPECT_EQ(report["commands"][1]["message"], "a.lodex:2:23: there is no object \"B\"\n  in: lodex destroy objects B");
    EXPECT_EQ(report["commands"][2]["status"], "skipped");
    EXPECT_EQ(report["statistics"]["failed"], 1);
    EXPECT_EQ(report["messages"][0]["file"], "a.lodex");
    EXPECT_EQ(report["messages"][0]["line"], 1);
    EXPECT_EQ(report["messages"].back()["level"], "error");
    EXPECT_EQ(report["messages"].back()["file"], "a.lodex");
    EXPECT_EQ(report["messages"].back()["line"], 2);
}

TEST_F(Batch, KeepGoingRunsTheRest)
{
    write("a.lodex", "lodex destroy objects B\nlodex create sgrid name C size 1+1+1 spacing 1+1+1\n");
    const Outcome outcome = lodex("run a.lodex --keep-going --json r.json");
    EXPECT_EQ(outcome.status, 1);
    const auto report = nlohmann::json::parse(read(folder / "r.json"));
    EXPECT_EQ(report["commands"][1]["status"], "done");
}

TEST_F(Batch, AScriptIsParsedWholeFirst)
{
    write("a.lodex", "lodex create sgrid name A size 1+1+1 spacing 1+1+1\nlodex export sgrid A file \"a.grdecl\"\nlodex nonsense\n");
    const Outcome outcome = lodex("run a.lodex");
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.err, "error: a.lodex:3:7: there is no verb \"nonsense\"\n  in: lodex nonsense\n");
    EXPECT_FALSE(std::filesystem::exists(folder / "a.grdecl"));
}

TEST_F(Batch, TheJournalReplaysToTheSameModel)
{
    write("a.lodex", "lodex create example name Field size 12+10+8 seed 9\n"
                     "lodex sgrid_merge_multiple_sections name Coarse sgrid Field direction \"vertical\" sections 0+1+2+5 "
                     "copy_properties 1 property_sections -1 copy_regions 1 copy_style 1\n"
                     "lodex export sgrid Coarse file \"coarse.grdecl\"\n");
    ASSERT_EQ(lodex("run a.lodex --journal journal.lodex").status, 0);
    std::filesystem::rename(folder / "coarse.grdecl", folder / "first.grdecl");
    ASSERT_EQ(lodex("run journal.lodex --threads 1").status, 0);
    EXPECT_EQ(read(folder / "first.grdecl"), read(folder / "coarse.grdecl"));
    const Outcome outcome = lodex("compare first.grdecl coarse.grdecl");
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.out, "the models agree\n");
}

TEST_F(Batch, ComparesWithinATolerance)
{
    ASSERT_EQ(lodex("-c 'lodex create sgrid name A size 2+1+1 spacing 1+1+1;lodex on SGrid A fill_property PORO value 0.25;"
                    "lodex export sgrid A file \"a.grdecl\";lodex on SGrid A fill_property PORO value 0.251;"
                    "lodex export sgrid A file \"b.grdecl\"'")
                  .status,
              0);
    const Outcome outcome = lodex("compare a.grdecl b.grdecl");
    EXPECT_EQ(outcome.status, 1);
    EXPECT_TRUE(outcome.out.starts_with("property PORO: 2 differ, the most by 0.00099998")) << outcome.out;
    EXPECT_EQ(lodex("compare a.grdecl b.grdecl --abs 0.002").status, 0);
    EXPECT_EQ(lodex("compare a.grdecl b.grdecl --rel 0.01").status, 0);
    EXPECT_EQ(lodex("compare a.grdecl b.grdecl --rel 0.001").status, 1);
    EXPECT_EQ(lodex("compare a.grdecl gone.grdecl").status, 1);
}

TEST_F(Batch, InfoTellsWhatAModelHolds)
{
    ASSERT_EQ(lodex("-c 'lodex create sgrid name A size 3+2+1 spacing 10+10+1;lodex on SGrid A fill_property PORO value 0.25;"
                    "lodex export sgrid A file \"a.grdecl\"'")
                  .status,
              0);
    const Outcome plain = lodex("info a.grdecl");
    EXPECT_EQ(plain.status, 0);
    EXPECT_EQ(plain.out, "a.grdecl: 3 x 2 x 1 cells, 6 active, bulk volume 600.0\n  PORO: 6 values, 0.25 to 0.25, mean 0.25\n");
    EXPECT_EQ(nlohmann::json::parse(lodex("info a.grdecl --json").out)["bulk_volume"], 600);
    write("broken.grdecl", "SPECGRID\n 2 2 2 1 F /\nCOORD\n 1 2 three /\n");
    const Outcome broken = lodex("info broken.grdecl");
    EXPECT_EQ(broken.status, 1);
    EXPECT_EQ(broken.out, "");
    EXPECT_NE(broken.err.find("broken.grdecl:4"), std::string::npos) << broken.err;
}

TEST_F(Batch, HelpAndVerbsComeFromTheDeclarations)
{
    EXPECT_TRUE(lodex("help create sgrid").out.starts_with("lodex create sgrid name NAME size N+N... spacing X+X... [origin X+X...]\n"));
    EXPECT_NE(lodex("verbs").out.find("create sgrid: "), std::string::npos);
    const auto json = nlohmann::json::parse(lodex("verbs --json").out);
    EXPECT_GE(json["verbs"].size(), 20u);
}

TEST_F(Batch, TheReferencePageIsMadeFromTheDeclarations)
{
    const std::string page = read(SOURCE_DIR "/docs/commands.md");
    const std::string verbs = lodex("verbs --markdown").out;
    ASSERT_GT(verbs.size(), 1000u);
    EXPECT_NE(page.find(verbs), std::string::npos) << "run: tools/make-command-reference";
}

TEST_F(Batch, TheOperatorPageIsMadeFromTheDeclarations)
{
    const std::string page = read(SOURCE_DIR "/docs/operators.md");
    const std::string operators = lodex("operators").out;
    for (const char* name : {"### Arithmetic\n", "### Dykstra-Parsons\n", "### MixedPressureSolver\n", "### geometric\n", "### parametric\n",
                             "### stratigraphic\n", "### k-constrained geometric\n"})
        EXPECT_NE(operators.find(name), std::string::npos) << name;
    EXPECT_NE(page.find(operators), std::string::npos) << "run: tools/make-command-reference";
}

TEST_F(Batch, ExamplesRun)
{
    std::filesystem::create_directory(folder / "out"); // as ./run does
    for (const auto& entry : std::filesystem::directory_iterator(SOURCE_DIR "/examples")) {
        if (entry.path().extension() != ".lodex")
            continue;
        const Outcome outcome = lodex("run '" + entry.path().string() + "' --quiet");
        EXPECT_EQ(outcome.status, 0) << entry.path() << "\n" << outcome.err;
        EXPECT_EQ(outcome.err, "") << entry.path();
    }
}

TEST_F(Batch, AnInterruptEndsTheRunWithinASecondAndLeavesNothing)
{
    write("a.lodex", "lodex create sgrid name A size 400+400+20 spacing 1+1+1\nlodex export sgrid A file \"a.grdecl\"\n");
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        if (chdir(folder.c_str()) == 0)
            execl(BUILD_BIN_DIR "/lodex", "lodex", "--quiet", "run", "a.lodex", "--json", "r.json", static_cast<char*>(nullptr));
        _exit(127);
    }
    // Wait until the export has begun: its temporary file stands in the folder.
    const auto files = [&] { return std::distance(std::filesystem::directory_iterator(folder), {}); };
    for (int i = 0; i < 2000 && files() < 2 && waitpid(child, nullptr, WNOHANG) == 0; ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    const auto start = std::chrono::steady_clock::now();
    kill(child, SIGINT);
    int status = 0;
    waitpid(child, &status, 0);
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    if (!std::filesystem::exists(folder / "a.grdecl")) { // else it was done before the interrupt came
        EXPECT_LT(seconds, 5) << "a second on an idle machine; tests run beside others";
        ASSERT_TRUE(WIFEXITED(status));
        EXPECT_EQ(WEXITSTATUS(status), 1);
        const auto report = nlohmann::json::parse(read(folder / "r.json"));
        EXPECT_EQ(report["commands"][1]["status"], "cancelled");
        EXPECT_EQ(files(), 2) << "the script and the report";
    }
}
