#include "GridTestTools.h"

#include <lodex/utils/AtomicFile.h>
#include <lodex/utils/FileError.h>

#include <csignal>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace lodex {
namespace {

using Names = std::vector<std::string>;

std::string message_of(const std::function<void()>& work)
{
    try {
        work();
    } catch (const FileError& error) {
        return error.what();
    }
    return "no error";
}

TEST(AtomicFile, ShowsTheNewContentOnlyAfterCommit)
{
    const test::TemporaryFolder folder;
    const auto path = folder.write("report.txt", "old");
    AtomicFile file(path);
    file.write("new ");
    file.write("content");
    EXPECT_EQ(test::file_text(path), "old");
    file.commit();
    EXPECT_EQ(test::file_text(path), "new content");
    EXPECT_EQ(file.size(), 11U);
    EXPECT_EQ(folder.names(), Names{"report.txt"});
}

TEST(AtomicFile, WithoutCommitNothingIsLeft)
{
    const test::TemporaryFolder folder;
    {
        AtomicFile file(folder / "new.txt");
        file.write(std::string(3'000'000, 'x'));
    }
    EXPECT_EQ(folder.names(), Names{});
}

TEST(AtomicFile, ReserveAndAdvanceWriteInPlace)
{
    const test::TemporaryFolder folder;
    AtomicFile file(folder / "a");
    std::string expected;
    for (int i = 0; i < 100'000; ++i) {
        const std::string text = std::to_string(i) + '\n';
        std::copy(text.begin(), text.end(), file.reserve(32));
        file.advance(text.size());
        expected += text;
    }
    file.commit();
    EXPECT_EQ(test::file_text(folder / "a"), expected);
    EXPECT_THROW((void)file.reserve(1'000'000), std::length_error);
}

TEST(AtomicFile, KeepsPermissionsAndSymbolicLinks)
{
    const test::TemporaryFolder folder;
    const auto path = folder.write("data/real.txt", "old");
    std::filesystem::permissions(path, std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
    std::filesystem::create_symlink("data/real.txt", folder / "link.txt");
    AtomicFile file(folder / "link.txt");
    file.write("new");
    file.commit();
    EXPECT_TRUE(std::filesystem::is_symlink(folder / "link.txt"));
    EXPECT_EQ(test::file_text(path), "new");
    struct stat status {};
    ASSERT_EQ(::stat(path.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0600U);
}

TEST(AtomicFile, SaysWhyATargetCannotBeWritten)
{
    const test::TemporaryFolder folder;
    const std::string name = folder.path().string();
    EXPECT_EQ(message_of([&] { AtomicFile(folder / "none/a.txt"); }),
              name + "/none/a.txt: cannot be written: No such file or directory");
    EXPECT_EQ(message_of([&] { AtomicFile(folder.path()); }), name + ": cannot be written: it is a folder");
    std::filesystem::create_symlink("/dev/full", folder / "full.txt");
    EXPECT_EQ(message_of([&] { AtomicFile(folder / "full.txt"); }),
              name + "/full.txt: cannot be written: it is not a regular file");
    std::filesystem::create_symlink("b", folder / "a");
    std::filesystem::create_symlink("a", folder / "b");
    EXPECT_EQ(message_of([&] { AtomicFile(folder / "a"); }),
              name + "/a: cannot be written: Too many levels of symbolic links");
    EXPECT_TRUE(std::filesystem::is_symlink("/dev/full") || std::filesystem::is_character_file("/dev/full"));
}

TEST(AtomicFile, ReadOnlyFolderAndReadOnlyTarget)
{
    // The superuser may write everywhere, so this runs as somebody else in a child.
    const test::TemporaryFolder folder;
    const auto path = folder.write("a.txt", "old");
    std::filesystem::permissions(path, std::filesystem::perms(0444));
    std::filesystem::permissions(folder.path(), std::filesystem::perms(0555));
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        constexpr uid_t nobody = 65534;
        if (::geteuid() == 0 && ::setuid(nobody) != 0) {
            ::_exit(3);
        }
        const bool refused =
            message_of([&] { AtomicFile(folder / "new.txt"); }).ends_with("new.txt: cannot be written: Permission denied")
            && message_of([&] { AtomicFile(folder / "a.txt"); }).ends_with("a.txt: cannot be written: Permission denied");
        ::_exit(refused ? 0 : 1);
    }
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    std::filesystem::permissions(folder.path(), std::filesystem::perms(0755));
    EXPECT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 0);
    EXPECT_EQ(test::file_text(path), "old");
    EXPECT_EQ(folder.names(), Names{"a.txt"});
}

TEST(AtomicFile, FilesThatBelongTogetherAllChangeOrNone)
{
    const test::TemporaryFolder folder;
    const auto write_all = [&](const auto& before_commit) {
        AtomicFile a(folder / "a.txt");
        AtomicFile b(folder / "b.txt");
        AtomicFile c(folder / "c.txt");
        for (AtomicFile* const file : {&a, &b, &c}) {
            file->write("new");
        }
        before_commit();
        AtomicFile::commit_together(std::array{&a, &b, &c});
    };
    folder.write("a.txt", "old a");
    write_all([] {});
    EXPECT_EQ(folder.names(), (Names{"a.txt", "b.txt", "c.txt"}));
    EXPECT_EQ(test::file_text(folder / "a.txt"), "new");
    EXPECT_EQ(test::file_text(folder / "c.txt"), "new");

    // The last one cannot take its name, which somebody has given to a folder.
    folder.write("a.txt", "old a");
    std::filesystem::remove(folder / "b.txt");
    const std::string message = message_of([&] {
        write_all([&] {
            std::filesystem::remove(folder / "c.txt");
            std::filesystem::create_directories(folder / "c.txt/inside");
        });
    });
    EXPECT_EQ(message, (folder / "c.txt").string() + ": cannot be put in place: Is a directory");
    EXPECT_EQ(folder.names(), (Names{"a.txt", "c.txt"}));
    EXPECT_EQ(test::file_text(folder / "a.txt"), "old a");
    EXPECT_TRUE(std::filesystem::is_directory(folder / "c.txt/inside"));
}

TEST(AtomicFile, FullDiskLeavesTheOldFile)
{
    const test::TemporaryFolder folder;
    const auto path = folder.write("a.txt", "old");
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        // Files of this process may not grow beyond 2 MB: to it the disk is full there.
        ::signal(SIGXFSZ, SIG_IGN);
        constexpr rlim_t limit = 2'000'000;
        const rlimit limits{limit, limit};
        if (::setrlimit(RLIMIT_FSIZE, &limits) != 0) {
            ::_exit(3);
        }
        const std::string message = message_of([&] {
            AtomicFile file(path);
            file.write(std::string(5'000'000, 'x'));
            file.commit();
        });
        ::_exit(message == path.string() + ": cannot be written: File too large" ? 0 : 1);
    }
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 0);
    EXPECT_EQ(test::file_text(path), "old");
    EXPECT_EQ(folder.names(), Names{"a.txt"});
}

TEST(FileErrorText, IsValidUtf8)
{
    EXPECT_EQ(to_utf8("plain"), "plain");
    EXPECT_EQ(to_utf8("Gr\xC3\xA8s"), "Gr\xC3\xA8s");
    EXPECT_EQ(to_utf8("lb per ft\xB3"), "lb per ft\xC2\xB3");
    EXPECT_EQ(to_utf8("\xC3"), "\xC3\x83");
    EXPECT_EQ(to_utf8("\xED\xA0\x80"), "\xC3\xAD\xC2\xA0\xC2\x80"); // a surrogate is no character
    EXPECT_EQ(std::string(FileError("a\xB3.grdecl", 7, "reason").what()), "a\xC2\xB3.grdecl:7: reason");
    EXPECT_EQ(std::string(FileError("a.grdecl", 0, "reason").what()), "a.grdecl: reason");
}

} // namespace
} // namespace lodex
