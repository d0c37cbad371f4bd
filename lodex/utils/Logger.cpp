#include <Lodex/utils/Logger.h>

#include <Lodex/utils/PathName.h>

#include <lodex/utils/Immortal.h>

#include <algorithm>
#include <atomic>
#include <memory>
#include <mutex>
#include <vector>

namespace Lodex {

namespace {

/// A sink with a lock of its own: messages reach it one at a time, and its removal waits for the one under way. The
/// lock is recursive because a sink may run an event loop (a message box) in which the same thread logs or removes it.
struct Entry {
    std::recursive_mutex mutex;
    LogSink* sink = nullptr; ///< null once removed
};

struct Sinks {
    std::mutex mutex;
    std::vector<std::shared_ptr<Entry>> entries;
};

Sinks& sinks()
{
    static lodex::Immortal<Sinks> list;
    return list.get();
}

std::atomic<InternalErrorHandler> internal_error_handler{nullptr};

} // namespace

void Logger::log(LogLevel level, const CString& text)
{
    if (text.empty())
        return;
    std::vector<std::shared_ptr<Entry>> entries;
    {
        const std::lock_guard lock(sinks().mutex);
        entries = sinks().entries;
    }
    for (const auto& entry : entries) {
        const std::lock_guard lock(entry->mutex);
        if (!entry->sink)
            continue;
        try {
            entry->sink->message(level, text);
        } catch (...) {
            // Whoever logs must not fail because a message could not be shown; the other sinks still get it.
        }
    }
}

void Logger::add_sink(LogSink* sink)
{
    if (!sink)
        return;
    const std::lock_guard lock(sinks().mutex);
    auto& entries = sinks().entries;
    if (std::ranges::any_of(entries, [sink](const auto& entry) { return entry->sink == sink; }))
        return;
    auto entry = std::make_shared<Entry>();
    entry->sink = sink;
    entries.push_back(std::move(entry));
}

void Logger::remove_sink(LogSink* sink)
{
    std::shared_ptr<Entry> removed;
    {
        const std::lock_guard lock(sinks().mutex);
        auto& entries = sinks().entries;
        const auto it = std::ranges::find_if(entries, [sink](const auto& entry) { return entry->sink == sink; });
        if (it == entries.end())
            return;
        removed = *it;
        entries.erase(it);
    }
    const std::lock_guard lock(removed->mutex);
    removed->sink = nullptr;
}

void Lodex_assert_internal_error(const char* file, int line, const Format& message)
{
    const CString text = message.text();
    Format report("Internal error in %1, line %2: %3");
    report.arg(PathName::basename(file)).arg(line).arg(text);
    Logger::error(report);
    if (const InternalErrorHandler handler = internal_error_handler.load())
        handler(file, line, text);
}

InternalErrorHandler set_internal_error_handler(InternalErrorHandler handler)
{
    return internal_error_handler.exchange(handler);
}

} // namespace Lodex
