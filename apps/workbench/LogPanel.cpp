#include "LogPanel.h"

#include "LogView.h"

#include <QClipboard>
#include <QComboBox>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace lodex {

LogPanel::LogPanel(QWidget* parent) : QWidget(parent), view_(new LogView(this))
{
    setObjectName("logPanel");
    auto* level = new QComboBox(this);
    level->setObjectName("logLevel");
    level->setToolTip(tr("Which messages are shown"));
    level->setAccessibleName(tr("Which messages are shown"));
    level->addItem(tr("All messages"), static_cast<int>(LogView::Shown::All));
    level->addItem(tr("Warnings and errors"), static_cast<int>(LogView::Shown::WarningsAndErrors));
    level->addItem(tr("Errors"), static_cast<int>(LogView::Shown::Errors));
    auto* search = new QLineEdit(this);
    search->setObjectName("logSearch");
    search->setToolTip(tr("Shows only messages that hold this text"));
    search->setPlaceholderText(tr("Find in messages"));
    search->setClearButtonEnabled(true);
    search->setAcceptDrops(false); // a dropped file is a model, wherever it falls
    const auto add_button = [this](const char* name, const QString& text, const QString& tip) {
        auto* button = new QPushButton(text, this);
        button->setObjectName(name);
        button->setToolTip(tip);
        button->setAutoDefault(false);
        return button;
    };
    QPushButton* copy = add_button("logCopy", tr("Copy"), tr("Copies the messages that are shown"));
    QPushButton* clear = add_button("logClear", tr("Clear"), tr("Forgets all messages"));

    auto* row = new QHBoxLayout;
    row->addWidget(level);
    row->addWidget(search, 1);
    row->addWidget(copy);
    row->addWidget(clear);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 4, 0, 0);
    column->addLayout(row);
    column->addWidget(view_, 1);
    connect(level, &QComboBox::currentIndexChanged, this,
            [this, level] { view_->set_shown(static_cast<LogView::Shown>(level->currentData().toInt())); });
    connect(search, &QLineEdit::textChanged, view_, &LogView::set_search);
    connect(copy, &QPushButton::clicked, this, [this] { QGuiApplication::clipboard()->setText(view_->toPlainText()); });
    connect(clear, &QPushButton::clicked, view_, &LogView::clear_entries);
}

} // namespace lodex
