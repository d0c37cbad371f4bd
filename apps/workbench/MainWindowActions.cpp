// The actions of the main window: one table, and what its rows do.

#include "MainWindow.h"

#include "ConsoleEdit.h"
#include "DisplayPanel.h"
#include "JournalView.h"
#include "LogPanel.h"
#include "LogView.h"
#include "ReportDialog.h"
#include "SectionPanel.h"
#include "ShortcutsDialog.h"
#include "Theme.h"
#include "Translations.h"
#include "plots/ComparisonWindow.h"
#include "plots/NumbersWindow.h"
#include "lodex/gridio/GridFormat.h"
#include "lodex/interpreter/Interpreter.h"
#include "lodex/utils/Version.h"
#include "lodex/volumes/CornerPointGrid.h"
#include "lodex/xtools/HelpPages.h"

#include <Lodex/gviews/Picking.h>
#include <Lodex/qtools/LQPixmapLib.h>
#include <Lodex/qtools/QtText.h>
#include <Lodex/xtools/XMHelpManager.h>

#include <QAction>
#include <QActionGroup>
#include <QApplication>
#include <QDockWidget>
#include <QFileDialog>
#include <QFileInfo>
#include <QInputDialog>
#include <QLineEdit>
#include <QMenuBar>
#include <QMessageBox>
#include <QPushButton>
#include <QSettings>
#include <QStatusBar>
#include <QTabWidget>
#include <QToolBar>

#include <algorithm>
#include <array>

namespace lodex {

namespace {

using Lodex::to_cstring;
using Lodex::to_qstring;

QString filter_of(const GridFormat& format)
{
    QStringList patterns;
    for (const std::string_view ending : format.endings()) {
        const QString pattern = QStringLiteral("*") + QString::fromUtf8(ending);
        patterns << pattern << pattern.toUpper();
    }
    const std::string_view text = format.description();
    return QStringLiteral("%1 (%2)").arg(QString::fromUtf8(text), patterns.join(u' '));
}

/// The format that a file's ending stands for; null when it is of none that can be written.
const GridFormat* format_by_ending(const QString& path)
{
    for (const GridFormat* format : GridFormats::all()) {
        const bool fits = std::ranges::any_of(format->endings(), [&](std::string_view ending) {
            return path.endsWith(QString::fromUtf8(ending), Qt::CaseInsensitive);
        });
        if (fits && format->can_write())
            return format;
    }
    return nullptr;
}

unsigned place_of(TreeItem::Kind kind, unsigned grid, unsigned property, unsigned region, unsigned unit,
                  unsigned activity)
{
    switch (kind) {
    case TreeItem::Kind::Property: return property;
    case TreeItem::Kind::Region: return region;
    case TreeItem::Kind::Unit: return unit;
    case TreeItem::Kind::Activity: return activity;
    case TreeItem::Kind::None: return 0;
    default: return grid;
    }
}

} // namespace

const std::vector<MainWindow::ActionRow>& MainWindow::action_rows()
{
    static const std::vector<ActionRow> rows = [] {
        const char* const file = QT_TRANSLATE_NOOP("lodex::MainWindow", "&File");
        const char* const grid = QT_TRANSLATE_NOOP("lodex::MainWindow", "&Grid");
        const char* const view = QT_TRANSLATE_NOOP("lodex::MainWindow", "&View");
        const char* const help = QT_TRANSLATE_NOOP("lodex::MainWindow", "&Help");
        using W = MainWindow;
        std::vector<ActionRow> result{
            {"newProject", file, QT_TRANSLATE_NOOP("lodex::MainWindow", "&New Project"),
             QT_TRANSLATE_NOOP("lodex::MainWindow", "Start anew, without grids"), "Ctrl+N", "project_new",
             Needs::Nothing, 0, &W::new_project},
            {"openProject", file, QT_TRANSLATE_NOOP("lodex::MainWindow", "&Open Project..."),
             QT_TRANSLATE_NOOP("lodex::MainWindow", "Open a project file in place of what is there"), "Ctrl+O",
             "project_open", Needs::Nothing, ToolBar, &W::ask_open_project},
            {"saveProject", file, QT_TRANSLATE_NOOP("lodex::MainWindow", "Save &Project"),
             QT_TRANSLATE_NOOP("lodex::MainWindow", "Save grids, views and journal to the project's file"), "Ctrl+S",
             "filesave", Needs::Nothing, ToolBar, [](W& w) { w.save_project_file(); }},
            {"saveProjectAs", file, QT_TRANSLATE_NOOP("lodex::MainWindow", "Save Project &As..."),
             QT_TRANSLATE_NOOP("lodex::MainWindow", "Save the project to another file"), "Ctrl+Shift+S",
             "project_save_as", Needs::Nothing, 0, [](W& w) { w.save_project_as(); }},
            {"import", file, QT_TRANSLATE_NOOP("lodex::MainWindow", "&Import..."),
             QT_TRANSLATE_NOOP("lodex::MainWindow", "Read grids from files"), "Ctrl+I", "file_import", Needs::Nothing, ToolBar | Separated,
             &W::ask_import},
            {"export", file, QT_TRANSLATE_NOOP("lodex::MainWindow", "&Export..."),
             QT_TRANSLATE_NOOP("lodex::MainWindow", "Write the selected grid to a file"), "Ctrl+E", "file_export", Needs::Grid,
             ToolBar | OfGrid, &W::ask_export},
            {"runScript", file, QT_TRANSLATE_NOOP("lodex::MainWindow", "&Run Script..."),
             QT_TRANSLATE_NOOP("lodex::MainWindow", "Run the commands of a script"), "Ctrl+R", "script_run", Needs::Nothing,
             Separated, &W::ask_script},
            {"saveJournal", file, QT_TRANSLATE_NOOP("lodex::MainWindow", "Save &Journal as Script..."),
             QT_TRANSLATE_NOOP("lodex::MainWindow", "Save what was done as a script that makes the same models again"),
             "Ctrl+J", "journal_save", Needs::Nothing, 0, [](W& w) { w.journal_->save_as_script(); }},
            {"quit", file, QT_TRANSLATE_NOOP("lodex::MainWindow", "&Quit"),
             QT_TRANSLATE_NOOP("lodex::MainWindow", "Close the workbench"), "Ctrl+Q", "quit", Needs::Nothing, Separated,
             [](W& w) { w.close(); }},
            {"show", grid, QT_TRANSLATE_NOOP("lodex::MainWindow", "Show in &Camera"),
             QT_TRANSLATE_NOOP("lodex::MainWindow",
                               "Show the selected object: colour by a property, only the cells of a region or unit"),
             "Ctrl+Return", "camera_show", Needs::Item, OfGrid | OfProperty | OfRegion | OfUnit, &W::show_selected}};
        bool first = true;
        for (const DialogRow& row : dialog_rows()) {
            unsigned places = OfGrid;
            if (row.on_property)
                places |= OfProperty;
            if (row.in_tool_bar)
                places |= ToolBar;
            if (first)
                places |= Separated;
            result.push_back({row.id, grid, row.text, row.tip, row.shortcut, row.icon, Needs::Grid, places,
                              [id = row.id](W& w) { w.open_dialog(QLatin1String(id)); }});
            first = false;
        }
        const std::vector<ActionRow> rest{
            {"applyCoarsening", grid, QT_TRANSLATE_NOOP("lodex::MainWindow", "&Apply Coarsening"),
             QT_TRANSLATE_NOOP("lodex::MainWindow",
                               "Make the grid that the selected coarsening describes, with properties and regions"),
             "", "apply", Needs::Coarsening, OfActivity, &W::apply_coarsening},
            {"numbers", grid, QT_TRANSLATE_NOOP("lodex::MainWindow", "&Numbers..."),
             QT_TRANSLATE_NOOP("lodex::MainWindow",
                               "Histogram, K profile, cross plot and statistics of the selected grid's properties"),
             "Ctrl+H", "numbers", Needs::Grid, ToolBar | OfGrid | OfProperty | OfRegion | Separated,
             [](W& w) { w.open_numbers(); }},
            {"compare", grid, QT_TRANSLATE_NOOP("lodex::MainWindow", "Compare Fine &with Coarse..."),
             QT_TRANSLATE_NOOP("lodex::MainWindow", "A property of a fine grid beside one of a coarse grid"),
             "Ctrl+Shift+C", "compare", Needs::Grid, ToolBar | OfGrid | OfProperty, [](W& w) { w.open_comparison(); }},
            {"report", grid, QT_TRANSLATE_NOOP("lodex::MainWindow", "&Report..."),
             QT_TRANSLATE_NOOP("lodex::MainWindow", "Show counts, volumes and statistics of the selected grid"),
             "Ctrl+T", "report", Needs::Grid, ToolBar | OfGrid, &W::show_report},
            {"rename", grid, QT_TRANSLATE_NOOP("lodex::MainWindow", "R&ename..."),
             QT_TRANSLATE_NOOP("lodex::MainWindow", "Give the selected grid, property or region another name"), "F2",
             "rename", Needs::Named, OfGrid | OfProperty | OfRegion | Separated, &W::ask_rename},
            {"destroy", grid, QT_TRANSLATE_NOOP("lodex::MainWindow", "&Destroy"),
             QT_TRANSLATE_NOOP("lodex::MainWindow", "Remove the selected grid, property or region"), "Del", "destroy",
             Needs::Named, OfGrid | OfProperty | OfRegion, &W::ask_destroy},
            {"fit", view, QT_TRANSLATE_NOOP("lodex::MainWindow", "Show &Everything"),
             QT_TRANSLATE_NOOP("lodex::MainWindow", "Bring the whole grid into the camera's view"), "Ctrl+0", "view_fit",
             Needs::Grid, 0, [](W& w) { w.camera_->fit(); }},
            {"allCells", view, QT_TRANSLATE_NOOP("lodex::MainWindow", "&All Cells"),
             QT_TRANSLATE_NOOP("lodex::MainWindow", "No slices, no threshold, no region"), "Ctrl+Shift+A", "all_cells",
             Needs::Grid, 0, [](W& w) { w.display_->show_all_cells(); }},
            {"editLegend", view, QT_TRANSLATE_NOOP("lodex::MainWindow", "Colour Le&gend..."),
             QT_TRANSLATE_NOOP("lodex::MainWindow",
                               "Range, clipping, logarithm and colour map of the property that is shown"),
             "Ctrl+L", "legend", Needs::Grid, 0, [](W& w) { w.display_->edit_legend(); }},
            {"savePicture", view, QT_TRANSLATE_NOOP("lodex::MainWindow", "Save &Picture..."),
             QT_TRANSLATE_NOOP("lodex::MainWindow", "Save the camera's view as a picture"), "Ctrl+P", "picture", Needs::Grid,
             0, [](W& w) { w.display_->save_picture(); }},
            {"endTool", view, QT_TRANSLATE_NOOP("lodex::MainWindow", "End Tool"),
             QT_TRANSLATE_NOOP("lodex::MainWindow", "No dialog waits for a cell any more"), "Esc", "tool_end", Needs::Tool, 0,
             [](W&) { Lodex::GraphicLib::instance()->reset_tool(); }},
            {"commandLine", view, QT_TRANSLATE_NOOP("lodex::MainWindow", "Go to &Command Line"),
             QT_TRANSLATE_NOOP("lodex::MainWindow", "Type a command"), "F6", "command_line", Needs::Nothing, Separated,
             &W::focus_console},
            {"helpHere", help, QT_TRANSLATE_NOOP("lodex::MainWindow", "&Help on This"),
             QT_TRANSLATE_NOOP("lodex::MainWindow", "Open the help on the part of the window that has the keyboard"),
             "F1", "help_here", Needs::Nothing, 0, &W::show_help_here},
            {"contents", help, QT_TRANSLATE_NOOP("lodex::MainWindow", "&Contents"),
             QT_TRANSLATE_NOOP("lodex::MainWindow", "Open the help"), "", "help_contents", Needs::Nothing, ToolBar,
             &W::show_help},
            {"shortcuts", help, QT_TRANSLATE_NOOP("lodex::MainWindow", "Actions and &Shortcuts..."),
             QT_TRANSLATE_NOOP("lodex::MainWindow", "Everything the menus can do, with its keys"), "Ctrl+F1", "keyboard",
             Needs::Nothing, 0, &W::show_shortcuts},
            {"verbs", help, QT_TRANSLATE_NOOP("lodex::MainWindow", "C&ommands"),
             QT_TRANSLATE_NOOP("lodex::MainWindow", "List the commands in the messages"), "Shift+F1", "verbs",
             Needs::Nothing, 0,
             [](W& w) {
                 w.tabs_->setCurrentWidget(w.log_);
                 w.run(QStringLiteral("lodex help"));
             }},
            {"about", help, QT_TRANSLATE_NOOP("lodex::MainWindow", "&About"),
             QT_TRANSLATE_NOOP("lodex::MainWindow", "What this program is"), "", "about", Needs::Nothing, Separated,
             &W::show_about},
        };
        result.insert(result.end(), rest.begin(), rest.end());
        return result;
    }();
    return rows;
}

void MainWindow::build_actions()
{
    QToolBar* bar = addToolBar(tr("Tools"));
    bar->setObjectName("toolBar");
    bar->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    bar->setMovable(false);
    std::map<std::string, QMenu*> menus;
    for (const ActionRow& row : action_rows()) {
        QMenu*& menu = menus[row.menu];
        if (!menu) {
            menu = menuBar()->addMenu(tr(row.menu));
            menu->setObjectName(QStringLiteral("menu_") + QString::fromLatin1(row.menu).remove(u'&'));
            menu->setToolTipsVisible(true);
        }
        if (row.places & Separated)
            menu->addSeparator();
        QAction* action = menu->addAction(tr(row.text));
        action->setObjectName(row.id);
        action->setStatusTip(tr(row.tip));
        action->setShortcut(QKeySequence(QString::fromLatin1(row.shortcut)));
        const QString keys = action->shortcut().toString(QKeySequence::NativeText);
        action->setToolTip(keys.isEmpty() ? tr(row.tip) : QStringLiteral("%1 (%2)").arg(tr(row.tip), keys));
        if (*row.icon)
            action->setIcon(Lodex::LQPixmapLib::icon(row.icon));
        connect(action, &QAction::triggered, this, [this, &row] { row.run(*this); });
        if (row.places & ToolBar) {
            if ((row.places & Separated) && !bar->actions().isEmpty())
                bar->addSeparator();
            bar->addAction(action);
        }
        actions_[row.id] = action;
        if (std::string_view(row.id) == "saveProjectAs")
            build_projects_menu(menu);
        if (std::string_view(row.id) == "import")
            build_recent_menu(menu);
    }
    build_view_menu(menus.at("&View"));
    for (const char* id : {"openProject", "saveProject", "contents"})
        actions_.at(id)->setPriority(QAction::LowPriority); // known by their pictures alone
    actions_.at("compare")->setIconText(tr("Compare"));
    QAction* const destroy = actions_.at("destroy");
    destroy->setShortcutContext(Qt::WidgetShortcut); // elsewhere the key deletes text
    tree_->addAction(destroy);
}

void MainWindow::build_recent_menu(QMenu* menu)
{
    QMenu* recent = menu->addMenu(tr("Re&cent Files"));
    recent->setObjectName("menu_Recent");
    recent->setToolTipsVisible(true);
    connect(recent, &QMenu::aboutToShow, this, [this, recent] {
        recent->clear();
        for (const QString& path : recent_) {
            QString text = QFileInfo(path).fileName();
            QAction* action = recent->addAction(text.replace(u'&', QStringLiteral("&&")));
            action->setToolTip(path);
            action->setStatusTip(path);
            connect(action, &QAction::triggered, this, [this, path] { import_files({path}); });
        }
        if (recent_.isEmpty())
            recent->addAction(tr("No files yet"))->setEnabled(false);
    });
}

void MainWindow::build_view_menu(QMenu* menu)
{
    menu->addSeparator();
    for (QDockWidget* dock : findChildren<QDockWidget*>(Qt::FindDirectChildrenOnly)) {
        QAction* action = dock->toggleViewAction();
        action->setObjectName(dock->objectName() + QStringLiteral("Shown"));
        action->setToolTip(tr("Shows or hides this part of the window"));
        menu->addAction(action);
    }
    QAction* reset =
        menu->addAction(tr("&Reset Layout"), this, [this] { restoreState(first_layout_, layout_version); });
    reset->setObjectName("resetLayout");
    reset->setToolTip(tr("Brings all parts of the window back to their first places"));
    menu->addSeparator();

    const auto add_choices = [&](const char* name, const QString& title, const QString& tip) {
        QMenu* choices = menu->addMenu(title);
        choices->setObjectName(QStringLiteral("menu_") + QLatin1String(name));
        choices->menuAction()->setToolTip(tip);
        return std::pair(choices, new QActionGroup(choices));
    };
    const auto add_choice = [&](auto& to, const QString& name, const QString& text, bool chosen, auto&& choose) {
        QAction* action = to.first->addAction(text);
        action->setObjectName(name);
        action->setCheckable(true);
        action->setChecked(chosen);
        to.second->addAction(action);
        connect(action, &QAction::triggered, this, choose);
    };
    auto themes = add_choices("Theme", tr("&Theme"), tr("Light or dark colours"));
    for (const auto& [name, text, theme] : {std::tuple("themeSystem", tr("As the &desktop"), Theme::System),
                                            std::tuple("themeLight", tr("&Light"), Theme::Light),
                                            std::tuple("themeDark", tr("D&ark"), Theme::Dark)}) {
        add_choice(themes, QLatin1String(name), text, current_theme() == theme, [this, theme = theme] {
            use_theme(theme);
            if (settings_)
                settings_->setValue("theme", static_cast<int>(theme));
        });
    }
    auto chosen =
        add_choices("Language", tr("&Language"), tr("Language of menus and windows; commands stay as they are"));
    for (const QString& language : languages()) {
        QString text = QLocale(language).nativeLanguageName();
        text[0] = text[0].toUpper();
        add_choice(chosen, QStringLiteral("language_") + language, text, current_language() == language,
                   [this, language] {
                       if (settings_)
                           settings_->setValue("language", language);
                       emit language_wanted(language);
                   });
    }
}

std::unique_ptr<QMenu> MainWindow::context_menu()
{
    auto menu = std::make_unique<QMenu>(this);
    menu->setObjectName("contextMenu");
    menu->setToolTipsVisible(true);
    const unsigned place = place_of(tree_->item().kind, OfGrid, OfProperty, OfRegion, OfUnit, OfActivity);
    for (const ActionRow& row : action_rows()) {
        if (!(row.places & place))
            continue;
        if ((row.places & Separated) && !menu->isEmpty())
            menu->addSeparator();
        menu->addAction(actions_.at(row.id));
    }
    return menu;
}

void MainWindow::ask_import()
{
    QStringList all, filters;
    for (const GridFormat* format : GridFormats::all()) {
        if (!format->can_read())
            continue;
        filters.append(filter_of(*format));
        all.append(filters.last().section(u'(', -1).chopped(1));
    }
    filters.prepend(tr("Models (%1)").arg(all.join(u' ')));
    filters.append(tr("All files (*)"));
    import_files(QFileDialog::getOpenFileNames(this, tr("Import"), QString(), filters.join(QStringLiteral(";;"))));
}

void MainWindow::ask_export()
{
    const CornerPointGrid* grid = tree_->selected();
    if (!grid)
        return;
    std::map<QString, const GridFormat*> formats;
    QStringList filters;
    for (const GridFormat* format : GridFormats::all()) {
        if (!format->can_write())
            continue;
        filters.append(filter_of(*format));
        formats[filters.last()] = format;
    }
    const QString name = to_qstring(grid->name());
    QString chosen;
    const QString path = QFileDialog::getSaveFileName(this, tr("Export %1").arg(name), QString(),
                                                      filters.join(QStringLiteral(";;")), &chosen);
    const QString file = path.isEmpty() ? QString() : quoted_path(path);
    if (file.isEmpty())
        return;
    QString command = QStringLiteral("lodex export sgrid %1 file %2").arg(object_word(name), file);
    const auto format = formats.find(chosen);
    if (!format_by_ending(path) && format != formats.end()) {
        const std::string_view word = format->second->name();
        command += QStringLiteral(" format ") + QString::fromUtf8(word);
    }
    run(command);
}

void MainWindow::ask_script()
{
    const QString path = QFileDialog::getOpenFileName(this, tr("Run a script"), QString(),
                                                      tr("Command scripts (*.lodex *.txt);;All files (*)"));
    if (!path.isEmpty())
        run_script(path);
}

MainWindow::Renamable MainWindow::renamable() const
{
    const TreeItem item = tree_->item();
    switch (item.kind) {
    case TreeItem::Kind::Grid: return {item.grid, QStringLiteral("object"), item.grid};
    case TreeItem::Kind::Property: return {item.grid, QStringLiteral("property"), item.name};
    case TreeItem::Kind::Region: return {item.grid, QStringLiteral("region"), item.name};
    default: return {};
    }
}

void MainWindow::ask_rename()
{
    const Renamable item = renamable();
    if (item.kind.isEmpty())
        return;
    QInputDialog dialog(this);
    dialog.setObjectName("renameDialog");
    dialog.setWindowTitle(tr("Rename"));
    dialog.setOkButtonText(tr("Rename"));
    dialog.setLabelText(item.kind == u"property" ? tr("New name of the property \"%1\"").arg(item.name)
                        : item.kind == u"region" ? tr("New name of the region \"%1\"").arg(item.name)
                                                 : tr("New name of the grid \"%1\"").arg(item.name));
    dialog.setTextValue(item.name);
    if (dialog.exec() != QDialog::Accepted)
        return;
    const QString wanted = dialog.textValue().trimmed();
    if (wanted.isEmpty() || wanted == item.name)
        return;
    if (item.kind == u"object") {
        run(QStringLiteral("lodex rename object %1 name %2").arg(object_word(item.name), object_word(wanted)));
        return;
    }
    const bool shown = camera_->display(tree_->selected()).colour == ColourBy::of_property(item.name.toStdString());
    if (!run(QStringLiteral("lodex on SGrid %1 rename_%2 %3 name %4")
                 .arg(object_word(item.grid), item.kind, object_word(item.name), object_word(wanted))))
        return;
    const bool property = item.kind == u"property";
    if (property && shown)
        show_property(item.grid, wanted);
    tree_->select(TreeItem{.kind = property ? TreeItem::Kind::Property : TreeItem::Kind::Region,
                           .grid = item.grid,
                           .name = wanted});
}

void MainWindow::ask_destroy()
{
    const Renamable item = renamable();
    if (item.kind.isEmpty())
        return;
    QMessageBox box(QMessageBox::Question, tr("Destroy"),
                    item.kind == u"property" ? tr("Destroy the property \"%1\"?").arg(item.name)
                    : item.kind == u"region"
                        ? tr("Destroy the region \"%1\"?").arg(item.name)
                        : tr("Destroy the grid \"%1\" with its properties and regions?").arg(item.name),
                    QMessageBox::NoButton, this);
    box.setObjectName("destroyQuestion");
    box.setTextFormat(Qt::PlainText);
    QPushButton* destroy = box.addButton(tr("Destroy"), QMessageBox::AcceptRole);
    QPushButton* keep = box.addButton(tr("Keep"), QMessageBox::RejectRole);
    destroy->setObjectName("destroyYes");
    keep->setObjectName("destroyNo");
    box.setDefaultButton(keep);
    box.setEscapeButton(keep);
    box.exec();
    if (box.clickedButton() != destroy)
        return;
    if (item.kind == u"object")
        run(QStringLiteral("lodex destroy objects %1").arg(object_word(item.name)));
    else
        run(QStringLiteral("lodex on SGrid %1 destroy_%2 %3")
                .arg(object_word(item.grid), item.kind, object_word(item.name)));
}

void MainWindow::apply_coarsening()
{
    const TreeItem item = tree_->item();
    if (item.kind != TreeItem::Kind::Activity)
        return;
    run(QStringLiteral("lodex on SGrid %1 apply_coarsening %2 name %3 copy_properties 1 copy_regions 1")
            .arg(object_word(item.grid), object_word(item.name),
                 object_word(free_name(item.grid + QStringLiteral("_") + item.name))));
}

void MainWindow::show_selected()
{
    const TreeItem item = tree_->item();
    const CornerPointGrid* const grid = tree_->selected();
    if (!grid)
        return;
    switch (item.kind) {
    case TreeItem::Kind::Property: show_property(item.grid, item.name); break;
    case TreeItem::Kind::Region: display_->show_region(item.name); break;
    case TreeItem::Kind::Unit: {
        std::int64_t top = 0;
        const auto& layers = grid->header().layers;
        for (int n = 0; n < item.number; ++n)
            top += layers[static_cast<std::size_t>(n)].nb_k_cells;
        display_->show_layers({top, top + layers[static_cast<std::size_t>(item.number)].nb_k_cells - 1});
        break;
    }
    case TreeItem::Kind::Grid: display_->show_all_cells(); break;
    default: return; // groups only open and close
    }
    if (item.kind != TreeItem::Kind::Property && camera_->can_draw())
        views_->setCurrentWidget(camera_); // a section knows neither regions nor slices
}

void MainWindow::show_report()
{
    const CornerPointGrid* grid = tree_->selected();
    if (!grid)
        return;
    const QString name = to_qstring(grid->name());
    const QString command = QStringLiteral("lodex report sgrid %1").arg(object_word(name));
    const auto results = Interpreter::instance().run(command.toStdString());
    if (results.size() != 1 || results[0].status != StatementStatus::Done)
        return;
    auto* dialog = new ReportDialog(name, QString::fromStdString(results[0].answer), this);
    connect(dialog, &ReportDialog::save_requested, this, [this, command](const QString& path) {
        const QString file = quoted_path(path);
        if (!file.isEmpty())
            run(QStringLiteral("%1 file %2").arg(command, file));
    });
    dialog->show();
}

void MainWindow::show_shortcuts()
{
    QList<ShortcutsDialog::Row> rows;
    for (const ActionRow& row : action_rows())
        rows.append({tr(row.menu), actions_.at(row.id)});
    auto* dialog = new ShortcutsDialog(rows, this);
    dialog->show();
}

void MainWindow::show_help()
{
    Lodex::XMHelpManager::instance()->display(to_cstring(help_key(help_url(help_start_page()))));
}

void MainWindow::show_help_here()
{
    const std::array<std::pair<const QWidget*, const char*>, 3> places{
        {{display_, "help:user-doc/display.html"},
         {section_, "help:user-doc/workbench.html#section"},
         {camera_, "help:user-doc/workbench.html#camera"}}};
    const QWidget* const focus = QApplication::focusWidget();
    const char* page = "help:user-doc/workbench.html";
    for (const auto& [part, its_page] : places) {
        if (focus && (focus == part || part->isAncestorOf(focus)))
            page = its_page;
    }
    Lodex::XMHelpManager::instance()->display(Lodex::CopyCString(std::string(page) + ";winhelp:Lodex"));
}

void MainWindow::show_about()
{
    QMessageBox::about(
        this, tr("About"),
        tr("<h3>lodex workbench %1</h3><p>Coarsens and refines stratigraphic grids: merges cell sections, "
           "carries properties and regions over, and keeps a journal that makes the same models again.</p>")
            .arg(QString::fromLatin1(program_version())));
}

void MainWindow::focus_console()
{
    if (auto* dock = findChild<QDockWidget*>("linesDock")) {
        dock->show();
        dock->raise();
    }
    console_->setFocus(Qt::ShortcutFocusReason);
}

} // namespace lodex
