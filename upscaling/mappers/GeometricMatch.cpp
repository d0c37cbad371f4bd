#include "GeometricMatch.h"

namespace Kelvane {

GeometricMatch::GeometricMatch(const Lodex::MappingRequest& request, bool within_units, const ProgressCheck& progress)
    : MatchBase(request)
{
    if (within_units) {
        units_.emplace(fine(), coarse());
        if (!units_->warning().empty())
            warn(units_->warning());
    }
    const CellLocator locator(coarse_view(), partial_progress(progress, 0, 0.15));
    const auto make_find = [&] {
        return [this, cursor = std::make_unique<CellLocator::Cursor>(locator)](
                   const GridColumns& columns, const GridColumn& column, std::int64_t k) -> std::int64_t {
            if (!units_)
                return cursor->find(columns.centre(column, k));
            const UnitMatch::Pair* unit = units_->of_fine(k);
            return unit ? cursor->find(columns.centre(column, k), unit->coarse.first, unit->coarse.last) : -1;
        };
    };
    find_owners(make_find,
                units_ ? "no cell centre of the first lies in an active cell of the same unit of the second"
                       : "no cell centre of the first lies in an active cell of the second",
                partial_progress(progress, 0.15, 0.8));
    finish(request.fault_management, partial_progress(progress, 0.8, 1));
}

void GeometricMatch::find_samples(std::int64_t coarse_cell, const std::array<int, 3>& n,
                                  std::span<std::int64_t> fine_cells) const
{
    const std::int64_t k = coarse_cell / coarse_columns().count();
    Lodex::IndexRange range{0, fine_view().size[2] - 1};
    if (units_) {
        const UnitMatch::Pair* unit = units_->of_coarse(k);
        if (!unit)
            return;
        range = unit->fine;
    }
    const GridColumn column = coarse_columns().column(coarse_cell % coarse_columns().count());
    CellLocator::Cursor cursor(fine_locator());
    std::array<double, 3> local;
    for_samples(n, [&](std::int64_t s) {
        fine_cells[static_cast<std::size_t>(s)] =
            cursor.find(sample_centre(column, k, n, s, local), range.first, range.last);
    });
}

} // namespace Kelvane
