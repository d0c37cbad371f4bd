#pragma once

#include <lodex/volumes/model/GridModel.h>

#include <algorithm>
#include <cstdint>
#include <vector>

/// Order of the numbers in a ROFF file against that of a GridModel.
///
/// In the file I runs slowest, then J, and K fastest and from the bottom up. Values of cells stand at
/// (i * nj + j) * nk + kk with kk = nk - 1 - k, those of nodes at (i * (nj + 1) + j) * (nk + 1) + kk with kk = 0 at the
/// bottom. A node has 1, 2, 4 or 8 depths for the corners of the cells round it: one for all; one for the cells below
/// and one for those above; south west, south east, north west, north east; these four below, then above. West is the
/// side of lower i, south of lower j, below is deeper.
namespace lodex::roff {

/// Columns along I that are turned at a time: their values fill whole cache lines in either order.
inline constexpr std::int64_t tile_columns = 16;
/// Values of a tile: it stays in the second cache.
inline constexpr std::int64_t tile_values = 1 << 18;

struct Range {
    std::int64_t first = 0;
    std::int64_t end = 0;
    [[nodiscard]] std::int64_t count() const { return end - first; }
};

/// A box of cells; kk counts from the bottom.
struct Tile {
    Range i, j, kk;
    /// Distance of two columns along I in a buffer; the odd 16 keep them apart in the cache.
    [[nodiscard]] std::int64_t pitch() const { return j.count() * kk.count() + 16; }
};

/// Cuts the grid into boxes of up to tile_columns x tile_values / tile_columns values, whole columns as far as
/// possible.
[[nodiscard]] inline std::vector<Tile> cut_into_tiles(const GridSize& size)
{
    const auto [ni, nj, nk] = size;
    const std::int64_t column = tile_values / tile_columns;
    const std::int64_t ks = std::min(nk, column);
    const std::int64_t js = ks < nk ? 1 : std::clamp<std::int64_t>(column / nk, 1, nj);
    std::vector<Tile> tiles;
    for (std::int64_t i = 0; i < ni; i += tile_columns) {
        for (std::int64_t j = 0; j < nj; j += js) {
            for (std::int64_t k = 0; k < nk; k += ks) {
                tiles.push_back(
                    {{i, std::min(i + tile_columns, ni)}, {j, std::min(j + js, nj)}, {k, std::min(k + ks, nk)}});
            }
        }
    }
    return tiles;
}

} // namespace lodex::roff
