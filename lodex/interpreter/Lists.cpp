#include "Lists.h"

#include "Statement.h"

#include <algorithm>
#include <limits>

namespace lodex {

namespace {

std::string_view trimmed(std::string_view text)
{
    constexpr std::string_view blanks = " \t\r\v\f";
    const std::size_t first = std::min(text.find_first_not_of(blanks), text.size());
    return text.substr(first, text.find_last_not_of(blanks) + 1 - first);
}

} // namespace

std::vector<std::string> split_joined(std::string_view list)
{
    std::vector<std::string> pieces;
    if (list.empty())
        return pieces;
    std::size_t start = 0;
    for (;;) {
        const std::size_t plus = list.find('+', start);
        pieces.emplace_back(trimmed(list.substr(start, plus == std::string_view::npos ? plus : plus - start)));
        if (plus == std::string_view::npos)
            return pieces;
        start = plus + 1;
    }
}

std::vector<std::string> split_joined_numbers(std::string_view list)
{
    std::vector<std::string> pieces;
    for (std::string& piece : split_joined(list)) {
        const bool exponent = !pieces.empty() && pieces.back().size() > 1 &&
                              (pieces.back().back() == 'e' || pieces.back().back() == 'E') &&
                              (pieces.back()[pieces.back().size() - 2] == '.' ||
                               (pieces.back()[pieces.back().size() - 2] >= '0' && pieces.back()[pieces.back().size() - 2] <= '9'));
        if (exponent)
            pieces.back() += "+" + piece;
        else
            pieces.push_back(std::move(piece));
    }
    return pieces;
}

std::vector<std::string> resolve_joined(std::string_view list, const std::function<bool(const std::string&)>& exists,
                                        std::size_t longest, const std::string& what)
{
    std::vector<std::string> pieces = split_joined(list);
    std::erase_if(pieces, [](const std::string& piece) { return piece.empty(); });
    const std::size_t n = pieces.size();

    // fewest[i]: runs needed for pieces i.. ; ways[i]: number of such readings, cut at 2; step[i], name[i]: the first run.
    constexpr std::size_t impossible = std::numeric_limits<std::size_t>::max();
    std::vector<std::size_t> fewest(n + 1, impossible), step(n + 1, 0);
    std::vector<int> ways(n + 1, 0);
    std::vector<std::string> name(n + 1);
    fewest[n] = 0;
    ways[n] = 1;
    for (std::size_t i = n; i-- > 0;) {
        std::string with_plus, with_blank;
        for (std::size_t j = i; j < n && (j == i || with_plus.size() + pieces[j].size() < longest); ++j) {
            with_plus += (j > i ? "+" : "") + pieces[j];
            with_blank += (j > i ? " " : "") + pieces[j];
            if (fewest[j + 1] == impossible)
                continue;
            const bool plus_exists = exists(with_plus);
            const bool blank_exists = j > i && exists(with_blank);
            if (!plus_exists && !blank_exists)
                continue;
            const std::size_t runs = fewest[j + 1] + 1;
            const int readings = std::min(2, ways[j + 1] * (plus_exists && blank_exists ? 2 : 1));
            if (runs < fewest[i]) {
                fewest[i] = runs;
                ways[i] = readings;
                step[i] = j + 1;
                name[i] = blank_exists ? with_blank : with_plus;
            } else if (runs == fewest[i]) {
                ways[i] = std::min(2, ways[i] + readings);
            }
        }
    }

    if (fewest[0] == impossible) {
        // Name what is left behind the longest beginning that can be read.
        std::vector<bool> reachable(n + 1, false);
        reachable[0] = true;
        std::size_t furthest = 0;
        for (std::size_t i = 0; i < n; ++i) {
            if (!reachable[i])
                continue;
            furthest = i;
            std::string with_plus, with_blank;
            for (std::size_t j = i; j < n && (j == i || with_plus.size() + pieces[j].size() < longest); ++j) {
                with_plus += (j > i ? "+" : "") + pieces[j];
                with_blank += (j > i ? " " : "") + pieces[j];
                if (exists(with_plus) || exists(with_blank))
                    reachable[j + 1] = true;
            }
        }
        std::string rest;
        for (std::size_t i = furthest; i < n; ++i)
            rest += (i > furthest ? "+" : "") + pieces[i];
        throw CommandError("there is no " + what + " \"" + rest + "\"");
    }
    if (ways[0] > 1)
        throw CommandError("the list \"" + std::string(list) + "\" can be read in two ways");

    std::vector<std::string> names;
    for (std::size_t i = 0; i < n; i = step[i])
        names.push_back(name[i]);
    return names;
}

} // namespace lodex
