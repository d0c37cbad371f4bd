#include "Statement.h"

namespace lodex {

namespace {

bool is_blank(char c)
{
    return c == ' ' || c == '\t' || c == '\r' || c == '\v' || c == '\f';
}

/// Walks a submission character by character and knows where it is.
class Scanner {
public:
    explicit Scanner(std::string_view text) : text_(text.substr(0, text.find('\0')))
    {
        // Editors of some systems begin every file with a byte order mark, which nobody sees.
        constexpr std::string_view mark = "\xEF\xBB\xBF";
        if (text_.starts_with(mark))
            offset_ = line_start_ = mark.size();
    }

    std::vector<Statement> statements()
    {
        std::vector<Statement> result;
        while (offset_ < text_.size()) {
            Statement statement = next();
            if (!statement.words.empty())
                result.push_back(std::move(statement));
        }
        return result;
    }

private:
    [[nodiscard]] bool at_end() const { return offset_ >= text_.size(); }
    [[nodiscard]] char here() const { return text_[offset_]; }
    [[nodiscard]] TextPosition position() const { return {line_, static_cast<long>(offset_ - line_start_) + 1}; }

    void advance()
    {
        if (here() == '\n') {
            ++line_;
            line_start_ = offset_ + 1;
        }
        ++offset_;
    }

    Statement next()
    {
        Statement statement;
        while (!at_end() && is_blank(here()))
            advance();
        statement.position = position();
        const std::size_t start = offset_;
        if (!at_end() && here() == '#') {
            while (!at_end() && here() != '\n')
                advance();
        }
        std::size_t end = start;
        while (!at_end() && here() != ';' && here() != '\n') {
            if (is_blank(here())) {
                advance();
                continue;
            }
            Word word = next_word();
            end = offset_;
            word.end = end - start;
            word.begin -= start;
            statement.words.push_back(std::move(word));
        }
        if (!at_end())
            advance();
        statement.text = text_.substr(start, statement.words.empty() ? 0 : end - start);
        return statement;
    }

    Word next_word()
    {
        Word word;
        word.position = position();
        word.begin = offset_;
        if (here() == '"') {
            word.quoted = true;
            advance();
            const std::size_t content = offset_;
            while (!at_end() && here() != '"' && here() != '\n')
                advance();
            if (at_end() || here() != '"')
                throw CommandError("a double quote is not closed on its line", word.position);
            word.text = text_.substr(content, offset_ - content);
            advance();
        } else {
            while (!at_end() && !is_blank(here()) && here() != ';' && here() != '\n' && here() != '"')
                advance();
            word.text = text_.substr(word.begin, offset_ - word.begin);
        }
        return word;
    }

    std::string_view text_;
    std::size_t offset_ = 0;
    std::size_t line_start_ = 0;
    long line_ = 1;
};

} // namespace

std::vector<Statement> parse_statements(std::string_view submission)
{
    return Scanner(submission).statements();
}

std::string value_of_words(const Statement& statement, std::size_t first, std::size_t last)
{
    std::string value;
    for (std::size_t i = first; i < last; ++i) {
        const Word& word = statement.words[i];
        if (i > first) {
            const Word& former = statement.words[i - 1];
            value += statement.text.substr(former.end, word.begin - former.end);
        }
        value += word.text;
    }
    return value;
}

} // namespace lodex
