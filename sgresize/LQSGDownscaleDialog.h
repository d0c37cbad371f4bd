#pragma once

#include "sgresize/LQSGSubdivideAxisFullEditorMngr.h"
#include "sgresize/LQSGWholeGridDialog.h"

#include <memory>

namespace Kelvane {

/// Makes a finer grid by subdividing cell sections along any of the axes I, J and K.
class LQSGDownscaleDialog : public LQSGWholeGridDialog {
    Q_OBJECT

public:
    LQSGDownscaleDialog();
    ~LQSGDownscaleDialog() override;

    Lodex::XMShell* build_shell() override;

protected slots:
    bool process() override;
    void on_help() override;

protected:
    [[nodiscard]] Wording wording() const override;
    void build_axis(const QString& axis_name, QWidget* page, QVBoxLayout* layout) override;
    [[nodiscard]] LQSGManualAxisEditorMngr& editor(int axis) const override;
    [[nodiscard]] bool is_axis_enabled(int axis) const override;
    [[nodiscard]] long new_cells(int axis, long cells) const override;
    long write_painted_axis(int axis, std::ostream& triples) const override;
    [[nodiscard]] bool checks_rows_first() const override { return false; }
    void write_options(std::ostream& options) const override;
    void write_command(int axis, const Lodex::CString& source, const Lodex::CString& result,
                       const std::string& options, std::ostream& command) const override;
    [[nodiscard]] bool register_activity(Lodex::SGrid* made) override;
    /// Ties the grid to the source by the rows as they are shown.
    [[nodiscard]] bool register_downgridding_activity(Lodex::SGrid* made);

private:
    [[nodiscard]] const LQSGSubdivideAxisFullEditorMngr& manager(int axis) const;

    std::vector<std::unique_ptr<LQSGSubdivideAxisFullEditorMngr>> managers_; // I, J, K
};

} // namespace Kelvane
