#pragma once

#include <lodex/gridio/GrdeclSource.h>
#include <lodex/volumes/model/GridModel.h>
#include <lodex/volumes/model/GridText.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <string_view>

namespace lodex::grdecl {

inline bool is_space(char c)
{
    return c == ' ' || (c >= '\t' && c <= '\r');
}

/// "--" begins a comment that ends with its line.
inline bool is_comment(const char* p)
{
    return p[0] == '-' && p[1] == '-';
}

inline bool is_token_end(const char* p)
{
    return is_space(*p) || *p == '/' || *p == '\0' || is_comment(p);
}

/// The end of the line or of the text; the window is there then.
inline const char* line_end(Source& source, const char* p)
{
    for (;;) {
        source.need(p);
        const char* const cut = std::min(source.cut(), source.end);
        if (p >= cut) {
            return source.end;
        }
        const auto* const found = static_cast<const char*>(std::memchr(p, '\n', static_cast<std::size_t>(cut - p)));
        if (found != nullptr || cut == source.end) {
            p = found == nullptr ? source.end : found;
            source.need(p);
            return p;
        }
        p = cut;
    }
}

/// The next character that is neither space nor comment, or the end; the window is there then.
inline const char* skip_space(Source& source, const char* p)
{
    for (;;) {
        source.need(p);
        while (is_space(*p)) {
            ++p;
        }
        if (p >= source.safe_end() && p < source.end) [[unlikely]] {
            continue; // blanks up to where the window ends, or close to it
        }
        if (!is_comment(p)) {
            return std::min(p, source.end);
        }
        p = line_end(source, p);
    }
}

[[nodiscard]] bool first_on_line(Source& source, const char* p);

/// Not longer than Source::reach() where the window does not go to the end of the text.
[[nodiscard]] std::string_view word_at(const char* p);

[[nodiscard]] bool alone_on_line(Source& source, const char* after);

/// True when a keyword begins at p: a word of its form, the first on its line, and alone there or a known one.
[[nodiscard]] bool keyword_begins(Source& source, const char* p, bool known_only);

/// Text from a file for a message: in quotes, on one line, not too long.
[[nodiscard]] std::string in_quotes(std::string_view text);

/// Without blanks at both ends.
[[nodiscard]] std::string trimmed(std::string_view text);

/// "1 value", "3 values"
[[nodiscard]] std::string value_count(std::uint64_t count);

} // namespace lodex::grdecl
