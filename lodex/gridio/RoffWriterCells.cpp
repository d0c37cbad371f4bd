// Numbers of the cells of a ROFF file.

#include <lodex/gridio/FloatFit.h>
#include <lodex/gridio/RoffWriterImpl.h>
#include <lodex/gridio/Transpose.h>

#include <cmath>
#include <map>
#include <tbb/blocked_range.h>
#include <tbb/parallel_for.h>
#include <unordered_set>

namespace lodex::roff {

namespace {

constexpr std::size_t most_codes = 1024; ///< values without a name that are listed among the codes
constexpr std::size_t most_columns = 64; ///< along I, turned together

template <class T> bool same_bits(T a, T b)
{
    return std::memcmp(&a, &b, sizeof(T)) == 0;
}

/// Stands for no conversion.
struct AsTheyAre {};

/// The different values in no order; none when there are more than most_codes.
std::vector<std::int32_t> distinct(const std::vector<std::int32_t>& values)
{
    std::vector<std::int32_t> found;
    if (values.empty()) {
        return found;
    }
    std::int32_t least = values.front();
    std::int32_t most = least;
    for (const std::int32_t value : values) {
        least = std::min(least, value);
        most = std::max(most, value);
    }
    constexpr std::int64_t small = 1 << 16;
    const std::int64_t range = std::int64_t{most} - least + 1;
    if (range <= small) {
        std::vector<std::uint8_t> occurs(static_cast<std::size_t>(range));
        for (const std::int32_t value : values) {
            occurs[static_cast<std::size_t>(std::int64_t{value} - least)] = 1;
        }
        for (std::size_t n = 0; n < occurs.size(); ++n) {
            if (occurs[n] != 0) {
                found.push_back(static_cast<std::int32_t>(least + static_cast<std::int64_t>(n)));
            }
        }
    } else {
        std::unordered_set<std::int32_t> set;
        std::int32_t last = values.front();
        set.insert(last);
        for (const std::int32_t value : values) {
            if (value != last && set.insert(value).second && set.size() > most_codes) {
                break;
            }
            last = value;
        }
        found.assign(set.begin(), set.end());
    }
    if (found.size() > most_codes) {
        found.clear();
    }
    return found;
}

/// What the values of a property are like.
struct Survey {
    std::int64_t nans = 0;
    std::int64_t undefined = 0; ///< values that mean undefined in the format
    bool infinite = false;
    bool fits_float = true; ///< 32 bits hold all but those that stand for no data
};

template <class Value>
Survey look_through(std::span<const Value> values, [[maybe_unused]] std::optional<Value> no_data, Value undefined)
{
    Survey survey;
    constexpr std::size_t piece = 4096;
    for (std::size_t first = 0; first < values.size(); first += piece) {
        const auto part = values.subspan(first, std::min(piece, values.size() - first));
        std::int32_t same = 0;
        for (const Value value : part) {
            same += value == undefined ? 1 : 0;
        }
        survey.undefined += same;
        if constexpr (std::is_floating_point_v<Value>) {
            std::int32_t nans = 0;
            std::int32_t large = 0;
            for (const Value value : part) {
                nans += value != value ? 1 : 0;
                large += std::fabs(value) > std::numeric_limits<Value>::max() ? 1 : 0;
            }
            survey.nans += nans;
            survey.infinite = survey.infinite || large > 0;
        }
        if constexpr (std::is_same_v<Value, double>) {
            if (survey.fits_float && !fits_float(part)) {
                survey.fits_float = std::all_of(part.begin(), part.end(), [&no_data](double value) {
                    return std::isnan(value) || (no_data && same_bits(value, *no_data)) || fits_float(value);
                });
            }
        }
    }
    return survey;
}

} // namespace

template <class To, class From, class Convert>
void Writer::write_cells(std::span<const From> values, const Convert& convert)
{
    const auto [ni, nj, nk] = model_.size;
    constexpr std::size_t block_values = std::size_t{1} << 21;
    const auto column = static_cast<std::size_t>(nj * nk);
    const std::size_t columns =
        std::clamp(block_values / column / transpose_block * transpose_block, transpose_block, most_columns);
    const auto width = static_cast<std::size_t>(ni);
    write_blocks<To>((width + columns - 1) / columns, [&, nj = nj, nk = nk](std::size_t block, std::size_t buffer) {
        const std::size_t i0 = block * columns;
        const std::size_t count = std::min(columns, width - i0);
        const std::span<To> room = buffers_[buffer].template room<To>(count * column);
        constexpr std::int64_t rows = 8;
        tbb::parallel_for(tbb::blocked_range<std::int64_t>(0, nj, rows), [&](const auto& range) {
            std::array<std::array<To, most_columns>, transpose_block> converted;
            for (std::int64_t j = range.begin(); j != range.end(); ++j) {
                // The file counts layers from the bottom.
                const From* const bottom = values.data() + i0 + width * static_cast<std::size_t>(j + nj * (nk - 1));
                const auto layer = static_cast<std::ptrdiff_t>(width) * nj;
                To* const to = room.data() + j * nk;
                if constexpr (std::is_same_v<Convert, AsTheyAre>) {
                    transpose(bottom, -layer, static_cast<std::size_t>(nk), count, to,
                              static_cast<std::ptrdiff_t>(column));
                } else {
                    for (std::int64_t kk = 0; kk < nk; kk += static_cast<std::int64_t>(transpose_block)) {
                        const auto part = std::min(transpose_block, static_cast<std::size_t>(nk - kk));
                        for (std::size_t n = 0; n < part; ++n) {
                            convert(bottom - (kk + static_cast<std::ptrdiff_t>(n)) * layer, converted[n].data(), count);
                        }
                        transpose(converted[0].data(), static_cast<std::ptrdiff_t>(most_columns), part, count, to + kk,
                                  static_cast<std::ptrdiff_t>(column));
                    }
                }
            }
        });
        return std::span<const To>(room);
    });
}

void Writer::write_flags(std::span<const std::uint8_t> flags)
{
    write_cells<std::uint8_t>(flags, [](const std::uint8_t* from, std::uint8_t* to, std::size_t count) {
        for (std::size_t n = 0; n < count; ++n) {
            to[n] = from[n] != 0 ? 1 : 0;
        }
    });
}

std::string Writer::free_name(std::string_view wanted)
{
    const std::string stem = wanted.empty() ? "PARAMETER" : plain(wanted);
    std::string name = stem;
    for (int number = 2; !names_.insert(name).second; ++number) {
        name = stem + '_' + std::to_string(number);
    }
    return name;
}

/// The codes that have a name or occur; other programs want them all.
void Writer::write_codes(const PropertyData& property)
{
    if (property.code_names.empty()) {
        return;
    }
    const auto& values = std::get<std::vector<std::int32_t>>(property.values);
    std::map<std::int32_t, std::string> codes;
    for (const std::int32_t value : distinct(values)) {
        codes[value] = "";
    }
    codes.erase(undefined_number);
    if (property.no_data) {
        std::erase_if(codes, [&property](const auto& code) { return code.first == *property.no_data; });
    }
    for (const auto& [code, name] : property.code_names) {
        codes[code] = plain(name);
    }
    std::vector<std::int32_t> numbers;
    std::vector<std::string> names;
    for (const auto& [code, name] : codes) {
        numbers.push_back(code);
        names.push_back(name);
    }
    out_.array("codeNames", std::span<const std::string>(names));
    out_.array("codeValues", std::span<const std::int32_t>(numbers));
}

/// The named codes alone, for the tags of this program.
void Writer::write_code_names(const PropertyData& property)
{
    std::vector<std::int32_t> numbers;
    std::vector<std::string> names;
    for (const auto& [code, name] : property.code_names) {
        numbers.push_back(code);
        names.push_back(escape(name));
    }
    out_.array("codeNames", std::span<const std::string>(names));
    out_.array("codeValues", std::span<const std::int32_t>(numbers));
}

template <class Value> void Writer::write_values(const PropertyData& property, std::span<const Value> values)
{
    constexpr bool real = std::is_floating_point_v<Value>;
    const auto undefined = static_cast<Value>(undefined_number);
    std::optional<Value> no_data;
    if (property.no_data) {
        const double number = *property.no_data;
        constexpr double most = std::numeric_limits<Value>::max();
        if (std::fabs(number) <= most && static_cast<double>(static_cast<Value>(number)) == number) {
            no_data = static_cast<Value>(number);
        }
    }
    const std::string shown = "property \"" + to_utf8(property.name) + '"';

    // A property of small codes whose undefined value is that of bytes came as bytes.
    bool as_byte = false;
    if constexpr (!real) {
        as_byte = property.no_data == static_cast<double>(undefined_byte)
                  && std::all_of(values.begin(), values.end(),
                                 [](Value value) { return value >= 0 && value <= undefined_byte; });
    }

    const bool plain_undefined = no_data && *no_data == undefined;
    const Survey survey = look_through(values, no_data, undefined);
    const std::int64_t nans = survey.nans;
    const std::int64_t genuine = plain_undefined ? 0 : survey.undefined;
    // What -999 stands for in most cells: itself, the property's undefined value, or not a number.
    int meaning = 0;
    if (!as_byte) {
        meaning = no_data && !plain_undefined ? 1 : !no_data && !property.no_data && nans > 0 ? 2 : 0;
    }
    const bool odd_no_data = property.no_data && !no_data; // NaN or out of range
    std::vector<std::int32_t> exception_at;
    std::vector<Value> exception_value;
    if (!as_byte && ((nans > 0 && meaning != 2) || (genuine > 0 && meaning != 0))) {
        for (std::size_t n = 0; n < values.size(); ++n) {
            bool exception = values[n] == undefined && meaning != 0;
            if constexpr (real) {
                exception = exception || (std::isnan(values[n]) && meaning != 2);
            }
            if (exception) {
                exception_at.push_back(static_cast<std::int32_t>(n));
                exception_value.push_back(values[n]);
            }
        }
    }
    if (genuine > 0 && !as_byte) {
        warn("values that mean undefined", shown + " has the value -999 in " + std::to_string(genuine)
                                               + " cells, which other programs take for undefined");
    }
    if (survey.infinite) {
        warn("infinite values", shown + " has infinite values, which some programs do not read");
    }

    const std::string name = free_name(property.name);
    if (to_utf8(name) != property.name) {
        inform("properties under another name", shown + " is written as \"" + to_utf8(name) + '"');
    }
    out_.begin_tag("parameter");
    out_.scalar("name", std::string_view(name));
    if constexpr (!real) {
        write_codes(property);
    }
    bool store_double = false;
    const auto stored = [&](const Value* from, Value* to, std::size_t count) {
        std::copy_n(from, count, to);
        if constexpr (real) {
            for (std::size_t n = 0; n < count; ++n) {
                to[n] = std::isnan(to[n]) ? undefined : to[n];
            }
        }
        for (std::size_t n = 0; meaning == 1 && n < count; ++n) {
            to[n] = same_bits(from[n], *no_data) ? undefined : to[n];
        }
    };
    if (std::is_same_v<Value, double> && survey.fits_float) {
        store_double = true;
        out_.begin_array(Type::Float, "data", values.size());
        if constexpr (std::is_same_v<Value, double>) {
            write_cells<float>(values, [&stored](const double* from, float* to, std::size_t count) {
                std::array<double, most_columns> row;
                stored(from, row.data(), count);
                narrow(std::span(row).first(count), {to, count});
            });
        }
    } else if (as_byte) {
        out_.begin_array(Type::Byte, "data", values.size());
        write_cells<std::uint8_t>(values, [](const Value* from, std::uint8_t* to, std::size_t count) {
            for (std::size_t n = 0; n < count; ++n) {
                to[n] = static_cast<std::uint8_t>(from[n]);
            }
        });
    } else {
        if (std::is_same_v<Value, double>) {
            warn("numbers of 64 bits", shown + " is written in 64 bits, which some programs do not read");
        }
        out_.begin_array(type_of<Value>, "data", values.size());
        if (nans == 0 && meaning != 1) {
            write_cells<Value>(values, AsTheyAre{});
        } else {
            write_cells<Value>(values, stored);
        }
    }
    out_.end_array();
    out_.end_tag();

    // Only what the reader would not find out by itself.
    const bool usual_no_data = as_byte || plain_undefined;
    const bool plain_codes = std::all_of(property.code_names.begin(), property.code_names.end(), [](const auto& code) {
        return !code.second.empty() && to_utf8(plain(code.second)) == code.second;
    });
    if (to_utf8(name) == property.name && property.unit.empty() && usual_no_data && exception_at.empty()
        && !store_double && plain_codes) {
        return;
    }
    out_.begin_tag("lodexParameter");
    if (to_utf8(name) != property.name) {
        out_.scalar("name", std::string_view(escape(property.name)));
    }
    if (!property.unit.empty()) {
        out_.scalar("unit", std::string_view(escape(property.unit)));
    }
    if (property.no_data) {
        out_.scalar("noData", *property.no_data);
    }
    if (store_double) {
        out_.scalar("storeDouble", std::int32_t{1});
    }
    if (meaning != 0 && !odd_no_data) {
        out_.scalar("undefined", std::int32_t{meaning});
    }
    if (!exception_at.empty()) {
        out_.array("exceptionAt", std::span<const std::int32_t>(exception_at));
        out_.array("exceptionValue", std::span<const Value>(exception_value));
    }
    if (!plain_codes) {
        write_code_names(property);
    }
    out_.end_tag();
}

void Writer::write_property(const PropertyData& property)
{
    std::visit([&](const auto& values) { write_values(property, std::span(values)); }, property.values);
}

} // namespace lodex::roff
