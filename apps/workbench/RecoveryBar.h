#pragma once

#include "Autosave.h"

#include <QFrame>

class QLabel;

namespace lodex {

/// Strip over the views that offers what a killed session left behind, one session after the other. Nothing waits for
/// the answer.
class RecoveryBar final : public QFrame {
    Q_OBJECT

public:
    explicit RecoveryBar(QWidget* parent = nullptr);

    /// Shows the first of them; hides itself when there is none.
    void offer(const QList<KeptSession>& sessions);
    [[nodiscard]] const QList<KeptSession>& waiting() const { return sessions_; }
    /// The session needs no answer any more.
    void remove(const QString& name);

signals:
    void recover_wanted(const lodex::KeptSession& session);
    void discard_wanted(const lodex::KeptSession& session);
    void later_wanted(const lodex::KeptSession& session);
    /// The last one was answered, and none was recovered.
    void nothing_left();

private:
    void show_first();
    /// Takes the first one off the list.
    KeptSession take();

    QList<KeptSession> sessions_;
    QLabel* text_;
};

} // namespace lodex
