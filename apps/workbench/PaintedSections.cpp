#include "PaintedSections.h"

#include "lodex/utils/Numbers.h"

#include <optional>

namespace lodex {

namespace {

/// Takes the next number off the text; nothing when there is none.
std::optional<long> take_number(std::string_view& text)
{
    const std::size_t begin = text.find_first_not_of(' ');
    if (begin == std::string_view::npos)
        return std::nullopt;
    const std::size_t end = text.find(' ', begin);
    const auto number = parse_long(text.substr(begin, end == std::string_view::npos ? end : end - begin));
    text.remove_prefix(end == std::string_view::npos ? text.size() : end);
    return number;
}

} // namespace

PaintedSections read_painted_sections(std::string_view value)
{
    PaintedSections painted;
    const long count = take_number(value).value_or(0);
    for (long n = 0; n < count; ++n) {
        const auto axis = take_number(value), flag = take_number(value), section = take_number(value);
        if (!axis || !flag || !section || *axis < 1 || *axis > 3)
            break;
        auto& sections = painted[static_cast<std::size_t>(*axis - 1)];
        if (*flag == 1)
            sections.insert(*section);
        else
            sections.clear();
    }
    return painted;
}

} // namespace lodex
