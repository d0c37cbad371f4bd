#pragma once

#include <Lodex/utils/Action.h>
#include <Lodex/utils/CString.h>

#include <QObject>
#include <QString>

class QWidget;

namespace Lodex {

/// Base of the host's windows.
class XMWidget : public QObject {
    Q_OBJECT

public:
    explicit XMWidget(const CString& name);
    ~XMWidget() override;

    /// The host's key for the window.
    [[nodiscard]] const CString& name() const { return name_; }
    /// The shell keeps the action and executes it once, when the window is closed and destroyed.
    void set_delete_action(Action* action);

protected:
    /// Executes the delete action and lets go of it; a second call does nothing.
    void run_delete_action();

private:
    CString name_;
    Ref<Action> delete_action_;
};

/// A window of one piece.
class XMMono : public XMWidget {
    Q_OBJECT

public:
    using XMWidget::XMWidget;
    [[nodiscard]] virtual QWidget* widget() const = 0;
};

/// A top-level window.
class XMShell : public XMMono {
    Q_OBJECT

public:
    using XMMono::XMMono;
    virtual void show() = 0;
    /// Closes the window; the delete action runs and the shell deletes itself, both from the event loop, so that this may
    /// be called from a slot of the dialog inside.
    virtual void close() = 0;
    [[nodiscard]] virtual QString title() const = 0;
};

} // namespace Lodex
