#pragma once

#include "sgresize/AxisTable.h"
#include "sgresize/LQSGSubdivideAxisEditorMngr.h"

#include <QObject>

namespace Kelvane {

/// An axis of a whole grid that may be subdivided: a box switches it on, and its rows are greyed out while it is off.
/// More boxes say how the entered size of the new cells is meant. A copy takes over the axis only.
class LQSGSubdivideAxisFullEditorMngr : public QObject, public LQSGSubdivideAxisEditorMngr {
    Q_OBJECT
    Q_INTERFACES(Kelvane::LQSGSubdivideAxisEditorMngr)

public:
    LQSGSubdivideAxisFullEditorMngr(const QString& axis_name, LQSGSectionDialog* dialog);
    LQSGSubdivideAxisFullEditorMngr(const LQSGSubdivideAxisFullEditorMngr& other);
    LQSGSubdivideAxisFullEditorMngr& operator=(const LQSGSubdivideAxisFullEditorMngr& other);

    using LQSGAxisEditorMngr::updateCells;

    bool build_editor_axis(QWidget* parent, QVBoxLayout* layout) override;
    /// Whether the axis is switched on.
    [[nodiscard]] bool is_enabled() const { return parts_.is_enabled(); }
    /// Whether thicknesses are measured vertically; only along K can they be.
    [[nodiscard]] bool is_vertical() const;
    /// Whether sizes are percents of the original cell's.
    [[nodiscard]] bool is_percent() const;

protected slots:
    void paintSections(bool);
    void updateCells(bool);

private:
    /// Adds a box in a row of its own below the rows.
    QCheckBox* add_box(QWidget* parent, const char* name, const QString& text, const QString& tip);

    AxisTable parts_;
    QPointer<QCheckBox> isochore_box_;
    QPointer<QCheckBox> percent_box_;
};

} // namespace Kelvane
