#include "CellInfo.h"

#include "lodex/utils/Numbers.h"
#include "lodex/volumes/CornerPointGrid.h"
#include "lodex/volumes/model/PropertyTools.h"

#include <Lodex/qtools/QtText.h>

#include <QCoreApplication>

#include <cmath>

namespace lodex {

namespace {

struct Texts {
    Q_DECLARE_TR_FUNCTIONS(lodex::CellInfo)
};

} // namespace

CellInfo cell_info(const CornerPointGrid& grid, std::int64_t cell, const std::array<double, 3>& point)
{
    const GridModel& model = grid.model();
    const auto [ni, nj, nk] = model.size;
    const auto at = static_cast<std::size_t>(cell);
    CellInfo info;
    info.grid = Lodex::to_qstring(grid.name());
    info.cell = cell;
    info.index = {cell % ni, cell / ni % nj, cell / (ni * nj)};
    info.point = point;
    info.active = model.active[at] != 0;
    std::int64_t base = 0;
    for (const LayerData& layer : model.layers) {
        base += layer.nb_k_cells;
        if (info.index[2] < base) {
            info.unit = QString::fromStdString(layer.unit);
            break;
        }
    }
    for (const PropertyData& property : model.properties) {
        if (property.on_points)
            continue;
        CellInfo::Value value{QString::fromStdString(property.name),
                              QString::fromStdString(property.unit),
                              {},
                              value_or_nan(property, at)};
        if (std::isnan(value.number)) {
            value.text = Texts::tr("undefined");
        } else if (property.discrete()) {
            const auto name = property.code_names.find(static_cast<std::int32_t>(value.number));
            value.text = name == property.code_names.end() ? QString::fromStdString(format_shortest(value.number))
                                                           : QString::fromStdString(name->second);
        } else {
            value.text = QString::fromStdString(format_general(value.number, 6));
        }
        info.values.push_back(std::move(value));
    }
    for (const RegionData& region : model.regions) {
        if (region.flags[at])
            info.regions.push_back(QString::fromStdString(region.name));
    }
    return info;
}

QString CellInfo::text() const
{
    QStringList lines;
    lines << Texts::tr("%1: cell I %2, J %3, K %4")
                 .arg(grid, QString::number(index[0] + 1), QString::number(index[1] + 1),
                      QString::number(index[2] + 1));
    lines << Texts::tr("X %1, Y %2, depth %3")
                 .arg(QString::number(point[0], 'f', 1), QString::number(point[1], 'f', 1),
                      QString::number(point[2], 'f', 2));
    if (!active)
        lines << Texts::tr("inactive");
    if (!unit.isEmpty())
        lines << Texts::tr("Unit: %1").arg(unit);
    for (const Value& value : values) {
        lines << QStringLiteral("%1: %2%3")
                     .arg(value.property, value.text,
                          value.unit.isEmpty() || std::isnan(value.number) ? QString() : QLatin1Char(' ') + value.unit);
    }
    if (!regions.isEmpty())
        lines << Texts::tr("Regions: %1").arg(regions.join(QStringLiteral(", ")));
    return lines.join(QLatin1Char('\n'));
}

} // namespace lodex
