#pragma once

#include <Lodex/utils/Format.h>

namespace Lodex {

enum class LogLevel { Info, Warning, Error, Fatal };

/// Where messages go. Called on the thread that logs; must not log itself.
class LogSink {
public:
    virtual ~LogSink() = default;
    /// The text ends with a line end when its writer gave one.
    virtual void message(LogLevel level, const CString& text) = 0;
};

/// The host's message log. `fatal` is for what stops the user's action (a window shows it), `error` for details of a
/// failure, `warning` for what went on otherwise than asked, `info` for results.
class Logger {
public:
    static void fatal(const Format& message) { log(LogLevel::Fatal, message.text()); }
    static void error(const Format& message) { log(LogLevel::Error, message.text()); }
    static void warning(const Format& message) { log(LogLevel::Warning, message.text()); }
    static void info(const Format& message) { log(LogLevel::Info, message.text()); }
    static void log(LogLevel level, const CString& text);

    /// Sinks are not owned; a sink must be removed before it dies. Safe from any thread.
    static void add_sink(LogSink* sink);
    static void remove_sink(LogSink* sink);
};

/// Reports a broken invariant with the source unit's name and line, through the log at level Error and to the handler
/// that a host has set. The program goes on.
void Lodex_assert_internal_error(const char* file, int line, const Format& message);

/// What else shall happen on an internal error (null: nothing more). Returns the former handler.
using InternalErrorHandler = void (*)(const char* file, int line, const CString& message);
InternalErrorHandler set_internal_error_handler(InternalErrorHandler handler);

} // namespace Lodex
