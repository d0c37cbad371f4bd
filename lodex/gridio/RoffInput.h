#pragma once

#include <lodex/gridio/GridFormat.h>

#include <cstdint>
#include <cstring>
#include <filesystem>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <variant>
#include <vector>

namespace lodex::roff {

/// Types of values in a file: one byte each for bool and byte, 32 bits for int and float, 64 bits for double. Text ends
/// at a NUL in binary files and stands in quotes in text files.
enum class Type { Char, Bool, Byte, Int, Float, Double };

[[nodiscard]] std::string_view type_name(Type type);
/// 0 for text.
[[nodiscard]] std::size_t bytes_of(Type type);

/// Bytes of a file, or of memory for tests. read_at() may be called from several threads.
class ByteSource {
public:
    /// Throws FileError: no such file, a folder, not readable.
    explicit ByteSource(const std::filesystem::path& path);
    ByteSource(std::string_view memory, std::string name);
    ~ByteSource();
    ByteSource(const ByteSource&) = delete;
    ByteSource& operator=(const ByteSource&) = delete;

    [[nodiscard]] const std::string& name() const { return name_; }
    [[nodiscard]] std::uint64_t size() const { return size_; }
    /// All bytes asked for; FileError when the file has become shorter or the system cannot read it.
    void read_at(std::uint64_t offset, void* to, std::size_t count) const;
    /// FileError when the file has become another one since it was opened.
    void check_unchanged() const;

private:
    std::string name_;
    int descriptor_ = -1;
    std::string_view memory_;
    std::uint64_t size_ = 0;
    std::int64_t seconds_ = 0, nanoseconds_ = 0; ///< time of the last change
};

/// Numbers as they stand in a text file, one byte for bool and byte.
using Numbers =
    std::variant<std::vector<std::uint8_t>, std::vector<std::int32_t>, std::vector<float>, std::vector<double>>;

/// One key of a tag with its value or values.
struct Key {
    std::string name;
    Type type = Type::Int;
    bool array = false;
    std::uint64_t count = 1;
    std::int64_t place = 0;      ///< line of a text file, byte of a binary one
    std::uint64_t offset = 0;    ///< binary files: where the numbers begin
    Numbers numbers;             ///< of text files
    std::vector<std::string> strings;
};

struct Tag {
    std::string name;
    std::int64_t place = 0;
    std::vector<Key> keys;

    /// Null when there is none.
    [[nodiscard]] const Key* find(std::string_view key) const;
};

/// Takes the numbers of an array of a text file as they come.
class NumberSink {
public:
    static constexpr std::size_t piece = 1 << 16; ///< numbers at a time, at most

    NumberSink() = default;
    virtual ~NumberSink() = default;
    NumberSink(const NumberSink&) = delete;
    NumberSink& operator=(const NumberSink&) = delete;
    virtual void take(std::span<const float> numbers) = 0;
    virtual void take(std::span<const double> numbers) = 0;
};

/// Reads tags one after the other and hands out the numbers of their arrays.
class Input {
public:
    /// claim is asked before memory for numbers is taken and throws when it is too much; tick is called with the number
    /// of bytes that were handled since its last call. sink_for is asked about arrays of text files, whose key is the
    /// last one of the tag: the numbers (float or double) go to the sink, not to the key, unless it is null.
    Input(const ByteSource& source, std::function<void(std::uint64_t bytes)> claim,
          std::function<void(std::uint64_t bytes)> tick, std::function<NumberSink*(const Tag&)> sink_for);

    [[nodiscard]] bool text() const { return text_; }

    /// True and the tag when there is one before the end tag. Numbers are kept when wanted(tag name) says so; else the
    /// tag has no keys.
    bool next(Tag& tag, const std::function<bool(std::string_view)>& wanted);
    /// Bytes behind the end tag that are not blank.
    [[nodiscard]] std::uint64_t bytes_behind_end();

    [[noreturn]] void fail(std::int64_t place, const std::string& reason) const;
    [[nodiscard]] std::int64_t here() const;

    /// Numbers first, first + 1, ... of a key in the machine's byte order. buffer has room for all of them; the answer
    /// points into it or into the key. T is the key's own type: uint8_t, int32_t, float or double. Thread safe.
    template <class T>
    [[nodiscard]] const T* load(const Key& key, std::uint64_t first, std::size_t count, T* buffer) const
    {
        if (text_) {
            return std::get<std::vector<T>>(key.numbers).data() + first;
        }
        source_.read_at(key.offset + first * sizeof(T), buffer, count * sizeof(T));
        if constexpr (sizeof(T) > 1) {
            if (swap_) {
                swap_bytes(std::span(buffer, count));
            }
        }
        return buffer;
    }

    /// The key's value as a number or text. FileError when it is of another kind or has more than one.
    [[nodiscard]] std::int32_t integer(const Key& key) const;
    [[nodiscard]] double real(const Key& key) const;
    [[nodiscard]] const std::string& string(const Key& key) const;
    /// All values; FileError when the type does not go.
    [[nodiscard]] std::vector<std::int32_t> integers(const Key& key) const;
    [[nodiscard]] std::vector<double> reals(const Key& key) const;

private:
    template <class T> static void swap_bytes(std::span<T> values)
    {
        for (T& value : values) {
            if constexpr (sizeof(T) == 4) {
                std::uint32_t bits = 0;
                std::memcpy(&bits, &value, 4);
                bits = __builtin_bswap32(bits);
                std::memcpy(&value, &bits, 4);
            } else {
                std::uint64_t bits = 0;
                std::memcpy(&bits, &value, 8);
                bits = __builtin_bswap64(bits);
                std::memcpy(&value, &bits, 8);
            }
        }
    }

    void fill();
    bool ensure(std::size_t count);
    void seek(std::uint64_t offset);
    void skip_blanks();
    [[nodiscard]] bool at_end();
    std::string word();
    std::string quoted();
    std::string terminated(std::size_t longest, const char* what);
    std::uint64_t array_count();
    void read_key(const std::string& type_word, Tag& tag, bool wanted);
    void read_values(Key& key, bool wanted, NumberSink* sink = nullptr);
    void read_strings(Key& key, bool wanted);
    void read_text_numbers(Key& key, bool wanted, NumberSink* sink);
    template <class T> void parse_numbers(Key& key, std::vector<T>& values, NumberSink* sink);
    void skip_numbers(const Key& key);
    void handled();
    void byte_order(const Key& key);
    [[nodiscard]] std::uint64_t position() const { return base_ + pos_; }
    [[nodiscard]] std::string next_word_for_message();

    const ByteSource& source_;
    std::function<void(std::uint64_t)> claim_;
    std::function<void(std::uint64_t)> tick_;
    std::function<NumberSink*(const Tag&)> sink_for_;
    bool text_ = false;
    bool swap_ = false;
    bool order_known_ = false;
    std::vector<char> buffer_; ///< bytes from base_ on, then a NUL
    std::uint64_t base_ = 0;
    std::size_t pos_ = 0;
    std::size_t length_ = 0;
    std::int64_t lines_ = 1;   ///< line of the first byte of buffer_
    std::uint64_t told_ = 0;
};

} // namespace lodex::roff
