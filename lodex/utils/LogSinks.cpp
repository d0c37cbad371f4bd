#include "LogSinks.h"

#include <ctime>
#include <iomanip>
#include <ostream>
#include <stdexcept>
#include <string_view>

namespace lodex {

using Lodex::LogLevel;

namespace {

std::string_view without_line_end(std::string_view text)
{
    while (text.ends_with('\n') || text.ends_with('\r'))
        text.remove_suffix(1);
    return text;
}

} // namespace

Lodex::CString level_name(LogLevel level)
{
    switch (level) {
    case LogLevel::Info:
        return "info";
    case LogLevel::Warning:
        return "warning";
    case LogLevel::Error:
        return "error";
    case LogLevel::Fatal:
        return "fatal";
    }
    return "unknown";
}

ScreenSink::ScreenSink(std::ostream& out, LogLevel least) : out_(out), least_(least)
{
    Lodex::Logger::add_sink(this);
}

ScreenSink::~ScreenSink()
{
    Lodex::Logger::remove_sink(this);
}

void ScreenSink::message(LogLevel level, const Lodex::CString& text)
{
    if (level < least_ || (quiet_ && level < LogLevel::Error))
        return;
    if (level == LogLevel::Warning)
        out_ << "warning: ";
    else if (level >= LogLevel::Error)
        out_ << "error: ";
    out_ << without_line_end(text) << '\n' << std::flush;
}

FileSink::FileSink(const std::filesystem::path& path) : out_(path, std::ios::app | std::ios::binary)
{
    if (!out_)
        throw std::runtime_error("Cannot open the log file " + path.string());
    Lodex::Logger::add_sink(this);
}

FileSink::~FileSink()
{
    Lodex::Logger::remove_sink(this);
}

void FileSink::message(LogLevel level, const Lodex::CString& text)
{
    const std::time_t now = std::time(nullptr);
    std::tm utc{};
    gmtime_r(&now, &utc);
    out_ << std::put_time(&utc, "%Y-%m-%dT%H:%M:%SZ") << ' ' << level_name(level) << ' ';
    for (const char c : without_line_end(text)) {
        out_ << c;
        if (c == '\n')
            out_ << "    ";
    }
    out_ << '\n' << std::flush;
}

} // namespace lodex
