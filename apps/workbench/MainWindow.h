#pragma once

#include "DialogTable.h"
#include "LogView.h"
#include "ObjectTree.h"
#include "ProjectState.h"

#include "lodex/gviews/ViewTransform.h"

#include <QMainWindow>
#include <QPointer>

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

class QLabel;
class QMenu;
class QPlainTextEdit;
class QProgressBar;
class QPushButton;
class QSettings;
class QTabWidget;

namespace lodex {

class Autosave;
struct KeptSession;
class CameraView;
class ComparisonWindow;
class ConsoleEdit;
class CornerPointGrid;
class DisplayPanel;
class ItemDetails;
class JournalView;
class LogPanel;
class NumbersWindow;
class RecoveryBar;
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

    /// Whether the user wants the last project again when the workbench starts without a file.
    [[nodiscard]] static bool reopens_last(const QSettings& settings);
    /// The settings of the user. Theme and language are read from there before the window is made.
    [[nodiscard]] static std::unique_ptr<QSettings> user_settings();

    /// Runs command text as if the user had typed it; answers and failures stand in the log. `source` names the file
    /// that the text comes from. True when all statements succeeded.
    bool run(const QString& text, const QString& source = {});
    /// Imports each file under a name made from the file's; a project file among them is opened in place of everything
    /// else. True when all came in.
    bool import_files(const QStringList& paths);
    /// Runs a command script.
    bool run_script(const QString& path);

    // The project. Those that take away what is there ask first when it is not saved and asks() is on; they go on when
    // the user has answered, without waiting.
    void new_project();
    void open_project_file(const QString& path);
    /// To its file; asks for one when there is none. False when it was not saved.
    bool save_project_file();
    bool save_project_as();
    /// True when something would be lost.
    [[nodiscard]] bool unsaved() const;
    /// Off until switched on: nobody waits for an answer in tests and without a display.
    void set_asks(bool asks) { asks_ = asks; }
    [[nodiscard]] bool asks() const { return asks_; }
    /// Keeps copies for recovery there and removes them when the window closes (not owned; must live longer).
    void set_autosave(Autosave* autosave);
    /// Offers what killed sessions left behind; false when there is nothing.
    bool offer_recovery();
    [[nodiscard]] QList<KeptSession> offered_sessions() const;
    void show_offer(const QList<KeptSession>& sessions);
    /// Brings title and mark up to date with the project; done by itself after commands.
    void follow_project();
    /// Where the camera shall stand once the event loop is back and all grids are there.
    void keep_place(const CameraPlace& place);

    /// What another window takes over that is made in this one's place, such as one in another language.
    struct Legacy {
        std::string cameras, window;
        QByteArray geometry, layout;
        QStringList commands, recent, recent_projects;
        QString typed;
        bool recovered = false, asks = false;
        QString recovered_project;
        LogView::Entries messages;
    };
    [[nodiscard]] Legacy legacy() const;
    void take_over(const Legacy& legacy);

    /// The dialog with this id, on what is selected; null when there is none of that id. One that is open comes to the
    /// front.
    QWidget* open_dialog(const QString& id);
    /// What can be done with the selected item.
    [[nodiscard]] std::unique_ptr<QMenu> context_menu();
    /// Shows a property of a grid in the camera and the section.
    void show_property(const QString& grid, const QString& property);
    /// Newest first.
    [[nodiscard]] QStringList recent_files() const { return recent_; }
    [[nodiscard]] QStringList recent_projects() const { return recent_projects_; }

    [[nodiscard]] ObjectTree* tree() const { return tree_; }
    [[nodiscard]] SectionPanel* section() const { return section_; }
    [[nodiscard]] CameraView* camera() const { return camera_; }
    [[nodiscard]] DisplayPanel* display() const { return display_; }

public slots:
    NumbersWindow* open_numbers();
    ComparisonWindow* open_comparison();

signals:
    void closed();
    /// The user wants this language now; the texts of a window do not change once it is there.
    void language_wanted(const QString& language);
    /// The last of the sessions to recover was answered, and none was recovered.
    void recovery_declined();

protected:
    void closeEvent(QCloseEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    static constexpr int layout_version = 1; ///< of saved places of the window's parts

    /// What must be selected for an action.
    enum class Needs { Nothing, Grid, Item, Named, Coarsening, Tool };
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
    void build_projects_menu(QMenu* menu);
    void build_status_bar();
    void build_recovery_bar();
    void connect_parts();
    void read_settings();
    void write_settings();

    void select_grid(CornerPointGrid* grid);
    void select_item();
    void show_problem(const QString& text);
    void offer_comparison(const QString& statement);
    void add_recent(const QString& path);
    void place_beside_view(QWidget& window);
    void add_recent_project(const QString& path);
    void ask_unsaved(std::function<void()> go_on);
    void ask_open_project();
    void load_project(const QString& path);
    void recover(const QString& name);
    void clear_recovery();
    /// Which of the items that can be renamed and destroyed is selected, as statements name it.
    struct Renamable {
        QString grid, kind, name; ///< kind: "object", "property", "region"; empty: none
    };
    [[nodiscard]] Renamable renamable() const;

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
    void show_help_here();
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
    RecoveryBar* recovery_;
    QWidget* keeping_;
    QProgressBar* keeping_bar_;
    QStringList recent_, recent_projects_;
    QByteArray first_layout_;
    QPointer<Autosave> autosave_;
    QPointer<QWidget> question_;
    bool asks_ = false, closing_ = false;
    bool recovered_ = false; ///< what is open came from a killed session and was not saved since
    QString recovered_project_;
    QString shown_path_; ///< the project file whose name the title shows
    std::optional<CameraPlace> place_;
    struct Offer {
        QString fine, fine_property, coarse, coarse_property, mapper;
    };
    Offer offered_;
    QPointer<ComparisonWindow> comparison_;
    CamerasPart cameras_part_{*this};
    WindowPart window_part_{*this};
};

/// True when the file is a project, whatever its name.
[[nodiscard]] bool is_project_file(const QString& path);

/// A path in double quotes for a statement. Empty, with a message in the log, when no statement can hold it.
[[nodiscard]] QString quoted_path(const QString& path);

/// A legal name that no object bears, made from a text. Words that the statement uses as keywords are not taken.
[[nodiscard]] QString free_name(const QString& base);

/// A legal name that no object bears, made from a file's.
[[nodiscard]] QString name_for_import(const QString& path);

/// The name of an object in a statement; in quotes, none of its words can be taken for a keyword.
[[nodiscard]] QString object_word(const QString& name);

} // namespace lodex
