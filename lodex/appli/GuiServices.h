#pragma once

#include <lodex/appli/MessageBoxSink.h>
#include <lodex/appli/QtProgressSink.h>

namespace lodex {

/// What an application with windows puts under the host's libraries, for as long as it lives: progress windows and
/// message boxes. Make one after the QApplication.
class GuiServices {
public:
    GuiServices() : former_(Lodex::ProgressTracer::set_sink(&progress_)) {}
    ~GuiServices() { Lodex::ProgressTracer::set_sink(former_); }
    GuiServices(const GuiServices&) = delete;
    GuiServices& operator=(const GuiServices&) = delete;

    [[nodiscard]] QtProgressSink& progress() { return progress_; }
    [[nodiscard]] MessageBoxSink& messages() { return messages_; }

private:
    QtProgressSink progress_;
    MessageBoxSink messages_;
    Lodex::ProgressSink* former_;
};

} // namespace lodex
