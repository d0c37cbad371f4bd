#pragma once

#include <Lodex/utils/Logger.h>

#include <QMessageBox>
#include <QObject>
#include <QPointer>
#include <QStringList>

#include <atomic>

namespace lodex {

/// Shows fatal messages in a message box of the running application. One box at a time: what comes while it is open is
/// added to it. The box opens from the event loop, never inside the call that logs, and not before a running command is
/// over. Enters itself with the logger and takes itself out. Messages may come from any thread.
class MessageBoxSink : public QObject, public Lodex::LogSink {
    Q_OBJECT

public:
    MessageBoxSink();
    ~MessageBoxSink() override;

    /// Switched off, messages are passed over.
    void set_enabled(bool enabled) { enabled_ = enabled; }
    [[nodiscard]] bool is_enabled() const { return enabled_; }

    void message(Lodex::LogLevel level, const Lodex::CString& text) override;

    /// The box while it is open, else null.
    [[nodiscard]] QMessageBox* box() const { return box_; }

private:
    void add(const QString& text);
    void show();

    std::atomic<bool> enabled_{true};
    QStringList waiting_; ///< not yet in a box
    QStringList shown_;   ///< in the box
    QPointer<QMessageBox> box_;
};

} // namespace lodex
