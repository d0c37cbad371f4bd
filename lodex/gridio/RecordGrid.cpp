#include <lodex/gridio/RecordGrid.h>

#include <lodex/gridio/FloatFit.h>
#include <lodex/gridio/GrdeclKeywords.h>
#include <lodex/volumes/model/LargeArray.h>
#include <lodex/volumes/model/PropertyTools.h>
#include <lodex/utils/Memory.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <limits>
#include <type_traits>

namespace lodex::records {

namespace {

constexpr std::size_t chunk = 4096; ///< values that are converted at a time, well within the cache

constexpr std::string_view plain_headers[] = {"INTEHEAD", "LOGIHEAD", "DOUBHEAD", "FILEHEAD", "GRIDHEAD",
                                              "ENDGRID",  "DIMENS",   "SPECGRID", "COORDSYS"};
constexpr std::string_view never_properties[]
    = {"TABDIMS",  "TAB",     "CON",      "TRANNNC",  "TRANGL",   "TRANLL",   "NNCHEAD",  "NNC1",     "NNC2",
       "NNCL",     "NNCG",    "NNCHEADA", "NNA1",     "NNA2",     "LGR",      "LGRNAMES", "ENDLGR",   "LGRPARNT",
       "LGRSGRID", "ACTNUM",  "COORD",    "ZCORN",    "MAPAXES",  "MAPUNITS", "GRIDUNIT", "GDORIENT", "COORDS",
       "CORNERS",  "HOSTNUM", "LGRHEADI", "LGRHEADQ", "LGRHEADD", "NNCHEAD1", "AQUIFERN", "AQUIFERA", "FAULTNAM"};

template <class Names> bool contains(const Names& names, std::string_view name)
{
    return std::find(std::begin(names), std::end(names), name) != std::end(names);
}

std::string counted(std::uint64_t count, const char* one, const char* many)
{
    return std::to_string(count) + ' ' + (count == 1 ? one : many);
}

} // namespace

// --- memory ----------------------------------------------------------------------------------------------------------

MemoryBudget::MemoryBudget(const ReadOptions& options)
    : most_(options.max_bytes > 0 ? options.max_bytes : model_memory_limit())
{
}

void MemoryBudget::claim(const Reader& reader, std::uint64_t bytes)
{
    // Values of active cells grow when they are spread to all cells; one cell in a hundred is few for a real model.
    constexpr std::uint64_t growth = 100;
    constexpr std::uint64_t always = std::uint64_t{1} << 20;
    if (bytes > most_ - std::min(claimed_, most_)) {
        reader.fail("asks for more memory than the " + std::to_string(most_) + " bytes allowed");
    }
    claimed_ += bytes;
    if (claimed_ > always && (claimed_ - always) / growth > file_bytes_) {
        reader.fail("asks for " + std::to_string(claimed_) + " bytes of memory, which is not to be expected of "
                    + std::to_string(file_bytes_) + " bytes of file");
    }
}

template <class T> std::vector<T> reserved_array(std::size_t count)
{
    std::vector<T> array;
    array.reserve(count);
    advise_large_pages(array.data(), count * sizeof(T));
    return array;
}

template std::vector<float> reserved_array(std::size_t);
template std::vector<double> reserved_array(std::size_t);
template std::vector<std::int32_t> reserved_array(std::size_t);
template std::vector<std::uint8_t> reserved_array(std::size_t);

// --- names and units -------------------------------------------------------------------------------------------------

UnitSystem unit_system(std::int32_t code)
{
    return code >= 1 && code <= 4 ? static_cast<UnitSystem>(code) : UnitSystem::Unknown;
}

UnitSystem unit_system_of(std::string_view length_unit)
{
    const std::string unit = grdecl::upper(length_unit);
    if (unit.starts_with("FEET") || unit == "FT") {
        return UnitSystem::Field;
    }
    if (unit.starts_with("CM") || unit.starts_with("CENTIM")) {
        return UnitSystem::Laboratory;
    }
    return unit.starts_with("MET") || unit == "M" ? UnitSystem::Metric : UnitSystem::Unknown;
}

std::string unit_of(std::string_view name, UnitSystem system)
{
    if (system == UnitSystem::Unknown) {
        return {};
    }
    constexpr std::string_view lengths[] = {"DX", "DY", "DZ", "DZNET", "DEPTH", "TOPS"};
    constexpr std::string_view volumes[] = {"PORV", "MINPVV"};
    constexpr std::string_view permeabilities[] = {"PERMX", "PERMY", "PERMZ", "PERMR", "PERMTHT", "PERMXY", "PERMYZ",
                                                   "PERMZX"};
    constexpr std::string_view transmissibilities[] = {"TRANX", "TRANY", "TRANZ", "TRANR", "TRANTHT"};
    const auto pick = [system](std::array<const char*, 4> units) {
        return units[static_cast<std::size_t>(system) - 1];
    };
    if (contains(lengths, name)) {
        return pick({"m", "ft", "cm", "m"});
    }
    if (contains(volumes, name)) {
        return pick({"m3", "rb", "cm3", "m3"});
    }
    if (contains(permeabilities, name)) {
        return "mD";
    }
    if (contains(transmissibilities, name)) {
        return pick({"cP.m3/day/bar", "cP.rb/day/psi", "cP.cm3/h/atm", "cP.m3/day/atm"});
    }
    return {};
}

bool is_plain_header(std::string_view name)
{
    return contains(plain_headers, name);
}

bool is_never_property(std::string_view name)
{
    return is_plain_header(name) || contains(never_properties, name);
}

bool is_cell_array(std::string_view name)
{
    return grdecl::keyword_info(name).cell_array;
}

// --- reading ---------------------------------------------------------------------------------------------------------

GridSize checked_size(const Reader& reader, std::int64_t ni, std::int64_t nj, std::int64_t nk)
{
    constexpr std::int64_t most_along = std::numeric_limits<std::int32_t>::max();
    // Eight depths a cell have to be countable.
    constexpr std::int64_t most_cells = std::int64_t{1} << 58;
    const GridSize size = {ni, nj, nk};
    std::int64_t cells = 1;
    for (const std::int64_t n : size) {
        if (n < 1 || n > most_along) {
            reader.fail("states a grid of " + size_text(size) + " cells");
        }
        if (cells > most_cells / n) {
            reader.fail("states a grid of " + size_text(size) + " cells, which is too large");
        }
        cells *= n;
    }
    if ((ni + 1) > most_cells / (nj + 1)) {
        reader.fail("states a grid of " + size_text(size) + " cells, which is too large");
    }
    return size;
}

void check_wanted_size(const Reader& reader, const GridSize& size, const ReadOptions& options)
{
    if (options.size && *options.size != size) {
        reader.fail("states a grid of " + size_text(size) + " cells, expected " + size_text(*options.size));
    }
}

bool read_frame(Reader& reader, const Header& header, GridFrame& frame, MessageLog& log)
{
    const auto strings = [&](std::uint64_t least) {
        constexpr std::uint64_t most = 100;
        if (header.type != Type::String || header.count < least || header.count > most) {
            reader.fail("is " + std::to_string(header.count) + " values of type " + header.type_name + ", expected "
                        + std::to_string(least) + " of type CHAR");
        }
        std::vector<std::string> values = reader.read_strings();
        for (std::string& value : values) {
            value = to_utf8(value);
        }
        return values;
    };
    if (header.name == "MAPUNITS") {
        frame.map_units = strings(1)[0];
    } else if (header.name == "GRIDUNIT") {
        const auto values = strings(1);
        frame.grid_units = values[0];
        frame.grid_units_map = values.size() > 1 && values[1] == "MAP";
    } else if (header.name == "MAPAXES") {
        std::array<double, 6> axes{};
        if (header.count != axes.size() || (header.type != Type::Real && header.type != Type::Double)) {
            reader.fail("is " + std::to_string(header.count) + " values of type " + header.type_name
                        + ", expected 6 of type REAL");
        }
        if (header.type == Type::Double) {
            reader.read(std::span<double>(axes));
        } else {
            std::array<float, 6> values{};
            reader.read(std::span<float>(values));
            std::copy(values.begin(), values.end(), axes.begin());
        }
        frame.map_axes = axes;
    } else if (header.name == "GDORIENT") {
        // Handedness shows in the coordinates themselves; the rest is always this.
        const auto values = strings(0);
        const std::vector<std::string> usual = {"INC", "INC", "INC", "DOWN"};
        if (values.size() < usual.size() || !std::equal(usual.begin(), usual.end(), values.begin())) {
            std::string text;
            for (const std::string& value : values) {
                text += ' ' + value;
            }
            log.add("directions of the axes",
                    reader.message(Message::Level::Warning, "GDORIENT" + text + " is not applied; the grid is taken as "
                                                                + "the coordinates state it, depth downwards"));
        }
    } else {
        return false;
    }
    return true;
}

namespace {

/// How many of the numbers are infinite or no numbers.
std::uint64_t count_not_finite(std::span<const float> values)
{
    constexpr std::uint32_t exponent = 0x7F800000;
    std::uint32_t count = 0;
    for (const float value : values) {
        std::uint32_t bits;
        std::memcpy(&bits, &value, sizeof bits);
        count += static_cast<std::uint32_t>((bits & exponent) == exponent);
    }
    return count;
}

std::uint64_t count_not_finite(std::span<const double> values)
{
    return static_cast<std::uint64_t>(
        std::count_if(values.begin(), values.end(), [](double value) { return !std::isfinite(value); }));
}

/// Calls use(part) for each piece of an array as it is read, in order.
template <class T, class Use> std::vector<T> read_array(Reader& reader, std::uint64_t count, const Use& use)
{
    auto values = reserved_array<T>(static_cast<std::size_t>(count));
    while (values.size() < count) {
        // Grown piece by piece: the zeros that resize() writes are still in the cache when the numbers replace them.
        const std::size_t first = values.size();
        values.resize(static_cast<std::size_t>(std::min<std::uint64_t>(count, first + chunk)));
        const std::span<T> part = std::span(values).subspan(first);
        if (reader.read(part) != part.size()) {
            reader.fail("has fewer values than its header states");
        }
        use(std::span<const T>(part));
    }
    return values;
}

template <class T> RealArray read_reals_as(Reader& reader, const Header& header, MessageLog& log)
{
    std::uint64_t not_finite = 0;
    RealArray array(
        read_array<T>(reader, header.count, [&](std::span<const T> part) { not_finite += count_not_finite(part); }));
    if (not_finite > 0) {
        log.add("numbers that are not finite",
                reader.message(Message::Level::Warning,
                               header.name + ": " + counted(not_finite, "number is", "numbers are") + " not finite"));
    }
    return array;
}

} // namespace

RealArray read_reals(Reader& reader, const Header& header, std::uint64_t expected, MemoryBudget& budget,
                     MessageLog& log)
{
    if (header.type != Type::Real && header.type != Type::Double) {
        reader.fail("is of type " + header.type_name + ", expected REAL");
    }
    if (header.count != expected) {
        reader.fail("has " + std::to_string(header.count) + " values, expected " + std::to_string(expected));
    }
    budget.claim(reader, header.count * header.width);
    return header.type == Type::Double ? read_reals_as<double>(reader, header, log)
                                       : read_reals_as<float>(reader, header, log);
}

ActiveFlags read_flags(Reader& reader, const Header& header, std::uint64_t cells, bool dual_porosity,
                       MemoryBudget& budget)
{
    if (header.type != Type::Integer) {
        reader.fail("is of type " + header.type_name + ", expected INTE");
    }
    if (header.count != cells) {
        reader.fail("has " + std::to_string(header.count) + " values, expected " + std::to_string(cells));
    }
    budget.claim(reader, cells);
    ActiveFlags flags;
    flags.active = reserved_array<std::uint8_t>(static_cast<std::size_t>(cells));
    std::array<std::int32_t, chunk> values;
    constexpr std::int32_t largest = 3;
    while (flags.active.size() < cells) {
        const std::size_t first = flags.active.size();
        const auto part
            = std::span(values).first(std::min<std::size_t>(chunk, static_cast<std::size_t>(cells) - first));
        if (reader.read(part) != part.size()) {
            reader.fail("has fewer values than its header states");
        }
        flags.active.resize(first + part.size());
        std::uint8_t* const to = flags.active.data() + first;
        std::uint32_t bits = 0;
        for (const std::int32_t value : part) {
            bits |= static_cast<std::uint32_t>(value);
        }
        if (bits > static_cast<std::uint32_t>(largest)) {
            const auto bad
                = std::find_if(part.begin(), part.end(), [](auto value) { return value < 0 || value > largest; });
            reader.fail("value " + std::to_string(first + static_cast<std::size_t>(bad - part.begin()) + 1) + " is "
                        + std::to_string(*bad) + ", expected 0 to 3");
        }
        const std::int32_t mask = dual_porosity ? 1 : largest;
        std::uint32_t active = 0;
        for (std::size_t i = 0; i < part.size(); ++i) {
            to[i] = static_cast<std::uint8_t>((part[i] & mask) != 0);
            active += to[i];
        }
        flags.matrix += active;
        if (bits > 1) {
            for (const std::int32_t value : part) {
                flags.special += static_cast<std::uint64_t>(value > 1);
            }
        }
    }
    flags.fracture = dual_porosity ? flags.special : 0;
    return flags;
}

bool is_numeric(const Header& header)
{
    return header.type == Type::Integer || header.type == Type::Real || header.type == Type::Double;
}

namespace {

template <class Read> PropertyData make_property(Reader& reader, const Header& header, std::uint64_t cells,
                                                 MemoryBudget& budget, const Read& read)
{
    budget.claim(reader, cells * header.width);
    PropertyData property;
    property.name = to_utf8(header.name);
    switch (header.type) {
    case Type::Real: property.values = read(float{}); break;
    case Type::Double: property.values = read(double{}); break;
    case Type::Integer: property.values = read(std::int32_t{}); break;
    default: reader.fail("is of type " + header.type_name + ", expected numbers");
    }
    return property;
}

constexpr std::int32_t first_no_data = -999;

/// The first of -999, -9999, ... that is no value of an active cell; written to the other cells.
double choose_no_data(std::vector<std::int32_t>& values, std::span<const std::uint8_t> active)
{
    std::int64_t candidate = first_no_data;
    const auto is_code = [&](std::int32_t code) {
        for (std::size_t i = 0; i < values.size(); ++i) {
            if (active[i] != 0 && values[i] == code) {
                return true;
            }
        }
        return false;
    };
    while (candidate > std::numeric_limits<std::int32_t>::min() && is_code(static_cast<std::int32_t>(candidate))) {
        candidate = candidate * 10 - 9;
    }
    candidate = std::max<std::int64_t>(candidate, std::numeric_limits<std::int32_t>::min());
    for (std::size_t i = 0; i < values.size(); ++i) {
        values[i] = active[i] != 0 ? values[i] : static_cast<std::int32_t>(candidate);
    }
    return static_cast<double>(candidate);
}

} // namespace

PropertyData read_cells(Reader& reader, const Header& header, std::uint64_t cells, MemoryBudget& budget)
{
    return make_property(reader, header, cells, budget, [&]<class T>(T) {
        return read_array<T>(reader, cells, [](std::span<const T>) {});
    });
}

PropertyData read_active_cells(Reader& reader, const Header& header, std::span<const std::uint8_t> active,
                               MemoryBudget& budget)
{
    bool some_inactive = false;
    bool clash = false;
    PropertyData property = make_property(reader, header, active.size(), budget, [&]<class T>(T) {
        T undefined{};
        if constexpr (std::is_integral_v<T>) {
            undefined = first_no_data;
        } else {
            undefined = std::numeric_limits<T>::quiet_NaN();
        }
        auto values = reserved_array<T>(active.size());
        std::array<T, chunk + 1> part; // one more, which a cell that is not active may look at
        part[0] = undefined;
        while (values.size() < active.size()) {
            const std::size_t first = values.size();
            values.resize(std::min(active.size(), first + chunk));
            const std::span<const std::uint8_t> flags = active.subspan(first, values.size() - first);
            std::size_t wanted = 0;
            for (const std::uint8_t flag : flags) {
                wanted += static_cast<std::size_t>(flag != 0);
            }
            if (reader.read(std::span<T>(part).first(wanted)) != wanted) {
                reader.fail("has fewer values than there are active cells");
            }
            some_inactive = some_inactive || wanted < flags.size();
            if constexpr (std::is_integral_v<T>) {
                clash = clash || std::find(part.begin(), part.begin() + static_cast<std::ptrdiff_t>(wanted), undefined)
                        != part.begin() + static_cast<std::ptrdiff_t>(wanted);
            }
            T* const to = values.data() + first;
            std::size_t next = 0;
            for (std::size_t i = 0; i < flags.size(); ++i) {
                to[i] = flags[i] != 0 ? part[next] : undefined;
                next += static_cast<std::size_t>(flags[i] != 0);
            }
        }
        return values;
    });
    if (some_inactive && property.discrete()) {
        property.no_data = clash ? choose_no_data(std::get<std::vector<std::int32_t>>(property.values), active)
                                 : static_cast<double>(first_no_data);
    }
    return property;
}

void PassedOver::add(const Header& header)
{
    constexpr std::size_t most = 20;
    ++count_;
    if (names_.size() < most) {
        names_.push_back(to_utf8(header.name) + " (" + std::to_string(header.count) + ' ' + header.type_name + ')');
    }
}

void PassedOver::tell(MessageLog& log, const std::string& file, const std::string& what) const
{
    if (names_.empty()) {
        return;
    }
    std::string text = "left out, " + what + ": ";
    for (std::size_t i = 0; i < names_.size(); ++i) {
        text += (i == 0 ? "" : ", ") + names_[i];
    }
    if (count_ > names_.size()) {
        text += " and " + std::to_string(count_ - names_.size()) + " more";
    }
    log.add("arrays left out", {Message::Level::Info, to_utf8(file), 0, text});
}

std::string plural(std::uint64_t count, const char* one)
{
    return std::to_string(count) + ' ' + one + (count == 1 ? "" : "s");
}

void Refinements::begin()
{
    refinements_ += static_cast<std::uint64_t>(!inside_);
    inside_ = true;
}

bool Refinements::take(const Header& header)
{
    if (header.name == "LGR") {
        inside_ = false; // one that has no end ends where the next begins
        begin();
    } else if (header.name == "ENDLGR") {
        inside_ = false;
    } else if (header.name == "NNC1" || header.name == "NNCL" || header.name == "NNA1") {
        connections_ += header.count;
    } else {
        return inside_ || header.name.starts_with("NN");
    }
    return true;
}

void Refinements::tell(MessageLog& log, const std::string& file) const
{
    std::string text;
    if (refinements_ > 0) {
        text = ' ' + plural(refinements_, "local refinement");
    }
    if (connections_ > 0) {
        text += (text.empty() ? " " : ", ") + plural(connections_, "connection") + " of cells that are no neighbours";
    }
    if (!text.empty()) {
        log.add("things left out", {Message::Level::Info, to_utf8(file), 0, "left out:" + text});
    }
}

// --- writing ---------------------------------------------------------------------------------------------------------

namespace {

constexpr std::size_t longest_name = 8;

bool fits_as_it_is(const std::string& name)
{
    return !name.empty() && name.size() <= longest_name && std::all_of(name.begin(), name.end(), [](char c) {
        return c > ' ' && c <= '~' && c != '\'';
    });
}

/// One '_' for every character that has no place in a keyword.
std::string plain_name(const std::string& name)
{
    std::string plain;
    for (const char c : name) {
        const auto byte = static_cast<unsigned char>(c);
        if ((byte & 0xC0) == 0x80) {
            continue; // the rest of a character of several bytes
        }
        plain += c > ' ' && c <= '~' && c != '\'' ? c : '_';
    }
    return plain.empty() ? "P" : plain;
}

} // namespace

KeywordNames::KeywordNames(const std::vector<PropertyData>& properties, const std::set<std::string>& taken)
    : names_(properties.size())
{
    std::set<std::string> used = taken;
    const auto free = [&used](const std::string& name) {
        return !used.contains(name) && !is_never_property(name);
    };
    for (std::size_t i = 0; i < properties.size(); ++i) {
        if (!properties[i].on_points && fits_as_it_is(properties[i].name) && free(properties[i].name)) {
            names_[i] = properties[i].name;
            used.insert(names_[i]);
        }
    }
    for (std::size_t i = 0; i < properties.size(); ++i) {
        if (!names_[i].empty() || properties[i].on_points) {
            continue;
        }
        const std::string plain = plain_name(properties[i].name);
        std::string name = plain.substr(0, longest_name);
        for (int n = 2; !free(name); ++n) {
            const std::string number = std::to_string(n);
            name = plain.substr(0, longest_name - number.size()) + number;
        }
        names_[i] = name;
        used.insert(name);
    }
}

void KeywordNames::tell(MessageLog& log, const std::vector<PropertyData>& properties) const
{
    for (std::size_t i = 0; i < properties.size(); ++i) {
        if (!names_[i].empty() && names_[i] != properties[i].name) {
            log.add("properties under other names",
                    {Message::Level::Warning, "", 0,
                     "property \"" + properties[i].name + "\" is written as " + names_[i]
                         + ": names have up to 8 characters and differ from the format's own"});
        }
    }
}

void WriteProgress::add(std::uint64_t values)
{
    done_ += values;
    if (progress_
        && !progress_(
            std::min(1.0, static_cast<double>(done_) / static_cast<double>(std::max<std::uint64_t>(values_, 1))))) {
        throw Cancelled{};
    }
}

void write_frame(Writer& writer, const GridFrame& frame, const std::filesystem::path& target, MessageLog& log)
{
    const auto word = [&log](const std::string& text) {
        if (text.size() > longest_name) {
            log.add("words that are too long", {Message::Level::Warning, "", 0,
                                                "the unit \"" + text + "\" is cut to 8 characters"});
        }
        return text.substr(0, longest_name);
    };
    if (!frame.map_units.empty()) {
        writer.strings("MAPUNITS", std::array{word(frame.map_units)}, target);
    }
    if (frame.map_axes) {
        std::array<float, 6> values{};
        narrow(*frame.map_axes, values);
        writer.begin("MAPAXES", Type::Real, values.size(), target);
        writer.put(std::span<const float>(values));
        if (!fits_float(*frame.map_axes)) {
            log.add("rounded numbers", {Message::Level::Warning, "", 0, "MAPAXES is rounded to 32 bits"});
        }
    }
    if (!frame.grid_units.empty() || frame.grid_units_map) {
        writer.strings("GRIDUNIT", std::array{word(frame.grid_units), std::string(frame.grid_units_map ? "MAP" : "")},
                       target);
    }
}

namespace {

constexpr std::size_t write_chunk = 64 * 1024;

/// Calls put(first, count) for pieces of an array and looks at the progress between them.
template <class Put> void in_chunks(std::size_t count, WriteProgress& progress, const Put& put)
{
    for (std::size_t first = 0; first < count; first += write_chunk) {
        const std::size_t part = std::min(write_chunk, count - first);
        put(first, part);
        progress.add(part);
    }
}

} // namespace

void write_flags(Writer& writer, const std::vector<std::uint8_t>& active, const std::filesystem::path& target,
                 WriteProgress& progress)
{
    writer.begin("ACTNUM", Type::Integer, active.size(), target);
    std::vector<std::int32_t> values(std::min(active.size(), write_chunk));
    in_chunks(active.size(), progress, [&](std::size_t first, std::size_t count) {
        std::copy_n(active.begin() + static_cast<std::ptrdiff_t>(first), count, values.begin());
        writer.put(std::span<const std::int32_t>(values).first(count));
    });
}

bool write_reals(Writer& writer, std::string_view name, const RealArray& array, bool keep_double,
                 const std::filesystem::path& target, WriteProgress& progress)
{
    const bool as_double = array.is_double() && keep_double;
    writer.begin(name, as_double ? Type::Double : Type::Real, array.size(), target);
    bool rounded = false;
    array.visit([&](auto all) {
        using T = std::remove_const_t<typename decltype(all)::element_type>;
        std::vector<float> rounding(!as_double && std::is_same_v<T, double> ? std::min(all.size(), write_chunk) : 0);
        in_chunks(all.size(), progress, [&](std::size_t first, std::size_t count) {
            const auto part = all.subspan(first, count);
            if constexpr (std::is_same_v<T, float>) {
                writer.put(std::span<const float>(part));
            } else if (as_double) {
                writer.put(std::span<const double>(part));
            } else {
                const auto put = std::span(rounding).first(count);
                narrow(part, put);
                rounded = rounded || (!fits_float(part) && std::any_of(part.begin(), part.end(), [](double value) {
                    return !std::isnan(value) && !fits_float(value);
                }));
                writer.put(std::span<const float>(put));
            }
        });
    });
    return rounded;
}

void write_property(Writer& writer, const std::string& name, const PropertyData& property,
                    std::span<const std::uint8_t> active, const std::filesystem::path& target, WriteProgress& progress)
{
    const std::size_t count
        = active.empty() ? property.size()
                         : active.size() - static_cast<std::size_t>(std::count(active.begin(), active.end(), 0));
    std::visit(
        [&]<class T>(const std::vector<T>& values) {
            writer.begin(name,
                         std::is_integral_v<T> ? Type::Integer
                         : sizeof(T) == 8      ? Type::Double
                                               : Type::Real,
                         count, target);
            const bool replace = !std::is_integral_v<T> && property.no_data.has_value();
            if (active.empty() && !replace) {
                in_chunks(values.size(), progress, [&](std::size_t first, std::size_t part) {
                    writer.put(std::span<const T>(values).subspan(first, part));
                });
                return;
            }
            std::vector<T> chosen(std::min(values.size(), write_chunk));
            in_chunks(values.size(), progress, [&](std::size_t first, std::size_t part) {
                std::size_t used = 0;
                for (std::size_t i = first; i < first + part; ++i) {
                    if (!active.empty() && active[i] == 0) {
                        continue;
                    }
                    chosen[used] = values[i];
                    if constexpr (!std::is_integral_v<T>) {
                        if (replace && values[i] == static_cast<T>(*property.no_data)) {
                            chosen[used] = std::numeric_limits<T>::quiet_NaN();
                        }
                    }
                    ++used;
                }
                writer.put(std::span<const T>(chosen).first(used));
            });
        },
        property.values);
}

void tell_losses(const GridModel& model, const std::string& format, const std::string& file,
                 std::optional<UnitSystem> units, const std::vector<bool>& active_only, MessageLog& log)
{
    const auto lost = [&](std::uint64_t count, const char* one, const char* many, const std::string& names = {}) {
        if (count > 0) {
            log.add("things left out", {Message::Level::Warning, to_utf8(file), 0,
                                        format + " has no place for " + counted(count, one, many) + names});
        }
    };
    const auto list = [](const auto& items, auto name) {
        std::string text;
        constexpr std::size_t most = 10;
        for (std::size_t i = 0; i < std::min(items.size(), most); ++i) {
            text += (i == 0 ? ": " : ", ") + name(items[i]);
        }
        return text + (items.size() > most ? ", ..." : "");
    };
    const auto select = [&model](auto wanted) {
        std::vector<std::string> names;
        for (const PropertyData& property : model.properties) {
            if (wanted(property)) {
                names.push_back(property.name);
            }
        }
        return names;
    };
    const auto itself = [](const std::string& name) { return name; };
    lost(model.regions.size(), "region", "regions", list(model.regions, [](const RegionData& r) { return r.name; }));
    lost(model.layers.size(), "stratigraphic unit", "stratigraphic units",
         list(model.layers, [](const LayerData& layer) { return layer.unit; }));
    lost(model.faults.size(), "fault segment", "fault segments");
    lost(model.kept.size(), "kept keyword", "kept keywords",
         list(model.kept, [](const KeptKeyword& keyword) { return keyword.name; }));
    const auto on_points = select([](const PropertyData& p) { return p.on_points; });
    lost(on_points.size(), "property on nodes", "properties on nodes", list(on_points, itself));
    const auto named = select([](const PropertyData& p) { return !p.on_points && !p.code_names.empty(); });
    lost(named.size(), "property's code names", "properties' code names", list(named, itself));
    const auto other_units = select([&](const PropertyData& p) {
        return !p.on_points && !p.unit.empty() && (!units || p.unit != unit_of(p.name, *units));
    });
    lost(other_units.size(), "property's unit", "properties' units", list(other_units, itself));
    std::vector<std::string> undefined;
    for (std::size_t i = 0; i < model.properties.size(); ++i) {
        const PropertyData& property = model.properties[i];
        if (property.on_points || !property.discrete() || !property.no_data) {
            continue;
        }
        const bool only = !active_only.empty() && active_only[i];
        const auto& codes = std::get<std::vector<std::int32_t>>(property.values);
        for (std::size_t cell = 0; cell < codes.size(); ++cell) {
            if (static_cast<double>(codes[cell]) == *property.no_data && (!only || model.active[cell] != 0)) {
                undefined.push_back(property.name);
                break;
            }
        }
    }
    lost(undefined.size(), "property's mark of undefined cells, which is written as a code",
         "properties' marks of undefined cells, which are written as codes", list(undefined, itself));
    const auto marked
        = select([&](const PropertyData& p) { return !p.on_points && !p.discrete() && p.no_data.has_value(); });
    if (!marked.empty()) {
        log.add("undefined values", {Message::Level::Info, to_utf8(file), 0,
                                     "undefined values are written as NaN" + list(marked, itself)});
    }
}

} // namespace lodex::records
