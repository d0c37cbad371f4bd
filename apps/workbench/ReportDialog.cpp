#include "ReportDialog.h"

#include "lodex/utils/Numbers.h"
#include "lodex/xtools/HelpKey.h"

#include <nlohmann/json.hpp>

#include <QClipboard>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QGuiApplication>
#include <QHeaderView>
#include <QPushButton>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace lodex {

namespace {

using nlohmann::ordered_json;

QString text_of(const ordered_json& value)
{
    if (value.is_string())
        return QString::fromStdString(value.get<std::string>());
    if (value.is_number_float())
        return QString::fromStdString(format_general(value.get<double>(), 10));
    return QString::fromStdString(value.dump());
}

bool is_flat(const ordered_json& value)
{
    return value.is_array() && std::ranges::none_of(value, [](const auto& item) { return item.is_structured(); });
}

/// What stands beside the name of a value that has parts: a flat list whole, else what names the part.
QString summary(const ordered_json& value)
{
    if (value.empty())
        return QObject::tr("none");
    if (is_flat(value)) {
        QStringList parts;
        for (const auto& item : value)
            parts.append(text_of(item));
        return parts.join(QStringLiteral(", "));
    }
    if (value.is_array())
        return QObject::tr("%1 entries").arg(value.size());
    for (const char* key : {"unit", "name", "k"}) {
        if (value.contains(key))
            return QStringLiteral("%1 %2").arg(QString::fromLatin1(key), text_of(value[key]));
    }
    return {};
}

void fill(QTreeWidgetItem* parent, const ordered_json& value)
{
    for (const auto& [key, part] : value.items()) {
        const QString name = value.is_array() ? QString::number(std::stoul(key) + 1) : QString::fromStdString(key);
        auto* item = new QTreeWidgetItem(parent, {name, part.is_structured() ? summary(part) : text_of(part)});
        if (part.is_structured() && !is_flat(part))
            fill(item, part);
    }
}

} // namespace

ReportDialog::ReportDialog(const QString& grid, const QString& json, QWidget* parent)
    : QDialog(parent), json_(json), tree_(new QTreeWidget(this))
{
    setObjectName("reportDialog");
    set_help_page(*this, "user-doc/report.html");
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowTitle(tr("Report of %1").arg(grid));
    tree_->setObjectName("reportTree");
    tree_->setToolTip(tr("Numbers of the grid; lengths and volumes in its own unit"));
    tree_->setHeaderLabels({tr("What"), tr("Value")});
    tree_->setAlternatingRowColors(true);
    fill(tree_->invisibleRootItem(), ordered_json::parse(json.toStdString()));
    tree_->header()->setSectionResizeMode(0, QHeaderView::ResizeToContents);

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
    const auto add_button = [&](const char* name, const QString& text, const QString& tip) {
        QPushButton* button = buttons->addButton(text, QDialogButtonBox::ActionRole);
        button->setObjectName(name);
        button->setToolTip(tip);
        button->setAutoDefault(false);
        return button;
    };
    connect(add_button("reportCopy", tr("Copy"), tr("Copies the report as JSON")), &QPushButton::clicked, this,
            [this] { QGuiApplication::clipboard()->setText(json_); });
    connect(add_button("reportSave", tr("Save..."), tr("Saves the report as JSON")), &QPushButton::clicked, this,
            &ReportDialog::save);
    buttons->button(QDialogButtonBox::Close)->setObjectName("reportClose");
    buttons->button(QDialogButtonBox::Close)->setToolTip(tr("Closes this window"));
    buttons->button(QDialogButtonBox::Close)->setDefault(true);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(tree_);
    layout->addWidget(buttons);
    resize(560, 640);
}

void ReportDialog::save()
{
    const QString path =
        QFileDialog::getSaveFileName(this, tr("Save the report"), QString(), tr("JSON files (*.json);;All files (*)"));
    if (!path.isEmpty())
        emit save_requested(path);
}

} // namespace lodex
