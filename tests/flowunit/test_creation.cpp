// Flow units made by the system: questions, checks in their order, messages, what the button does.

#include "FlowUnitTest.h"

#include <QSignalSpy>

namespace {

constexpr const char* first = "property_panel_1";

class FlowUnitCreation : public FlowUnitTest {
protected:
    /// Layer means 10, 20, ..., units as given.
    void prepare(const std::vector<int>& sizes = {6})
    {
        add_layered("G", sizes);
        open();
    }
    void create(int method_index, const QString& value, const char* answer, const char* panel = first)
    {
        auto* list = find<QComboBox>(panel, "guessComboBox");
        list->setCurrentIndex(method_index);
        emit list->textActivated(list->currentText());
        find<QLineEdit>(panel, "guessLineEdit")->setText(value);
        answers.expect({answer});
        click(find<QPushButton>(panel, "guessPushButton"));
    }
};

} // namespace

TEST_F(FlowUnitCreation, TheQuestion)
{
    prepare();
    set_units({1, 1, 2, 2, 3, 3});
    create(0, "2", "cancel_button");
    create(0, "2", "");
    EXPECT_EQ(units(), (Units{1, 1, 2, 2, 3, 3}));
    ASSERT_EQ(answers.boxes.size(), 2U);
    EXPECT_EQ(answers.boxes[0].title, "Flow Unit");
    EXPECT_EQ(answers.boxes[0].text, "Do you want to reset the flow unit definitions before proceeding?\n Otherwise, the "
                                     "calculation will start from the current flow units.");
    EXPECT_EQ(answers.boxes[0].buttons, (QStringList{"&Cancel", "&No", "&Yes"}));
    EXPECT_EQ(answers.boxes[0].default_button, "yes_button");
    EXPECT_EQ(fatal(), Texts{});
}

TEST_F(FlowUnitCreation, YesStartsFromSingleLayersNoFromTheCurrentUnits)
{
    prepare();
    // Means 10 ... 60: equally close pairs, the upper ones first.
    create(0, "3", "yes_button");
    const Units from_layers = units();
    EXPECT_EQ(from_layers.back(), 3);
    set_units({1, 2, 2, 2, 2, 3});
    create(0, "2", "no_button");
    // Means 10, 35, 60: the upper of two equal distances.
    EXPECT_EQ(units(), (Units{1, 1, 1, 1, 1, 2}));
    set_units({1, 2, 2, 2, 2, 3});
    create(5, "25", "no_button");
    EXPECT_EQ(units(), (Units{1, 2, 2, 2, 2, 3})) << "the second layer is not above 25";
    create(5, "25", "yes_button");
    EXPECT_EQ(units(), (Units{1, 2, 3, 3, 3, 3}));
    create(4, "35", "yes_button");
    EXPECT_EQ(units(), (Units{1, 1, 1, 2, 3, 4}));
    create(1, "5", "yes_button");
    EXPECT_EQ(units(), (Units{1, 1, 2, 2, 3, 3}));
    create(2, "25", "yes_button"); // 10, 20: 33 % off; 20, 30: 20 % off 25
    EXPECT_EQ(units(), (Units{1, 2, 2, 3, 3, 3}));
    create(3, "41", "yes_button"); // 20, 30 differ by 40 % of 25; 40, 50, 60 by 40 % of 50
    EXPECT_EQ(units(), (Units{1, 2, 2, 3, 3, 3}));
    EXPECT_EQ(fatal(), Texts{});
}

TEST_F(FlowUnitCreation, NeverAcrossAStratigraphicUnit)
{
    prepare({2, 3, 1});
    create(4, "1000", "yes_button");
    EXPECT_EQ(units(), (Units{1, 1, 2, 2, 2, 3}));
    create(0, "1", "yes_button");
    EXPECT_EQ(units(), (Units{1, 1, 2, 2, 2, 3}));
}

TEST_F(FlowUnitCreation, MessagesInTheirOrder)
{
    prepare();
    const Texts less{"Specify a number that is less than the current number of units.\n"};
    const Texts integer{"Cannot evaluate the number of units value. Please specify an integer.\n"};
    const Texts threshold{"Cannot evaluate the threshold value.\n"};
    for (const char* text : {"6", "7"}) {
        create(0, text, "no_button");
        EXPECT_EQ(take_fatal(), less) << text;
    }
    for (const char* text : {"2.5", "", "x", "0x3"}) {
        create(0, text, "no_button");
        EXPECT_EQ(take_fatal(), integer) << text;
    }
    for (const int method_index : {1, 2, 3, 4, 5}) {
        for (const char* text : {"", "abc", "1,5", "nan"}) {
            create(method_index, text, "no_button");
            EXPECT_EQ(take_fatal(), threshold) << method_index << text;
        }
    }
    EXPECT_EQ(units(), (Units{1, 2, 3, 4, 5, 6}));
    // A Yes has reset before the check.
    set_units({1, 1, 1, 1, 2, 2});
    create(0, "", "yes_button");
    EXPECT_EQ(take_fatal(), integer);
    EXPECT_EQ(units(), (Units{1, 2, 3, 4, 5, 6}));
}

TEST_F(FlowUnitCreation, OnAnEmptyTableTheCountComesFirst)
{
    open(CommandStub{});
    create(0, "", "no_button");
    EXPECT_EQ(take_fatal(), Texts{"Specify a number that is less than the current number of units.\n"});
    create(1, "1", "no_button");
    EXPECT_TRUE(take_fatal().empty());
    EXPECT_EQ(table->rowCount(), 0);
}

TEST_F(FlowUnitCreation, TheButtonWorksOncePerChoice)
{
    prepare();
    auto* button = find<QPushButton>(first, "guessPushButton");
    EXPECT_TRUE(button->isEnabled());
    for (const char* answer : {"no_button", "yes_button"}) {
        create(0, "3", answer);
        EXPECT_FALSE(button->isEnabled()) << answer;
    }
    auto* list = find<QComboBox>(first, "guessComboBox");
    emit list->textActivated(list->currentText());
    EXPECT_TRUE(button->isEnabled());
    answers.expect({"cancel_button"});
    click(button);
    EXPECT_FALSE(button->isEnabled());
    answers.expect({"yes_button"});
    press("resetPushButton");
    EXPECT_TRUE(button->isEnabled()) << "the table was filled again";
}

TEST_F(FlowUnitCreation, PanelsAreFoundByNumberAndKind)
{
    prepare();
    find<QSpinBox>("numRatiosSpinBox")->setValue(1);
    find<QSpinBox>("numPropSpinBox")->setValue(2);
    select("property_panel_2", "propertyComboBox", "Q");
    select("ratio_panel_1", "propertyComboBox", "Q");
    select("ratio_panel_1", "overPropertyComboBox", "P");
    const QSignalSpy signal(widget->getRatioPanel(1), &Kelvane::LQFlowUnitPanel::guessFlowUnitSignal);
    // Q is 2 everywhere: outdated statistics are worked out first.
    create(1, "0.1", "no_button", "property_panel_2");
    EXPECT_EQ(units(), (Units{1, 1, 1, 1, 1, 1}));
    // 2/10, 2/20, ... : 0.2, 0.1, 0.0667, 0.05, 0.04, 0.0333
    create(5, "0.09", "yes_button", "ratio_panel_1");
    EXPECT_EQ(units(), (Units{1, 1, 2, 3, 4, 5}));
    ASSERT_EQ(signal.count(), 1);
    EXPECT_EQ(signal.at(0).at(0).toInt(), 1);
    EXPECT_TRUE(signal.at(0).at(1).toBool());
    const Units before = units();
    for (const bool is_ratio : {false, true}) {
        answers.expect({"no_button"});
        widget->guessFlowUnit(7, is_ratio);
    }
    EXPECT_EQ(units(), before);
}
