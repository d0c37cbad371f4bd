// The main window and the project: new, open, save, what is asked before something is lost, recovery.

#include "MainWindow.h"

#include "Autosave.h"
#include "ConsoleEdit.h"
#include "DisplayPanel.h"
#include "LogPanel.h"
#include "RecoveryBar.h"
#include "lodex/interpreter/Interpreter.h"
#include "lodex/project/Project.h"
#include "lodex/project/ProjectFile.h"
#include "lodex/qtools/BusyState.h"

#include <Lodex/geobase/GeobaseLib.h>
#include <Lodex/qtools/QtText.h>
#include <Lodex/utils/Logger.h>

#include <QAbstractButton>
#include <QAction>
#include <QFileDialog>
#include <QFileInfo>
#include <QMenu>
#include <QMessageBox>
#include <QProgressBar>
#include <QSettings>
#include <QStatusBar>

#include <algorithm>

namespace lodex {

namespace {

constexpr int status_time = 8000; // ms
constexpr qsizetype most_recent = 10;

QString project_file()
{
    return QString::fromStdString(project_path().string());
}

QString project_filter()
{
    return MainWindow::tr("Projects (*.lodex-project);;All files (*)");
}

} // namespace

bool is_project_file(const QString& path)
{
    return ProjectFile::recognises(path.toStdString());
}

bool MainWindow::unsaved() const
{
    return recovered_ || project_changed();
}

void MainWindow::follow_project()
{
    const QString path = project_file();
    if (path != shown_path_) {
        shown_path_ = path;
        if (!path.isEmpty()) {
            recovered_ = false;
            add_recent_project(path);
        }
    }
    if (autosave_ && autosave_->has_copy() && !unsaved())
        autosave_->clear(); // the file holds all of it
    const QString name = !path.isEmpty() ? QFileInfo(path).fileName() : recovered_ ? tr("Recovered") : tr("Untitled");
    setWindowTitle(tr("%1[*] - lodex workbench").arg(name));
    setWindowModified(unsaved());
}

void MainWindow::ask_unsaved(std::function<void()> go_on)
{
    if (BusyState::instance().busy() || Interpreter::instance().busy()) {
        statusBar()->showMessage(tr("A command is running; cancel it first."), status_time);
        return;
    }
    if (!asks_ || !unsaved()) {
        go_on();
        return;
    }
    if (question_) { // asked already
        question_->raise();
        question_->activateWindow();
        return;
    }
    auto* box = new QMessageBox(QMessageBox::Warning, tr("Unsaved changes"),
                                shown_path_.isEmpty()
                                    ? tr("Save what was done?")
                                    : tr("Save the changes to \"%1\"?").arg(QFileInfo(shown_path_).fileName()),
                                QMessageBox::Save | QMessageBox::Discard | QMessageBox::Cancel, this);
    question_ = box;
    box->setObjectName("unsavedQuestion");
    box->setInformativeText(tr("What is not saved is lost."));
    box->setTextFormat(Qt::PlainText);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setDefaultButton(QMessageBox::Save);
    box->setEscapeButton(QMessageBox::Cancel);
    box->button(QMessageBox::Save)->setObjectName("unsavedSave");
    box->button(QMessageBox::Discard)->setObjectName("unsavedDiscard");
    box->button(QMessageBox::Cancel)->setObjectName("unsavedCancel");
    connect(box, &QMessageBox::buttonClicked, this, [this, box, go_on = std::move(go_on)](QAbstractButton* button) {
        const QMessageBox::StandardButton answer = box->standardButton(button);
        // The question is off the screen before a file dialog or the next question comes.
        QMetaObject::invokeMethod(
            this,
            [this, answer, go_on] {
                if (answer == QMessageBox::Discard || (answer == QMessageBox::Save && save_project_file()))
                    go_on();
            },
            Qt::QueuedConnection);
    });
    box->open();
}

void MainWindow::new_project()
{
    ask_unsaved([this] {
        Lodex::GeobaseLib::instance()->clear();
        Interpreter::instance().clear_journal();
        forget_project();
        recovered_ = false;
        if (autosave_)
            autosave_->clear();
        follow_project();
        statusBar()->showMessage(tr("A new project, without grids"), status_time);
    });
}

void MainWindow::ask_open_project()
{
    const QString path = QFileDialog::getOpenFileName(this, tr("Open a project"),
                                                      QFileInfo(shown_path_).absolutePath(), project_filter());
    if (!path.isEmpty())
        open_project_file(path);
}

void MainWindow::open_project_file(const QString& path)
{
    ask_unsaved([this, path] { load_project(path); });
}

void MainWindow::load_project(const QString& path)
{
    const QString file = quoted_path(path);
    const bool was_recovered = recovered_;
    recovered_ = false;
    if (!file.isEmpty() && run(QStringLiteral("lodex open project %1").arg(file)))
        add_recent_project(path);
    else
        recovered_ = was_recovered;
    follow_project();
}

bool MainWindow::save_project_file()
{
    if (shown_path_.isEmpty())
        return save_project_as();
    const QString file = quoted_path(shown_path_);
    const bool saved = !file.isEmpty() && run(QStringLiteral("lodex save project %1").arg(file));
    if (saved)
        statusBar()->showMessage(tr("Saved to %1").arg(shown_path_), status_time);
    return saved;
}

bool MainWindow::save_project_as()
{
    QString proposal = shown_path_.isEmpty() ? recovered_project_ : shown_path_;
    if (proposal.isEmpty())
        proposal = QStringLiteral("project.lodex-project");
    const QString path = QFileDialog::getSaveFileName(this, tr("Save the project"), proposal, project_filter());
    const QString file = path.isEmpty() ? QString() : quoted_path(path);
    if (file.isEmpty() || !run(QStringLiteral("lodex save project %1").arg(file)))
        return false;
    recovered_ = false;
    follow_project();
    statusBar()->showMessage(tr("Saved to %1").arg(path), status_time);
    return true;
}

void MainWindow::add_recent_project(const QString& path)
{
    const QString whole = QFileInfo(path).absoluteFilePath();
    recent_projects_.removeAll(whole);
    recent_projects_.prepend(whole);
    recent_projects_ = recent_projects_.mid(0, most_recent);
    if (settings_)
        settings_->setValue("recentProjects", recent_projects_);
}

void MainWindow::build_projects_menu(QMenu* menu)
{
    QMenu* recent = menu->addMenu(tr("Recent Projec&ts"));
    recent->setObjectName("menu_RecentProjects");
    recent->setToolTipsVisible(true);
    connect(recent, &QMenu::aboutToShow, this, [this, recent] {
        recent->clear();
        for (const QString& path : recent_projects_) {
            QString text = QFileInfo(path).fileName();
            QAction* action = recent->addAction(text.replace(u'&', QStringLiteral("&&")));
            action->setToolTip(path);
            action->setStatusTip(path);
            connect(action, &QAction::triggered, this, [this, path] { open_project_file(path); });
        }
        if (recent_projects_.isEmpty())
            recent->addAction(tr("No projects yet"))->setEnabled(false);
        recent->addSeparator();
        QAction* reopen = recent->addAction(tr("&Open the Last One at Start"));
        reopen->setObjectName("reopenLast");
        reopen->setToolTip(tr("Goes on with the last project when the workbench starts without a file"));
        reopen->setCheckable(true);
        reopen->setEnabled(settings_ != nullptr);
        reopen->setChecked(settings_ && reopens_last(*settings_));
        connect(reopen, &QAction::toggled, this, [this](bool on) { settings_->setValue("reopenLast", on); });
    });
}

bool MainWindow::reopens_last(const QSettings& settings)
{
    return settings.value("reopenLast", true).toBool();
}

void MainWindow::set_autosave(Autosave* autosave)
{
    autosave_ = autosave;
    if (!autosave)
        return;
    connect(autosave, &Autosave::progress, this, [this](double done) {
        keeping_bar_->setValue(static_cast<int>(done * keeping_bar_->maximum()));
        keeping_->show();
    });
    connect(autosave, &Autosave::finished, keeping_, &QWidget::hide);
}

void MainWindow::clear_recovery()
{
    if (autosave_)
        autosave_->clear();
}

void MainWindow::build_recovery_bar()
{
    connect(recovery_, &RecoveryBar::recover_wanted, this,
            [this](const KeptSession& session) { ask_unsaved([this, name = session.name] { recover(name); }); });
    connect(recovery_, &RecoveryBar::discard_wanted, this, [this](const KeptSession& session) {
        if (autosave_)
            autosave_->discard(session.name);
    });
    connect(recovery_, &RecoveryBar::later_wanted, this, [this](const KeptSession& session) {
        if (autosave_)
            autosave_->release(session.name);
    });
    connect(recovery_, &RecoveryBar::nothing_left, this, &MainWindow::recovery_declined);
}

bool MainWindow::offer_recovery()
{
    if (!autosave_)
        return false;
    recovery_->offer(autosave_->left_behind());
    return !recovery_->waiting().isEmpty();
}

QList<KeptSession> MainWindow::offered_sessions() const
{
    return recovery_->waiting();
}

void MainWindow::show_offer(const QList<KeptSession>& sessions)
{
    recovery_->offer(sessions);
}

void MainWindow::recover(const QString& name)
{
    const QList<KeptSession>& waiting = recovery_->waiting();
    const auto session = std::ranges::find(waiting, name, &KeptSession::name);
    if (!autosave_ || session == waiting.end())
        return;
    const QString file = quoted_path(session->file), project = session->project;
    if (file.isEmpty())
        return;
    const auto results = Interpreter::instance().run(QStringLiteral("lodex open project %1").arg(file).toStdString());
    if (results.empty() || results.front().status != StatementStatus::Done)
        return; // the reason stands in the log; the copy stays
    // The copy is no file of the user's: saving asks where to, and offers the file that was worked on.
    forget_project();
    recovered_ = true;
    recovered_project_ = project;
    autosave_->adopt(name);
    recovery_->remove(name);
    follow_project();
    statusBar()->showMessage(tr("Recovered. Save the project to keep it."), status_time);
}

void MainWindow::keep_place(const CameraPlace& place)
{
    place_ = place;
    QMetaObject::invokeMethod(
        this,
        [this] {
            if (place_)
                camera_->set_place(*place_);
            place_.reset();
        },
        Qt::QueuedConnection);
}

MainWindow::Legacy MainWindow::legacy() const
{
    return {.cameras = cameras_part_.save(),
            .window = window_part_.save(),
            .geometry = saveGeometry(),
            .layout = saveState(layout_version),
            .commands = console_->history(),
            .recent = recent_,
            .recent_projects = recent_projects_,
            .typed = console_->text(),
            .recovered = recovered_,
            .asks = asks_,
            .recovered_project = recovered_project_,
            .messages = log_->view()->entries()};
}

void MainWindow::take_over(const Legacy& legacy)
{
    recent_ = legacy.recent;
    recent_projects_ = legacy.recent_projects;
    recovered_ = legacy.recovered;
    recovered_project_ = legacy.recovered_project;
    asks_ = legacy.asks;
    console_->set_history(legacy.commands);
    console_->setText(legacy.typed);
    log_->view()->set_entries(legacy.messages);
    restoreGeometry(legacy.geometry);
    restoreState(legacy.layout, layout_version);
    window_part_.restore(legacy.window);
    cameras_part_.restore(legacy.cameras);
    follow_project();
}

} // namespace lodex
