#include "WorkbenchTest.h"

#include "apps/workbench/DialogTable.h"
#include "apps/workbench/DisplayPanel.h"
#include "apps/workbench/MainWindow.h"
#include "apps/workbench/SectionPanel.h"
#include "apps/workbench/ShortcutsDialog.h"
#include "apps/workbench/Theme.h"
#include "apps/workbench/plots/NumbersWindow.h"
#include "lodex/qtools/MainWindowRegistry.h"

#include <Lodex/xtools/XMQShell.h>

#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QInputDialog>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QPushButton>
#include <QStatusBar>
#include <QTimer>
#include <QTreeWidget>
#include <QWizard>

#include <map>
#include <set>

using namespace lodex;
using Kind = TreeItem::Kind;

namespace {

class ActionTableTest : public WorkbenchTest {
protected:
    ActionTableTest()
    {
        window.show();
        QApplication::processEvents();
    }
    ~ActionTableTest() override
    {
        for (QWidget* other : QApplication::topLevelWidgets()) {
            if (other != &window && other->isVisible())
                other->close();
        }
        QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }

    /// The actions of the menus; those of sub menus are made from what there is and stand for choices.
    QList<QAction*> actions()
    {
        QList<QAction*> all;
        for (QAction* menu : window.menuBar()->actions()) {
            for (QAction* action : menu->menu()->actions()) {
                if (!action->isSeparator() && !action->menu())
                    all.append(action);
            }
        }
        return all;
    }
    QAction* action(const char* id) { return window.findChild<QAction*>(id); }
    QStringList context_of(const TreeItem& item)
    {
        window.tree()->select(item);
        QStringList ids;
        const auto menu = window.context_menu();
        for (const QAction* entry : menu->actions()) {
            if (!entry->isSeparator())
                ids.append(entry->objectName());
        }
        return ids;
    }
    CornerPointGrid* add_whole_box(const std::string& name)
    {
        CornerPointGrid* grid = add_box(name, {4, 3, 5});
        add_numbers(grid, "NUMBER");
        const std::string on = "lodex on SGrid " + name;
        EXPECT_TRUE(run(on + " define_region low property NUMBER min 0 max 9; " + on +
                        " set_layers units \"Upper\"+\"Lower\" sizes 2+3; " + on +
                        " create_coarsening_activity halves modifications 3+1+4+2; " + on +
                        " fill_property PORO value 0.2"));
        return grid;
    }

    MainWindow window;
};

TEST_F(ActionTableTest, IdsAndShortcutsAreUniqueAndEverythingHasTexts)
{
    std::set<QString> ids;
    std::map<QString, QString> shortcuts;
    for (const QAction* one : actions()) {
        const QString id = one->objectName();
        EXPECT_FALSE(id.isEmpty()) << one->text().toStdString();
        EXPECT_TRUE(ids.insert(id).second) << id.toStdString();
        EXPECT_FALSE(one->text().isEmpty()) << id.toStdString();
        EXPECT_FALSE(one->toolTip().isEmpty()) << id.toStdString();
        EXPECT_NE(one->toolTip(), one->text()) << id.toStdString();
        const QString keys = one->shortcut().toString();
        if (!keys.isEmpty()) {
            EXPECT_TRUE(shortcuts.emplace(keys, id).second)
                << id.toStdString() << " and " << shortcuts[keys].toStdString();
            EXPECT_TRUE(one->toolTip().contains(one->shortcut().toString(QKeySequence::NativeText)))
                << id.toStdString();
        }
    }
    EXPECT_GE(ids.size(), 25u);
    EXPECT_EQ(main_window(), &window);
    EXPECT_EQ(action("helpHere")->shortcut(), QKeySequence(Qt::Key_F1));
    EXPECT_EQ(action("endTool")->shortcut(), QKeySequence(Qt::Key_Escape));
}

TEST_F(ActionTableTest, MnemonicsOfAMenuDiffer)
{
    for (const QAction* menu : window.menuBar()->actions()) {
        std::map<QChar, QString> letters;
        for (const QAction* one : menu->menu()->actions()) {
            const qsizetype at = one->text().indexOf(u'&');
            if (at < 0 || at + 1 == one->text().size())
                continue;
            const QChar letter = one->text().at(at + 1).toLower();
            EXPECT_TRUE(letters.emplace(letter, one->text()).second)
                << one->text().toStdString() << " and " << letters[letter].toStdString();
        }
    }
}

TEST_F(ActionTableTest, EveryDialogOfTheModuleHasItsRow)
{
    std::set<std::string> ids;
    for (const DialogRow& row : dialog_rows())
        ids.insert(row.id);
    EXPECT_EQ(ids, (std::set<std::string>{"mergeSections", "subdivideSections", "upscaleGrid", "downscaleGrid",
                                          "upscaleProperty", "flowUnits"}));
    for (const std::string& id : ids)
        EXPECT_NE(action(id.c_str()), nullptr) << id;
    EXPECT_EQ(window.open_dialog("nonsense"), nullptr);
}

TEST_F(ActionTableTest, ContextMenusFitWhatIsSelected)
{
    add_whole_box("Box");
    const QStringList grid = context_of({Kind::Grid, "Box"});
    EXPECT_EQ(grid, QStringList({"export", "show", "mergeSections", "subdivideSections", "upscaleGrid", "downscaleGrid",
                                 "upscaleProperty", "flowUnits", "numbers", "compare", "report", "rename", "destroy"}));
    EXPECT_EQ(context_of({Kind::Property, "Box", "PORO"}),
              QStringList({"show", "upscaleProperty", "flowUnits", "numbers", "compare", "rename", "destroy"}));
    EXPECT_EQ(context_of({Kind::Region, "Box", "low"}), QStringList({"show", "numbers", "rename", "destroy"}));
    EXPECT_EQ(context_of({Kind::Unit, "Box", "Lower", 1}), QStringList({"show"}));
    EXPECT_EQ(context_of({Kind::Activity, "Box", "halves", 0}), QStringList({"applyCoarsening"}));
    EXPECT_TRUE(action("applyCoarsening")->isEnabled());
    window.tree()->select("Box");
    EXPECT_FALSE(action("applyCoarsening")->isEnabled());
}

TEST_F(ActionTableTest, ActionsWorkOnTheSelectedObject)
{
    add_whole_box("First");
    CornerPointGrid* second = add_whole_box("Second");

    // Every dialog takes the grid that is selected, also by one of its properties.
    window.tree()->select(TreeItem{Kind::Property, "First", "PORO"});
    for (const DialogRow& row : dialog_rows()) {
        QWidget* const dialog = window.open_dialog(row.id);
        ASSERT_NE(dialog, nullptr) << row.id;
        bool found = false;
        for (const QComboBox* list : dialog->findChildren<QComboBox*>())
            found = found || list->currentText() == "First";
        EXPECT_TRUE(found) << row.id;
        if (*row.suffix && dialog->findChild<QLineEdit*>("new_grid_name_")) {
            EXPECT_EQ(dialog->findChild<QLineEdit*>("new_grid_name_")->text(), "First" + QString(row.suffix)) << row.id;
        }
        if (std::string_view(row.id) == "upscaleProperty") {
            auto* wizard = qobject_cast<QWizard*>(dialog);
            ASSERT_NE(wizard, nullptr);
            bool property = false;
            for (const QComboBox* list : dialog->findChildren<QComboBox*>())
                property = property || list->currentText() == "PORO";
            EXPECT_TRUE(property) << "the property that was selected";
        }
        dialog->close();
        QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }

    // Camera and section take up what is shown.
    window.tree()->select(TreeItem{Kind::Property, "First", "PORO"});
    action("show")->trigger();
    EXPECT_EQ(window.display()->grid(), find_grid("First"));
    EXPECT_EQ(window.camera()->display(find_grid("First")).colour, ColourBy::of_property("PORO"));
    EXPECT_EQ(window.findChild<QComboBox*>("colourBy")->currentText(), "PORO");
    window.tree()->select(TreeItem{Kind::Unit, "Second", "Lower", 1});
    action("show")->trigger();
    EXPECT_EQ(window.camera()->display(second).filter.ranges[2], (std::vector<IndexRange>{{2, 4}}));
    EXPECT_FALSE(window.camera()->shows(find_grid("First")));
    window.tree()->select(TreeItem{Kind::Region, "Second", "low"});
    action("show")->trigger();
    EXPECT_EQ(window.camera()->display(second).filter.region, "low");
    window.tree()->select("Second");
    action("show")->trigger();
    EXPECT_EQ(window.camera()->display(second).filter, CellFilter{}) << "the grid as a whole";

    window.tree()->select(TreeItem{Kind::Activity, "Second", "halves", 0});
    action("applyCoarsening")->trigger();
    ASSERT_NE(find_grid("Second_halves"), nullptr);
    EXPECT_EQ(find_grid("Second_halves")->model().size, (GridSize{4, 3, 3}));

    window.tree()->select("First");
    QTimer::singleShot(0, qApp, [] {
        auto* dialog = qobject_cast<QInputDialog*>(QApplication::activeModalWidget());
        ASSERT_NE(dialog, nullptr);
        dialog->setTextValue("Renamed");
        dialog->accept();
    });
    action("rename")->trigger();
    EXPECT_NE(find_grid("Renamed"), nullptr);
    EXPECT_EQ(find_grid("First"), nullptr);
    EXPECT_NE(find_grid("Second"), nullptr);
}

TEST_F(ActionTableTest, PropertiesAndRegionsAreRenamedAndDestroyed)
{
    CornerPointGrid* const grid = add_whole_box("My Box");
    const auto rename_to = [](const QString& name) {
        QTimer::singleShot(0, qApp, [name] {
            auto* dialog = qobject_cast<QInputDialog*>(QApplication::activeModalWidget());
            ASSERT_NE(dialog, nullptr);
            dialog->setTextValue(name);
            dialog->accept();
        });
    };
    const auto press = [](const char* button) {
        QTimer::singleShot(0, qApp, [button] {
            auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
            ASSERT_NE(box, nullptr);
            box->findChild<QPushButton*>(button)->click();
        });
    };
    window.show_property("My Box", "PORO");
    rename_to("Porosity of it");
    action("rename")->trigger();
    EXPECT_NE(grid->model().find_property("Porosity of it"), nullptr);
    EXPECT_EQ(window.tree()->item(), (TreeItem{Kind::Property, "My Box", "Porosity of it"}));
    EXPECT_EQ(window.camera()->display(grid).colour, ColourBy::of_property("Porosity of it")) << "still shown";
    press("destroyNo");
    action("destroy")->trigger();
    EXPECT_NE(grid->model().find_property("Porosity of it"), nullptr);
    press("destroyYes");
    action("destroy")->trigger();
    EXPECT_EQ(grid->model().find_property("Porosity of it"), nullptr);
    EXPECT_EQ(find_grid("My Box"), grid) << "the grid stays";

    window.tree()->select(TreeItem{Kind::Region, "My Box", "low"});
    rename_to("deep");
    action("rename")->trigger();
    EXPECT_NE(grid->model().find_region("deep"), nullptr);
    EXPECT_EQ(window.tree()->item(), (TreeItem{Kind::Region, "My Box", "deep"}));
    press("destroyYes");
    action("destroy")->trigger();
    EXPECT_EQ(grid->model().find_region("deep"), nullptr);

    window.tree()->select(TreeItem{Kind::Unit, "My Box", "Lower", 1});
    EXPECT_FALSE(action("rename")->isEnabled());
    EXPECT_FALSE(action("destroy")->isEnabled());
    window.tree()->select("My Box");
    press("destroyYes");
    action("destroy")->trigger();
    EXPECT_EQ(find_grid("My Box"), nullptr);
}

TEST_F(ActionTableTest, EveryActionHasAPictureThatShowsOnLightAndDarkGround)
{
    const auto inked = [](const QIcon& icon) {
        const QImage image = icon.pixmap(24, 24).toImage().convertToFormat(QImage::Format_ARGB32);
        int pixels = 0, lightness = 0;
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x) {
                const QColor colour = image.pixelColor(x, y);
                if (colour.alpha() > 128) {
                    ++pixels;
                    lightness += colour.lightness();
                }
            }
        }
        return std::pair(pixels, pixels ? lightness / pixels : 0);
    };
    for (const Theme theme : {Theme::Light, Theme::Dark}) {
        use_theme(theme);
        const int ground = QApplication::palette().color(QPalette::Button).lightness();
        for (const char* id :
             {"newProject", "openProject", "saveProject", "saveProjectAs", "import", "export", "runScript",
              "saveJournal", "quit", "show", "mergeSections", "subdivideSections", "upscaleGrid", "downscaleGrid",
              "upscaleProperty", "flowUnits", "applyCoarsening", "numbers", "compare", "report", "rename", "destroy",
              "fit", "allCells", "editLegend", "savePicture", "endTool", "commandLine", "helpHere", "contents", "shortcuts",
              "verbs", "about"}) {
            ASSERT_FALSE(action(id)->icon().isNull()) << id;
            const auto [pixels, lightness] = inked(action(id)->icon());
            EXPECT_GT(pixels, 30) << id;
            EXPECT_GT(std::abs(lightness - ground), 45) << id << (theme == Theme::Dark ? " dark" : " light");
        }
    }
    use_theme(Theme::System);
}

TEST_F(ActionTableTest, TheShortcutsPageIsMadeFromTheTable)
{
    action("shortcuts")->trigger();
    const auto* dialog = window.findChild<ShortcutsDialog*>();
    ASSERT_NE(dialog, nullptr);
    const auto* table = dialog->findChild<QTreeWidget*>("shortcutsTable");
    const auto found = table->findItems("Merge SGrid Sections", Qt::MatchExactly, 1);
    ASSERT_EQ(found.size(), 1);
    EXPECT_EQ(found[0]->text(0), "Grid");
    EXPECT_EQ(found[0]->text(2), "Ctrl+M");
    EXPECT_FALSE(found[0]->text(3).isEmpty());
    dialog->findChild<QLineEdit*>("shortcutsSearch")->setText("ctrl+m");
    int shown = 0;
    for (int row = 0; row < table->topLevelItemCount(); ++row)
        shown += table->topLevelItem(row)->isHidden() ? 0 : 1;
    EXPECT_EQ(shown, 1);
}

} // namespace
