#pragma once

#include <QMainWindow>
#include <QPointer>

#include <map>
#include <string>

class QTabWidget;

namespace Kelvane {
class LQSGSectionMergeDialog;
}
namespace Lodex {
class XMShell;
}

namespace lodex {

class ConsoleEdit;
class CornerPointGrid;
class GridList;
class JournalView;
class LogView;
class SectionPanel;

/// The window of the workbench: the grids of the catalogue, a section through the selected one, messages, journal and
/// console. Whatever it changes it changes by command text.
class MainWindow : public QMainWindow {
    Q_OBJECT

public:
    explicit MainWindow(QWidget* parent = nullptr);
    ~MainWindow() override;

    /// Runs command text as if the user had typed it; answers and failures stand in the log. `source` names the file
    /// that the text comes from. True when all statements succeeded.
    bool run(const QString& text, const QString& source = {});
    /// Imports each file under a name made from the file's. True when all came in.
    bool import_files(const QStringList& paths);
    /// Runs a command script.
    bool run_script(const QString& path);

    [[nodiscard]] GridList* grids() const { return grids_; }
    [[nodiscard]] SectionPanel* section() const { return section_; }

public slots:
    /// The dialog that merges sections, on the selected grid. One that is open comes to the front.
    void open_merge_dialog();

signals:
    void closed();

protected:
    void closeEvent(QCloseEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    struct ActionRow;
    static const ActionRow action_rows[];

    void build_actions();
    void build_layout();
    void select_grid(CornerPointGrid* grid);
    void show_problem(const QString& text);
    void place_beside_section(QWidget& window);

    void ask_import();
    void ask_export();
    void ask_script();
    void show_report();
    void ask_destroy();
    void show_help();
    void show_about();

    std::map<std::string, QAction*, std::less<>> actions_;
    GridList* grids_;
    SectionPanel* section_;
    QTabWidget* tabs_;
    LogView* log_;
    JournalView* journal_;
    ConsoleEdit* console_;
    QPointer<Kelvane::LQSGSectionMergeDialog> merge_dialog_;
    QPointer<Lodex::XMShell> merge_shell_;
};

/// A path in double quotes for a statement. Empty, with a message in the log, when no statement can hold it.
[[nodiscard]] QString quoted_path(const QString& path);

/// A legal name that no object bears, made from a file's.
[[nodiscard]] QString name_for_import(const QString& path);

} // namespace lodex
