#include "DialogTable.h"

#include <Lodex/interpreter/ICommandStub.h>
#include <Lodex/xtools/XMShell.h>

#include "flowunit/LQFlowUnitDialog.h"
#include "flowunit/LQFlowUnitWidget.h"
#include "propertyupscale/LQSGPropertyUpscaleDialog.h"
#include "sgresize/LQSGDownscaleDialog.h"
#include "sgresize/LQSGSectionMergeDialog.h"
#include "sgresize/LQSGSectionSubdivideDialog.h"
#include "sgresize/LQSGUpscaleDialog.h"

#include <QCoreApplication>
#include <QPointer>
#include <QWizard>

namespace lodex {

namespace {

/// A dialog in a shell of the host.
template <class Dialog> class ShellOpener final : public DialogOpener {
public:
    Opened open(Lodex::ICommandStub& stub, const QString& proposed_name) override
    {
        const bool fresh = !dialog_ || !shell_ || !shell_->widget() || shell_->widget()->isHidden();
        if (fresh) {
            dialog_ = new Dialog; // goes when its window closes
            shell_ = dialog_->build_shell();
        }
        dialog_->init(&stub);
        if constexpr (requires(Dialog& dialog) { dialog.setNewGridName(proposed_name); }) {
            if (fresh)
                dialog_->setNewGridName(proposed_name);
        }
        shell_->show();
        return {shell_->widget(), fresh};
    }

private:
    QPointer<Dialog> dialog_;
    QPointer<Lodex::XMShell> shell_;
};

/// A wizard, which is a window of its own and deletes itself.
template <class Dialog> class WizardOpener final : public DialogOpener {
public:
    Opened open(Lodex::ICommandStub& stub, const QString&) override
    {
        const bool fresh = !dialog_ || dialog_->isHidden();
        if (fresh)
            dialog_ = new Dialog;
        QWizard* const wizard = dialog_->dialog();
        dialog_->init(&stub);
        wizard->show();
        wizard->raise();
        wizard->activateWindow();
        return {wizard, fresh};
    }

private:
    QPointer<Dialog> dialog_;
};

template <class Opener> std::unique_ptr<DialogOpener> make()
{
    return std::make_unique<Opener>();
}

} // namespace

const std::vector<DialogRow>& dialog_rows()
{
    static const std::vector<DialogRow> rows{
        {"mergeSections", QT_TRANSLATE_NOOP("lodex::MainWindow", "&Merge SGrid Sections..."),
         QT_TRANSLATE_NOOP("lodex::MainWindow", "Make a coarser grid by merging cell sections of the selected one"),
         "Ctrl+M", "table_merge_rows", "_coarse", false, true, make<ShellOpener<Kelvane::LQSGSectionMergeDialog>>},
        {"subdivideSections", QT_TRANSLATE_NOOP("lodex::MainWindow", "&Subdivide SGrid Sections..."),
         QT_TRANSLATE_NOOP("lodex::MainWindow", "Make a finer grid by subdividing cell sections of the selected one"),
         "Ctrl+D", "table_insert_row_above", "_fine", false, false,
         make<ShellOpener<Kelvane::LQSGSectionSubdivideDialog>>},
        {"upscaleGrid", QT_TRANSLATE_NOOP("lodex::MainWindow", "Create SGrid for &Upscaling..."),
         QT_TRANSLATE_NOOP("lodex::MainWindow", "Make a coarser grid from the whole of the selected one"),
         "Ctrl+Shift+U", "grid_coarser", "_upscaled", false, false, make<ShellOpener<Kelvane::LQSGUpscaleDialog>>},
        {"downscaleGrid", QT_TRANSLATE_NOOP("lodex::MainWindow", "Create SGrid for D&ownscaling..."),
         QT_TRANSLATE_NOOP("lodex::MainWindow", "Make a finer grid from the whole of the selected one"), "Ctrl+Shift+D",
         "grid_finer", "_downscaled", false, false, make<ShellOpener<Kelvane::LQSGDownscaleDialog>>},
        {"upscaleProperty", QT_TRANSLATE_NOOP("lodex::MainWindow", "Upscale &Property..."),
         QT_TRANSLATE_NOOP("lodex::MainWindow", "Carry a property of the selected grid to a coarser grid"), "Ctrl+U",
         "stratigraphic_modelling", "", true, true, make<WizardOpener<Kelvane::LQSGPropertyUpscaleDialog>>},
        {"flowUnits", QT_TRANSLATE_NOOP("lodex::MainWindow", "&Flow Unit Analysis..."),
         QT_TRANSLATE_NOOP("lodex::MainWindow", "Group the K layers of the selected grid into flow units"), "Ctrl+K",
         "flow_units", "_flow_units", true, true, make<ShellOpener<Kelvane::LQFlowUnitDialog>>},
    };
    return rows;
}

} // namespace lodex
