#pragma once

#include <QDialog>
#include <QList>

class QAction;

namespace lodex {

/// What the menus can do, with keys and explanations, made from the actions themselves. Text to look for narrows it.
class ShortcutsDialog : public QDialog {
    Q_OBJECT

public:
    struct Row {
        QString menu;
        const QAction* action;
    };
    explicit ShortcutsDialog(const QList<Row>& rows, QWidget* parent = nullptr);
};

} // namespace lodex
