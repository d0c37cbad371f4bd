#pragma once

#include <QMetaType>
#include <QString>
#include <QStringList>

#include <array>
#include <cstdint>
#include <vector>

namespace lodex {

class CornerPointGrid;

/// Everything that a person may want to know of one cell.
struct CellInfo {
    struct Value {
        QString property;
        QString unit;      ///< as written in the file; empty: none
        QString text;      ///< the value, a code as its name; "undefined" where there is none
        double number = 0; ///< NaN where undefined
    };
    QString grid;
    std::int64_t cell = 0;               ///< I fastest
    std::array<std::int64_t, 3> index{}; ///< i, j, k, 0-based
    std::array<double, 3> point{};       ///< x, y, depth of the picked point
    bool active = true;
    QString unit;              ///< stratigraphic unit; empty: none
    std::vector<Value> values; ///< of the cell properties, in their order
    QStringList regions;       ///< that the cell lies in

    /// Several lines for a tooltip or a panel; I, J, K are counted from 1.
    [[nodiscard]] QString text() const;
};

/// Of the cell with this index, which must be within the grid.
[[nodiscard]] CellInfo cell_info(const CornerPointGrid& grid, std::int64_t cell, const std::array<double, 3>& point);

} // namespace lodex

Q_DECLARE_METATYPE(lodex::CellInfo)
