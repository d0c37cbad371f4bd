#include "sgresize/SpinBoxValue.h"

#include <QSignalSpy>
#include <QSpinBox>

namespace {

using Kelvane::SpinBoxValue;

struct Bound {
    Bound()
    {
        box.setRange(2, 10);
        new SpinBoxValue(&box, value.get());
        value->add_observer([this] { ++told; });
    }
    void write(int number) const
    {
        value->set(number);
        value->set_changed();
        value->notify();
    }

    QSpinBox box;
    Lodex::Ref<Lodex::IntValue> value{new Lodex::IntValue(7)};
    int told = 0;
};

TEST(SpinBoxValue, TheBoxStartsWithTheValue)
{
    const Bound bound;
    EXPECT_EQ(bound.box.value(), 7);
}

TEST(SpinBoxValue, AValueOutsideTheRangeIsBroughtIn)
{
    QSpinBox box;
    box.setRange(1, 5);
    const Lodex::Ref<Lodex::IntValue> value(new Lodex::IntValue(9));
    new SpinBoxValue(&box, value.get());
    EXPECT_EQ(box.value(), 5);
    EXPECT_EQ(value->value(), 5);
}

TEST(SpinBoxValue, TheBoxWritesTheValueOnceAndTellsItsObservers)
{
    Bound bound;
    QSignalSpy changed(&bound.box, &QSpinBox::valueChanged);
    bound.box.setValue(4);
    EXPECT_EQ(bound.value->value(), 4);
    EXPECT_EQ(bound.told, 1);
    EXPECT_EQ(changed.count(), 1);
    EXPECT_FALSE(bound.value->changed());
}

TEST(SpinBoxValue, TheValueWritesTheBoxWithoutEcho)
{
    Bound bound;
    QSignalSpy changed(&bound.box, &QSpinBox::valueChanged);
    bound.write(9);
    EXPECT_EQ(bound.box.value(), 9);
    EXPECT_EQ(changed.count(), 1);
    EXPECT_EQ(bound.told, 1);
    bound.write(9);
    EXPECT_EQ(changed.count(), 1);
}

TEST(SpinBoxValue, TheBoxClampsWhatTheValueIsGiven)
{
    const Bound bound;
    bound.write(50);
    EXPECT_EQ(bound.box.value(), 10);
    EXPECT_EQ(bound.value->value(), 10);
    bound.write(0);
    EXPECT_EQ(bound.box.value(), 2);
    EXPECT_EQ(bound.value->value(), 2);
}

TEST(SpinBoxValue, ANarrowerRangeReachesTheValue)
{
    Bound bound;
    bound.box.setMaximum(5);
    EXPECT_EQ(bound.value->value(), 5);
}

TEST(SpinBoxValue, TheValueOutlivesTheBox)
{
    const Lodex::Ref<Lodex::IntValue> value(new Lodex::IntValue(3));
    auto box = std::make_unique<QSpinBox>();
    new SpinBoxValue(box.get(), value.get());
    EXPECT_EQ(value->references(), 2);
    box.reset();
    EXPECT_EQ(value->references(), 1);
    value->set(4);
    value->set_changed();
    value->notify();
    EXPECT_EQ(value->value(), 4);
}

} // namespace
