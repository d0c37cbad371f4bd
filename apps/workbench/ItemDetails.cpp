#include "ItemDetails.h"

#include "NumberTexts.h"
#include "lodex/utils/Numbers.h"
#include "lodex/volumes/ActivityModel.h"
#include "lodex/volumes/CornerPointGrid.h"
#include "lodex/volumes/model/PropertyTools.h"
#include "lodex/volumes/model/Summation.h"

#include <Lodex/qtools/QtText.h>

#include <QHeaderView>
#include <QTimer>

#include <algorithm>
#include <cmath>
#include <limits>

namespace lodex {

namespace {

constexpr double largest_grouped = 1e12; // larger volumes are written with an exponent
constexpr std::size_t most_codes = 50;

QString volume_text(double volume, const CornerPointGrid& grid)
{
    const QString unit = length_unit_text(grid);
    const QString number = volume < largest_grouped ? grouped(static_cast<std::int64_t>(std::llround(volume)))
                                                    : QString::fromStdString(format_general(volume, 6));
    return unit.isEmpty() ? number : number + QChar(0xa0) + unit + QChar(0xb3);
}

QString number_text(double number)
{
    return QString::fromStdString(format_general(number, 6));
}

} // namespace

ItemDetails::ItemDetails(QWidget* parent) : QTreeWidget(parent), soon_(new QTimer(this))
{
    setObjectName("itemDetails");
    setAccessibleName(tr("Details"));
    setToolTip(tr("Details of the selected object"));
    setHeaderLabels({tr("What"), tr("Value")});
    setRootIsDecorated(false);
    setUniformRowHeights(true);
    setAlternatingRowColors(true);
    header()->setSectionResizeMode(0, QHeaderView::ResizeToContents);
    soon_->setSingleShot(true);
    soon_->setInterval(0);
    connect(soon_, &QTimer::timeout, this, &ItemDetails::refresh);
}

void ItemDetails::show_item(const TreeItem& item)
{
    item_ = item;
    clear(); // nothing stale while the new numbers are on their way
    soon_->start();
}

void ItemDetails::add(const QString& what, const QString& value)
{
    auto* row = new QTreeWidgetItem(this, {what, value});
    row->setToolTip(1, value);
}

void ItemDetails::refresh()
{
    clear();
    const CornerPointGrid* const grid = find_grid(item_.grid.toStdString());
    if (!grid)
        return;
    switch (item_.kind) {
    case TreeItem::Kind::Property: show_property(*grid, item_.name); break;
    case TreeItem::Kind::Region: show_region(*grid, item_.name); break;
    case TreeItem::Kind::Unit: show_unit(*grid, item_.number); break;
    case TreeItem::Kind::Activity: show_activity(*grid, item_.number); break;
    case TreeItem::Kind::None: break;
    default: show_grid(*grid); break;
    }
}

void ItemDetails::show_grid(const CornerPointGrid& grid)
{
    const GridModel& model = grid.with({GridArray::ActiveFlags});
    double volume = 0;
    CompensatedSum sum;
    const std::span<const double> volumes = grid.bulk_volumes();
    for (std::size_t cell = 0; cell < volumes.size(); ++cell) {
        if (model.active[cell])
            sum.add(volumes[cell]);
    }
    volume = sum.value();
    add(tr("Grid"), Lodex::to_qstring(grid.name()));
    add(tr("I × J × K"), tr("%1 × %2 × %3").arg(model.size[0]).arg(model.size[1]).arg(model.size[2]));
    add(tr("Cells"), grouped(model.cells()));
    add(tr("Active cells"), grouped(std::ranges::count(model.active, 1)));
    add(tr("Bulk volume, active"), volume_text(volume, grid));
    add(tr("Properties"), QString::number(model.properties.size()));
    add(tr("Regions"), QString::number(model.regions.size()));
    add(tr("Units"), QString::number(model.layers.size()));
    if (!model.faults.empty())
        add(tr("Fault segments"), QString::number(model.faults.size()));
    if (!model.frame.grid_units.empty()) {
        const QString unit = length_unit_text(grid); // else the file's own word
        add(tr("Length unit"), unit.isEmpty() ? QString::fromStdString(model.frame.grid_units).toLower() : unit);
    }
    for (const DerivationRecord& record : model.records) {
        add(tr("Made from"),
            tr("%1 (%2 × %3 × %4)")
                .arg(QString::fromStdString(record.source_name), QString::number(record.source_size[0]),
                     QString::number(record.source_size[1]), QString::number(record.source_size[2])));
    }
}

void ItemDetails::show_property(const CornerPointGrid& grid, const QString& name)
{
    const GridModel& model = grid.model();
    const PropertyData* const property = model.find_property(name.toStdString());
    if (!property)
        return;
    add(tr("Property"), name);
    add(tr("Grid"), Lodex::to_qstring(grid.name()));
    add(tr("Kind"), property->discrete() ? tr("discrete") : tr("continuous"));
    if (!property->unit.empty())
        add(tr("Unit of measure"), QString::fromStdString(property->unit));
    if (property->on_points) {
        add(tr("Values"), tr("on nodes"));
        return;
    }
    std::int64_t count = 0;
    double least = std::numeric_limits<double>::infinity(), largest = -least;
    CompensatedSum sum;
    std::map<std::int32_t, std::int64_t> codes;
    for (std::size_t cell = 0; cell < model.active.size(); ++cell) {
        if (!model.active[cell])
            continue;
        const double value = value_or_nan(*property, cell);
        if (std::isnan(value))
            continue;
        ++count;
        least = std::min(least, value);
        largest = std::max(largest, value);
        sum.add(value);
        if (property->discrete())
            ++codes[static_cast<std::int32_t>(value)];
    }
    add(tr("Active cells with a value"), grouped(count));
    if (count == 0)
        return;
    if (!property->discrete()) {
        add(tr("Minimum"), number_text(least));
        add(tr("Mean"), number_text(sum.value() / static_cast<double>(count)));
        add(tr("Maximum"), number_text(largest));
        return;
    }
    add(tr("Codes"), QString::number(codes.size()));
    std::size_t shown = 0;
    for (const auto& [code, cells] : codes) {
        if (++shown > most_codes)
            break;
        const auto text = property->code_names.find(code);
        add(text == property->code_names.end()
                ? QString::number(code)
                : QStringLiteral("%1 (%2)").arg(QString::fromStdString(text->second)).arg(code),
            tr("%1 cells").arg(grouped(cells)));
    }
}

void ItemDetails::show_region(const CornerPointGrid& grid, const QString& name)
{
    const GridModel& model = grid.model();
    const RegionData* const region = model.find_region(name.toStdString());
    if (!region)
        return;
    std::int64_t cells = 0, active = 0;
    CompensatedSum volume;
    const std::span<const double> volumes = grid.bulk_volumes();
    for (std::size_t cell = 0; cell < region->flags.size(); ++cell) {
        if (!region->flags[cell])
            continue;
        ++cells;
        if (model.active[cell]) {
            ++active;
            volume.add(volumes[cell]);
        }
    }
    add(tr("Region"), name);
    add(tr("Grid"), Lodex::to_qstring(grid.name()));
    add(tr("Comes from"), region->model ? tr("the model") : tr("the user"));
    add(tr("Cells"), grouped(cells));
    add(tr("Active cells"), grouped(active));
    add(tr("Bulk volume, active"), volume_text(volume.value(), grid));
}

void ItemDetails::show_unit(const CornerPointGrid& grid, int number)
{
    const GridModel& model = grid.with({GridArray::ActiveFlags});
    if (number < 0 || static_cast<std::size_t>(number) >= model.layers.size())
        return;
    std::int64_t top = 0;
    for (int n = 0; n < number; ++n)
        top += model.layers[static_cast<std::size_t>(n)].nb_k_cells;
    const LayerData& layer = model.layers[static_cast<std::size_t>(number)];
    add(tr("Unit"), QString::fromStdString(layer.unit));
    add(tr("Grid"), Lodex::to_qstring(grid.name()));
    add(tr("K layers"), tr("%1 to %2").arg(top + 1).arg(top + layer.nb_k_cells));
    const std::int64_t plane = model.size[0] * model.size[1];
    std::int64_t active = 0;
    CompensatedSum volume;
    const std::span<const double> volumes = grid.bulk_volumes();
    const auto last = static_cast<std::size_t>(std::min(top + layer.nb_k_cells, model.size[2]) * plane);
    for (auto cell = static_cast<std::size_t>(top * plane); cell < last; ++cell) {
        if (model.active[cell]) {
            ++active;
            volume.add(volumes[cell]);
        }
    }
    add(tr("Active cells"), grouped(active));
    add(tr("Bulk volume, active"), volume_text(volume.value(), grid));
    switch (layer.style) {
    case Lodex::LayerInfo::Proportional: add(tr("Layering"), tr("proportional")); break;
    case Lodex::LayerInfo::ParallelToBase: add(tr("Layering"), tr("parallel to the base")); break;
    case Lodex::LayerInfo::ParallelToTop: add(tr("Layering"), tr("parallel to the top")); break;
    }
    if (layer.cell_thickness > 0)
        add(tr("Cell thickness"), number_text(layer.cell_thickness));
}

void ItemDetails::show_activity(const CornerPointGrid& grid, int number)
{
    const auto activities = grid.activities().activities();
    if (number < 0 || static_cast<std::size_t>(number) >= activities.size())
        return;
    Lodex::SGridActivity* const activity = activities[static_cast<std::size_t>(number)];
    add(tr("Activity"), Lodex::to_qstring(activity->name()));
    const auto axis = [](Lodex::UGridIndex3d::Axis a) { return QStringLiteral("IJK").mid(static_cast<int>(a), 1); };
    const auto add_coarsening = [&](const Lodex::GridCoarseningData& coarsening) {
        for (const auto& one : coarsening.modifications())
            add(tr("%1 %2 to %3").arg(axis(one.axis)).arg(one.first).arg(one.last), tr("merged by %1").arg(one.step));
    };
    if (auto* up = dynamic_cast<Lodex::SGridUpgriddingActivityData*>(activity)) {
        add(tr("Kind"), tr("coarsened"));
        add_coarsening(up->coarsening_data());
    } else if (auto* kept = dynamic_cast<Lodex::SGridGridCoarseningModificationActivityData*>(activity)) {
        add(tr("Kind"), tr("coarsening to apply"));
        add_coarsening(*kept->grid_coarsening_data());
    } else if (auto* down = dynamic_cast<Lodex::SGridDowngriddingActivityData*>(activity)) {
        add(tr("Kind"), tr("refined"));
        for (const auto& one : down->refinement_data().modifications())
            add(tr("%1 %2 to %3").arg(axis(one.axis)).arg(one.first).arg(one.last),
                tr("divided by %1").arg(one.amount));
    }
}

} // namespace lodex
