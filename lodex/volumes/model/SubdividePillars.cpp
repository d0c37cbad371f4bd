#include "SubdividePillars.h"

#include "CellGeometry.h"
#include "ParallelBlocks.h"

#include <algorithm>
#include <array>
#include <limits>

namespace lodex {

EdgePlace::EdgePlace(const PillarRow& first, std::int64_t p, const PillarRow& second, std::int64_t p2,
                     const PillarRow& made, std::int64_t q, double share)
    : z_(first.z0()[p])
    , sx_(first.sx()[p])
    , sy_(first.sy()[p])
    , share_(share)
{
    const auto same = [](const PillarRow& a, std::int64_t m, const PillarRow& b, std::int64_t n) {
        return a.x0()[m] == b.x0()[n] && a.y0()[m] == b.y0()[n] && a.z0()[m] == b.z0()[n] && a.sx()[m] == b.sx()[n] &&
               a.sy()[m] == b.sy()[n];
    };
    if (same(first, p, second, p2))
        where_ = Where::Between;
    else if (same(second, p2, made, q))
        where_ = Where::Second;
    else if (same(first, p, made, q))
        where_ = Where::First;
    dx_ = second.x0()[p2] + (z_ - second.z0()[p2]) * second.sx()[p2] - first.x0()[p];
    dy_ = second.y0()[p2] + (z_ - second.z0()[p2]) * second.sy()[p2] - first.y0()[p];
    dsx_ = second.sx()[p2] - sx_;
    dsy_ = second.sy()[p2] - sy_;
    rx_ = made.x0()[q] + (z_ - made.z0()[q]) * made.sx()[q] - first.x0()[p];
    ry_ = made.y0()[q] + (z_ - made.z0()[q]) * made.sy()[q] - first.y0()[p];
    rsx_ = made.sx()[q] - sx_;
    rsy_ = made.sy()[q] - sy_;
}

namespace {

using Pillar = std::array<double, 6>;

double between(double a, double b, double share)
{
    return a + share * (b - a);
}

bool sloped(const Pillar& p)
{
    const double height = p[5] - p[2];
    return height != 0 && std::isfinite((p[3] - p[0]) / height) && std::isfinite((p[4] - p[1]) / height);
}

// The pillar that stands at this share of the way from p to q at every depth. What stands at the ends of a pillar's
// line is the file's choice: the new one has its ends between theirs.
Pillar pillar_between(const Pillar& p, Pillar q, double share)
{
    if (share == 0)
        return p;
    if (share == 1)
        return q;
    const bool p_sloped = sloped(p), q_sloped = sloped(q);
    if (!p_sloped && !q_sloped) {
        const double x = between(p[0], q[0], share), y = between(p[1], q[1], share);
        return {x, y, between(p[2], q[2], share), x, y, between(p[5], q[5], share)};
    }
    if (p_sloped && q_sloped && (p[5] > p[2]) != (q[5] > q[2]))
        q = {q[3], q[4], q[5], q[0], q[1], q[2]};
    const auto end = [&](std::size_t depth) -> Point3 {
        const double z = !p_sloped ? q[depth] : !q_sloped ? p[depth] : between(p[depth], q[depth], share);
        const Point3 a = pillar_point(p, z), b = pillar_point(q, z);
        return {between(a[0], b[0], share), between(a[1], b[1], share), z};
    };
    const Point3 top = end(2), base = end(5);
    return {top[0], top[1], top[2], base[0], base[1], base[2]};
}

// Highest and lowest corner at two pillars: of the active cells, or of all where none is.
struct DepthSpan {
    double low = std::numeric_limits<double>::infinity();
    double high = -std::numeric_limits<double>::infinity();
    bool active = false;

    void add(double depth, bool of_active)
    {
        if (of_active && !active)
            *this = {depth, depth, true};
        if (of_active != active)
            return;
        low = depth < low ? depth : low;
        high = depth > high ? depth : high;
    }
};

// Pillar of boundary n where the boundaries are given by their widths.
Pillar pillar_at_width(const Pillar& p, const Pillar& q, const SectionLayout& layout, std::int64_t n, DepthSpan span,
                       double resolution)
{
    if (!std::isfinite(span.low) || !std::isfinite(span.high))
        span.low = span.high = (p[2] + p[5] + q[2] + q[5]) / 4;
    const auto share_at = [&](double z) {
        const Point3 a = pillar_point(p, z), b = pillar_point(q, z);
        const double scale = std::max({std::abs(a[0]), std::abs(a[1]), std::abs(b[0]), std::abs(b[1])});
        return layout.share(n, std::hypot(b[0] - a[0], b[1] - a[1]), resolution * scale);
    };
    const auto way_at = [&](double z) -> std::array<double, 2> {
        const Point3 a = pillar_point(p, z), b = pillar_point(q, z);
        return {b[0] - a[0], b[1] - a[1]};
    };
    // Ends too near to each other would make the slope from rounding errors; pillars that cross between the two depths
    // have no side to count from at one of them.
    constexpr double least_height = 1e-3, same_share = 1e-9;
    const double height = std::max(std::abs(p[5] - p[2]), std::abs(q[5] - q[2]));
    const auto high_way = way_at(span.low), low_way = way_at(span.high);
    if (span.high - span.low <= least_height * height || high_way[0] * low_way[0] + high_way[1] * low_way[1] < 0)
        return pillar_between(p, q, share_at(between(span.low, span.high, 0.5)));
    const double high_share = share_at(span.low), low_share = share_at(span.high);
    if (std::abs(high_share - low_share) <= same_share)
        return pillar_between(p, q, high_share);
    const auto point = [&](double z, double share) -> Point3 {
        const Point3 a = pillar_point(p, z), b = pillar_point(q, z);
        return {between(a[0], b[0], share), between(a[1], b[1], share), z};
    };
    const Point3 top = point(span.low, high_share), base = point(span.high, low_share);
    return {top[0], top[1], top[2], base[0], base[1], base[2]};
}

class PillarMaker {
public:
    PillarMaker(const GridModel& source, int axis, const AxisDivision& division)
        : source_(source)
        , axis_(axis)
        , division_(division)
        , measures_(division.measures())
        , resolution_(source.coord.is_double() ? 0x1p-48 : 0x1p-23)
        , row_(axis == 0 ? division.size() + 1 : source.size[0] + 1)
    {
        const std::int64_t lines = axis == 1 ? division.size() + 1 : source.size[1] + 1;
        out_.resize(static_cast<std::size_t>(6 * row_ * lines));
    }

    // Along I: the pillars of line j. Along J: those of line j and of the new lines between it and the next one.
    void run(std::int64_t j)
    {
        const std::int64_t ni = source_.size[0];
        if (axis_ == 0) {
            const std::vector<DepthSpan> spans = measures_ ? spans_along_i(j) : std::vector<DepthSpan>();
            for (std::int64_t i = 0; i <= ni; ++i) {
                const Pillar p = old_pillar(i, j);
                put(division_.start(i), j, p);
                if (i < ni && division_.count(i) > 1)
                    fill(division_.layout(i), p, old_pillar(i + 1, j), spans, i,
                         [&](std::int64_t n, const Pillar& made) { put(division_.start(i) + n, j, made); });
            }
            return;
        }
        const bool divided = j < source_.size[1] && division_.count(j) > 1;
        const bool measured = divided && !division_.layout(j).fixed();
        const std::vector<DepthSpan> spans = measured ? spans_along_j(j) : std::vector<DepthSpan>();
        for (std::int64_t i = 0; i <= ni; ++i) {
            const Pillar p = old_pillar(i, j);
            put(i, division_.start(j), p);
            if (divided)
                fill(division_.layout(j), p, old_pillar(i, j + 1), spans, i,
                     [&](std::int64_t n, const Pillar& made) { put(i, division_.start(j) + n, made); });
        }
    }

    [[nodiscard]] std::vector<double> take() { return std::move(out_); }

private:
    template <class Put>
    void fill(const SectionLayout& layout, const Pillar& p, const Pillar& q, const std::vector<DepthSpan>& spans,
              std::int64_t place, const Put& put_made) const
    {
        for (std::int64_t n = 1; n < layout.count(); ++n)
            put_made(n, layout.fixed()
                            ? pillar_between(p, q, layout.share(n))
                            : pillar_at_width(p, q, layout, n, spans[static_cast<std::size_t>(place)], resolution_));
    }

    [[nodiscard]] Pillar old_pillar(std::int64_t i, std::int64_t j) const
    {
        Pillar pillar;
        const auto first = static_cast<std::size_t>(6 * (i + (source_.size[0] + 1) * j));
        for (std::size_t n = 0; n < 6; ++n)
            pillar[n] = source_.coord[first + n];
        return pillar;
    }

    void put(std::int64_t i, std::int64_t j, const Pillar& pillar)
    {
        std::copy_n(pillar.begin(), 6, out_.begin() + 6 * (i + row_ * j));
    }

    // For each cell of a row, over the corners that stand on line j.
    [[nodiscard]] std::vector<DepthSpan> spans_along_i(std::int64_t j) const
    {
        const GridSize& size = source_.size;
        std::vector<DepthSpan> spans(static_cast<std::size_t>(size[0]));
        source_.zcorn.visit([&](auto depths) {
            for (std::int64_t k = 0; k < size[2]; ++k)
                for (int b = 0; b < 2; ++b) {
                    const std::int64_t row = j - b;
                    if (row < 0 || row >= size[1])
                        continue;
                    const std::uint8_t* const active = source_.active.data() + source_.cell_index(0, row, k);
                    const auto* const top = depths.data() + depth_offset(size, 0, row, k, b, 0);
                    const auto* const base = depths.data() + depth_offset(size, 0, row, k, b, 1);
                    for (std::int64_t i = 0; i < size[0]; ++i)
                        for (const auto depth : {top[2 * i], top[2 * i + 1], base[2 * i], base[2 * i + 1]})
                            spans[static_cast<std::size_t>(i)].add(depth, active[i] != 0);
                }
        });
        return spans;
    }

    // For each pillar of line j and the one behind it, over the cells of section j at them.
    [[nodiscard]] std::vector<DepthSpan> spans_along_j(std::int64_t j) const
    {
        const GridSize& size = source_.size;
        std::vector<DepthSpan> spans(static_cast<std::size_t>(size[0] + 1));
        source_.zcorn.visit([&](auto depths) {
            for (std::int64_t k = 0; k < size[2]; ++k) {
                const std::uint8_t* const active = source_.active.data() + source_.cell_index(0, j, k);
                for (int side = 0; side < 4; ++side) {
                    const auto* const row = depths.data() + depth_offset(size, 0, j, k, side & 1, side >> 1);
                    for (std::int64_t i = 0; i < size[0]; ++i) {
                        spans[static_cast<std::size_t>(i)].add(row[2 * i], active[i] != 0);
                        spans[static_cast<std::size_t>(i + 1)].add(row[2 * i + 1], active[i] != 0);
                    }
                }
            }
        });
        return spans;
    }

    const GridModel& source_;
    int axis_;
    const AxisDivision& division_;
    bool measures_;
    double resolution_;
    std::int64_t row_;
    std::vector<double> out_;
};

} // namespace

RealArray subdivided_pillars(const GridModel& source, int axis, const AxisDivision& division,
                             const ProgressCheck& progress)
{
    if (axis == 2 || division.size() == division.old_size())
        return source.coord;
    PillarMaker maker(source, axis, division);
    for_blocks(source.size[1] + 1, progress, [&](std::int64_t j) { maker.run(j); });
    return RealArray(maker.take());
}

} // namespace lodex
