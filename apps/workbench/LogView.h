#pragma once

#include <Lodex/utils/Logger.h>

#include <QPlainTextEdit>

#include <deque>

namespace lodex {

/// The message log: what is logged, commands that the user gave and their answers, coloured by kind. The user may copy
/// from it. Messages may come from any thread.
class LogView final : public QPlainTextEdit, public Lodex::LogSink {
    Q_OBJECT

public:
    explicit LogView(QWidget* parent = nullptr);
    ~LogView() override;

    void add_command(const QString& text);
    void add_answer(const QString& text);
    void message(Lodex::LogLevel level, const Lodex::CString& text) override;

    /// Which entries are shown; the others are kept.
    enum class Shown { All, WarningsAndErrors, Errors };
    void set_shown(Shown shown);
    /// Shows only entries that hold this text, whatever the case of its letters; empty: all.
    void set_search(const QString& text);
    void clear_entries();

    enum class Kind { Command, Answer, Info, Warning, Error };
    struct Entry {
        Kind kind;
        QString text;
    };
    using Entries = std::deque<Entry>;
    /// All of them, shown or not, oldest first.
    [[nodiscard]] const Entries& entries() const { return entries_; }
    void set_entries(const Entries& entries);

signals:
    /// An error or a fatal message came; the text is its first line.
    void problem(const QString& text);

protected:
    void changeEvent(QEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;

private:
    void add(Kind kind, const QString& text);
    void write(const Entry& entry);
    void rewrite();
    [[nodiscard]] bool is_shown(const Entry& entry) const;
    [[nodiscard]] QColor colour(Kind kind) const;

    Entries entries_; // kept to colour and choose them anew
    Shown shown_ = Shown::All;
    QString search_;
};

} // namespace lodex
