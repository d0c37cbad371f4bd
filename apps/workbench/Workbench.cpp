#include "Workbench.h"

#include "MainWindow.h"
#include "Translations.h"
#include "lodex/interpreter/Interpreter.h"
#include "lodex/project/Project.h"
#include "lodex/qtools/BusyState.h"

#include <QApplication>
#include <QFileInfo>
#include <QSettings>
#include <QStatusBar>

#include <utility>

namespace lodex {

Workbench::Workbench(Options options)
    : options_(std::move(options)), autosave_(options_.recovery, options_.times, this)
{
    make_window();
    window_->set_asks(options_.asks);
}

Workbench::~Workbench() = default;

void Workbench::make_window()
{
    window_ = std::make_unique<MainWindow>(nullptr, MainWindow::Memory::Settings);
    window_->set_autosave(&autosave_);
    connect(window_.get(), &MainWindow::closed, this, &Workbench::closed);
    connect(window_.get(), &MainWindow::recovery_declined, this, &Workbench::open_usual);
    // The menu that asks for it belongs to the window that goes.
    connect(
        window_.get(), &MainWindow::language_wanted, this,
        [this](const QString& language) { change_language(language); }, Qt::QueuedConnection);
}

void Workbench::start()
{
    const bool something_left = window_->offer_recovery();
    if (!options_.files.isEmpty())
        window_->import_files(options_.files);
    else if (!something_left)
        open_usual();
}

void Workbench::open_usual()
{
    if (!options_.files.isEmpty() || !window_->tree()->grids().empty())
        return;
    const auto settings = MainWindow::user_settings();
    const QString last = settings->value("lastProject").toString();
    if (MainWindow::reopens_last(*settings) && !last.isEmpty() && QFileInfo(last).isFile()) {
        window_->open_project_file(last);
        if (!window_->tree()->grids().empty())
            return;
    }
    if (window_->run(QStringLiteral("lodex create example name Example"))) {
        forget_project(); // nobody needs to save what every start makes anew
        window_->follow_project();
    }
}

bool Workbench::change_language(const QString& language)
{
    if (BusyState::instance().busy() || Interpreter::instance().busy() || QApplication::activeModalWidget()) {
        window_->statusBar()->showMessage(MainWindow::tr("The language changes when nothing else is going on."));
        return false;
    }
    if (language == current_language() || !use_language(language))
        return false;
    const MainWindow::Legacy legacy = window_->legacy();
    const QList<KeptSession> offered = window_->offered_sessions();
    for (QWidget* other : QApplication::topLevelWidgets()) {
        if (other != window_.get() && other->isVisible())
            other->close();
    }
    window_->disconnect(this);
    window_.reset(); // before the new one: both would follow the journal
    make_window();
    window_->take_over(legacy);
    window_->show_offer(offered);
    window_->show();
    return true;
}

} // namespace lodex
