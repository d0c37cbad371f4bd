#include "NumberTexts.h"

#include "lodex/geobase/ProjectUnits.h"
#include "lodex/volumes/CornerPointGrid.h"

#include <Lodex/qtools/QtText.h>

namespace lodex {

QString grouped(std::int64_t number)
{
    QString text = QString::number(number);
    for (qsizetype at = text.size() - 3; at > (number < 0 ? 1 : 0); at -= 3)
        text.insert(at, QChar(0x202f)); // narrow blank that does not break
    return text;
}

QString length_unit_text(const CornerPointGrid& grid)
{
    const auto unit = length_unit_from_word(grid.header().frame.grid_units);
    return unit ? Lodex::to_qstring(measurement_unit(*unit).name()) : QString();
}

} // namespace lodex
