// Names under which others reach the parts of the dialog, its texts to the letter, and that all of them are translated.

#include "FlowUnitTest.h"

#include <QGroupBox>
#include <QMetaMethod>
#include <QTranslator>

namespace {

class FlowUnitNames : public FlowUnitTest {
protected:
    static void expect_methods(const QObject* object, QMetaMethod::MethodType type, std::initializer_list<const char*> methods)
    {
        const QMetaObject* meta = object->metaObject();
        for (const char* method : methods) {
            const int index = meta->indexOfMethod(QMetaObject::normalizedSignature(method));
            ASSERT_GE(index, 0) << meta->className() << " " << method;
            EXPECT_EQ(meta->method(index).methodType(), type) << method;
            EXPECT_EQ(meta->method(index).access(), QMetaMethod::Public) << method;
        }
    }
};

/// Puts a mark before every text that is looked up.
class Marking : public QTranslator {
public:
    Marking() { QCoreApplication::installTranslator(this); }
    ~Marking() override { QCoreApplication::removeTranslator(this); }
    [[nodiscard]] QString translate(const char*, const char* source, const char*, int) const override
    {
        return QStringLiteral("~") + QString::fromUtf8(source);
    }
    [[nodiscard]] bool isEmpty() const override { return false; }
};

} // namespace

TEST_F(FlowUnitNames, SlotsAndSignals)
{
    add_layered("G", {2});
    open();
    find<QSpinBox>("numRatiosSpinBox")->setValue(1);
    expect_methods(widget, QMetaMethod::Slot,
                   {"numPropertyPanelChanged(int)", "numRatioPanelChanged(int)", "sgridSelectionChanged(const QString&)",
                    "sgridSelectionChanged(Lodex::SGrid*)", "sgridSelectionChanged()", "resetFlowUnit()", "addFlowUnit()",
                    "mergeFlowUnit()", "updateStatistics()", "update_guess()", "keyPressed(QKeyEvent*)", "panelsUpdate()",
                    "setNewGridName(const QString&)", "resizeAllLQFlowUnitPanel(int)", "guessFlowUnit(int,bool)",
                    "updateNumFlowUnit()", "updateNumLayers()", "launchUpgriddingProcess(const Lodex::CString&)",
                    "saveUpgridding(bool)", "saveUpgridding2Txt()", "checkUpgridding()", "tableSelectionChanged(int,int)",
                    "tableUpdate()", "tableVHeaderReleased(int)", "resizeLQFlowUnitPanel(int)", "showTest()",
                    "setFlowUnit(Lodex::List<int>)"});
    for (const QObject* panel : {widget->getPropertyPanel(1), widget->getRatioPanel(1)}) {
        expect_methods(panel, QMetaMethod::Slot,
                       {"changeSGrid(Lodex::SGrid*)", "averagingClicked(const QString&)", "changeProperty(const QString&)",
                        "changeRegion(const QString&)", "volWeightedChecked()", "powerValueHasChanged(const QString&)",
                        "guessFlowUnit()", "guessChanged(const QString&)"});
        expect_methods(panel, QMetaMethod::Signal,
                       {"colormapUpdateSignal()", "mustBeUpdatedSignal()", "guessFlowUnitSignal(int,bool)"});
    }
    expect_methods(widget->getRatioPanel(1), QMetaMethod::Slot, {"changeOverProperty(const QString&)"});
    expect_methods(dialog, QMetaMethod::Slot,
                   {"apply()", "on_ok()", "on_help()", "cancel()", "on_save_text()", "show_extension(bool)",
                    "add_widget_to_extension(QWidget*)", "set_region(bool)", "set_region_mode(int)", "update_region_selector()"});
    EXPECT_STREQ(widget->metaObject()->className(), "Kelvane::LQFlowUnitWidget");
    EXPECT_STREQ(table->metaObject()->className(), "Kelvane::LQTable");
    EXPECT_STREQ(widget->getPropertyPanel(1)->metaObject()->className(), "Kelvane::LQFlowUnitPropertyPanel");
    EXPECT_STREQ(widget->getRatioPanel(1)->metaObject()->className(), "Kelvane::LQFlowUnitRatioPanel");
}

TEST_F(FlowUnitNames, TextsOfTheControls)
{
    add_layered("G", {2});
    open();
    find<QSpinBox>("numRatiosSpinBox")->setValue(1);
    EXPECT_EQ(table->toolTip(),
              "Table Statistics:\n"
              "Flow Unit: A group of n layers with the same fluid-flow feature (generally smaller than a stratigraphic unit).\n"
              "Layer Mean: The mean (average) of the property values in one layer.\n"
              "Flow-Unit Mean: The mean (average) of the property values in one flow unit.\n"
              "% Difference: The difference between the Layer Mean and the Flow-Unit Mean: ([Layer Mean - Flow-Unit Mean]/Flow "
              "Unit Mean) %.\n"
              "Heterogeneity: The Dykstra-Parsons coefficient for one layer: VDP=(P50-P84.1)/P50 where P84.1=k is such that "
              "Prob(K<k)=.841 and P50 is the median.\n"
              "Stratigraphic Unit: A group of n layers representing the same geologic feature (generally larger than a flow "
              "unit).\n");
    QStringList groups;
    for (const QGroupBox* group : shell->widget()->findChildren<QGroupBox*>())
        groups.append(group->title());
    for (const char* title : {"Select a grid to analyze and name the new grid", "Select one or more properties and update the table.",
                              "Copy regions from:"})
        EXPECT_TRUE(groups.contains(title)) << title;
    EXPECT_EQ(find<QLabel>("hintLabel")->text(),
              "Specify at least one property to analyze, and then update the table with the calculated values for each layer.\n"
              "You can then create flow units and insert or merge layers.");
    for (const auto& [button, text] : {std::pair("updateStatsPushButton", "Update"), {"resetPushButton", "Reset"},
                                       {"addPushButton", "Insert"}, {"mergePushButton", "Merge"}}) {
        EXPECT_EQ(find<QPushButton>(button)->text(), text);
        EXPECT_EQ(find<QPushButton>(button)->icon().isNull(), text[0] == 'U' || text[0] == 'R') << text;
    }
    EXPECT_FALSE(find<QPushButton>("save_text_button")->icon().isNull());
    EXPECT_EQ(find<QCheckBox>("copy_fb_regions_")->text(), "Create fault block regions");
    EXPECT_EQ(find<QCheckBox>("copy_regions_")->text(), "Copy regions");
    EXPECT_EQ(find<QCheckBox>("model_info_")->text(), "Build grid from stratigraphic model");
    for (const char* panel : {"property_panel_1", "ratio_panel_1"}) {
        EXPECT_EQ(find<QCheckBox>(panel, "volCheckBox")->text(), "Volume weighted");
        EXPECT_EQ(find<QPushButton>(panel, "guessPushButton")->text(), "Create flow units");
        EXPECT_FALSE(find<QPushButton>(panel, "guessPushButton")->icon().isNull());
        EXPECT_EQ(find<QLabel>(panel, "valueTextLabel")->text(), "Power");
    }
}

TEST_F(FlowUnitNames, EveryTextIsTranslatedButNotTheFile)
{
    add_layered("G", {2, 1});
    const Marking marking;
    open();
    find<QSpinBox>("numRatiosSpinBox")->setValue(1);
    const auto expect_marked = [](const QString& text, const QObject* of) {
        EXPECT_TRUE(text.isEmpty() || text.startsWith(u'~')) << of->metaObject()->className() << " " << of->objectName().toStdString()
                                                             << ": " << text.toStdString();
    };
    EXPECT_EQ(shell->title(), "~Flow Unit Analysis");
    for (const QWidget* control : shell->widget()->findChildren<QWidget*>()) {
        expect_marked(control->toolTip(), control);
        if (const auto* label = qobject_cast<const QLabel*>(control); label && label->textFormat() != Qt::RichText)
            expect_marked(label->text(), label);
        if (const auto* button = qobject_cast<const QAbstractButton*>(control))
            expect_marked(button->text(), button);
        if (const auto* group = qobject_cast<const QGroupBox*>(control))
            expect_marked(group->title(), group);
        if (control->objectName() == "guessComboBox") {
            for (int n = 0; n < 6; ++n)
                expect_marked(static_cast<const QComboBox*>(control)->itemText(n), control);
        }
    }
    for (int c = 0; c < table->columnCount(); ++c)
        expect_marked(table->horizontalHeaderItem(c)->text(), table);
    answers.expect({"no_button", "cancel_button"});
    press("resetPushButton");
    click(find<QPushButton>("property_panel_1", "guessPushButton"));
    ASSERT_EQ(answers.boxes.size(), 2U);
    for (const Answers::Box& box : answers.boxes) {
        EXPECT_EQ(box.title, "~Flow Unit");
        expect_marked(box.text, table);
        for (const QString& button : box.buttons)
            expect_marked(button, table);
    }
    dialog->apply();
    EXPECT_EQ(take_fatal(), Texts{"~Please provide a new SGrid name.\n"});
    EXPECT_FALSE(widget->upgriddingText().contains(u'~')) << widget->upgriddingText().toStdString();
}
