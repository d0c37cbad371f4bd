#pragma once

#include <QPointer>
#include <QString>
#include <QStringList>

class QCheckBox;
class QFrame;
class QTableWidget;
class QVBoxLayout;
class QWidget;

namespace Kelvane {

/// What the table editors of one axis have in common: a box that switches the axis on, and a frame with a heading and
/// the table of the rows.
struct AxisTable {
    QPointer<QCheckBox> enable_box;
    QPointer<QFrame> frame; ///< disabled; to be enabled with the box
    QPointer<QTableWidget> table;
    QPointer<QVBoxLayout> layout; ///< holds box and frame; more may follow

    [[nodiscard]] bool is_enabled() const;
};

/// Builds these into a layout. The box is unchecked; the table has these columns and no row.
[[nodiscard]] AxisTable build_axis_table(QWidget* parent, QVBoxLayout* layout, const QString& enable_text,
                                         const QString& enable_tip, const QString& heading, const QStringList& columns);

} // namespace Kelvane
