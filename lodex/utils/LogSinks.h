#pragma once

#include <Lodex/utils/Logger.h>

#include <atomic>
#include <filesystem>
#include <fstream>
#include <iosfwd>

namespace lodex {

/// Writes messages to a stream such as standard error, one per line: "warning: ...", "error: ..." (for Error and
/// Fatal), plain text for Info. Enters itself with the logger and takes itself out.
class ScreenSink : public Lodex::LogSink {
public:
    /// The stream must outlive the sink; messages below `least` are left out.
    explicit ScreenSink(std::ostream& out, Lodex::LogLevel least = Lodex::LogLevel::Info);
    ~ScreenSink() override;
    ScreenSink(const ScreenSink&) = delete;
    ScreenSink& operator=(const ScreenSink&) = delete;

    void set_least_level(Lodex::LogLevel least) { least_ = least; }
    /// Only errors are written while quiet, whatever the least level.
    void set_quiet(bool quiet) { quiet_ = quiet; }

    void message(Lodex::LogLevel level, const Lodex::CString& text) override;

private:
    std::ostream& out_;
    std::atomic<Lodex::LogLevel> least_;
    std::atomic<bool> quiet_{false};
};

/// Appends messages of all levels to a file: UTC time, level, text; further lines of a message are indented. Each
/// message is handed to the system before the next one. Enters itself with the logger and takes itself out.
class FileSink : public Lodex::LogSink {
public:
    /// Throws std::runtime_error when the file cannot be opened for writing.
    explicit FileSink(const std::filesystem::path& path);
    ~FileSink() override;
    FileSink(const FileSink&) = delete;
    FileSink& operator=(const FileSink&) = delete;

    void message(Lodex::LogLevel level, const Lodex::CString& text) override;

private:
    std::ofstream out_;
};

/// "info", "warning", "error", "fatal".
[[nodiscard]] Lodex::CString level_name(Lodex::LogLevel level);

} // namespace lodex
