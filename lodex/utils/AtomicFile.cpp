#include <lodex/utils/AtomicFile.h>

#include <lodex/utils/FileError.h>

#include <atomic>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
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

AtomicFile::AtomicFile(std::filesystem::path target) : target_(std::move(target)), buffer_(buffer_bytes)
{
    std::error_code error;
    final_ = resolved(target_, error);
    if (error) {
        fail(error.value(), "cannot be written");
    }
    struct stat old {};
    const bool exists = ::stat(final_.c_str(), &old) == 0;
    if (exists && !S_ISREG(old.st_mode)) {
        throw FileError(target_.string(), 0, S_ISDIR(old.st_mode) ? "cannot be written: it is a folder"
                                                                   : "cannot be written: it is not a regular file");
    }
    if (exists && ::access(final_.c_str(), W_OK) != 0) {
        fail(errno, "cannot be written");
    }
    static std::atomic<unsigned> counter{0};
    auto folder = final_.parent_path();
    for (int attempt = 0; attempt < attempts && descriptor_ < 0; ++attempt) {
        temporary_ = folder / ("." + final_.filename().string() + "." + std::to_string(::getpid()) + "-"
                               + std::to_string(counter.fetch_add(1)) + ".tmp");
        descriptor_ = ::open(temporary_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        if (descriptor_ < 0 && errno != EEXIST) {
            fail(errno, "cannot be written");
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

void AtomicFile::discard() noexcept
{
    if (descriptor_ >= 0) {
        ::close(descriptor_);
        descriptor_ = -1;
    }
    if (!temporary_.empty()) {
        ::unlink(temporary_.c_str());
        temporary_.clear();
    }
    forget_old();
}

void AtomicFile::fail(int error, std::string_view action)
{
    discard();
    throw FileError(target_.string(), 0, std::string(action) + ": " + std::generic_category().message(error));
}

void AtomicFile::write(std::string_view bytes)
{
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
#ifdef SYNC_FILE_RANGE_WRITE
    // What is whole goes to the disk while the rest is being made, so that the end need not wait for all of it.
    constexpr std::uint64_t piece = std::uint64_t{8} << 20;
    if (flushed_ - started_ >= piece) {
        [[maybe_unused]] const int result =
            ::sync_file_range(descriptor_, static_cast<off_t>(started_), static_cast<off_t>(flushed_ - started_),
                              SYNC_FILE_RANGE_WRITE);
        started_ = flushed_;
    }
#endif
}

void AtomicFile::finish()
{
    flush();
    if (::fsync(descriptor_) != 0) {
        fail(errno, "cannot be written");
    }
    if (::close(std::exchange(descriptor_, -1)) != 0) {
        fail(errno, "cannot be written");
    }
}

void AtomicFile::keep_old()
{
    auto name = temporary_;
    name += ".old";
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
        const int error = errno;
        if (!old_.empty()) {
            put_back();
        }
        fail(error, "cannot be put in place");
    }
    temporary_.clear();
}

void AtomicFile::put_back() noexcept
{
    if (old_.empty()) {
        ::unlink(final_.c_str()); // there was none
        return;
    }
    if (::rename(old_.c_str(), final_.c_str()) == 0) {
        ::unlink(old_.c_str()); // rename() does nothing where both names are of one file
    }
    old_.clear(); // where that failed it is the only name of the old content, and stays
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
    const auto folder = final_.has_parent_path() ? final_.parent_path() : std::filesystem::path(".");
    const int directory = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (directory >= 0) {
        [[maybe_unused]] const int result = ::fsync(directory);
        ::close(directory);
    }
}

void AtomicFile::commit()
{
    finish();
    put_in_place();
    sync_folder();
}

void AtomicFile::commit_together(std::span<AtomicFile* const> files)
{
    for (AtomicFile* const file : files) {
        file->finish();
    }
    std::size_t renamed = 0;
    try {
        for (AtomicFile* const file : files) {
            file->keep_old();
        }
        for (; renamed < files.size(); ++renamed) {
            files[renamed]->put_in_place();
        }
    } catch (...) {
        while (renamed > 0) {
            files[--renamed]->put_back();
        }
        for (AtomicFile* const file : files) {
            if (!file->temporary_.empty() && !file->old_.empty()) {
                file->put_back(); // not renamed, its old content may have moved aside
            }
        }
        throw;
    }
    for (AtomicFile* const file : files) {
        file->forget_old();
        file->sync_folder();
    }
}

} // namespace lodex
