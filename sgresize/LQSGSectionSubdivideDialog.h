#pragma once

#include "sgresize/LQSGOneAxisDialog.h"
#include "sgresize/LQSGSubdivideAxisEditorMngr.h"

#include <memory>

namespace Kelvane {

/// Makes a new grid in which cell sections along one axis are each replaced by several thinner ones.
class LQSGSectionSubdivideDialog : public LQSGOneAxisDialog {
    Q_OBJECT

public:
    LQSGSectionSubdivideDialog();
    ~LQSGSectionSubdivideDialog() override;

    Lodex::XMShell* build_shell() override;
    void updatePaintedSections() override;

public slots:
    void on_help() override;
    bool process() override;

protected:
    bool build_box(QWidget* parent, QVBoxLayout* layout) override;
    [[nodiscard]] LQSGManualAxisEditorMngr* axis_manager() const override;

private:
    std::unique_ptr<LQSGSubdivideAxisEditorMngr> axis_manager_;
    QPointer<QCheckBox> isochore_;
};

} // namespace Kelvane
