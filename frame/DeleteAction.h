#pragma once

#include <Lodex/utils/Action.h>

#include <QPointer>

namespace Kelvane {

/// Deletes a dialog when its shell closes. A shell may close from inside one of the dialog's own slots, so the dialog
/// goes from the event loop. Executing again, or after the dialog has gone, does nothing; so does destroying the
/// action.
template <class Dialog> class DeleteAction : public Lodex::Action {
public:
    explicit DeleteAction(Dialog* dialog) : dialog_(dialog) {}

    void execute() override
    {
        if (dialog_)
            dialog_->deleteLater();
        dialog_.clear();
    }

private:
    QPointer<Dialog> dialog_;
};

} // namespace Kelvane
