#pragma once

#include <lodex/volumes/model/GridModel.h>
#include <lodex/volumes/model/GridText.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <sys/types.h>

namespace lodex::grdecl {

inline constexpr std::size_t text_padding = 64; ///< readable zero bytes behind a text

struct FreeText {
    void operator()(char* text) const { std::free(text); }
};
using TextBuffer = std::unique_ptr<char[], FreeText>;

/// Memory for a text, not cleared; null when there is not enough. Large texts lie on large pages where the system has
/// them: on small ones the page faults cost as much as the copying.
[[nodiscard]] TextBuffer make_text_buffer(std::size_t bytes);

/// One text in memory: a file, or what the caller gave.
struct Source {
    std::string shown;     ///< for messages
    std::filesystem::path folder;
    std::string kept_name; ///< for KeptKeyword::file
    TextBuffer storage;
    const char* begin = nullptr;
    const char* end = nullptr; ///< text_padding zero bytes follow
    const char* pos = nullptr;
    dev_t device = 0;
    ino_t node = 0;

    /// 1-based; cheap when asked for places one behind the other.
    [[nodiscard]] std::int64_t line_of(const char* p);
    /// To be called once begin and end are set.
    void start();

private:
    const char* counted_to_ = nullptr;
    std::int64_t lines_ = 1;
};

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

inline const char* line_end(const Source& source, const char* p)
{
    const auto* const found =
        static_cast<const char*>(std::memchr(p, '\n', static_cast<std::size_t>(source.end - p)));
    return found == nullptr ? source.end : found;
}

/// The next character that is neither space nor comment, or the end.
inline const char* skip_space(const Source& source, const char* p)
{
    for (;;) {
        while (is_space(*p)) {
            ++p;
        }
        if (!is_comment(p)) {
            return std::min(p, source.end);
        }
        p = line_end(source, p);
    }
}

[[nodiscard]] bool first_on_line(const Source& source, const char* p);

[[nodiscard]] std::string_view word_at(const char* p);

[[nodiscard]] bool alone_on_line(const Source& source, const char* after);

/// True when a keyword begins at p: a word of its form, the first on its line, and alone there or a known one.
[[nodiscard]] bool keyword_begins(const Source& source, const char* p, bool known_only);

/// Text from a file for a message: in quotes, on one line, not too long.
[[nodiscard]] std::string in_quotes(std::string_view text);

/// Without blanks at both ends.
[[nodiscard]] std::string trimmed(std::string_view text);

/// "1 value", "3 values"
[[nodiscard]] std::string value_count(std::uint64_t count);

} // namespace lodex::grdecl
