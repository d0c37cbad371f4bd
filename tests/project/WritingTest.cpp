// Saving that is stopped, killed or fails: the file on disk is the old project or the new one. And what other programs
// see in the file.

#include "ProjectFixture.h"

#include <hdf5.h>
#include <nlohmann/json.hpp>

#include <csignal>
#include <cstdlib>
#include <sys/wait.h>

namespace {

using namespace lodex;

class Writing : public ProjectFixture {
protected:
    /// Runs the batch program with a fault at its n-th call on files in `work`; the wait status.
    int run_with_fault(const std::string& text, const std::string& action, long at, bool sticky = false) const
    {
        const std::string command =
            "exec env LD_PRELOAD='" FAULT_SHIM "' ASAN_OPTIONS=detect_leaks=0:verify_asan_link_order=0 FAULT_FOLDER='" +
            work().string() + "' FAULT_COUNT='" + (folder / "count").string() + "' FAULT_ACTION=" + action +
            " FAULT_AT=" + std::to_string(at) + (sticky ? " FAULT_STICKY=1" : "") +
            " '" LODEX_PROGRAM "' --quiet --threads 1 -c '" + text + "' >'" + (folder / "out").string() + "' 2>&1";
        return std::system(command.c_str());
    }
    [[nodiscard]] long counted() const { return std::atol(bytes_of(folder / "count").c_str()); }
    [[nodiscard]] std::filesystem::path work() const { return std::filesystem::canonical(folder) / "work"; }
    [[nodiscard]] std::size_t files_in_work() const
    {
        return static_cast<std::size_t>(std::distance(std::filesystem::directory_iterator(work()), {}));
    }
};

TEST_F(Writing, StoppedAtEachStepTheOldFileStays)
{
    std::filesystem::create_directories(work());
    ASSERT_TRUE(run("lodex create example name fine size 20+20+10"));
    save_project(work() / "p");
    const std::string old = bytes_of(work() / "p");
    ASSERT_TRUE(run("lodex create sgrid name Box size 70+60+50 spacing 1+1+1"));
    const auto models = all_models();
    int stops = 0;
    for (bool done = false; !done; ++stops) {
        ASSERT_LT(stops, 500);
        const StopAt stop(stops + 1);
        const auto saved = result("lodex save project \"" + (work() / "p").string() + "\"");
        done = saved.status == StatementStatus::Done;
        if (!done) {
            EXPECT_EQ(saved.status, StatementStatus::Cancelled) << saved.message;
            EXPECT_EQ(bytes_of(work() / "p"), old);
            EXPECT_EQ(files_in_work(), 1u);
            EXPECT_TRUE(project_changed());
        }
    }
    EXPECT_GT(stops, 10);
    start_anew();
    open_project(work() / "p");
    expect_models(models);
}

TEST_F(Writing, OpeningStoppedAtEachStepChangesNothing)
{
    add_box("A", {2, 2, 2});
    save_project(file());
    start_anew();
    add_box("B", {2, 1, 1});
    const auto models = all_models();
    int stops = 0;
    for (bool done = false; !done; ++stops) {
        ASSERT_LT(stops, 50);
        const StopAt stop(stops + 1);
        const auto opened = result("lodex open project \"" + file().string() + "\"");
        done = opened.status == StatementStatus::Done;
        if (!done)
            expect_models(models);
    }
    EXPECT_GT(stops, 2);
    EXPECT_NE(find_grid("A"), nullptr);
}

TEST_F(Writing, KilledAtEachCallTheFileIsTheOldProjectOrTheNew)
{
    std::filesystem::create_directories(work());
    const std::filesystem::path project = work() / "p.lodex-project";
    add_box("Old", {3, 2, 2});
    save_project(project);
    const std::string old = bytes_of(project);
    const auto old_models = all_models();
    const std::string text = "lodex create sgrid name New size 2+2+2 spacing 1+1+1; "
                             "lodex on SGrid New fill_property P value 2; lodex save project \"" + project.string() + "\"";
    ASSERT_EQ(run_with_fault(text, "kill", 0), 0) << bytes_of(folder / "out");
    const long calls = counted();
    ASSERT_GT(calls, 5);
    start_anew();
    open_project(project);
    const auto new_models = all_models();
    ASSERT_EQ(new_models[0].first, "New");
    int kept = 0, replaced = 0;
    for (const char* action : {"kill", "tear"}) {
        for (long at = 1; at <= calls; ++at) {
            SCOPED_TRACE(std::string(action) + " at call " + std::to_string(at));
            std::filesystem::remove_all(work()); // what the last one left would count
            std::filesystem::create_directories(work());
            write_bytes(project, old);
            const int status = run_with_fault(text, action, at);
            EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL) << bytes_of(folder / "out");
            start_anew();
            ASSERT_EQ(open_error(project), "");
            const bool is_old = find_grid("Old") != nullptr;
            ++(is_old ? kept : replaced);
            expect_models(is_old ? old_models : new_models);
        }
    }
    EXPECT_GT(kept, 5);
    EXPECT_GT(replaced, 0);
    // The next save takes away what a killed one left.
    const int status = run_with_fault(text, "kill", calls / 2);
    EXPECT_TRUE(WIFSIGNALED(status));
    EXPECT_EQ(files_in_work(), 2u);
    save_project(project);
    EXPECT_EQ(files_in_work(), 1u);
}

TEST_F(Writing, AFullOrFailingDiskLeavesTheOldProject)
{
    std::filesystem::create_directories(work());
    const std::filesystem::path project = work() / "p.lodex-project";
    add_box("Old", {3, 2, 2});
    save_project(project);
    const std::string old = bytes_of(project);
    const std::string text =
        "lodex create sgrid name New size 2+2+2 spacing 1+1+1; lodex save project \"" + project.string() + "\"";
    ASSERT_EQ(run_with_fault(text, "ENOSPC", 0), 0);
    const long calls = counted();
    int failures = 0;
    for (long at = 1; at <= calls; ++at) {
        SCOPED_TRACE("call " + std::to_string(at));
        std::filesystem::remove_all(work());
        std::filesystem::create_directories(work());
        write_bytes(project, old);
        const int status = run_with_fault(text, at % 2 ? "ENOSPC" : "EIO", at, true);
        ASSERT_TRUE(WIFEXITED(status)) << bytes_of(folder / "out");
        if (WEXITSTATUS(status) == 0) // syncing the folder may fail: the file has its name by then
            continue;
        ++failures;
        EXPECT_EQ(WEXITSTATUS(status), 1);
        EXPECT_NE(bytes_of(folder / "out").find("p.lodex-project: cannot be"), std::string::npos) << bytes_of(folder / "out");
        EXPECT_EQ(bytes_of(project), old);
    }
    EXPECT_GT(failures, 5);
}

TEST_F(Writing, ReadInTheWayOfAnyHdf5Program)
{
    ASSERT_TRUE(run("lodex create example name fine size 40+40+30\n"
                    "lodex on SGrid fine fill_property noise lognormal 1+1 seed 3"));
    save_project(file());
    const GridModel& model = find_grid("fine")->model();
    const hid_t in = H5Fopen(file().c_str(), H5F_ACC_RDONLY, H5P_DEFAULT);
    ASSERT_GE(in, 0);
    const auto read = [in](const std::string& path, hid_t type, auto& values) {
        const hid_t array = H5Dopen2(in, path.c_str(), H5P_DEFAULT);
        const hid_t space = H5Dget_space(array);
        values.resize(static_cast<std::size_t>(H5Sget_simple_extent_npoints(space)));
        EXPECT_GE(H5Dread(array, type, H5S_ALL, H5S_ALL, H5P_DEFAULT, values.data()), 0) << path;
        H5Sclose(space);
        H5Dclose(array);
    };
    std::vector<float> depths, noise;
    std::vector<std::uint8_t> active;
    std::vector<std::int32_t> facies;
    read("/grids/0/corner_depths", H5T_NATIVE_FLOAT, depths);
    read("/grids/0/active_flags", H5T_NATIVE_UINT8, active);
    read("/grids/0/properties/0", H5T_NATIVE_INT32, facies);
    read("/grids/0/properties/" + std::to_string(model.properties.size() - 1), H5T_NATIVE_FLOAT, noise);
    EXPECT_TRUE(same_bits(model.zcorn, RealArray(depths)));
    EXPECT_EQ(active, model.active);
    EXPECT_EQ(facies, std::get<2>(model.properties[0].values));
    EXPECT_EQ(noise, std::get<0>(model.properties.back().values));
    std::vector<char> contents;
    read("/contents", H5T_NATIVE_UINT8, contents);
    EXPECT_EQ(nlohmann::json::parse(contents)["grids"][0]["name"], "fine");
    const hid_t attribute = H5Aopen_by_name(in, "/grids/0/properties/0", "name", H5P_DEFAULT, H5P_DEFAULT);
    const hid_t type = H5Aget_type(attribute);
    char name[64] = "";
    EXPECT_GE(H5Aread(attribute, type, name), 0);
    EXPECT_STREQ(name, "FACIES");
    H5Tclose(type);
    H5Aclose(attribute);
    H5Fclose(in);
}

TEST_F(Writing, TheBatchRunnerTellsWhatAProjectHolds)
{
    ASSERT_TRUE(run("lodex create example name fine size 6+5+4\nlodex create sgrid name Box size 2+2+1 spacing 1+1+1"));
    save_project(file());
    const auto tell = [this](const std::string& more, const std::filesystem::path& path) {
        const int status = std::system(("'" LODEX_PROGRAM "' info '" + path.string() + "' " + more + " >'" +
                                        (folder / "out").string() + "' 2>&1").c_str());
        return WEXITSTATUS(status) == 0 ? bytes_of(folder / "out") : "failed: " + bytes_of(folder / "out");
    };
    const auto json = nlohmann::json::parse(tell("--json", file()));
    EXPECT_EQ(json["grids"].size(), 2u);
    EXPECT_EQ(json["grids"][0]["size"], (nlohmann::json{6, 5, 4}));
    EXPECT_EQ(json["grids"][0]["properties"][0]["name"], "FACIES");
    EXPECT_EQ(json["journal"], 2);
    EXPECT_NE(tell("", file()).find("Box: 2 x 2 x 1 cells\n"), std::string::npos);
    write_bytes(file("cut"), bytes_of(file()).substr(0, 3000));
    EXPECT_NE(tell("", file("cut")).find("failed: " + file("cut").string() + ": is truncated"), std::string::npos);
}

TEST_F(Writing, WherePathsLeadNowhere)
{
    add_box("Box", {1, 1, 1});
    const auto fails = [](const std::string& path) { return error("lodex save project \"" + path + "\""); };
    EXPECT_NE(fails(folder.string()).find("it is a folder"), std::string::npos);
    EXPECT_NE(fails((folder / "no" / "p").string()).find("cannot be written"), std::string::npos);
    EXPECT_NE(fails("/dev/null").find("not a regular file"), std::string::npos);
    EXPECT_NE(error("lodex save project"), "no error");
    EXPECT_NE(error("lodex open project \"\""), "no error");
    EXPECT_TRUE(project_path().empty());
    EXPECT_TRUE(project_changed());
}

} // namespace
