#include <lodex/utils/InputFile.h>

#include <lodex/utils/FileError.h>

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace lodex {

namespace {

FileError failure(const std::string& name, int error)
{
    return {name, 0, "cannot be read: " + std::generic_category().message(error)};
}

} // namespace

InputFile::InputFile(const std::filesystem::path& path) : name_(path.string())
{
    // Not blocking: a named pipe would otherwise wait for a writer.
    descriptor_ = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (descriptor_ < 0) {
        throw failure(name_, errno);
    }
    struct stat status {};
    const int error = ::fstat(descriptor_, &status) != 0 ? errno : 0;
    if (error != 0 || !S_ISREG(status.st_mode)) {
        ::close(descriptor_);
        if (error != 0) {
            throw failure(name_, error);
        }
        throw FileError(name_, 0, S_ISDIR(status.st_mode) ? "is a folder, expected a file" : "is not a regular file");
    }
    size_ = static_cast<std::uint64_t>(status.st_size);
    seconds_ = status.st_mtim.tv_sec;
    nanoseconds_ = status.st_mtim.tv_nsec;
}

InputFile::~InputFile()
{
    ::close(descriptor_);
}

std::size_t InputFile::read(std::span<char> room)
{
    std::size_t done = 0;
    while (done < room.size()) {
        const ssize_t got = ::pread(descriptor_, room.data() + done, room.size() - done, static_cast<off_t>(offset_));
        if (got < 0 && errno == EINTR) {
            continue;
        }
        if (got < 0) {
            throw failure(name_, errno);
        }
        if (got == 0) {
            break;
        }
        done += static_cast<std::size_t>(got);
        offset_ += static_cast<std::uint64_t>(got);
    }
    return done;
}

void InputFile::check_unchanged() const
{
    struct stat status {};
    if (::fstat(descriptor_, &status) != 0 || static_cast<std::uint64_t>(status.st_size) != size_
        || status.st_mtim.tv_sec != seconds_ || status.st_mtim.tv_nsec != nanoseconds_) {
        throw FileError(name_, 0, "changed while it was read");
    }
}

} // namespace lodex
