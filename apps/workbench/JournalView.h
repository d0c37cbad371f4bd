#pragma once

#include <QWidget>

#include <cstddef>
#include <filesystem>

class QPlainTextEdit;
class QPushButton;

namespace lodex {

/// The journal of the interpreter as it grows, and a button that saves it as a script. Takes the interpreter's journal
/// listener for as long as it lives.
class JournalView : public QWidget {
    Q_OBJECT

public:
    explicit JournalView(QWidget* parent = nullptr);
    ~JournalView() override;

public slots:
    /// Asks for a file and saves.
    void save_as_script();

signals:
    /// A statement came into the journal: something changed a model.
    void statement_added(const QString& statement);

private:
    void follow();

    QPlainTextEdit* text_;
    QPushButton* save_;
    std::vector<std::string> shown_; // statements in the text
};

/// Writes the journal, a statement a line; an older file is replaced whole or not at all. Throws ModelError.
void save_journal(const std::filesystem::path& path);

} // namespace lodex
