// F1 in every window opens the page on that window.

#include "WorkbenchTest.h"

#include "apps/workbench/DialogTable.h"
#include "apps/workbench/DisplayPanel.h"
#include "apps/workbench/MainWindow.h"
#include "apps/workbench/SectionPanel.h"
#include "apps/workbench/plots/ComparisonWindow.h"
#include "apps/workbench/plots/NumbersWindow.h"

#include <Lodex/xtools/XMHelpManager.h>

#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QTabWidget>
#include <QTest>

using namespace lodex;

namespace {

class HelpTest : public WorkbenchTest {
protected:
    HelpTest()
    {
        add_numbers(add_box("Box"), "NUMBER");
        EXPECT_TRUE(run("lodex on SGrid Box set_layers units \"All\" sizes 5"));
        window.show();
        settle();
    }
    ~HelpTest() override
    {
        for (QWidget* other : QApplication::topLevelWidgets()) {
            if (other != &window)
                other->close();
        }
        settle();
    }
    static void settle()
    {
        QApplication::processEvents();
        QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QApplication::processEvents();
    }
    /// The page that F1 brings up; empty when it is none of its own.
    static std::string page_of(QWidget& one)
    {
        Lodex::XMHelpManager& help = *Lodex::XMHelpManager::instance();
        help.display("help:Lodex.html");
        one.activateWindow();
        one.raise();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&one, 5000)) << one.objectName().toStdString();
        EXPECT_TRUE(QTest::qWaitFor([&] { return QApplication::activeWindow() == &one; }, 5000));
        QWidget* const focus = one.focusWidget() ? one.focusWidget() : &one;
        QTest::keyClick(focus, Qt::Key_F1);
        settle();
        const std::string key = help.current_key().str();
        return key == "help:Lodex.html" ? std::string() : key;
    }

    MainWindow window;
};

TEST_F(HelpTest, EveryWindowHasItsPage)
{
    const auto expect = [](QWidget* one, const std::string& page) {
        ASSERT_NE(one, nullptr) << page;
        const std::string key = page_of(*one);
        EXPECT_NE(key.find(page), std::string::npos) << one->objectName().toStdString() << " opens \"" << key << "\"";
        // Without fall-backs: the page is there.
        EXPECT_TRUE(Lodex::XMHelpManager::instance()->has_page(key.substr(0, key.find(';')))) << key;
    };
    const std::map<std::string, std::string> pages{
        {"mergeSections", "sgrid_new.html#LQSGSectionMerge"},
        {"subdivideSections", "sgrid_new.html#LQSGSectionSubdivide"},
        {"upscaleGrid", "dox_SGridUpscaleDialog"},
        {"downscaleGrid", "dox_SGridDownscaleDialog"},
        {"upscaleProperty", "dox_SGridUpscaleProp"},
        {"flowUnits", "dox_FlowUnitAnalysis"}};
    for (const DialogRow& row : dialog_rows()) {
        QWidget* const dialog = window.open_dialog(row.id);
        expect(dialog, pages.at(row.id));
        if (QWidget* profile = window.findChild<QWidget*>("flowUnitProfile"))
            expect(profile, "dox_FlowUnitAnalysis");
        dialog->close();
        settle();
    }
    window.show_property("Box", "NUMBER");
    expect(window.open_numbers(), "user-doc/numbers.html");
    expect(window.open_comparison(), "user-doc/comparison.html");
    for (const auto& [action, name, page] :
         {std::tuple("report", "reportDialog", "user-doc/report.html"),
          std::tuple("shortcuts", "shortcutsDialog", "reference/shortcuts.html"),
          std::tuple("editLegend", "colour_legend_dialog", "user-doc/legend.html")}) {
        window.tree()->select("Box");
        ASSERT_TRUE(window.findChild<QAction*>(action)->isEnabled()) << action;
        window.findChild<QAction*>(action)->trigger();
        settle();
        QWidget* found = window.findChild<QWidget*>(name);
        for (QWidget* top : QApplication::topLevelWidgets())
            found = !found && top->objectName() == QLatin1String(name) ? top : found;
        expect(found, page);
    }
}

TEST_F(HelpTest, InTheMainWindowThePartWithTheKeyboardCounts)
{
    window.findChild<QComboBox*>("displayColour")->setFocus();
    EXPECT_NE(page_of(window).find("user-doc/display.html"), std::string::npos);
    window.findChild<QTabWidget*>("views")->setCurrentWidget(window.section());
    window.findChild<QComboBox*>("colourBy")->setFocus();
    EXPECT_NE(page_of(window).find("workbench.html#section"), std::string::npos);
    window.tree()->setFocus();
    EXPECT_NE(page_of(window).find("user-doc/workbench.html"), std::string::npos);
    window.findChild<QAction*>("contents")->trigger();
    EXPECT_EQ(Lodex::XMHelpManager::instance()->current_key().str(), "help:Lodex.html");
}

} // namespace
