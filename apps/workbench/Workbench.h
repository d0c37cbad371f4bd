#pragma once

#include "Autosave.h"

#include <QObject>
#include <QStringList>

#include <memory>

namespace lodex {

class MainWindow;

/// One running workbench: its window, which is made anew in another language when the user wants it, the copies kept
/// for recovery, and what is opened at the start.
class Workbench : public QObject {
    Q_OBJECT

public:
    struct Options {
        QStringList files; ///< models and projects to open
        QString recovery = Autosave::user_folder();
        Autosave::Times times;
        bool asks = true; ///< before something is lost that is not saved
    };

    explicit Workbench(Options options);
    ~Workbench() override;

    [[nodiscard]] MainWindow& window() { return *window_; }
    [[nodiscard]] Autosave& autosave() { return autosave_; }
    /// Opens the files; without any it offers what a killed session left behind, else opens the last project or the
    /// example field. To be called once the event loop runs.
    void start();
    /// Shows everything in another language: the window is made anew, windows above it close. False, with a message,
    /// while a command runs.
    bool change_language(const QString& language);

signals:
    /// The user closed the window.
    void closed();

private:
    void make_window();
    void open_usual();

    Options options_;
    Autosave autosave_;
    std::unique_ptr<MainWindow> window_;
};

} // namespace lodex
