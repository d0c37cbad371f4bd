#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <span>
#include <string_view>
#include <vector>

namespace lodex {

class FileSetRecord;

/// Writes a file so that its name shows either the old content or all of the new one.
///
/// The bytes go to a new file in the target's folder; commit() brings them to the disk and renames that file over the
/// target. Without commit() the destructor removes it; what a killed process left there goes when the target is next
/// written. A target that is a symbolic link keeps being one: the file it
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

    /// Bytes written so far by write() and reserve().
    [[nodiscard]] std::uint64_t size() const { return flushed_ + used_; }

    /// Writes at once at a place of the file, which grows when the place lies behind its end. For files that are not made
    /// from front to back: not together with write() and reserve(). What is long on its way to the disk is waited for, so
    /// that commit() takes little time.
    void write_at(std::uint64_t offset, std::string_view bytes);
    /// Reads back what write_at() wrote; returns how many bytes there were, fewer than asked for only at the end.
    [[nodiscard]] std::size_t read_at(std::uint64_t offset, char* bytes, std::size_t count);

    /// Makes the new content visible. To be called once, last.
    void commit();

    /// The same for files that belong together: all are on the disk before the first takes its name, and when one
    /// cannot, those before it get their old content back (or go, where there was none). Files of one folder also change
    /// together when the process is killed or the power fails between two renames: what is to be done is written down
    /// before, and the next process that reads or writes a grid in that folder does it (see FileRecovery.h).
    static void commit_together(std::span<AtomicFile* const> files);

private:
    void flush();
    /// Starts bringing to the disk what is whole, up to this many bytes from the front.
    void start_writeback(std::uint64_t end);
    /// Brings all bytes to the disk. The file stays open, since its lock says that it is no left-over.
    void finish();
    void close_file() noexcept;
    /// The old content of the target keeps a second name, so that put_back() can bring it back.
    void keep_old();
    void put_in_place();
    /// False when the file system does not take it.
    bool put_back() noexcept;
    void forget_old() noexcept;
    void sync_folder() const noexcept;
    /// Null for files that do not share a folder, which no record can be written for.
    [[nodiscard]] static std::unique_ptr<FileSetRecord> write_record(std::span<AtomicFile* const> files);
    [[noreturn]] void fail(int error, std::string_view action);
    void discard() noexcept;

    std::filesystem::path target_; ///< as given, for messages
    std::filesystem::path final_;  ///< with symbolic links resolved
    std::filesystem::path temporary_; ///< empty once it is no longer there
    std::filesystem::path old_;       ///< second name of the old content; empty: none
    int descriptor_ = -1;
    std::vector<char> buffer_; ///< made by the first write() or reserve()
    std::size_t used_ = 0;
    std::uint64_t flushed_ = 0;
    std::uint64_t started_ = 0; ///< bytes that are on their way to the disk
    std::uint64_t waited_ = 0;  ///< bytes of these that write_at() has seen arrive
};

} // namespace lodex
