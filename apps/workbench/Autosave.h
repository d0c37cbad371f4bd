#pragma once

#include <QDateTime>
#include <QElapsedTimer>
#include <QList>
#include <QObject>
#include <QPointer>
#include <QStringList>
#include <QTimer>

#include <chrono>
#include <memory>
#include <utility>
#include <vector>

class QEvent;
class QLockFile;

namespace lodex {

/// What a session that was killed left behind.
struct KeptSession {
    QString name;   ///< of its folder
    QString file;   ///< the copy of its project, whole path
    QDateTime when; ///< the copy was made
    qint64 bytes = 0;
    QStringList grids;
    QString project; ///< path of the project file that the session worked on; empty: none yet
};

/// Keeps a copy of the project for the case that the program ends badly, in a folder of this process; a lock file
/// beside it names the process, so that no workbench takes what another one still uses.
///
/// A copy is made while the user is away: some time after the last change and the last input, never while a command
/// runs. Input stops it at once, is carried out then, and the copy is tried again later. GUI thread only.
class Autosave : public QObject {
    Q_OBJECT

public:
    struct Times {
        std::chrono::milliseconds settle{20'000}; ///< after the last change
        std::chrono::milliseconds idle{3'000};    ///< after the last input
        /// From one that failed to the next; and no copy waits for changes to settle longer than that.
        std::chrono::milliseconds between{180'000};
    };

    /// Where copies of all sessions of this user are.
    [[nodiscard]] static QString user_folder();

    Autosave(const QString& folder, const Times& times, QObject* parent = nullptr);
    /// Leaves the copy where it is; a session that ends well calls clear() first.
    ~Autosave() override;

    /// Sessions whose process is gone, newest first. They are this process's until release() or discard().
    [[nodiscard]] QList<KeptSession> left_behind();
    /// Leaves it for a later start.
    void release(const QString& name);
    void discard(const QString& name);
    /// The catalogue now holds what this session left: its copy stays until there is a newer one or clear().
    void adopt(const QString& name);

    /// Removes this session's copy: everything is saved, or given up. A change that comes later is kept again.
    void clear();
    /// True while there is a copy.
    [[nodiscard]] bool has_copy() const { return !copy_.isEmpty(); }
    [[nodiscard]] bool running() const { return running_; }
    /// Makes a copy now. False when it was stopped, cannot be made, or a command runs.
    bool keep_now();
    /// Stops a copy that is being made.
    void stop() { stopped_ = true; }

signals:
    void started();
    void progress(double done);
    void finished(bool done);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    using State = std::pair<std::size_t, std::size_t>; // length of the journal, hash of its last statement
    [[nodiscard]] static State state_now();
    void look();
    [[nodiscard]] bool step(double done);
    void carry_out_input();
    [[nodiscard]] bool begin_session();
    [[nodiscard]] QString path_of(const QString& name) const;
    [[nodiscard]] std::unique_ptr<QLockFile> try_lock(const QString& name) const;

    QString folder_;
    Times times_;
    QTimer clock_;
    QElapsedTimer since_input_, since_change_, since_try_, since_events_;
    State seen_, kept_;
    QString name_; // of this session's folder; empty: none yet
    QString copy_; // file name within it; empty: none
    int number_ = 0;
    std::unique_ptr<QLockFile> lock_;
    std::vector<std::pair<QString, std::unique_ptr<QLockFile>>> found_;
    bool running_ = false, stopped_ = false, failed_ = false, tried_ = false;
    std::vector<std::pair<QPointer<QObject>, std::unique_ptr<QEvent>>> input_;
};

} // namespace lodex
