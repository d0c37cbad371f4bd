#include <lodex/gridio/GrdeclText.h>

#include <lodex/gridio/FileError.h>
#include <lodex/gridio/GrdeclKeywords.h>
#include <lodex/gridio/TextNumbers.h>

#include <sys/mman.h>

namespace lodex::grdecl {

TextBuffer make_text_buffer(std::size_t bytes)
{
    constexpr std::size_t large_page = 2 * 1024 * 1024;
    if (bytes < 2 * large_page) {
        return TextBuffer(static_cast<char*>(std::malloc(bytes)));
    }
    const std::size_t rounded = (bytes + large_page - 1) / large_page * large_page;
    TextBuffer buffer(static_cast<char*>(std::aligned_alloc(large_page, rounded)));
    if (buffer) {
        [[maybe_unused]] const int result = ::madvise(buffer.get(), rounded, MADV_HUGEPAGE);
    }
    return buffer;
}

std::int64_t Source::line_of(const char* p)
{
    if (p < counted_to_) {
        counted_to_ = begin;
        lines_ = 1;
    }
    lines_ += std::count(counted_to_, p, '\n');
    counted_to_ = p;
    return lines_;
}

void Source::start()
{
    counted_to_ = begin;
    pos = begin;
    constexpr std::string_view byte_order_mark = "\xEF\xBB\xBF";
    if (std::string_view(begin, end).starts_with(byte_order_mark)) {
        pos += byte_order_mark.size();
    }
}

bool first_on_line(const Source& source, const char* p)
{
    while (p > source.begin && p[-1] != '\n') {
        if (!is_space(*--p)) {
            return false;
        }
    }
    return true;
}

std::string_view word_at(const char* p)
{
    const char* const start = p;
    while (!is_token_end(p) && *p != '\'' && *p != '"') {
        ++p;
    }
    return {start, static_cast<std::size_t>(p - start)};
}

bool alone_on_line(const Source& source, const char* after)
{
    while (after < source.end && *after != '\n' && is_space(*after)) {
        ++after;
    }
    return after >= source.end || *after == '\n' || is_comment(after);
}

bool keyword_begins(const Source& source, const char* p, bool known_only)
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
    return !known_only && info.known && (!info.cell_array || text_numbers::is_digit(*next) || *next == '-' || *next == '.');
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
