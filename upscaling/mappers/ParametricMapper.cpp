#include "ParametricMapper.h"

#include "MatchBase.h"

#include <Lodex/geobase/GeobaseLib.h>

#include <algorithm>
#include <cmath>
#include <optional>
#include <stdexcept>

namespace Kelvane {

namespace {

using Lodex::IndexRange;
using Lodex::IndexRelation;

const MapperRegistrar<ParametricMapper> registrar;

std::string names_of(const Lodex::SGrid& fine, const Lodex::SGrid& coarse)
{
    return "\"" + fine.name().str() + "\" and \"" + coarse.name().str() + "\"";
}

// Throws unless the relation gives every index of `grid` a range of `source`.
void check_sizes(const IndexRelation& relation, const GridSize& grid, const GridSize& source, const std::string& names)
{
    for (std::size_t axis = 0; axis < 3; ++axis) {
        const bool fits = static_cast<std::int64_t>(relation[axis].size()) == grid[axis] &&
                          std::ranges::all_of(relation[axis], [&](const IndexRange& range) {
                              return range.first >= 0 && range.first <= range.last && range.last < source[axis];
                          });
        if (!fits)
            throw std::runtime_error(std::string("the record that relates the grids ") + names +
                                     " does not fit their sizes along " + "IJK"[axis]);
    }
}

// For every index of the source the range of indices that came from it; {0, -1} where none did.
IndexRelation inverse(const IndexRelation& relation, const GridSize& source)
{
    IndexRelation result;
    for (std::size_t axis = 0; axis < 3; ++axis) {
        result[axis].assign(static_cast<std::size_t>(source[axis]), {0, -1});
        for (std::size_t index = 0; index < relation[axis].size(); ++index) {
            const auto at = static_cast<std::int64_t>(index);
            for (std::int64_t n = relation[axis][index].first; n <= relation[axis][index].last; ++n) {
                IndexRange& range = result[axis][static_cast<std::size_t>(n)];
                range = range.last < 0 ? IndexRange{at, at} : IndexRange{range.first, at};
            }
        }
    }
    return result;
}

struct Interval {
    double low = 0, high = 0;
};

// Where each index lies on the axis of the source: from the start of its first index to the end of its last one;
// indices that came from the same source index divide it evenly.
std::vector<Interval> intervals(const std::vector<IndexRange>& ranges)
{
    std::vector<Interval> result;
    for (std::size_t first = 0; first < ranges.size();) {
        std::size_t end = first + 1;
        while (end < ranges.size() && ranges[end] == ranges[first])
            ++end;
        const auto low = static_cast<double>(ranges[first].first), length = static_cast<double>(ranges[first].count());
        const auto parts = static_cast<double>(end - first);
        for (std::size_t n = 0; n < end - first; ++n)
            result.push_back({low + length * static_cast<double>(n) / parts,
                              low + length * static_cast<double>(n + 1) / parts});
        first = end;
    }
    return result;
}

// Through a common source, along one axis: a fine index belongs to the coarse index that holds its middle, to the lower
// one on a bound; a coarse index without any takes the fine index that holds its own middle.
std::vector<IndexRange> through(const std::vector<IndexRange>& fine, const std::vector<IndexRange>& coarse)
{
    constexpr double rounding = 1e-9;
    const auto fine_parts = intervals(fine), coarse_parts = intervals(coarse);
    const auto holder = [](const std::vector<Interval>& parts, const Interval& part) {
        const double middle = (part.low + part.high) / 2;
        const auto found = std::ranges::find_if(parts, [middle](const Interval& other) {
            return middle >= other.low - rounding && middle <= other.high + rounding;
        });
        return found == parts.end() ? std::int64_t{-1} : static_cast<std::int64_t>(found - parts.begin());
    };
    std::vector<IndexRange> result(coarse.size(), {0, -1});
    for (std::size_t n = 0; n < fine_parts.size(); ++n) {
        const auto index = static_cast<std::int64_t>(n);
        if (const std::int64_t owner = holder(coarse_parts, fine_parts[n]); owner >= 0) {
            IndexRange& range = result[static_cast<std::size_t>(owner)];
            range = range.last < 0 ? IndexRange{index, index} : IndexRange{range.first, index};
        }
    }
    for (std::size_t n = 0; n < coarse_parts.size(); ++n)
        if (result[n].last < 0)
            if (const std::int64_t index = holder(fine_parts, coarse_parts[n]); index >= 0)
                result[n] = {index, index};
    return result;
}

struct Relation {
    IndexRelation boxes;
    std::string through; // name of the grid that both came from; empty: one came from the other
};

// The nearest way from the coarse indices to the fine ones.
Relation find_relation(const Lodex::SGrid& fine, const Lodex::SGrid& coarse)
{
    const std::string names = names_of(fine, coarse);
    const GridSize fine_size = view_of(fine).size, coarse_size = view_of(coarse).size;
    if (&fine == &coarse) {
        IndexRelation same;
        for (std::size_t axis = 0; axis < 3; ++axis)
            for (std::int64_t n = 0; n < fine_size[axis]; ++n)
                same[axis].push_back({n, n});
        return {same, {}};
    }
    if (auto relation = coarse.relation_to(fine)) {
        check_sizes(*relation, coarse_size, fine_size, names);
        return {std::move(*relation), {}};
    }
    if (const auto relation = fine.relation_to(coarse)) {
        check_sizes(*relation, fine_size, coarse_size, names);
        return {inverse(*relation, coarse_size), {}};
    }
    // A grid lies behind those it was made from, so the last of the common sources is the nearest one.
    const auto grids = Lodex::GeobaseLib::instance()->objects(Lodex::SGrid::static_type_id_());
    for (auto it = grids.rbegin(); it != grids.rend(); ++it) {
        const auto& source = static_cast<const Lodex::SGrid&>(**it);
        if (&source == &fine || &source == &coarse)
            continue;
        const auto of_fine = fine.relation_to(source);
        if (!of_fine)
            continue;
        const auto of_coarse = coarse.relation_to(source);
        if (!of_coarse)
            continue;
        const GridSize size = view_of(source).size;
        check_sizes(*of_fine, fine_size, size, names);
        check_sizes(*of_coarse, coarse_size, size, names);
        Relation result{{}, source.name().str()};
        for (std::size_t axis = 0; axis < 3; ++axis)
            result.boxes[axis] = through((*of_fine)[axis], (*of_coarse)[axis]);
        return result;
    }
    throw std::runtime_error("the grids " + names +
                             " have no relation: neither was made from the other by merging or subdividing, nor both "
                             "from a third grid of the project");
}

// Cell indices through the records.
class ParametricMatch final : public MatchBase {
public:
    ParametricMatch(const Lodex::MappingRequest& request, const ProgressCheck& progress)
        : MatchBase(request)
    {
        check_progress(progress, 0);
        Relation relation = find_relation(fine(), coarse());
        boxes_ = relation.boxes;
        set_boxes(std::move(relation.boxes));
        if (!relation.through.empty())
            warn("the grids " + names_of(fine(), coarse()) + " are matched through grid \"" + relation.through +
                 "\", from which both were made");
        finish(request.fault_management, progress);
    }

private:
    void find_samples(std::int64_t coarse_cell, const std::array<int, 3>& n,
                      std::span<std::int64_t> fine_cells) const override
    {
        const GridSize& size = coarse_view().size;
        const std::array<IndexRange, 3> box{boxes_[0][static_cast<std::size_t>(coarse_cell % size[0])],
                                            boxes_[1][static_cast<std::size_t>(coarse_cell / size[0] % size[1])],
                                            boxes_[2][static_cast<std::size_t>(coarse_cell / size[0] / size[1])]};
        if (std::ranges::any_of(box, [](const IndexRange& range) { return range.count() < 1; }))
            return;
        for (std::size_t s = 0; s < fine_cells.size(); ++s) {
            const auto sample = static_cast<std::int64_t>(s);
            const std::array<std::int64_t, 3> at{sample % n[0], sample / n[0] % n[1], sample / n[0] / n[1]};
            std::array<std::int64_t, 3> index;
            // The index that holds the middle of the sample, (2 s + 1) / (2 n) of the range; the lower one on a bound.
            for (std::size_t axis = 0; axis < 3; ++axis)
                index[axis] = box[axis].first + ((2 * at[axis] + 1) * box[axis].count() - 1) / (2 * n[axis]);
            fine_cells[s] = fine_view().cell_index(index[0], index[1], index[2]);
        }
    }

    IndexRelation boxes_;
};

} // namespace

MapperInfo ParametricMapper::info()
{
    return {.name = "parametric",
            .family = Lodex::MetaSGridCellMapper::type().str(),
            .place = 0,
            .rule = "The fine cells of the index ranges along I, J and K that the records of merging and subdividing "
                    "give, through any number of steps and through grids that are gone. Where the coarse grid was "
                    "subdivided into the fine one the record is read backwards. Two grids made from a third one of the "
                    "project are matched on its axes: a fine index belongs to the coarse index that holds its middle "
                    "(the lower one on a bound), a coarse index left without any takes the fine index that holds its "
                    "own middle.",
            .needs = "A record that leads from one grid to the other, or from both to a third one of the project.",
            .samples = "The fine cell of the sample's index, by an even division of the index ranges.",
            .fault_management = usual_fault_management(),
            .inactive_cells = usual_inactive_cells()};
}

std::unique_ptr<Lodex::MatchedGrids> ParametricMapper::match(const Lodex::MappingRequest& request,
                                                             const Lodex::ProgressCheck& progress) const
{
    return std::make_unique<ParametricMatch>(request, progress);
}

} // namespace Kelvane
