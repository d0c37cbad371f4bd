// Words, records and the ends of keywords.

#include <lodex/gridio/GrdeclReaderImpl.h>
#include <lodex/gridio/TextNumbers.h>

namespace lodex::grdecl {

bool Reader::next_keyword(Keyword& keyword)
{
    Source& source = *keyword.source;
    const char* p = source.pos;
    std::string_view word;
    for (;;) {
        source.need(p);
        while (is_space(*p)) {
            ++p;
        }
        if (p >= source.end) {
            source.pos = source.end;
            return false;
        }
        if (p >= source.safe_end()) {
            continue; // blanks up to where the window ends, or close to it
        }
        if (is_comment(p)) {
            const std::string_view start(p, std::min(note_prefix.size(), static_cast<std::size_t>(source.end - p)));
            p = start == note_prefix ? read_note(source, p) : line_end(source, p);
            continue;
        }
        if (*p == '\0') {
            fail_binary(source, p);
        }
        if (*p == '/') {
            inform("slashes that end nothing", source, p, "'/' that ends nothing");
            p = line_end(source, p);
            continue;
        }
        word = word_at(p);
        if (is_keyword(word)) {
            break;
        }
        if (section_ == Section::None || section_ == Section::Grid) {
            fail(source, p, in_quotes(word.empty() ? std::string_view(p, 1) : word)
                                + " found where a keyword is expected");
        }
        // Outside the grid's section nothing is interpreted, so nothing need make sense.
        const char* const end = line_end(source, p);
        constexpr std::ptrdiff_t most_shown = 64;
        warn("lines that are no keyword", source, p,
             in_quotes(source.text(p, std::min(end, p + most_shown))) + " is passed over, expected a keyword");
        p = end;
    }
    keyword.start = p;
    keyword.after = p + word.size();
    keyword.name = std::string(word);
    keyword.upper = upper(word);
    source.pos = keyword.after;
    return true;
}

const char* Reader::read_quoted(Source& source, const char* p, std::string& text) const
{
    const char quote = *p;
    const char* const start = p + 1;
    const char* const last = std::min(source.cut(), source.end);
    for (p = start; p < last && *p != quote && *p != '\n'; ++p) {
    }
    if (p < source.end && p == last) {
        fail(source, start - 1, "a text in quotes of more than " + std::to_string(source.reach()) + " characters");
    }
    if (p >= source.end || *p != quote) {
        fail(source, start - 1, "the quote before " + in_quotes(std::string_view(start, static_cast<std::size_t>(p - start)))
                                    + " is not closed on its line");
    }
    text.assign(start, p);
    return p + 1;
}

std::vector<Token> Reader::read_record(const Keyword& keyword, const char*& end)
{
    Source& source = *keyword.source;
    std::vector<Token> tokens;
    const char* p = end;
    for (;;) {
        p = skip_space(source, p);
        if (p >= source.end) {
            fail(source, keyword.start, keyword.name + ": the file ends before the closing '/'");
        }
        if (*p == '/') {
            end = p + 1;
            return tokens;
        }
        if (*p == '\0') {
            fail_binary(source, p);
        }
        Token token;
        token.at = p;
        std::uint64_t repeat = 1;
        Decimal number;
        const char* const behind = parse_decimal(p, number);
        if (behind != p && *behind == '*' && number.integer && !number.negative && !number.cut) {
            repeat = number.digits;
            p = behind + 1;
            token.is_default = is_token_end(p);
        }
        if (!token.is_default) {
            if (*p == '\'' || *p == '"') {
                p = read_quoted(source, p, token.text);
                token.quoted = true;
            } else {
                const std::string_view word = word_at(p);
                if (word.empty()) {
                    fail(source, p, keyword.name + ": " + in_quotes({p, 1}) + " is not expected here");
                }
                token.text = std::string(word);
                p += word.size();
                need_whole(source, token.at, p);
            }
        }
        if (repeat == 0 || repeat > most_tokens || tokens.size() + repeat > most_tokens) {
            fail(source, token.at, keyword.name + ": repeat count " + std::string(number.text) + ", expected 1 to "
                                       + std::to_string(most_tokens));
        }
        tokens.insert(tokens.end(), repeat, token);
        if (keyword_begins(source, token.at, true) && !token.quoted) {
            fail(source, token.at, keyword.name + ": found keyword " + in_quotes(token.text)
                                       + " before the closing '/'");
        }
    }
}

std::int64_t Reader::whole_number(const Keyword& keyword, const std::vector<Token>& tokens, std::size_t index,
                                  const char* meaning, std::int64_t least, std::optional<std::int64_t> default_value)
{
    Source& source = *keyword.source;
    const std::string expected =
        " for " + std::string(meaning) + ", expected a whole number from " + std::to_string(least) + " on";
    if (index >= tokens.size() || tokens[index].is_default) {
        if (default_value) {
            return *default_value;
        }
        fail(source, index < tokens.size() ? tokens[index].at : keyword.start, keyword.name + ": no value" + expected);
    }
    const Token& token = tokens[index];
    std::int64_t value = 0;
    const char* const first = token.text.data();
    const char* const last = first + token.text.size();
    const auto [end, error] = std::from_chars(first, last, value);
    if (error != std::errc{} || end != last || value < least) {
        fail(source, token.at, keyword.name + ": " + in_quotes(token.text) + expected);
    }
    return value;
}

const char* Reader::records_end(const Keyword& keyword)
{
    Source& source = *keyword.source;
    const char* kept = keyword.after;
    const char* p = keyword.after;
    const char* checkpoint = p + tick_bytes;
    bool open = false;
    for (;;) {
        p = skip_space(source, p);
        if (p >= checkpoint) {
            tick(source, p);
            checkpoint = p + tick_bytes;
        }
        if (p >= source.end) {
            if (open) {
                warn("keywords without a closing '/'", source, keyword.start,
                     keyword.name + ": the file ends before the closing '/'");
                kept = source.without_blanks(keyword.after, source.end);
            }
            return kept;
        }
        if (*p == '\0') {
            fail_binary(source, p);
        }
        if (*p == '/') {
            kept = p + 1;
            open = false;
            p = line_end(source, p);
            continue;
        }
        if (keyword_begins(source, p, open)) {
            if (open) {
                warn("keywords without a closing '/'", source, p,
                     keyword.name + ": found keyword " + in_quotes(word_at(p)) + " before the closing '/'");
                kept = source.without_blanks(keyword.after, p);
            }
            return kept;
        }
        open = true;
        if (*p == '\'' || *p == '"') {
            std::string text;
            p = read_quoted(source, p, text);
        } else {
            const std::string_view word = word_at(p);
            p += std::max<std::size_t>(word.size(), 1);
        }
    }
}

const char* Reader::list_end(const Keyword& keyword)
{
    Source& source = *keyword.source;
    const char* kept = keyword.after;
    const char* p = keyword.after;
    bool open = false;
    for (;;) {
        p = skip_space(source, p);
        if (p >= source.end || (!open && keyword_begins(source, p, true))) {
            warn("keywords without a closing '/'", source, keyword.start,
                 keyword.name + ": the list is not closed by a '/' of its own");
            if (open) {
                kept = source.without_blanks(keyword.after, p);
            }
            return kept;
        }
        if (*p == '\0') {
            fail_binary(source, p);
        }
        if (*p == '/') {
            kept = p + 1;
            if (!open) {
                return kept;
            }
            open = false;
            p = line_end(source, p);
            continue;
        }
        open = true;
        if (*p == '\'' || *p == '"') {
            std::string text;
            p = read_quoted(source, p, text);
        } else {
            p += std::max<std::size_t>(word_at(p).size(), 1);
        }
    }
}

const char* Reader::data_end(const Keyword& keyword, const KeywordInfo& info)
{
    Source& source = *keyword.source;
    switch (info.layout) {
    case Layout::Flag: {
        // What stands behind a flag on its line is decoration, a slash on the next line belongs to it.
        const char* const next = skip_space(source, keyword.after);
        if (*next == '/') {
            return next + 1;
        }
        const char* const end = line_end(source, keyword.after);
        const char* last = keyword.after;
        for (const char* p = keyword.after; p < end && !is_comment(p); ++p) {
            last = is_space(*p) ? last : p + 1;
        }
        return last;
    }
    case Layout::List:
        return list_end(keyword);
    case Layout::Record: {
        const char* end = keyword.after;
        [[maybe_unused]] const auto tokens = read_record(keyword, end);
        return end;
    }
    case Layout::NextLine: {
        const char* p = line_end(source, keyword.after);
        p = line_end(source, std::min(p + 1, source.end));
        return p > source.begin && p[-1] == '\r' ? p - 1 : p;
    }
    case Layout::Block: {
        for (const char* p = line_end(source, keyword.after); p < source.end; p = line_end(source, p)) {
            ++p;
            const char* word = p;
            while (is_space(*word) && *word != '\n') {
                ++word;
            }
            const std::string_view found = word_at(word);
            if (upper(found) == info.closed_by) {
                return word + found.size();
            }
        }
        fail(source, keyword.start, keyword.name + ": the file ends before " + std::string(info.closed_by));
    }
    case Layout::Unknown:
        break;
    }
    return records_end(keyword);
}

const char* Reader::skip_numbers(const Keyword& keyword)
{
    Source& source = *keyword.source;
    const char* p = keyword.after;
    const char* checkpoint = p + tick_bytes;
    for (;;) {
        p = skip_space(source, p);
        if (p >= checkpoint) {
            tick(source, p);
            checkpoint = p + tick_bytes;
        }
        if (p >= source.end) {
            fail(source, keyword.start, keyword.name + ": the file ends before the closing '/'");
        }
        if (*p == '/') {
            return p + 1;
        }
        if (*p == '\0') {
            fail_binary(source, p);
        }
        if (keyword_begins(source, p, false)) {
            return p; // without a closing slash, which is looked at when the numbers are read
        }
        // Far: letters, slashes and comments end it.
        for (++p; is_space(*p) || (*p >= '*' && *p <= '9' && *p != '/' && !is_comment(p)); ++p) {
        }
    }
}

} // namespace lodex::grdecl
