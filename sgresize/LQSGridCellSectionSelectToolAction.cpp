#include "sgresize/LQSGridCellSectionSelectToolAction.h"

#include <Lodex/qtools/QtText.h>
#include <Lodex/utils/Logger.h>
#include <Lodex/volumes/SGrid.h>
#include <Lodex/volumes/SGridCube.h>
#include <Lodex/volumes/SGridSubset.h>

#include <algorithm>
#include <cmath>

namespace Kelvane {

using Lodex::Format;
using Lodex::Logger;
using Lodex::to_cstring;

LQSGridCellSectionSelectToolAction::LQSGridCellSectionSelectToolAction(Lodex::IntValue* value, int axis, bool one_shot)
    : value_(value), axis_(axis), one_shot_(one_shot)
{
}

Lodex::CString LQSGridCellSectionSelectToolAction::hint() const
{
    return to_cstring(tr("Select cell section by picking in the Camera"));
}

bool LQSGridCellSectionSelectToolAction::picked_cell(const Lodex::SGridPickInfo& pick, const Lodex::SGrid& grid,
                                                     std::array<long, 3>& numbers)
{
    const Lodex::SGridCube& cube = *grid.cube();
    const std::array<long, 3> cells{cube.nu() - 1, cube.nv() - 1, cube.nw() - 1};
    std::array<long, 3> index{};
    if (const Lodex::SGridSubset* subset = pick.subset()) {
        long ni = 0, nj = 0, nk = 0;
        subset->get_property_dimensions(grid.property_alignment(), ni, nj, nk);
        Lodex::SGridSubset::components(subset->index(), index[0], index[1], index[2], ni, nj);
    } else {
        std::array<double, 3> uvw{};
        if (!cube.local_coordinates(*pick.point(), uvw))
            return false;
        for (std::size_t a = 0; a < 3; ++a)
            index[a] = std::lround(std::floor(static_cast<double>(cells[a]) * uvw[a]));
    }
    // A node index or a local coordinate of 1 would give one cell too many.
    for (std::size_t a = 0; a < 3; ++a)
        numbers[a] = std::clamp(index[a] + 1, 1L, std::max(cells[a], 1L));
    return true;
}

void LQSGridCellSectionSelectToolAction::on_pick()
{
    const Lodex::Ref<LQSGridCellSectionSelectToolAction> keep(this); // the camera may hold the last reference
    auto* graphics = Lodex::GraphicLib::instance();
    const Lodex::GraphicSelection* selection = graphics->selection();
    if (!selection || !selection->object()) {
        Logger::error(Format(to_cstring(tr("Could not get the graphic object. Please pick another point.\n"))));
        return;
    }
    const Lodex::PickInfo* info = selection->pick_info();
    if (!info || !info->point()) {
        Logger::error(Format(to_cstring(tr("Could not retrieve Point coordinate. Please pick another point.\n"))));
        return;
    }
    const auto* pick = dynamic_cast<const Lodex::SGridPickInfo*>(info);
    const Lodex::SGrid* grid = pick ? pick->grid() : nullptr;
    std::array<long, 3> numbers{};
    if (!grid || !picked_cell(*pick, *grid, numbers)) {
        Logger::error(Format(to_cstring(tr("Could not retrieve Grid coordinate. Please pick another point.\n"))));
        return;
    }
    Logger::info(Format(to_cstring(tr("SGrid: %1 Selected Cell Section: %2 %3 %4\n")))
                     .arg(grid->name())
                     .arg(numbers[0])
                     .arg(numbers[1])
                     .arg(numbers[2]));
    if (axis_ >= 1 && axis_ <= 3) {
        value_->set(static_cast<int>(numbers[static_cast<std::size_t>(axis_ - 1)]));
        value_->set_changed();
        value_->notify();
    }
    if (one_shot_)
        graphics->reset_tool();
}

} // namespace Kelvane
