#include "ShortcutsDialog.h"

#include "lodex/xtools/HelpKey.h"

#include <QAction>
#include <QDialogButtonBox>
#include <QHeaderView>
#include <QLineEdit>
#include <QPushButton>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace lodex {

namespace {

QString plain(QString text)
{
    return text.remove(u'&').remove(QStringLiteral("..."));
}

} // namespace

ShortcutsDialog::ShortcutsDialog(const QList<Row>& rows, QWidget* parent) : QDialog(parent)
{
    setObjectName("shortcutsDialog");
    set_help_page(*this, "reference/shortcuts.html");
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowTitle(tr("Actions and shortcuts"));
    auto* search = new QLineEdit(this);
    search->setObjectName("shortcutsSearch");
    search->setPlaceholderText(tr("Find an action"));
    search->setToolTip(tr("Shows only actions that hold this text"));
    search->setClearButtonEnabled(true);
    auto* table = new QTreeWidget(this);
    table->setObjectName("shortcutsTable");
    table->setToolTip(tr("Every action of the menus"));
    table->setHeaderLabels({tr("Menu"), tr("Action"), tr("Keys"), tr("What it does")});
    table->setRootIsDecorated(false);
    table->setAlternatingRowColors(true);
    const auto add = [table](const QString& menu, const QString& text, const QString& keys, const QString& tip) {
        new QTreeWidgetItem(table, {menu, text, keys, tip});
    };
    for (const Row& row : rows)
        add(plain(row.menu), plain(row.action->text()), row.action->shortcut().toString(QKeySequence::NativeText),
            row.action->statusTip());
    const QString camera = tr("Camera");
    add(camera, tr("Turn"), tr("Left button, arrow keys"), tr("Turns the view"));
    add(camera, tr("Move"), tr("Middle button, Shift and left button"), tr("Moves the view"));
    add(camera, tr("Nearer and farther"), tr("Wheel, right button, + and -"), tr("Comes nearer or goes away"));
    add(camera, tr("Show everything"), tr("Home"), tr("Brings the whole grid into view"));
    add(camera, tr("Pick"), tr("Click"), tr("Shows the cell, or hands it to the dialog that waits for one"));
    add(camera, tr("Turn about a cell"), tr("Double click"),
        tr("Puts the cell in the middle; on the legend, edits the colours"));
    add(camera, tr("End a tool"), tr("Esc"), tr("No dialog waits for a cell any more"));
    const QString console = tr("Command line");
    add(console, tr("Complete"), tr("Tab, Ctrl+Space"), tr("Completes the word, or lists what may stand here"));
    add(console, tr("Former commands"), tr("Up, Down"), tr("Brings back what was typed before"));
    for (int column = 0; column < 3; ++column)
        table->resizeColumnToContents(column);

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
    buttons->button(QDialogButtonBox::Close)->setObjectName("shortcutsClose");
    buttons->button(QDialogButtonBox::Close)->setToolTip(tr("Closes this window"));
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(search, &QLineEdit::textChanged, this, [table](const QString& text) {
        for (int row = 0; row < table->topLevelItemCount(); ++row) {
            const QTreeWidgetItem* item = table->topLevelItem(row);
            bool found = false;
            for (int column = 0; column < item->columnCount(); ++column)
                found = found || item->text(column).contains(text, Qt::CaseInsensitive);
            table->topLevelItem(row)->setHidden(!found);
        }
    });
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(search);
    layout->addWidget(table, 1);
    layout->addWidget(buttons);
    resize(1000, 640);
}

} // namespace lodex
