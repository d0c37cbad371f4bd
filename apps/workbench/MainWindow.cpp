#include "MainWindow.h"

#include "ConsoleEdit.h"
#include "GridList.h"
#include "JournalView.h"
#include "LogView.h"
#include "ReportDialog.h"
#include "SectionPanel.h"
#include "lodex/gridio/GridFormat.h"
#include "lodex/interpreter/Interpreter.h"
#include "lodex/qtools/MainWindowRegistry.h"
#include "lodex/utils/Names.h"
#include "lodex/volumes/CornerPointGrid.h"
#include "lodex/xtools/HelpPages.h"

#include <Lodex/geobase/GeobaseLib.h>
#include <Lodex/interpreter/ICommandStub.h>
#include <Lodex/qtools/LQPixmapLib.h>
#include <Lodex/qtools/QtText.h>
#include <Lodex/xtools/XMHelpManager.h>
#include <Lodex/xtools/XMShell.h>

#include "sgresize/LQSGSectionMergeDialog.h"

#include <QAction>
#include <QApplication>
#include <QCloseEvent>
#include <QDropEvent>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QLabel>
#include <QMenuBar>
#include <QMessageBox>
#include <QMimeData>
#include <QPushButton>
#include <QScreen>
#include <QSplitter>
#include <QStatusBar>
#include <QTabWidget>
#include <QToolBar>
#include <QVBoxLayout>

#include <algorithm>
#include <array>

namespace lodex {

namespace {

using Lodex::Logger;
using Lodex::LogLevel;
using Lodex::to_cstring;
using Lodex::to_qstring;

constexpr int status_time = 8000; // ms

/// What the user had selected when a dialog was asked for.
class SelectedGrid : public Lodex::ICommandStub {
public:
    explicit SelectedGrid(const Lodex::CString& name) : name_(name) {}

    [[nodiscard]] bool get(const Lodex::CString& key, Lodex::CopyCString& value, int index) const override
    {
        if (key != Lodex::CString("sgrid") || index != 0 || name_.empty())
            return false;
        value = name_;
        return true;
    }

private:
    Lodex::CString name_;
};

/// The name of an object in a statement; in quotes, none of its words can be taken for a keyword.
QString object_word(const QString& name)
{
    return QString::fromStdString(quoted(name.toStdString()));
}

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

QStringList local_files(const QMimeData* data)
{
    QStringList paths;
    for (const QUrl& url : data->urls()) {
        if (url.isLocalFile())
            paths.append(url.toLocalFile());
    }
    return paths;
}

} // namespace

QString quoted_path(const QString& path)
{
    const QString whole = QFileInfo(path).absoluteFilePath(); // a saved journal may be run from elsewhere
    if (std::ranges::any_of(whole, [](QChar c) { return c == u'"' || c.category() == QChar::Other_Control; })) {
        Logger::log(LogLevel::Fatal,
                    to_cstring(MainWindow::tr("The path %1 holds a character that commands cannot hold.").arg(whole)));
        return {};
    }
    return QString::fromStdString(quoted(whole.toStdString()));
}

QString name_for_import(const QString& path)
{
    constexpr std::array<std::string_view, 2> keywords{"file", "name"};
    const std::string base = mend_object_name(QFileInfo(path).completeBaseName().toStdString(), keywords);
    std::string name = base;
    for (int n = 2; Lodex::GeobaseLib::instance()->is_name_used(name); ++n)
        name = base + "_" + std::to_string(n);
    return QString::fromStdString(name);
}

/// One action of the window. Menus, tool bar and context menu are made from these rows, in their order.
struct MainWindow::ActionRow {
    const char* id; ///< also the action's object name
    const char* menu;
    const char* text;
    const char* tip;
    const char* shortcut;
    const char* icon; ///< of the picture library; empty: none
    bool needs_grid;
    bool in_tool_bar;
    void (MainWindow::*run)();
};

const MainWindow::ActionRow MainWindow::action_rows[] = {
    {"import", QT_TRANSLATE_NOOP("lodex::MainWindow", "&File"), QT_TRANSLATE_NOOP("lodex::MainWindow", "&Import..."),
     QT_TRANSLATE_NOOP("lodex::MainWindow", "Read grids from files"), "Ctrl+I", "", false, true,
     &MainWindow::ask_import},
    {"export", QT_TRANSLATE_NOOP("lodex::MainWindow", "&File"), QT_TRANSLATE_NOOP("lodex::MainWindow", "&Export..."),
     QT_TRANSLATE_NOOP("lodex::MainWindow", "Write the selected grid to a file"), "Ctrl+E", "", true, true,
     &MainWindow::ask_export},
    {"runScript", QT_TRANSLATE_NOOP("lodex::MainWindow", "&File"),
     QT_TRANSLATE_NOOP("lodex::MainWindow", "&Run Script..."),
     QT_TRANSLATE_NOOP("lodex::MainWindow", "Run the commands of a script"), "Ctrl+R", "", false, false,
     &MainWindow::ask_script},
    {"quit", QT_TRANSLATE_NOOP("lodex::MainWindow", "&File"), QT_TRANSLATE_NOOP("lodex::MainWindow", "&Quit"),
     QT_TRANSLATE_NOOP("lodex::MainWindow", "Close the workbench"), "Ctrl+Q", "", false, false, nullptr},
    {"mergeSections", QT_TRANSLATE_NOOP("lodex::MainWindow", "&Grid"),
     QT_TRANSLATE_NOOP("lodex::MainWindow", "&Merge SGrid Sections..."),
     QT_TRANSLATE_NOOP("lodex::MainWindow", "Make a coarser grid by merging cell sections of the selected one"),
     "Ctrl+M", "table_merge_rows", true, true, &MainWindow::open_merge_dialog},
    {"report", QT_TRANSLATE_NOOP("lodex::MainWindow", "&Grid"), QT_TRANSLATE_NOOP("lodex::MainWindow", "&Report..."),
     QT_TRANSLATE_NOOP("lodex::MainWindow", "Show counts, volumes and statistics of the selected grid"), "Ctrl+T", "",
     true, true, &MainWindow::show_report},
    {"destroy", QT_TRANSLATE_NOOP("lodex::MainWindow", "&Grid"), QT_TRANSLATE_NOOP("lodex::MainWindow", "&Destroy"),
     QT_TRANSLATE_NOOP("lodex::MainWindow", "Remove the selected grid"), "Del", "", true, false,
     &MainWindow::ask_destroy},
    {"contents", QT_TRANSLATE_NOOP("lodex::MainWindow", "&Help"), QT_TRANSLATE_NOOP("lodex::MainWindow", "&Contents"),
     QT_TRANSLATE_NOOP("lodex::MainWindow", "Open the help"), "F1", "help_contents", false, true,
     &MainWindow::show_help},
    {"about", QT_TRANSLATE_NOOP("lodex::MainWindow", "&Help"), QT_TRANSLATE_NOOP("lodex::MainWindow", "&About"),
     QT_TRANSLATE_NOOP("lodex::MainWindow", "What this program is"), "", "", false, false, &MainWindow::show_about},
};

MainWindow::MainWindow(QWidget* parent)
    : QMainWindow(parent), grids_(new GridList(this)), section_(new SectionPanel(this)), tabs_(new QTabWidget(this)),
      log_(new LogView(this)), journal_(new JournalView(this)), console_(new ConsoleEdit(this))
{
    setObjectName("mainWindow");
    setWindowTitle(tr("lodex workbench"));
    setWindowIcon(Lodex::LQPixmapLib::icon("lodex"));
    setAcceptDrops(true);
    build_layout();
    build_actions();
    set_main_window(this);

    connect(grids_, &GridList::grid_selected, this, &MainWindow::select_grid);
    connect(log_, &LogView::problem, this, &MainWindow::show_problem);
    connect(console_, &ConsoleEdit::submitted, this, [this](const QString& text) {
        log_->add_command(text);
        run(text);
    });
    select_grid(grids_->selected());
}

MainWindow::~MainWindow()
{
    grids_->disconnect(this); // the parts go after this window's own members
    log_->disconnect(this);
}

void MainWindow::build_layout()
{
    auto* upper = new QSplitter(Qt::Horizontal);
    upper->setObjectName("upperSplitter");
    upper->addWidget(grids_);
    upper->addWidget(section_);
    upper->setStretchFactor(1, 1);
    upper->setChildrenCollapsible(false);
    upper->setSizes({430, 900});

    tabs_->setObjectName("lowerTabs");
    tabs_->addTab(log_, tr("Messages"));
    tabs_->addTab(journal_, tr("Journal"));
    auto* lower = new QWidget;
    auto* line = new QHBoxLayout;
    auto* label = new QLabel(tr("C&ommand"), lower);
    label->setBuddy(console_);
    line->addWidget(label);
    line->addWidget(console_, 1);
    auto* column = new QVBoxLayout(lower);
    column->setContentsMargins(0, 0, 0, 0);
    column->addWidget(tabs_, 1);
    column->addLayout(line);

    auto* whole = new QSplitter(Qt::Vertical);
    whole->setObjectName("mainSplitter");
    whole->addWidget(upper);
    whole->addWidget(lower);
    whole->setStretchFactor(0, 1);
    whole->setChildrenCollapsible(false);
    whole->setSizes({600, 220});
    auto* frame = new QWidget(this);
    auto* margins = new QVBoxLayout(frame);
    margins->setContentsMargins(6, 6, 6, 0);
    margins->addWidget(whole);
    setCentralWidget(frame);
    statusBar()->setObjectName("statusBar");

    const QScreen* screen = QApplication::primaryScreen();
    resize(QSize(1360, 860).boundedTo(screen ? screen->availableSize() * 0.98 : QSize(1360, 860)));
}

void MainWindow::build_actions()
{
    QToolBar* bar = addToolBar(tr("Tools"));
    bar->setObjectName("toolBar");
    bar->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    bar->setMovable(false);
    std::map<std::string, QMenu*> menus;
    for (const ActionRow& row : action_rows) {
        QMenu*& menu = menus[row.menu];
        if (!menu) {
            menu = menuBar()->addMenu(tr(row.menu));
            menu->setObjectName(QStringLiteral("menu_") + QString::fromLatin1(row.menu).remove(u'&'));
        }
        QAction* action = menu->addAction(tr(row.text));
        action->setObjectName(row.id);
        action->setToolTip(tr(row.tip));
        action->setStatusTip(tr(row.tip));
        action->setShortcut(QKeySequence(QString::fromLatin1(row.shortcut)));
        if (*row.icon)
            action->setIcon(Lodex::LQPixmapLib::icon(row.icon));
        if (row.run)
            connect(action, &QAction::triggered, this, row.run);
        if (row.in_tool_bar)
            bar->addAction(action);
        actions_[row.id] = action;
    }
    connect(actions_.at("quit"), &QAction::triggered, this, &QWidget::close);
    actions_.at("destroy")->setShortcutContext(Qt::WidgetShortcut); // elsewhere the key deletes text
    for (const char* id : {"mergeSections", "report", "export", "destroy"})
        grids_->addAction(actions_.at(id));
}

bool MainWindow::run(const QString& text, const QString& source)
{
    const auto results = Interpreter::instance().run(text.toStdString(), {.source = source.toStdString()});
    for (const StatementResult& result : results) {
        if (!result.answer.empty())
            log_->add_answer(QString::fromStdString(result.answer));
    }
    const bool done =
        std::ranges::all_of(results, [](const auto& result) { return result.status == StatementStatus::Done; });
    if (done) {
        double seconds = 0;
        for (const StatementResult& result : results)
            seconds += result.seconds;
        statusBar()->showMessage(tr("Done in %1 s").arg(seconds, 0, 'f', 2), status_time);
    }
    return done;
}

bool MainWindow::import_files(const QStringList& paths)
{
    qsizetype failed = 0;
    for (const QString& path : paths) {
        const QString file = quoted_path(path);
        if (file.isEmpty() || !run(QStringLiteral("lodex import file %1 name %2").arg(file, name_for_import(path))))
            ++failed;
    }
    if (failed > 0)
        statusBar()->showMessage(tr("%1 of %2 files could not be imported").arg(failed).arg(paths.size()), status_time);
    return failed == 0;
}

bool MainWindow::run_script(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        Logger::log(LogLevel::Fatal, to_cstring(tr("%1: %2").arg(path, file.errorString())));
        return false;
    }
    const QByteArray text = file.readAll();
    log_->add_command(tr("script %1").arg(path));
    return run(QString::fromUtf8(text), path);
}

void MainWindow::select_grid(CornerPointGrid* grid)
{
    section_->set_grid(grid);
    for (const ActionRow& row : action_rows) {
        if (row.needs_grid)
            actions_.at(row.id)->setEnabled(grid);
    }
}

void MainWindow::show_problem(const QString& text)
{
    tabs_->setCurrentWidget(log_);
    statusBar()->showMessage(text, status_time);
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
    const CornerPointGrid* grid = grids_->selected();
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

void MainWindow::open_merge_dialog()
{
    const CornerPointGrid* grid = grids_->selected();
    if (!grid)
        return;
    SelectedGrid stub(grid->name());
    const bool fresh =
        !merge_dialog_ || !merge_shell_ || merge_shell_->widget() == nullptr || merge_shell_->widget()->isHidden();
    if (fresh) {
        merge_dialog_ = new Kelvane::LQSGSectionMergeDialog; // goes when its window closes
        merge_shell_ = merge_dialog_->build_shell();
    }
    merge_dialog_->init(&stub);
    if (fresh)
        merge_dialog_->setNewGridName(to_qstring(grid->name()) + QStringLiteral("_coarse"));
    merge_shell_->show();
    if (fresh)
        place_beside_section(*merge_shell_->widget());
}

void MainWindow::place_beside_section(QWidget& window)
{
    // What is chosen in the dialog shows in the section: beside this window where there is room, else over the list of
    // grids.
    const QRect room = screen()->availableGeometry(), own = frameGeometry();
    const QSize size = window.frameGeometry().size();
    const QPoint section = section_->mapToGlobal(QPoint(0, 0));
    int x = std::max(room.left(), section.x() - size.width());
    if (own.right() + size.width() <= room.right())
        x = own.right() + 1;
    else if (own.left() - size.width() >= room.left())
        x = own.left() - size.width();
    const int lowest = std::max(room.top(), room.bottom() - size.height());
    window.move(x, std::clamp(section.y(), room.top(), lowest));
}

void MainWindow::show_report()
{
    const CornerPointGrid* grid = grids_->selected();
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

void MainWindow::ask_destroy()
{
    const CornerPointGrid* grid = grids_->selected();
    if (!grid)
        return;
    const QString name = to_qstring(grid->name());
    QMessageBox box(QMessageBox::Question, tr("Destroy"),
                    tr("Destroy the grid \"%1\" with its properties and regions?").arg(name), QMessageBox::NoButton,
                    this);
    box.setObjectName("destroyQuestion");
    box.setTextFormat(Qt::PlainText);
    QPushButton* destroy = box.addButton(tr("Destroy"), QMessageBox::AcceptRole);
    QPushButton* keep = box.addButton(tr("Keep"), QMessageBox::RejectRole);
    destroy->setObjectName("destroyYes");
    keep->setObjectName("destroyNo");
    box.setDefaultButton(keep);
    box.setEscapeButton(keep);
    box.exec();
    if (box.clickedButton() == destroy)
        run(QStringLiteral("lodex destroy objects %1").arg(object_word(name)));
}

void MainWindow::show_help()
{
    Lodex::XMHelpManager::instance()->display(to_cstring(help_key(help_url(help_start_page()))));
}

void MainWindow::show_about()
{
    QMessageBox::about(
        this, tr("About"),
        tr("<h3>lodex workbench %1</h3><p>Coarsens and refines stratigraphic grids: merges cell sections, "
           "carries properties and regions over, and keeps a journal that makes the same models again.</p>")
            .arg(QStringLiteral(LODEX_VERSION)));
}

void MainWindow::closeEvent(QCloseEvent* event)
{
    QMainWindow::closeEvent(event);
    if (event->isAccepted())
        emit closed();
}

void MainWindow::dragEnterEvent(QDragEnterEvent* event)
{
    if (!local_files(event->mimeData()).isEmpty())
        event->acceptProposedAction();
}

void MainWindow::dropEvent(QDropEvent* event)
{
    const QStringList paths = local_files(event->mimeData());
    if (paths.isEmpty())
        return;
    event->acceptProposedAction();
    // The program that the files come from waits until this returns.
    QMetaObject::invokeMethod(
        this, [this, paths] { import_files(paths); }, Qt::QueuedConnection);
}

} // namespace lodex
