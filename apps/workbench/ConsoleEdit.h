#pragma once

#include <QLineEdit>
#include <QStringList>

class QCompleter;
class QStringListModel;

namespace lodex {

/// Line for commands. Enter submits, Up and Down go through what was submitted, Tab completes (twice or Ctrl+Space:
/// shows what may stand here). In an empty line Tab leaves it.
class ConsoleEdit : public QLineEdit {
    Q_OBJECT

public:
    explicit ConsoleEdit(QWidget* parent = nullptr);

    /// Oldest first; a line that repeats the one before is kept once.
    [[nodiscard]] const QStringList& history() const { return history_; }
    void set_history(const QStringList& history);

signals:
    void submitted(const QString& text);
    /// One line of help for what is being typed; empty: none.
    void hint_changed(const QString& hint);

protected:
    bool event(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    void submit();
    void step_history(int by);
    void complete(bool show_list);
    void show_candidates();
    void put_word(const QString& word);

    QStringList history_;
    qsizetype place_ = 0; // in the history; its size: the line being typed
    QString typed_;       // kept while the history is shown
    QStringListModel* candidates_;
    QCompleter* completer_;
};

} // namespace lodex
