#include "Autosave.h"

#include "lodex/interpreter/Interpreter.h"
#include "lodex/project/Project.h"
#include "lodex/qtools/BusyState.h"

#include <Lodex/geobase/GeobaseLib.h>
#include <Lodex/qtools/QtText.h>
#include <Lodex/utils/Logger.h>
#include <Lodex/volumes/SGrid.h>

#include <nlohmann/json.hpp>

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QKeyEvent>
#include <QLockFile>
#include <QMouseEvent>
#include <QSaveFile>
#include <QStandardPaths>

#include <algorithm>
#include <functional>

namespace lodex {

namespace {

using nlohmann::json;

constexpr qint64 events_every = 30; // ms
constexpr int looks_every = 250;    // ms
const QLatin1String about_file("about.json"), lock_ending(".lock"), session_start("session-");

json read_about(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    json about = json::parse(file.readAll().toStdString(), nullptr, false);
    return about.is_object() ? about : json();
}

QString text_in(const json& object, const char* key)
{
    return object.contains(key) && object[key].is_string() ? QString::fromStdString(object[key].get<std::string>())
                                                           : QString();
}

bool write_about(const QString& path, const QString& copy)
{
    json grids = json::array();
    for (const Lodex::GObj* object : Lodex::GeobaseLib::instance()->objects(Lodex::SGrid::static_type_id_()))
        grids.push_back(object->name().str());
    const json about{{"file", copy.toStdString()},
                     {"when", QDateTime::currentDateTimeUtc().toString(Qt::ISODate).toStdString()},
                     {"grids", grids},
                     {"project", project_path().string()}};
    QSaveFile file(path);
    return file.open(QIODevice::WriteOnly) &&
           file.write(QByteArray::fromStdString(about.dump(2, ' ', false, json::error_handler_t::replace))) > 0 &&
           file.commit();
}

} // namespace

QString Autosave::user_folder()
{
    return QStandardPaths::writableLocation(QStandardPaths::AppLocalDataLocation) + QStringLiteral("/recovery");
}

Autosave::Autosave(const QString& folder, const Times& times, QObject* parent)
    : QObject(parent), folder_(folder), times_(times), seen_(state_now()), kept_(seen_)
{
    for (QElapsedTimer* timer : {&since_input_, &since_change_, &since_try_, &since_events_})
        timer->start();
    qApp->installEventFilter(this);
    connect(&clock_, &QTimer::timeout, this, &Autosave::look);
    clock_.start(std::min<int>(looks_every, static_cast<int>(times_.settle.count() / 2 + 1)));
}

Autosave::~Autosave() = default;

Autosave::State Autosave::state_now()
{
    const auto& journal = Interpreter::instance().journal();
    return {journal.size(), journal.empty() ? 0 : std::hash<std::string>{}(journal.back())};
}

QString Autosave::path_of(const QString& name) const
{
    return folder_ + u'/' + name;
}

std::unique_ptr<QLockFile> Autosave::try_lock(const QString& name) const
{
    auto lock = std::make_unique<QLockFile>(path_of(name) + lock_ending);
    lock->setStaleLockTime(0); // however long a session lasts, only the end of its process frees the lock
    return lock->tryLock(0) ? std::move(lock) : nullptr;
}

QList<KeptSession> Autosave::left_behind()
{
    QList<KeptSession> sessions;
    for (const QString& name : QDir(folder_).entryList({session_start + u'*'}, QDir::Dirs)) {
        auto lock = name == name_ ? nullptr : try_lock(name);
        if (!lock)
            continue; // of a workbench that runs
        const json about = read_about(path_of(name) + u'/' + about_file);
        const QString file = text_in(about, "file");
        const QFileInfo copy(path_of(name) + u'/' + file);
        found_.emplace_back(name, std::move(lock));
        if (file.isEmpty() || file.contains(u'/') || !copy.isFile()) {
            discard(name); // killed before its first copy was whole
            continue;
        }
        KeptSession session{.name = name,
                            .file = copy.absoluteFilePath(),
                            .when = QDateTime::fromString(text_in(about, "when"), Qt::ISODate).toLocalTime(),
                            .bytes = copy.size(),
                            .grids = {},
                            .project = text_in(about, "project")};
        if (about.contains("grids") && about["grids"].is_array()) {
            for (const json& grid : about["grids"]) {
                if (grid.is_string())
                    session.grids.append(QString::fromStdString(grid.get<std::string>()));
            }
        }
        sessions.append(session);
    }
    std::ranges::sort(sessions, std::greater{}, &KeptSession::when);
    return sessions;
}

void Autosave::release(const QString& name)
{
    std::erase_if(found_, [&name](const auto& one) { return one.first == name; }); // gives the lock back
}

void Autosave::discard(const QString& name)
{
    if (std::ranges::none_of(found_, [&name](const auto& one) { return one.first == name; }))
        return;
    QDir(path_of(name)).removeRecursively();
    release(name);
}

void Autosave::adopt(const QString& name)
{
    const auto found = std::ranges::find_if(found_, [&name](const auto& one) { return one.first == name; });
    if (found == found_.end())
        return;
    clear();
    copy_ = text_in(read_about(path_of(name) + u'/' + about_file), "file");
    name_ = name;
    lock_ = std::move(found->second);
    found_.erase(found);
    seen_ = kept_ = state_now();
}

void Autosave::clear()
{
    if (!name_.isEmpty())
        QDir(path_of(name_)).removeRecursively();
    name_.clear();
    copy_.clear();
    lock_.reset();
    seen_ = kept_ = state_now();
}

bool Autosave::begin_session()
{
    if (!name_.isEmpty())
        return true;
    if (!QDir().mkpath(folder_))
        return false;
    const QString stem = session_start + QString::number(QCoreApplication::applicationPid());
    for (int n = 1; n < 100; ++n) {
        const QString name = stem + u'-' + QString::number(n);
        if (QFileInfo::exists(path_of(name)))
            continue;
        auto lock = try_lock(name); // before the folder is there: nobody takes it for one left behind
        if (lock && QDir().mkpath(path_of(name))) {
            lock_ = std::move(lock);
            name_ = name;
            return true;
        }
    }
    return false;
}

void Autosave::look()
{
    if (running_)
        return;
    const State now = state_now();
    if (now != seen_) {
        seen_ = now;
        since_change_.start();
    }
    if (now == kept_ || now.first == 0 || !project_changed())
        return;
    const auto passed = [](const QElapsedTimer& since) { return std::chrono::milliseconds(since.elapsed()); };
    const bool settled = passed(since_change_) >= times_.settle || (tried_ && passed(since_try_) >= times_.between);
    const bool again = !failed_ || passed(since_try_) >= times_.between;
    if (settled && again && passed(since_input_) >= times_.idle && QApplication::mouseButtons() == Qt::NoButton &&
        !QApplication::activePopupWidget())
        (void)keep_now();
}

bool Autosave::keep_now()
{
    if (running_ || Interpreter::instance().busy() || BusyState::instance().busy())
        return false;
    tried_ = true;
    since_try_.start();
    const State state = state_now();
    running_ = true;
    stopped_ = false;
    BusyState::instance().enter();
    emit started();
    bool done = false;
    QString reason;
    if (!begin_session()) {
        reason = tr("the folder %1 cannot be written to").arg(folder_);
    } else {
        QString copy, path;
        do { // never over a copy that the catalogue may still read from
            copy = QStringLiteral("copy-%1").arg(++number_);
            path = path_of(name_) + u'/' + copy;
        } while (QFileInfo::exists(path));
        try {
            save_project_copy(path.toStdString(), [this](double part) { return step(part); });
            done = write_about(path_of(name_) + u'/' + about_file, copy);
            if (done && !copy_.isEmpty())
                QFile::remove(path_of(name_) + u'/' + copy_);
            if (done)
                copy_ = copy;
            else
                reason = tr("the folder %1 cannot be written to").arg(path_of(name_));
        } catch (const Lodex::Cancelled&) {
            stopped_ = true;
        } catch (const std::exception& error) {
            reason = QString::fromUtf8(error.what());
        }
        if (!done)
            QFile::remove(path);
    }
    running_ = false;
    BusyState::instance().leave();
    if (done)
        kept_ = state;
    if (!reason.isEmpty() && !failed_) // once, not every few minutes
        Lodex::Logger::log(Lodex::LogLevel::Warning,
                           Lodex::to_cstring(tr("No copy for recovery can be kept: %1").arg(reason)));
    failed_ = !reason.isEmpty();
    emit finished(done);
    carry_out_input();
    return done;
}

bool Autosave::step(double done)
{
    if (!stopped_ && since_events_.elapsed() >= events_every) {
        emit progress(done);
        QCoreApplication::processEvents();
        since_events_.start();
    }
    return !stopped_;
}

/// What the user did meanwhile happens now: nothing may change the project while it is written, and nothing is lost.
void Autosave::carry_out_input()
{
    for (auto& [receiver, event] : std::exchange(input_, {})) {
        if (receiver)
            QCoreApplication::postEvent(receiver, event.release());
    }
}

bool Autosave::eventFilter(QObject* watched, QEvent* event)
{
    if (!is_user_input(event->type()))
        return QObject::eventFilter(watched, event);
    since_input_.start();
    if (!running_)
        return QObject::eventFilter(watched, event);
    stopped_ = true;
    if (event->type() == QEvent::Drop || event->type() == QEvent::DragEnter || event->type() == QEvent::DragMove) {
        event->ignore(); // what is dragged does not outlive its event
        return true;
    }
    input_.emplace_back(watched, event->clone());
    if (event->type() == QEvent::Close)
        event->ignore();
    return true;
}

} // namespace lodex
