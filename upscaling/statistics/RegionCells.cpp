#include "RegionCells.h"

#include <Lodex/geobase/Region.h>
#include <Lodex/volumes/SGrid.h>

#include <algorithm>
#include <limits>
#include <set>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

namespace Kelvane {

namespace {

constexpr std::string_view every_cell = "everywhere";
constexpr std::string_view every_region = "all_regions";

/// What stands between the "+", without the blanks around it; nothing for an empty piece.
std::vector<std::string> pieces_of(std::string_view list)
{
    constexpr std::string_view blanks = " \t";
    std::vector<std::string> pieces;
    for (std::size_t start = 0; start <= list.size();) {
        const std::size_t end = std::min(list.find('+', start), list.size());
        std::string_view piece = list.substr(start, end - start);
        piece.remove_prefix(std::min(piece.find_first_not_of(blanks), piece.size()));
        piece = piece.substr(0, piece.find_last_not_of(blanks) + 1);
        if (!piece.empty())
            pieces.emplace_back(piece);
        start = end + 1;
    }
    return pieces;
}

/// The shortest cut of the list into names of the set.
std::vector<std::string> names_in(std::string_view list, const std::set<std::string, std::less<>>& known)
{
    const std::vector<std::string> pieces = pieces_of(list);
    constexpr std::size_t none = std::numeric_limits<std::size_t>::max();
    struct Reading {
        std::size_t names = none; ///< number of names that the rest of the list takes
        int ways = 0;
        std::size_t next = 0;
        std::string first;
    };
    std::vector<Reading> from(pieces.size() + 1);
    from.back() = {.names = 0, .ways = 1};
    for (std::size_t start = pieces.size(); start-- > 0;) {
        std::string plus, blank;
        for (std::size_t end = start; end < pieces.size(); ++end) {
            plus += (end > start ? "+" : "") + pieces[end];
            blank += (end > start ? " " : "") + pieces[end];
            const Reading& rest = from[end + 1];
            if (rest.names == none)
                continue;
            const std::vector<std::string> readings = end == start ? std::vector{plus} : std::vector{plus, blank};
            for (const std::string& name : readings) {
                if (!known.contains(name))
                    continue;
                if (rest.names + 1 < from[start].names)
                    from[start] = {rest.names + 1, rest.ways, end + 1, name};
                else if (rest.names + 1 == from[start].names)
                    from[start].ways += rest.ways;
            }
        }
    }
    if (from.front().names == none || pieces.empty())
        throw std::invalid_argument("there is no region \"" + std::string(list) + "\"");
    if (from.front().ways > 1)
        throw std::invalid_argument("the regions \"" + std::string(list) + "\" can be read in two ways");
    std::vector<std::string> names;
    for (std::size_t piece = 0; piece < pieces.size(); piece = from[piece].next)
        names.push_back(from[piece].first);
    return names;
}

} // namespace

RegionCells::RegionCells(const Lodex::SGrid& grid, const Lodex::CString& regions)
{
    std::set<std::string, std::less<>> known{std::string(every_cell), std::string(every_region)};
    for (int n = 0; n < grid.nb_regions(); ++n)
        known.insert(grid.region(n)->name().str());

    const std::vector<std::string> names =
        known.contains(regions.str()) ? std::vector{regions.str()} : names_in(regions, known);
    if (std::ranges::find(names, every_cell) != names.end())
        return;
    if (std::ranges::find(names, every_region) != names.end()) {
        for (int n = 0; n < grid.nb_regions(); ++n)
            flags_.push_back(grid.region(n)->flags());
        return;
    }
    for (const std::string& name : names)
        flags_.push_back(grid.find_region(name)->flags());
}

} // namespace Kelvane
