#pragma once

#include <Lodex/utils/ProgressTracer.h>

namespace Kelvane {

/// Shows several commands that belong together as one piece of work, from construction to destruction. Once the user
/// wants to stop, every command that still comes hears so at once.
class ChainProgress : private Lodex::ProgressSink {
public:
    ChainProgress(const Lodex::CString& title, long commands);
    ~ChainProgress() override;
    ChainProgress(const ChainProgress&) = delete;
    ChainProgress& operator=(const ChainProgress&) = delete;

    /// The command has ended.
    void next_command() { ++command_; }

private:
    void begin(const Lodex::CString&) override {}
    bool progress(double done) override;
    void end() override {}

    Lodex::ProgressSink* shown_;
    long commands_;
    long command_ = 0;
    bool cancelled_ = false;
};

} // namespace Kelvane
