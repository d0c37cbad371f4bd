#pragma once

#include "sgresize/LQSGSectionDialog.h"

#include <memory>

class QComboBox;
class QHBoxLayout;

namespace Kelvane {

class LQSGManualAxisEditorMngr;

/// A section dialog that works along one axis at a time: a combo box chooses it, one table holds the rows.
class LQSGOneAxisDialog : public LQSGSectionDialog {
    Q_OBJECT

public:
    /// Shows nothing that depends on the numbers of cells.
    void updateCells() override;
    /// Points the pick tools of the rows to the chosen axis.
    void update_pick_axis();

public slots:
    void on_axis_change(const QString& axis_name);

protected:
    LQSGOneAxisDialog();

    /// The rows; null before build_section_editor().
    [[nodiscard]] virtual LQSGManualAxisEditorMngr* axis_manager() const = 0;

    /// The row of the direction and the boxes "Copy properties" and "Copy regions". More boxes may be added at its end.
    [[nodiscard]] QWidget* build_options(QWidget* parent, bool copies_regions);
    /// Adds a check box, unchecked, to the row of options.
    [[nodiscard]] QCheckBox* add_option(const char* name, const QString& text, const QString& tip);
    /// The group "Section Editor" around the rows; follows the direction from then on.
    [[nodiscard]] QGroupBox* build_section_editor(QWidget* parent);
    /// Name of the axis that is chosen.
    [[nodiscard]] QString axis_name() const;

    bool update_axis_edt() override;
    /// Selected grid, new name and rows, in this order; the first that is wrong is reported.
    [[nodiscard]] bool check_input() const;

    [[nodiscard]] bool copies_properties() const;
    [[nodiscard]] bool copies_regions() const;

private:
    QPointer<QComboBox> direction_;
    QPointer<QWidget> options_;
    QPointer<QCheckBox> copy_properties_;
    QPointer<QCheckBox> copy_regions_;
};

} // namespace Kelvane
