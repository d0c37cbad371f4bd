#include "WorkbenchTest.h"

#include "apps/workbench/DialogTable.h"
#include "apps/workbench/MainWindow.h"
#include "apps/workbench/ConsoleEdit.h"
#include "apps/workbench/DisplayPanel.h"
#include "apps/workbench/Translations.h"
#include "apps/workbench/Workbench.h"
#include "apps/workbench/plots/ComparisonWindow.h"
#include "apps/workbench/plots/NumbersWindow.h"
#include "lodex/project/Project.h"

#include <Lodex/xtools/XMQShell.h>

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QPushButton>
#include <QDialogButtonBox>
#include <QDockWidget>
#include <QFile>
#include <QLabel>
#include <QMenu>
#include <QPlainTextEdit>
#include <QProcess>
#include <QRegularExpression>
#include <QSettings>
#include <QSpinBox>
#include <QTranslator>
#include <QWizard>

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
        for (const char* id : {"upscaleGrid", "downscaleGrid"}) {
            window.tree()->select("Box");
            QWidget* dialog = window.open_dialog(id);
            for (QComboBox* list : dialog->findChildren<QComboBox*>("strati_"))
                list->setCurrentIndex(list->count() - 1); // is not sent as it reads
            dialog->findChild<QLineEdit*>("new_grid_name_")->setText(QString("By_") + id);
            dialog->findChild<QPushButton*>("apply_button")->click();
            dialog->findChild<QPushButton*>("cancel_button")->click();
            settle();
        }
        window.tree()->select(TreeItem{TreeItem::Kind::Property, "Box", "PORO"});
        auto* wizard = qobject_cast<QWizard*>(window.open_dialog("upscaleProperty"));
        for (int page = 0; page < 10 && wizard->nextId() >= 0; ++page)
            wizard->next();
        wizard->button(QWizard::FinishButton)->click();
        settle();
        wizard->close();
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

/// Runs what brings the files of texts up to date on a copy.
TEST_F(TranslationTest, EveryTextOfTheSourcesIsFinishedInFrench)
{
    const QString copy = QString::fromStdString(file("lodex_fr.ts").string());
    ASSERT_TRUE(QFile::copy(SOURCE_DIR "/translations/lodex_fr.ts", copy));
    QProcess tool;
    tool.start(SOURCE_DIR "/tools/update-translations", {copy});
    ASSERT_TRUE(tool.waitForStarted());
    ASSERT_TRUE(tool.waitForFinished(120000));
    ASSERT_EQ(tool.exitCode(), 0) << tool.readAllStandardError().toStdString();
    QFile texts(copy);
    ASSERT_TRUE(texts.open(QIODevice::ReadOnly));
    const QString content = QString::fromUtf8(texts.readAll());
    EXPECT_GT(content.count("<message>"), 900);
    static const QRegularExpression unfinished("<source>([^<]*)</source>\\s*<translation type=\"unfinished\"");
    for (const QRegularExpressionMatch& match : unfinished.globalMatch(content))
        ADD_FAILURE() << "no French for: " << match.captured(1).toStdString();
}

/// Notes what windows ask for; answers nothing, so that they read as they do without it.
class NotingTranslator final : public QTranslator {
public:
    using QTranslator::QTranslator;
    [[nodiscard]] bool isEmpty() const override { return false; }
    [[nodiscard]] QString translate(const char* context, const char* source, const char*, int) const override
    {
        asked_.emplace(context, source);
        return {};
    }
    [[nodiscard]] const std::set<std::pair<QByteArray, QByteArray>>& asked() const { return asked_; }

private:
    mutable std::set<std::pair<QByteArray, QByteArray>> asked_;
};

/// What the tool reads in the sources and what the running windows ask for are the same texts under the same names.
TEST_F(TranslationTest, TheRunningWindowsFindTheirTexts)
{
    QTranslator french;
    ASSERT_TRUE(use_language("fr") && use_language("en"));
    ASSERT_TRUE(french.load(":/translations/lodex_fr.qm"));
    NotingTranslator noting;
    QCoreApplication::installTranslator(&noting);
    {
        MainWindow window;
        window.show();
        EXPECT_TRUE(window.run("lodex create example name Example size 8+7+8"));
        for (const DialogRow& row : dialog_rows()) {
            window.tree()->select(TreeItem{TreeItem::Kind::Property, "Example", "PORO"});
            QWidget* const dialog = window.open_dialog(row.id);
            if (auto* wizard = qobject_cast<QWizard*>(dialog)) {
                for (int page = 0; page < 10 && wizard->nextId() >= 0; ++page)
                    wizard->next();
            }
            dialog->close();
            settle();
        }
        QList<QWidget*> windows{window.open_numbers(), window.open_comparison()};
        window.display()->edit_legend();
        for (const char* id : {"report", "shortcuts", "contents"})
            window.findChild<QAction*>(id)->trigger();
        for (auto& menu : window.findChildren<QMenu*>())
            emit menu->aboutToShow();
        settle();
        for (QWidget* other : QApplication::topLevelWidgets()) {
            if (other != &window)
                other->close();
        }
        settle();
    }
    QCoreApplication::removeTranslator(&noting);
    int looked_at = 0;
    for (const auto& [context, source] : noting.asked()) {
        if (context.startsWith('Q') || source.isEmpty()) // the toolkit's own
            continue;
        ++looked_at;
        EXPECT_FALSE(french.translate(context.constData(), source.constData()).isEmpty())
            << context.toStdString() << ": " << source.toStdString();
    }
    EXPECT_GT(looked_at, 400);
}

TEST_F(TranslationTest, ButtonsOfTheToolkitAreTranslatedWhereItsTextsAreInstalled)
{
    ASSERT_TRUE(use_language("fr"));
    if (QCoreApplication::translate("QPlatformTheme", "Cancel") == "Cancel")
        GTEST_SKIP() << "the toolkit's French texts are not installed";
    const QDialogButtonBox buttons(QDialogButtonBox::Ok | QDialogButtonBox::Cancel | QDialogButtonBox::Apply |
                                   QDialogButtonBox::Close | QDialogButtonBox::Discard);
    EXPECT_EQ(buttons.button(QDialogButtonBox::Cancel)->text().remove('&'), "Annuler");
    EXPECT_EQ(buttons.button(QDialogButtonBox::Apply)->text().remove('&'), "Appliquer");
    EXPECT_EQ(buttons.button(QDialogButtonBox::Close)->text().remove('&'), "Fermer");
    EXPECT_NE(buttons.button(QDialogButtonBox::Discard)->text(), "Discard");
}

TEST_F(TranslationTest, TheLanguageChangesInTheRunningProgram)
{
    QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, QString::fromStdString(file("settings").string()));
    forget_project();
    Workbench bench({.files = {}, .recovery = QString::fromStdString(file("recovery").string()), .times = {},
                     .asks = false});
    bench.window().show();
    ASSERT_TRUE(bench.window().run("lodex create example name Example size 8+7+8"));
    bench.window().show_property("Example", "PERMX");
    bench.window().display()->show_layers({1, 3});
    bench.window().findChild<ConsoleEdit*>("console")->setText("lodex help rep");
    bench.window().findChild<QDockWidget*>("cellDock")->hide();
    const QString log = bench.window().findChild<QPlainTextEdit*>("logView")->toPlainText();
    const auto journal = Interpreter::instance().journal();
    bool closed = false;
    QObject::connect(&bench, &Workbench::closed, [&] { closed = true; });
    bench.window().open_dialog("mergeSections");

    bench.window().findChild<QAction*>("language_fr")->trigger();
    settle();
    MainWindow& window = bench.window();
    EXPECT_FALSE(closed);
    EXPECT_TRUE(window.isVisible());
    EXPECT_EQ(window.findChild<QAction*>("import")->text(), "&Importer...");
    EXPECT_TRUE(window.findChild<QAction*>("language_fr")->isChecked());
    EXPECT_TRUE(window.findChild<QDockWidget*>("cellDock")->isHidden());
    EXPECT_EQ(window.tree()->item(), (TreeItem{TreeItem::Kind::Property, "Example", "PERMX"}));
    EXPECT_EQ(window.camera()->display(find_grid("Example")).colour, ColourBy::of_property("PERMX"));
    EXPECT_EQ(window.camera()->display(find_grid("Example")).filter.ranges[2], (std::vector<IndexRange>{{1, 3}}));
    EXPECT_EQ(window.findChild<ConsoleEdit*>("console")->text(), "lodex help rep");
    EXPECT_EQ(window.findChild<QPlainTextEdit*>("logView")->toPlainText(), log);
    EXPECT_EQ(Interpreter::instance().journal(), journal);
    EXPECT_EQ(window.findChild<QPlainTextEdit*>("journalText")->toPlainText().count("lodex"),
              static_cast<int>(journal.size()));
    ASSERT_TRUE(window.run("lodex on SGrid Example fill_property NEW value 1"));
    EXPECT_TRUE(window.findChild<QPlainTextEdit*>("journalText")->toPlainText().contains("fill_property NEW"));
    QWidget* merge = window.open_dialog("mergeSections");
    EXPECT_EQ(merge->windowTitle(), "Fusionner des sections de grille");
    merge->close();
    window.findChild<QAction*>("language_en")->trigger();
    settle();
    EXPECT_EQ(bench.window().findChild<QAction*>("import")->text(), "&Import...");
    bench.window().close();
    EXPECT_TRUE(closed);
    forget_project();
}

} // namespace
