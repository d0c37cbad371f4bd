// Help, OK, Finish, the ways out of the wizard, and the keyboard.

#include "WizardTest.h"

#include "lodex/interpreter/Interpreter.h"

#include <Lodex/xtools/XMHelpManager.h>

#include <array>
#include <set>

namespace {

class WizardButtons : public WizardTest {
protected:
    ~WizardButtons() override
    {
        for (QWidget* window : QApplication::topLevelWidgets()) {
            if (window != dialog)
                window->close();
        }
    }
    [[nodiscard]] QAbstractButton* help() const { return button(QWizard::HelpButton); }
    [[nodiscard]] static std::string shown_help() { return Lodex::XMHelpManager::instance()->current_key().str(); }
    void back() const { click(button(QWizard::BackButton)); }
    void expect_closed()
    {
        run_deferred_deletes();
        EXPECT_TRUE(dialog.isNull());
    }
    void expect_open() const
    {
        run_deferred_deletes();
        ASSERT_FALSE(dialog.isNull());
        EXPECT_TRUE(dialog->isVisible());
    }

    const std::array<std::string, 6> topics = {"dox_SGridUpscalePropertyDialog",
                                               "dox_SGridUpscalePropMappingMethod",
                                               "dox_SGridUpscalePropUpscalingMethod",
                                               "dox_SGridUpscalePropertyDefinitions",
                                               "dox_SGridUpscalePropPreprocessing",
                                               "dox_SGridUpscalePropPostProcessing"};
    const std::string start = "help:?context=Dorvan&topic=";
};

TEST_F(WizardButtons, EveryPageHasItsHelp)
{
    open();
    for (std::size_t page = 0; page < topics.size(); ++page) {
        ASSERT_EQ(dialog->currentId(), static_cast<int>(page));
        EXPECT_EQ(help()->text(), "Help");
        EXPECT_EQ(help()->toolTip(), "Launch help");
        EXPECT_EQ(dialog->help_topic().str(), topics[page]);
        click(help());
        EXPECT_EQ(shown_help(), start + topics[page]);
        EXPECT_TRUE(Lodex::XMHelpManager::instance()->has_page(Lodex::CString(start + topics[page])));
        next();
    }
    EXPECT_TRUE(messages.entries.empty()) << "every topic has its page";
    EXPECT_TRUE(log.texts.empty());
}

TEST_F(WizardButtons, HelpBecomesOkAndComesBack)
{
    open();
    go_to_summary();
    EXPECT_EQ(help()->text(), "OK");
    EXPECT_EQ(help()->toolTip(), "Apply (close window)");
    EXPECT_EQ(dialog->help_topic().str(), topics[5]) << "the topic stays";
    back();
    EXPECT_EQ(help()->text(), "Help");
    EXPECT_EQ(help()->toolTip(), "Launch help");
    EXPECT_EQ(dialog->help_topic().str(), topics[5]);
    back();
    EXPECT_EQ(dialog->help_topic().str(), topics[4]);
    click(help());
    EXPECT_EQ(shown_help(), start + topics[4]);
    EXPECT_TRUE(log.texts.empty());
    expect_open();
}

TEST_F(WizardButtons, OkSendsOnceAndClosesAlsoAfterGoingBackAndForth)
{
    open();
    for (int i = 0; i < 3; ++i) {
        go_to_summary();
        back();
    }
    next();
    const std::string expected = command();
    const std::string help_before = shown_help();
    click(help());
    EXPECT_EQ(sent(), expected);
    EXPECT_EQ(shown_help(), help_before) << "no help";
    expect_closed();
}

TEST_F(WizardButtons, OkStaysOpenWhenSomethingIsMissing)
{
    open_empty();
    go_to_summary();
    click(help());
    EXPECT_EQ(fatal(), Texts{"Please choose a fine sgrid name\n"});
    EXPECT_EQ(messages.entries.size(), 1U);
    EXPECT_TRUE(log.texts.empty());
    expect_open();
    EXPECT_EQ(dialog->currentId(), Dialog::Summary);
}

TEST_F(WizardButtons, FinishSendsAndStaysOpen)
{
    open();
    go_to_summary();
    const std::string expected = command();
    click(button(QWizard::FinishButton));
    EXPECT_EQ(sent(), expected);
    expect_open();
    EXPECT_EQ(dialog->currentId(), Dialog::Summary);
    click(button(QWizard::FinishButton));
    EXPECT_EQ(sent(), expected);
    EXPECT_EQ(command(), expected) << "nothing on the pages changed";
    expect_open();
}

TEST_F(WizardButtons, FinishStaysOpenWhenSomethingIsMissing)
{
    open_empty();
    go_to_summary();
    click(button(QWizard::FinishButton));
    EXPECT_EQ(fatal(), Texts{"Please choose a fine sgrid name\n"});
    EXPECT_TRUE(log.texts.empty());
    expect_open();
}

TEST_F(WizardButtons, EnterOnTheLastPageIsFinish)
{
    open();
    go_to_summary();
    ASSERT_TRUE(QTest::qWaitForWindowActive(dialog));
    auto* box = find<QTextEdit>("summary_");
    box->setFocus();
    QTest::keyClick(box, Qt::Key_Return);
    EXPECT_EQ(sent(), command());
    expect_open();
    QTest::keyClick(dialog, Qt::Key_Enter);
    EXPECT_EQ(sent(), command());
    expect_open();
}

TEST_F(WizardButtons, TheHostMayCallTheSlots)
{
    open();
    dialog->accept();
    EXPECT_EQ(sent(), command());
    expect_open();
    dialog->on_help();
    EXPECT_EQ(shown_help(), start + topics[0]);
    dialog->on_ok();
    EXPECT_EQ(log.texts.size(), 1U);
    expect_closed();
}

TEST_F(WizardButtons, CancelAndEscapeSendNothing)
{
    open();
    click(button(QWizard::CancelButton));
    expect_closed();
    open();
    QTest::keyClick(dialog, Qt::Key_Escape);
    expect_closed();
    open();
    dialog->close();
    expect_closed();
    EXPECT_TRUE(log.texts.empty());
    EXPECT_TRUE(messages.entries.empty());
}

TEST_F(WizardButtons, NothingIsEnteredTwiceWhileACommandRuns)
{
    open();
    go_to_summary();
    int runs = 0;
    lodex::Interpreter::instance().set_listener([&](const std::string&) {
        ++runs;
        EXPECT_FALSE(dialog->process());
        dialog->accept();
        dialog->on_ok();
        dialog->reject();
        dialog->close();
        EXPECT_TRUE(dialog->isVisible());
    });
    EXPECT_TRUE(dialog->process());
    EXPECT_EQ(runs, 1);
    expect_open();
    lodex::Interpreter::instance().set_listener({});
    dialog->close();
    expect_closed();
}

TEST_F(WizardButtons, AnUnknownPageHasTheGeneralHelp)
{
    open();
    next(3);
    dialog->showPage(nullptr);
    QWidget foreign;
    dialog->showPage(&foreign);
    EXPECT_EQ(dialog->help_topic().str(), topics[3]) << "no pages of this wizard";
    auto* more = new QWizardPage;
    dialog->setPage(Dialog::Summary + 1, more);
    dialog->showPage(more);
    EXPECT_EQ(dialog->help_topic().str(), topics[0]);
    EXPECT_EQ(help()->text(), "Help");
}

class WizardKeyboard : public WizardButtons {
protected:
    void open_active()
    {
        open();
        ASSERT_TRUE(QTest::qWaitForWindowActive(dialog));
    }
    /// Presses Tab until the focus is where it was; the names of what had it.
    std::set<QString> tab_round()
    {
        std::set<QString> names;
        QWidget* first = dialog->focusWidget();
        EXPECT_TRUE(first);
        for (int i = 0; i < 60 && first; ++i) {
            QWidget* with_focus = dialog->focusWidget();
            names.insert(with_focus->objectName());
            QTest::keyClick(with_focus, Qt::Key_Tab);
            if (dialog->focusWidget() == first)
                break;
        }
        return names;
    }
    /// What can be touched on the page: enabled and visible. Of radio buttons Tab reaches the checked one only.
    [[nodiscard]] std::set<QString> fields() const
    {
        std::set<QString> names;
        for (const QWidget* widget : dialog->currentPage()->findChildren<QWidget*>()) {
            const auto* radio = qobject_cast<const QAbstractButton*>(widget);
            if (radio && radio->autoExclusive() && !radio->isChecked())
                continue;
            if (widget->window() == dialog && widget->isVisible() && widget->isEnabled() &&
                (widget->focusPolicy() & Qt::TabFocus) && !widget->focusProxy())
                names.insert(widget->objectName());
        }
        return names;
    }
};

TEST_F(WizardKeyboard, TabReachesEveryField)
{
    open_active();
    for (const char* box : {"fine_region_switch_", "coarse_region_switch_", "weight_property_switch_", "zero_switch_",
                            "neg_switch_", "ndv_switch_"})
        tick(box);
    for (const auto& [kind, method] : {std::pair{"Porosity", "Power"}, {"Permeability", "MixedPressureSolver"}}) {
        upscale_with(kind, method);
        tick("weight_property_switch_", kind == std::string("Porosity"));
        while (dialog->currentId() != Dialog::Grids)
            back();
        for (int page = 0; page < 7; ++page) {
            const std::set<QString> reached = tab_round();
            const std::set<QString> wanted = fields();
            EXPECT_FALSE(wanted.empty()) << page;
            for (const QString& name : wanted)
                EXPECT_TRUE(reached.contains(name)) << page << ' ' << name.toStdString();
            for (const char* name : {"cancel_button", "help_button"})
                EXPECT_TRUE(reached.contains(name)) << page << ' ' << name;
            if (page < 6)
                next();
        }
    }
}

TEST_F(WizardKeyboard, FocusStartsAtTheFirstFieldOfEachPage)
{
    open_active();
    const char* first[] = {"fine_gridSelector_", "mapper_",        "property_class_", "fine_prop_cb_",
                           "zero_switch_",       "problem_region_"};
    for (int page = 0; page < 6; ++page) {
        EXPECT_EQ(dialog->focusWidget()->objectName(), first[page]) << page;
        QTest::keyClick(dialog->focusWidget(), Qt::Key_Return);
        ASSERT_EQ(dialog->currentId(), page + 1);
    }
    EXPECT_EQ(dialog->focusWidget()->objectName(), "summary_");
    QTest::keyClick(dialog->focusWidget(), Qt::Key_Return);
    EXPECT_EQ(sent(), command());
}

TEST_F(WizardKeyboard, EnterInATypedNameGoesOn)
{
    open_active();
    next(3);
    auto* field = find<QLineEdit>("coarse_prop_cb_edit");
    field->setFocus();
    field->selectAll();
    QTest::keyClicks(field, "phi");
    QTest::keyClick(field, Qt::Key_Return);
    EXPECT_EQ(dialog->currentId(), 4);
    EXPECT_EQ(between(" coarse_porosity ", " mapper "), "phi");
}

TEST_F(WizardKeyboard, AWholeRunWithKeysAlone)
{
    open_empty();
    ASSERT_TRUE(QTest::qWaitForWindowActive(dialog));
    const auto press = [this](int key) { QTest::keyClick(dialog->focusWidget(), Qt::Key(key)); };
    const auto tab_to = [&](const char* name) {
        for (int i = 0; i < 60 && dialog->focusWidget()->objectName() != name; ++i)
            press(Qt::Key_Tab);
        ASSERT_EQ(dialog->focusWidget()->objectName(), name);
    };
    press(Qt::Key_F); // Fine
    tab_to("coarse_gridSelector_");
    press(Qt::Key_C); // Coarse
    press(Qt::Key_Return);
    press(Qt::Key_Down); // parametric
    press(Qt::Key_Return);
    press(Qt::Key_Down); // Permeability
    tab_to("method_");
    press(Qt::Key_M); // MixedPressureSolver
    tab_to("boundary_0");
    press(Qt::Key_Down);
    tab_to("n_k_");
    QTest::keyClicks(dialog->focusWidget(), "2");
    press(Qt::Key_Return);
    tab_to("fine_prop_j_cb_");
    press(Qt::Key_N); // NTG
    tab_to("coarse_prop_k_cb_");
    QTest::keyClicks(dialog->focusWidget(), "KZ");
    press(Qt::Key_Return);
    tab_to("neg_switch_");
    press(Qt::Key_Space);
    tab_to("neg_value_");
    QTest::keyClicks(dialog->focusWidget(), "0.5");
    press(Qt::Key_Return);
    press(Qt::Key_Space);
    press(Qt::Key_Return);
    ASSERT_EQ(dialog->currentId(), Dialog::Summary);
    press(Qt::Key_Return);
    EXPECT_EQ(sent(),
              "lodex on SGrid Fine upscale_permeability  fine_region_name everywhere fine_Perm_I PORO fine_Perm_J NTG "
              "fine_Perm_K PORO Coarse Coarse coarse_region_name everywhere coarse_Perm_I permeability_I "
              "coarse_Perm_J permeability_J coarse_Perm_K KZ mapper \"parametric\" upscaler \"MixedPressureSolver\" "
              "power 1 n_I 10 n_J 10 n_K 2 manual_sampling 0 zero_like_x 0 neg_like_x 1 neg_value 0.5 ndv_like_x 0 "
              "boundary KConfined exact 0 create_region_if_problems 1 do_fault_management 0");
    expect_open();
}

TEST_F(WizardKeyboard, F1IsHelpOnEveryPage)
{
    open_active();
    next(2);
    QTest::keyClick(dialog, Qt::Key_F1);
    EXPECT_EQ(shown_help(), start + topics[2]);
}

} // namespace
