#pragma once

#include <Lodex/utils/ProgressTracer.h>

#include <QElapsedTimer>
#include <QObject>
#include <QPointer>

#include <atomic>
#include <chrono>
#include <memory>

namespace lodex {

/// Shows the progress of long commands in an application-modal window with a Cancel button. Short work shows nothing.
/// From begin() to end() no window but that one takes mouse, key, close or drop events, so that no command can start
/// inside another; clicks on other windows before it appears wait, and are dropped when it does. A question that the
/// work itself asks in a modal dialog can be answered. Work on other threads is neither shown nor cancelled.
class QtProgressSink : public QObject, public Lodex::ProgressSink {
    Q_OBJECT

public:
    /// delay is the time until the window appears.
    explicit QtProgressSink(std::chrono::milliseconds delay = std::chrono::milliseconds(500));
    ~QtProgressSink() override;

    void begin(const Lodex::CString& title) override;
    bool progress(double done) override;
    void end() override;

    /// The window while it is shown, else null.
    [[nodiscard]] QWidget* window() const;

private:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void process_events();
    [[nodiscard]] bool may_answer(const QObject* watched) const;
    [[nodiscard]] bool in_gui_thread() const;

    struct Window;
    QPointer<Window> window_;
    QPointer<QWidget> modal_before_; ///< the dialog that started the work, when that is modal
    std::chrono::milliseconds delay_;
    QElapsedTimer since_begin_;
    QElapsedTimer since_events_;
    QString title_;
    bool working_ = false;
    bool processing_ = false;
    bool cancelled_ = false;
};

} // namespace lodex
