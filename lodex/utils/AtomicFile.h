#pragma once

#include <cstdint>
#include <filesystem>
#include <span>
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

    /// Makes the new content visible. To be called once, last.
    void commit();

    /// The same for files that belong together: all are on the disk before the first takes its name, and when one
    /// cannot, those before it get their old content back (or go, where there was none). What is left to chance is the
    /// power failing between two renames.
    static void commit_together(std::span<AtomicFile* const> files);

private:
    void flush();
    /// Brings all bytes to the disk and closes the file.
    void finish();
    /// The old content of the target keeps a second name, so that put_back() can bring it back.
    void keep_old();
    void put_in_place();
    void put_back() noexcept;
    void forget_old() noexcept;
    void sync_folder() const noexcept;
    [[noreturn]] void fail(int error, std::string_view action);
    void discard() noexcept;

    std::filesystem::path target_; ///< as given, for messages
    std::filesystem::path final_;  ///< with symbolic links resolved
    std::filesystem::path temporary_; ///< empty once it is no longer there
    std::filesystem::path old_;       ///< second name of the old content; empty: none
    int descriptor_ = -1;
    std::vector<char> buffer_;
    std::size_t used_ = 0;
    std::uint64_t flushed_ = 0;
    std::uint64_t started_ = 0; ///< bytes that are on their way to the disk
};

} // namespace lodex
