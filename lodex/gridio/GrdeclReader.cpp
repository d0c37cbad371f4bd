#include <lodex/gridio/GrdeclReader.h>

#include <lodex/gridio/GrdeclKeywords.h>
#include <lodex/gridio/MessageLog.h>
#include <lodex/gridio/TextNumbers.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <new>
#include <sys/mman.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace lodex::grdecl {

namespace {

constexpr std::size_t padding = 64;             ///< readable zero bytes behind a text
constexpr std::size_t tick_bytes = 256 * 1024;  ///< text between two looks at the progress
constexpr std::size_t most_depth = 20;          ///< INCLUDE within INCLUDE
constexpr std::size_t most_files = 10'000;      ///< a few files that include each other twice could go on for ever
constexpr std::size_t most_tokens = 10'000;     ///< of one record that is no array
constexpr std::int64_t most_cells = 1'000'000'000'000;
constexpr std::int32_t undefined_code = std::numeric_limits<std::int32_t>::min();

bool is_space(char c)
{
    return c == ' ' || (c >= '\t' && c <= '\r');
}

struct FreeText {
    void operator()(char* text) const { std::free(text); }
};
using TextBuffer = std::unique_ptr<char[], FreeText>;

/// Memory for a text, not cleared; null when there is not enough. Large texts lie on large pages where the system has
/// them: on small ones the page faults cost as much as the copying.
TextBuffer make_text_buffer(std::size_t bytes)
{
    constexpr std::size_t large_page = 2 * 1024 * 1024;
    if (bytes < 2 * large_page) {
        return TextBuffer(static_cast<char*>(std::malloc(bytes)));
    }
    const std::size_t rounded = (bytes + large_page - 1) / large_page * large_page;
    TextBuffer buffer(static_cast<char*>(std::aligned_alloc(large_page, rounded)));
    if (buffer) {
        [[maybe_unused]] const int result = ::madvise(buffer.get(), rounded, MADV_HUGEPAGE);
    }
    return buffer;
}

/// One text in memory: a file, or what the caller gave.
struct Source {
    std::string shown;     ///< for messages
    std::filesystem::path folder;
    std::string kept_name; ///< for KeptKeyword::file
    TextBuffer storage;
    const char* begin = nullptr;
    const char* end = nullptr; ///< padding zero bytes follow
    const char* pos = nullptr;
    dev_t device = 0;
    ino_t node = 0;

    std::int64_t line_of(const char* p)
    {
        if (p < counted_to_) {
            counted_to_ = begin;
            lines_ = 1;
        }
        lines_ += std::count(counted_to_, p, '\n');
        counted_to_ = p;
        return lines_;
    }
    void start()
    {
        counted_to_ = begin;
        pos = begin;
        constexpr std::string_view byte_order_mark = "\xEF\xBB\xBF";
        if (std::string_view(begin, end).starts_with(byte_order_mark)) {
            pos += byte_order_mark.size();
        }
    }

private:
    const char* counted_to_ = nullptr;
    std::int64_t lines_ = 1;
};

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

enum class Stop { Slash, End, Text, BadRepeat, Misfit, Range };

struct Outcome {
    Stop stop = Stop::Slash;
    const char* end = nullptr;   ///< where reading stopped, behind the slash for Stop::Slash
    std::uint64_t count = 0;     ///< values met, beyond the limit as well
    std::uint64_t defaults = 0;
    const char* surplus = nullptr; ///< first value beyond the limit
};

/// For numbers that stand for themselves: 32 bits do when they give the same decimals again.
struct DecimalFloatPolicy {
    using Value = float;
    Stop put(const Decimal& number, float& value) const
    {
        value = to_float(number);
        return fits_float(number, value) ? Stop::Slash : Stop::Misfit;
    }
    static float undefined() { return std::numeric_limits<float>::quiet_NaN(); }
};

/// Where differences of neighbours count, 32 bits do only for numbers that they hold exactly.
struct ExactFloatPolicy {
    using Value = float;
    Stop put(const Decimal& number, float& value) const
    {
        const double exact = to_double(number);
        value = static_cast<float>(exact);
        return static_cast<double>(value) == exact && !number.cut ? Stop::Slash : Stop::Misfit;
    }
    static float undefined() { return std::numeric_limits<float>::quiet_NaN(); }
};

struct DoublePolicy {
    using Value = double;
    Stop put(const Decimal& number, double& value) const
    {
        value = to_double(number);
        return std::isinf(value) ? Stop::Range : Stop::Slash;
    }
    static double undefined() { return std::numeric_limits<double>::quiet_NaN(); }
};

struct IntegerPolicy {
    using Value = std::int32_t;
    Stop put(const Decimal& number, std::int32_t& value) const
    {
        const auto integer = to_integer(number);
        value = integer.value_or(0);
        return integer ? Stop::Slash : Stop::Misfit;
    }
    static std::int32_t undefined() { return undefined_code; }
};

struct ActivePolicy {
    using Value = std::uint8_t;
    std::int32_t least = std::numeric_limits<std::int32_t>::max();
    std::int32_t most = 0;
    Stop put(const Decimal& number, std::uint8_t& value)
    {
        const auto integer = to_integer(number);
        if (!integer || *integer < 0) {
            return Stop::Misfit;
        }
        least = std::min(least, *integer);
        most = std::max(most, *integer);
        value = *integer != 0 ? 1 : 0;
        return Stop::Slash;
    }
    static std::uint8_t undefined() { return 1; }
};

std::uint64_t three_quarters_of_memory()
{
    const long pages = ::sysconf(_SC_PHYS_PAGES);
    const long page = ::sysconf(_SC_PAGESIZE);
    constexpr std::uint64_t fallback = std::uint64_t{1} << 32;
    return pages > 0 && page > 0 ? static_cast<std::uint64_t>(pages) / 4 * 3 * static_cast<std::uint64_t>(page) : fallback;
}

/// Text from a file for a message: on one line, not too long.
std::string in_quotes(std::string_view text)
{
    constexpr std::size_t most = 40;
    std::string result = to_utf8(text.substr(0, most));
    for (char& c : result) {
        c = static_cast<unsigned char>(c) < 0x20 || c == 0x7F ? '?' : c;
    }
    return '"' + result + (text.size() > most ? "...\"" : "\"");
}

std::string trimmed(std::string_view text)
{
    while (!text.empty() && is_space(text.back())) {
        text.remove_suffix(1);
    }
    while (!text.empty() && is_space(text.front())) {
        text.remove_prefix(1);
    }
    return std::string(text);
}

std::string size_text(const GridSize& size)
{
    return std::to_string(size[0]) + " x " + std::to_string(size[1]) + " x " + std::to_string(size[2]);
}

/// The 64-bit number whose shortest text is that of the 32-bit number: 294.12f gives 294.12.
double decimal_double(float value)
{
    std::array<char, 64> text{};
    std::to_chars(text.data(), text.data() + text.size() - 1, value);
    Decimal number;
    parse_decimal(text.data(), number);
    return to_double(number);
}

/// In 32 bits when these hold all numbers exactly.
RealArray narrowed(std::vector<double> values)
{
    const auto exact = [](double value) { return static_cast<double>(static_cast<float>(value)) == value; };
    if (!std::all_of(values.begin(), values.end(), exact)) {
        return values;
    }
    return std::vector<float>(values.begin(), values.end());
}

/// One number per cell, or the same for all cells along two axes.
class BlockSizes {
public:
    BlockSizes(const PropertyData* cells, const std::vector<double>& line, int axis) : line_(&line), axis_(axis)
    {
        if (cells == nullptr) {
            return;
        }
        from_line_ = false;
        values_ = std::visit(
            [](const auto& v) {
                std::vector<double> result(v.size());
                double last = 0;
                for (std::size_t i = 0; i < v.size(); ++i) {
                    if (i == 0 || v[i] != v[i - 1]) {
                        if constexpr (std::is_same_v<decltype(v[i]), const float&>) {
                            last = decimal_double(v[i]);
                        } else {
                            last = static_cast<double>(v[i]);
                        }
                    }
                    result[i] = last;
                }
                return result;
            },
            cells->values);
    }
    [[nodiscard]] double at(const GridModel& model, std::int64_t i, std::int64_t j, std::int64_t k) const
    {
        if (from_line_) {
            return (*line_)[static_cast<std::size_t>(axis_ == 0 ? i : axis_ == 1 ? j : k)];
        }
        return values_[static_cast<std::size_t>(model.cell_index(i, j, k))];
    }
    [[nodiscard]] bool from_line() const { return from_line_; }

private:
    std::vector<double> values_;
    const std::vector<double>* line_;
    int axis_;
    bool from_line_ = true;
};

class Reader {
public:
    explicit Reader(const ReadOptions& options)
        : options_(options), max_bytes_(options.max_bytes > 0 ? options.max_bytes : three_quarters_of_memory())
    {
        if (options.size) {
            result_.model.size = *options.size;
            size_known_ = true;
        }
    }

    ReadResult read_file(const std::filesystem::path& path)
    {
        root_folder_ = path.parent_path();
        push(load(path, path.string(), path.filename().string(), ""));
        return run(path.string());
    }

    ReadResult read_text(std::string_view text, const std::filesystem::path& name)
    {
        root_folder_ = name.parent_path();
        auto source = std::make_shared<Source>();
        source->shown = name.string();
        source->folder = root_folder_;
        source->kept_name = name.filename().string();
        source->storage = make_text_buffer(text.size() + padding);
        if (!source->storage) {
            throw std::bad_alloc();
        }
        std::copy(text.begin(), text.end(), source->storage.get());
        std::memset(source->storage.get() + text.size(), 0, padding);
        source->begin = source->storage.get();
        source->end = source->begin + text.size();
        source->start();
        total_bytes_ += text.size();
        push(std::move(source));
        return run(name.string());
    }

private:
    // --- files -------------------------------------------------------------------------------------------------------

    std::shared_ptr<Source> load(const std::filesystem::path& path, std::string shown, std::string kept_name,
                                 const std::string& context);
    void push(std::shared_ptr<Source> source)
    {
        stack_.push_back(std::move(source));
    }
    ReadResult run(const std::string& name);
    void include(const Keyword& keyword);

    // --- text --------------------------------------------------------------------------------------------------------

    [[noreturn]] void fail(Source& source, const char* at, std::string reason) const
    {
        throw FileError(source.shown, source.line_of(at), std::move(reason));
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

    static bool is_comment(const char* p) { return p[0] == '-' && p[1] == '-'; }
    static bool is_token_end(const char* p)
    {
        return is_space(*p) || *p == '/' || *p == '\0' || is_comment(p);
    }
    static const char* line_end(const Source& source, const char* p)
    {
        const auto* const found =
            static_cast<const char*>(std::memchr(p, '\n', static_cast<std::size_t>(source.end - p)));
        return found == nullptr ? source.end : found;
    }
    /// The next character that is neither space nor comment, or the end.
    static const char* skip_space(const Source& source, const char* p)
    {
        for (;;) {
            while (is_space(*p)) {
                ++p;
            }
            if (!is_comment(p)) {
                return std::min(p, source.end);
            }
            p = line_end(source, p);
        }
    }
    static bool first_on_line(const Source& source, const char* p)
    {
        while (p > source.begin && p[-1] != '\n') {
            if (!is_space(*--p)) {
                return false;
            }
        }
        return true;
    }
    static std::string_view word_at(const char* p)
    {
        const char* const start = p;
        while (!is_token_end(p) && *p != '\'' && *p != '"') {
            ++p;
        }
        return {start, static_cast<std::size_t>(p - start)};
    }
    static bool alone_on_line(const Source& source, const char* after)
    {
        while (after < source.end && *after != '\n' && is_space(*after)) {
            ++after;
        }
        return after >= source.end || *after == '\n' || is_comment(after);
    }
    /// True when a keyword begins at p: a word of its form, the first on its line, and alone there or a known one.
    static bool keyword_begins(const Source& source, const char* p, bool known_only)
    {
        if (!((*p >= 'A' && *p <= 'Z') || (*p >= 'a' && *p <= 'z')) || !first_on_line(source, p)) {
            return false;
        }
        const std::string_view word = word_at(p);
        if (!is_keyword(word)) {
            return false;
        }
        const KeywordInfo info = keyword_info(upper(word));
        const char* const after = p + word.size();
        if (alone_on_line(source, after)) {
            return info.known || !known_only;
        }
        // Names of arrays are data of some keywords; with a number behind them they are keywords themselves.
        const char* const next = skip_space(source, after);
        return !known_only && info.known && (!info.cell_array || text_numbers::is_digit(*next) || *next == '-' || *next == '.');
    }

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
    std::vector<std::string> note_lines(const Source& source, const char*& p) const;

    // --- the end -----------------------------------------------------------------------------------------------------

    void finish(const std::string& name);
    void make_block_centred(const std::string& name);
    void check_faults();
    void check_notes(const std::string& name);

    struct FaultPlace {
        std::shared_ptr<Source> source;
        const char* at;
    };
    struct RegionNote {
        RegionData region;
        std::vector<std::int64_t> runs;
        std::shared_ptr<Source> source;
        std::int64_t line;
    };

    const ReadOptions& options_;
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
    std::vector<double> tops_; ///< of the top layer or of all cells
    std::array<std::vector<double>, 3> lines_; ///< DXV, DYV, DZV
    std::optional<std::array<IndexRange, 3>> box_;
    bool arrays_set_by_operations_ = false;

    std::optional<PropertyNote> note_;
    std::optional<std::pair<std::string, std::int64_t>> from_;
    std::vector<RegionNote> regions_;
    std::vector<FaultPlace> fault_places_;
};

// ---------------------------------------------------------------------------------------------------------------------

std::shared_ptr<Source> Reader::load(const std::filesystem::path& path, std::string shown, std::string kept_name,
                                     const std::string& context)
{
    const auto failed = [&](const std::string& reason) { return FileError(shown, 0, context + reason); };
    const auto system = [](int error) { return std::generic_category().message(error); };
    // Not blocking: a named pipe would otherwise wait for a writer.
    const int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (descriptor < 0) {
        throw failed("cannot be read: " + system(errno));
    }
    struct Closer {
        int descriptor;
        ~Closer() { ::close(descriptor); }
    } closer{descriptor};
    struct stat status {};
    if (::fstat(descriptor, &status) != 0) {
        throw failed("cannot be read: " + system(errno));
    }
    if (!S_ISREG(status.st_mode)) {
        throw failed(S_ISDIR(status.st_mode) ? "is a folder, expected a file" : "is not a regular file");
    }
    const auto size = static_cast<std::size_t>(status.st_size);
    auto source = std::make_shared<Source>();
    source->device = status.st_dev;
    source->node = status.st_ino;
    for (const auto& open : stack_) {
        if (open->device == source->device && open->node == source->node) {
            throw failed("includes itself");
        }
    }
    source->storage = make_text_buffer(size + padding);
    if (!source->storage) {
        throw failed("does not fit into memory (" + std::to_string(size) + " bytes)");
    }
    std::size_t count = 0;
    constexpr std::size_t piece = 8 * 1024 * 1024;
    for (;;) {
        // One byte more than the size shows a file that grows.
        const std::size_t wanted = std::min(piece, size + 1 - count);
        const ssize_t got = ::read(descriptor, source->storage.get() + count, wanted);
        if (got < 0 && errno == EINTR) {
            continue;
        }
        if (got < 0) {
            throw failed("cannot be read: " + system(errno));
        }
        if (got == 0) {
            break;
        }
        count += static_cast<std::size_t>(got);
        if (count > size) {
            break;
        }
        if (options_.progress && !options_.progress(progress_)) {
            throw Cancelled{};
        }
    }
    if (count != size) {
        throw failed("changed while it was read (" + std::to_string(size) + " bytes at first, then "
                     + (count < size ? std::to_string(count) : "more") + ")");
    }
    std::memset(source->storage.get() + size, 0, padding);
    source->begin = source->storage.get();
    source->end = source->begin + size;
    source->shown = std::move(shown);
    source->kept_name = std::move(kept_name);
    source->folder = path.parent_path();
    source->start();
    total_bytes_ += size;
    result_.files.push_back(path);
    result_.bytes += size;
    return source;
}

ReadResult Reader::run(const std::string& name)
{
    Keyword keyword;
    while (!stack_.empty()) {
        keyword.source = stack_.back();
        if (!stopped_ && next_keyword(keyword)) {
            handle(keyword);
            tick(*keyword.source, keyword.source->pos);
        } else {
            finished_bytes_ += static_cast<std::uint64_t>(keyword.source->end - keyword.source->begin);
            stack_.pop_back();
        }
    }
    finish(name);
    result_.messages = log_.take();
    if (options_.progress && !options_.progress(1)) {
        throw Cancelled{};
    }
    return std::move(result_);
}

void Reader::tick(const Source& source, const char* at)
{
    if (!options_.progress) {
        return;
    }
    std::uint64_t done = finished_bytes_;
    for (const auto& open : stack_) {
        done += static_cast<std::uint64_t>((open.get() == &source ? at : open->pos) - open->begin);
    }
    // Included files make the whole grow; what is shown never goes back.
    constexpr double almost = 0.99;
    progress_ = std::max(progress_,
                         almost * static_cast<double>(done) / static_cast<double>(std::max<std::uint64_t>(total_bytes_, 1)));
    progress_ = std::min(progress_, almost);
    if (!options_.progress(progress_)) {
        throw Cancelled{};
    }
}

bool Reader::next_keyword(Keyword& keyword)
{
    Source& source = *keyword.source;
    const char* p = source.pos;
    std::string_view word;
    for (;;) {
        while (is_space(*p)) {
            ++p;
        }
        if (p >= source.end) {
            source.pos = source.end;
            return false;
        }
        if (is_comment(p)) {
            p = std::string_view(p, static_cast<std::size_t>(source.end - p)).starts_with(note_prefix)
                ? read_note(source, p)
                : line_end(source, p);
            continue;
        }
        if (*p == '\0') {
            fail_binary(source, p);
        }
        if (*p == '/') {
            inform("slashes that end nothing", source, p, "'/' that ends nothing");
            p = line_end(source, p);
            continue;
        }
        word = word_at(p);
        if (is_keyword(word)) {
            break;
        }
        if (section_ == Section::None || section_ == Section::Grid) {
            fail(source, p, in_quotes(word.empty() ? std::string_view(p, 1) : word)
                                + " found where a keyword is expected");
        }
        // Outside the grid's section nothing is interpreted, so nothing need make sense.
        const char* const end = line_end(source, p);
        warn("lines that are no keyword", source, p,
             in_quotes({p, static_cast<std::size_t>(end - p)}) + " is passed over, expected a keyword");
        p = end;
    }
    keyword.start = p;
    keyword.after = p + word.size();
    keyword.name = std::string(word);
    keyword.upper = upper(word);
    source.pos = keyword.after;
    return true;
}

const char* Reader::read_quoted(Source& source, const char* p, std::string& text) const
{
    const char quote = *p;
    const char* const start = p + 1;
    for (p = start; p < source.end && *p != quote && *p != '\n'; ++p) {
    }
    if (p >= source.end || *p != quote) {
        fail(source, start - 1, "the quote before " + in_quotes(std::string_view(start, static_cast<std::size_t>(p - start)))
                                    + " is not closed on its line");
    }
    text.assign(start, p);
    return p + 1;
}

std::vector<Token> Reader::read_record(const Keyword& keyword, const char*& end)
{
    Source& source = *keyword.source;
    std::vector<Token> tokens;
    const char* p = end;
    for (;;) {
        p = skip_space(source, p);
        if (p >= source.end) {
            fail(source, keyword.start, keyword.name + ": the file ends before the closing '/'");
        }
        if (*p == '/') {
            end = p + 1;
            return tokens;
        }
        if (*p == '\0') {
            fail_binary(source, p);
        }
        Token token;
        token.at = p;
        std::uint64_t repeat = 1;
        Decimal number;
        const char* const behind = parse_decimal(p, number);
        if (behind != p && *behind == '*' && number.integer && !number.negative && !number.cut) {
            repeat = number.digits;
            p = behind + 1;
            token.is_default = is_token_end(p);
        }
        if (!token.is_default) {
            if (*p == '\'' || *p == '"') {
                p = read_quoted(source, p, token.text);
                token.quoted = true;
            } else {
                const std::string_view word = word_at(p);
                if (word.empty()) {
                    fail(source, p, keyword.name + ": " + in_quotes({p, 1}) + " is not expected here");
                }
                token.text = std::string(word);
                p += word.size();
            }
        }
        if (repeat == 0 || repeat > most_tokens || tokens.size() + repeat > most_tokens) {
            fail(source, token.at, keyword.name + ": repeat count " + std::string(number.text) + ", expected 1 to "
                                       + std::to_string(most_tokens));
        }
        tokens.insert(tokens.end(), repeat, token);
        if (keyword_begins(source, token.at, true) && !token.quoted) {
            fail(source, token.at, keyword.name + ": found keyword " + in_quotes(token.text)
                                       + " before the closing '/'");
        }
    }
}

std::int64_t Reader::whole_number(const Keyword& keyword, const std::vector<Token>& tokens, std::size_t index,
                                  const char* meaning, std::int64_t least, std::optional<std::int64_t> default_value)
{
    Source& source = *keyword.source;
    const std::string expected =
        " for " + std::string(meaning) + ", expected a whole number from " + std::to_string(least) + " on";
    if (index >= tokens.size() || tokens[index].is_default) {
        if (default_value) {
            return *default_value;
        }
        fail(source, index < tokens.size() ? tokens[index].at : keyword.start, keyword.name + ": no value" + expected);
    }
    const Token& token = tokens[index];
    std::int64_t value = 0;
    const char* const first = token.text.data();
    const char* const last = first + token.text.size();
    const auto [end, error] = std::from_chars(first, last, value);
    if (error != std::errc{} || end != last || value < least) {
        fail(source, token.at, keyword.name + ": " + in_quotes(token.text) + expected);
    }
    return value;
}

const char* Reader::records_end(const Keyword& keyword)
{
    Source& source = *keyword.source;
    const char* kept = keyword.after;
    const char* p = keyword.after;
    const char* checkpoint = p + tick_bytes;
    bool open = false;
    for (;;) {
        p = skip_space(source, p);
        if (p >= checkpoint) {
            tick(source, p);
            checkpoint = p + tick_bytes;
        }
        if (p >= source.end) {
            if (open) {
                warn("keywords without a closing '/'", source, keyword.start,
                     keyword.name + ": the file ends before the closing '/'");
                kept = source.end;
                while (kept > keyword.after && is_space(kept[-1])) {
                    --kept;
                }
            }
            return kept;
        }
        if (*p == '\0') {
            fail_binary(source, p);
        }
        if (*p == '/') {
            kept = p + 1;
            open = false;
            p = line_end(source, p);
            continue;
        }
        if (keyword_begins(source, p, open)) {
            if (open) {
                warn("keywords without a closing '/'", source, p,
                     keyword.name + ": found keyword " + in_quotes(word_at(p)) + " before the closing '/'");
                kept = p;
                while (kept > keyword.after && is_space(kept[-1])) {
                    --kept;
                }
            }
            return kept;
        }
        open = true;
        if (*p == '\'' || *p == '"') {
            std::string text;
            p = read_quoted(source, p, text);
        } else {
            const std::string_view word = word_at(p);
            p += std::max<std::size_t>(word.size(), 1);
        }
    }
}

const char* Reader::list_end(const Keyword& keyword)
{
    Source& source = *keyword.source;
    const char* kept = keyword.after;
    const char* p = keyword.after;
    bool open = false;
    for (;;) {
        p = skip_space(source, p);
        if (p >= source.end || (!open && keyword_begins(source, p, true))) {
            warn("keywords without a closing '/'", source, keyword.start,
                 keyword.name + ": the list is not closed by a '/' of its own");
            if (open) {
                kept = p;
                while (kept > keyword.after && is_space(kept[-1])) {
                    --kept;
                }
            }
            return kept;
        }
        if (*p == '\0') {
            fail_binary(source, p);
        }
        if (*p == '/') {
            kept = p + 1;
            if (!open) {
                return kept;
            }
            open = false;
            p = line_end(source, p);
            continue;
        }
        open = true;
        if (*p == '\'' || *p == '"') {
            std::string text;
            p = read_quoted(source, p, text);
        } else {
            p += std::max<std::size_t>(word_at(p).size(), 1);
        }
    }
}

const char* Reader::data_end(const Keyword& keyword, const KeywordInfo& info)
{
    Source& source = *keyword.source;
    switch (info.layout) {
    case Layout::Flag: {
        // What stands behind a flag on its line is decoration, a slash on the next line belongs to it.
        const char* const next = skip_space(source, keyword.after);
        if (*next == '/') {
            return next + 1;
        }
        const char* const end = line_end(source, keyword.after);
        const char* last = keyword.after;
        for (const char* p = keyword.after; p < end && !is_comment(p); ++p) {
            last = is_space(*p) ? last : p + 1;
        }
        return last;
    }
    case Layout::List:
        return list_end(keyword);
    case Layout::Record: {
        const char* end = keyword.after;
        [[maybe_unused]] const auto tokens = read_record(keyword, end);
        return end;
    }
    case Layout::NextLine: {
        const char* p = line_end(source, keyword.after);
        p = line_end(source, std::min(p + 1, source.end));
        return p > source.begin && p[-1] == '\r' ? p - 1 : p;
    }
    case Layout::Block: {
        for (const char* p = line_end(source, keyword.after); p < source.end; p = line_end(source, p)) {
            ++p;
            const char* word = p;
            while (is_space(*word) && *word != '\n') {
                ++word;
            }
            const std::string_view found = word_at(word);
            if (upper(found) == info.closed_by) {
                return word + found.size();
            }
        }
        fail(source, keyword.start, keyword.name + ": the file ends before " + std::string(info.closed_by));
    }
    case Layout::Unknown:
        break;
    }
    return records_end(keyword);
}

void Reader::keep(const Keyword& keyword, const char* end, bool quiet)
{
    Source& source = *keyword.source;
    KeptKeyword kept;
    kept.name = keyword.name;
    kept.text.assign(keyword.after, end);
    kept.file = source.kept_name;
    kept.line = source.line_of(keyword.start);
    if (from_) {
        kept.file = from_->first;
        kept.line = from_->second;
        from_.reset();
    }
    result_.model.kept.push_back(std::move(kept));
    if (!quiet) {
        inform("keywords kept as text", source, keyword.start, keyword.name + " is kept as text");
    }
    finish_keyword(keyword, end);
}

void Reader::keep_rest(const Keyword& keyword)
{
    Source& source = *keyword.source;
    inform("keywords kept as text", source, keyword.start,
           keyword.name + " and what follows is kept as text; files that it includes are not read");
    keep(keyword, source.end, true);
    source.pos = source.end;
    for (auto open = stack_.rbegin() + 1; open < stack_.rend(); ++open) {
        result_.model.kept.back().text.append((*open)->pos, (*open)->end);
    }
    stopped_ = true;
}

void Reader::handle(const Keyword& keyword)
{
    Source& source = *keyword.source;
    const KeywordInfo info = keyword_info(keyword.upper);
    if (const Section section = section_of(keyword.upper); section != Section::None) {
        section_ = section;
        box_.reset();
        if (section == Section::Summary || section == Section::Schedule) {
            keep_rest(keyword);
        } else {
            keep(keyword, data_end(keyword, info), true);
        }
    } else if (keyword.upper == "INCLUDE") {
        include(keyword);
    } else if (keyword.upper == "END") {
        keep(keyword, keyword.after, true);
        stopped_ = true;
    } else if (keyword.upper == "ENDINC") {
        source.pos = source.end;
    } else if (keyword.upper == "SPECGRID" || keyword.upper == "DIMENS") {
        read_size(keyword);
    } else if (keyword.upper == "RADIAL") {
        fail(source, keyword.start, "RADIAL: radial grids are not supported, expected corner-point or block geometry");
    } else if (keyword.upper == "MAPAXES") {
        read_map_axes(keyword);
    } else if (keyword.upper == "MAPUNITS" || keyword.upper == "GRIDUNIT") {
        const char* end = keyword.after;
        const auto tokens = read_record(keyword, end);
        const auto text = [&tokens](std::size_t i) {
            return i < tokens.size() && !tokens[i].is_default ? to_utf8(trimmed(tokens[i].text)) : std::string();
        };
        GridFrame& frame = result_.model.frame;
        if (keyword.upper == "MAPUNITS") {
            frame.map_units = text(0);
        } else {
            frame.grid_units = text(0);
            frame.grid_units_map = upper(text(1)) == "MAP";
        }
        finish_keyword(keyword, end);
    } else if (keyword.upper == "FAULTS" && section_ != Section::Runspec) {
        read_faults(keyword);
    } else if (keyword.upper == "BOX") {
        read_box(keyword);
    } else if (info.changes_arrays) {
        arrays_set_by_operations_ = true;
        warn("operations that are not applied", source, keyword.start,
             keyword.name + " is kept as text and not applied: arrays hold the numbers of the file");
        keep(keyword, list_end(keyword), true);
    } else if (may_be_array(keyword, info)) {
        const bool needs_size = keyword.upper != "DXV" && keyword.upper != "DYV" && keyword.upper != "DZV";
        if (!size_known_ && needs_size) {
            const char* const end = skip_numbers(keyword);
            deferred_.push_back({keyword, section_, std::move(note_)});
            finish_keyword(keyword, end);
        } else if (const char* const end = read_array(keyword, info)) {
            finish_keyword(keyword, end);
        } else {
            keep(keyword, data_end(keyword, info), false);
        }
    } else {
        if (keyword.upper == "ENDBOX") {
            box_.reset();
        }
        keep(keyword, data_end(keyword, info), info.layout == Layout::Flag);
    }
    note_.reset();
    from_.reset();
}

bool Reader::may_be_array(const Keyword& keyword, const KeywordInfo& info) const
{
    if (keyword.upper == "COORD" || keyword.upper == "ZCORN" || keyword.upper == "ACTNUM" || keyword.upper == "TOPS"
        || keyword.upper == "DXV" || keyword.upper == "DYV" || keyword.upper == "DZV") {
        return section_ != Section::Runspec;
    }
    if (section_ == Section::Runspec || info.never_array || info.layout != Layout::Unknown) {
        return false;
    }
    if (!info.cell_array && (section_ == Section::Props || section_ == Section::Solution)) {
        return false; // tables
    }
    const char* const p = skip_space(*keyword.source, keyword.after);
    return text_numbers::is_digit(*p) || *p == '.' || *p == '-' || *p == '+';
}

const char* Reader::skip_numbers(const Keyword& keyword)
{
    Source& source = *keyword.source;
    const char* p = keyword.after;
    const char* checkpoint = p + tick_bytes;
    for (;;) {
        p = skip_space(source, p);
        if (p >= checkpoint) {
            tick(source, p);
            checkpoint = p + tick_bytes;
        }
        if (p >= source.end) {
            fail(source, keyword.start, keyword.name + ": the file ends before the closing '/'");
        }
        if (*p == '/') {
            return p + 1;
        }
        if (*p == '\0') {
            fail_binary(source, p);
        }
        if (keyword_begins(source, p, false)) {
            return p; // without a closing slash, which is looked at when the numbers are read
        }
        // Far: letters, slashes and comments end it.
        for (++p; is_space(*p) || (*p >= '*' && *p <= '9' && *p != '/' && !is_comment(p)); ++p) {
        }
    }
}

// ---------------------------------------------------------------------------------------------------------------------

void Reader::include(const Keyword& keyword)
{
    Source& source = *keyword.source;
    const char* p = skip_space(source, keyword.after);
    std::string text;
    if (*p == '\'' || *p == '"') {
        p = read_quoted(source, p, text);
    } else {
        // A path without quotes may hold slashes; the closing one stands alone or last.
        const char* const start = p;
        while (p < source.end && !is_space(*p) && *p != '\0') {
            ++p;
        }
        text.assign(start, p);
        if (text.size() > 1 && text.back() == '/') {
            text.pop_back();
            --p;
        }
    }
    text = trimmed(text);
    if (text.empty() || text == "/") {
        fail(source, keyword.start, "INCLUDE: no file name, expected a path");
    }
    const char* const slash = skip_space(source, p);
    if (*slash == '/') {
        p = slash + 1;
    } else {
        warn("keywords without a closing '/'", source, keyword.start, "INCLUDE: the closing '/' is missing");
    }

    std::vector<std::string> spellings{text};
    if (text.find('\\') != std::string::npos) {
        spellings.push_back(text);
        std::replace(spellings.back().begin(), spellings.back().end(), '\\', '/');
    }
    std::vector<std::filesystem::path> folders{source.folder};
    if (root_folder_ != source.folder) {
        folders.push_back(root_folder_);
    }
    std::filesystem::path found;
    for (const auto& spelling : spellings) {
        for (const auto& folder : folders) {
            std::error_code ignored;
            if (const auto candidate = folder / spelling; found.empty() && std::filesystem::exists(candidate, ignored)) {
                found = candidate.lexically_normal();
            }
        }
    }
    if (found.empty()) {
        const std::string reason = "INCLUDE: there is no file " + in_quotes(text);
        const bool geometry = section_ == Section::None || section_ == Section::Grid;
        if (geometry && !options_.properties_only) {
            fail(source, keyword.start, reason);
        }
        warn("included files that are not there", source, keyword.start, reason + "; the keyword is kept as text");
        keep(keyword, p, true);
        return;
    }
    finish_keyword(keyword, p);
    if (stack_.size() >= most_depth) {
        fail(source, keyword.start, "INCLUDE " + in_quotes(text) + ": files include each other more than "
                                        + std::to_string(most_depth) + " deep");
    }
    if (result_.files.size() >= most_files) {
        fail(source, keyword.start, "INCLUDE " + in_quotes(text) + ": more than " + std::to_string(most_files)
                                        + " files are included");
    }
    const std::filesystem::path given(text);
    std::string kept_name = given.filename().string();
    if (given.is_relative()) {
        if (const auto relative = found.lexically_relative(root_folder_.lexically_normal()); !relative.empty()) {
            kept_name = relative.generic_string();
        } else {
            kept_name = found.generic_string();
        }
    }
    try {
        push(load(found, found.string(), kept_name, ""));
    } catch (const FileError& error) {
        fail(source, keyword.start, "INCLUDE " + in_quotes(text) + ": " + error.reason());
    }
}

void Reader::read_size(const Keyword& keyword)
{
    Source& source = *keyword.source;
    const char* end = keyword.after;
    const auto tokens = read_record(keyword, end);
    GridSize size{};
    const std::array<const char*, 3> names = {"NI", "NJ", "NK"};
    for (std::size_t axis = 0; axis < 3; ++axis) {
        size[axis] = whole_number(keyword, tokens, axis, names[axis], 1);
    }
    if (keyword.upper == "SPECGRID") {
        const auto reservoirs = whole_number(keyword, tokens, 3, "the number of reservoirs", 1, 1);
        if (reservoirs != 1) {
            fail(source, keyword.start, "SPECGRID: " + std::to_string(reservoirs) + " reservoirs, expected 1");
        }
        if (tokens.size() > 4 && !tokens[4].is_default && upper(tokens[4].text) != "F"
            && upper(tokens[4].text) != "FALSE") {
            fail(source, tokens[4].at, "SPECGRID: coordinate type " + in_quotes(tokens[4].text)
                                           + ", expected F (radial coordinates are not supported)");
        }
    }
    finish_keyword(keyword, end);
    set_size(keyword, size);
}

void Reader::set_size(const Keyword& keyword, const GridSize& size)
{
    Source& source = *keyword.source;
    const auto too_many = [](std::int64_t a, std::int64_t b) { return a > most_cells / b; };
    if (size[0] > most_cells || size[1] > most_cells || size[2] > most_cells || too_many(size[0], size[1])
        || too_many(size[0] * size[1], size[2])) {
        fail(source, keyword.start, keyword.name + ": " + size_text(size) + " cells, expected "
                                        + std::to_string(most_cells) + " at most");
    }
    GridModel& model = result_.model;
    if (size_known_) {
        if (model.size != size) {
            fail(source, keyword.start, keyword.name + ": " + size_text(size) + " cells, expected " + size_text(model.size)
                                            + (size_origin_.empty() ? " as the grid has" : " as " + size_origin_ + " says"));
        }
        return;
    }
    model.size = size;
    size_known_ = true;
    size_origin_ = keyword.name + " in " + to_utf8(source.shown) + ':' + std::to_string(source.line_of(keyword.start));
    const auto deferred = std::move(deferred_);
    deferred_.clear();
    const Section section = section_;
    for (const Deferred& entry : deferred) {
        section_ = entry.section;
        note_ = entry.note;
        const char* const pos = entry.keyword.source->pos;
        const KeywordInfo info = keyword_info(entry.keyword.upper);
        if (read_array(entry.keyword, info) == nullptr) {
            keep(entry.keyword, data_end(entry.keyword, info), false);
        }
        entry.keyword.source->pos = pos;
    }
    section_ = section;
    note_.reset();
}

void Reader::read_map_axes(const Keyword& keyword)
{
    const char* end = keyword.after;
    const auto tokens = read_record(keyword, end);
    std::array<double, 6> axes{};
    if (tokens.size() != axes.size()) {
        fail(*keyword.source, keyword.start, "MAPAXES: " + std::to_string(tokens.size()) + " values, expected 6");
    }
    for (std::size_t i = 0; i < axes.size(); ++i) {
        Decimal number;
        const std::string text = tokens[i].text + '\n';
        const char* const behind = parse_decimal(text.c_str(), number);
        if (tokens[i].is_default || behind == text.c_str() || *behind != '\n' || std::isinf(to_double(number))) {
            fail(*keyword.source, tokens[i].at, "MAPAXES: " + in_quotes(tokens[i].is_default ? "1*" : tokens[i].text)
                                                    + " is not a number (value " + std::to_string(i + 1) + " of 6)");
        }
        axes[i] = to_double(number);
    }
    result_.model.frame.map_axes = axes;
    finish_keyword(keyword, end);
}

void Reader::read_faults(const Keyword& keyword)
{
    Source& source = *keyword.source;
    const char* end = keyword.after;
    for (;;) {
        const char* const start = skip_space(source, end);
        if (start >= source.end || keyword_begins(source, start, true)) {
            warn("keywords without a closing '/'", source, keyword.start,
                 "FAULTS: the list is not closed by a '/' of its own");
            end = start;
            break;
        }
        end = start;
        const auto tokens = read_record(keyword, end);
        if (tokens.empty()) {
            break;
        }
        constexpr std::size_t fields = 8;
        if (tokens.size() != fields) {
            fail(source, start, "FAULTS: " + std::to_string(tokens.size())
                                    + " values in a record, expected 8 (name, I1 I2 J1 J2 K1 K2, face)");
        }
        FaultSegment segment;
        segment.name = to_utf8(trimmed(tokens[0].text));
        const std::array<const char*, 6> names = {"I1", "I2", "J1", "J2", "K1", "K2"};
        std::array<std::int64_t, 6> indices{};
        for (std::size_t i = 0; i < indices.size(); ++i) {
            indices[i] = whole_number(keyword, tokens, i + 1, names[i], 1) - 1;
        }
        segment.i = {indices[0], indices[1]};
        segment.j = {indices[2], indices[3]};
        segment.k = {indices[4], indices[5]};
        segment.face = to_utf8(trimmed(tokens[7].text));
        const std::string face = upper(segment.face);
        constexpr std::string_view letters = "IJKXYZ";
        if (face.empty() || face.size() > 2 || letters.find(face[0]) == std::string_view::npos
            || (face.size() == 2 && face[1] != '-' && face[1] != '+')) {
            fail(source, tokens[7].at, "FAULTS: " + in_quotes(segment.face)
                                           + " for the face, expected X, Y, Z or I, J, K, with - or + behind it");
        }
        result_.model.faults.push_back(std::move(segment));
        fault_places_.push_back({keyword.source, start});
        end = line_end(source, end);
        tick(source, end);
    }
    finish_keyword(keyword, end);
}

void Reader::read_box(const Keyword& keyword)
{
    const char* end = keyword.after;
    const auto tokens = read_record(keyword, end);
    std::array<IndexRange, 3> box{};
    bool whole = true;
    for (std::size_t axis = 0; axis < 3; ++axis) {
        const std::int64_t count = std::max<std::int64_t>(result_.model.size[axis], 1);
        const auto first = whole_number(keyword, tokens, 2 * axis, "the first index", 1, 1);
        const auto last = whole_number(keyword, tokens, 2 * axis + 1, "the last index", 1, count);
        if (last < first || (size_known_ && last > count)) {
            fail(*keyword.source, keyword.start, "BOX: indices " + std::to_string(first) + " to " + std::to_string(last)
                                                     + ", expected a range within 1 to " + std::to_string(count));
        }
        box[axis] = {first - 1, last - 1};
        whole = whole && first == 1 && last == count;
    }
    box_.reset();
    if (!whole) {
        box_ = box;
    }
    keep(keyword, end, false);
}

// ---------------------------------------------------------------------------------------------------------------------

void Reader::claim(const Keyword& keyword, std::uint64_t bytes)
{
    if (bytes > max_bytes_ || claimed_ > max_bytes_ - bytes) {
        fail(*keyword.source, keyword.start,
             keyword.name + ": a grid of " + size_text(result_.model.size) + " cells asks for more memory than the "
                 + std::to_string(max_bytes_) + " bytes allowed");
    }
    claimed_ += bytes;
}

template <class Policy>
Outcome Reader::read_values(const Keyword& keyword, const char* p, std::vector<typename Policy::Value>& values,
                            std::uint64_t limit, Policy& policy)
{
    using Value = typename Policy::Value;
    Source& source = *keyword.source;
    // Each number takes two characters at least; only repeat counts make more of fewer.
    std::uint64_t room = std::min<std::uint64_t>(limit, static_cast<std::uint64_t>(source.end - p) / 2 + 1);
    const auto make_room = [&](std::uint64_t wanted) {
        claim(keyword, (wanted - values.size()) * sizeof(Value));
        try {
            values.resize(wanted);
        } catch (const std::bad_alloc&) {
            fail(source, keyword.start, keyword.name + ": not enough memory for " + std::to_string(wanted) + " values");
        }
        room = wanted;
    };
    make_room(room);
    Value* out = values.data();
    Outcome outcome;
    std::uint64_t count = 0;
    const char* checkpoint = p + tick_bytes;

    for (;;) {
        while (is_space(*p)) {
            ++p;
        }
        if (p >= checkpoint) [[unlikely]] {
            tick(source, p);
            checkpoint = p + tick_bytes;
        }
        Decimal number;
        const char* behind = parse_decimal(p, number);
        if (behind != p) [[likely]] {
            Value value{};
            if (is_token_end(behind)) [[likely]] {
                if (const Stop stop = policy.put(number, value); stop != Stop::Slash) [[unlikely]] {
                    outcome.stop = stop;
                    break;
                }
                if (count < room) [[likely]] {
                    out[count] = value;
                } else if (count < limit) {
                    make_room(std::min(limit, std::max(count + 1, room + room / 2)));
                    out = values.data();
                    out[count] = value;
                } else if (outcome.surplus == nullptr) {
                    outcome.surplus = p;
                }
                ++count;
                p = behind;
                continue;
            }
            if (*behind != '*') {
                outcome.stop = Stop::Text;
                break;
            }
            constexpr std::uint64_t most_repeats = std::uint64_t{1} << 62;
            const std::uint64_t repeats = number.digits;
            if (!number.integer || number.negative || number.cut || repeats == 0 || repeats > most_repeats
                || !text_numbers::is_digit(*p)) {
                outcome.stop = Stop::BadRepeat;
                break;
            }
            ++behind;
            if (is_token_end(behind)) {
                value = Policy::undefined();
                outcome.defaults += repeats;
            } else {
                const char* const start = behind;
                behind = parse_decimal(start, number);
                if (behind == start || !is_token_end(behind)) {
                    outcome.stop = Stop::Text;
                    break;
                }
                if (const Stop stop = policy.put(number, value); stop != Stop::Slash) {
                    outcome.stop = stop;
                    break;
                }
            }
            std::uint64_t stored = count < limit ? std::min(repeats, limit - count) : 0;
            if (stored < repeats && outcome.surplus == nullptr) {
                outcome.surplus = p;
            }
            if (count + stored > room) {
                make_room(std::min(limit, std::max(count + stored, room + room / 2)));
                out = values.data();
            }
            for (std::uint64_t done = 0; done < stored;) {
                constexpr std::uint64_t piece = 4 * 1024 * 1024;
                const std::uint64_t part = std::min(piece, stored - done);
                std::fill_n(out + count + done, part, value);
                done += part;
                if (part == piece) {
                    tick(source, p);
                }
            }
            count = std::min(count + repeats, most_repeats);
            p = behind;
            continue;
        }
        if (is_comment(p)) {
            p = line_end(source, p);
            continue;
        }
        if (*p == '/') {
            ++p;
            outcome.stop = Stop::Slash;
            break;
        }
        if (*p == '\0' && p < source.end) {
            fail_binary(source, p);
        }
        outcome.stop = p >= source.end ? Stop::End : Stop::Text;
        break;
    }
    outcome.end = p;
    outcome.count = count;
    const std::uint64_t kept = std::min(count, limit);
    release((values.size() - kept) * sizeof(Value));
    values.resize(kept);
    if (kept < values.capacity() / 2) {
        values.shrink_to_fit();
    }
    return outcome;
}

template <class FloatPolicy>
Outcome Reader::read_reals(const Keyword& keyword, const char* p, Reals& values, std::uint64_t limit, bool as_double)
{
    if (!as_double) {
        std::vector<float> floats;
        const Outcome outcome = read_values<FloatPolicy>(keyword, p, floats, limit);
        if (outcome.stop != Stop::Misfit) {
            values = std::move(floats);
            return outcome;
        }
        release(floats.size() * sizeof(float));
    }
    std::vector<double> doubles;
    const Outcome outcome = read_values<DoublePolicy>(keyword, p, doubles, limit);
    values = std::move(doubles);
    return outcome;
}

const char* Reader::check(const Keyword& keyword, const Outcome& outcome, std::uint64_t expected, const std::string& why)
{
    Source& source = *keyword.source;
    const std::string name = keyword.name + ": ";
    const std::string of_expected = std::to_string(expected);
    const std::string place = " (value " + std::to_string(outcome.count + 1) + " of " + of_expected + ")";
    const auto token = [&outcome] {
        const char* p = outcome.end;
        while (!is_space(*p) && *p != '\0' && *p != '/') {
            ++p;
        }
        return std::string_view(outcome.end, static_cast<std::size_t>(p - outcome.end));
    };
    switch (outcome.stop) {
    case Stop::Slash:
        break;
    case Stop::End:
        if (outcome.count != expected) {
            fail(source, source.end, name + "the file ends after " + std::to_string(outcome.count) + " of " + of_expected
                                         + " values" + why);
        }
        warn("keywords without a closing '/'", source, keyword.start, name + "the closing '/' is missing");
        break;
    case Stop::Text:
        if (keyword_begins(source, outcome.end, false) && upper(token()) != "NAN" && upper(token()) != "INF") {
            if (outcome.count != expected) {
                fail(source, outcome.end, name + "found keyword " + in_quotes(token()) + " after "
                                              + std::to_string(outcome.count) + " of " + of_expected + " values" + why);
            }
            warn("keywords without a closing '/'", source, keyword.start, name + "the closing '/' is missing");
            break;
        }
        fail(source, outcome.end, name + in_quotes(token().empty() ? std::string_view(outcome.end, 1) : token())
                                      + " is not a number" + place);
    case Stop::BadRepeat:
        fail(source, outcome.end, name + in_quotes(token()) + " has no valid repeat count, expected a whole number from 1 on"
                                      + place);
    case Stop::Range:
        fail(source, outcome.end, name + in_quotes(token()) + " is out of range, expected a 64-bit number" + place);
    case Stop::Misfit:
        fail(source, outcome.end, name + in_quotes(token()) + " is not a valid value" + place);
    }
    if (outcome.count < expected) {
        fail(source, outcome.end - (outcome.stop == Stop::Slash ? 1 : 0),
             name + std::to_string(outcome.count) + " values, expected " + of_expected + why);
    }
    if (outcome.count > expected) {
        fail(source, outcome.surplus, name + std::to_string(outcome.count) + " values, expected " + of_expected + why);
    }
    return outcome.end;
}

const char* Reader::read_geometry(const Keyword& keyword, RealArray& array, std::uint64_t expected,
                                  const std::string& why)
{
    const auto store =
        note_ && note_->keyword == keyword.upper ? note_->store : PropertyNote::Store::Unknown;
    const bool as_double = store == PropertyNote::Store::Double;
    release(array.size() * array.bytes_per_value());
    array = RealArray();
    Reals values;
    const Outcome outcome = store == PropertyNote::Store::Float
        ? read_reals<DecimalFloatPolicy>(keyword, keyword.after, values, expected, false)
        : read_reals<ExactFloatPolicy>(keyword, keyword.after, values, expected, as_double);
    const char* const end = check(keyword, outcome, expected, why);
    if (outcome.defaults > 0) {
        fail(*keyword.source, keyword.start, keyword.name + ": " + std::to_string(outcome.defaults)
                                                 + " values are left out (n*), expected numbers");
    }
    array = std::visit([](auto&& v) { return RealArray(std::move(v)); }, std::move(values));
    return end;
}

const char* Reader::read_active(const Keyword& keyword)
{
    Source& source = *keyword.source;
    const auto cells = static_cast<std::uint64_t>(result_.model.cells());
    const std::string why = " (one per cell of " + size_text(result_.model.size) + ")";
    ActivePolicy policy;
    std::vector<std::uint8_t> active;
    const Outcome outcome = read_values(keyword, keyword.after, active, cells, policy);
    if (outcome.stop == Stop::Misfit) {
        const std::string_view token = word_at(outcome.end);
        fail(source, outcome.end, keyword.name + ": " + in_quotes(token) + " is neither 0 nor 1 (value "
                                      + std::to_string(outcome.count + 1) + " of " + std::to_string(cells) + ")");
    }
    if (outcome.stop == Stop::Slash && outcome.count > cells && policy.least == policy.most) {
        warn("arrays of a wrong length", source, keyword.start,
             keyword.name + ": " + std::to_string(outcome.count) + " values, expected " + std::to_string(cells) + why
                 + "; all are the same, so the first ones are taken");
    } else {
        check(keyword, outcome, cells, why);
    }
    if (policy.most > 1) {
        warn("unusual values", source, keyword.start,
             keyword.name + ": values up to " + std::to_string(policy.most) + " are taken as 1, active");
    }
    if (!result_.model.active.empty()) {
        warn("arrays stated again", source, keyword.start, keyword.name + " is stated again; the later values count");
        release(result_.model.active.size());
    }
    result_.model.active = std::move(active);
    return outcome.end;
}

const char* Reader::read_line(const Keyword& keyword, std::vector<double>& values, int axis)
{
    if (!size_known_) {
        fail(*keyword.source, keyword.start, keyword.name + ": the grid's size is not known here, expected SPECGRID or "
                                                            "DIMENS before");
    }
    const auto count = static_cast<std::uint64_t>(result_.model.size[static_cast<std::size_t>(axis)]);
    const Outcome outcome = read_values<DoublePolicy>(keyword, keyword.after, values, count);
    const char* const end = check(keyword, outcome, count, "");
    if (outcome.defaults > 0) {
        fail(*keyword.source, keyword.start, keyword.name + ": " + std::to_string(outcome.defaults)
                                                 + " values are left out (n*), expected numbers");
    }
    return end;
}

const char* Reader::read_tops(const Keyword& keyword)
{
    GridModel& model = result_.model;
    const auto cells = static_cast<std::uint64_t>(model.cells());
    const auto columns = static_cast<std::uint64_t>(model.size[0] * model.size[1]);
    Reals tops;
    const Outcome outcome = read_reals<DecimalFloatPolicy>(keyword, keyword.after, tops, cells, false);
    const bool top_layer = outcome.count == columns;
    const char* const end = check(keyword, outcome, top_layer ? columns : cells,
                                  " (one per cell) or " + std::to_string(columns) + " (top layer only)");
    if (outcome.defaults > 0) {
        fail(*keyword.source, keyword.start, keyword.name + ": " + std::to_string(outcome.defaults)
                                                 + " values are left out (n*), expected numbers");
    }
    tops_.clear();
    std::visit(
        [this](const auto& values) {
            tops_.reserve(values.size());
            for (const auto value : values) {
                if constexpr (std::is_same_v<decltype(value), const float>) {
                    tops_.push_back(decimal_double(value));
                } else {
                    tops_.push_back(value);
                }
            }
        },
        tops);
    if (outcome.count == cells) {
        PropertyData property;
        property.name = keyword.name;
        std::visit([&property](auto&& values) { property.values = std::move(values); }, std::move(tops));
        model.properties.push_back(std::move(property));
    }
    return end;
}

const char* Reader::read_array(const Keyword& keyword, const KeywordInfo& info)
{
    Source& source = *keyword.source;
    GridModel& model = result_.model;
    const std::string& name = keyword.upper;
    if (box_ && name != "COORD" && name != "ZCORN") {
        warn("arrays of a BOX", source, keyword.start,
             keyword.name + " holds values for a BOX only; it is kept as text and not applied");
        return nullptr;
    }
    const bool geometry = name == "COORD" || name == "ZCORN" || name == "TOPS" || name == "DXV" || name == "DYV"
        || name == "DZV";
    if (geometry && options_.properties_only) {
        return skip_numbers(keyword);
    }
    if (name == "COORD") {
        has_coord_ = true;
        return read_geometry(keyword, model.coord, 6 * static_cast<std::uint64_t>(model.pillars()),
                             " (6 for each pillar of " + std::to_string(model.size[0] + 1) + " x "
                                 + std::to_string(model.size[1] + 1) + ")");
    }
    if (name == "ZCORN") {
        has_zcorn_ = true;
        return read_geometry(keyword, model.zcorn, 8 * static_cast<std::uint64_t>(model.cells()),
                             " (8 for each cell of " + size_text(model.size) + ")");
    }
    if (name == "ACTNUM") {
        return read_active(keyword);
    }
    if (name == "TOPS") {
        return read_tops(keyword);
    }
    if (name == "DXV" || name == "DYV" || name == "DZV") {
        const int axis = name[1] - 'X';
        return read_line(keyword, lines_[static_cast<std::size_t>(axis)], axis);
    }
    return read_property(keyword, info);
}

const char* Reader::read_property(const Keyword& keyword, const KeywordInfo& info)
{
    Source& source = *keyword.source;
    GridModel& model = result_.model;
    const std::optional<PropertyNote> note = note_ && note_->keyword == keyword.upper ? note_ : std::nullopt;
    const bool on_points = note && note->on_points;
    const auto expected = on_points
        ? static_cast<std::uint64_t>(model.pillars()) * static_cast<std::uint64_t>(model.size[2] + 1)
        : static_cast<std::uint64_t>(model.cells());
    using Store = PropertyNote::Store;
    const Store store = note && note->store != Store::Unknown ? note->store
        : is_discrete_name(keyword.name)                      ? Store::Integer
                                                              : Store::Unknown;
    PropertyData property;
    Outcome outcome;
    bool whole = store == Store::Integer;
    if (whole) {
        std::vector<std::int32_t> codes;
        outcome = read_values<IntegerPolicy>(keyword, keyword.after, codes, expected);
        whole = outcome.stop != Stop::Misfit;
        if (whole) {
            property.values = std::move(codes);
        } else {
            release(codes.size() * sizeof(std::int32_t));
        }
    }
    if (!whole) {
        Reals reals;
        outcome = read_reals<DecimalFloatPolicy>(keyword, keyword.after, reals, expected, store == Store::Double);
        if (store == Store::Integer && outcome.count == expected) {
            warn("unusual values", source, keyword.start,
                 keyword.name + " holds numbers that are not whole; it is read as a continuous property");
        }
        std::visit([&property](auto&& values) { property.values = std::move(values); }, std::move(reals));
    }

    const bool certain = info.cell_array || note.has_value();
    const bool ended = outcome.stop == Stop::Slash || outcome.stop == Stop::End
        || (outcome.stop == Stop::Text && keyword_begins(source, outcome.end, false));
    bool fits = ended && outcome.count == expected;
    if (fits && !certain && outcome.stop == Stop::Slash) {
        // A second record makes it a table.
        const char* const next = skip_space(source, line_end(source, outcome.end));
        fits = !(text_numbers::is_digit(*next) || *next == '-' || *next == '+' || *next == '.' || *next == '/');
    }
    if (!certain && !fits) {
        const std::size_t bytes = std::visit([](const auto& v) { return v.size() * sizeof(v[0]); }, property.values);
        release(bytes);
        if (ended && outcome.count * 2 >= expected && outcome.count != expected) {
            warn("arrays of a wrong length", source, keyword.start,
                 keyword.name + ": " + std::to_string(outcome.count) + " values are not one per cell (expected "
                     + std::to_string(expected) + ")");
        } else if (!ended) {
            warn("numbers that do not read", source, outcome.end,
                 keyword.name + ": not an array of numbers from here on");
        }
        return nullptr;
    }
    const std::string why = on_points ? " (one per grid node)" : " (one per cell of " + size_text(model.size) + ")";
    const char* const end = check(keyword, outcome, expected, why);
    property.name = note && note->name ? *note->name : keyword.name;
    property.on_points = on_points;
    if (note) {
        property.unit = note->unit;
        property.no_data = note->no_data;
        if (property.discrete()) {
            property.code_names = note->code_names;
        }
    }
    if (outcome.defaults > 0) {
        inform("arrays with undefined values", source, keyword.start,
               keyword.name + ": " + std::to_string(outcome.defaults) + " values are left out (n*) and stay undefined");
        if (property.discrete()) {
            property.no_data = undefined_code;
        }
    }
    const auto same = std::find_if(model.properties.begin(), model.properties.end(),
                                   [&property](const PropertyData& other) { return other.name == property.name; });
    if (same != model.properties.end()) {
        warn("arrays stated again", source, keyword.start, keyword.name + " is stated again; the later values count");
        release(std::visit([](const auto& v) { return v.size() * sizeof(v[0]); }, same->values));
        *same = std::move(property);
    } else {
        model.properties.push_back(std::move(property));
    }
    return end;
}

// ---------------------------------------------------------------------------------------------------------------------

std::vector<Token> Reader::note_tokens(Source& source, const char* at, std::string_view line) const
{
    std::vector<Token> tokens;
    for (std::size_t i = 0; i < line.size() && tokens.size() < most_tokens;) {
        if (is_space(line[i])) {
            ++i;
            continue;
        }
        Token token;
        if (line[i] == '"') {
            token.quoted = true;
            for (++i; i < line.size() && line[i] != '"'; ++i) {
                if (line[i] != '\\') {
                    token.text += line[i];
                } else if (i + 3 < line.size() && line[i + 1] == 'x') {
                    unsigned code = 0;
                    std::from_chars(line.data() + i + 2, line.data() + i + 4, code, 16);
                    token.text += static_cast<char>(code);
                    i += 3;
                } else if (i + 1 < line.size()) {
                    token.text += line[++i];
                }
            }
            if (i >= line.size()) {
                fail(source, at, "the quote in a \"-- LODEX\" comment is not closed");
            }
            ++i;
        } else {
            while (i < line.size() && !is_space(line[i])) {
                token.text += line[i++];
            }
        }
        tokens.push_back(std::move(token));
    }
    return tokens;
}

std::vector<std::string> Reader::note_lines(const Source& source, const char*& p) const
{
    std::vector<std::string> lines;
    while (p < source.end && *p == '\n'
           && std::string_view(p + 1, static_cast<std::size_t>(source.end - p - 1)).starts_with(note_line_prefix)) {
        const char* const start = p + 1 + note_line_prefix.size();
        p = line_end(source, start);
        lines.emplace_back(start, p > start && p[-1] == '\r' ? p - 1 : p);
    }
    return lines;
}

const char* Reader::read_note(Source& source, const char* at)
{
    const char* p = line_end(source, at);
    const std::string_view line(at + note_prefix.size(), static_cast<std::size_t>(p - at) - note_prefix.size());
    const auto tokens = note_tokens(source, at, line);
    const auto bad = [&](const std::string& expected) {
        warn("comments that do not read", source, at, "comment " + in_quotes(trimmed(line)) + " is passed over, expected "
                                                          + expected);
        return p;
    };
    const auto number = [&tokens](std::size_t i, auto& value) {
        if (i >= tokens.size()) {
            return false;
        }
        const std::string& text = tokens[i].text;
        const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
        return error == std::errc{} && end == text.data() + text.size();
    };
    GridModel& model = result_.model;
    if (tokens.empty()) {
        return p;
    }
    const std::string& kind = tokens[0].text;
    if (kind == "STORE" || kind == "PROPERTY") {
        if (tokens.size() < 2) {
            return bad("a keyword");
        }
        PropertyNote note;
        note.keyword = upper(tokens[1].text);
        for (std::size_t i = 2; i + 1 < tokens.size(); i += 2) {
            const std::string& value = tokens[i + 1].text;
            double real = 0;
            if (tokens[i].text == "name") {
                note.name = value;
            } else if (tokens[i].text == "unit") {
                note.unit = value;
            } else if (tokens[i].text == "nodata" && number(i + 1, real)) {
                note.no_data = real;
            } else if (tokens[i].text == "store" && (value == "float" || value == "double" || value == "int")) {
                note.store = value == "float" ? PropertyNote::Store::Float
                    : value == "double"       ? PropertyNote::Store::Double
                                              : PropertyNote::Store::Integer;
            } else if (tokens[i].text == "on" && (value == "points" || value == "cells")) {
                note.on_points = value == "points";
            } else {
                return bad("name, unit, nodata, store or on with a value");
            }
        }
        note_ = std::move(note);
    } else if (kind == "CODE") {
        std::int32_t code = 0;
        if (!note_ || tokens.size() != 3 || !number(1, code)) {
            return bad("a code and its name behind a property");
        }
        note_->code_names[code] = tokens[2].text;
    } else if (kind == "LAYER") {
        LayerData layer;
        constexpr std::array<std::string_view, 3> styles = {"proportional", "base", "top"};
        const auto style = tokens.size() == 5 ? std::find(styles.begin(), styles.end(), tokens[4].text) : styles.end();
        if (style == styles.end() || !number(2, layer.nb_k_cells) || !number(3, layer.cell_thickness)
            || layer.nb_k_cells < 1) {
            return bad("unit, number of cells, thickness and proportional, base or top");
        }
        constexpr std::array<Lodex::LayerInfo::LayeringStyle, 3> values = {
            Lodex::LayerInfo::Proportional, Lodex::LayerInfo::ParallelToBase, Lodex::LayerInfo::ParallelToTop};
        layer.style = values[static_cast<std::size_t>(style - styles.begin())];
        layer.unit = tokens[1].text;
        model.layers.push_back(std::move(layer));
    } else if (kind == "REGION") {
        RegionNote note;
        int is_model = 0;
        if (tokens.size() != 4 || tokens[2].text != "model" || !number(3, is_model)) {
            return bad("a name, the word model and 0 or 1");
        }
        note.region.name = tokens[1].text;
        note.region.model = is_model != 0;
        note.source = stack_.back();
        note.line = source.line_of(at);
        for (const std::string& text : note_lines(source, p)) {
            const char* q = text.data();
            const char* const end = q + text.size();
            while (q < end) {
                std::int64_t run = 0;
                const auto [next, error] = std::from_chars(q, end, run);
                if (error == std::errc{} && run >= 0) {
                    note.runs.push_back(run);
                    q = next;
                } else if (is_space(*q)) {
                    ++q;
                } else {
                    return bad("run lengths");
                }
            }
        }
        regions_.push_back(std::move(note));
    } else if (kind == "FROM") {
        std::int64_t file_line = 0;
        if (tokens.size() != 3 || !number(2, file_line)) {
            return bad("a file and a line");
        }
        from_ = {tokens[1].text, file_line};
    } else if (kind == "KEPT") {
        KeptKeyword kept;
        if (tokens.size() != 4 || !number(3, kept.line)) {
            return bad("a keyword, a file and a line");
        }
        kept.name = tokens[1].text;
        kept.file = tokens[2].text;
        bool first = true;
        for (const std::string& text : note_lines(source, p)) {
            kept.text += first ? "" : "\n";
            first = false;
            const auto parts = note_tokens(source, at, '"' + text + '"');
            kept.text += parts.empty() ? "" : parts.front().text;
        }
        model.kept.push_back(std::move(kept));
    } else if (kind != "GRID") {
        return bad("one of those that this program writes");
    }
    return p;
}

// ---------------------------------------------------------------------------------------------------------------------

void Reader::finish(const std::string& name)
{
    GridModel& model = result_.model;
    if (!size_known_) {
        if (!deferred_.empty()) {
            const Keyword& keyword = deferred_.front().keyword;
            fail(*keyword.source, keyword.start,
                 keyword.name + ": the grid's size is not known, expected SPECGRID or DIMENS");
        }
        throw FileError(name, 0, "no grid in this file, expected SPECGRID or DIMENS");
    }
    if (!options_.properties_only) {
        const bool blocks = !tops_.empty();
        if (has_coord_ != has_zcorn_) {
            throw FileError(name, 0, std::string(has_coord_ ? "COORD without ZCORN" : "ZCORN without COORD")
                                         + ", expected both");
        }
        if (!has_coord_) {
            make_block_centred(name);
        } else if (blocks && tops_.size() != static_cast<std::size_t>(model.cells())) {
            log_.add("unused geometry", {Message::Level::Warning, to_utf8(name), 0,
                                         "TOPS is not used: the file has COORD and ZCORN"});
        }
        if (model.active.empty()) {
            model.active.assign(static_cast<std::size_t>(model.cells()), 1);
        }
    }
    check_faults();
    check_notes(name);
}

void Reader::check_faults()
{
    const GridModel& model = result_.model;
    for (std::size_t i = 0; i < model.faults.size(); ++i) {
        const FaultSegment& fault = model.faults[i];
        const std::array<const std::array<std::int64_t, 2>*, 3> ranges = {&fault.i, &fault.j, &fault.k};
        for (std::size_t axis = 0; axis < 3; ++axis) {
            const auto [first, last] = *ranges[axis];
            if (first > last || last >= model.size[axis]) {
                fail(*fault_places_[i].source, fault_places_[i].at,
                     "FAULTS: " + std::string(1, "IJK"[axis]) + " range " + std::to_string(first + 1) + " to "
                         + std::to_string(last + 1) + " of " + in_quotes(fault.name) + ", expected a range within 1 to "
                         + std::to_string(model.size[axis]));
            }
        }
    }
}

void Reader::check_notes(const std::string& name)
{
    GridModel& model = result_.model;
    const std::int64_t cells = model.cells();
    for (RegionNote& note : regions_) {
        std::int64_t sum = 0;
        for (const std::int64_t run : note.runs) {
            sum = run > cells - sum ? cells + 1 : sum + run;
            if (sum > cells) {
                break;
            }
        }
        if (sum != cells) {
            log_.add("comments that do not read",
                     {Message::Level::Warning, to_utf8(note.source->shown), note.line,
                      "region " + in_quotes(note.region.name) + " is passed over: its runs do not make "
                          + std::to_string(cells) + " cells"});
            continue;
        }
        if (static_cast<std::uint64_t>(cells) > max_bytes_ - claimed_) {
            throw FileError(note.source->shown, note.line,
                            "region " + in_quotes(note.region.name) + " asks for more memory than the "
                                + std::to_string(max_bytes_) + " bytes allowed");
        }
        claimed_ += static_cast<std::uint64_t>(cells);
        note.region.flags.reserve(static_cast<std::size_t>(cells));
        std::uint8_t flag = 0;
        for (const std::int64_t run : note.runs) {
            note.region.flags.insert(note.region.flags.end(), static_cast<std::size_t>(run), flag);
            flag ^= 1;
        }
        model.regions.push_back(std::move(note.region));
    }
    std::int64_t layers = 0;
    for (const LayerData& layer : model.layers) {
        layers = std::min(layers, model.size[2]) + std::min(layer.nb_k_cells, model.size[2] + 1);
    }
    if (!model.layers.empty() && layers != model.size[2]) {
        log_.add("comments that do not read", {Message::Level::Warning, to_utf8(name), 0,
                                               "stratigraphic units are passed over: they do not make "
                                                   + std::to_string(model.size[2]) + " K layers"});
        model.layers.clear();
    }
}

/// Block-centred geometry on vertical pillars. Blocks keep their tops and thicknesses. Pillars stand where the blocks of
/// the top layer end, halfway between the ends of two neighbour rows where these differ.
void Reader::make_block_centred(const std::string& name)
{
    GridModel& model = result_.model;
    std::string missing;
    const std::array<std::string, 3> names = {"DX", "DY", "DZ"};
    for (std::size_t axis = 0; axis < 3; ++axis) {
        if (model.find_property(names[axis]) == nullptr && lines_[axis].empty()) {
            missing += (missing.empty() ? "" : ", ") + names[axis];
        }
    }
    if (tops_.empty()) {
        missing += missing.empty() ? "TOPS" : ", TOPS";
    }
    if (!missing.empty()) {
        throw FileError(name, 0, "no geometry: COORD and ZCORN are missing, and so are " + missing
                                     + " of a block-centred grid"
                                     + (arrays_set_by_operations_ ? " (arrays set by EQUALS or COPY do not count)" : ""));
    }
    const auto cells = static_cast<std::uint64_t>(model.cells());
    const std::uint64_t needed = 32 * cells * sizeof(double);
    if (needed > max_bytes_ || claimed_ > max_bytes_ - needed) {
        throw FileError(name, 0, "a grid of " + size_text(model.size) + " cells asks for more memory than the "
                                     + std::to_string(max_bytes_) + " bytes allowed");
    }
    const BlockSizes dx(model.find_property("DX"), lines_[0], 0);
    const BlockSizes dy(model.find_property("DY"), lines_[1], 1);
    const BlockSizes dz(model.find_property("DZ"), lines_[2], 2);
    const auto [ni, nj, nk] = model.size;

    // One axis at a time: ends of the blocks of each row, summed up in extended precision so that decimals stay clean.
    const auto check_rows = [&](const BlockSizes& sizes, const char* keyword) {
        for (std::int64_t k = 0; k < nk && !sizes.from_line(); ++k) {
            for (std::int64_t j = 0; j < nj; ++j) {
                for (std::int64_t i = 0; i < ni; ++i) {
                    const bool along_i = &sizes == &dy;
                    const double reference = along_i ? sizes.at(model, 0, j, 0) : sizes.at(model, i, 0, 0);
                    if (sizes.at(model, i, j, k) != reference) {
                        log_.add("unusual values",
                                 {Message::Level::Warning, to_utf8(name), 0,
                                  std::string(keyword) + " differs between neighbour rows or layers (cell "
                                      + std::to_string(i + 1) + ", " + std::to_string(j + 1) + ", " + std::to_string(k + 1)
                                      + "); pillars stand halfway between block ends of the top layer"});
                        return;
                    }
                }
            }
        }
    };
    check_rows(dx, "DX");
    check_rows(dy, "DY");

    const auto pillar = [&](std::int64_t i, std::int64_t j) { return static_cast<std::size_t>(i + (ni + 1) * j); };
    std::vector<double> x(static_cast<std::size_t>(model.pillars()));
    std::vector<double> y(x.size());
    const auto halfway = [](double a, double b) { return a == b ? a : (a + b) / 2; };
    std::vector<double> ends(static_cast<std::size_t>(ni + 1));
    for (std::int64_t j = 0; j < nj; ++j) {
        long double sum = 0;
        for (std::int64_t i = 0; i <= ni; ++i) {
            ends[static_cast<std::size_t>(i)] = static_cast<double>(sum);
            sum += i < ni ? dx.at(model, i, j, 0) : 0;
        }
        for (std::int64_t i = 0; i <= ni; ++i) {
            const double end = ends[static_cast<std::size_t>(i)];
            x[pillar(i, j)] = j == 0 ? end : halfway(x[pillar(i, j)], end);
            x[pillar(i, j + 1)] = end;
        }
    }
    ends.resize(static_cast<std::size_t>(nj + 1));
    for (std::int64_t i = 0; i < ni; ++i) {
        long double sum = 0;
        for (std::int64_t j = 0; j <= nj; ++j) {
            ends[static_cast<std::size_t>(j)] = static_cast<double>(sum);
            sum += j < nj ? dy.at(model, i, j, 0) : 0;
        }
        for (std::int64_t j = 0; j <= nj; ++j) {
            const double end = ends[static_cast<std::size_t>(j)];
            y[pillar(i, j)] = i == 0 ? end : halfway(y[pillar(i, j)], end);
            y[pillar(i + 1, j)] = end;
        }
    }

    std::vector<double> zcorn(8 * static_cast<std::size_t>(cells));
    double shallowest = std::numeric_limits<double>::infinity();
    double deepest = -shallowest;
    std::vector<double> bottoms(static_cast<std::size_t>(ni * nj));
    const bool all_tops = tops_.size() == static_cast<std::size_t>(cells);
    for (std::int64_t k = 0; k < nk; ++k) {
        for (std::int64_t j = 0; j < nj; ++j) {
            for (std::int64_t i = 0; i < ni; ++i) {
                const auto column = static_cast<std::size_t>(i + ni * j);
                const double top = all_tops ? tops_[static_cast<std::size_t>(model.cell_index(i, j, k))]
                    : k == 0                ? tops_[column]
                                            : bottoms[column];
                const double bottom = static_cast<double>(static_cast<long double>(top) + dz.at(model, i, j, k));
                bottoms[column] = bottom;
                for (int corner = 0; corner < 8; ++corner) {
                    const int a = corner & 1;
                    const int b = corner >> 1 & 1;
                    const int c = corner >> 2;
                    zcorn[static_cast<std::size_t>((2 * k + c) * 4 * nj * ni + (2 * j + b) * 2 * ni + 2 * i + a)] =
                        c == 0 ? top : bottom;
                }
                shallowest = std::min({shallowest, top, bottom});
                deepest = std::max({deepest, top, bottom});
            }
        }
        if (options_.progress && !options_.progress(progress_)) {
            throw Cancelled{};
        }
    }
    deepest = deepest > shallowest ? deepest : shallowest + 1; // a pillar needs two ends
    std::vector<double> coord;
    coord.reserve(6 * x.size());
    for (std::size_t i = 0; i < x.size(); ++i) {
        coord.insert(coord.end(), {x[i], y[i], shallowest, x[i], y[i], deepest});
    }
    model.coord = narrowed(std::move(coord));
    model.zcorn = narrowed(std::move(zcorn));
    log_.add("block-centred geometry",
             {Message::Level::Info, to_utf8(name), 0, "block-centred geometry (DX, DY, DZ, TOPS) is turned into corner points"});
}

} // namespace

ReadResult read_file(const std::filesystem::path& path, const ReadOptions& options)
{
    return Reader(options).read_file(path);
}

ReadResult read_text(std::string_view text, const std::filesystem::path& name, const ReadOptions& options)
{
    return Reader(options).read_text(text, name);
}

} // namespace lodex::grdecl
