#pragma once

#include <cstdint>
#include <filesystem>
#include <string_view>
#include <vector>

namespace lodex {

/// Writes a file so that its name shows either the old content or all of the new one.
///
/// The bytes go to a new file in the target's folder; commit() brings them to the disk and renames that file over the
/// target. Without commit() the destructor removes it. A target that is a symbolic link keeps being one: the file it
/// points to is replaced. Every failure is a FileError with the system's reason. For one thread.
class AtomicFile {
public:
    /// Throws FileError: no such folder, folder not writable, the target is a folder or a device.
    explicit AtomicFile(std::filesystem::path target);
    ~AtomicFile();
    AtomicFile(const AtomicFile&) = delete;
    AtomicFile& operator=(const AtomicFile&) = delete;

    /// Buffered; a full disk may show only later, in commit() at the latest.
    void write(std::string_view bytes);

    /// Room for up to `wanted` bytes at the end of the buffer, at most 64 KiB; valid until any other call.
    [[nodiscard]] char* reserve(std::size_t wanted);
    /// Takes over the first `count` bytes written to the room that reserve() gave.
    void advance(std::size_t count) { used_ += count; }

    /// Bytes written so far.
    [[nodiscard]] std::uint64_t size() const { return flushed_ + used_; }

    /// Brings all bytes so far to the disk, so that commit() has hardly anything left that can fail. For programs that
    /// write several files which belong together.
    void sync();

    /// Makes the new content visible. To be called once, last.
    void commit();

private:
    void flush();
    [[noreturn]] void fail(int error, std::string_view action);
    void discard() noexcept;

    std::filesystem::path target_; ///< as given, for messages
    std::filesystem::path final_;  ///< with symbolic links resolved
    std::filesystem::path temporary_;
    int descriptor_ = -1;
    std::vector<char> buffer_;
    std::size_t used_ = 0;
    std::uint64_t flushed_ = 0;
};

} // namespace lodex
