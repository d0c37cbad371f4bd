#pragma once

#include "Verb.h"

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace lodex {

enum class StatementStatus { Done, Failed, Cancelled, Skipped };

/// What became of one statement.
struct StatementResult {
    std::string text;
    TextPosition position;
    StatementStatus status = StatementStatus::Skipped;
    std::string message; ///< of a failure, with place; empty otherwise
    std::vector<std::string> warnings;
    std::string answer;  ///< what the statement was asked for, such as a report
    double seconds = 0;
    Counts counts;
};

/// A place in a script.
struct SourcePlace {
    std::string source; ///< file name; empty: typed text
    TextPosition position;
};

struct RunOptions {
    std::string source;       ///< file name for messages; empty: typed text
    bool keep_going = false;  ///< go on after a failed statement, not after a cancelled one
};

/// Runs command text on the catalogue. A text is parsed whole first; a statement that fails or is cancelled leaves the
/// catalogue as it was. GUI thread only; a submission made while another one runs is refused.
class Interpreter {
public:
    [[nodiscard]] static Interpreter& instance();

    /// Failures and warnings also go to the log. An error in the parse yields one failed result and runs nothing.
    std::vector<StatementResult> run(std::string_view submission, const RunOptions& options = {});
    /// True while a submission runs.
    [[nodiscard]] bool busy() const { return busy_; }
    /// Where the statement stands that is being parsed or run, for whoever shows messages; null when none is. A failure is
    /// logged with the place of what is wrong.
    [[nodiscard]] const SourcePlace* place() const { return place_ ? &*place_ : nullptr; }

    /// The statements that changed a model, in order, one per line; a script that makes the same model again.
    [[nodiscard]] const std::vector<std::string>& journal() const { return journal_; }
    /// For changes that come from elsewhere than a statement: its equivalent.
    void append_to_journal(std::string statement);
    void clear_journal() { set_journal({}); }
    /// Puts another journal in its place, such as that of a project that was opened.
    void set_journal(std::vector<std::string> statements);

    /// Called with every submission as it comes in, before it is parsed; an empty function switches it off.
    void set_listener(std::function<void(const std::string& text)> listener) { listener_ = std::move(listener); }
    /// Called after each journal change.
    void set_journal_listener(std::function<void()> listener) { journal_listener_ = std::move(listener); }

private:
    Interpreter() = default;
    std::vector<StatementResult> run_text(std::string_view submission, const RunOptions& options);
    void make_room_in_journal();
    StatementResult run_statement(const Statement& statement, const RunOptions& options);

    bool busy_ = false;
    std::optional<SourcePlace> place_;
    std::vector<std::string> journal_;
    std::function<void(const std::string&)> listener_;
    std::function<void()> journal_listener_;
};

/// A text in double quotes for a statement. The text must not hold a double quote or a line end.
[[nodiscard]] std::string quoted(const std::string& text);

} // namespace lodex
