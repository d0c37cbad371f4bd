#pragma once

#include "sgresize/LQSGMergeAxisFullEditorMngr.h"
#include "sgresize/LQSGWholeGridDialog.h"

#include <memory>

namespace Kelvane {

class RegionModes;

/// Makes a coarser grid by merging runs of cell sections along any of the axes I, J and K.
class LQSGUpscaleDialog : public LQSGWholeGridDialog {
    Q_OBJECT

public:
    LQSGUpscaleDialog();
    ~LQSGUpscaleDialog() override;

    Lodex::XMShell* build_shell() override;

protected slots:
    bool process() override;
    void on_help() override;
    /// Lets the percentile of the mode be edited.
    void set_region_mode(int mode);
    /// Shows the column of the property section to keep, or hides it. Its values count either way.
    void set_properties(bool on) override;
    /// Enables the group of the region modes.
    void set_region(bool on) override;

protected:
    [[nodiscard]] Wording wording() const override;
    void build_axis(const QString& axis_name, QWidget* page, QVBoxLayout* layout) override;
    void build_more_options(QWidget* parent) override;
    [[nodiscard]] LQSGManualAxisEditorMngr& editor(int axis) const override;
    [[nodiscard]] bool is_axis_enabled(int axis) const override;
    [[nodiscard]] long new_cells(int axis, long cells) const override;
    long write_painted_axis(int axis, std::ostream& triples) const override;
    [[nodiscard]] bool checks_rows_first() const override { return true; }
    void write_options(std::ostream& options) const override;
    void write_region_mode(std::ostream& options) const override;
    void write_command(int axis, const Lodex::CString& source, const Lodex::CString& result,
                       const std::string& options, std::ostream& command) const override;
    [[nodiscard]] bool register_activity(Lodex::SGrid* made) override;
    /// Ties the grid to the source by the rows as they are shown.
    [[nodiscard]] bool register_upgridding_activity(Lodex::SGrid* made);

private:
    [[nodiscard]] const LQSGMergeAxisFullEditorMngr& manager(int axis) const;

    std::vector<std::unique_ptr<LQSGMergeAxisFullEditorMngr>> managers_; // I, J, K
    QPointer<QGroupBox> region_mode_group_;
    QPointer<RegionModes> region_modes_;
};

} // namespace Kelvane
