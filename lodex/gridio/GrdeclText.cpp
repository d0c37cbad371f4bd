#include <lodex/gridio/GrdeclText.h>

#include <lodex/utils/FileError.h>
#include <lodex/gridio/GrdeclKeywords.h>
#include <lodex/gridio/TextNumbers.h>

namespace lodex::grdecl {

bool first_on_line(Source& source, const char* p)
{
    const char* before = p;
    bool first = true;
    while (first && before > source.begin) {
        source.need(before - 1);
        if (before[-1] == '\n') {
            break;
        }
        first = is_space(*--before);
    }
    source.need(p);
    return first;
}

std::string_view word_at(const char* p)
{
    const char* const start = p;
    while (!is_token_end(p) && *p != '\'' && *p != '"') {
        ++p;
    }
    return {start, static_cast<std::size_t>(p - start)};
}

bool alone_on_line(Source& source, const char* after)
{
    const char* p = after;
    for (source.need(p); p < source.end && *p != '\n' && is_space(*p); source.need(p)) {
        ++p;
    }
    const bool alone = p >= source.end || *p == '\n' || is_comment(p);
    source.need(after);
    return alone;
}

bool keyword_begins(Source& source, const char* p, bool known_only)
{
    if (!((*p >= 'A' && *p <= 'Z') || (*p >= 'a' && *p <= 'z')) || !first_on_line(source, p)) {
        return false;
    }
    const std::string_view word = word_at(p);
    if (!is_keyword(word)) {
        return false;
    }
    const KeywordInfo info = keyword_info(upper(word));
    const char* const after = p + word.size();
    if (alone_on_line(source, after)) {
        return info.known || !known_only;
    }
    // Names of arrays are data of some keywords; with a number behind them they are keywords themselves.
    const char* const next = skip_space(source, after);
    const bool number = text_numbers::is_digit(*next) || *next == '-' || *next == '.';
    source.need(p);
    return !known_only && info.known && (!info.cell_array || number);
}

std::string in_quotes(std::string_view text)
{
    constexpr std::size_t most = 40;
    std::string result = to_utf8(text.substr(0, most));
    for (char& c : result) {
        c = static_cast<unsigned char>(c) < 0x20 || c == 0x7F ? '?' : c;
    }
    return '"' + result + (text.size() > most ? "...\"" : "\"");
}

std::string trimmed(std::string_view text)
{
    while (!text.empty() && is_space(text.back())) {
        text.remove_suffix(1);
    }
    while (!text.empty() && is_space(text.front())) {
        text.remove_prefix(1);
    }
    return std::string(text);
}

std::string value_count(std::uint64_t count)
{
    return std::to_string(count) + (count == 1 ? " value" : " values");
}

} // namespace lodex::grdecl
