#include "sgresize/SpinBoxValue.h"

#include <QSpinBox>

namespace Kelvane {

SpinBoxValue::SpinBoxValue(QSpinBox* box, Lodex::IntValue* value) : QObject(box), box_(box), value_(value)
{
    box_->setValue(value_->value());
    value_->set(box_->value());
    connect(box_, &QSpinBox::valueChanged, this, &SpinBoxValue::box_changed);
    observer_ = value_->add_observer([this] { value_changed(); });
}

SpinBoxValue::~SpinBoxValue()
{
    value_->remove_observer(observer_);
}

void SpinBoxValue::box_changed(int number)
{
    value_->set(number);
    if (passing_on_)
        return;
    passing_on_ = true;
    value_->set_changed();
    value_->notify();
    passing_on_ = false;
}

void SpinBoxValue::value_changed()
{
    if (passing_on_)
        return;
    passing_on_ = true;
    box_->setValue(value_->value());
    passing_on_ = false;
    value_->set(box_->value());
}

} // namespace Kelvane
