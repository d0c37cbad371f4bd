#include "JournalView.h"

#include "lodex/utils/AtomicFile.h"
#include "lodex/interpreter/Interpreter.h"

#include <Lodex/utils/Logger.h>

#include <QFileDialog>
#include <QFontDatabase>
#include <QHBoxLayout>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include <algorithm>

namespace lodex {

JournalView::JournalView(QWidget* parent)
    : QWidget(parent), text_(new QPlainTextEdit(this)), save_(new QPushButton(tr("Save as Script..."), this))
{
    setObjectName("journalView");
    text_->setObjectName("journalText");
    text_->setAccessibleName(tr("Journal"));
    text_->setToolTip(tr("What changed the models, as commands that change them so again"));
    text_->setReadOnly(true);
    text_->setUndoRedoEnabled(false);
    text_->setLineWrapMode(QPlainTextEdit::NoWrap);
    text_->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    text_->setPlaceholderText(tr("Statements that change a model are listed here."));
    save_->setObjectName("journalSave");
    save_->setToolTip(tr("Saves the journal as a command script, which makes the same models again"));

    auto* row = new QHBoxLayout;
    row->addStretch(1);
    row->addWidget(save_);
    row->addSpacing(4);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 4);
    layout->addWidget(text_);
    layout->addLayout(row);
    connect(save_, &QPushButton::clicked, this, &JournalView::save_as_script);
    Interpreter::instance().set_journal_listener([this] { follow(); });
    follow();
}

JournalView::~JournalView()
{
    Interpreter::instance().set_journal_listener({});
}

void JournalView::follow()
{
    const auto& journal = Interpreter::instance().journal();
    // Another project's journal may begin otherwise.
    if (journal.size() < shown_.size() || !std::equal(shown_.begin(), shown_.end(), journal.begin())) {
        text_->clear();
        shown_.clear();
    }
    save_->setEnabled(!journal.empty());
    const bool told = journal.size() == shown_.size() + 1; // more at once were not given now
    while (shown_.size() < journal.size()) {
        shown_.push_back(journal[shown_.size()]);
        const QString statement = QString::fromStdString(shown_.back());
        text_->appendPlainText(statement);
        if (told)
            emit statement_added(statement);
    }
}

void JournalView::save_as_script()
{
    const QString path = QFileDialog::getSaveFileName(this, tr("Save the journal as a script"), QString(),
                                                      tr("Command scripts (*.lodex);;All files (*)"));
    if (path.isEmpty())
        return;
    try {
        save_journal(path.toStdString());
        Lodex::Logger::log(Lodex::LogLevel::Info, tr("The journal was saved to %1.").arg(path).toStdString());
    } catch (const ModelError& error) {
        Lodex::Logger::log(Lodex::LogLevel::Fatal, error.what());
    }
}

void save_journal(const std::filesystem::path& path)
{
    AtomicFile file(path);
    for (const std::string& statement : Interpreter::instance().journal()) {
        file.write(statement);
        file.write("\n");
    }
    file.commit();
}

} // namespace lodex
