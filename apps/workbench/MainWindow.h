#pragma once

#include "DialogTable.h"
#include "ObjectTree.h"

#include <QMainWindow>
#include <QPointer>

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

class QLabel;
class QMenu;
class QPlainTextEdit;
class QPushButton;
class QSettings;
class QTabWidget;

namespace lodex {

class CameraView;
class ComparisonWindow;
class ConsoleEdit;
class CornerPointGrid;
class DisplayPanel;
class ItemDetails;
class JournalView;
class LogPanel;
class NumbersWindow;
class SectionPanel;

/// The window of the workbench: a tree of the catalogue's objects, a camera and a section on the selected grid,
/// messages, journal and console. Whatever it changes it changes by command text.
class MainWindow : public QMainWindow {
    Q_OBJECT

public:
    /// Whether layout, recent files, theme, language and former commands come from the user's settings and go there.
    enum class Memory { None, Settings };

    explicit MainWindow(QWidget* parent = nullptr, Memory memory = Memory::None);
    ~MainWindow() override;

    /// The settings of the user. Theme and language are read from there before the window is made.
    [[nodiscard]] static std::unique_ptr<QSettings> user_settings();

    /// Runs command text as if the user had typed it; answers and failures stand in the log. `source` names the file
    /// that the text comes from. True when all statements succeeded.
    bool run(const QString& text, const QString& source = {});
    /// Imports each file under a name made from the file's. True when all came in.
    bool import_files(const QStringList& paths);
    /// Runs a command script.
    bool run_script(const QString& path);

    /// The dialog with this id, on what is selected; null when there is none of that id. One that is open comes to the
    /// front.
    QWidget* open_dialog(const QString& id);
    /// What can be done with the selected item.
    [[nodiscard]] std::unique_ptr<QMenu> context_menu();
    /// Shows a property of a grid in the camera and the section.
    void show_property(const QString& grid, const QString& property);
    /// Newest first.
    [[nodiscard]] QStringList recent_files() const { return recent_; }

    [[nodiscard]] ObjectTree* tree() const { return tree_; }
    [[nodiscard]] SectionPanel* section() const { return section_; }
    [[nodiscard]] CameraView* camera() const { return camera_; }
    [[nodiscard]] DisplayPanel* display() const { return display_; }

public slots:
    NumbersWindow* open_numbers();
    ComparisonWindow* open_comparison();

signals:
    void closed();

protected:
    void closeEvent(QCloseEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    /// What must be selected for an action.
    enum class Needs { Nothing, Grid, Item, Coarsening, Tool };
    /// Where an action stands besides its menu.
    enum Place : unsigned {
        ToolBar = 1,
        OfGrid = 2,
        OfProperty = 4,
        OfRegion = 8,
        OfUnit = 16,
        OfActivity = 32,
        Separated = 64
    };
    /// One action of the window. Menus, tool bar, context menus and the page of shortcuts are made from these rows, in
    /// their order.
    struct ActionRow {
        const char* id; ///< also the action's object name
        const char* menu;
        const char* text;
        const char* tip;
        const char* shortcut;
        const char* icon; ///< of the picture library; empty: none
        Needs needs;
        unsigned places;
        std::function<void(MainWindow&)> run;
    };
    [[nodiscard]] static const std::vector<ActionRow>& action_rows();

    void build_actions();
    void build_layout();
    void build_view_menu(QMenu* menu);
    void build_recent_menu(QMenu* menu);
    void build_status_bar();
    void connect_parts();
    void read_settings();
    void write_settings();

    void select_grid(CornerPointGrid* grid);
    void select_item();
    void show_problem(const QString& text);
    void offer_comparison(const QString& statement);
    void add_recent(const QString& path);
    void place_beside_view(QWidget& window);

    void ask_import();
    void ask_export();
    void ask_script();
    void ask_rename();
    void ask_destroy();
    void apply_coarsening();
    void show_selected();
    void show_report();
    void show_shortcuts();
    void show_help();
    void show_about();
    void focus_console();

    std::unique_ptr<QSettings> settings_;
    std::map<std::string, QAction*, std::less<>> actions_;
    std::map<std::string, std::unique_ptr<DialogOpener>, std::less<>> openers_;
    ObjectTree* tree_;
    ItemDetails* details_;
    QPlainTextEdit* cell_;
    CameraView* camera_;
    DisplayPanel* display_;
    SectionPanel* section_;
    QTabWidget* views_;
    QTabWidget* tabs_;
    LogPanel* log_;
    JournalView* journal_;
    ConsoleEdit* console_;
    QLabel* console_hint_;
    QLabel* tool_hint_;
    QPushButton* offer_;
    QStringList recent_;
    QByteArray first_layout_;
    struct Offer {
        QString fine, fine_property, coarse, coarse_property, mapper;
    };
    Offer offered_;
    QPointer<ComparisonWindow> comparison_;
};

/// A path in double quotes for a statement. Empty, with a message in the log, when no statement can hold it.
[[nodiscard]] QString quoted_path(const QString& path);

/// A legal name that no object bears, made from a text. Words that the statement uses as keywords are not taken.
[[nodiscard]] QString free_name(const QString& base);

/// A legal name that no object bears, made from a file's.
[[nodiscard]] QString name_for_import(const QString& path);

/// The name of an object in a statement; in quotes, none of its words can be taken for a keyword.
[[nodiscard]] QString object_word(const QString& name);

} // namespace lodex
