// The installed tree as its users meet it: programs that run from wherever the tree is put, one version everywhere,
// files for the desktop, and libraries that another host program is built on.

#include "lodex/utils/Version.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include <sys/wait.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

struct Outcome {
    int status = -1;
    std::string out; ///< standard output and standard error
};

Outcome shell(const std::string& command)
{
    Outcome outcome;
    FILE* const pipe = popen(("{ " + command + "\n} 2>&1").c_str(), "r");
    if (!pipe)
        return outcome;
    std::array<char, 4096> part{};
    while (const std::size_t count = std::fread(part.data(), 1, part.size(), pipe))
        outcome.out.append(part.data(), count);
    const int status = pclose(pipe);
    outcome.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return outcome;
}

bool has_program(const char* name)
{
    return shell(std::string("command -v ") + name).status == 0;
}

std::string read(const fs::path& path)
{
    std::ostringstream text;
    text << std::ifstream(path, std::ios::binary).rdbuf();
    return text.str();
}

std::string quoted(const fs::path& path)
{
    return "'" + path.string() + "'";
}

std::string version()
{
    return lodex::program_version();
}

class InstalledTree : public testing::Test {
protected:
    static void SetUpTestSuite()
    {
        folder = fs::temp_directory_path() / ("lodex_packaging_" + std::to_string(getpid()));
        const fs::path first = folder / "first place";
        const Outcome installed =
            shell(std::string(CMAKE_PROGRAM) + " --install " BUILD_DIR " --prefix " + quoted(first));
        ASSERT_EQ(installed.status, 0) << installed.out;
        // Everything below runs from another place than the one that it was installed to.
        prefix = folder / "moved";
        fs::rename(first, prefix);
    }
    static void TearDownTestSuite() { fs::remove_all(folder); }

    static std::string program(const char* name) { return quoted(prefix / "bin" / name); }

    static inline fs::path folder, prefix;
};

TEST_F(InstalledTree, RunsCommandsFromWhereverItIs)
{
    const fs::path report = folder / "report.json";
    const Outcome outcome = shell(
        "LD_LIBRARY_PATH= " + program("lodex") + " --quiet --json " + quoted(report) +
        R"( -c 'lodex create example name Field size 12+10+8
                lodex sgrid_merge_multiple_sections name Coarse sgrid Field direction vertical sections 0+1+2+3+4+5+6+7
                lodex on SGrid Field upscale_porosity fine_porosity PORO Coarse Coarse coarse_porosity PORO mapper stratigraphic upscaler Arithmetic')");
    ASSERT_EQ(outcome.status, 0) << outcome.out;
    const auto json = nlohmann::json::parse(read(report));
    EXPECT_EQ(json["version"], version());
    EXPECT_EQ(json["statistics"]["commands"], 3);
    EXPECT_EQ(json["statistics"]["failed"], 0);
}

TEST_F(InstalledTree, TellsOneVersionEverywhere)
{
    EXPECT_EQ(shell(program("lodex") + " --version").out, "lodex " + version() + "\n");
    EXPECT_TRUE(fs::exists(prefix / LIBRARY_DIR / ("libKelvane_upscaling.so." + version())));
    EXPECT_NE(read(prefix / LIBRARY_DIR / "../cmake/Lodex/LodexConfigVersion.cmake")
                  .find("set(PACKAGE_VERSION \"" + version() + "\")"),
              std::string::npos);
    // The first entry of the list of changes is this version's.
    const std::string changes = read(prefix / DOC_DIR / "CHANGELOG.md");
    const std::size_t entry = changes.find("\n## ");
    ASSERT_NE(entry, std::string::npos);
    EXPECT_EQ(changes.compare(entry, 5 + version().size(), "\n## " + version() + " "), 0);
    std::vector<std::string> manuals{"lodex"};
#if HAS_WINDOWS
    manuals.emplace_back("lodex-workbench");
    EXPECT_EQ(shell(program("lodex-workbench") + " --version").out, "lodex-workbench " + version() + "\n");
    const std::string metainfo = read(prefix / "share/metainfo/org.lodex.Workbench.metainfo.xml");
    EXPECT_NE(metainfo.find("<release version=\"" + version() + "\""), std::string::npos);
#endif
    for (const std::string& name : manuals) {
        const Outcome manual = shell("cat " + quoted(prefix / "share/man/man1") + "/" + name + ".1* | gzip -dcf");
        EXPECT_NE(manual.out.find("\"lodex " + version() + "\""), std::string::npos) << name;
    }
}

#if HAS_WINDOWS
TEST_F(InstalledTree, DesktopFindsProgramPicturesAndFileType)
{
    const std::string entry = read(prefix / "share/applications/org.lodex.Workbench.desktop");
    EXPECT_NE(entry.find("\nExec=lodex-workbench %f\n"), std::string::npos);
    EXPECT_NE(entry.find("\nIcon=org.lodex.Workbench\n"), std::string::npos);
    EXPECT_NE(entry.find("\nMimeType=application/x-lodex-project;\n"), std::string::npos);
    const fs::path icons = prefix / "share/icons/hicolor";
    for (const char* name : {"apps/org.lodex.Workbench", "mimetypes/application-x-lodex-project"}) {
        EXPECT_TRUE(fs::exists(icons / "scalable" / (std::string(name) + ".svg"))) << name;
        for (const int size : {16, 24, 32, 48, 64, 128, 256}) {
            // A PNG holds width and height, big-endian, at bytes 16 and 20.
            const std::string png =
                read(icons / (std::to_string(size) + "x" + std::to_string(size)) / (std::string(name) + ".png"));
            ASSERT_GE(png.size(), 24u) << name << ' ' << size;
            for (const std::size_t at : {16u, 20u})
                EXPECT_EQ(static_cast<unsigned char>(png[at + 2]) * 256 + static_cast<unsigned char>(png[at + 3]), size);
        }
    }
    const std::string types = read(prefix / "share/mime/packages/lodex.xml");
    EXPECT_NE(types.find("type=\"application/x-lodex-project\""), std::string::npos);
    EXPECT_NE(types.find("pattern=\"*.lodex-project\""), std::string::npos);
    EXPECT_TRUE(fs::exists(prefix / "share/bash-completion/completions/lodex-workbench"));
    if (has_program("desktop-file-validate")) {
        EXPECT_EQ(shell("desktop-file-validate " + quoted(prefix / "share/applications") + "/*").out, "");
    }
    if (has_program("appstreamcli")) {
        const Outcome metainfo = shell("appstreamcli validate --no-net " + quoted(prefix / "share/metainfo") + "/*");
        EXPECT_EQ(metainfo.status, 0) << metainfo.out;
    }
}
#endif

TEST_F(InstalledTree, CompletesVerbsAndOptions)
{
    ASSERT_TRUE(has_program("bash"));
    const auto completed = [](const std::string& words) {
        const fs::path script = prefix / "share/bash-completion/completions/lodex";
        const Outcome outcome = shell("PATH=" + quoted(prefix / "bin") + ":$PATH bash -c 'source \"" + script.string() +
                                      "\"; COMP_WORDS=(" + words +
                                      "); COMP_CWORD=$((${#COMP_WORDS[@]} - 1)); _lodex; printf \"%s\\n\" \"${COMPREPLY[@]}\"'");
        std::set<std::string> lines;
        std::istringstream text(outcome.out);
        for (std::string line; std::getline(text, line);)
            lines.insert(line);
        return lines;
    };
    using Words = std::set<std::string>;
    EXPECT_EQ(completed("lodex ver"), Words{"verbs"});
    EXPECT_EQ(completed("lodex --qu"), Words{"--quiet"});
    EXPECT_EQ(completed("lodex --quiet --threads 2 op"), Words{"operators"});
    EXPECT_EQ(completed("lodex help sgrid_merge"), Words{"sgrid_merge_multiple_sections"});
    EXPECT_EQ(completed("lodex help create s"), Words{"sgrid"});

    // Every verb that the program declares can be reached.
    const auto verbs = nlohmann::json::parse(shell(program("lodex") + " verbs --json").out)["verbs"];
    ASSERT_GT(verbs.size(), 20u);
    const Words offered = completed("lodex help \"\"");
    for (const auto& verb : verbs) {
        const std::string name = verb["name"];
        EXPECT_TRUE(offered.contains(name.substr(0, name.find(' ')))) << name;
    }
}

TEST_F(InstalledTree, ManualPagesHaveNoFaults)
{
    ASSERT_TRUE(has_program("groff"));
    EXPECT_EQ(shell("for page in " + quoted(prefix / "share/man/man1") +
                    "/*; do gzip -dcf \"$page\" | groff -man -Tutf8 -ww -z; done")
                  .out,
              "");
}

TEST_F(InstalledTree, OtherHostProgramsAreBuiltOnIt)
{
    const fs::path build = folder / "host_program";
    const Outcome made = shell(std::string(CMAKE_PROGRAM) + " -S " + quoted(prefix / DOC_DIR / "examples/host_program") +
                               " -B " + quoted(build) + " -DCMAKE_BUILD_TYPE=Debug -DCMAKE_CXX_COMPILER=" CXX_COMPILER
                               " '-DCMAKE_CXX_FLAGS=" CXX_FLAGS "' -DCMAKE_PREFIX_PATH=" + quoted(prefix) + " && " +
                               CMAKE_PROGRAM + " --build " + quoted(build) + " --parallel 2");
    ASSERT_EQ(made.status, 0) << made.out;

    // 8 x 6 x 12 cells of 50 x 50 x 2; merging keeps the bulk volume, the mean by volume the pore volume.
    const Outcome coarsened = shell(quoted(build / "coarsen"));
    EXPECT_EQ(coarsened.status, 0) << coarsened.out;
    std::istringstream lines(coarsened.out);
    std::string fine, coarse;
    std::getline(lines, fine);
    std::getline(lines, coarse);
    const auto pores = [](const std::string& line) { return line.substr(line.rfind(' ') + 1); };
    EXPECT_EQ(fine, "Fine: 576 cells, bulk volume 2.88e+06, pore volume " + pores(fine));
    EXPECT_EQ(coarse, "Coarse: 144 cells, bulk volume 2.88e+06, pore volume " + pores(fine));
    EXPECT_NEAR(std::stod(pores(fine)), 0.2 * 2.88e6, 0.05 * 2.88e6); // the mean that the values were drawn with

#if HAS_WINDOWS
    const Outcome applied = shell("QT_QPA_PLATFORM=offscreen " + quoted(build / "merge_dialog") + " --apply");
    EXPECT_EQ(applied.status, 0) << applied.out;
    EXPECT_NE(applied.out.find("command: lodex sgrid_merge_multiple_sections name Coarse sgrid Fine"), std::string::npos)
        << applied.out;
    EXPECT_NE(applied.out.find(" sections 0+2+3+5+6+8+9+11 "), std::string::npos) << applied.out;
#endif
}

} // namespace
