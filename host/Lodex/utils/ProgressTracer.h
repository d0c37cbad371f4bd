#pragma once

#include <Lodex/utils/CString.h>

namespace Lodex {

/// Shows the progress of long work. Called on the thread that does the work.
class ProgressSink {
public:
    virtual ~ProgressSink() = default;
    virtual void begin(const CString& title) = 0;
    /// done runs from 0 to 1. Returns false when the user wants to stop.
    virtual bool progress(double done) = 0;
    virtual void end() = 0;
};

/// One piece of long work, from construction to destruction. Tracers nest; only the outermost one is shown, and a
/// wish to stop reaches the inner ones.
class ProgressTracer {
public:
    /// title ends up in a window or on standard error; steps is the number of next_step() calls to come, at least 1.
    explicit ProgressTracer(const CString& title, long steps = 1);
    ~ProgressTracer();
    ProgressTracer(const ProgressTracer&) = delete;
    ProgressTracer& operator=(const ProgressTracer&) = delete;

    /// One step done. Returns false when the user wants to stop.
    [[nodiscard]] bool next_step();
    /// Part of the work done, 0 to 1. Returns false when the user wants to stop.
    [[nodiscard]] bool set_done(double done);
    [[nodiscard]] bool cancelled() const;

    /// Where progress is shown (not owned; null: nowhere). Returns the former one.
    static ProgressSink* set_sink(ProgressSink* sink);

private:
    long steps_;
    long step_ = 0;
    bool outermost_;
};

} // namespace Lodex
