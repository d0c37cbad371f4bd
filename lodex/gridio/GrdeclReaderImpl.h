#pragma once

#include <lodex/gridio/GrdeclKeywords.h>
#include <lodex/gridio/GrdeclReader.h>
#include <lodex/gridio/GrdeclText.h>
#include <lodex/gridio/MessageLog.h>

#include <array>
#include <map>
#include <optional>
#include <variant>

// The inside of the reader; GrdeclReader.h is what others use.

namespace lodex::grdecl {

inline constexpr std::size_t tick_bytes = 256 * 1024; ///< text between two looks at the progress
inline constexpr std::size_t most_tokens = 10'000;    ///< of one record that is no array

struct Keyword {
    std::shared_ptr<Source> source;
    const char* start = nullptr;
    const char* after = nullptr; ///< first character behind the name
    std::string name;            ///< as spelt
    std::string upper;
};

struct Token {
    std::string text;
    bool quoted = false;
    bool is_default = false;
    const char* at = nullptr;
};

/// What a "-- LODEX PROPERTY" comment says of the keyword behind it.
struct PropertyNote {
    std::string keyword;
    std::optional<std::string> name;
    std::string unit;
    std::optional<double> no_data;
    enum class Store { Unknown, Float, Double, Integer } store = Store::Unknown;
    bool on_points = false;
    std::map<std::int32_t, std::string> code_names;
};

/// An array that stands before the grid's size.
struct Deferred {
    Keyword keyword;
    Section section;
    std::optional<PropertyNote> note;
};

using Reals = std::variant<std::vector<float>, std::vector<double>>;

/// A region of a "-- LODEX REGION" comment.
struct RegionNote {
    RegionData region;
    std::vector<std::int64_t> runs; ///< of cells outside and inside in turn; not used where the size was known
    std::int64_t cells = 0;         ///< of all runs, no more than one beyond the grid's
    std::string file;
    std::int64_t line = 0;
};

enum class Stop { Slash, End, Text, BadRepeat, Misfit, Range };

struct Outcome {
    Stop stop = Stop::Slash;
    const char* end = nullptr;   ///< where reading stopped, behind the slash for Stop::Slash
    std::uint64_t count = 0;     ///< values met, beyond the limit as well
    std::uint64_t defaults = 0;
    const char* surplus = nullptr; ///< first value beyond the limit
};

/// Reads one file with all that it includes. One object for one file.
class Reader {
public:
    explicit Reader(const ReadOptions& options, const TextWindow& window = {});

    ReadResult read_file(const std::filesystem::path& path);
    ReadResult read_text(std::string_view text, const std::filesystem::path& name);

private:
    // --- files -------------------------------------------------------------------------------------------------------

    std::shared_ptr<Source> load(const std::filesystem::path& path, std::string shown, std::string kept_name);
    void push(std::shared_ptr<Source> source)
    {
        stack_.push_back(std::move(source));
    }
    /// Throws when the file is not what it was when it was opened.
    void check_unchanged(const Source& source) const;
    ReadResult run(const std::string& name);
    void include(const Keyword& keyword);

    // --- text --------------------------------------------------------------------------------------------------------

    [[noreturn]] void fail(Source& source, const char* at, std::string reason) const
    {
        check_unchanged(source); // else what it says next is an accident
        throw FileError(source.shown, source.line_of(at), std::move(reason));
    }
    /// Throws when the window cut the word off.
    void need_whole(Source& source, const char* word, const char* after) const
    {
        if (after >= source.cut()) {
            fail(source, word, "a word of more than " + std::to_string(source.reach()) + " characters");
        }
    }
    [[noreturn]] void fail_binary(Source& source, const char* at) const
    {
        fail(source, at, "byte 0 at position " + std::to_string(at - source.begin) + ": binary data, expected text");
    }
    void warn(const std::string& kind, Source& source, const char* at, std::string text)
    {
        log_.add(kind, {Message::Level::Warning, to_utf8(source.shown), source.line_of(at), std::move(text)});
    }
    void inform(const std::string& kind, Source& source, const char* at, std::string text)
    {
        log_.add(kind, {Message::Level::Info, to_utf8(source.shown), source.line_of(at), std::move(text)});
    }
    void tick(const Source& source, const char* at);

    bool next_keyword(Keyword& keyword);
    const char* read_quoted(Source& source, const char* p, std::string& text) const;
    /// Tokens of a record; repeat counts are unrolled. end becomes the place behind the slash.
    std::vector<Token> read_record(const Keyword& keyword, const char*& end);
    std::int64_t whole_number(const Keyword& keyword, const std::vector<Token>& tokens, std::size_t index,
                              const char* meaning, std::int64_t least, std::optional<std::int64_t> default_value = {});
    /// Where the data of a keyword that is not interpreted ends, behind its last slash.
    const char* data_end(const Keyword& keyword, const KeywordInfo& info);
    const char* records_end(const Keyword& keyword);
    const char* list_end(const Keyword& keyword);

    // --- keywords ----------------------------------------------------------------------------------------------------

    void handle(const Keyword& keyword);
    void keep(const Keyword& keyword, const char* end, bool quiet);
    void keep_rest(const Keyword& keyword);
    void finish_keyword(const Keyword& keyword, const char* end)
    {
        // What stands behind the closing slash on its line is no data.
        keyword.source->pos = end > keyword.after && end[-1] == '/' ? line_end(*keyword.source, end) : end;
    }
    void read_size(const Keyword& keyword);
    void set_size(const Keyword& keyword, const GridSize& size);
    void read_faults(const Keyword& keyword);
    void read_map_axes(const Keyword& keyword);
    void read_box(const Keyword& keyword);
    const char* read_active(const Keyword& keyword);
    const char* read_tops(const Keyword& keyword);
    [[nodiscard]] std::size_t tops_count() const
    {
        return std::visit([](const auto& tops) { return tops.size(); }, tops_);
    }
    const char* read_line(const Keyword& keyword, std::vector<double>& values, int axis);
    const char* read_geometry(const Keyword& keyword, RealArray& array, std::uint64_t expected, const std::string& why);
    /// Reads numbers as a property; null when they are none and shall be kept as text.
    const char* read_property(const Keyword& keyword, const KeywordInfo& info);
    const char* read_array(const Keyword& keyword, const KeywordInfo& info);
    bool may_be_array(const Keyword& keyword, const KeywordInfo& info) const;
    const char* skip_numbers(const Keyword& keyword);

    // --- numbers -----------------------------------------------------------------------------------------------------

    template <class Policy>
    Outcome read_values(const Keyword& keyword, const char* p, std::vector<typename Policy::Value>& values,
                        std::uint64_t limit, Policy& policy);
    template <class Policy>
    Outcome read_values(const Keyword& keyword, const char* p, std::vector<typename Policy::Value>& values,
                        std::uint64_t limit)
    {
        Policy policy;
        return read_values(keyword, p, values, limit, policy);
    }
    /// In 32 bits as long as all numbers pass the policy, else in 64.
    template <class FloatPolicy>
    Outcome read_reals(const Keyword& keyword, const char* p, Reals& values, std::uint64_t limit, bool as_double);
    /// Throws unless the outcome is a complete array; returns its end.
    const char* check(const Keyword& keyword, const Outcome& outcome, std::uint64_t expected, const std::string& why);
    void claim(const Keyword& keyword, std::uint64_t bytes);
    void release(std::uint64_t bytes) { claimed_ -= std::min(bytes, claimed_); }

    // --- comments that hold more -------------------------------------------------------------------------------------

    const char* read_note(Source& source, const char* p);
    std::vector<Token> note_tokens(Source& source, const char* at, std::string_view line) const;
    /// The next line of the comment, without what marks it; p stands at the end of the line before and moves on.
    std::optional<std::string> note_line(Source& source, const char*& p) const;
    /// Run lengths of a region; flags where the size is known already. False when they do not read.
    bool read_runs(Source& source, const char*& p, RegionNote& note);

    // --- the end -----------------------------------------------------------------------------------------------------

    void finish(const std::string& name);
    void make_block_centred(const std::string& name);
    /// Units of the arrays that a simulator knows, where a deck states its system of units.
    void state_units();
    void check_faults();
    void check_notes(const std::string& name);
    /// Memory for the flags of a region.
    void claim_region(RegionNote& note);

    struct FaultPlace {
        std::string file;
        std::int64_t line;
    };

    const ReadOptions& options_;
    TextWindow window_;
    std::uint64_t max_bytes_;
    std::uint64_t claimed_ = 0;
    ReadResult result_;
    MessageLog log_;
    std::filesystem::path root_folder_;
    std::vector<std::shared_ptr<Source>> stack_;
    std::uint64_t total_bytes_ = 0;
    std::uint64_t finished_bytes_ = 0;
    double progress_ = 0;

    Section section_ = Section::None;
    bool stopped_ = false; ///< END or the sections behind the grid's
    bool size_known_ = false;
    std::string size_origin_; ///< "SPECGRID in FILE:LINE"
    std::vector<Deferred> deferred_;
    bool has_coord_ = false;
    bool has_zcorn_ = false;
    Reals tops_; ///< of the top layer or of all cells
    std::array<std::vector<double>, 3> lines_; ///< DXV, DYV, DZV
    std::optional<std::array<IndexRange, 3>> box_;
    bool arrays_set_by_operations_ = false;

    bool own_ = false; ///< written by this program, which states the units of properties itself
    std::optional<PropertyNote> note_;
    std::optional<std::pair<std::string, std::int64_t>> from_;
    std::vector<RegionNote> regions_;
    std::vector<FaultPlace> fault_places_;
};

} // namespace lodex::grdecl
