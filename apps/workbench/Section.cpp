#include "Section.h"

#include "lodex/volumes/model/CellGeometry.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace lodex {

namespace {

/// Where the corners of a section stand in the grid's arrays. Along the section runs J in an I section, I in a J
/// section.
struct Cut {
    std::int64_t along; // cells along the section
    std::int64_t pillar, pillar_step;
    std::int64_t cell, cell_step, cell_layer;
    std::int64_t corner, corner_step, corner_layer; // the step leads to the other side of the cell as well

    Cut(const GridModel& model, SectionAxis axis, std::int64_t index)
    {
        const auto [ni, nj, nk] = model.size;
        const bool across_i = axis == SectionAxis::I;
        along = across_i ? nj : ni;
        pillar = across_i ? index : index * (ni + 1);
        pillar_step = across_i ? ni + 1 : 1;
        cell = across_i ? index : index * ni;
        cell_step = across_i ? ni : 1;
        cell_layer = ni * nj;
        corner = across_i ? 2 * index : 2 * index * 2 * ni;
        corner_step = across_i ? 2 * ni : 1;
        corner_layer = 4 * ni * nj;
    }
    [[nodiscard]] std::int64_t cell_at(std::int64_t n, std::int64_t k) const
    {
        return cell + n * cell_step + k * cell_layer;
    }
    /// a: 0 at the start, 1 at the end of the cell; c: 0 at its top, 1 at its base.
    [[nodiscard]] std::size_t corner_at(std::int64_t n, int a, std::int64_t k, int c) const
    {
        return static_cast<std::size_t>(corner + (2 * n + a) * corner_step + (2 * k + c) * corner_layer);
    }
};

/// The pillars of a section laid out along one line.
class PillarLine {
public:
    PillarLine(const GridModel& model, const Cut& cut, double middle_depth)
    {
        const auto count = static_cast<std::size_t>(cut.along + 1);
        pillars_.resize(count);
        std::vector<Point3> feet(count);
        for (std::size_t n = 0; n < count; ++n) {
            const auto first =
                static_cast<std::size_t>(6 * (cut.pillar + static_cast<std::int64_t>(n) * cut.pillar_step));
            for (std::size_t i = 0; i < 6; ++i)
                pillars_[n].points[i] = model.coord[first + i];
            feet[n] = pillar_point(pillars_[n].points, middle_depth);
        }
        for (std::size_t n = 0; n < count; ++n) {
            Pillar& pillar = pillars_[n];
            pillar.foot = feet[n];
            if (n > 0)
                pillar.distance =
                    pillars_[n - 1].distance + std::hypot(feet[n][0] - feet[n - 1][0], feet[n][1] - feet[n - 1][1]);
            const Point3& before = feet[n > 0 ? n - 1 : n];
            const Point3& after = feet[std::min(n + 1, count - 1)];
            const double length = std::hypot(after[0] - before[0], after[1] - before[1]);
            if (length > 0)
                pillar.direction = {(after[0] - before[0]) / length, (after[1] - before[1]) / length};
        }
    }

    /// Distance along the section of the n-th pillar's point at a depth.
    [[nodiscard]] double distance(std::size_t n, double depth) const
    {
        const Pillar& pillar = pillars_[n];
        const Point3 point = pillar_point(pillar.points, depth);
        return pillar.distance + (point[0] - pillar.foot[0]) * pillar.direction[0] +
               (point[1] - pillar.foot[1]) * pillar.direction[1];
    }

private:
    struct Pillar {
        std::array<double, 6> points{};
        Point3 foot{};                     // at the section's middle depth
        std::array<double, 2> direction{}; // of the section, horizontal, unit length
        double distance = 0;
    };
    std::vector<Pillar> pillars_;
};

} // namespace

Section cut_section(const GridModel& model, SectionAxis axis, std::int64_t index)
{
    Section section;
    if (index < 0 || index >= model.size[static_cast<std::size_t>(axis)])
        return section;
    const Cut cut(model, axis, index);
    model.zcorn.visit([&](const auto depths) {
        float top = std::numeric_limits<float>::infinity(), base = -top;
        for (std::int64_t k = 0; k < model.size[2]; ++k) {
            for (std::int64_t n = 0; n < cut.along; ++n) {
                const std::int64_t cell = cut.cell_at(n, k);
                if (!model.active[static_cast<std::size_t>(cell)])
                    continue;
                SectionCell drawn{cell, {}, {}};
                const std::array corners{cut.corner_at(n, 0, k, 0), cut.corner_at(n, 1, k, 0),
                                         cut.corner_at(n, 1, k, 1), cut.corner_at(n, 0, k, 1)};
                for (std::size_t c = 0; c < 4; ++c)
                    drawn.depth[c] = static_cast<float>(depths[corners[c]]);
                if (!std::ranges::all_of(drawn.depth, [](float depth) { return std::isfinite(depth); }))
                    continue;
                const auto [least, greatest] = std::ranges::minmax(drawn.depth);
                top = std::min(top, least);
                base = std::max(base, greatest);
                drawn.distance = {static_cast<float>(n),
                                  static_cast<float>(n + 1)}; // pillars, until all depths are known
                section.cells.push_back(drawn);
            }
        }
        if (section.cells.empty())
            return;
        section.top = top;
        section.base = base;
    });
    if (section.cells.empty())
        return section;

    const PillarLine line(model, cut, (static_cast<double>(section.top) + static_cast<double>(section.base)) / 2);
    section.first_distance = std::numeric_limits<float>::infinity();
    section.last_distance = -section.first_distance;
    std::erase_if(section.cells, [&](SectionCell& drawn) {
        const auto start = static_cast<std::size_t>(drawn.distance[0]), end = start + 1;
        const std::array pillars{start, end, end, start};
        for (std::size_t c = 0; c < 4; ++c)
            drawn.distance[c] = static_cast<float>(line.distance(pillars[c], static_cast<double>(drawn.depth[c])));
        if (!std::ranges::all_of(drawn.distance, [](float distance) { return std::isfinite(distance); }))
            return true;
        const auto [least, greatest] = std::ranges::minmax(drawn.distance);
        section.first_distance = std::min(section.first_distance, least);
        section.last_distance = std::max(section.last_distance, greatest);
        return false;
    });
    if (section.cells.empty())
        return {};
    return section;
}

} // namespace lodex
