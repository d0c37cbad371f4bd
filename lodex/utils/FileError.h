#pragma once

#include <lodex/utils/Errors.h>

#include <cstdint>
#include <string>
#include <string_view>

namespace lodex {

/// Something to tell the user about a file that was read or written; the work went on.
struct Message {
    enum class Level { Info, Warning };

    Level level = Level::Info;
    std::string file;      ///< path as the user or the including file gave it; empty: no file
    std::int64_t line = 0; ///< 1-based; 0: the whole file
    std::string text;      ///< valid UTF-8

    friend bool operator==(const Message&, const Message&) = default;
};

/// A file that cannot be read or written. what() is "PATH:LINE: reason" or, without a line, "PATH: reason", in valid
/// UTF-8.
class FileError : public ModelError {
public:
    /// line is 1-based, 0 when the reason holds for the whole file.
    FileError(std::string file, std::int64_t line, std::string reason);

    [[nodiscard]] const std::string& file() const { return file_; }
    [[nodiscard]] std::int64_t line() const { return line_; }
    [[nodiscard]] const std::string& reason() const { return reason_; }

private:
    std::string file_;
    std::int64_t line_;
    std::string reason_;
};

/// Text from a file made fit for messages and names: valid UTF-8 stays, other bytes are taken for Latin-1.
[[nodiscard]] std::string to_utf8(std::string_view bytes);

} // namespace lodex
