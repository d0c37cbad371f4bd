#include <Lodex/utils/COSUri.h>

#include <algorithm>
#include <optional>
#include <string_view>

namespace Lodex {

namespace {

constexpr std::string_view host_scheme = "lodex";

bool is_letter(char c)
{
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

bool is_digit(char c)
{
    return c >= '0' && c <= '9';
}

std::optional<int> hex_value(char c)
{
    if (is_digit(c))
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return std::nullopt;
}

std::string encode(std::string_view text)
{
    constexpr std::string_view digits = "0123456789ABCDEF";
    std::string result;
    for (const char c : text) {
        if (is_letter(c) || is_digit(c) || c == '-' || c == '.' || c == '_' || c == '~') {
            result += c;
        } else {
            const auto byte = static_cast<unsigned char>(c);
            result += '%';
            result += digits[byte >> 4];
            result += digits[byte & 15];
        }
    }
    return result;
}

/// A "%" without two hexadecimal digits behind it stands for itself, as in a plain name.
std::string decode(std::string_view text)
{
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '%' && i + 2 < text.size()) {
            const auto high = hex_value(text[i + 1]), low = hex_value(text[i + 2]);
            if (high && low) {
                result += static_cast<char>(*high * 16 + *low);
                i += 2;
                continue;
            }
        }
        result += text[i];
    }
    return result;
}

/// Length of the scheme in front of the first ":", 0 when there is none. A plain name may hold a ":", so a foreign
/// scheme counts only where a path with "/" follows.
std::size_t scheme_length(std::string_view text)
{
    const std::size_t colon = text.find(':');
    if (colon == std::string_view::npos || colon == 0 || !is_letter(text[0]))
        return 0;
    const std::string_view scheme = text.substr(0, colon);
    const bool legal = std::ranges::all_of(
        scheme, [](char c) { return is_letter(c) || is_digit(c) || c == '+' || c == '.' || c == '-'; });
    if (!legal || (scheme != host_scheme && text.find('/', colon) == std::string_view::npos))
        return 0;
    return colon;
}

} // namespace

COSUri::COSUri(const CString& text)
{
    std::string_view rest = text;
    if (const std::size_t length = scheme_length(rest); length > 0) {
        scheme_ = rest.substr(0, length);
        rest.remove_prefix(length + 1);
    }
    while (!rest.empty()) {
        const std::size_t end = std::min(rest.find('/'), rest.size());
        if (end > 0)
            path_.emplace_back(decode(rest.substr(0, end)));
        rest.remove_prefix(std::min(end + 1, rest.size()));
    }
}

COSUri::COSUri(const CString& type, const CString& object, const CString& item_kind, const CString& item)
    : scheme_(host_scheme)
{
    for (const CString* part : {&type, &object, &item_kind, &item}) {
        if (!part->empty())
            path_.push_back(*part);
    }
}

CString COSUri::text() const
{
    std::string result;
    if (!scheme_.empty())
        result = scheme_.str() + ':';
    for (std::size_t i = 0; i < path_.size(); ++i) {
        if (i > 0)
            result += '/';
        result += encode(path_[i]);
    }
    return result;
}

} // namespace Lodex
