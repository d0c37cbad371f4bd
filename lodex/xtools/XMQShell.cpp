#include <Lodex/xtools/XMQShell.h>

#include <lodex/qtools/BusyState.h>

#include <Lodex/qtools/LQPixmapLib.h>
#include <Lodex/qtools/QtText.h>

#include <QApplication>
#include <QCloseEvent>
#include <QDialog>
#include <QKeyEvent>
#include <QMetaMethod>
#include <QPointer>
#include <QPushButton>
#include <QScreen>
#include <QVBoxLayout>
#include <QWindow>

#include <algorithm>
#include <vector>

namespace Lodex {

namespace {

std::vector<XMQShell*>& open_shells()
{
    static std::vector<XMQShell*> shells;
    return shells;
}

bool has_cancel_slot(const QObject* object)
{
    return object->metaObject()->indexOfMethod("cancel()") >= 0;
}

/// True when the widget belongs to a window of its own inside the body, such as a message box.
bool in_other_window(const QWidget* widget, const QWidget* body)
{
    for (; widget && widget != body; widget = widget->parentWidget()) {
        if (widget->isWindow())
            return true;
    }
    return false;
}

QString plain(QString text)
{
    return text.remove(u'&');
}

/// The button of the body whose object name holds the word, or whose text is the one given. Null when there is none.
QPushButton* find_button(const QWidget* body, const QString& word, const QString& text)
{
    for (QPushButton* button : body->findChildren<QPushButton*>()) {
        const bool named = button->objectName().contains(word, Qt::CaseInsensitive);
        if ((named || plain(button->text()) == plain(text)) && button->isEnabled() && !in_other_window(button, body))
            return button;
    }
    return nullptr;
}

/// What Escape and the close button of the window shall do: the dialog's cancel(), either found on the body or one of
/// its parts, or behind the Cancel button when the dialog's object stands outside of the body; else the body's own
/// reject(). False when there is none of these.
bool run_cancel(QWidget* body)
{
    if (has_cancel_slot(body))
        return QMetaObject::invokeMethod(body, "cancel", Qt::DirectConnection);
    for (QObject* part : body->findChildren<QObject*>()) {
        const auto* widget = qobject_cast<QWidget*>(part);
        if (has_cancel_slot(part) && !(widget && in_other_window(widget, body)))
            return QMetaObject::invokeMethod(part, "cancel", Qt::DirectConnection);
    }
    if (QPushButton* button =
            find_button(body, QStringLiteral("cancel"), QCoreApplication::translate("XMQShell", "Cancel"))) {
        button->click();
        return true;
    }
    if (auto* dialog = qobject_cast<QDialog*>(body)) {
        dialog->reject();
        return true;
    }
    return false;
}

} // namespace

struct XMQShell::Impl {
    QPointer<QWidget> window;
    QPointer<QWidget> body;
    QPointer<QWidget> owner; // stays below the shell on the screen
    bool closing = false;
    bool cancelling = false;
};

XMQShell::XMQShell(QWidget* body, const CString& name, const QString& title)
    : XMShell(name), impl_(std::make_unique<Impl>())
{
    setObjectName(to_qstring(name));
    QWidget* owner = body->parentWidget() ? body->parentWidget()->window() : nullptr;
    // A dialog that was opened while another one was in front does not go with that one.
    for (const XMQShell* shell : open_shells()) {
        if (owner && owner == shell->widget())
            owner = shell->impl_->owner;
    }
    impl_->owner = owner;

    // No parent of the toolkit's: it would delete the body behind the dialog's back.
    auto* window = new QWidget(nullptr, Qt::Window);
    window->setAttribute(Qt::WA_QuitOnClose, false);
    window->setObjectName(to_qstring(name));
    window->setWindowTitle(title);
    window->setWindowIcon(LQPixmapLib::icon("lodex"));
    auto* layout = new QVBoxLayout(window);
    layout->setContentsMargins(0, 0, 0, 0);
    body->setParent(window, Qt::Widget);
    layout->addWidget(body);
    body->show(); // with the window, that is
    impl_->window = window;
    impl_->body = body;

    window->installEventFilter(this);
    body->installEventFilter(this);
    if (const auto* dialog = qobject_cast<QDialog*>(body))
        connect(dialog, &QDialog::finished, this, &XMQShell::close);
    connect(body, &QObject::destroyed, this, &XMQShell::close);
    if (impl_->owner)
        connect(impl_->owner, &QObject::destroyed, this, &XMQShell::close);
    connect(qApp, &QCoreApplication::aboutToQuit, this, &XMQShell::close);
    open_shells().push_back(this);
}

XMQShell::~XMQShell()
{
    std::erase(open_shells(), this);
    impl_->closing = true;
    if (impl_->window)
        impl_->window->removeEventFilter(this);
    if (impl_->body) {
        impl_->body->removeEventFilter(this);
        impl_->body->disconnect(this);
    }
    run_delete_action(); // while the widgets of the body still live
    delete impl_->window;
}

QWidget* XMQShell::widget() const
{
    return impl_->window;
}

QString XMQShell::title() const
{
    return impl_->window ? impl_->window->windowTitle() : QString();
}

void XMQShell::show()
{
    QWidget* window = impl_->window;
    if (!window || impl_->closing)
        return;
    if (window->isHidden()) {
        const QScreen* screen = impl_->owner ? impl_->owner->screen() : QApplication::primaryScreen();
        QSize size = window->sizeHint();
        if (screen) {
            const QRect room = screen->availableGeometry();
            size = size.boundedTo(room.size() * 0.95);
            window->resize(size);
            const QPoint centre = impl_->owner ? impl_->owner->frameGeometry().center() : room.center();
            QRect place(QPoint(), size);
            place.moveCenter(centre);
            place.moveLeft(std::clamp(place.left(), room.left(), std::max(room.left(), room.right() - size.width())));
            place.moveTop(std::clamp(place.top(), room.top(), std::max(room.top(), room.bottom() - size.height())));
            window->move(place.topLeft());
        } else {
            window->resize(size);
        }
        if (impl_->owner && impl_->owner->windowHandle()) {
            static_cast<void>(window->winId()); // makes the native window that the next line needs
            window->windowHandle()->setTransientParent(impl_->owner->windowHandle());
        }
    }
    window->show();
    window->raise();
    window->activateWindow();
}

void XMQShell::close()
{
    if (impl_->closing)
        return;
    impl_->closing = true;
    std::erase(open_shells(), this);
    if (impl_->window)
        impl_->window->hide();
    // Slots of the dialog may still be on the stack, even below a running command that turns the event loop.
    lodex::BusyState& busy = lodex::BusyState::instance();
    if (busy.busy())
        connect(&busy, &lodex::BusyState::released, this, &QObject::deleteLater);
    else
        deleteLater();
}

XMQShell* XMQShell::find(const CString& name)
{
    const auto& shells = open_shells();
    const auto it = std::ranges::find(shells, name, &XMQShell::name);
    return it == shells.end() ? nullptr : *it;
}

bool XMQShell::eventFilter(QObject* watched, QEvent* event)
{
    const auto pressed = [event](QKeySequence::StandardKey key) {
        return event->type() == QEvent::KeyPress && static_cast<QKeyEvent*>(event)->matches(key);
    };
    if (pressed(QKeySequence::HelpContents) && impl_->body) {
        if (QPushButton* help =
                find_button(impl_->body, QStringLiteral("help"), QCoreApplication::translate("XMQShell", "Help"))) {
            help->click();
            return true;
        }
    }
    const bool escape = pressed(QKeySequence::Cancel);
    // A body that is closed by itself would leave an empty frame: its closing is the window's.
    const bool close_asked = event->type() == QEvent::Close;
    if (!escape && !close_asked)
        return XMShell::eventFilter(watched, event);

    if (close_asked)
        event->ignore();
    if (impl_->closing || impl_->cancelling || lodex::BusyState::instance().busy())
        return true;
    impl_->cancelling = true;
    const QPointer<XMQShell> self(this);
    const bool answered = impl_->body && run_cancel(impl_->body);
    if (!self)
        return true;
    impl_->cancelling = false;
    if (!answered)
        close();
    return true;
}

} // namespace Lodex

#include "Lodex/xtools/moc_XMQShell.cpp"
