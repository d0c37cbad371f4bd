#include <Lodex/utils/ProgressTracer.h>

#include <algorithm>
#include <atomic>

namespace Lodex {

namespace {

std::atomic<ProgressSink*> current_sink{nullptr};

/// The nested work of one thread.
struct Work {
    int depth = 0;
    bool cancelled = false;
    double done = 0;              ///< of the outermost tracer
    ProgressSink* shown = nullptr; ///< that heard begin()

    /// The sink to talk to; null when it has been taken away since the work began.
    [[nodiscard]] ProgressSink* sink() const { return shown && shown == current_sink.load() ? shown : nullptr; }

    /// Shows the state of the outermost tracer and asks whether to go on.
    [[nodiscard]] bool go_on()
    {
        if (ProgressSink* target = cancelled ? nullptr : sink())
            cancelled = !target->progress(done);
        return !cancelled;
    }
};

thread_local Work work;

} // namespace

ProgressTracer::ProgressTracer(const CString& title, long steps)
    : steps_(std::max(steps, 1L)), outermost_(work.depth == 0)
{
    ++work.depth;
    if (!outermost_)
        return;
    work.cancelled = false;
    work.done = 0;
    work.shown = current_sink.load();
    if (work.shown)
        work.shown->begin(title);
}

ProgressTracer::~ProgressTracer()
{
    --work.depth;
    if (!outermost_)
        return;
    ProgressSink* const sink = work.sink();
    work.shown = nullptr;
    work.cancelled = false;
    if (sink)
        sink->end();
}

bool ProgressTracer::next_step()
{
    step_ = std::min(step_ + 1, steps_);
    return set_done(static_cast<double>(step_) / static_cast<double>(steps_));
}

bool ProgressTracer::set_done(double done)
{
    if (outermost_)
        work.done = done >= 0 ? std::min(done, 1.0) : 0.0;
    return work.go_on();
}

bool ProgressTracer::cancelled() const
{
    return work.cancelled;
}

ProgressSink* ProgressTracer::set_sink(ProgressSink* sink)
{
    return current_sink.exchange(sink);
}

} // namespace Lodex
