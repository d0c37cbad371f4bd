#include "ConsoleEdit.h"

#include "Completion.h"

#include <QAbstractItemView>
#include <QCompleter>
#include <QFontDatabase>
#include <QKeyEvent>
#include <QStringListModel>

namespace lodex {

namespace {

Completion complete_at(const QString& text, int cursor)
{
    return complete_command(text.left(cursor).toStdString());
}

/// Places in the text count characters, places in commands bytes.
int characters(const QString& text, std::size_t bytes)
{
    return static_cast<int>(QString::fromUtf8(text.toUtf8().left(static_cast<qsizetype>(bytes))).size());
}

} // namespace

ConsoleEdit::ConsoleEdit(QWidget* parent)
    : QLineEdit(parent), candidates_(new QStringListModel(this)), completer_(new QCompleter(candidates_, this))
{
    setObjectName("console");
    setAccessibleName(tr("Command"));
    setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    setPlaceholderText(tr("Command, for example: lodex help"));
    setToolTip(tr("Enter runs the command, Up and Down bring back former ones, Tab completes"));
    setAcceptDrops(false); // a dropped file is a model, wherever it falls
    completer_->setWidget(this);
    completer_->setCompletionMode(QCompleter::PopupCompletion);
    completer_->setCaseSensitivity(Qt::CaseSensitive);
    completer_->popup()->setObjectName("consoleCandidates");
    connect(completer_, qOverload<const QString&>(&QCompleter::activated), this, &ConsoleEdit::put_word);
    connect(this, &QLineEdit::textEdited, this, [this] {
        place_ = history_.size();
        if (completer_->popup()->isVisible())
            show_candidates();
    });
    const auto tell_hint = [this] {
        emit hint_changed(QString::fromStdString(command_hint(text().left(cursorPosition()).toStdString())));
    };
    connect(this, &QLineEdit::textChanged, this, tell_hint);
    connect(this, &QLineEdit::cursorPositionChanged, this, tell_hint);
}

void ConsoleEdit::set_history(const QStringList& history)
{
    history_ = history;
    place_ = history_.size();
}

bool ConsoleEdit::event(QEvent* event)
{
    // Before the window takes Tab for the next widget.
    if (event->type() == QEvent::KeyPress) {
        const auto* key = static_cast<QKeyEvent*>(event);
        if (key->key() == Qt::Key_Tab && key->modifiers() == Qt::NoModifier && !text().isEmpty()) {
            complete(false);
            return true;
        }
    }
    return QLineEdit::event(event);
}

void ConsoleEdit::keyPressEvent(QKeyEvent* event)
{
    const bool list_open = completer_->popup()->isVisible();
    switch (event->key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
        if (list_open && completer_->popup()->currentIndex().isValid())
            event->ignore(); // the list takes it
        else
            submit();
        return;
    case Qt::Key_Up:
    case Qt::Key_Down:
        if (list_open)
            event->ignore();
        else
            step_history(event->key() == Qt::Key_Up ? -1 : 1);
        return;
    case Qt::Key_Escape:
        if (list_open) {
            event->ignore();
            return;
        }
        clear();
        place_ = history_.size();
        return;
    case Qt::Key_Space:
        if (event->modifiers() & Qt::ControlModifier) {
            complete(true);
            return;
        }
        break;
    default: break;
    }
    QLineEdit::keyPressEvent(event);
}

void ConsoleEdit::submit()
{
    completer_->popup()->hide();
    const QString line = text().trimmed();
    if (line.isEmpty())
        return;
    if (history_.isEmpty() || history_.last() != line)
        history_.append(line);
    place_ = history_.size();
    typed_.clear();
    clear();
    emit submitted(line);
}

void ConsoleEdit::step_history(int by)
{
    const qsizetype place = place_ + by;
    if (place < 0 || place > history_.size())
        return;
    if (place_ == history_.size())
        typed_ = text();
    place_ = place;
    setText(place == history_.size() ? typed_ : history_[place]);
}

void ConsoleEdit::complete(bool show_list)
{
    const Completion completion = complete_at(text(), cursorPosition());
    if (completion.candidates.empty())
        return;
    if (completion.candidates.size() == 1) {
        put_word(QString::fromStdString(completion.candidates.front()));
        return;
    }
    const QString common = QString::fromStdString(common_beginning(completion.candidates));
    const int begin = characters(text(), completion.begin);
    if (common.size() > cursorPosition() - begin)
        setText(text().left(begin) + common + text().mid(cursorPosition()));
    else
        show_list = true;
    if (show_list)
        show_candidates();
}

void ConsoleEdit::show_candidates()
{
    const Completion completion = complete_at(text(), cursorPosition());
    QStringList words;
    for (const std::string& word : completion.candidates)
        words.append(QString::fromStdString(word));
    candidates_->setStringList(words);
    if (words.isEmpty()) {
        completer_->popup()->hide();
        return;
    }
    completer_->setCompletionPrefix({});
    completer_->complete();
}

void ConsoleEdit::put_word(const QString& word)
{
    const Completion completion = complete_at(text(), cursorPosition());
    const int begin = characters(text(), completion.begin);
    const QString rest = text().mid(cursorPosition());
    const QString start = text().left(begin) + word + (rest.startsWith(u' ') ? QString() : QStringLiteral(" "));
    setText(start + rest);
    setCursorPosition(static_cast<int>(start.size()));
}

} // namespace lodex
