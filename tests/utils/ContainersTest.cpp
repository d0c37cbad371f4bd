#include <Lodex/utils/Action.h>
#include <Lodex/utils/COSNameList.h>
#include <Lodex/utils/CString.h>
#include <Lodex/utils/List.h>
#include <Lodex/utils/PtrList.h>
#include <Lodex/utils/Value.h>

#include <gtest/gtest.h>

#include <sstream>
#include <string>

using namespace Lodex;

TEST(CString, NullIsEmpty)
{
    const CString null(static_cast<const char*>(nullptr));
    EXPECT_TRUE(null.empty());
    EXPECT_EQ(null, CString());
    EXPECT_STREQ(null.c_str(), "");
    EXPECT_EQ(CString("Größe").length(), 7u);
    EXPECT_LT(CString("a"), CString("b"));
    std::ostringstream out;
    out << CString("text");
    EXPECT_EQ(out.str(), "text");
}

TEST(CopyCString, SizeCountsTheEndingNul)
{
    CopyCString text("abc");
    EXPECT_EQ(text.size(), 4u);
    EXPECT_EQ(CopyCString().size(), 0u);
    text[1] = '_';
    EXPECT_EQ(text, CString("a_c"));
    const CString fixed("x");
    CopyCString copy(fixed);
    copy[0] = 'y';
    EXPECT_EQ(fixed, CString("x"));
}

TEST(COSNameList, UniqueInsertions)
{
    COSNameList names;
    names.append("b");
    names.append("b");
    EXPECT_EQ(names.count(), 2);
    names.unique_prepend("a");
    names.unique_prepend("b");
    names.unique_append("c");
    names.unique_append("a");
    EXPECT_EQ(names.count(), 4);
    EXPECT_EQ(names.name(0), CString("a"));
    EXPECT_EQ(names.name(3), CString("c"));
    EXPECT_TRUE(names.contains("c"));
    EXPECT_FALSE(names.contains("C"));
    EXPECT_THROW(static_cast<void>(names.name(4)), std::out_of_range);
    EXPECT_THROW(static_cast<void>(names.name(-1)), std::out_of_range);
    names.clear();
    EXPECT_EQ(names.count(), 0);
}

TEST(List, Values)
{
    List<int> list{1, 2, 2};
    list.append(3);
    list[0] = 5;
    EXPECT_EQ(list, (List<int>{5, 2, 2, 3}));
    EXPECT_EQ(list.count(), 4);
    list.clear();
    EXPECT_TRUE(list.empty());
}

TEST(PtrList, OwnsItsItemsInOrder)
{
    PtrList<std::string> list;
    const std::string* b = list.append(std::make_unique<std::string>("b"));
    list.insert(0, std::make_unique<std::string>("a"));
    list.insert(99, std::make_unique<std::string>("d"));
    list.insert(2, std::make_unique<std::string>("c"));
    ASSERT_EQ(list.count(), 4);
    EXPECT_EQ(*list.at(0) + *list.at(1) + *list.at(2) + *list.at(3), "abcd");
    EXPECT_EQ(list.find(b), 1);
    EXPECT_EQ(list.at(-1), nullptr);
    EXPECT_EQ(list.at(4), nullptr);
    const auto taken = list.take(1);
    EXPECT_EQ(taken.get(), b);
    EXPECT_EQ(list.find(b), -1);
    EXPECT_EQ(list.take(3), nullptr);
    list.clear();
    EXPECT_TRUE(list.empty());
}

namespace {

class CountingAction : public Action {
public:
    explicit CountingAction(int& deaths) : deaths_(deaths) {}
    void execute() override { ++executed; }
    int executed = 0;

protected:
    ~CountingAction() override { ++deaths_; }

private:
    int& deaths_;
};

} // namespace

TEST(Resource, LastReferenceDeletes)
{
    int deaths = 0;
    {
        const Ref<CountingAction> first(new CountingAction(deaths));
        EXPECT_EQ(first->references(), 1);
        Ref<CountingAction> second = first;
        EXPECT_EQ(first->references(), 2);
        second = second;
        EXPECT_EQ(first->references(), 2);
        second = Ref<CountingAction>();
        EXPECT_FALSE(second);
        EXPECT_EQ(first->references(), 1);
        first->execute();
        EXPECT_EQ(first->executed, 1);
        EXPECT_EQ(deaths, 0);
    }
    EXPECT_EQ(deaths, 1);
}

TEST(ObservableValue, TellsOnlyWhenMarked)
{
    const Ref<IntValue> value(new IntValue(1));
    int calls = 0, seen = 0;
    const int id = value->add_observer([&] {
        ++calls;
        seen = value->value();
    });
    value->set(9999);
    value->notify();
    EXPECT_EQ(calls, 0);
    value->set_changed();
    EXPECT_TRUE(value->changed());
    value->notify();
    value->notify();
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(seen, 9999);
    EXPECT_FALSE(value->changed());
    value->remove_observer(id);
    value->set_changed();
    value->notify();
    EXPECT_EQ(calls, 1);
}

TEST(ObservableValue, AnObserverMayRemoveItself)
{
    const Ref<StringValue> value(new StringValue("a"));
    int first_calls = 0, second_calls = 0;
    int first = 0;
    first = value->add_observer([&] {
        ++first_calls;
        value->remove_observer(first);
    });
    value->add_observer([&] { ++second_calls; });
    for (int n = 0; n < 2; ++n) {
        value->set_changed();
        value->notify();
    }
    EXPECT_EQ(first_calls, 1);
    EXPECT_EQ(second_calls, 2);
}
