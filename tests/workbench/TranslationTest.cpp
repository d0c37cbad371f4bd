#include "WorkbenchTest.h"

#include "apps/workbench/DialogTable.h"
#include "apps/workbench/MainWindow.h"
#include "apps/workbench/Translations.h"

#include <Lodex/xtools/XMQShell.h>

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QPushButton>
#include <QSpinBox>

#include <set>

using namespace lodex;

namespace {

class TranslationTest : public WorkbenchTest {
protected:
    void SetUp() override
    {
        ASSERT_GT(languages().size(), 1u) << "built without the linguist tools: there are no texts in other languages";
    }
    ~TranslationTest() override { use_language("en"); }

    static void settle()
    {
        QApplication::processEvents();
        QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    /// What a person would do, and the statements that come of it.
    static std::vector<std::string> work_through()
    {
        clear();
        std::vector<std::string> sent;
        MainWindow window;
        window.show();
        EXPECT_TRUE(window.run("lodex create sgrid name Box size 4+4+6 spacing 100+50+10"));
        EXPECT_TRUE(window.run("lodex on SGrid Box fill_property PORO lognormal 0.2+0.1 seed 3"));
        QWidget* merge = window.open_dialog("mergeSections");
        merge->findChild<QLineEdit*>("new_grid_name_")->setText("Coarse");
        merge->findChild<QComboBox*>("direction_")->setCurrentIndex(2);
        merge->findChild<QSpinBox*>("from_")->setValue(1);
        merge->findChild<QSpinBox*>("to_")->setValue(6);
        merge->findChild<QSpinBox*>("step_")->setValue(2);
        merge->findChild<QCheckBox*>("copy_properties_")->setChecked(true);
        Interpreter::instance().set_listener([&sent](const std::string& text) { sent.push_back(text); });
        merge->findChild<QPushButton*>("apply_button")->click();
        merge->findChild<QPushButton*>("cancel_button")->click();
        settle();
        EXPECT_NE(find_grid("Coarse"), nullptr);
        window.tree()->select("Box");
        QWidget* subdivide = window.open_dialog("subdivideSections");
        subdivide->findChild<QLineEdit*>("new_grid_name_")->setText("Fine");
        subdivide->findChild<QPushButton*>("apply_button")->click();
        subdivide->findChild<QPushButton*>("cancel_button")->click();
        settle();
        Interpreter::instance().set_listener({});
        for (const std::string& statement : Interpreter::instance().journal())
            sent.push_back(statement);
        return sent;
    }
};

TEST_F(TranslationTest, LanguagesAreThoseThatThereAreTextsFor)
{
    EXPECT_EQ(languages(), QStringList({"en", "fr"}));
    EXPECT_EQ(language_for({"fr-CA", "en"}), "fr");
    EXPECT_EQ(language_for({"", "xx", "en-GB", "fr"}), "en");
    EXPECT_EQ(language_for({}), "en");
    EXPECT_FALSE(use_language("xx"));
    EXPECT_EQ(current_language(), "en");
}

TEST_F(TranslationTest, TextsChangeAndCommandsStay)
{
    const std::vector<std::string> english = work_through();
    ASSERT_TRUE(use_language("fr"));
    EXPECT_EQ(current_language(), "fr");
    EXPECT_EQ(work_through(), english) << "what is sent does not depend on the language";

    clear();
    MainWindow window;
    add_box("Box");
    EXPECT_EQ(window.findChild<QAction*>("import")->text(), "&Importer...");
    EXPECT_EQ(window.findChild<QAction*>("mergeSections")->text(), "&Fusionner des sections...");
    QWidget* merge = window.open_dialog("mergeSections");
    EXPECT_EQ(merge->windowTitle(), "Fusionner des sections de grille");
    EXPECT_EQ(merge->findChild<QPushButton*>("apply_button")->text(), "Appliquer");
    merge->findChild<QPushButton*>("cancel_button")->click();
    settle();
    ASSERT_TRUE(use_language("en"));
    MainWindow again;
    EXPECT_EQ(again.findChild<QAction*>("import")->text(), "&Import...");
}

TEST_F(TranslationTest, NoActionOfTheWindowIsForgotten)
{
    std::map<QString, QString> english;
    {
        const MainWindow window;
        for (const QAction* action : window.findChildren<QAction*>()) {
            if (!action->objectName().isEmpty())
                english[action->objectName()] = action->statusTip();
        }
    }
    ASSERT_TRUE(use_language("fr"));
    const MainWindow window;
    int looked_at = 0;
    for (const QAction* action : window.findChildren<QAction*>()) {
        if (action->statusTip().isEmpty() || action->objectName().isEmpty())
            continue;
        ++looked_at;
        EXPECT_NE(action->statusTip(), english[action->objectName()]) << action->objectName().toStdString();
    }
    EXPECT_GE(looked_at, 25);
}

} // namespace
