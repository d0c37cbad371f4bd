#include "LogView.h"

#include <Lodex/qtools/QtText.h>

#include <QContextMenuEvent>
#include <QFontDatabase>
#include <QMenu>
#include <QScrollBar>
#include <QTextCursor>
#include <QThread>

#include <memory>

namespace lodex {

namespace {

constexpr std::size_t most_entries = 5000;
constexpr int most_lines = 50000;

} // namespace

LogView::LogView(QWidget* parent) : QPlainTextEdit(parent)
{
    setObjectName("logView");
    setAccessibleName(tr("Messages"));
    setToolTip(tr("Messages, commands that were given and their answers"));
    setReadOnly(true);
    setUndoRedoEnabled(false);
    setMaximumBlockCount(most_lines);
    setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    Lodex::Logger::add_sink(this);
}

LogView::~LogView()
{
    Lodex::Logger::remove_sink(this);
}

void LogView::add_command(const QString& text)
{
    add(Kind::Command, QStringLiteral("> ") + text);
}

void LogView::add_answer(const QString& text)
{
    add(Kind::Answer, text);
}

void LogView::message(Lodex::LogLevel level, const Lodex::CString& text)
{
    const QString shown = Lodex::to_qstring(text);
    const auto enter = [this, level, shown] {
        switch (level) {
        case Lodex::LogLevel::Info: add(Kind::Info, shown); break;
        case Lodex::LogLevel::Warning: add(Kind::Warning, tr("warning: %1").arg(shown)); break;
        case Lodex::LogLevel::Error:
        case Lodex::LogLevel::Fatal:
            add(Kind::Error, tr("error: %1").arg(shown));
            emit problem(shown.section(u'\n', 0, 0));
            break;
        }
    };
    if (QThread::currentThread() == thread())
        enter();
    else
        QMetaObject::invokeMethod(this, enter, Qt::QueuedConnection);
}

void LogView::add(Kind kind, const QString& text)
{
    Entry entry{kind, text};
    while (entry.text.endsWith(u'\n'))
        entry.text.chop(1);
    entries_.push_back(entry);
    if (entries_.size() > most_entries)
        entries_.pop_front();
    if (is_shown(entry))
        write(entry);
}

bool LogView::is_shown(const Entry& entry) const
{
    const bool of_kind = shown_ == Shown::All || entry.kind == Kind::Error ||
                         (shown_ == Shown::WarningsAndErrors && entry.kind == Kind::Warning);
    return of_kind && (search_.isEmpty() || entry.text.contains(search_, Qt::CaseInsensitive));
}

void LogView::set_shown(Shown shown)
{
    shown_ = shown;
    rewrite();
}

void LogView::set_search(const QString& text)
{
    search_ = text;
    rewrite();
}

void LogView::clear_entries()
{
    entries_.clear();
    clear();
}

void LogView::set_entries(const Entries& entries)
{
    entries_ = entries;
    rewrite();
}

void LogView::write(const Entry& entry)
{
    const bool at_end = verticalScrollBar()->value() == verticalScrollBar()->maximum();
    QTextCursor cursor(document());
    cursor.movePosition(QTextCursor::End);
    if (!document()->isEmpty())
        cursor.insertBlock();
    QTextCharFormat format;
    format.setForeground(colour(entry.kind));
    if (entry.kind == Kind::Command || entry.kind == Kind::Error)
        format.setFontWeight(QFont::Bold);
    cursor.insertText(entry.text, format);
    if (at_end)
        verticalScrollBar()->setValue(verticalScrollBar()->maximum());
}

void LogView::rewrite()
{
    clear();
    for (const Entry& entry : entries_) {
        if (is_shown(entry))
            write(entry);
    }
    verticalScrollBar()->setValue(verticalScrollBar()->maximum());
}

QColor LogView::colour(Kind kind) const
{
    const bool dark = palette().color(QPalette::Base).lightness() < 128;
    switch (kind) {
    case Kind::Warning: return dark ? QColor(0xffb54c) : QColor(0x8a5300);
    case Kind::Error: return dark ? QColor(0xff7b72) : QColor(0xb3261e);
    case Kind::Command: return dark ? QColor(0x79b8ff) : QColor(0x0b57a4);
    case Kind::Answer:
    case Kind::Info: break;
    }
    return palette().color(QPalette::Text);
}

void LogView::changeEvent(QEvent* event)
{
    QPlainTextEdit::changeEvent(event);
    if (event->type() == QEvent::PaletteChange && !entries_.empty())
        rewrite();
}

void LogView::contextMenuEvent(QContextMenuEvent* event)
{
    const std::unique_ptr<QMenu> menu(createStandardContextMenu());
    menu->addSeparator();
    QAction* clear = menu->addAction(tr("Clear"));
    if (menu->exec(event->globalPos()) == clear)
        clear_entries();
}

} // namespace lodex
