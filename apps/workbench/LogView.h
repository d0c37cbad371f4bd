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

signals:
    /// An error or a fatal message came; the text is its first line.
    void problem(const QString& text);

protected:
    void changeEvent(QEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;

private:
    enum class Kind { Command, Answer, Info, Warning, Error };
    struct Entry {
        Kind kind;
        QString text;
    };

    void add(Kind kind, const QString& text);
    void write(const Entry& entry);
    void rewrite();
    [[nodiscard]] QColor colour(Kind kind) const;

    std::deque<Entry> entries_; // kept to colour them anew when the theme changes
};

} // namespace lodex
