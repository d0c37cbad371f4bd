#include "frame/WidgetHelpers.h"

#include <Lodex/geobase/GeobaseLib.h>
#include <Lodex/qtools/QtText.h>

#include <QBoxLayout>
#include <QFormLayout>
#include <QFrame>
#include <QGridLayout>
#include <QLabel>

#include <string>

namespace Kelvane {

bool build_unused_name(const Lodex::CString& base, QString& result)
{
    const auto* catalogue = Lodex::GeobaseLib::instance();
    if (!catalogue->is_name_used(base)) {
        result = Lodex::to_qstring(base);
        return false;
    }
    for (unsigned long long n = 0;; ++n) {
        const Lodex::CString name = base.str() + "_" + std::to_string(n);
        if (!catalogue->is_name_used(name)) {
            result = Lodex::to_qstring(name);
            return true;
        }
    }
}

namespace {

/// Every kind of layout takes a nested one by another call.
void nest(QLayout* layout, QLayout* child)
{
    if (auto* box = qobject_cast<QBoxLayout*>(layout)) {
        box->addLayout(child);
    } else if (auto* grid = qobject_cast<QGridLayout*>(layout)) {
        grid->addLayout(child, grid->count() == 0 ? 0 : grid->rowCount(), 0, 1, -1);
    } else if (auto* form = qobject_cast<QFormLayout*>(layout)) {
        form->addRow(child);
    } else {
        child->setParent(layout);
        layout->addItem(child);
    }
}

} // namespace

void add_separator(QWidget* parent, QLayout* layout, bool with_rule, const QString& title, const QString& color)
{
    if (!parent || !layout)
        return;
    auto* row = new QHBoxLayout;
    nest(layout, row);
    if (!title.isEmpty()) {
        auto* label = new QLabel(parent);
        label->setTextFormat(Qt::RichText);
        label->setText(QStringLiteral("<nobr><font color=\"%1\">%2</font></nobr>")
                           .arg(color.isEmpty() ? QStringLiteral("#004fa3") : color, title));
        row->addWidget(label);
    }
    if (with_rule) {
        auto* rule = new QFrame(parent);
        rule->setFrameStyle(QFrame::HLine | QFrame::Sunken);
        row->addWidget(rule, 1);
    }
}

} // namespace Kelvane
