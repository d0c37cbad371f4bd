#pragma once

#include "sgresize/AxisTable.h"
#include "sgresize/LQSGMergeAxisEditorMngr.h"

#include <QObject>

namespace Kelvane {

/// An axis of a whole grid that may be merged: a box switches it on, and its rows are greyed out while it is off. A
/// copy takes over the axis only.
class LQSGMergeAxisFullEditorMngr : public QObject, public LQSGMergeAxisEditorMngr {
    Q_OBJECT
    Q_INTERFACES(Kelvane::LQSGMergeAxisEditorMngr)

public:
    LQSGMergeAxisFullEditorMngr(const QString& axis_name, LQSGSectionDialog* dialog);
    LQSGMergeAxisFullEditorMngr(const LQSGMergeAxisFullEditorMngr& other);
    LQSGMergeAxisFullEditorMngr& operator=(const LQSGMergeAxisFullEditorMngr& other);

    using LQSGAxisEditorMngr::updateCells;

    bool build_editor_axis(QWidget* parent, QVBoxLayout* layout) override;
    /// Whether the axis is switched on.
    [[nodiscard]] bool is_enabled() const { return parts_.is_enabled(); }

protected slots:
    void paintSections(bool);
    void updateCells(bool);

private:
    AxisTable parts_;
};

} // namespace Kelvane
