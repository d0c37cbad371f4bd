#pragma once

// How faces are found in the corner depths as they are stored. Internal to this folder.

#include "GridFaces.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <span>
#include <vector>

namespace lodex::face_scan {

constexpr std::uint8_t bit(CellSide side)
{
    return static_cast<std::uint8_t>(1 << static_cast<int>(side));
}

/// A pillar as a line x = x0 + slope * (depth - depth0), the same as pillar_point() gives.
struct PillarLine {
    double x, y, depth, slope_x, slope_y;

    [[nodiscard]] Point3 at(double d) const { return {x + (d - depth) * slope_x, y + (d - depth) * slope_y, d}; }
};

inline std::vector<PillarLine> pillar_lines(const GridModel& model)
{
    std::vector<PillarLine> lines(static_cast<std::size_t>(model.pillars()));
    model.coord.visit([&](auto coord) {
        for (std::size_t n = 0; n < lines.size(); ++n) {
            std::array<double, 6> p;
            for (std::size_t m = 0; m < 6; ++m)
                p[m] = static_cast<double>(coord[6 * n + m]);
            const double height = p[5] - p[2];
            const double sx = (p[3] - p[0]) / height, sy = (p[4] - p[1]) / height;
            lines[n] = height == 0 || !std::isfinite(sx) || !std::isfinite(sy) ? PillarLine{p[0], p[1], 0, 0, 0}
                                                                               : PillarLine{p[0], p[1], p[2], sx, sy};
        }
    });
    return lines;
}

inline Point3 minus(const Point3& a, const Point3& b)
{
    return {a[0] - b[0], a[1] - b[1], a[2] - b[2]};
}

inline double turn(const Point3& a, const Point3& b, const Point3& c)
{
    return a[0] * (b[1] * c[2] - b[2] * c[1]) + a[1] * (b[2] * c[0] - b[0] * c[2]) + a[2] * (b[0] * c[1] - b[1] * c[0]);
}

/// True when the cell turns like (x, y, depth), by the mean edges along I, J, K.
inline bool turns_like_depth(const CellCorners& corners)
{
    std::array<Point3, 3> edges{};
    for (std::size_t axis = 0; axis < 3; ++axis) {
        const std::size_t step = std::size_t{1} << axis;
        for (std::size_t corner = 0; corner < 8; ++corner) {
            if (corner & step)
                continue;
            const Point3 edge = minus(corners[corner + step], corners[corner]);
            for (std::size_t n = 0; n < 3; ++n)
                edges[axis][n] += edge[n];
        }
    }
    return turn(edges[0], edges[1], edges[2]) >= 0;
}

inline bool is_finite(const Point3& point)
{
    return std::isfinite(point[0]) && std::isfinite(point[1]) && std::isfinite(point[2]);
}

/// Looks for faces in the corner depths as they are stored.
template <class Depth> class FaceScanner {
public:
    FaceScanner(const GridModel& model, const ShownCells& shown, std::span<const Depth> depths,
                const std::vector<PillarLine>& pillars)
        : model_(model), shown_(shown), depths_(depths.data()), pillars_(pillars), ni_(model.size[0]),
          nj_(model.size[1]), nk_(model.size[2])
    {
    }

    struct Scratch {
        explicit Scratch(std::int64_t ni)
            : self(static_cast<std::size_t>(ni)), other(static_cast<std::size_t>(ni)),
              open(static_cast<std::size_t>(ni))
        {
        }
        std::vector<std::uint8_t> self, other, open;
    };

    /// Lists the faces of the cells of one row.
    void scan_row(std::int64_t j, std::int64_t k, Scratch& scratch, FaceList& list) const
    {
        bool whole = false;
        const auto columns = shown_.listed(j, k, whole);
        if (!whole) {
            for (const std::int64_t i : columns) {
                if (!shown_.shows(i, j, k))
                    continue;
                if (const std::uint8_t open = open_sides(i, j, k))
                    note(i, j, k, open, list);
            }
            return;
        }
        if (!read_shown(j, k, scratch.self))
            return;
        std::fill(scratch.open.begin(), scratch.open.end(), std::uint8_t{0});
        scan_along_i(j, k, scratch);
        scan_along_j(j, k, scratch);
        scan_along_k(j, k, scratch);
        std::int64_t i = 0;
        const std::uint8_t* const open = scratch.open.data();
        for (; i + 8 <= ni_; i += 8) {
            std::uint64_t eight;
            std::memcpy(&eight, open + i, 8);
            if (eight == 0)
                continue;
            note_some(i, i + 8, j, k, open, list);
        }
        note_some(i, ni_, j, k, open, list);
    }

    /// True when this side of a shown cell can be seen, had one a hole to look through.
    [[nodiscard]] bool is_face(std::int64_t i, std::int64_t j, std::int64_t k, CellSide side) const
    {
        return !covered(i, j, k, side) && drawable(i, j, k, bit(side)) != 0;
    }

    /// Writes the faces of one cell: 12 numbers each.
    void write(std::int64_t i, std::int64_t j, std::int64_t k, std::uint8_t sides, const Point3& origin,
               float* points) const
    {
        const CellCorners cell = corners(i, j, k);
        // Depth turned into height mirrors the cell.
        const bool mirrored = turns_like_depth(cell);
        for (int side = 0; side < 6; ++side) {
            if (!(sides >> side & 1))
                continue;
            std::array<Point3, 4> face = side_corners(cell, static_cast<CellSide>(side));
            if (mirrored)
                std::swap(face[1], face[3]);
            for (const Point3& point : face) {
                *points++ = static_cast<float>(point[0] - origin[0]);
                *points++ = static_cast<float>(point[1] - origin[1]);
                *points++ = static_cast<float>(origin[2] - point[2]);
            }
        }
    }

private:
    /// The sides that have an area and whose corners are finite.
    [[nodiscard]] std::uint8_t drawable(std::int64_t i, std::int64_t j, std::int64_t k, std::uint8_t open) const
    {
        const CellCorners cell = corners(i, j, k);
        const bool finite = std::ranges::all_of(cell, is_finite);
        for (int side = 0; side < 6; ++side) {
            if (!(open >> side & 1))
                continue;
            if ((side < 4 && !has_height(cell, side)) ||
                (!finite && !std::ranges::all_of(side_corners(cell, static_cast<CellSide>(side)), is_finite)))
                open = static_cast<std::uint8_t>(open & ~(1 << side));
        }
        return open;
    }

    /// Row of 2 ni depths: side b along J and c along K of the cells j, k.
    [[nodiscard]] const Depth* row(std::int64_t j, std::int64_t k, int b, int c) const
    {
        return depths_ + ((2 * k + c) * 2 * nj_ + 2 * j + b) * 2 * ni_;
    }

    /// Flags of the shown cells of a row; false when there are none.
    bool read_shown(std::int64_t j, std::int64_t k, std::vector<std::uint8_t>& out) const
    {
        const std::uint8_t* const flags = shown_.flags().data() + ni_ * (j + nj_ * k);
        const std::uint8_t* const columns = shown_.columns(j, k);
        std::uint8_t any = 0;
        for (std::int64_t i = 0; i < ni_; ++i) {
            out[static_cast<std::size_t>(i)] = flags[i] & columns[i];
            any |= flags[i] & columns[i];
        }
        return any != 0;
    }

    static bool rows_equal(const Depth* a, const Depth* b, std::int64_t count)
    {
        int differ = 0;
        for (std::int64_t n = 0; n < count; ++n)
            differ |= static_cast<int>(!(a[n] == b[n]));
        return differ == 0;
    }

    void scan_along_i(std::int64_t j, std::int64_t k, Scratch& scratch) const
    {
        const Depth* const rows[4] = {row(j, k, 0, 0), row(j, k, 1, 0), row(j, k, 0, 1), row(j, k, 1, 1)};
        const std::uint8_t* const self = scratch.self.data();
        std::uint8_t* const open = scratch.open.data();
        const auto last = static_cast<std::size_t>(ni_ - 1);
        if (self[0])
            open[0] |= bit(CellSide::IMinus);
        for (std::size_t i = 0; i < last; ++i) {
            const bool same = rows[0][2 * i + 1] == rows[0][2 * i + 2] && rows[1][2 * i + 1] == rows[1][2 * i + 2] &&
                              rows[2][2 * i + 1] == rows[2][2 * i + 2] && rows[3][2 * i + 1] == rows[3][2 * i + 2];
            if (self[i] && !(same && self[i + 1]))
                open[i] |= bit(CellSide::IPlus);
            if (self[i + 1] && !(same && self[i]))
                open[i + 1] |= bit(CellSide::IMinus);
        }
        if (self[last])
            open[last] |= bit(CellSide::IPlus);
    }

    void scan_along_j(std::int64_t j, std::int64_t k, Scratch& scratch) const
    {
        for (const int plus : {0, 1}) {
            const std::uint8_t side = bit(plus ? CellSide::JPlus : CellSide::JMinus);
            const std::int64_t next = plus ? j + 1 : j - 1;
            if (next < 0 || next >= nj_ || !read_shown(next, k, scratch.other)) {
                mark_all(side, scratch);
                continue;
            }
            const Depth* const own[2] = {row(j, k, plus, 0), row(j, k, plus, 1)};
            const Depth* const theirs[2] = {row(next, k, 1 - plus, 0), row(next, k, 1 - plus, 1)};
            mark_open(side, own, theirs, scratch);
        }
    }

    void scan_along_k(std::int64_t j, std::int64_t k, Scratch& scratch) const
    {
        for (const int plus : {0, 1}) {
            const std::uint8_t side = bit(plus ? CellSide::KPlus : CellSide::KMinus);
            const std::int64_t next = plus ? k + 1 : k - 1;
            if (next < 0 || next >= nk_) {
                mark_all(side, scratch);
                continue;
            }
            read_shown(j, next, scratch.other);
            const Depth* const own[2] = {row(j, k, 0, plus), row(j, k, 1, plus)};
            const Depth* const theirs[2] = {row(j, next, 0, 1 - plus), row(j, next, 1, 1 - plus)};
            mark_open(side, own, theirs, scratch);
            for (std::int64_t i = 0; i < ni_; ++i) {
                std::uint8_t& open = scratch.open[static_cast<std::size_t>(i)];
                if ((open & side) && !scratch.other[static_cast<std::size_t>(i)] && covered_along_k(i, j, k, plus))
                    open = static_cast<std::uint8_t>(open & ~side);
            }
        }
    }

    void mark_all(std::uint8_t side, Scratch& scratch) const
    {
        for (std::size_t i = 0; i < scratch.self.size(); ++i)
            scratch.open[i] |= scratch.self[i] ? side : std::uint8_t{0};
    }

    void mark_open(std::uint8_t side, const Depth* const own[2], const Depth* const theirs[2], Scratch& scratch) const
    {
        const std::uint8_t* const self = scratch.self.data();
        const std::uint8_t* const other = scratch.other.data();
        std::uint8_t* const open = scratch.open.data();
        const auto ni = static_cast<std::size_t>(ni_);
        if (rows_equal(own[0], theirs[0], 2 * ni_) && rows_equal(own[1], theirs[1], 2 * ni_)) {
            for (std::size_t i = 0; i < ni; ++i)
                open[i] |= self[i] & static_cast<std::uint8_t>(!other[i]) ? side : std::uint8_t{0};
            return;
        }
        for (std::size_t i = 0; i < ni; ++i) {
            const bool same = own[0][2 * i] == theirs[0][2 * i] && own[0][2 * i + 1] == theirs[0][2 * i + 1] &&
                              own[1][2 * i] == theirs[1][2 * i] && own[1][2 * i + 1] == theirs[1][2 * i + 1];
            if (self[i] && !(same && other[i]))
                open[i] |= side;
        }
    }

    /// True when both cells' depths on the sides that touch along K are the same.
    [[nodiscard]] bool same_along_k(std::int64_t i, std::int64_t j, std::int64_t k, int c, std::int64_t other_k,
                                    int other_c) const
    {
        for (const int b : {0, 1}) {
            const Depth* const own = row(j, k, b, c) + 2 * i;
            const Depth* const theirs = row(j, other_k, b, other_c) + 2 * i;
            if (!(own[0] == theirs[0] && own[1] == theirs[1]))
                return false;
        }
        return true;
    }

    /// True when a shown cell touches the side along K of this one, if only through hidden cells without height.
    [[nodiscard]] bool covered_along_k(std::int64_t i, std::int64_t j, std::int64_t k, int plus) const
    {
        const std::int64_t step = plus ? 1 : -1;
        for (std::int64_t next = k + step; next >= 0 && next < nk_; next += step) {
            if (!same_along_k(i, j, k, plus, next, 1 - plus))
                return false;
            if (shown_.shows(i, j, next))
                return true;
            if (!same_along_k(i, j, next, 0, next, 1))
                return false;
        }
        return false;
    }

    [[nodiscard]] bool covered(std::int64_t i, std::int64_t j, std::int64_t k, CellSide side) const
    {
        const auto corner = [this](std::int64_t ci, std::int64_t cj, std::int64_t ck, int a, int b, int c) {
            return row(cj, ck, b, c)[2 * ci + a];
        };
        const int plus = static_cast<int>(side) % 2, step = plus ? 1 : -1;
        if (side == CellSide::IMinus || side == CellSide::IPlus) {
            if (i + step < 0 || i + step >= ni_ || !shown_.shows(i + step, j, k))
                return false;
            for (const int b : {0, 1}) {
                for (const int c : {0, 1}) {
                    if (!(corner(i, j, k, plus, b, c) == corner(i + step, j, k, 1 - plus, b, c)))
                        return false;
                }
            }
            return true;
        }
        if (side == CellSide::JMinus || side == CellSide::JPlus) {
            if (j + step < 0 || j + step >= nj_ || !shown_.shows(i, j + step, k))
                return false;
            for (const int a : {0, 1}) {
                for (const int c : {0, 1}) {
                    if (!(corner(i, j, k, a, plus, c) == corner(i, j + step, k, a, 1 - plus, c)))
                        return false;
                }
            }
            return true;
        }
        return covered_along_k(i, j, k, plus);
    }

    [[nodiscard]] std::uint8_t open_sides(std::int64_t i, std::int64_t j, std::int64_t k) const
    {
        std::uint8_t open = 0;
        for (int side = 0; side < 6; ++side) {
            if (!covered(i, j, k, static_cast<CellSide>(side)))
                open |= static_cast<std::uint8_t>(1 << side);
        }
        return open;
    }

    void note_some(std::int64_t first, std::int64_t last, std::int64_t j, std::int64_t k, const std::uint8_t* open,
                   FaceList& list) const
    {
        for (std::int64_t i = first; i < last; ++i) {
            if (open[i])
                note(i, j, k, open[i], list);
        }
    }

    void note(std::int64_t i, std::int64_t j, std::int64_t k, std::uint8_t open, FaceList& list) const
    {
        open = drawable(i, j, k, open);
        if (!open)
            return;
        list.cell.push_back(static_cast<std::uint32_t>(model_.cell_index(i, j, k)));
        list.sides.push_back(open);
        list.faces += static_cast<std::size_t>(std::popcount(open));
    }

    [[nodiscard]] CellCorners corners(std::int64_t i, std::int64_t j, std::int64_t k) const
    {
        CellCorners result;
        for (int b = 0; b < 2; ++b) {
            const PillarLine* const pillars = pillars_.data() + i + (ni_ + 1) * (j + b);
            for (int c = 0; c < 2; ++c) {
                const Depth* const depths = row(j, k, b, c) + 2 * i;
                for (int a = 0; a < 2; ++a)
                    result[static_cast<std::size_t>(a + 2 * b + 4 * c)] = pillars[a].at(static_cast<double>(depths[a]));
            }
        }
        return result;
    }

    /// False when the two edges along K of a side along I or J have no length.
    static bool has_height(const CellCorners& cell, int side)
    {
        const std::size_t axis = side < 2 ? 1 : 2; // bit of the axis
        const std::size_t first = side % 2 ? axis : 0, other = side < 2 ? 2 : 1;
        return cell[first][2] != cell[first + 4][2] || cell[first + other][2] != cell[first + other + 4][2];
    }

    const GridModel& model_;
    const ShownCells& shown_;
    const Depth* depths_;
    const std::vector<PillarLine>& pillars_;
    std::int64_t ni_, nj_, nk_;
};

} // namespace lodex::face_scan
