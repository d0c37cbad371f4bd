// Arrays of numbers: geometry, active flags, properties.

#include <lodex/gridio/GrdeclReaderImpl.h>
#include <lodex/gridio/TextNumbers.h>
#include <lodex/volumes/model/LargeArray.h>

#include <cmath>
#include <new>

namespace lodex::grdecl {

namespace {

constexpr std::int32_t undefined_code = std::numeric_limits<std::int32_t>::min();

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

/// Room for that many values.
template <class Value> void reserve_array(std::vector<Value>& values, std::uint64_t count)
{
    values.reserve(static_cast<std::size_t>(count));
    advise_large_pages(values.data(), static_cast<std::size_t>(count) * sizeof(Value));
}

} // namespace

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
    source.need(p);
    // Addresses for all values at once, so that none is moved; memory comes as they are written. Repeat counts ask for
    // any number, so addresses are taken only within the bound, and claimed piece by piece.
    std::uint64_t room = 0;
    const auto make_room = [&](std::uint64_t wanted) {
        claim(keyword, (wanted - values.size()) * sizeof(Value));
        try {
            if (wanted > values.capacity()) {
                const std::uint64_t allowed = values.size() + (max_bytes_ - claimed_) / sizeof(Value);
                reserve_array(values, std::max(wanted, std::min(limit, allowed)));
            }
            values.resize(wanted);
        } catch (const std::bad_alloc&) {
            fail(source, keyword.start, keyword.name + ": not enough memory for " + value_count(wanted));
        }
        room = wanted;
    };
    constexpr std::uint64_t step = 32 * 1024;
    make_room(std::min(limit, step));
    Value* out = values.data();
    Outcome outcome;
    std::uint64_t count = 0;
    const auto next_checkpoint = [&source](const char* at) { return std::min(at + tick_bytes, source.safe_end()); };
    const char* checkpoint = next_checkpoint(p);
    const char* cut = source.cut();

    for (;;) {
        while (is_space(*p)) {
            ++p;
        }
        if (p >= checkpoint && p < source.end) [[unlikely]] {
            tick(source, p);
            source.need(p);
            checkpoint = next_checkpoint(p);
            cut = source.cut();
            continue;
        }
        Decimal number;
        const char* behind = parse_decimal(p, number);
        if (behind >= cut) [[unlikely]] {
            need_whole(source, p, behind);
        }
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
                    make_room(std::min(limit, count + step));
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
                make_room(count + stored);
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
             name + value_count(outcome.count) + ", expected " + of_expected + why);
    }
    if (outcome.count > expected) {
        fail(source, outcome.surplus, name + value_count(outcome.count) + ", expected " + of_expected + why);
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
        fail(*keyword.source, keyword.start, keyword.name + ": " + value_count(outcome.defaults) + " left out (n*), expected numbers");
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
             keyword.name + ": " + value_count(outcome.count) + ", expected " + std::to_string(cells) + why
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
        fail(*keyword.source, keyword.start, keyword.name + ": " + value_count(outcome.defaults) + " left out (n*), expected numbers");
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
        fail(*keyword.source, keyword.start, keyword.name + ": " + value_count(outcome.defaults) + " left out (n*), expected numbers");
    }
    if (outcome.count == cells) {
        PropertyData property;
        property.name = keyword.name;
        std::visit(
            [&](const auto& values) {
                claim(keyword, values.size() * sizeof(values[0]));
                property.values = values;
            },
            tops);
        model.properties.push_back(std::move(property));
    }
    tops_ = std::move(tops);
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
                 keyword.name + ": " + value_count(outcome.count) + ", not one per cell (expected "
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
               keyword.name + ": " + value_count(outcome.defaults) + " left out (n*) and undefined");
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

} // namespace lodex::grdecl
