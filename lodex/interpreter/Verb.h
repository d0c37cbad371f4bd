#pragma once

#include "Statement.h"

#include "lodex/utils/Errors.h"

#include <Lodex/geobase/GObj.h>

#include <functional>
#include <limits>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace lodex {

/// What the value of a keyword is; the interpreter checks it before the verb runs.
enum class ValueKind {
    Text,        ///< anything
    Path,        ///< a file
    NewName,     ///< legal and free name of an object to make
    ItemName,    ///< legal name of an item (property, region, unit) to make; may exist
    Object,      ///< name of an existing object of Keyword::object_type
    Flag,        ///< 0 or 1
    Integer,     ///< whole number
    Real,        ///< finite number, C locale
    Choice,      ///< one of Keyword::choices
    NameList,    ///< names joined by "+"; read with resolve_joined()
    IntegerList, ///< whole numbers joined by "+"; empty pieces are skipped
    RealList     ///< finite numbers joined by "+"
};

[[nodiscard]] std::string_view to_text(ValueKind kind);

/// Declaration of one keyword of a verb.
struct Keyword {
    std::string name;
    ValueKind kind = ValueKind::Text;
    std::string meaning;              ///< one line
    bool required = false;
    bool may_be_empty = false;        ///< "keyword" with nothing behind it is legal and counts as given
    bool positional = false;          ///< stands directly behind the verb, without the keyword's own word
    std::string unit;                 ///< of the value; empty: none
    std::string default_value;        ///< taken when absent; empty: none
    std::vector<std::string> choices; ///< for Choice
    std::string object_type;          ///< for Object: "SGrid"
    double min = -std::numeric_limits<double>::infinity(); ///< for Integer, Real and their lists
    double max = std::numeric_limits<double>::infinity();
};

class Call;

/// Declaration of one verb. Parser, checks, help, completion and the reference page are made from it.
struct Verb {
    std::string name;        ///< one or several words: "create sgrid"
    std::string object_type; ///< type behind "on", empty for a verb that works on no object
    std::string summary;     ///< one line
    std::vector<Keyword> keywords;
    bool journalled = true;  ///< false for what changes no model: painting, reports, help
    std::function<void(Call&)> run;

    [[nodiscard]] const Keyword* keyword(std::string_view keyword_name) const;
    /// "lodex on SGrid NAME set_property P file "PATH"".
    [[nodiscard]] std::string usage() const;
};

/// All verbs, filled by each library when it is loaded.
class VerbRegistry {
public:
    [[nodiscard]] static VerbRegistry& instance();

    /// A second verb of the same type and name is a programming error and throws std::logic_error.
    void add(Verb verb);
    /// Sorted by type, then name.
    [[nodiscard]] std::vector<const Verb*> verbs() const;
    [[nodiscard]] const Verb* find(std::string_view object_type, std::string_view name) const;
    [[nodiscard]] bool is_object_type(std::string_view word) const;
    /// The longest verb of this object type whose words stand at words[first..]; null when there is none. Quoted words
    /// never match. `length` becomes its number of words.
    [[nodiscard]] const Verb* match(std::string_view object_type, const std::vector<Word>& words, std::size_t first,
                                    std::size_t& length) const;

    /// Every declaration, for tools: {"verbs": [{name, object_type, summary, usage, journalled, keywords: [...]}]}.
    [[nodiscard]] std::string to_json() const;
    /// The reference page, one section a verb.
    [[nodiscard]] std::string to_markdown() const;
    /// Help text of a verb, several lines; of all verbs, one line each, when the name is empty. Empty when there is none.
    [[nodiscard]] std::string help(std::string_view name) const;

private:
    std::map<std::pair<std::string, std::string>, Verb, std::less<>> verbs_;
};

/// Declares a verb at load time: `const VerbRegistration registration{{...}};` in the verb's own source file.
struct VerbRegistration {
    explicit VerbRegistration(Verb verb) { VerbRegistry::instance().add(std::move(verb)); }
};

/// Numbers that a verb reports ("cells", 7), in the order given.
using Counts = std::vector<std::pair<std::string, double>>;

/// One statement on its way: its verb, its checked values, and what the verb reports.
class Call {
public:
    struct Value {
        std::string text;
        TextPosition position;
    };

    Call(const Verb& verb, std::map<std::string, Value, std::less<>> values, Lodex::GObj* object)
        : verb_(verb), values_(std::move(values)), object_(object)
    {
        constexpr std::size_t usual_counts = 32;
        counts_.reserve(usual_counts);
    }

    [[nodiscard]] const Verb& verb() const { return verb_; }
    /// The object behind "on TYPE"; null for verbs without one.
    [[nodiscard]] Lodex::GObj* object() const { return object_; }

    /// True when the keyword stands in the statement, even with an empty value.
    [[nodiscard]] bool has(std::string_view keyword) const { return values_.contains(keyword); }
    /// Given value, else the declared default, else empty.
    [[nodiscard]] std::string text(std::string_view keyword) const;
    [[nodiscard]] bool flag(std::string_view keyword) const { return text(keyword) == "1"; }
    /// 0 when neither given nor defaulted.
    [[nodiscard]] long integer(std::string_view keyword) const;
    [[nodiscard]] double real(std::string_view keyword) const;
    [[nodiscard]] std::vector<long> integers(std::string_view keyword) const;
    [[nodiscard]] std::vector<double> reals(std::string_view keyword) const;
    /// The existing object that the keyword names (kind Object).
    [[nodiscard]] Lodex::GObj* object_of(std::string_view keyword) const;

    /// Ends the verb: the message is shown with the place of the keyword's value (of the statement when empty).
    [[noreturn]] void fail(const std::string& message, std::string_view keyword = {}) const;

    /// Adds text to what the statement answers: the runner's standard output, the console. Messages go to info().
    void answer(const std::string& text) { answer_ += text; }
    [[nodiscard]] const std::string& answer() const { return answer_; }

    void info(const std::string& text);
    void warn(const std::string& text);
    void count(const std::string& name, double value) { counts_.emplace_back(name, value); }
    [[nodiscard]] const Counts& counts() const { return counts_; }
    [[nodiscard]] const std::vector<std::string>& warnings() const { return warnings_; }
    /// Moves everything reported so far.
    void hand_over(Counts& counts, std::vector<std::string>& warnings, std::string& answer) noexcept
    {
        counts = std::move(counts_);
        warnings = std::move(warnings_);
        answer = std::move(answer_);
    }

    /// Shows how much of the verb's work is done (0 to 1); false when the user wants to stop.
    [[nodiscard]] bool progress(double done) const;
    /// The same as a function that operators take.
    [[nodiscard]] ProgressCheck progress_check() const
    {
        return [this](double done) { return progress(done); };
    }

    class ProgressTarget {
    public:
        virtual ~ProgressTarget() = default;
        virtual bool set_done(double done) = 0;
    };
    void set_progress_target(ProgressTarget* target) { progress_ = target; }

private:
    const Verb& verb_;
    std::map<std::string, Value, std::less<>> values_;
    Lodex::GObj* object_;
    Counts counts_;
    std::vector<std::string> warnings_;
    std::string answer_;
    ProgressTarget* progress_ = nullptr;
};

} // namespace lodex
