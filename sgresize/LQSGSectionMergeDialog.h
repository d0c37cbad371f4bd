#pragma once

#include "sgresize/LQSGMergeAxisEditorMngr.h"
#include "sgresize/LQSGSectionDialog.h"

#include <memory>
#include <ostream>

class QButtonGroup;
class QComboBox;

namespace Lodex {
class LQDoubleLineEdit;
}

namespace Kelvane {

/// Makes a new grid in which runs of cell sections along one axis are merged in groups.
class LQSGSectionMergeDialog : public LQSGSectionDialog {
    Q_OBJECT

public:
    LQSGSectionMergeDialog();
    ~LQSGSectionMergeDialog() override;

    Lodex::XMShell* build_shell() override;
    void updatePaintedSections() override;
    /// Shows nothing that depends on the numbers of cells.
    void updateCells() override;
    /// Points the pick tools of the rows to the chosen axis.
    void update_pick_axis();

public slots:
    void on_help() override;
    bool process() override;
    /// Enables the group of the region modes; the percentile fields keep the state that the mode gave them.
    void set_region(bool on) override;
    /// Lets the percentile of the mode be edited.
    void set_region_mode(int mode);
    void on_axis_change(const QString& axis_name);

protected:
    bool build_box(QWidget* parent, QVBoxLayout* layout) override;
    bool update_axis_edt() override;

private:
    [[nodiscard]] QWidget* build_options(QWidget* parent);
    [[nodiscard]] QWidget* build_region_modes(QWidget* parent);
    /// The keyword values "sections" and "property_sections".
    void write_lists(std::ostream& sections, std::ostream& properties) const;

    std::unique_ptr<LQSGMergeAxisEditorMngr> axis_manager_;
    QPointer<QComboBox> direction_;
    QPointer<QCheckBox> copy_properties_;
    QPointer<QCheckBox> copy_regions_;
    QPointer<QGroupBox> region_mode_group_;
    QPointer<QButtonGroup> region_modes_;
    QPointer<Lodex::LQDoubleLineEdit> number_percentile_;
    QPointer<Lodex::LQDoubleLineEdit> volume_percentile_;
};

} // namespace Kelvane
