#include "DialogTest.h"

#include "frame/DeleteAction.h"

#include <QGroupBox>
#include <QLabel>
#include <QVBoxLayout>

#include <memory>

namespace {

using namespace Kelvane;
using Texts = std::vector<std::string>;

/// The base with nothing but the extension; writes down what is called.
class PlainDialog : public LQSGSectionDialog {
public:
    explicit PlainDialog(bool with_extension) : LQSGSectionDialog(with_extension) {}

    Lodex::XMShell* build_shell() override
    {
        return open_shell("PlainShell", "Plain", "Plain banner", new DeleteAction<PlainDialog>(this));
    }
    void updatePaintedSections() override
    {
        if (can_paint())
            paint_sections(axis, " 1 1 3", 1);
    }
    void updateCells() override { calls.push_back("cells"); }
    void on_help() override {}
    bool process() override { return check(); }
    using LQSGSectionDialog::build_extension;
    using LQSGSectionDialog::check;
    using LQSGSectionDialog::property_list;
    using LQSGSectionDialog::region_list;

    Texts calls;
    int axis = 1;
    QPointer<QLabel> extra;

protected:
    bool build_box(QWidget* parent, QVBoxLayout* layout) override
    {
        layout->addWidget(build_definition(parent));
        layout->addWidget(build_graphic_attributes(parent));
        build_extension(parent, layout);
        extra = new QLabel("extra", parent);
        add_widget_to_extension(extra);
        return true;
    }
    bool update_axis_edt() override
    {
        calls.push_back(get_sgrid() ? "axis " + get_sgrid()->name().str() : "axis without grid");
        return get_sgrid() != nullptr;
    }
};

class SectionDialog : public testing::Test {
protected:
    ~SectionDialog() override
    {
        if (shell)
            shell->close();
        run_deferred_deletes();
    }
    void open(bool with_extension = false)
    {
        dialog = new PlainDialog(with_extension);
        shell = dialog->build_shell();
        shell->show();
        dialog->calls.clear();
        log.texts.clear();
        messages.clear();
    }
    template <class Widget> [[nodiscard]] Widget* find(const char* name) const
    {
        return shell->widget()->findChild<Widget*>(name);
    }
    [[nodiscard]] Lodex::LQMultiComboBox* selector() const { return find<Lodex::LQMultiComboBox>("gridSelector_"); }
    [[nodiscard]] Texts fatal() const { return messages.of(Lodex::LogLevel::Fatal); }

    CleanCatalogue catalogue;
    MessageList messages;
    CommandLog log;
    QPointer<PlainDialog> dialog;
    QPointer<Lodex::XMShell> shell;
};

const std::string reset_value = " set attribute *sections value \" 3 1 0 0 2 0 0 3 0 0\";";

std::string unpaint_command(const std::string& grid)
{
    return "lodex on Style " + grid + reset_value + "lodex on Style " + grid + " update ;lodex update all cameras";
}

TEST_F(SectionDialog, DefinitionTexts)
{
    open();
    EXPECT_STREQ(dialog->metaObject()->className(), "Kelvane::LQSGSectionDialog");
    Texts labels;
    const auto* group = find<QLineEdit>("new_grid_name_")->parentWidget();
    EXPECT_EQ(qobject_cast<const QGroupBox*>(group)->title(), "Stratigraphic Grid Definition");
    for (const QLabel* label : group->findChildren<QLabel*>())
        labels.push_back(label->text().toStdString());
    EXPECT_EQ(labels, (Texts{"Name", "Based on Stratigraphic Grid"}));
    EXPECT_EQ(find<QLineEdit>("new_grid_name_")->toolTip(), "Type the new name of the SGrid");
    EXPECT_EQ(selector()->toolTip(), "Select the stratigraphic grid you want to work on.");
    EXPECT_FALSE(selector()->multiSelection());
    const auto* paint = find<QCheckBox>("paint_check_box_");
    EXPECT_EQ(paint->text(), "Show selected sections");
    EXPECT_EQ(paint->toolTip(), "toggle on if you want the selected cell sections beeing painted on the grid");
    EXPECT_FALSE(paint->isChecked());
    EXPECT_EQ(qobject_cast<const QGroupBox*>(paint->parentWidget())->title(), "Graphic Attributes");
}

TEST_F(SectionDialog, TheSelectorListsTheGrids)
{
    add_box("G");
    add_box("H with blanks");
    open();
    EXPECT_EQ(selector()->items(), (QStringList{"G", "H with blanks"}));
    add_box("I");
    EXPECT_EQ(selector()->items(), (QStringList{"G", "H with blanks", "I"}));
}

TEST_F(SectionDialog, InitSelectsTheGrid)
{
    add_box("G");
    add_box("H with blanks");
    open();
    CommandStub stub{{"sgrid", "H with blanks"}};
    dialog->init(&stub);
    EXPECT_EQ(selector()->currentText(), "H with blanks");
    ASSERT_TRUE(dialog->get_sgrid());
    EXPECT_EQ(dialog->get_sgrid()->name().str(), "H with blanks");
}

TEST_F(SectionDialog, InitWithoutAGridLeavesTheSelection)
{
    add_box("G");
    add_box("H");
    add_other_object("S");
    open();
    for (const char* before : {"", "H"}) {
        selector()->setSelectedItems({before});
        ASSERT_EQ(selector()->currentText(), before);
        CommandStub nothing;
        dialog->init(&nothing);
        EXPECT_EQ(selector()->currentText(), before);
        CommandStub unknown{{"sgrid", "nowhere"}};
        dialog->init(&unknown);
        EXPECT_EQ(selector()->currentText(), before);
        CommandStub no_grid{{"sgrid", "S"}};
        dialog->init(&no_grid);
        EXPECT_EQ(selector()->currentText(), before);
        CommandStub other{{"property", "G"}};
        dialog->init(&other);
        EXPECT_EQ(selector()->currentText(), before);
        dialog->init(nullptr);
        EXPECT_EQ(selector()->currentText(), before);
    }
    EXPECT_TRUE(messages.entries.empty());
}

struct InternalError {
    std::string file;
    int line = 0;
    std::string message;
};
InternalError last_error;

TEST_F(SectionDialog, InitWithoutASelectorIsAnInternalError)
{
    last_error = {};
    const auto former =
        Lodex::set_internal_error_handler([](const char* file, int line, const Lodex::CString& message) {
            last_error = {file, line, message.str()};
        });
    PlainDialog unbuilt(false);
    CommandStub stub{{"sgrid", "G"}};
    unbuilt.init(&stub);
    Lodex::set_internal_error_handler(former);
    EXPECT_EQ(last_error.file, "xmsgresize");
    EXPECT_EQ(last_error.line, 624);
    EXPECT_EQ(last_error.message, "Pointer is nil: gridSelector_\n");
}

TEST_F(SectionDialog, CheckAsksForTheNameThenTheGridThenItsExistence)
{
    add_box("G");
    open();
    EXPECT_FALSE(dialog->check());
    EXPECT_EQ(fatal(), Texts{"Please provide a new sgrid name\n"});
    messages.clear();

    find<QLineEdit>("new_grid_name_")->setText("New");
    selector()->setSelectedItems({});
    EXPECT_FALSE(dialog->check());
    EXPECT_EQ(fatal(), Texts{"Please provide a sgrid to based the computation on\n"});
    messages.clear();

    selector()->insertItem("ghost");
    selector()->setSelectedItems({"ghost"});
    EXPECT_FALSE(dialog->check());
    EXPECT_EQ(fatal(), Texts{"Please provide a sgrid to based the computation on (No grid found)\n"});
    messages.clear();

    selector()->setSelectedItems({"G"});
    EXPECT_TRUE(dialog->check());
    EXPECT_TRUE(messages.entries.empty());
    EXPECT_TRUE(log.texts.empty());
}

TEST_F(SectionDialog, CheckLooksTheGridUpAnew)
{
    open();
    find<QLineEdit>("new_grid_name_")->setText("New");
    selector()->insertItem("late");
    selector()->setSelectedItems({"late"});
    ASSERT_EQ(dialog->get_sgrid(), nullptr);
    const QSignalBlocker silent(selector());
    const auto* grid = add_box("late");
    ASSERT_EQ(selector()->currentText(), "late");
    EXPECT_TRUE(dialog->check());
    EXPECT_EQ(dialog->get_sgrid(), grid);
}

TEST_F(SectionDialog, AnotherGridIsLookedUpBeforeTheRestFollows)
{
    add_box("G");
    open(true);
    selector()->setSelectedItems({"G"});
    EXPECT_EQ(dialog->calls, (Texts{"axis G", "cells"}));
    EXPECT_EQ(dialog->property_list()->count(), 1);
    EXPECT_TRUE(log.texts.empty());
}

TEST_F(SectionDialog, AGridThatGoesIsLetGo)
{
    auto* grid = add_box("G");
    open(true);
    selector()->setSelectedItems({"G"});
    Lodex::GeobaseLib::instance()->destroy(grid);
    EXPECT_EQ(dialog->get_sgrid(), nullptr);
    EXPECT_TRUE(selector()->currentText().isEmpty());
    EXPECT_EQ(dialog->property_list()->count(), 0);
}

TEST_F(SectionDialog, TheListsFollowTheGrid)
{
    auto* grid = add_box("G");
    add_property(grid, "PORO");
    add_region(grid, "crest");
    open(true);
    selector()->setSelectedItems({"G"});
    EXPECT_EQ(dialog->property_list()->items(), (QStringList{"all_properties", "PORO"}));
    EXPECT_EQ(dialog->property_list()->currentText(), "all_properties");
    EXPECT_TRUE(dialog->property_list()->multiSelection());
    EXPECT_EQ(dialog->region_list()->items(), (QStringList{"all_regions", "crest"}));
    EXPECT_EQ(dialog->region_list()->currentText(), "all_regions");
    EXPECT_EQ(dialog->property_list()->toolTip(), "Select properties that will be copied");
    EXPECT_EQ(dialog->region_list()->toolTip(), "Select regions that will be copied");
    selector()->setSelectedItems({});
    EXPECT_EQ(dialog->property_list()->count(), 0);
    EXPECT_EQ(dialog->region_list()->count(), 0);
}

TEST_F(SectionDialog, ListsAreSwitchedWithTheirBoxes)
{
    open(true);
    dialog->set_properties(false);
    EXPECT_FALSE(dialog->property_list()->isEnabled());
    EXPECT_TRUE(dialog->region_list()->isEnabled());
    dialog->set_region(false);
    EXPECT_FALSE(dialog->region_list()->isEnabled());
    dialog->set_properties(true);
    dialog->set_region(true);
    EXPECT_TRUE(dialog->property_list()->isEnabled());
    EXPECT_TRUE(dialog->region_list()->isEnabled());
}

TEST_F(SectionDialog, WithoutTheExtensionTheListsDoNotExist)
{
    open(false);
    EXPECT_EQ(dialog->property_list(), nullptr);
    EXPECT_FALSE(find<QWidget>("extension_"));
    dialog->set_properties(false);
    dialog->set_region(false);
    dialog->show_extension(true);
    EXPECT_TRUE(messages.entries.empty());
}

TEST_F(SectionDialog, TheExtensionGivesTheWindowItsSizeBack)
{
    open(true);
    QWidget* window = shell->widget();
    auto* extension = find<QWidget>("extension_");
    ASSERT_TRUE(extension);
    EXPECT_TRUE(extension->isHidden());
    EXPECT_EQ(dialog->extra->parentWidget(), extension);

    window->setGeometry(40, 30, 500, 320);
    window->setMinimumSize(300, 200);
    window->setMaximumSize(900, 330);
    const QRect before = window->geometry();
    dialog->show_extension(true);
    EXPECT_FALSE(extension->isHidden());
    EXPECT_GT(window->height(), before.height());
    dialog->show_extension(true);
    dialog->show_extension(false);
    EXPECT_TRUE(extension->isHidden());
    EXPECT_EQ(window->geometry(), before);
    EXPECT_EQ(window->minimumSize(), QSize(300, 200));
    EXPECT_EQ(window->maximumSize(), QSize(900, 330));
}

TEST_F(SectionDialog, ANewNameIsProposedThatNobodyHas)
{
    add_box("G");
    add_box("New");
    open();
    dialog->setNewGridName("New");
    EXPECT_EQ(find<QLineEdit>("new_grid_name_")->text(), "New_0");
    dialog->setNewGridName("Free");
    EXPECT_EQ(find<QLineEdit>("new_grid_name_")->text(), "Free");
}

TEST_F(SectionDialog, UncheckingSendsTheResetValue)
{
    add_box("G");
    open();
    selector()->setSelectedItems({"G"});
    dialog->set_paint(false);
    EXPECT_EQ(log.take(), unpaint_command("G"));
    EXPECT_TRUE(messages.entries.empty());
    EXPECT_EQ(painted_sections("G"), " 3 1 0 0 2 0 0 3 0 0");
}

TEST_F(SectionDialog, WithoutAGridNothingIsUnpainted)
{
    open();
    dialog->unPaintSections();
    dialog->set_paint(false);
    EXPECT_TRUE(log.texts.empty());
    EXPECT_TRUE(messages.entries.empty());
}

TEST_F(SectionDialog, PaintingWithoutAGridWarns)
{
    open();
    find<QCheckBox>("paint_check_box_")->click();
    EXPECT_EQ(messages.of(Lodex::LogLevel::Warning), Texts{"Please provide a sgrid for painting the sections on\n"});
    EXPECT_EQ(messages.entries.size(), 1U);
    EXPECT_TRUE(log.texts.empty());
}

TEST_F(SectionDialog, PaintingClearsTheOtherAxes)
{
    add_box("G g");
    open();
    selector()->setSelectedItems({"G g"});
    find<QCheckBox>("paint_check_box_")->click();
    const auto painted = [](const char* clearing) {
        return std::string("lodex on Style G g set attribute *sections value \" 3 1 1 3") + clearing +
               "\" ;lodex on Style G g update ;lodex update all cameras";
    };
    EXPECT_EQ(log.take(), painted(" 2 0 0 3 0 0"));
    dialog->axis = 2;
    dialog->updatePaintedSections();
    EXPECT_EQ(log.take(), painted(" 1 0 0 3 0 0"));
    dialog->axis = 3;
    dialog->updatePaintedSections();
    EXPECT_EQ(log.take(), painted(" 1 0 0 2 0 0"));
    dialog->axis = 0;
    dialog->updatePaintedSections();
    EXPECT_EQ(log.take(), painted(" 1 0 0 2 0 0"));
    find<QCheckBox>("paint_check_box_")->click();
    EXPECT_EQ(log.take(), unpaint_command("G g"));
    dialog->updatePaintedSections();
    EXPECT_TRUE(log.texts.empty());
}

TEST_F(SectionDialog, ANewSourceGridIsUnpaintedNotTheFormerOne)
{
    add_box("G");
    add_box("H");
    open();
    selector()->setSelectedItems({"G"});
    find<QCheckBox>("paint_check_box_")->click();
    log.texts.clear();
    selector()->setSelectedItems({"H"});
    EXPECT_EQ(log.take(), unpaint_command("H"));
    EXPECT_EQ(painted_sections("G"), " 3 1 1 3 2 0 0 3 0 0");
}

TEST_F(SectionDialog, TheDialogsOwnObjectIsNeverShown)
{
    open();
    EXPECT_FALSE(dialog->isVisible());
    EXPECT_NE(shell->widget(), dialog);
}

TEST_F(SectionDialog, TheWindowGoesWithTheOneThatWasActive)
{
    auto top = std::make_unique<QWidget>();
    top->show();
    top->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(top.get()));
    open();
    top.reset();
    run_deferred_deletes();
    EXPECT_TRUE(shell.isNull());
    EXPECT_TRUE(dialog.isNull());
}

TEST_F(SectionDialog, AWindowThatGoesTakesTheDialogAlong)
{
    QPointer<PlainDialog> unshelled = new PlainDialog(true);
    auto* window = unshelled->build_shell();
    delete window->widget();
    run_deferred_deletes();
    EXPECT_TRUE(unshelled.isNull());
    run_deferred_deletes();
}

} // namespace
