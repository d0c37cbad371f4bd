#include <lodex/utils/AtomicFile.h>

#include <lodex/utils/FileError.h>
#include <lodex/utils/FileRecovery.h>

#include <atomic>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <new>
#include <string>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace lodex {

namespace {

constexpr std::size_t buffer_bytes = 1024 * 1024;
constexpr std::size_t largest_reserve = 64 * 1024;
constexpr int attempts = 100;

/// Follows symbolic links as far as they go, also to a file that does not exist yet.
std::filesystem::path resolved(const std::filesystem::path& path, std::error_code& error)
{
    std::filesystem::path current = path;
    constexpr int most_links = 40;
    for (int i = 0; i < most_links; ++i) {
        std::error_code ignored;
        if (!std::filesystem::is_symlink(current, ignored)) {
            return current;
        }
        const auto next = std::filesystem::read_symlink(current, error);
        if (error) {
            return {};
        }
        current = next.is_absolute() ? next : current.parent_path() / next;
    }
    error = std::make_error_code(std::errc::too_many_symbolic_link_levels);
    return {};
}

} // namespace

AtomicFile::AtomicFile(std::filesystem::path target) : target_(std::move(target))
{
    std::error_code error;
    final_ = resolved(target_, error);
    if (error) {
        fail(error.value(), "cannot be written");
    }
    struct stat old {};
    const bool exists = ::stat(final_.c_str(), &old) == 0;
    if (!exists && errno != ENOENT) {
        fail(errno, "cannot be written");
    }
    if (exists && !S_ISREG(old.st_mode)) {
        throw FileError(target_.string(), 0, S_ISDIR(old.st_mode) ? "cannot be written: it is a folder"
                                                                   : "cannot be written: it is not a regular file");
    }
    if (exists && ::access(final_.c_str(), W_OK) != 0) {
        fail(errno, "cannot be written");
    }
    clean_up_for(final_);
    static std::atomic<unsigned> counter{0};
    for (int attempt = 0; attempt < attempts && descriptor_ < 0; ++attempt) {
        std::filesystem::path path = final_.parent_path()
            / temporary_name(final_.filename().string(), static_cast<std::uint64_t>(::getpid()), counter.fetch_add(1));
        descriptor_ = ::open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        if (descriptor_ < 0) {
            if (errno != EEXIST) {
                fail(errno, "cannot be written");
            }
            continue;
        }
        // The lock tells processes, on other machines as well, that this file is being written.
        const bool locked_by_other = !try_lock(descriptor_) && errno == EWOULDBLOCK;
        struct stat status {};
        if (locked_by_other || (::fstat(descriptor_, &status) == 0 && status.st_nlink == 0)) {
            close_file(); // another process took it for a left-over before it was locked, and removes it
        } else {
            temporary_ = std::move(path); // without memory: nothing may be left behind
        }
    }
    if (descriptor_ < 0) {
        fail(EEXIST, "cannot be written");
    }
    if (exists) {
        // The new file takes over who may read it; failing that, the process's default holds.
        [[maybe_unused]] const int result = ::fchmod(descriptor_, old.st_mode & 0777);
    }
}

AtomicFile::~AtomicFile()
{
    discard();
}

void AtomicFile::close_file() noexcept
{
    if (descriptor_ >= 0) {
        ::close(descriptor_);
        descriptor_ = -1;
    }
}

void AtomicFile::discard() noexcept
{
    if (!temporary_.empty()) {
        ::unlink(temporary_.c_str());
        temporary_.clear();
    }
    close_file();
    forget_old();
}

void AtomicFile::fail(int error, std::string_view action)
{
    discard();
    throw FileError(target_.string(), 0, std::string(action) + ": " + std::generic_category().message(error));
}

void AtomicFile::write(std::string_view bytes)
{
    if (buffer_.empty()) {
        buffer_.resize(buffer_bytes);
    }
    while (!bytes.empty()) {
        if (used_ == buffer_.size()) {
            flush();
        }
        const std::size_t count = std::min(bytes.size(), buffer_.size() - used_);
        std::memcpy(buffer_.data() + used_, bytes.data(), count);
        used_ += count;
        bytes.remove_prefix(count);
    }
}

char* AtomicFile::reserve(std::size_t wanted)
{
    if (wanted > largest_reserve) {
        throw std::length_error("AtomicFile::reserve");
    }
    if (buffer_.empty()) {
        buffer_.resize(buffer_bytes);
    }
    if (buffer_.size() - used_ < wanted) {
        flush();
    }
    return buffer_.data() + used_;
}

void AtomicFile::flush()
{
    std::size_t done = 0;
    while (done < used_) {
        const ssize_t count = ::write(descriptor_, buffer_.data() + done, used_ - done);
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count <= 0) {
            fail(count < 0 ? errno : EIO, "cannot be written");
        }
        done += static_cast<std::size_t>(count);
    }
    flushed_ += used_;
    used_ = 0;
    start_writeback(flushed_);
}

void AtomicFile::start_writeback([[maybe_unused]] std::uint64_t end)
{
#ifdef SYNC_FILE_RANGE_WRITE
    // What is whole goes to the disk while the rest is being made, so that the end need not wait for all of it.
    constexpr std::uint64_t piece = std::uint64_t{8} << 20;
    if (end >= started_ + piece) {
        [[maybe_unused]] const int result =
            ::sync_file_range(descriptor_, static_cast<off_t>(started_), static_cast<off_t>(end - started_),
                              SYNC_FILE_RANGE_WRITE);
        started_ = end;
    }
#endif
}

void AtomicFile::write_at(std::uint64_t offset, std::string_view bytes)
{
    while (!bytes.empty()) {
        const ssize_t count = ::pwrite(descriptor_, bytes.data(), bytes.size(), static_cast<off_t>(offset));
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count <= 0) {
            fail(count < 0 ? errno : EIO, "cannot be written");
        }
        offset += static_cast<std::uint64_t>(count);
        bytes.remove_prefix(static_cast<std::size_t>(count));
    }
    start_writeback(offset);
#ifdef SYNC_FILE_RANGE_WAIT_BEFORE
    constexpr std::uint64_t window = std::uint64_t{64} << 20;
    if (started_ >= waited_ + 2 * window) {
        [[maybe_unused]] const int result =
            ::sync_file_range(descriptor_, static_cast<off_t>(waited_), static_cast<off_t>(window),
                              SYNC_FILE_RANGE_WAIT_BEFORE);
        waited_ += window;
    }
#endif
}

std::size_t AtomicFile::read_at(std::uint64_t offset, char* bytes, std::size_t count)
{
    std::size_t done = 0;
    while (done < count) {
        const ssize_t now = ::pread(descriptor_, bytes + done, count - done, static_cast<off_t>(offset + done));
        if (now < 0 && errno == EINTR) {
            continue;
        }
        if (now < 0) {
            fail(errno, "cannot be read back");
        }
        if (now == 0) {
            break;
        }
        done += static_cast<std::size_t>(now);
    }
    return done;
}

void AtomicFile::finish()
{
    flush();
    if (::fsync(descriptor_) != 0) {
        fail(errno, "cannot be written");
    }
}

void AtomicFile::keep_old()
{
    auto name = temporary_;
    name += old_content_ending;
    if (::link(final_.c_str(), name.c_str()) == 0) {
        old_ = std::move(name);
        return;
    }
    if (errno == ENOENT) {
        return;
    }
    // File systems without hard links: the old content moves aside, for as long as the renames take.
    struct stat status {};
    if (::lstat(final_.c_str(), &status) == 0 && S_ISREG(status.st_mode)) {
        if (::rename(final_.c_str(), name.c_str()) != 0) {
            fail(errno, "cannot be put in place");
        }
        old_ = std::move(name);
    }
}

void AtomicFile::put_in_place()
{
    if (::rename(temporary_.c_str(), final_.c_str()) != 0) {
        throw FileError(target_.string(), 0, "cannot be put in place: " + std::generic_category().message(errno));
    }
    temporary_.clear();
    close_file();
}

bool AtomicFile::put_back() noexcept
{
    if (old_.empty()) {
        return ::unlink(final_.c_str()) == 0; // there was none
    }
    struct stat old {};
    struct stat now {};
    const bool there = ::lstat(old_.c_str(), &old) == 0 && ::lstat(final_.c_str(), &now) == 0
        && old.st_dev == now.st_dev && old.st_ino == now.st_ino;
    if (!there && ::rename(old_.c_str(), final_.c_str()) != 0) {
        old_.clear(); // the only name of the old content: it stays
        return false;
    }
    ::unlink(old_.c_str());
    old_.clear();
    return true;
}

void AtomicFile::forget_old() noexcept
{
    if (!old_.empty()) {
        ::unlink(old_.c_str());
        old_.clear();
    }
}

void AtomicFile::sync_folder() const noexcept
{
    // The rename itself reaches the disk with its folder; where a file system cannot do that, the data is safe anyway.
    try {
        const auto folder = final_.has_parent_path() ? final_.parent_path() : std::filesystem::path(".");
        const int directory = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        if (directory >= 0) {
            [[maybe_unused]] const int result = ::fsync(directory);
            ::close(directory);
        }
    } catch (const std::bad_alloc&) {
        // The same without memory for the name.
    }
}

void AtomicFile::commit()
{
    finish();
    put_in_place();
    sync_folder();
}

std::unique_ptr<FileSetRecord> AtomicFile::write_record(std::span<AtomicFile* const> files)
{
    std::vector<FileSetRecord::Member> members;
    for (AtomicFile* const file : files) {
        struct stat status {};
        if (file->final_.parent_path() != files.front()->final_.parent_path()) {
            return nullptr;
        }
        if (::fstat(file->descriptor_, &status) != 0) {
            file->fail(errno, "cannot be written");
        }
        const auto node = static_cast<std::uint64_t>(status.st_ino);
        members.push_back({file->temporary_.filename().string(), file->final_.filename().string(), node,
                           ::lstat(file->final_.c_str(), &status) == 0});
    }
    return std::make_unique<FileSetRecord>(files.front()->final_.parent_path(), members);
}

void AtomicFile::commit_together(std::span<AtomicFile* const> files)
{
    if (files.empty()) {
        return;
    }
    for (AtomicFile* const file : files) {
        file->finish();
    }
    std::unique_ptr<FileSetRecord> record;
    std::size_t renamed = 0;
    try {
        record = write_record(files);
        for (AtomicFile* const file : files) {
            file->keep_old();
        }
        if (record) {
            record->redo();
        }
        for (; renamed < files.size(); ++renamed) {
            files[renamed]->put_in_place();
        }
    } catch (...) {
        bool back = true;
        if (record) {
            record->undo();
        }
        while (renamed > 0) {
            back &= files[--renamed]->put_back();
        }
        for (AtomicFile* const file : files) {
            if (!file->temporary_.empty() && !file->old_.empty()) {
                back &= file->put_back(); // not renamed, its old content may have moved aside
            }
        }
        if (!back && record) {
            // The file system does not even take that. With the record the next process can put it right.
            record->leave();
            for (AtomicFile* const file : files) {
                file->temporary_.clear();
                file->old_.clear();
            }
        }
        for (AtomicFile* const file : files) {
            file->discard();
        }
        try {
            throw;
        } catch (const std::system_error& error) { // of the record
            files.front()->fail(error.code().value(), "cannot be put in place");
        }
    }
    for (AtomicFile* const file : files) {
        file->forget_old();
        file->sync_folder();
    }
}

} // namespace lodex
