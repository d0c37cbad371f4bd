#include "Names.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace lodex {

namespace {

constexpr std::array<std::string_view, 4> reserved{"everywhere", "all_regions", "all_properties", "region_0"};

struct Character {
    char32_t code = 0;
    std::size_t bytes = 1;
    bool valid = false;
};

/// The character at the start of a text that is not empty; a byte that starts no UTF-8 character is one invalid one.
Character first_character(std::string_view text)
{
    const auto byte = [text](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    if (byte(0) < 0x80)
        return {byte(0), 1, true};
    const std::size_t length = byte(0) >= 0xF0 ? 4 : byte(0) >= 0xE0 ? 3 : 2;
    constexpr std::array<unsigned char, 5> masks{0, 0, 0x1F, 0x0F, 0x07};
    constexpr std::array<char32_t, 5> least{0, 0, 0x80, 0x800, 0x10000};
    if (byte(0) < 0xC2 || byte(0) > 0xF4 || text.size() < length)
        return {};
    char32_t code = byte(0) & masks[length];
    for (std::size_t i = 1; i < length; ++i) {
        if ((byte(i) & 0xC0) != 0x80)
            return {};
        code = (code << 6) | (byte(i) & 0x3F);
    }
    if (code < least[length] || code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF))
        return {};
    return {code, length, true};
}

/// Characters that show nothing or change the order of others: control characters, line and paragraph separators,
/// zero-width space, direction marks and overrides, byte order mark, non-characters. Joiners are part of some scripts.
bool is_unprintable(char32_t code)
{
    return code < 0x20 || (code >= 0x7F && code < 0xA0) || code == 0xAD || code == 0x200B || code == 0x200E ||
           code == 0x200F || (code >= 0x2028 && code <= 0x202E) || (code >= 0x2060 && code <= 0x206F) ||
           code == 0xFEFF || (code >= 0xFDD0 && code <= 0xFDEF) || (code >= 0xFFF9 && code <= 0xFFFB) ||
           (code & 0xFFFE) == 0xFFFE;
}

bool is_separator(char32_t code)
{
    return code == ';' || code == '"' || code == '+';
}

bool contains(std::span<const std::string_view> words, std::string_view word)
{
    return std::ranges::find(words, word) != words.end();
}

/// Calls f with each run of characters between blanks.
template <class F> void for_each_word(std::string_view text, F f)
{
    while (!text.empty()) {
        const std::size_t end = std::min(text.find(' '), text.size());
        if (end > 0)
            f(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
}

/// The name without what cannot be shown, for messages.
std::string shown(std::string_view name)
{
    std::string result;
    while (!name.empty()) {
        const Character c = first_character(name);
        if (c.valid && !is_unprintable(c.code))
            result += name.substr(0, c.bytes);
        else
            result += '?';
        name.remove_prefix(c.bytes);
    }
    return result;
}

} // namespace

std::span<const std::string_view> reserved_names()
{
    return reserved;
}

std::optional<std::string> check_object_name(std::string_view name, std::span<const std::string_view> forbidden_words)
{
    if (name.empty())
        return "A name must not be empty.";
    const std::string start = "The name \"" + shown(name) + "\" ";
    for (std::string_view rest = name; !rest.empty();) {
        const Character c = first_character(rest);
        if (!c.valid)
            return start + "is not valid UTF-8 text.";
        if (is_separator(c.code))
            return start + "must not hold the character " + static_cast<char>(c.code) + " .";
        if (is_unprintable(c.code))
            return start + "must not hold control characters.";
        rest.remove_prefix(c.bytes);
    }
    if (name.starts_with(' ') || name.ends_with(' '))
        return start + "must not begin or end with a blank.";
    if (name.find("  ") != std::string_view::npos)
        return start + "must not hold two blanks in a row.";
    if (contains(reserved, name))
        return start + "is reserved.";
    std::optional<std::string> problem;
    for_each_word(name, [&](std::string_view word) {
        if (!problem && contains(forbidden_words, word))
            problem =
                start + "must not hold the word \"" + std::string(word) + "\", which is a keyword of the command.";
    });
    return problem;
}

std::string mend_object_name(std::string_view name, std::span<const std::string_view> forbidden_words)
{
    const auto is_space = [](char c) { return c == ' ' || (c >= '\t' && c <= '\r') || c == '\0'; };
    while (!name.empty() && is_space(name.front()))
        name.remove_prefix(1);
    while (!name.empty() && is_space(name.back()))
        name.remove_suffix(1);

    std::string clean;
    while (!name.empty()) {
        const Character c = first_character(name);
        if (c.valid && !is_separator(c.code) && !is_unprintable(c.code))
            clean += name.substr(0, c.bytes);
        else
            clean += '_';
        name.remove_prefix(c.bytes);
    }

    std::string result;
    for_each_word(clean, [&](std::string_view word) {
        if (!result.empty())
            result += ' ';
        result += word;
        std::string mended(word);
        while (contains(forbidden_words, mended)) {
            mended += '_';
            result += '_';
        }
    });
    if (result.empty())
        result = "unnamed";
    while (check_object_name(result, forbidden_words))
        result += '_';
    return result;
}

} // namespace lodex
