#include "StratigraphicMapper.h"

#include "MatchBase.h"
#include "UnitMatch.h"

#include <vector>

namespace Kelvane {

namespace {

const MapperRegistrar<StratigraphicMapper> registrar;

// A unit at one place of one column: how its thickness adds up from top to base. The sums count thickness, not depth,
// so that gaps between cells and grids that are counted from the base do no harm.
class UnitThickness {
public:
    explicit UnitThickness(const GridColumns& columns)
        : columns_(columns)
    {
    }

    // Keeps what it has when it is there already.
    void go_to(const GridColumn& column, double a, double b, const Lodex::IndexRange& k)
    {
        if (column.index == column_ && a == a_ && b == b_ && k == k_)
            return;
        column_ = column.index;
        a_ = a;
        b_ = b;
        k_ = k;
        sums_.assign(1, 0);
        for (std::int64_t layer = k.first; layer <= k.last; ++layer)
            sums_.push_back(sums_.back() + columns_.thickness(column, layer, a, b));
    }

    // Relative depth within the unit, 0 at its top and 1 at its base, of the local coordinate c of a cell. By number of
    // cells where the unit has no thickness.
    [[nodiscard]] double relative_depth(std::int64_t k, double c) const
    {
        const auto n = static_cast<std::size_t>(k - k_.first);
        if (!(sums_.back() > 0))
            return (static_cast<double>(n) + c) / static_cast<double>(k_.count());
        return (sums_[n] + c * (sums_[n + 1] - sums_[n])) / sums_.back();
    }
    // The cell at a relative depth, the upper one on a bound; -1 where the unit has no thickness.
    [[nodiscard]] std::int64_t layer_at(double relative_depth) const
    {
        constexpr double rounding = 1e-9;
        const double depth = (relative_depth - rounding) * sums_.back();
        for (std::size_t n = 1; n < sums_.size(); ++n)
            if (sums_[n] > sums_[n - 1] && sums_[n] >= depth)
                return k_.first + static_cast<std::int64_t>(n) - 1;
        return -1;
    }

private:
    const GridColumns& columns_;
    std::int64_t column_ = -1;
    double a_ = 0, b_ = 0;
    Lodex::IndexRange k_;
    std::vector<double> sums_;
};

// The cell of a grid below a point at a relative depth of a unit; -1 for none. Keeps the last column at hand.
class ColumnSearch {
public:
    explicit ColumnSearch(const CellLocator& locator)
        : cursor_(locator), columns_(locator.columns()), thickness_(columns_)
    {
    }

    [[nodiscard]] std::int64_t find(const Point3& point, const Lodex::IndexRange& unit, double relative_depth)
    {
        const CellLocator::ArealPlace place = cursor_.find_column(point);
        if (place.column < 0)
            return -1;
        if (place.column != column_.index)
            column_ = columns_.column(place.column);
        thickness_.go_to(column_, place.a, place.b, unit);
        const std::int64_t k = thickness_.layer_at(relative_depth);
        return k < 0 ? -1 : place.column + columns_.count() * k;
    }

private:
    CellLocator::Cursor cursor_;
    const GridColumns& columns_;
    GridColumn column_;
    UnitThickness thickness_;
};

class StratigraphicMatch final : public MatchBase {
public:
    StratigraphicMatch(const Lodex::MappingRequest& request, const ProgressCheck& progress)
        : MatchBase(request), units_(fine(), coarse())
    {
        if (!units_.warning().empty())
            warn(units_.warning());
        const CellLocator locator(coarse_view(), partial_progress(progress, 0, 0.15));
        const auto active = coarse().active_flags();
        const auto make_find = [&] {
            return [this, active, search = std::make_unique<ColumnSearch>(locator),
                    own = std::unique_ptr<UnitThickness>()](const GridColumns& columns, const GridColumn& column,
                                                            std::int64_t k) mutable -> std::int64_t {
                const UnitMatch::Pair* unit = units_.of_fine(k);
                if (!unit)
                    return -1;
                if (!own)
                    own = std::make_unique<UnitThickness>(columns);
                own->go_to(column, 0.5, 0.5, unit->fine);
                const std::int64_t cell =
                    search->find(columns.centre(column, k), unit->coarse, own->relative_depth(k, 0.5));
                return cell >= 0 && active[static_cast<std::size_t>(cell)] ? cell : -1;
            };
        };
        find_owners(make_find, "no cell of the first lies above or below an active cell of the same unit of the second",
                    partial_progress(progress, 0.15, 0.8));
        finish(request.fault_management, partial_progress(progress, 0.8, 1));
    }

private:
    void find_samples(std::int64_t coarse_cell, const std::array<int, 3>& n,
                      std::span<std::int64_t> fine_cells) const override
    {
        const std::int64_t k = coarse_cell / coarse_columns().count();
        const UnitMatch::Pair* unit = units_.of_coarse(k);
        if (!unit)
            return;
        const GridColumn column = coarse_columns().column(coarse_cell % coarse_columns().count());
        ColumnSearch search(fine_locator());
        UnitThickness own(coarse_columns());
        std::array<double, 3> local;
        for_samples(n, [&](std::int64_t s) {
            const Point3 centre = sample_centre(column, k, n, s, local);
            own.go_to(column, local[0], local[1], unit->coarse);
            fine_cells[static_cast<std::size_t>(s)] =
                search.find(centre, unit->fine, own.relative_depth(k, local[2]));
        });
    }

    UnitMatch units_;
};

} // namespace

MapperInfo StratigraphicMapper::info()
{
    return {.name = "stratigraphic",
            .family = Lodex::MetaSGridCellMapper::type().str(),
            .place = 1,
            .rule = "The column of the coarse grid that holds x and y of the fine cell's centre (where pillars lean: "
                    "its section at the centre's depth), and in it the cell of the same stratigraphic unit at the same "
                    "relative depth, the upper one on a bound. Relative depth is the thickness of the unit above the "
                    "centre over that of the whole unit: on the middle line of the fine column, and in the coarse "
                    "column at the centre's x and y. Units are matched by name.",
            .needs = "Two grids in the same areal coordinates, both with layers, at least one unit in common.",
            .samples = "The fine cell found by the same rule for the centre of the sample.",
            .fault_management = usual_fault_management(),
            .inactive_cells = usual_inactive_cells() + " Inactive cells count in the thickness of their unit."};
}

std::unique_ptr<Lodex::MatchedGrids> StratigraphicMapper::match(const Lodex::MappingRequest& request,
                                                                const Lodex::ProgressCheck& progress) const
{
    return std::make_unique<StratigraphicMatch>(request, progress);
}

} // namespace Kelvane
