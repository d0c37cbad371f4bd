#include "propertyupscale/PageParts.h"

#include <QStyle>

#include <algorithm>
#include <vector>

namespace Kelvane {

QVBoxLayout* new_rows(QWidget* content)
{
    auto* rows = new QVBoxLayout(content);
    rows->setContentsMargins(0, 0, 0, 0);
    return rows;
}

QFormLayout* new_form(QWidget* content)
{
    auto* form = new QFormLayout(content);
    form->setContentsMargins(0, 0, 0, 0);
    form->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
    return form;
}

QLabel* label_of(QWidget* field, const QString& text)
{
    auto* label = new QLabel(text, field->parentWidget());
    label->setToolTip(field->toolTip());
    label->setBuddy(field);
    field->setAccessibleName(text.trimmed());
    return label;
}

void align_labels(std::initializer_list<QWidget*> fields)
{
    std::vector<QLabel*> labels;
    int width = 0;
    for (QWidget* field : fields) {
        const auto* form = qobject_cast<QFormLayout*>(field->parentWidget()->layout());
        labels.push_back(qobject_cast<QLabel*>(form->labelForField(field)));
        width = std::max(width, labels.back()->sizeHint().width());
    }
    for (QLabel* label : labels)
        label->setMinimumWidth(width);
}

QCheckBox* new_check_box(QWidget* parent, const QString& name, const QString& text, const QString& tip)
{
    auto* box = new QCheckBox(text, parent);
    box->setObjectName(name);
    box->setToolTip(tip);
    return box;
}

int indent_under(const QCheckBox* box)
{
    return box->style()->pixelMetric(QStyle::PM_IndicatorWidth, nullptr, box) +
           box->style()->pixelMetric(QStyle::PM_CheckBoxLabelSpacing, nullptr, box);
}

} // namespace Kelvane
