#include <lodex/appli/QtProgressSink.h>

#include <lodex/qtools/BusyState.h>

#include <Lodex/qtools/LQDialogTools.h>
#include <Lodex/qtools/QtText.h>

#include <QApplication>
#include <QDialog>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QThread>
#include <QVBoxLayout>
#include <QWindow>

namespace lodex {

namespace {

/// Often enough for a smooth bar and a quick Cancel, rarely enough to cost nothing.
constexpr qint64 kEventsEvery = 40; // ms
constexpr int kBarSteps = 1000;

} // namespace

struct QtProgressSink::Window : QDialog {
    explicit Window(QWidget* parent, const QString& title)
        : QDialog(parent), bar(new QProgressBar(this)), cancel(new QPushButton(QtProgressSink::tr("Cancel"), this))
    {
        setObjectName(QStringLiteral("progressDialog"));
        setWindowTitle(QtProgressSink::tr("Working"));
        setWindowModality(Qt::ApplicationModal);
        auto* label = new QLabel(title, this);
        label->setObjectName(QStringLiteral("progressTitle"));
        label->setTextFormat(Qt::PlainText);
        label->setWordWrap(true);
        label->setMinimumWidth(320);
        bar->setObjectName(QStringLiteral("progressBar"));
        bar->setRange(0, kBarSteps);
        cancel->setObjectName(QStringLiteral("progressCancel"));
        auto* layout = new QVBoxLayout(this);
        layout->addWidget(label);
        layout->addWidget(bar);
        layout->addWidget(cancel, 0, Qt::AlignRight);
        connect(cancel, &QPushButton::clicked, this, &Window::stop);
    }

    /// Escape and the close button mean Cancel; the window stays until the work has stopped.
    void reject() override { stop(); }

    void stop()
    {
        cancelled = true;
        cancel->setEnabled(false);
        cancel->setText(QtProgressSink::tr("Stopping ..."));
    }

    QProgressBar* bar;
    QPushButton* cancel;
    bool cancelled = false;
};

QtProgressSink::QtProgressSink(std::chrono::milliseconds delay) : delay_(delay)
{
}

QtProgressSink::~QtProgressSink()
{
    if (working_)
        end();
}

bool QtProgressSink::in_gui_thread() const
{
    return qApp && QThread::currentThread() == qApp->thread();
}

void QtProgressSink::begin(const Lodex::CString& title)
{
    if (!in_gui_thread() || working_)
        return;
    working_ = true;
    cancelled_ = false;
    title_ = Lodex::to_qstring(title).trimmed();
    modal_before_ = QApplication::activeModalWidget();
    since_begin_.start();
    since_events_.start();
    BusyState::instance().enter();
    qApp->installEventFilter(this);
    QApplication::setOverrideCursor(Qt::BusyCursor);
}

bool QtProgressSink::progress(double done)
{
    if (!in_gui_thread() || !working_ || processing_)
        return true;
    const bool due = since_events_.elapsed() >= kEventsEvery;
    if (!window_ && since_begin_.elapsed() >= delay_.count()) {
        window_ = new Window(Lodex::LQDialogTools::active_top_widget(), title_);
        window_->show();
    } else if (!due) {
        return !cancelled_;
    }
    if (window_)
        window_->bar->setValue(static_cast<int>(done * kBarSteps));
    process_events();
    return !cancelled_;
}

void QtProgressSink::process_events()
{
    processing_ = true;
    // Before the window is there, clicks stay in the queue rather than being thrown away.
    QCoreApplication::processEvents(window_ ? QEventLoop::AllEvents : QEventLoop::ExcludeUserInputEvents);
    processing_ = false;
    cancelled_ = cancelled_ || (window_ && window_->cancelled);
    since_events_.start();
}

void QtProgressSink::end()
{
    if (!in_gui_thread() || !working_)
        return;
    working_ = false;
    qApp->removeEventFilter(this);
    QApplication::restoreOverrideCursor();
    if (window_) {
        window_->hide();
        window_->deleteLater(); // one of its own slots may be on the stack
        window_.clear();
    }
    BusyState::instance().leave();
}

QWidget* QtProgressSink::window() const
{
    return window_;
}

/// True for parts of the progress window and of a dialog that came up after the work began.
bool QtProgressSink::may_answer(const QObject* watched) const
{
    const auto* widget = qobject_cast<const QWidget*>(watched);
    const auto* handle = qobject_cast<const QWindow*>(watched);
    if (!widget && !handle)
        return true;
    const QWidget* modal = QApplication::activeModalWidget();
    for (const QWidget* window : {static_cast<const QWidget*>(window_), modal == modal_before_ ? nullptr : modal}) {
        if (window && ((widget && (widget == window || window->isAncestorOf(widget))) ||
                       (handle && handle == window->windowHandle())))
            return true;
    }
    return false;
}

bool QtProgressSink::eventFilter(QObject* watched, QEvent* event)
{
    if (!working_ || !(is_user_input(event->type()) || event->type() == QEvent::ShortcutOverride) || may_answer(watched))
        return QObject::eventFilter(watched, event);
    if (event->type() == QEvent::Close)
        event->ignore();
    return true;
}

} // namespace lodex
