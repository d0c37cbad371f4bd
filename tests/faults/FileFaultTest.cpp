// The batch runner while its files go wrong: killed at every call that changes something, disk full, read-only folder,
// files that change while they are read. Whatever happens, each file is the old one or the new one.

#include "lodex/utils/FileRecovery.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace {

namespace fs = std::filesystem;

using Files = std::map<std::string, std::string>; // name, content

struct Outcome {
    int status = -1; ///< exit status; -1: a signal ended the program
    int signal = 0;
    std::string out, err;
};

/// What shall go wrong; see fault_shim.c.
struct Fault {
    std::string action;
    long at = 0;
    bool sticky = false;
    std::string calls = {}; ///< empty: all that change something
};

std::string read(const fs::path& path)
{
    std::ostringstream text;
    text << std::ifstream(path, std::ios::binary).rdbuf();
    return text.str();
}

void write(const fs::path& path, const std::string& text)
{
    std::ofstream(path, std::ios::binary) << text;
}

class FileFaults : public testing::Test {
protected:
    FileFaults()
        : base(fs::canonical(fs::temp_directory_path()) /
               ("file_faults_" + std::to_string(getpid()) + "_" + testing::UnitTest::GetInstance()->current_test_info()->name())),
          folder(base / "work")
    {
        fs::create_directories(folder);
        write(base / "old.lodex", script("4+3+2", "0.25"));
        write(base / "new.lodex", script("5+4+3", "0.125"));
    }
    ~FileFaults() override { fs::remove_all(base); }

    /// Writes the model in every format, and a report.
    static std::string script(const std::string& size, const std::string& porosity)
    {
        std::string text = "lodex create sgrid name G size " + size + " spacing 10+10+1\nlodex on SGrid G fill_property PORO value " +
                           porosity + "\n";
        for (const char* file : {"g.grdecl", "g.EGRID", "g.roff", "g.vtu", "g.bgrdecl"})
            text += std::string("lodex export sgrid G file \"") + file + "\"\n";
        return text + "lodex report sgrid G file \"g.json\"\n";
    }

    /// Runs shell words in the test's folder; LODEX stands for the program with the fault in it.
    [[nodiscard]] Outcome shell(std::string words, const Fault& fault = {}) const
    {
        std::string program = "'" LODEX_PROGRAM "'";
        if (!fault.action.empty()) {
            program = "env LD_PRELOAD='" FAULT_SHIM "' ASAN_OPTIONS=detect_leaks=0:verify_asan_link_order=0 FAULT_FOLDER='" +
                      folder.string() + "' FAULT_COUNT='" + (base / "count").string() + "' FAULT_ACTION=" + fault.action +
                      " FAULT_AT=" + std::to_string(fault.at) + (fault.sticky ? " FAULT_STICKY=1" : "") +
                      (fault.calls.empty() ? "" : " FAULT_CALLS=" + fault.calls) + " " + program;
        }
        for (std::size_t at = 0; (at = words.find("LODEX", at)) != std::string::npos; at += program.size())
            words.replace(at, 5, program);
        const std::string out = (base / "out.txt").string(), err = (base / "err.txt").string();
        // "exec" where it is one command: the status is the program's then, a signal included, of which the outer shell
        // shall not tell.
        const std::string command = "exec 2>/dev/null; cd '" + folder.string() + "' && (" + words + ") >'" + out + "' 2>'" + err + "' </dev/null";
        const int status = std::system(command.c_str());
        Outcome outcome{WIFEXITED(status) ? WEXITSTATUS(status) : -1, 0, read(out), read(err)};
        constexpr int signalled = 128; // how a shell tells it
        if (outcome.status > signalled) {
            outcome.signal = outcome.status - signalled;
            outcome.status = -1;
        }
        return outcome;
    }
    [[nodiscard]] Outcome run_script(const std::string& name, const Fault& fault = {}) const
    {
        return shell("exec LODEX --quiet run ../" + name + " --json run.json --journal journal.lodex", fault);
    }
    /// Calls that were counted in the last run that ended by itself.
    [[nodiscard]] long counted() const { return std::atol(read(base / "count").c_str()); }

    /// All files, hidden ones as well.
    [[nodiscard]] Files content() const
    {
        Files files;
        for (const auto& entry : fs::directory_iterator(folder))
            files[entry.path().filename().string()] = entry.is_regular_file() ? read(entry.path()) : "?";
        return files;
    }
    void fill(const Files& files) const
    {
        for (const auto& entry : fs::directory_iterator(folder))
            fs::remove_all(entry.path());
        for (const auto& [name, text] : files)
            write(folder / name, text);
    }
    /// What the next one who writes or reads there does.
    void recover(const Files& files) const
    {
        lodex::recover_file_sets(folder);
        for (const auto& [name, text] : files)
            lodex::clean_up_for(folder / name);
    }

    fs::path base, folder;
};

/// The JSON report holds times: one run's is not the next one's.
bool is_report(const std::string& text, const std::string& version)
{
    const auto report = nlohmann::json::parse(text, nullptr, false);
    return !report.is_discarded() && report["inputs"][0] == "../" + version + ".lodex";
}

/// Every file is whole, and files that belong together are of one time.
void expect_old_or_new(const Files& now, const Files& old_files, const Files& new_files, const std::string& what)
{
    for (const auto& [name, text] : now) {
        ASSERT_TRUE(new_files.contains(name)) << what << ": " << name;
        if (name == "run.json") {
            EXPECT_TRUE((old_files.contains(name) && text == old_files.at(name)) || is_report(text, "new")) << what << ":\n" << text;
            continue;
        }
        EXPECT_TRUE((old_files.contains(name) && text == old_files.at(name)) || text == new_files.at(name) ||
                    (name == "journal.lodex" && new_files.at(name).starts_with(text))) // of a run that ended earlier
            << what << ": " << name << " is neither the old nor the new one";
    }
    for (const auto& [name, text] : old_files)
        EXPECT_TRUE(now.contains(name)) << what << ": " << name << " is gone";
    EXPECT_EQ(now.contains("g.EGRID"), now.contains("g.INIT")) << what;
    if (now.contains("g.EGRID") && now.contains("g.INIT")) {
        EXPECT_EQ(now.at("g.EGRID") == new_files.at("g.EGRID"), now.at("g.INIT") == new_files.at("g.INIT"))
            << what << ": grid and properties are not of one model";
    }
}

} // namespace

TEST_F(FileFaults, AKillAtAnyCallLeavesOldOrNewFiles)
{
    ASSERT_EQ(run_script("old.lodex").status, 0);
    const Files old_files = content();
    ASSERT_EQ(run_script("new.lodex", {"kill", 0}).status, 0);
    const long calls = counted();
    const Files new_files = content();
    ASSERT_EQ(old_files.size(), 9u);
    ASSERT_EQ(new_files.size(), 9u);
    ASSERT_GT(calls, 40);
    ASSERT_EQ(run_script("new.lodex", {"kill", 0}).status, 0);
    Files again = content(), first = new_files;
    again.erase("run.json"), first.erase("run.json");
    ASSERT_EQ(again, first) << "the same statements make the same bytes";

    for (const bool there : {true, false}) {
        const Files before = there ? old_files : Files();
        for (long n = 1; n <= calls; ++n) {
            // Without old files there are fewer calls: nothing gets a second name.
            fill(before);
            const Outcome outcome = run_script("new.lodex", {"tear", n});
            if (outcome.status == 0)
                break;
            EXPECT_EQ(outcome.signal, SIGKILL) << n << ": " << outcome.err;
            recover(new_files);
            expect_old_or_new(content(), before, new_files, (there ? "killed over old files at " : "killed at ") + std::to_string(n));
        }
    }
}

TEST_F(FileFaults, AnyFailureLeavesOldOrNewFilesAndNothingElse)
{
    ASSERT_EQ(run_script("old.lodex").status, 0);
    const Files old_files = content();
    const std::string calls_that_matter = "open,write,sync,rename,link";
    ASSERT_EQ(run_script("new.lodex", {"EIO", 0, false, calls_that_matter}).status, 0);
    const long calls = counted();
    const Files new_files = content();
    const std::map<std::string, std::string> texts{{"ENOSPC", "No space left on device"},
                                                   {"EIO", "Input/output error"},
                                                   {"EDQUOT", "Disk quota exceeded"},
                                                   {"EROFS", "Read-only file system"}};
    long failed = 0;
    for (long n = 1; n <= calls; ++n) {
        const auto& [error, text] = *std::next(texts.begin(), n % static_cast<long>(texts.size()));
        for (const bool sticky : {false, true}) {
            fill(old_files);
            const Outcome outcome = run_script("new.lodex", {error, n, sticky, calls_that_matter});
            const std::string what = error + (sticky ? " from " : " at ") + std::to_string(n);
            // A file system that takes no new names at all cannot give the old ones back either: the next process does.
            if (sticky && outcome.err.find("cannot be put in place") != std::string::npos)
                recover(new_files);
            const Files now = content();
            expect_old_or_new(now, old_files, new_files, what);
            ASSERT_GE(outcome.status, 0) << what << ": ended by signal " << outcome.signal;
            if (outcome.status == 0) {
                // A folder that cannot be brought to the disk, or an old file that gets no second name: the new ones count.
                for (const auto& [name, content] : new_files)
                    EXPECT_TRUE(name == "run.json" || now.at(name) == content) << what << ": " << name;
                continue;
            }
            ++failed;
            EXPECT_EQ(outcome.status, 1) << what;
            EXPECT_NE(outcome.err.find(text), std::string::npos) << what << ": " << outcome.err;
            EXPECT_TRUE(std::ranges::any_of(new_files, [&](const auto& file) {
                return outcome.err.find(file.first + ": cannot be ") != std::string::npos;
            })) << what << ": "
                << outcome.err;
        }
    }
    EXPECT_GT(failed, calls) << "most calls matter";
}

TEST_F(FileFaults, ShortWritesAreNoFailure)
{
    ASSERT_EQ(run_script("old.lodex").status, 0);
    Files expected = content();
    fill({});
    ASSERT_EQ(run_script("old.lodex", {"short", 1}).status, 0);
    Files found = content();
    EXPECT_TRUE(is_report(found["run.json"], "old"));
    expected.erase("run.json"), found.erase("run.json");
    EXPECT_EQ(found, expected);
}

TEST_F(FileFaults, AReaderFinishesWhatAKilledWriterBegan)
{
    ASSERT_EQ(run_script("old.lodex").status, 0);
    const Files old_files = content();
    ASSERT_EQ(run_script("new.lodex", {"kill", 0, false, "rename"}).status, 0);
    const long renames = counted();
    bool mixed = false;
    for (long n = 1; n <= renames; ++n) {
        fill(old_files);
        ASSERT_EQ(run_script("new.lodex", {"kill", n, false, "rename"}).signal, SIGKILL);
        const Files after = content();
        mixed |= (after.at("g.EGRID") == old_files.at("g.EGRID")) != (after.at("g.INIT") == old_files.at("g.INIT"));
        const Outcome outcome = shell("exec LODEX info g.EGRID");
        EXPECT_EQ(outcome.status, 0) << outcome.err;
        EXPECT_TRUE(outcome.out == "g.EGRID: 4 x 3 x 2 cells, 24 active, bulk volume 2400.0\n"
                                   "  PORO: 24 values, 0.25 to 0.25, mean 0.25\n" ||
                    outcome.out == "g.EGRID: 5 x 4 x 3 cells, 60 active, bulk volume 6000.0\n"
                                   "  PORO: 60 values, 0.125 to 0.125, mean 0.125\n")
            << outcome.out;
        EXPECT_FALSE(std::ranges::any_of(content(), [](const auto& file) {
            return file.first.ends_with(".redo") || file.first.ends_with(".undo") || file.first.ends_with(".old");
        })) << n;
    }
    EXPECT_TRUE(mixed) << "one of the kills falls between the two renames";
}

TEST_F(FileFaults, TheNextWriterRemovesWhatAKilledOneLeft)
{
    ASSERT_EQ(run_script("new.lodex", {"kill", 3}).signal, SIGKILL);
    EXPECT_TRUE(std::ranges::any_of(content(), [](const auto& file) { return file.first.ends_with(".tmp"); }));
    // One that is being written right now stays.
    const fs::path living = folder / lodex::temporary_name("g.grdecl", 1, 1);
    std::ofstream(living) << "x";
    const int lock = ::open(living.c_str(), O_RDONLY);
    ASSERT_TRUE(lodex::try_lock(lock));
    ASSERT_EQ(run_script("new.lodex").status, 0);
    EXPECT_EQ(content().size(), 10u);
    EXPECT_TRUE(fs::exists(living));
    ::close(lock);
}

TEST_F(FileFaults, ARecordThatThisProgramWouldNotWriteChangesNothing)
{
    // Such as one in a folder that came from elsewhere.
    write(folder / "mine", "mine");
    const std::string head("files that belong together, 1\0", 30);
    const auto record = [&](const std::string& temporary, const std::string& target) {
        return head + temporary + '\0' + target + '\0' + "1" + '\0' + "0" + '\0' + "end";
    };
    const auto check = [&](const std::string& text, const std::string& name) {
        write(folder / name, text);
        lodex::recover_file_sets(folder);
        EXPECT_EQ(content(), (Files{{"mine", "mine"}}));
    };
    for (const char* name : {".1-1.redo", ".1-1.undo"}) {
        check(record("mine", "mine"), name);
        check(record("../elsewhere/mine", "../elsewhere/mine"), name);
        check(record(".a/../mine.1-1.tmp", "a/../mine"), name);
        check(head, name);
        check("", name);
        check(std::string(200'000, '\0'), name);
    }
}

TEST_F(FileFaults, TargetsThatAreNoFiles)
{
    fs::create_directory(folder / "folder.grdecl");
    fs::create_symlink("/dev/null", folder / "device.grdecl");
    fs::create_symlink("nowhere/a.grdecl", folder / "dangling.grdecl");
    fs::create_symlink("made.grdecl", folder / "ahead.grdecl");
    ASSERT_EQ(mkfifo((folder / "pipe.grdecl").c_str(), 0666), 0);
    const std::string make = "lodex create sgrid name G size 1+1+1 spacing 1+1+1;";
    const auto attempt = [&](const std::string& name) {
        return shell("exec LODEX --quiet -c '" + make + "lodex export sgrid G file \"" + name + "\"'");
    };
    const auto expect = [&](const std::string& name, const std::string& reason) {
        const Outcome outcome = attempt(name);
        EXPECT_EQ(outcome.status, 1) << name;
        EXPECT_NE(outcome.err.find(name + ": cannot be written: " + reason + "\n"), std::string::npos) << outcome.err;
    };
    expect("folder.grdecl", "it is a folder");
    expect("device.grdecl", "it is not a regular file");
    expect("pipe.grdecl", "it is not a regular file");
    expect("dangling.grdecl", "No such file or directory");
    expect("none/a.grdecl", "No such file or directory");
    expect(std::string(300, 'x') + ".grdecl", "File name too long");
    EXPECT_EQ(attempt("ahead.grdecl").status, 0) << "a link to a file that is not there yet";
    EXPECT_TRUE(fs::is_symlink(folder / "ahead.grdecl"));
    EXPECT_EQ(attempt(std::string(240, 'x') + ".grdecl").status, 0) << "as long as a name may be";
    EXPECT_EQ(content().size(), 7u);
    // The JSON report and the journal.
    const Outcome outcome = shell("exec LODEX --quiet -c '" + make + "' --json folder.grdecl --journal none/j");
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.err, "folder.grdecl: cannot be written: it is a folder\n"
                           "none/j: cannot be written: No such file or directory\n");
    EXPECT_EQ(shell("LODEX -c 'lodex help' >/dev/full").err, "error: standard output cannot be written\n");
}

TEST_F(FileFaults, SourcesThatAreNoFiles)
{
    fs::create_directory(folder / "folder");
    ASSERT_EQ(mkfifo((folder / "pipe").c_str(), 0666), 0);
    const std::string on = "lodex create sgrid name G size 1+1+1 spacing 1+1+1;lodex on SGrid G ";
    for (const std::string& statement :
         {std::string("lodex import name A "), on + "import_properties ", on + "set_property P ", on + "set_layers "}) {
        for (const auto& [path, reason] : {std::pair("folder", "is a folder, expected a file"), {"pipe", "is not a regular file"},
                                           {"/dev/zero", "is not a regular file"},
                                           {"gone", "cannot be read: No such file or directory"}}) {
            const Outcome outcome = shell("exec timeout 20 LODEX --quiet -c '" + statement + "file \"" + path + "\"'");
            EXPECT_EQ(outcome.status, 1) << statement << path;
            EXPECT_NE(outcome.err.find(std::string(path) + ": " + reason), std::string::npos) << outcome.err;
        }
    }
    EXPECT_EQ(shell("exec LODEX run folder").err, "folder: is a folder, expected a script\n");
    EXPECT_EQ(shell("echo 'lodex help report' | LODEX run /dev/stdin").status, 0);
}

TEST_F(FileFaults, FilesThatMayNotGrow)
{
    const std::string make = "lodex create sgrid name G size 30+30+20 spacing 1+1+1;lodex export sgrid G file \"g.EGRID\"";
    write(folder / "g.EGRID", "old");
    // 64 blocks of 512 or 1024 bytes; the shell's own files are shorter.
    const Outcome limited = shell("ulimit -f 64; exec LODEX --quiet -c '" + make + "'");
    EXPECT_EQ(limited.status, 1) << limited.signal;
    EXPECT_NE(limited.err.find("g.EGRID: cannot be written: File too large\n"), std::string::npos) << limited.err;
    EXPECT_EQ(content(), (Files{{"g.EGRID", "old"}}));
}

TEST_F(FileFaults, AFullDisk)
{
    const std::string make = "lodex create sgrid name G size 30+30+20 spacing 1+1+1;lodex export sgrid G file \"g.EGRID\"";
    const std::string disk = "mount -t tmpfs -o size=100k none . 2>/dev/null && cd \"$PWD\" || exit 77; echo old >g.EGRID; ";
    write(base / "disk.sh", disk + "\"$1\" --quiet -c '" + make + "'; echo \"status $?\"; cat g.EGRID; ls -A; df --output=used . | tail -1");
    const Outcome full = shell("exec unshare -m sh ../disk.sh LODEX");
    if (full.status == 77 || full.out.empty())
        GTEST_SKIP() << "only root may mount the small file system that this needs; AnyFailureLeavesOldOrNewFilesAndNothingElse fails the writes instead: " << full.err;
    EXPECT_TRUE(full.out.starts_with("status 1\nold\ng.EGRID\n")) << full.out;
    EXPECT_NE(full.err.find("g.EGRID: cannot be written: No space left on device\n"), std::string::npos) << full.err;
}

TEST_F(FileFaults, FilesThatChangeWhileTheyAreRead)
{
    write(base / "big.lodex", "lodex create sgrid name G size 20+20+10 spacing 10+10+1\n"
                              "lodex on SGrid G fill_property PORO lognormal 0.2+0.3\n"
                              "lodex export sgrid G file \"g.grdecl\"\nlodex export sgrid G file \"g.EGRID\"\n"
                              "lodex export sgrid G file \"g.roff\"\nlodex export sgrid G file \"g.bgrdecl\"\n"
                              "lodex export sgrid G file \"g.FEGRID\"\nlodex export sgrid G file \"g.roffasc\"\n");
    ASSERT_EQ(run_script("big.lodex").status, 0);
    std::string values;
    for (int cell = 0; cell < 4000; ++cell)
        values += std::to_string(cell) + "\n";
    write(folder / "values.txt", values);
    write(folder / "values.bin", std::string(32000, '\0'));
    write(folder / "layers.txt", "'Upper' 1 - 4\n'Lower' 5 - 10\n");
    const Files files = content();
    const std::string box = "lodex create sgrid name A size 20+20+10 spacing 1+1+1;lodex on SGrid A ";
    std::vector<std::string> statements;
    for (const char* name : {"g.grdecl", "g.EGRID", "g.roff", "g.bgrdecl", "g.FEGRID", "g.roffasc"})
        statements.push_back(std::string("lodex import name A file \"") + name + "\"");
    statements.push_back(box + "set_property P file \"values.txt\"");
    statements.push_back(box + "set_property P file \"values.bin\"");
    statements.push_back(box + "set_layers file \"layers.txt\"");
    long noticed = 0;
    for (const std::string& statement : statements) {
        const std::string words = "exec LODEX --quiet -c '" + statement + ";lodex report sgrid A'";
        fill(files);
        const Outcome whole = shell(words, {"EIO", 0, false, "read"});
        ASSERT_EQ(whole.status, 0) << whole.err;
        const long reads = counted();
        EXPECT_GT(reads, 0);
        for (const char* action : {"truncate", "append", "remove", "EIO"}) {
            // All reads where there are few, else some from the first to the last.
            const long step = std::max(1L, reads / 3);
            for (long n = 1; n <= reads; n += n + step > reads && n < reads ? reads - n : step) {
                fill(files);
                const Outcome outcome = shell(words, {action, n, false, "read"});
                const std::string what = statement + ": " + action + " at read " + std::to_string(n);
                ASSERT_GE(outcome.status, 0) << what << ": signal " << outcome.signal;
                if (outcome.status == 0) {
                    EXPECT_EQ(outcome.out, whole.out) << what;
                    EXPECT_STRNE(action, "EIO") << what;
                } else {
                    ++noticed;
                    EXPECT_EQ(outcome.out, "") << what;
                    const std::size_t quote = statement.rfind('"', statement.size() - 2);
                    const std::string stem = statement.substr(quote + 1, 2);
                    EXPECT_NE(outcome.err.find(": " + stem), std::string::npos) << what << ": " << outcome.err;
                }
            }
        }
    }
    EXPECT_GT(noticed, 40);
}

// Sanitizers reserve terabytes of addresses: under them no limit lets the program begin.
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
TEST_F(FileFaults, LittleMemoryForTheWholeProcess)
{
    // From far too little to enough: the program ends with a status and a message of its own, and writes whole files.
    ASSERT_EQ(shell("exec LODEX --quiet -c 'lodex create example name G size 40+40+20;lodex export sgrid G file \"old.grdecl\"'").status, 0);
    const std::string expected = read(folder / "old.grdecl");
    int failed = 0, done = 0;
    for (int megabytes = 36; megabytes < 4000; megabytes += megabytes < 80 ? 4 : megabytes) {
        const Outcome outcome = shell("ulimit -v " + std::to_string(megabytes * 1024) +
                                      "; exec LODEX --threads 1 --quiet -c 'lodex import file \"old.grdecl\" name A;"
                                      "lodex sgrid_subdivide_multiple_sections name B sgrid A direction vertical sections "
                                      "0+3+proportional+ copy_properties 1;lodex export sgrid A file \"new.grdecl\"'");
        if (outcome.err.find("cannot allocate memory in static TLS") != std::string::npos ||
            outcome.err.find("failed to map segment") != std::string::npos)
            continue; // the loader's word: the program did not begin
        ASSERT_TRUE(outcome.status == 0 || outcome.status == 1) << megabytes << ": " << outcome.signal << "\n" << outcome.err;
        failed += outcome.status;
        done += outcome.status == 0;
        EXPECT_TRUE(outcome.status == 0 || outcome.err.find("memory") != std::string::npos) << outcome.err;
        EXPECT_TRUE(!fs::exists(folder / "new.grdecl") || read(folder / "new.grdecl") == expected);
        fs::remove(folder / "new.grdecl");
        EXPECT_EQ(content().size(), 1u);
    }
    EXPECT_GT(failed, 0);
    EXPECT_GT(done, 0);
}
#endif
