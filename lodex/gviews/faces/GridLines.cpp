#include "FaceScanner.h"

#include <tbb/blocked_range.h>
#include <tbb/parallel_for.h>

#include <algorithm>
#include <functional>
#include <map>

namespace lodex {

using namespace face_scan;

namespace {

/// First and last K of the cells of each column that count; last < first where there is none.
std::vector<IndexRange> column_ranges(const GridModel& model)
{
    const std::int64_t columns = model.size[0] * model.size[1];
    std::vector<IndexRange> ranges(static_cast<std::size_t>(columns), {0, -1});
    constexpr std::int64_t columns_per_task = 256;
    tbb::parallel_for(tbb::blocked_range<std::int64_t>(0, columns, columns_per_task),
                      [&](const tbb::blocked_range<std::int64_t>& part) {
                          for (std::int64_t k = 0; k < model.size[2]; ++k) {
                              for (std::int64_t n = part.begin(); n != part.end(); ++n) {
                                  if (!model.active[static_cast<std::size_t>(n + columns * k)])
                                      continue;
                                  IndexRange& range = ranges[static_cast<std::size_t>(n)];
                                  if (range.last < range.first)
                                      range.first = k;
                                  range.last = k;
                              }
                          }
                      });
    if (std::ranges::all_of(ranges, [](const IndexRange& range) { return range.last < range.first; }))
        std::ranges::fill(ranges, IndexRange{0, model.size[2] - 1});
    return ranges;
}

void append(std::vector<float>& points, const Point3& point, const Point3& origin)
{
    points.push_back(static_cast<float>(point[0] - origin[0]));
    points.push_back(static_cast<float>(point[1] - origin[1]));
    points.push_back(static_cast<float>(origin[2] - point[2]));
}

void append_line(LineSet& lines, const Point3& a, const Point3& b)
{
    if (!is_finite(a) || !is_finite(b) || a == b)
        return;
    append(lines.points, a, lines.origin);
    append(lines.points, b, lines.origin);
}

/// An outer side of a column: the two pillars at its ends, going counterclockwise round the column in I and J, and top
/// and base there.
struct OuterSide {
    std::array<std::int64_t, 2> pillar;
    std::array<Point3, 2> top, base;
    int direction; ///< 0 along I, 1 along J
};

} // namespace

LineSet grid_outline(const GridModel& model)
{
    LineSet lines;
    lines.origin = drawing_origin(model);
    const auto [ni, nj, nk] = model.size;
    const std::vector<IndexRange> ranges = column_ranges(model);
    const auto counts = [&](std::int64_t i, std::int64_t j) {
        if (i < 0 || j < 0 || i >= ni || j >= nj)
            return false;
        const IndexRange& range = ranges[static_cast<std::size_t>(i + ni * j)];
        return range.last >= range.first;
    };
    struct PillarUse {
        int along_i = 0, along_j = 0;
        Point3 top{}, base{};
    };
    std::map<std::int64_t, PillarUse> uses; // pillars on the boundary
    const auto add_side = [&](const OuterSide& side) {
        append_line(lines, side.top[0], side.top[1]);
        append_line(lines, side.base[0], side.base[1]);
        for (std::size_t end = 0; end < 2; ++end) {
            const auto [place, is_new] = uses.try_emplace(side.pillar[end]);
            PillarUse& use = place->second;
            ++(side.direction == 0 ? use.along_i : use.along_j);
            if (is_new) {
                use.top = side.top[end];
                use.base = side.base[end];
                continue;
            }
            // Where the neighbour's corner lies elsewhere on the pillar the line goes on along the pillar.
            append_line(lines, use.top, side.top[end]);
            append_line(lines, use.base, side.base[end]);
            if (side.top[end][2] < use.top[2])
                use.top = side.top[end];
            if (side.base[end][2] > use.base[2])
                use.base = side.base[end];
        }
    };
    for (std::int64_t j = 0; j < nj; ++j) {
        for (std::int64_t i = 0; i < ni; ++i) {
            if (!counts(i, j))
                continue;
            const std::array<bool, 4> outer{!counts(i - 1, j), !counts(i + 1, j), !counts(i, j - 1), !counts(i, j + 1)};
            if (std::ranges::none_of(outer, std::identity{}))
                continue;
            const IndexRange& range = ranges[static_cast<std::size_t>(i + ni * j)];
            const CellCorners top = cell_corners(model, i, j, range.first);
            const CellCorners base = cell_corners(model, i, j, range.last);
            const auto side = [&](std::size_t from, std::size_t to, int direction) {
                const auto pillar = [&](std::size_t corner) {
                    return i + static_cast<std::int64_t>(corner & 1) +
                           (ni + 1) * (j + static_cast<std::int64_t>(corner >> 1));
                };
                add_side({{pillar(from), pillar(to)}, {top[from], top[to]}, {base[from + 4], base[to + 4]}, direction});
            };
            if (outer[0])
                side(0, 2, 1);
            if (outer[1])
                side(1, 3, 1);
            if (outer[2])
                side(0, 1, 0);
            if (outer[3])
                side(2, 3, 0);
        }
    }
    for (const auto& [pillar, use] : uses) {
        if (use.along_i > 0 && use.along_j > 0)
            append_line(lines, use.top, use.base);
    }
    return lines;
}

LineSet cell_edges(const GridModel& model, std::int64_t i, std::int64_t j, std::int64_t k)
{
    LineSet lines;
    lines.origin = drawing_origin(model);
    const CellCorners corners = cell_corners(model, i, j, k);
    for (std::size_t axis = 0; axis < 3; ++axis) {
        const std::size_t step = std::size_t{1} << axis;
        for (std::size_t corner = 0; corner < 8; ++corner) {
            if (!(corner & step))
                append_line(lines, corners[corner], corners[corner + step]);
        }
    }
    return lines;
}

} // namespace lodex
