#pragma once

#include <lodex/utils/AtomicFile.h>
#include <lodex/utils/FileError.h>
#include <lodex/utils/Errors.h>

#include <array>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

/// Files of keyworded arrays as Fortran programs of reservoir engineering write them.
///
/// Unformatted: every array is a header record (name of 8 characters, number of values in 32 bits, type of 4
/// characters) and records of up to 1000 values (105 strings); every record stands between two copies of its length in
/// bytes, in 32 bits. Numbers are big-endian; a file that is little-endian throughout is read as well. Formatted: the
/// same as text, names and strings in single quotes.
namespace lodex::records {

enum class Type { Integer, Real, Double, Logical, String, Message };

/// What stands before the values of an array.
struct Header {
    std::string name; ///< without blanks at its end
    Type type = Type::Message;
    std::string type_name;   ///< "REAL", as in the file
    std::uint64_t count = 0; ///< values
    std::size_t width = 0;   ///< bytes of one value in an unformatted file; of a string: its characters
    std::uint64_t byte = 0;  ///< where the header begins in the file
    std::int64_t line = 0;   ///< 1-based line of the header; 0 in an unformatted file
};

/// The headers at the beginning of a file of which only the first bytes are known; empty when they are not of such a
/// file.
[[nodiscard]] std::vector<Header> peek_headers(std::string_view head);

/// What the bytes of a short array are in an unformatted file, for reading many alike; one record of INTE or REAL.
class UsualArray {
public:
    UsualArray(std::string_view name, Type type, std::size_t count);
    [[nodiscard]] std::size_t count() const { return count_; }

private:
    friend class Reader;
    static constexpr std::size_t head_bytes = 28; ///< the header's record and the length of the one behind it
    std::string name_;
    std::size_t count_;
    std::array<std::array<char, head_bytes>, 2> heads_; ///< big-endian, little-endian
};

/// Reads such a file from front to end through a buffer of fixed size.
///
/// All functions throw FileError with the file, the line or the byte, the array and the reason, and Cancelled.
/// A header is refused when the rest of the file is too short for its values, so that memory for the values of one
/// array is never more than four times the file.
class Reader {
public:
    /// Opens a file. progress is called with 0 to 1 for front to end of this file, about every megabyte.
    explicit Reader(const std::filesystem::path& path, ProgressCheck progress = {});
    /// The same from memory, which has to outlive the reader; name stands in messages.
    Reader(std::string_view bytes, const std::filesystem::path& name);
    ~Reader();
    Reader(const Reader&) = delete;
    Reader& operator=(const Reader&) = delete;

    [[nodiscard]] bool formatted() const { return formatted_; }
    [[nodiscard]] const std::string& file() const { return shown_; }
    [[nodiscard]] std::uint64_t file_bytes() const { return file_bytes_; }

    /// The next array; steps over values of the one before that were not read. Nothing at the end of the file.
    [[nodiscard]] std::optional<Header> next();

    /// The next values of the current array, as many as are left and fit: the number read, 0 at its end. float for
    /// REAL, double for DOUB, int32 for INTE; the caller has checked the type.
    template <class T> std::size_t read(std::span<T> values);
    /// Reads the next array when it is this one; false when it is another, which next() reads then. values has its size.
    template <class T> bool read_usual(const UsualArray& array, std::span<T> values);
    /// All values of the current array as strings without blanks at their ends; for short arrays of type String.
    [[nodiscard]] std::vector<std::string> read_strings();
    /// The first values of an INTE array, `wanted` or fewer; the rest is stepped over.
    [[nodiscard]] std::vector<std::int32_t> read_integers(std::size_t wanted);

    /// An error at the header of the current array.
    [[noreturn]] void fail(const std::string& reason) const;
    /// A message at the header of the current array.
    [[nodiscard]] Message message(Message::Level level, const std::string& text) const;

    /// To be called at the end: throws when the file was changed while it was read.
    void check_unchanged() const;

private:
    [[noreturn]] void fail_here(const std::string& reason) const;
    [[noreturn]] void fail_at(std::uint64_t byte, std::int64_t line, const std::string& reason) const;
    void start();
    [[nodiscard]] std::size_t available() const { return static_cast<std::size_t>(end_ - at_); }
    [[nodiscard]] std::uint64_t position() const { return buffer_position_ + static_cast<std::uint64_t>(at_ - begin_); }
    /// True when `count` bytes stand behind at_ in one piece.
    bool need(std::size_t count) { return available() >= count || fill(count); }
    bool fill(std::size_t count);
    void advance(std::uint64_t count);
    void tick();
    void skip_rest();

    [[nodiscard]] std::int32_t length_at(const char* p) const;
    std::optional<Header> next_binary();
    Header read_binary_header();
    void begin_block();
    void end_block();

    std::optional<Header> next_text();
    bool skip_blanks();
    std::string quoted(std::size_t longest, const char* what);
    std::string_view token();
    template <class T> T number(std::string_view text) const;

    std::string shown_;
    ProgressCheck progress_;
    int descriptor_ = -1;
    std::array<std::int64_t, 3> stamp_{}; ///< size and time of change at the beginning
    std::uint64_t file_bytes_ = 0;
    std::unique_ptr<char[]> buffer_;
    const char* begin_ = nullptr;
    const char* at_ = nullptr;
    const char* end_ = nullptr;
    std::uint64_t buffer_position_ = 0; ///< of begin_ in the file
    std::uint64_t next_tick_ = 0;

    bool formatted_ = false;
    bool little_endian_ = false;
    std::int64_t line_ = 1;
    Header header_;
    std::uint64_t left_ = 0;       ///< values of the current array that are not read
    std::uint64_t block_left_ = 0; ///< bytes of the current record
    std::int32_t block_length_ = 0;
};

/// A file, or bytes that stand for it.
struct Source {
    std::filesystem::path path;
    std::optional<std::string_view> bytes;

    [[nodiscard]] std::unique_ptr<Reader> open(ProgressCheck progress = {}) const;
};

extern template std::size_t Reader::read(std::span<float>);
extern template std::size_t Reader::read(std::span<double>);
extern template std::size_t Reader::read(std::span<std::int32_t>);
extern template bool Reader::read_usual(const UsualArray&, std::span<float>);
extern template bool Reader::read_usual(const UsualArray&, std::span<std::int32_t>);

/// Writes such a file, unformatted ones big-endian; REAL and DOUB as text with enough digits to read back as the same
/// numbers.
class Writer {
public:
    Writer(AtomicFile& file, bool formatted) : file_(file), formatted_(formatted) {}

    /// Begins an array; name of up to 8 characters of ASCII. As many values as stated have to follow in calls of put().
    /// Throws FileError when there are more than 2^31 - 1 of them.
    void begin(std::string_view name, Type type, std::uint64_t count, const std::filesystem::path& target);
    template <class T> void put(std::span<const T> values);

    /// A whole array of strings of up to 8 characters.
    void strings(std::string_view name, std::span<const std::string> values, const std::filesystem::path& target);

private:
    void open_block();
    void close_line();
    void put_text(std::string_view text);
    void put_length(std::size_t bytes);

    AtomicFile& file_;
    bool formatted_;
    Type type_ = Type::Message;
    std::uint64_t left_ = 0;
    std::uint64_t block_left_ = 0;
    std::size_t block_bytes_ = 0;
    std::size_t on_line_ = 0;
};

extern template void Writer::put(std::span<const float>);
extern template void Writer::put(std::span<const double>);
extern template void Writer::put(std::span<const std::int32_t>);

} // namespace lodex::records
