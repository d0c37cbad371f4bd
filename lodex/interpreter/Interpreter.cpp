#include "Interpreter.h"

#include "StatementBinder.h"

#include <Lodex/geobase/GeobaseLib.h>
#include <Lodex/utils/Logger.h>
#include <Lodex/utils/ProgressTracer.h>

#include <algorithm>
#include <chrono>
#include <new>
#include <optional>
#include <system_error>
#include <utility>

namespace lodex {

namespace {

class TracerTarget : public Call::ProgressTarget {
public:
    explicit TracerTarget(const std::string& title) : tracer_(title) {}
    bool set_done(double done) override { return tracer_.set_done(done); }

private:
    Lodex::ProgressTracer tracer_;
};

std::string place(const RunOptions& options, TextPosition position)
{
    const std::string numbers = std::to_string(position.line) + ":" + std::to_string(position.column);
    return options.source.empty() ? numbers : options.source + ":" + numbers;
}

std::string failure_text(const RunOptions& options, TextPosition position, const std::string& message,
                         const std::string& statement)
{
    std::string text = place(options, position) + ": " + message;
    if (!statement.empty())
        text += "\n  in: " + statement;
    return text;
}

class BusyMark {
public:
    explicit BusyMark(bool& busy) : busy_(busy) { busy_ = true; }
    ~BusyMark() { busy_ = false; }
    BusyMark(const BusyMark&) = delete;
    BusyMark& operator=(const BusyMark&) = delete;

private:
    bool& busy_;
};

constexpr const char* no_memory = "not enough memory; nothing was changed";

/// Takes what a statement put into the catalogue out again, should the statement fail behind that.
class CatalogueGuard : public Lodex::CatalogueObserver {
public:
    CatalogueGuard()
    {
        constexpr std::size_t usual = 16; // one, as a rule
        added_.reserve(usual);
        Lodex::GeobaseLib::instance()->attach(this);
    }
    ~CatalogueGuard() override
    {
        Lodex::GeobaseLib::instance()->detach(this);
        if (kept_)
            return;
        for (Lodex::GObj* object : added_) {
            try {
                Lodex::GeobaseLib::instance()->destroy(object);
            } catch (const std::exception&) {
                // An observer failed; the object is gone all the same.
            }
        }
    }
    CatalogueGuard(const CatalogueGuard&) = delete;
    CatalogueGuard& operator=(const CatalogueGuard&) = delete;

    void keep() { kept_ = true; }
    void object_added(Lodex::GObj* object) override { added_.push_back(object); }
    void object_removed(Lodex::GObj* object) override { std::erase(added_, object); }

private:
    std::vector<Lodex::GObj*> added_;
    bool kept_ = false;
};

/// Sets the place for its own lifetime, then puts the former one back.
class PlaceMark {
public:
    PlaceMark(std::optional<SourcePlace>& place, SourcePlace now) : place_(place), former_(std::exchange(place, std::move(now))) {}
    ~PlaceMark() { place_ = std::move(former_); }
    PlaceMark(const PlaceMark&) = delete;
    PlaceMark& operator=(const PlaceMark&) = delete;

private:
    std::optional<SourcePlace>& place_;
    std::optional<SourcePlace> former_;
};

} // namespace

Interpreter& Interpreter::instance()
{
    static Interpreter interpreter;
    return interpreter;
}

std::vector<StatementResult> Interpreter::run(std::string_view submission, const RunOptions& options)
{
    try {
        return run_text(submission, options);
    } catch (const std::bad_alloc&) {
        // Outside of a statement: the text itself or the list of results.
        std::vector<StatementResult> results(1);
        results[0].status = StatementStatus::Failed;
        results[0].message = failure_text(options, {}, no_memory, {});
        Lodex::Logger::log(Lodex::LogLevel::Error, results[0].message + "\n");
        return results;
    }
}

std::vector<StatementResult> Interpreter::run_text(std::string_view submission, const RunOptions& options)
{
    const std::string text(submission.substr(0, submission.find('\0')));
    if (listener_)
        listener_(text);

    std::vector<StatementResult> results;
    const auto refuse = [&](TextPosition position, const std::string& message, const std::string& statement) {
        StatementResult result;
        result.text = statement;
        result.position = position;
        result.status = StatementStatus::Failed;
        result.message = failure_text(options, position, message, statement);
        const PlaceMark here(place_, {options.source, position});
        Lodex::Logger::log(Lodex::LogLevel::Error, result.message + "\n");
        results.push_back(std::move(result));
        return results;
    };

    if (busy_)
        return refuse({}, "another command is still running", {});
    const BusyMark mark(busy_);

    std::vector<Statement> statements;
    try {
        statements = parse_statements(text);
    } catch (const CommandError& error) {
        return refuse(error.position(), error.what(), {});
    }
    for (const Statement& statement : statements) {
        try {
            check_statement(statement);
        } catch (const CommandError& error) {
            return refuse(error.has_position() ? error.position() : statement.position, error.what(), statement.text);
        }
    }

    bool stopped = false;
    results.reserve(statements.size());
    for (const Statement& statement : statements) {
        if (stopped) {
            StatementResult skipped;
            skipped.text = statement.text;
            skipped.position = statement.position;
            results.push_back(std::move(skipped));
            continue;
        }
        results.push_back(run_statement(statement, options));
        const StatementStatus status = results.back().status;
        stopped = status == StatementStatus::Cancelled || (status == StatementStatus::Failed && !options.keep_going);
    }
    return results;
}

StatementResult Interpreter::run_statement(const Statement& statement, const RunOptions& options)
{
    StatementResult result;
    result.text = statement.text;
    result.position = statement.position;
    const auto start = std::chrono::steady_clock::now();

    const PlaceMark mark(place_, {options.source, statement.position});
    const auto failed = [&](TextPosition position, const std::string& message) {
        place_->position = position;
        result.status = StatementStatus::Failed;
        result.message = failure_text(options, position, message, statement.text);
        Lodex::Logger::log(Lodex::LogLevel::Error, result.message + "\n");
    };

    try {
        Call call = bind_statement(statement);
        TracerTarget progress(call.verb().name);
        call.set_progress_target(&progress);
        if (!call.progress(0)) // the user wanted to stop while the former statement ended
            throw Cancelled{};
        // What the journal needs is there before the verb runs: once that has changed something nothing may fail.
        std::string line = statement.text;
        make_room_in_journal();
        CatalogueGuard guard;
        call.verb().run(call);
        guard.keep();
        result.status = StatementStatus::Done;
        call.hand_over(result.counts, result.warnings, result.answer);
        if (call.verb().journalled)
            append_to_journal(std::move(line));
    } catch (const CommandError& error) {
        failed(error.has_position() ? error.position() : statement.position, error.what());
    } catch (const Cancelled&) {
        failed(statement.position, "cancelled; nothing was changed");
        result.status = StatementStatus::Cancelled;
    } catch (const std::bad_alloc&) {
        failed(statement.position, no_memory);
    } catch (const std::system_error& error) {
        // A thread that cannot be started, as a rule for want of memory for its stack.
        const bool thread = error.code() == std::errc::resource_unavailable_try_again;
        failed(statement.position, thread ? "no further thread can be started, not enough memory; nothing was changed" : error.what());
    } catch (const std::exception& error) {
        failed(statement.position, error.what());
    }
    result.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    return result;
}

void Interpreter::make_room_in_journal()
{
    constexpr std::size_t least = 64;
    if (journal_.size() == journal_.capacity())
        journal_.reserve(std::max(least, 2 * journal_.size()));
}

void Interpreter::append_to_journal(std::string statement)
{
    journal_.push_back(std::move(statement));
    if (journal_listener_)
        journal_listener_();
}

void Interpreter::set_journal(std::vector<std::string> statements)
{
    journal_ = std::move(statements);
    if (journal_listener_)
        journal_listener_();
}

std::string quoted(const std::string& text)
{
    return '"' + text + '"';
}

} // namespace lodex
