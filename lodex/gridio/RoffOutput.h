#pragma once

#include <lodex/utils/AtomicFile.h>
#include <lodex/gridio/RoffInput.h>
#include <lodex/gridio/RoffWriter.h>
#include <lodex/gridio/TextNumbers.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace lodex::roff {

template <class T> inline constexpr Type type_of = Type::Byte;
template <> inline constexpr Type type_of<std::int32_t> = Type::Int;
template <> inline constexpr Type type_of<float> = Type::Float;
template <> inline constexpr Type type_of<double> = Type::Double;

/// Puts tags and keys into a file in one of its forms. Texts must not hold quotes or control characters.
class Output {
public:
    Output(AtomicFile& file, Form form) : file_(file), form_(form)
    {
        word(form == Form::Text ? "roff-asc" : "roff-bin", '\n');
        word("#ROFF file#", '\n');
    }

    void begin_tag(std::string_view name)
    {
        word("tag");
        word(name, '\n');
    }
    void end_tag() { word("endtag", '\n'); }

    void scalar(std::string_view name, std::string_view text)
    {
        word("char");
        word(name);
        string(text);
    }
    template <class T> void scalar(std::string_view name, T value)
    {
        word(type_name(type_of<T>));
        word(name);
        number(value);
    }

    void begin_array(Type type, std::string_view name, std::uint64_t count)
    {
        word("array");
        word(type_name(type));
        word(name);
        number(static_cast<std::int32_t>(count));
        column_ = 0;
    }
    /// Some of the numbers of an array, in order.
    template <class T> void numbers(std::span<const T> values)
    {
        if (form_ == Form::Text) {
            text_numbers(values);
            return;
        }
        if (sizeof(T) == 1 || native()) {
            file_.write({reinterpret_cast<const char*>(values.data()), values.size_bytes()});
            return;
        }
        constexpr std::size_t piece = 8192;
        for (std::size_t first = 0; first < values.size(); first += piece) {
            const std::size_t count = std::min(piece, values.size() - first);
            char* out = file_.reserve(count * sizeof(T));
            for (std::size_t n = 0; n < count; ++n) {
                const auto bits = swapped(values[first + n]);
                std::memcpy(out + n * sizeof(T), &bits, sizeof(T));
            }
            file_.advance(count * sizeof(T));
        }
    }
    void string(std::string_view text)
    {
        if (form_ == Form::Text) {
            file_.write("\"");
            file_.write(text);
            file_.write("\"\n");
        } else {
            file_.write(text);
            file_.write(std::string_view("\0", 1));
        }
    }
    void end_array()
    {
        if (form_ == Form::Text && column_ > 0) {
            file_.write("\n");
        }
    }

    template <class T> void array(std::string_view name, std::span<const T> values)
    {
        begin_array(type_of<T>, name, values.size());
        numbers(values);
        end_array();
    }
    void array(std::string_view name, std::span<const std::string> values)
    {
        begin_array(Type::Char, name, values.size());
        for (const std::string& value : values) {
            string(value);
        }
    }

private:
    [[nodiscard]] bool native() const
    {
        return (form_ == Form::LittleEndian) == (std::endian::native == std::endian::little);
    }
    template <class T> static auto swapped(T value)
    {
        if constexpr (sizeof(T) == 8) {
            return __builtin_bswap64(std::bit_cast<std::uint64_t>(value));
        } else if constexpr (sizeof(T) == 4) {
            return __builtin_bswap32(std::bit_cast<std::uint32_t>(value));
        } else {
            return value;
        }
    }

    void word(std::string_view text, char last = ' ')
    {
        file_.write(text);
        const char end = form_ == Form::Text ? last : '\0';
        file_.write({&end, 1});
    }
    template <class T> void number(T value)
    {
        column_ = 0;
        numbers(std::span<const T>(&value, 1));
        if (form_ == Form::Text) {
            file_.write("\n");
            column_ = 0;
        }
    }

    template <class T> void text_numbers(std::span<const T> values)
    {
        constexpr std::size_t line_width = 100;
        constexpr std::size_t room = line_width + 2 * NumberFormatter::most_characters;
        char* begin = file_.reserve(room);
        char* out = begin;
        for (const T value : values) {
            char* const start = out;
            if (column_ > 0) {
                *out++ = ' ';
            }
            if constexpr (std::is_floating_point_v<T>) {
                if (std::isfinite(value)) [[likely]] {
                    out = formatter_.write(out, value);
                } else {
                    const std::string text = shortest_text(value);
                    out = std::copy(text.begin(), text.end(), out);
                }
            } else {
                out = NumberFormatter::write(out, static_cast<std::int32_t>(value));
            }
            column_ += static_cast<std::size_t>(out - start);
            if (column_ >= line_width - NumberFormatter::most_characters) {
                *out++ = '\n';
                column_ = 0;
                file_.advance(static_cast<std::size_t>(out - begin));
                begin = out = file_.reserve(room);
            }
        }
        file_.advance(static_cast<std::size_t>(out - begin));
    }

    AtomicFile& file_;
    Form form_;
    NumberFormatter formatter_;
    std::size_t column_ = 0;
};

} // namespace lodex::roff
