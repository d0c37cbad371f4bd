#include "BatchRunner.h"

#include "lodex/utils/AtomicFile.h"
#include "lodex/utils/FileError.h"
#include "lodex/utils/Version.h"
#include "lodex/interpreter/Interpreter.h"

#include <Lodex/utils/Logger.h>

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <system_error>

namespace lodex {

namespace {

using nlohmann::ordered_json;

/// One script or text with what became of its statements.
struct Run {
    std::string source; ///< file name, "-c" for a text
    std::vector<StatementResult> results;
};

/// Keeps messages for the JSON report.
class MessageRecorder : public Lodex::LogSink {
public:
    MessageRecorder() { Lodex::Logger::add_sink(this); }
    ~MessageRecorder() override { Lodex::Logger::remove_sink(this); }
    MessageRecorder(const MessageRecorder&) = delete;
    MessageRecorder& operator=(const MessageRecorder&) = delete;

    void message(Lodex::LogLevel level, const Lodex::CString& text) override
    {
        constexpr std::array levels{"info", "warning", "error", "fatal"};
        std::string line = text.str();
        while (line.ends_with('\n'))
            line.pop_back();
        ordered_json entry{{"level", levels[static_cast<std::size_t>(level)]}, {"text", line}};
        if (const SourcePlace* place = Interpreter::instance().place()) {
            entry["file"] = place->source.empty() ? "-c" : place->source;
            entry["line"] = place->position.line;
        }
        messages_.push_back(std::move(entry));
    }
    [[nodiscard]] const ordered_json& messages() const { return messages_; }

private:
    ordered_json messages_ = ordered_json::array();
};

const char* to_text(StatementStatus status)
{
    switch (status) {
    case StatementStatus::Done: return "done";
    case StatementStatus::Failed: return "failed";
    case StatementStatus::Cancelled: return "cancelled";
    case StatementStatus::Skipped: return "skipped";
    }
    return "";
}

ordered_json report(const std::vector<Run>& runs, const ordered_json& messages)
{
    ordered_json inputs = ordered_json::array(), commands = ordered_json::array();
    std::size_t failed = 0;
    for (const Run& run : runs) {
        inputs.push_back(run.source);
        for (const StatementResult& result : run.results) {
            ordered_json entry{{"source", run.source},
                               {"line", result.position.line},
                               {"column", result.position.column},
                               {"command", result.text},
                               {"status", to_text(result.status)},
                               {"seconds", result.seconds}};
            ordered_json counts = ordered_json::object();
            for (const auto& [name, value] : result.counts)
                counts[name] = value;
            entry["counts"] = std::move(counts);
            if (!result.warnings.empty())
                entry["warnings"] = result.warnings;
            if (!result.message.empty())
                entry["message"] = result.message;
            failed += result.status == StatementStatus::Failed || result.status == StatementStatus::Cancelled;
            commands.push_back(std::move(entry));
        }
    }
    return {{"version", program_version()},
            {"inputs", std::move(inputs)},
            {"statistics", {{"commands", commands.size()}, {"failed", failed}}},
            {"commands", std::move(commands)},
            {"messages", messages}};
}

/// The whole script, from a file or a pipe. Throws FileError.
std::string read_script(const std::string& path)
{
    constexpr std::size_t longest = std::size_t{256} << 20; // a device may never end
    constexpr std::size_t block = std::size_t{64} << 10;
    std::error_code ignored;
    if (std::filesystem::is_directory(path, ignored))
        throw FileError(path, 0, "is a folder, expected a script");
    std::ifstream in(path, std::ios::binary);
    if (!in)
        throw FileError(path, 0, "the script cannot be read: " + std::generic_category().message(errno));
    std::string text;
    while (in) {
        const std::size_t used = text.size();
        if (used > longest)
            throw FileError(path, 0, "the script is too long: more than " + std::to_string(longest) + " bytes");
        text.resize(used + block);
        in.read(text.data() + used, static_cast<std::streamsize>(block));
        text.resize(used + static_cast<std::size_t>(in.gcount()));
    }
    if (in.bad())
        throw FileError(path, 0, "the script cannot be read to its end");
    return text;
}

/// False when the file cannot be written; the reason is on standard error.
bool write_file(const std::string& path, const std::string& text)
{
    try {
        AtomicFile file(path);
        file.write(text);
        file.commit();
        return true;
    } catch (const ModelError& error) {
        std::cerr << error.what() << '\n';
        return false;
    }
}

} // namespace

ExitStatus run_batch(const BatchOptions& options)
{
    std::vector<std::pair<std::string, std::string>> submissions; // source, text
    for (const std::string& path : options.scripts) {
        try {
            submissions.emplace_back(path, read_script(path));
        } catch (const FileError& error) {
            std::cerr << error.what() << '\n';
            return BadUsage;
        }
    }
    for (const std::string& text : options.texts)
        submissions.emplace_back(std::string(), text);

    const MessageRecorder recorder;
    std::vector<Run> runs;
    bool failed = false, cancelled = false;
    for (const auto& [source, text] : submissions) {
        if (cancelled || (failed && !options.keep_going))
            break;
        Run run{source.empty() ? "-c" : source, {}};
        run.results = Interpreter::instance().run(text, {.source = source, .keep_going = options.keep_going});
        for (const StatementResult& result : run.results) {
            std::cout << result.answer;
            failed |= result.status != StatementStatus::Done;
            cancelled |= result.status == StatementStatus::Cancelled;
        }
        runs.push_back(std::move(run));
    }
    std::cout.flush();

    bool written = true;
    if (!options.json_report.empty())
        written &= write_file(options.json_report, report(runs, recorder.messages())
                                                           .dump(2, ' ', false, ordered_json::error_handler_t::replace) +
                                                       "\n");
    if (!options.journal.empty()) {
        std::string journal;
        for (const std::string& statement : Interpreter::instance().journal())
            journal += statement + "\n";
        written &= write_file(options.journal, journal);
    }
    return failed || !written ? CommandFailed : AllDone;
}

bool import_model(const std::string& path, const std::string& name)
{
    const auto results = Interpreter::instance().run("lodex import file " + quoted(path) + " name " + name);
    return results.size() == 1 && results[0].status == StatementStatus::Done;
}

} // namespace lodex
