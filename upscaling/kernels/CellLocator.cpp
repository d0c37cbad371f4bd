#include "CellLocator.h"

#include "ParallelBlocks.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace Kelvane {

namespace {

constexpr double face_tolerance = 1e-8;    // of the cell
constexpr double depth_rounding = 4e-15;   // of a depth
constexpr double box_growth = 1e-6;        // of a box; beyond what tolerance can claim
constexpr double parallel_margin = 1e-10;  // of the extent of a column: less does not move a point over a face
constexpr std::int64_t columns_a_block = 64;

struct Vector2 {
    double x = 0, y = 0;
    friend Vector2 operator+(Vector2 u, Vector2 v) { return {u.x + v.x, u.y + v.y}; }
    friend Vector2 operator-(Vector2 u, Vector2 v) { return {u.x - v.x, u.y - v.y}; }
    friend Vector2 operator*(double f, Vector2 v) { return {f * v.x, f * v.y}; }
};
double cross(Vector2 u, Vector2 v)
{
    return u.x * v.y - u.y * v.x;
}
double dot(Vector2 u, Vector2 v)
{
    return u.x * v.x + u.y * v.y;
}

using Quad = std::array<Vector2, 4>; // corner a + 2b

struct Place {
    double a = 0.5, b = 0.5;

    [[nodiscard]] bool inside() const
    {
        return a >= -face_tolerance && a <= 1 + face_tolerance && b >= -face_tolerance && b <= 1 + face_tolerance;
    }
    [[nodiscard]] Place clamped() const { return {std::clamp(a, 0.0, 1.0), std::clamp(b, 0.0, 1.0)}; }
};

// The places where the bilinear map of a quad gives the origin: up to two (a folded quad), those inside first.
struct Places {
    std::array<Place, 2> place;
    int count = 0;
    int inside = 0;
};

// q00 + a e + b d + ab t = 0 means that q00 + b d and e + b t are parallel: a quadratic in b.
Places places_of_origin(const Quad& q)
{
    const Vector2 e = q[1] - q[0], d = q[2] - q[0], t = (q[3] - q[2]) - e;
    const double qa = cross(d, t), qb = cross(q[0], t) + cross(d, e), qc = cross(q[0], e);
    const double discriminant = qb * qb - 4 * qa * qc;
    Places result;
    if (!(discriminant >= 0))
        return result;
    const double half = -0.5 * (qb + std::copysign(std::sqrt(discriminant), qb));
    const auto add = [&](double numerator, double denominator) {
        if (denominator == 0)
            return;
        Place place;
        place.b = numerator / denominator;
        const Vector2 along = e + place.b * t;
        const double length = dot(along, along);
        place.a = -dot(q[0] + place.b * d, along) / length;
        if (!std::isfinite(place.a) || !std::isfinite(place.b))
            return;
        const bool inside = place.inside();
        result.place[static_cast<std::size_t>(result.count++)] = place;
        if (inside && ++result.inside != result.count)
            std::swap(result.place[0], result.place[1]);
    };
    add(qc, half);
    add(half, qa);
    return result;
}

// False when the origin lies farther than `margin` outside of a convex quad; a quad that is not convex tells nothing.
bool may_hold_origin(const Quad& q, double margin)
{
    static constexpr std::array<std::size_t, 4> round{0, 1, 3, 2};
    double turn = 0;
    bool outside = false;
    std::array<Vector2, 4> edges;
    for (std::size_t n = 0; n < 4; ++n)
        edges[n] = q[round[(n + 1) % 4]] - q[round[n]];
    for (std::size_t n = 0; n < 4; ++n) {
        const double bend = cross(edges[n], edges[(n + 1) % 4]);
        if (turn * bend < 0)
            return true;
        turn = turn == 0 ? bend : turn;
    }
    for (std::size_t n = 0; n < 4; ++n) {
        const double side = std::copysign(1.0, turn) * cross(q[round[n]], edges[n]);
        outside = outside || (side < 0 && side * side > margin * margin * dot(edges[n], edges[n]));
    }
    return !outside;
}

double extent(const Quad& q)
{
    const auto [x0, x1] = std::minmax({q[0].x, q[1].x, q[2].x, q[3].x});
    const auto [y0, y1] = std::minmax({q[0].y, q[1].y, q[2].y, q[3].y});
    return (x1 - x0) + (y1 - y0);
}

float rounded_down(double value)
{
    const auto rounded = static_cast<float>(value);
    return static_cast<double>(rounded) > value ? std::nextafter(rounded, -std::numeric_limits<float>::infinity())
                                                : rounded;
}
float rounded_up(double value)
{
    return -rounded_down(-value);
}

// The cells of one column in depth order, K turned so that depths grow.
template <class Lower, class Upper, class Holds>
std::int64_t search_column(std::int64_t first_k, std::int64_t last_k, double depth, double slack, const Lower& lower,
                           const Upper& upper, const Holds& holds)
{
    // Bases never lie more than the slack above the deepest base before them. So where bisection ends, every base from
    // there on may still be wrong by that much, and the walk back ends where even the slack cannot reach the depth.
    const bool ordered = std::isfinite(slack);
    std::int64_t low = first_k, high = ordered ? last_k + 1 : first_k;
    while (low < high) {
        const std::int64_t middle = low + (high - low) / 2;
        if (upper(middle) >= depth + slack)
            high = middle;
        else
            low = middle + 1;
    }
    while (low > first_k && upper(low - 1) >= depth - slack)
        --low;
    for (std::int64_t k = low; k <= last_k && (!ordered || lower(k) <= depth + slack); ++k)
        if (holds(k))
            return k;
    return -1;
}

bool between(double depth, double top, double base)
{
    const double thickness = std::abs(base - top);
    if (!(thickness > depth_rounding * (std::abs(top) + std::abs(base))))
        return false;
    const double tolerance = face_tolerance * thickness + depth_rounding * std::abs(depth);
    return depth >= std::min(top, base) - tolerance && depth <= std::max(top, base) + tolerance;
}

// A cell seen from a point: corners of the section at the point's depth against the point, slopes of the pillars.
struct CellOfPoint {
    const Quad& section;
    const std::array<Vector2, 4>& slopes;
    std::array<double, 4> top, base; // depths against the point's
};

struct Solution {
    Place place;
    double c = 0.5;
    double top = 0, base = 0; // depths at the place, against the point's
    bool converged = false;
};

// Newton's method for the areal place of the point within the cell; c follows from the depth at the place and is kept
// within the cell, which loses no point of the cell and makes cells that are pinched at an edge harmless.
Solution solve(const CellOfPoint& cell, Place start)
{
    Solution s;
    s.place = start;
    std::array<double, 4> height;
    for (std::size_t n = 0; n < 4; ++n)
        height[n] = cell.base[n] - cell.top[n];
    for (int step = 0; step < 30; ++step) {
        const double a = s.place.a, b = s.place.b;
        s.top = bilinear(cell.top, a, b);
        s.base = bilinear(cell.base, a, b);
        const double thickness = s.base - s.top;
        const double c = thickness != 0 ? -s.top / thickness : 0.5;
        s.c = std::clamp(c, 0.0, 1.0);
        const std::array<double, 4> w{(1 - a) * (1 - b), a * (1 - b), (1 - a) * b, a * b};
        Quad q;
        Vector2 drift;
        for (std::size_t n = 0; n < 4; ++n) {
            q[n] = cell.section[n] + (cell.top[n] + s.c * height[n]) * cell.slopes[n];
            drift = drift + (w[n] * height[n]) * cell.slopes[n];
        }
        const Vector2 off = w[0] * q[0] + w[1] * q[1] + w[2] * q[2] + w[3] * q[3];
        Vector2 da = (1 - b) * (q[1] - q[0]) + b * (q[3] - q[2]);
        Vector2 db = (1 - a) * (q[2] - q[0]) + a * (q[3] - q[1]);
        if (c > 0 && c < 1) {
            const auto slope = [&](const std::array<double, 4>& v, bool along_a) {
                return along_a ? (1 - b) * (v[1] - v[0]) + b * (v[3] - v[2])
                               : (1 - a) * (v[2] - v[0]) + a * (v[3] - v[1]);
            };
            da = da - ((slope(cell.top, true) + c * slope(height, true)) / thickness) * drift;
            db = db - ((slope(cell.top, false) + c * slope(height, false)) / thickness) * drift;
        }
        const double determinant = cross(da, db);
        const double step_a = -cross(off, db) / determinant, step_b = -cross(da, off) / determinant;
        if (!std::isfinite(step_a) || !std::isfinite(step_b))
            return s;
        s.place.a = std::clamp(a + step_a, -1.0, 2.0);
        s.place.b = std::clamp(b + step_b, -1.0, 2.0);
        if (std::abs(step_a) + std::abs(step_b) < 1e-12) {
            s.converged = true;
            return s;
        }
    }
    return s;
}

} // namespace

struct CellLocator::Candidate {
    GridColumn column;
    ColumnNote note;
    Box box;
};

void CellLocator::Box::add(const Box& other)
{
    if (other.empty())
        return;
    if (empty()) {
        *this = other;
        return;
    }
    x0 = std::min(x0, other.x0);
    x1 = std::max(x1, other.x1);
    y0 = std::min(y0, other.y0);
    y1 = std::max(y1, other.y1);
}

CellLocator::Box CellLocator::make_box(double x0, double x1, double y0, double y1) const
{
    return {rounded_down(x0 - origin_x_), rounded_up(x1 - origin_x_), rounded_down(y0 - origin_y_),
            rounded_up(y1 - origin_y_)};
}

CellLocator::CellLocator(const CornerPointView& grid, const ProgressCheck& progress)
    : size_(grid.size), active_(grid.active), columns_(grid)
{
    const std::int64_t count = columns_.count();
    const std::int64_t blocks = (count + columns_a_block - 1) / columns_a_block;
    notes_.resize(static_cast<std::size_t>(count));
    constexpr double infinity = std::numeric_limits<double>::infinity();
    std::vector<std::array<double, 2>> ranges(static_cast<std::size_t>(blocks), {infinity, -infinity});
    for_blocks(blocks, partial_progress(progress, 0, 0.8), [&](std::int64_t block) {
        auto& range = ranges[static_cast<std::size_t>(block)];
        const std::int64_t end = std::min(count, (block + 1) * columns_a_block);
        for (std::int64_t column = block * columns_a_block; column < end; ++column)
            note_column(column, notes_[static_cast<std::size_t>(column)], range[0], range[1]);
    });
    lowest_ = infinity;
    highest_ = -infinity;
    for (const auto& [low, high] : ranges) {
        lowest_ = std::min(lowest_, low);
        highest_ = std::max(highest_, high);
    }
    build_boxes(partial_progress(progress, 0.8, 1));
}

// A margin below 0 marks a column without active cells.
void CellLocator::note_column(std::int64_t index, ColumnNote& note, double& lowest, double& highest) const
{
    const GridColumn column = columns_.column(index);
    const std::int64_t area = columns_.count();
    note.margin = -1;
    double back_down = 0, back_up = 0, tallest = 0;
    std::array<double, 4> deepest, shallowest, first{}, last{};
    deepest.fill(-std::numeric_limits<double>::infinity());
    shallowest.fill(std::numeric_limits<double>::infinity());
    bool finite = true;
    for (std::int64_t k = 0; k < columns_.layers(); ++k) {
        double low = std::numeric_limits<double>::infinity(), high = -low;
        bool cell_finite = true;
        for (int c = 0; c < 2; ++c) {
            for (std::size_t n = 0; n < 4; ++n) {
                const double depth = columns_.depth(column, k, n, c);
                cell_finite = cell_finite && std::isfinite(depth);
                deepest[n] = std::max(deepest[n], depth);
                shallowest[n] = std::min(shallowest[n], depth);
                back_down = std::max(back_down, deepest[n] - depth);
                back_up = std::max(back_up, depth - shallowest[n]);
                low = std::min(low, depth);
                high = std::max(high, depth);
                (k == 0 && c == 0 ? first : last)[n] = depth;
            }
        }
        finite = finite && cell_finite;
        if (active_[static_cast<std::size_t>(index + area * k)] && cell_finite) {
            note.margin = 0;
            tallest = std::max(tallest, high - low);
            lowest = std::min(lowest, low);
            highest = std::max(highest, high);
        }
    }
    note.upwards = back_up < back_down;
    note.slack = finite ? rounded_up(std::min(back_up, back_down)) : std::numeric_limits<float>::infinity();
    if (note.margin < 0)
        return;
    Vector2 mean;
    for (const PillarLine& line : column.pillars)
        mean = mean + 0.25 * Vector2{line.sx, line.sy};
    double spread = 0;
    Quad quad;
    const double middle = (bilinear(first, 0.5, 0.5) + bilinear(last, 0.5, 0.5)) / 2;
    for (std::size_t n = 0; n < 4; ++n) {
        const PillarLine& line = column.pillars[n];
        const Vector2 off = Vector2{line.sx, line.sy} - mean;
        spread = std::max(spread, std::sqrt(dot(off, off)));
        quad[n] = {line.x(middle), line.y(middle)};
    }
    // The place lies off by the mean, weighted by the place, of slope times depth difference; the differences sum to
    // nothing, so the slopes' mean does no harm.
    const double margin = spread * tallest;
    note.margin = margin <= parallel_margin * extent(quad) ? 0 : rounded_up(margin);
}

void CellLocator::build_boxes(const ProgressCheck& progress)
{
    check_progress(progress, 0);
    const auto corner_box = [&](std::int64_t index, std::array<double, 4>& range) {
        const GridColumn column = columns_.column(index);
        range = {std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity(),
                 std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity()};
        for (const PillarLine& line : column.pillars) {
            for (const double depth : {lowest_, highest_}) {
                const double x = line.x(depth), y = line.y(depth);
                if (!std::isfinite(x) || !std::isfinite(y))
                    return false;
                range = {std::min(range[0], x), std::max(range[1], x), std::min(range[2], y), std::max(range[3], y)};
            }
        }
        return true;
    };
    const std::int64_t count = columns_.count();
    std::array<double, 4> range{};
    // Near the grid, so that 32 bits are enough for the boxes.
    for (std::int64_t column = 0; column < count; ++column) {
        if (notes_[static_cast<std::size_t>(column)].margin >= 0 && corner_box(column, range)) {
            origin_x_ = (range[0] + range[1]) / 2;
            origin_y_ = (range[2] + range[3]) / 2;
            break;
        }
    }
    levels_.push_back({size_[0], size_[1], std::vector<Box>(static_cast<std::size_t>(count))});
    for_blocks((count + columns_a_block - 1) / columns_a_block, progress, [&](std::int64_t block) {
        const std::int64_t end = std::min(count, (block + 1) * columns_a_block);
        std::array<double, 4> r{};
        for (std::int64_t column = block * columns_a_block; column < end; ++column) {
            if (notes_[static_cast<std::size_t>(column)].margin < 0 || !corner_box(column, r))
                continue;
            const double more = box_growth * ((r[1] - r[0]) + (r[3] - r[2]));
            levels_[0].boxes[static_cast<std::size_t>(column)] =
                make_box(r[0] - more, r[1] + more, r[2] - more, r[3] + more);
        }
    });
    double sides = 0;
    std::int64_t boxes = 0;
    for (const Box& box : levels_[0].boxes) {
        if (!box.empty()) {
            sides += static_cast<double>(box.x1 - box.x0) + static_cast<double>(box.y1 - box.y0);
            ++boxes;
        }
    }
    reach_ = boxes ? 0.125 * sides / static_cast<double>(2 * boxes) : 0;
    while (levels_.back().ni * levels_.back().nj > 1) {
        const Level& below = levels_.back();
        Level level{(below.ni + 1) / 2, (below.nj + 1) / 2, {}};
        level.boxes.resize(static_cast<std::size_t>(level.ni * level.nj));
        for (std::int64_t j = 0; j < below.nj; ++j)
            for (std::int64_t i = 0; i < below.ni; ++i)
                level.boxes[static_cast<std::size_t>(i / 2 + level.ni * (j / 2))].add(
                    below.boxes[static_cast<std::size_t>(i + below.ni * j)]);
        levels_.push_back(std::move(level));
    }
}

void CellLocator::collect(const Box& area, std::vector<Candidate>& candidates) const
{
    candidates.clear();
    struct Node {
        std::size_t level;
        std::int64_t i, j;
    };
    // Four children of each of up to 32 levels wait at a time.
    std::array<Node, 128> stack;
    std::size_t waiting = 0;
    if (!levels_.empty() && !levels_.back().boxes.empty())
        stack[waiting++] = {levels_.size() - 1, 0, 0};
    while (waiting > 0) {
        const Node node = stack[--waiting];
        const Level& level = levels_[node.level];
        const std::int64_t at = node.i + level.ni * node.j;
        const Box& box = level.boxes[static_cast<std::size_t>(at)];
        if (box.empty() || !box.meets(area))
            continue;
        if (node.level == 0) {
            candidates.push_back({columns_.column(at), notes_[static_cast<std::size_t>(at)], box});
            continue;
        }
        const Level& below = levels_[node.level - 1];
        for (std::int64_t b = 0; b < 2; ++b)
            for (std::int64_t a = 0; a < 2; ++a)
                if (2 * node.i + a < below.ni && 2 * node.j + b < below.nj)
                    stack[waiting++] = {node.level - 1, 2 * node.i + a, 2 * node.j + b};
    }
}

std::int64_t CellLocator::find_in(const Candidate& candidate, const Point3& point, std::int64_t first_k,
                                  std::int64_t last_k) const
{
    const GridColumn& column = candidate.column;
    const double z = point[2];
    Quad section;
    for (std::size_t n = 0; n < 4; ++n)
        section[n] = {column.pillars[n].x(z) - point[0], column.pillars[n].y(z) - point[1]};
    const double margin = static_cast<double>(candidate.note.margin) + 2 * face_tolerance * extent(section);
    if (!may_hold_origin(section, margin))
        return -1;

    const double sign = candidate.note.upwards ? -1 : 1;
    const double slack = static_cast<double>(candidate.note.slack) + face_tolerance * (highest_ - lowest_) +
                         depth_rounding * std::abs(z);
    const std::int64_t area = columns_.count();
    const auto is_active = [&](std::int64_t k) {
        return active_[static_cast<std::size_t>(column.index + area * k)] != 0;
    };
    const auto depth_at = [&](std::int64_t k, int c, const Place& place) {
        return bilinear(columns_.depths(column, k, c), place.a, place.b);
    };
    const auto search_at = [&](const Place& place, const auto& holds) {
        return search_column(
            first_k, last_k, sign * z, slack, [&](std::int64_t k) { return sign * depth_at(k, 0, place); },
            [&](std::int64_t k) { return sign * depth_at(k, 1, place); }, holds);
    };

    const Places places = places_of_origin(section);
    if (candidate.note.margin == 0) {
        std::int64_t found = -1;
        for (int n = 0; n < places.inside; ++n) {
            const Place place = places.place[static_cast<std::size_t>(n)].clamped();
            const std::int64_t k = search_at(place, [&](std::int64_t cell) {
                return is_active(cell) && between(z, depth_at(cell, 0, place), depth_at(cell, 1, place));
            });
            found = k >= 0 && (found < 0 || k < found) ? k : found;
        }
        return found;
    }

    std::array<Vector2, 4> slopes;
    for (std::size_t n = 0; n < 4; ++n)
        slopes[n] = {column.pillars[n].sx, column.pillars[n].sy};
    const auto solve_in = [&](std::int64_t k, const Place& start) {
        CellOfPoint cell{section, slopes, columns_.depths(column, k, 0), columns_.depths(column, k, 1)};
        for (std::size_t n = 0; n < 4; ++n) {
            cell.top[n] -= z;
            cell.base[n] -= z;
        }
        Solution s = solve(cell, start);
        static constexpr std::array<Place, 5> others{{{0.5, 0.5}, {0.1, 0.1}, {0.9, 0.1}, {0.1, 0.9}, {0.9, 0.9}}};
        for (std::size_t n = 0; !s.converged && n < others.size(); ++n)
            s = solve(cell, others[n]);
        return s;
    };
    const auto holds_point = [&](const Solution& s) {
        return s.converged && s.place.inside() && between(z, s.top + z, s.base + z);
    };

    // The cell at the place that the section tells, then at the place that this cell tells: as a rule that is it.
    const Place start = places.count > 0 ? places.place[0].clamped() : Place{};
    if (candidate.note.slack == 0) {
        Place place = start;
        std::int64_t former = -1;
        for (int step = 0; step < 4; ++step) {
            const std::int64_t k = search_at(place, [&](std::int64_t cell) {
                const double top = depth_at(cell, 0, place), base = depth_at(cell, 1, place);
                return sign * base >= sign * z && top != base;
            });
            if (k < 0 || k == former)
                break;
            const Solution s = solve_in(k, place);
            // At its faces the cells above and below have a say.
            if (holds_point(s) && s.c > 1e-6 && s.c < 1 - 1e-6)
                return is_active(k) ? k : -1;
            if (!s.converged)
                break;
            place = s.place.clamped();
            former = k;
        }
    }
    const auto extreme = [&](std::int64_t k, int c, bool highest) {
        const auto depths = columns_.depths(column, k, c);
        double result = sign * depths[0];
        for (std::size_t n = 1; n < 4; ++n)
            result = highest ? std::max(result, sign * depths[n]) : std::min(result, sign * depths[n]);
        return result;
    };
    return search_column(
        first_k, last_k, sign * z, slack, [&](std::int64_t k) { return extreme(k, 0, false); },
        [&](std::int64_t k) { return extreme(k, 1, true); },
        [&](std::int64_t k) { return is_active(k) && holds_point(solve_in(k, start)); });
}

std::int64_t CellLocator::find(const Point3& point) const
{
    return find(point, 0, columns_.layers() - 1);
}

std::int64_t CellLocator::find(const Point3& point, std::int64_t first_k, std::int64_t last_k) const
{
    return Cursor(*this, false).find(point, first_k, last_k);
}

CellLocator::ArealPlace CellLocator::find_column(const Point3& point) const
{
    return Cursor(*this, false).find_column(point);
}

CellLocator::Cursor::Cursor(const CellLocator& locator, bool many)
    : locator_(locator), reach_(many ? locator.reach_ : 0)
{
}

CellLocator::Cursor::~Cursor() = default;

void CellLocator::Cursor::go_to(double x, double y)
{
    if (area_.holds(x, y))
        return;
    area_ = {rounded_down(x - reach_), rounded_up(x + reach_), rounded_down(y - reach_), rounded_up(y + reach_)};
    locator_.collect(area_, candidates_);
}

std::int64_t CellLocator::Cursor::find(const Point3& point)
{
    return find(point, 0, locator_.columns_.layers() - 1);
}

std::int64_t CellLocator::Cursor::find(const Point3& point, std::int64_t first_k, std::int64_t last_k)
{
    const double x = point[0] - locator_.origin_x_, y = point[1] - locator_.origin_y_;
    if (!std::isfinite(x) || !std::isfinite(y) || !std::isfinite(point[2]))
        return -1;
    go_to(x, y);
    std::int64_t found = -1;
    for (const Candidate& candidate : candidates_) {
        if (!candidate.box.holds(x, y))
            continue;
        const std::int64_t k = locator_.find_in(candidate, point, first_k, last_k);
        if (k < 0)
            continue;
        const std::int64_t cell = candidate.column.index + locator_.columns_.count() * k;
        found = found < 0 ? cell : std::min(found, cell);
    }
    return found;
}

CellLocator::ArealPlace CellLocator::Cursor::find_column(const Point3& point)
{
    ArealPlace result;
    const double x = point[0] - locator_.origin_x_, y = point[1] - locator_.origin_y_;
    if (!std::isfinite(x) || !std::isfinite(y) || !std::isfinite(point[2]))
        return result;
    go_to(x, y);
    const double depth = std::min(std::max(point[2], locator_.lowest_), locator_.highest_);
    for (const Candidate& candidate : candidates_) {
        if (!candidate.box.holds(x, y) || (result.column >= 0 && result.column < candidate.column.index))
            continue;
        Quad section;
        for (std::size_t n = 0; n < 4; ++n)
            section[n] = {candidate.column.pillars[n].x(depth) - point[0],
                          candidate.column.pillars[n].y(depth) - point[1]};
        const Places places = places_of_origin(section);
        if (places.inside > 0) {
            const Place place = places.place[0].clamped();
            result = {candidate.column.index, place.a, place.b};
        }
    }
    return result;
}

} // namespace Kelvane
