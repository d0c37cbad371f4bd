#include "MainWindow.h"

#include "Autosave.h"
#include "ConsoleEdit.h"
#include "DisplayPanel.h"
#include "FlowUnitProfile.h"
#include "ItemDetails.h"
#include "JournalView.h"
#include "LogPanel.h"
#include "LogView.h"
#include "RecoveryBar.h"
#include "SectionPanel.h"
#include "plots/ComparisonWindow.h"
#include "plots/NumbersWindow.h"
#include "lodex/interpreter/Interpreter.h"
#include "lodex/interpreter/StatementBinder.h"
#include "lodex/qtools/BusyState.h"
#include "lodex/qtools/MainWindowRegistry.h"
#include "lodex/utils/Names.h"
#include "lodex/volumes/CornerPointGrid.h"

#include <Lodex/geobase/GeobaseLib.h>
#include <Lodex/interpreter/ICommandStub.h>
#include <Lodex/qtools/LQPixmapLib.h>
#include <Lodex/qtools/QtText.h>
#include <Lodex/utils/COSUri.h>

#include <QApplication>
#include <QCloseEvent>
#include <QDockWidget>
#include <QDropEvent>
#include <QFile>
#include <QFileInfo>
#include <QFontDatabase>
#include <QLabel>
#include <QMenu>
#include <QMimeData>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QSettings>
#include <QStatusBar>
#include <QTabWidget>
#include <QUrl>
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
constexpr qsizetype most_recent = 10;
constexpr qsizetype most_history = 200;

/// What the user had selected when a dialog was asked for.
class SelectedObject : public Lodex::ICommandStub {
public:
    explicit SelectedObject(const TreeItem& item) : item_(item) {}

    [[nodiscard]] bool get(const Lodex::CString& key, Lodex::CopyCString& value, int index) const override
    {
        if (index != 0 || item_.kind == TreeItem::Kind::None)
            return false;
        const Lodex::CString grid = to_cstring(item_.grid);
        if (key == Lodex::CString("sgrid")) {
            value = grid;
            return true;
        }
        if (key == Lodex::CString("property") && item_.kind == TreeItem::Kind::Property) {
            value = Lodex::COSUri("SGrid", grid, "property", to_cstring(item_.name)).text();
            return true;
        }
        return false;
    }

private:
    TreeItem item_;
};

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

QString object_word(const QString& name)
{
    return QString::fromStdString(quoted(name.toStdString()));
}

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

QString free_name(const QString& text)
{
    constexpr std::array<std::string_view, 5> keywords{"file", "name", "sgrid", "copy_properties", "copy_regions"};
    const std::string base = mend_object_name(text.toStdString(), keywords);
    std::string name = base;
    for (int n = 2; Lodex::GeobaseLib::instance()->is_name_used(name); ++n)
        name = base + "_" + std::to_string(n);
    return QString::fromStdString(name);
}

QString name_for_import(const QString& path)
{
    return free_name(QFileInfo(path).completeBaseName());
}

std::unique_ptr<QSettings> MainWindow::user_settings()
{
    return std::make_unique<QSettings>(QSettings::IniFormat, QSettings::UserScope, QStringLiteral("lodex"),
                                       QStringLiteral("workbench"));
}

MainWindow::MainWindow(QWidget* parent, Memory memory)
    : QMainWindow(parent), settings_(memory == Memory::Settings ? user_settings() : nullptr),
      tree_(new ObjectTree(this)), details_(new ItemDetails(this)), cell_(new QPlainTextEdit(this)),
      camera_(new CameraView(this)), display_(new DisplayPanel(*camera_, this)), section_(new SectionPanel(this)),
      views_(new QTabWidget(this)), tabs_(new QTabWidget(this)), log_(new LogPanel(this)),
      journal_(new JournalView(this)), console_(new ConsoleEdit(this)), console_hint_(new QLabel(this)),
      tool_hint_(new QLabel(this)), offer_(new QPushButton(this)), recovery_(new RecoveryBar(this)),
      keeping_(new QWidget(this)), keeping_bar_(new QProgressBar(keeping_))
{
    setObjectName("mainWindow");
    setWindowIcon(Lodex::LQPixmapLib::icon("lodex"));
    setAcceptDrops(true);
    build_layout();
    build_status_bar();
    build_actions();
    set_main_window(this);
    connect_parts();
    select_grid(tree_->selected());
    select_item();
    first_layout_ = saveState(layout_version);
    if (settings_)
        read_settings();
    follow_project();
}

MainWindow::~MainWindow()
{
    // The parts go after this window's own members.
    tree_->disconnect(this);
    log_->view()->disconnect(this);
    journal_->disconnect(this);
    camera_->disconnect(this);
    display_->set_grid(nullptr);
    delete display_; // follows the camera
}

void MainWindow::build_layout()
{
    camera_->setObjectName("camera");
    camera_->setMinimumSize(240, 160);
    views_->setObjectName("views");
    views_->setDocumentMode(true);
    views_->addTab(camera_, tr("Camera"));
    views_->addTab(section_, tr("Section"));
    views_->setTabToolTip(0, tr("The selected grid in 3D"));
    views_->setTabToolTip(1, tr("A vertical section through the selected grid"));
    if (!camera_->can_draw())
        views_->setCurrentWidget(section_);
    auto* middle = new QWidget(this);
    auto* middle_column = new QVBoxLayout(middle);
    middle_column->setContentsMargins(0, 0, 0, 0);
    middle_column->addWidget(recovery_);
    middle_column->addWidget(views_, 1);
    setCentralWidget(middle);

    cell_->setObjectName("cellInfo");
    cell_->setAccessibleName(tr("Picked cell"));
    cell_->setReadOnly(true);
    cell_->setPlaceholderText(tr("A click on a cell in the camera shows its numbers here."));
    cell_->setToolTip(tr("The cell that was picked last"));

    tabs_->setObjectName("lowerTabs");
    tabs_->setDocumentMode(true);
    tabs_->addTab(log_, tr("Messages"));
    tabs_->addTab(journal_, tr("Journal"));
    tabs_->setTabToolTip(0, tr("What the program has to say, commands and their answers"));
    tabs_->setTabToolTip(1, tr("The statements that made the models as they are"));
    auto* lower = new QWidget(this);
    auto* line = new QHBoxLayout;
    auto* label = new QLabel(tr("C&ommand"), lower);
    label->setBuddy(console_);
    line->addWidget(label);
    line->addWidget(console_, 1);
    console_hint_->setObjectName("consoleHint");
    console_hint_->setTextFormat(Qt::PlainText);
    console_hint_->setTextInteractionFlags(Qt::TextSelectableByMouse);
    console_hint_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
    console_hint_->hide();
    auto* column = new QVBoxLayout(lower);
    column->setContentsMargins(4, 0, 4, 0);
    column->addWidget(tabs_, 1);
    column->addLayout(line);
    column->addWidget(console_hint_);

    auto* scroll = new QScrollArea(this);
    scroll->setObjectName("displayScroll");
    scroll->setWidget(display_);
    scroll->setWidgetResizable(true);
    scroll->setFrameShape(QFrame::NoFrame);
    scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    scroll->setMinimumWidth(display_->minimumSizeHint().width() + scroll->verticalScrollBar()->sizeHint().width());

    const auto add_dock = [this](const char* name, const QString& title, QWidget* widget, Qt::DockWidgetArea area) {
        auto* dock = new QDockWidget(title, this);
        dock->setObjectName(name);
        dock->setWidget(widget);
        addDockWidget(area, dock);
        return dock;
    };
    setCorner(Qt::BottomLeftCorner, Qt::BottomDockWidgetArea);
    setCorner(Qt::BottomRightCorner, Qt::RightDockWidgetArea);
    QDockWidget* objects = add_dock("objectsDock", tr("Objects"), tree_, Qt::LeftDockWidgetArea);
    QDockWidget* details = add_dock("detailsDock", tr("Details"), details_, Qt::LeftDockWidgetArea);
    QDockWidget* cell = add_dock("cellDock", tr("Cell"), cell_, Qt::LeftDockWidgetArea);
    QDockWidget* display = add_dock("displayDock", tr("Display"), scroll, Qt::RightDockWidgetArea);
    QDockWidget* lines = add_dock("linesDock", tr("Messages and commands"), lower, Qt::BottomDockWidgetArea);
    tabifyDockWidget(details, cell);
    details->raise();

    const QScreen* screen = QApplication::primaryScreen();
    resize(QSize(1360, 860).boundedTo(screen ? screen->availableSize() * 0.98 : QSize(1360, 860)));
    resizeDocks({objects, display}, {310, 280}, Qt::Horizontal);
    resizeDocks({objects, details}, {360, 220}, Qt::Vertical);
    resizeDocks({lines}, {210}, Qt::Vertical);
}

void MainWindow::build_status_bar()
{
    statusBar()->setObjectName("statusBar");
    tool_hint_->setObjectName("toolHint");
    QFont bold = font();
    bold.setBold(true);
    tool_hint_->setFont(bold);
    tool_hint_->hide();
    offer_->setObjectName("compareOffer");
    offer_->setToolTip(tr("Opens the comparison of the fine property with the coarse one"));
    offer_->setAutoDefault(false);
    offer_->hide();
    keeping_->setObjectName("keepingCopy");
    auto* row = new QHBoxLayout(keeping_);
    row->setContentsMargins(0, 0, 0, 0);
    row->addWidget(new QLabel(tr("Keeping a copy for recovery"), keeping_));
    keeping_bar_->setObjectName("keepingProgress");
    keeping_bar_->setRange(0, 1000);
    keeping_bar_->setTextVisible(false);
    keeping_bar_->setFixedWidth(120);
    row->addWidget(keeping_bar_);
    auto* cancel = new QPushButton(tr("Cancel"), keeping_);
    cancel->setObjectName("keepingCancel");
    cancel->setToolTip(tr("Stops this copy; it is tried again later"));
    cancel->setAutoDefault(false);
    row->addWidget(cancel);
    keeping_->hide();
    connect(cancel, &QPushButton::clicked, this, [this] {
        if (autosave_)
            autosave_->stop();
    });
    statusBar()->addPermanentWidget(tool_hint_);
    statusBar()->addPermanentWidget(offer_);
    statusBar()->addPermanentWidget(keeping_);
}

void MainWindow::connect_parts()
{
    connect(tree_, &ObjectTree::grid_selected, this, &MainWindow::select_grid);
    connect(tree_, &ObjectTree::item_selected, this, &MainWindow::select_item);
    connect(tree_, &QTreeWidget::itemActivated, this, &MainWindow::show_selected);
    connect(tree_, &QTreeWidget::customContextMenuRequested, this, [this](const QPoint& place) {
        if (tree_->item().kind != TreeItem::Kind::None)
            context_menu()->exec(tree_->viewport()->mapToGlobal(place));
    });
    connect(log_->view(), &LogView::problem, this, &MainWindow::show_problem);
    connect(journal_, &JournalView::statement_added, this, &MainWindow::offer_comparison);
    connect(journal_, &JournalView::statement_added, this, &MainWindow::follow_project);
    build_recovery_bar();
    connect(console_, &ConsoleEdit::submitted, this, [this](const QString& text) {
        log_->view()->add_command(text);
        run(text);
    });
    connect(console_, &ConsoleEdit::hint_changed, this, [this](const QString& hint) {
        console_hint_->setText(hint);
        console_hint_->setToolTip(hint);
        console_hint_->setVisible(!hint.isEmpty());
    });
    connect(camera_, &CameraView::hint_changed, this, [this](const QString& hint) {
        tool_hint_->setText(hint.isEmpty() ? QString() : tr("%1 (Esc ends this)").arg(hint));
        tool_hint_->setVisible(!hint.isEmpty());
        select_item();
        if (!hint.isEmpty() && camera_->can_draw())
            views_->setCurrentWidget(camera_);
    });
    connect(camera_, &CameraView::cell_picked, this, [this](const CellInfo& cell) {
        cell_->setPlainText(cell.text());
        if (auto* dock = findChild<QDockWidget*>("cellDock"))
            dock->raise();
    });
    connect(display_, &DisplayPanel::told, this,
            [this](const QString& text) { statusBar()->showMessage(text, status_time); });
    connect(offer_, &QPushButton::clicked, this, [this] {
        offer_->hide();
        ComparisonWindow* window = open_comparison();
        window->choose(offered_.fine, offered_.fine_property, offered_.coarse, offered_.coarse_property,
                       offered_.mapper);
        window->compare();
    });
}

bool MainWindow::run(const QString& text, const QString& source)
{
    const auto results = Interpreter::instance().run(text.toStdString(), {.source = source.toStdString()});
    for (const StatementResult& result : results) {
        if (!result.answer.empty())
            log_->view()->add_answer(QString::fromStdString(result.answer));
    }
    const bool done =
        std::ranges::all_of(results, [](const auto& result) { return result.status == StatementStatus::Done; });
    if (done) {
        double seconds = 0;
        for (const StatementResult& result : results)
            seconds += result.seconds;
        statusBar()->showMessage(tr("Done in %1 s").arg(seconds, 0, 'f', 2), status_time);
    }
    follow_project();
    return done;
}

bool MainWindow::import_files(const QStringList& paths)
{
    qsizetype failed = 0;
    for (const QString& path : paths) {
        if (is_project_file(path)) {
            open_project_file(path); // what follows is added to it
            continue;
        }
        const QString file = quoted_path(path);
        if (file.isEmpty() || !run(QStringLiteral("lodex import file %1 name %2").arg(file, name_for_import(path))))
            ++failed;
        else
            add_recent(path);
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
    log_->view()->add_command(tr("script %1").arg(path));
    return run(QString::fromUtf8(text), path);
}

QWidget* MainWindow::open_dialog(const QString& id)
{
    const auto& rows = dialog_rows();
    const auto row = std::ranges::find_if(rows, [&](const DialogRow& one) { return id == QLatin1String(one.id); });
    if (row == rows.end())
        return nullptr;
    auto& opener = openers_[row->id];
    if (!opener)
        opener = row->opener();
    const TreeItem item = tree_->item();
    SelectedObject stub(item);
    const QString name =
        item.kind == TreeItem::Kind::None || !*row->suffix ? QString() : item.grid + QLatin1String(row->suffix);
    const auto [window, fresh] = opener->open(stub, name);
    if (fresh && window)
        place_beside_view(*window);
    if (window)
        FlowUnitProfile::show_beside(*window); // comes back when it was closed on its own
    return window;
}

NumbersWindow* MainWindow::open_numbers()
{
    CornerPointGrid* const grid = tree_->selected();
    if (!grid)
        return nullptr;
    const TreeItem item = tree_->item();
    // Else what the camera shows.
    const QString shown = QString::fromStdString(camera_->display(grid).colour.property);
    auto* window = new NumbersWindow(*grid, item.kind == TreeItem::Kind::Property ? item.name : shown, this);
    if (item.kind == TreeItem::Kind::Region)
        window->choose_region(item.name);
    window->show();
    return window;
}

ComparisonWindow* MainWindow::open_comparison()
{
    const bool fresh = !comparison_ || comparison_->isHidden();
    if (fresh) {
        comparison_ = new ComparisonWindow(this); // goes when it closes
        connect(comparison_, &ComparisonWindow::difference_requested, this,
                [this](const QString& statement, const QString& grid, const QString& property) {
                    if (run(statement))
                        show_property(grid, property);
                });
    }
    // What was made from what tells which grid is the fine one.
    const CornerPointGrid* const selected = tree_->selected();
    const auto source_of = [this](const CornerPointGrid& coarse) -> const CornerPointGrid* {
        for (const DerivationRecord& record : coarse.header().records) {
            for (const CornerPointGrid* grid : tree_->grids()) {
                if (grid->header().id == record.source_id && grid->header().cells() > coarse.header().cells())
                    return grid;
            }
        }
        return nullptr;
    };
    const CornerPointGrid *fine = selected ? source_of(*selected) : nullptr, *coarse = fine ? selected : nullptr;
    for (const CornerPointGrid* grid : tree_->grids()) {
        if (selected && !coarse && source_of(*grid) == selected) {
            fine = selected;
            coarse = grid;
        }
    }
    const TreeItem item = tree_->item();
    const QString property = item.kind == TreeItem::Kind::Property ? item.name : QString();
    comparison_->choose(fine ? to_qstring(fine->name()) : QString(), property,
                        coarse ? to_qstring(coarse->name()) : QString(), property);
    comparison_->show();
    comparison_->raise();
    comparison_->activateWindow();
    return comparison_;
}

void MainWindow::show_property(const QString& grid, const QString& property)
{
    tree_->select(TreeItem{.kind = TreeItem::Kind::Property, .grid = grid, .name = property});
    display_->colour_by(ColourBy::of_property(property.toStdString()));
    section_->colour_by(ColourBy::of_property(property.toStdString()));
}

void MainWindow::select_grid(CornerPointGrid* grid)
{
    section_->set_grid(grid);
    display_->set_grid(grid);
    if (!grid)
        cell_->clear();
}

void MainWindow::select_item()
{
    const TreeItem item = tree_->item();
    details_->show_item(item);
    const bool any = item.kind != TreeItem::Kind::None && tree_->selected();
    const bool single = any && (item.kind == TreeItem::Kind::Grid || !item.name.isEmpty());
    for (const ActionRow& row : action_rows()) {
        bool enabled = true;
        switch (row.needs) {
        case Needs::Nothing: break;
        case Needs::Grid: enabled = any; break;
        case Needs::Item: enabled = single; break;
        case Needs::Named: enabled = !renamable().kind.isEmpty(); break;
        case Needs::Coarsening:
            enabled = any && item.kind == TreeItem::Kind::Activity && !item.name.contains(QStringLiteral(" -> "));
            break;
        case Needs::Tool: enabled = !camera_->hint().isEmpty(); break;
        }
        actions_.at(row.id)->setEnabled(enabled);
    }
}

void MainWindow::show_problem(const QString& text)
{
    tabs_->setCurrentWidget(log_);
    statusBar()->showMessage(text, status_time);
}

/// A property that was just carried to a coarse grid is worth a look beside the fine one.
void MainWindow::offer_comparison(const QString& statement)
{
    struct Carrier {
        std::string_view verb, fine, coarse;
    };
    static constexpr std::array<Carrier, 3> carriers{{{"upscale_porosity", "fine_porosity", "coarse_porosity"},
                                                      {"upscale_permeability", "fine_Perm_I", "coarse_Perm_I"},
                                                      {"upscale_indicator", "fine_indicator", "coarse_indicator"}}};
    if (!statement.contains(QStringLiteral("upscale_")))
        return;
    try {
        for (const Statement& one : parse_statements(statement.toStdString())) {
            const Call call = bind_statement(one);
            const auto carrier = std::ranges::find(carriers, call.verb().name, &Carrier::verb);
            if (carrier == carriers.end() || !call.object())
                continue;
            const auto text = [&call](std::string_view keyword) { return QString::fromStdString(call.text(keyword)); };
            offered_ = {to_qstring(call.object()->name()), text(carrier->fine), text("Coarse"), text(carrier->coarse),
                        text("mapper")};
            offer_->setText(tr("Compare %1 of %2 with %3 of %4")
                                .arg(offered_.fine_property, offered_.fine, offered_.coarse_property, offered_.coarse));
            offer_->show();
        }
    } catch (const CommandError&) {
        return; // its objects have changed since: nothing to offer
    }
}

void MainWindow::add_recent(const QString& path)
{
    const QString whole = QFileInfo(path).absoluteFilePath();
    recent_.removeAll(whole);
    recent_.prepend(whole);
    recent_ = recent_.mid(0, most_recent);
    if (settings_)
        settings_->setValue("recentFiles", recent_);
}

void MainWindow::place_beside_view(QWidget& window)
{
    // What is chosen in the dialog shows in the camera: beside this window where there is room, else over the tree.
    const QRect room = screen()->availableGeometry(), own = frameGeometry();
    const QSize size = window.frameGeometry().size();
    const QPoint view = views_->mapToGlobal(QPoint(0, 0));
    int x = std::max(room.left(), view.x() - size.width());
    if (own.right() + size.width() <= room.right())
        x = own.right() + 1;
    else if (own.left() - size.width() >= room.left())
        x = own.left() - size.width();
    const int lowest = std::max(room.top(), room.bottom() - size.height());
    window.move(x, std::clamp(view.y(), room.top(), lowest));
}

void MainWindow::read_settings()
{
    recent_ = settings_->value("recentFiles").toStringList();
    recent_projects_ = settings_->value("recentProjects").toStringList();
    console_->set_history(settings_->value("commands").toStringList());
    restoreGeometry(settings_->value("geometry").toByteArray());
    restoreState(settings_->value("layout").toByteArray(), layout_version);
}

void MainWindow::write_settings()
{
    settings_->setValue("recentFiles", recent_);
    settings_->setValue("recentProjects", recent_projects_);
    settings_->setValue("lastProject", shown_path_);
    const QStringList& history = console_->history();
    settings_->setValue("commands", history.mid(std::max<qsizetype>(0, history.size() - most_history)));
    settings_->setValue("geometry", saveGeometry());
    settings_->setValue("layout", saveState(layout_version));
}

void MainWindow::closeEvent(QCloseEvent* event)
{
    if (BusyState::instance().busy() || Interpreter::instance().busy()) {
        statusBar()->showMessage(tr("A command is running; cancel it first."), status_time);
        event->ignore();
        return;
    }
    if (!closing_ && asks_ && unsaved()) {
        event->ignore();
        ask_unsaved([this] {
            closing_ = true;
            close();
            closing_ = false;
        });
        return;
    }
    if (settings_)
        write_settings();
    QMainWindow::closeEvent(event);
    if (!event->isAccepted())
        return;
    clear_recovery();
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
