#pragma once

#include <cstdint>
#include <filesystem>
#include <span>
#include <string>

namespace lodex {

/// A regular file that is read from front to back and must not change meanwhile. Folders, pipes and devices are refused
/// at once, without waiting for anybody. Every failure is a FileError with the system's reason. For one thread.
class InputFile {
public:
    explicit InputFile(const std::filesystem::path& path);
    ~InputFile();
    InputFile(const InputFile&) = delete;
    InputFile& operator=(const InputFile&) = delete;

    /// Bytes of the file when it was opened.
    [[nodiscard]] std::uint64_t size() const { return size_; }
    /// Fills the room as far as there is something left; returns how many bytes it got.
    [[nodiscard]] std::size_t read(std::span<char> room);
    /// Goes to a place, in bytes from the front.
    void seek(std::uint64_t offset) { offset_ = offset; }
    /// Throws when somebody has written to the file since it was opened.
    void check_unchanged() const;

private:
    std::string name_;
    int descriptor_ = -1;
    std::uint64_t size_ = 0;
    std::uint64_t offset_ = 0;
    std::int64_t seconds_ = 0, nanoseconds_ = 0; ///< of the last change
};

} // namespace lodex
