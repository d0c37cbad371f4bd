#include "VerbTools.h"

#include "lodex/utils/Numbers.h"

#include <Lodex/geobase/Style.h>

#include <sstream>

namespace lodex {

namespace {

/// Painted sections: a count, then so many triples of axis (1 to 3), flag and 0-based section. "a 0 0" paints nothing on
/// axis a. Sections outside the grid are left out with a warning.
std::string checked_sections(Call& call, const std::string& value, const GridSize* size)
{
    std::istringstream in(value);
    std::vector<long> numbers;
    for (std::string word; in >> word;) {
        const auto number = parse_long(word);
        if (!number)
            call.fail("\"*sections\" holds \"" + word + "\"; expected whole numbers", "value");
        numbers.push_back(*number);
    }
    // Compared as so many triples: the count times three may not fit a number.
    if (numbers.size() % 3 != 1 || numbers[0] < 0 || static_cast<std::size_t>(numbers[0]) != numbers.size() / 3)
        call.fail("\"*sections\" is \"" + value + "\"; expected a count and so many triples of axis, flag, section", "value");

    std::string kept;
    long count = 0, outside = 0;
    for (std::size_t i = 1; i < numbers.size(); i += 3) {
        const long axis = numbers[i], flag = numbers[i + 1], section = numbers[i + 2];
        if (axis < 1 || axis > 3 || flag < 0 || flag > 1)
            call.fail("\"*sections\" holds the triple " + std::to_string(axis) + " " + std::to_string(flag) + " " +
                          std::to_string(section) + "; expected axis 1 to 3 and flag 0 or 1",
                      "value");
        const bool inside = !size || flag == 0 || (section >= 0 && section < (*size)[static_cast<std::size_t>(axis - 1)]);
        if (!inside) {
            ++outside;
            continue;
        }
        ++count;
        kept += ' ' + std::to_string(axis) + " " + std::to_string(flag) + " " + std::to_string(section);
    }
    if (outside == 0)
        return value;
    call.warn("painted sections outside the grid are left out: " + std::to_string(outside));
    return ' ' + std::to_string(count) + kept;
}

void set_attribute(Call& call)
{
    auto& style = static_cast<Lodex::Style&>(*call.object());
    const std::string attribute = call.text("attribute");
    std::string value = call.text("value");
    if (attribute == "*sections") {
        const CornerPointGrid* grid = find_grid(style.name().str());
        value = checked_sections(call, value, grid ? &grid->header().size : nullptr);
    }
    style.set_attribute(attribute, value);
}

void update_style(Call& call)
{
    static_cast<Lodex::Style&>(*call.object()).update();
}

const VerbRegistration set_registration{
    {.name = "set",
     .object_type = "Style",
     .summary = "Sets an attribute of a style; it shows at the next update.",
     .keywords = {{.name = "attribute", .kind = ValueKind::Text, .meaning = "name of the attribute", .required = true},
                  {.name = "value", .kind = ValueKind::Text,
                   .meaning = "the value; of \"*sections\" a count and triples of axis, flag, 0-based section",
                   .required = true, .may_be_empty = true}},
     .journalled = false,
     .run = set_attribute}};

const VerbRegistration update_registration{{.name = "update",
                                            .object_type = "Style",
                                            .summary = "Tells the views what was set since the last update.",
                                            .journalled = false,
                                            .run = update_style}};

} // namespace

} // namespace lodex
