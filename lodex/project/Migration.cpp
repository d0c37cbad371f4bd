#include "Migration.h"

#include "ProjectFile.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <sstream>
#include <stdexcept>
#include <string>

namespace lodex {

namespace {

using nlohmann::json;

/// Format 2: both units of the project instead of one; the journal as a list of statements instead of one text; the
/// activities in one table, so that two grids share one, instead of a copy with each grid.
void from_1_to_2(json& contents)
{
    const json unit = contents.at("unit");
    contents["units"] = {{"horizontal", unit}, {"vertical", unit}};
    contents.erase("unit");

    json statements = json::array();
    std::istringstream journal(contents.at("journal").get<std::string>());
    for (std::string line; std::getline(journal, line);) {
        if (!line.empty())
            statements.push_back(line);
    }
    contents["journal"] = std::move(statements);

    json table = json::array();
    for (json& grid : contents.at("grids")) {
        json positions = json::array();
        for (json& activity : grid.at("activities")) {
            // A coarsening belongs to one grid; relations are copies of each other on the two grids that they join.
            const bool shared = activity.at("kind") != "coarsening";
            auto known = shared ? std::ranges::find(table, activity) : table.end();
            if (known == table.end()) {
                positions.push_back(table.size());
                table.push_back(std::move(activity));
            } else {
                positions.push_back(known - table.begin());
            }
        }
        grid["activities"] = std::move(positions);
    }
    contents["activities"] = std::move(table);
}

/// The step from format n + 1 to format n + 2 at position n. A new format adds its step at the end, with the reason, and
/// raises project_format.
constexpr std::array<void (*)(json&), project_format - 1> steps{from_1_to_2};

} // namespace

void migrate_contents(json& contents, int format)
{
    if (format < 1 || format > project_format)
        throw std::out_of_range("format " + std::to_string(format));
    for (std::size_t step = static_cast<std::size_t>(format) - 1; step < steps.size(); ++step)
        steps[step](contents);
}

} // namespace lodex
