#pragma once

#include "sgresize/LQSGMergeAxisEditorMngr.h"
#include "sgresize/LQSGOneAxisDialog.h"

#include <memory>
#include <ostream>

namespace Kelvane {

class RegionModes;

/// Makes a new grid in which runs of cell sections along one axis are merged in groups.
class LQSGSectionMergeDialog : public LQSGOneAxisDialog {
    Q_OBJECT

public:
    LQSGSectionMergeDialog();
    ~LQSGSectionMergeDialog() override;

    Lodex::XMShell* build_shell() override;
    void updatePaintedSections() override;

public slots:
    void on_help() override;
    bool process() override;
    /// Enables the group of the region modes; the percentile fields keep the state that the mode gave them.
    void set_region(bool on) override;
    /// Lets the percentile of the mode be edited.
    void set_region_mode(int mode);

protected:
    bool build_box(QWidget* parent, QVBoxLayout* layout) override;
    [[nodiscard]] LQSGManualAxisEditorMngr* axis_manager() const override;

private:
    [[nodiscard]] QWidget* build_region_modes(QWidget* parent);
    /// The keyword values "sections" and "property_sections".
    void write_lists(std::ostream& sections, std::ostream& properties) const;

    std::unique_ptr<LQSGMergeAxisEditorMngr> axis_manager_;
    QPointer<QGroupBox> region_mode_group_;
    QPointer<RegionModes> region_modes_;
};

} // namespace Kelvane
