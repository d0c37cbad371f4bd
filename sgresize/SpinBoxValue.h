#pragma once

#include <Lodex/utils/Value.h>

#include <QObject>

class QSpinBox;

namespace Kelvane {

/// Keeps a spin box and a shared value in step, both ways and without echo. The box starts with what the value holds;
/// a value outside the box's range is brought into it. Lives as long as the box.
class SpinBoxValue : public QObject {
public:
    SpinBoxValue(QSpinBox* box, Lodex::IntValue* value);
    ~SpinBoxValue() override;

private:
    void box_changed(int number);
    void value_changed();

    QSpinBox* box_;
    Lodex::Ref<Lodex::IntValue> value_;
    int observer_ = 0;
    bool passing_on_ = false;
};

} // namespace Kelvane
