#pragma once

#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace lodex {

/// Place in a submission, both 1-based; columns count bytes.
struct TextPosition {
    long line = 1;
    long column = 1;
};

/// What went wrong with a statement and where.
class CommandError : public std::runtime_error {
public:
    explicit CommandError(const std::string& message) : std::runtime_error(message) {}
    CommandError(const std::string& message, TextPosition position)
        : std::runtime_error(message), position_(position), has_position_(true)
    {
    }
    [[nodiscard]] bool has_position() const { return has_position_; }
    [[nodiscard]] TextPosition position() const { return position_; }

private:
    TextPosition position_;
    bool has_position_ = false;
};

/// One word of a statement: blank-separated, or between double quotes.
struct Word {
    std::string text;     ///< without the quotes
    bool quoted = false;  ///< a quoted word is never a keyword
    std::size_t begin = 0; ///< offsets into Statement::text, quotes included
    std::size_t end = 0;
    TextPosition position;
};

/// One statement as written, trimmed, and its words.
struct Statement {
    std::string text;
    TextPosition position;
    std::vector<Word> words;
};

/// Cuts a submission into statements at ";" and line ends outside double quotes. Everything after the first NUL is
/// ignored, and so is a byte order mark in front; a statement that begins with "#" is a comment up to the line end.
/// Throws CommandError for a quote that is not closed on its line.
[[nodiscard]] std::vector<Statement> parse_statements(std::string_view submission);

/// The value that words [first, last) spell: the text between quotes, or the raw text with its blanks; empty for none.
[[nodiscard]] std::string value_of_words(const Statement& statement, std::size_t first, std::size_t last);

} // namespace lodex
