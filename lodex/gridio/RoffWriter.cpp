#include <lodex/gridio/RoffWriter.h>

#include <lodex/gridio/MessageLog.h>
#include <lodex/gridio/RoffLayout.h>
#include <lodex/gridio/RoffOutput.h>
#include <lodex/gridio/RoffReader.h>

#include <algorithm>
#include <atomic>
#include <limits>
#include <map>
#include <set>
#include <tbb/blocked_range.h>
#include <tbb/parallel_for.h>

namespace lodex::roff {

namespace {

constexpr std::size_t most_codes = 1024; ///< values without a name that are listed among the codes
constexpr std::int64_t slab_values = std::int64_t{1} << 22;

/// Names in the format's own tags stand in quotes that know no escapes.
std::string plain(std::string_view text)
{
    std::string result(text);
    for (char& c : result) {
        c = c == '"' || static_cast<unsigned char>(c) < 0x20 || c == 0x7F ? '_' : c;
    }
    return result;
}

template <class T> bool same_bits(T a, T b)
{
    return std::memcmp(&a, &b, sizeof(T)) == 0;
}

constexpr std::int64_t most_columns = 64; ///< turned together

/// Columns along I that are turned together so that the buffer stays small.
std::int64_t slab_columns(std::int64_t values_per_column)
{
    return std::clamp<std::int64_t>(slab_values / values_per_column, 1, most_columns);
}

/// Calls work(first, end) for parts of the rows along J on all threads.
template <class Work> void for_rows(std::int64_t count, const Work& work)
{
    constexpr std::int64_t rows = 8;
    tbb::parallel_for(tbb::blocked_range<std::int64_t>(0, count, rows),
                      [&work](const auto& range) { work(range.begin(), range.end()); });
}

class Writer {
public:
    Writer(const GridModel& model, const std::filesystem::path& path, const WriteOptions& options, Form form)
        : model_(model), path_(path), options_(options), file_(path), out_((check(), file_), form)
    {
    }

    WriteResult run()
    {
        tick(0);
        write_head();
        write_frame();
        if (!model_.layers.empty()) {
            write_layers();
        }
        if (!model_.coord.empty()) {
            write_geometry();
        }
        if (!model_.active.empty()) {
            out_.begin_tag("active");
            out_.begin_array(Type::Bool, "data", model_.active.size());
            write_cells<std::uint8_t>(std::span<const std::uint8_t>(model_.active), [](std::uint8_t flag) {
                return static_cast<std::uint8_t>(flag != 0 ? 1 : 0);
            });
            out_.end_array();
            out_.end_tag();
        }
        for (const PropertyData& property : model_.properties) {
            if (property.on_points) {
                write_points(property);
            } else {
                write_property(property);
            }
        }
        for (const RegionData& region : model_.regions) {
            write_region(region);
        }
        write_faults();
        write_kept();
        out_.begin_tag("eof");
        out_.end_tag();
        tick(0);
        file_.commit();
        WriteResult result;
        result.bytes = file_.size();
        result.messages = log_.take();
        return result;
    }

private:
    [[noreturn]] void fail(std::string reason) const { throw FileError(path_.string(), 0, std::move(reason)); }
    void inform(const std::string& kind, std::string text)
    {
        log_.add(kind, {Message::Level::Info, to_utf8(path_.string()), 0, std::move(text)});
    }
    void warn(const std::string& kind, std::string text)
    {
        log_.add(kind, {Message::Level::Warning, to_utf8(path_.string()), 0, std::move(text)});
    }
    void tick(std::int64_t values)
    {
        done_ += static_cast<double>(values);
        if (options_.progress && !options_.progress(std::min(1.0, done_ / total_))) {
            throw Cancelled{};
        }
    }
    [[nodiscard]] std::int32_t narrow(std::int64_t value, const char* what) const
    {
        if (value < std::numeric_limits<std::int32_t>::min() || value > std::numeric_limits<std::int32_t>::max()) {
            fail(std::string(what) + ' ' + std::to_string(value) + " is more than the format can hold");
        }
        return static_cast<std::int32_t>(value);
    }

    void check();
    void write_head();
    void write_frame();
    void write_layers();
    void write_geometry();
    void write_coordinates();
    void write_depths();
    template <class Depth> void find_splits(std::span<const Depth> zcorn);
    template <class Depth, class Stored, class Convert>
    void write_node_values(std::span<const Depth> zcorn, const Convert& convert);
    void write_property(const PropertyData& property);
    template <class Value> void write_values(const PropertyData& property, std::span<const Value> values);
    void write_points(const PropertyData& property);
    void write_region(const RegionData& region);
    void write_faults();
    void write_kept();
    template <class To, class From, class Convert>
    void write_cells(std::span<const From> values, const Convert& convert);
    void write_codes(const PropertyData& property);
    void write_code_names(const PropertyData& property);
    std::string free_name(std::string_view wanted);

    const GridModel& model_;
    const std::filesystem::path& path_;
    const WriteOptions& options_;
    AtomicFile file_;
    double done_ = 0;
    double total_ = 1;
    MessageLog log_;
    Output out_;
    std::array<double, 3> offset_{};
    std::set<std::string> names_;
    std::vector<std::uint8_t> splits_; ///< of all nodes in the file's order
    std::uint64_t split_sum_ = 0;
};

void Writer::check()
{
    const auto [ni, nj, nk] = model_.size;
    if (ni < 1 || nj < 1 || nk < 1) {
        fail("the grid has " + std::to_string(ni) + " x " + std::to_string(nj) + " x " + std::to_string(nk)
             + " cells, expected 1 or more along each axis");
    }
    constexpr std::int64_t most = std::numeric_limits<std::int32_t>::max();
    if (ni + 1 > most / (nj + 1) || (ni + 1) * (nj + 1) > most / (nk + 1)) {
        fail("the grid has more points than the format can count");
    }
    const auto cells = static_cast<std::size_t>(model_.cells());
    const auto expect = [this](const std::string& what, std::size_t count, std::size_t expected) {
        if (count != expected) {
            fail(what + " has " + std::to_string(count) + " values, expected " + std::to_string(expected));
        }
        total_ += static_cast<double>(count);
    };
    if (model_.coord.empty() && model_.zcorn.empty()) {
        warn("grids without geometry", "the grid has no geometry; only its parameters are written");
    } else {
        expect("coord", model_.coord.size(), 6 * static_cast<std::size_t>(model_.pillars()));
        expect("zcorn", model_.zcorn.size(), 8 * cells);
    }
    if (!model_.active.empty()) {
        expect("active", model_.active.size(), cells);
    }
    const auto points = static_cast<std::size_t>(model_.pillars() * (nk + 1));
    for (const PropertyData& property : model_.properties) {
        expect("property \"" + to_utf8(property.name) + '"', property.size(), property.on_points ? points : cells);
    }
    for (const RegionData& region : model_.regions) {
        expect("region \"" + to_utf8(region.name) + '"', region.flags.size(), cells);
    }
    std::int64_t layers = 0;
    for (const LayerData& layer : model_.layers) {
        if (layer.nb_k_cells < 1) {
            fail("unit \"" + to_utf8(layer.unit) + "\" has " + std::to_string(layer.nb_k_cells) + " layers");
        }
        layers += layer.nb_k_cells;
    }
    if (!model_.layers.empty() && layers != nk) {
        fail("the units have " + std::to_string(layers) + " layers together, the grid has " + std::to_string(nk));
    }
}

void Writer::write_head()
{
    out_.begin_tag("filedata");
    out_.scalar("byteswaptest", std::int32_t{1});
    out_.scalar("filetype", std::string_view(model_.coord.empty() ? "parameter" : "grid"));
    // No date: the same model gives the same file.
    out_.scalar("creationDate", std::string_view("UNKNOWN"));
    out_.end_tag();
    out_.begin_tag("version");
    out_.scalar("major", std::int32_t{2});
    out_.scalar("minor", std::int32_t{0});
    out_.end_tag();
    out_.begin_tag("dimensions");
    out_.scalar("nX", static_cast<std::int32_t>(model_.size[0]));
    out_.scalar("nY", static_cast<std::int32_t>(model_.size[1]));
    out_.scalar("nZ", static_cast<std::int32_t>(model_.size[2]));
    out_.end_tag();
}

void Writer::write_frame()
{
    const GridFrame& frame = model_.frame;
    if (!frame.map_axes && frame.map_units.empty() && frame.grid_units.empty() && !frame.grid_units_map) {
        return;
    }
    inform("what other programs pass over",
           "map axes and units are written in a tag that other programs pass over; they "
           "take the coordinates as they are");
    out_.begin_tag("lodexFrame");
    out_.scalar("mapUnits", std::string_view(escape(frame.map_units)));
    out_.scalar("gridUnits", std::string_view(escape(frame.grid_units)));
    out_.scalar("gridUnitsMap", std::int32_t{frame.grid_units_map ? 1 : 0});
    if (frame.map_axes) {
        out_.array("mapAxes", std::span<const double>(*frame.map_axes));
    }
    out_.end_tag();
}

void Writer::write_layers()
{
    std::vector<std::int32_t> counts, styles;
    std::vector<std::string> units;
    std::vector<float> thickness;
    for (const LayerData& layer : model_.layers) {
        counts.push_back(static_cast<std::int32_t>(layer.nb_k_cells));
        styles.push_back(static_cast<std::int32_t>(layer.style));
        units.push_back(escape(layer.unit));
        thickness.push_back(layer.cell_thickness);
    }
    out_.begin_tag("subgrids");
    out_.array("nLayers", std::span<const std::int32_t>(counts));
    out_.end_tag();
    inform("what other programs pass over",
           "the units are subgrids; their names and layering are written in a tag that other programs pass over");
    out_.begin_tag("lodexUnits");
    out_.array("unit", std::span<const std::string>(units));
    out_.array("cellThickness", std::span<const float>(thickness));
    out_.array("style", std::span<const std::int32_t>(styles));
    out_.end_tag();
}

void Writer::write_geometry()
{
    out_.begin_tag("lodexGeometry");
    out_.scalar("coordDouble", std::int32_t{model_.coord.is_double() ? 1 : 0});
    out_.scalar("zcornDouble", std::int32_t{model_.zcorn.is_double() ? 1 : 0});
    out_.end_tag();
    write_coordinates();
    write_depths();
}

/// Numbers of 64 bits are written as the usual 32 bits relative to an offset, and what that leaves over, where it
/// leaves anything, in a tag of its own: off + f + rest gives the number to the last bit.
void Writer::write_coordinates()
{
    const auto [ni, nj, nk] = model_.size;
    const RealArray& coord = model_.coord;
    std::array<bool, 2> fits{true, true};
    std::array<double, 2> low{1e300, 1e300};
    std::array<double, 2> high{-1e300, -1e300};
    for (std::size_t n = 0; n < coord.size(); ++n) {
        const double value = coord[n];
        if (!std::isfinite(value)) {
            fail("coord has the value " + shortest_text(value) + " at position " + std::to_string(n + 1)
                 + ", expected a finite number");
        }
        if (const std::size_t axis = n % 3; axis < 2) {
            fits[axis] = fits[axis] && static_cast<double>(static_cast<float>(value)) == value;
            low[axis] = std::min(low[axis], value);
            high[axis] = std::max(high[axis], value);
        }
    }
    for (std::size_t axis = 0; axis < 2; ++axis) {
        // A round number near the middle, which 32 bits hold.
        const double middle = std::round(low[axis] / 2 + high[axis] / 2);
        offset_[axis] = fits[axis] || std::fabs(middle) >= (1 << 24) ? 0 : middle;
    }
    std::vector<float> stored(coord.size());
    std::vector<double> rest(coord.size());
    double largest = 0;
    bool exact = true;
    for (std::int64_t i = 0; i <= ni; ++i) {
        for (std::int64_t j = 0; j <= nj; ++j) {
            const auto from = static_cast<std::size_t>(6 * (i + (ni + 1) * j));
            const auto to = static_cast<std::size_t>(6 * (i * (nj + 1) + j));
            for (std::size_t n = 0; n < 6; ++n) {
                const std::size_t axis = n % 3;
                const double value = coord[from + (n + 3) % 6];
                const double sign = axis == 2 ? -1 : 1;
                const auto part = static_cast<float>(value * sign - offset_[axis]);
                const double read = (offset_[axis] == 0 ? part : static_cast<double>(part) + offset_[axis]) * sign;
                stored[to + n] = part;
                rest[to + n] = value - read;
                exact = exact && std::isfinite(part) && read + rest[to + n] == value;
                largest = std::max(largest, std::fabs(rest[to + n]));
            }
        }
    }
    if (!exact) {
        offset_ = {};
    }
    out_.begin_tag("translate");
    out_.scalar("xoffset", static_cast<float>(offset_[0]));
    out_.scalar("yoffset", static_cast<float>(offset_[1]));
    out_.scalar("zoffset", 0.0F);
    out_.end_tag();
    out_.begin_tag("scale");
    out_.scalar("xscale", 1.0F);
    out_.scalar("yscale", 1.0F);
    out_.scalar("zscale", -1.0F);
    out_.end_tag();
    out_.begin_tag("cornerLines");
    if (exact) {
        out_.array("data", std::span<const float>(stored));
        out_.end_tag();
        if (largest > 0) {
            out_.begin_tag("lodexCornerLines");
            out_.array("data", std::span<const double>(rest));
            out_.end_tag();
            inform("what other programs pass over",
                   "pillars need 64 bits; other programs read them rounded to 32 bits, at most "
                       + shortest_text(static_cast<float>(largest)) + " off");
        }
    } else {
        for (std::int64_t i = 0; i <= ni; ++i) {
            for (std::int64_t j = 0; j <= nj; ++j) {
                for (std::size_t n = 0; n < 6; ++n) {
                    const auto at = static_cast<std::size_t>(6 * (i * (nj + 1) + j)) + n;
                    const double value = coord[static_cast<std::size_t>(6 * (i + (ni + 1) * j)) + (n + 3) % 6];
                    rest[at] = n % 3 == 2 ? -value : value;
                }
            }
        }
        out_.array("data", std::span<const double>(rest));
        out_.end_tag();
        warn("numbers of 64 bits", "pillars are written in 64 bits, which some programs do not read");
    }
    tick(static_cast<std::int64_t>(coord.size()));
}

template <class Depth> void Writer::find_splits(std::span<const Depth> zcorn)
{
    const auto [ni, nj, nk] = model_.size;
    splits_.resize(static_cast<std::size_t>(model_.pillars() * (nk + 1)));
    const std::int64_t columns = slab_columns((nj + 1) * (nk + 1));
    using Bits = std::conditional_t<sizeof(Depth) == 4, std::uint32_t, std::uint64_t>;
    constexpr Bits magnitude = std::numeric_limits<Bits>::max() >> 1; // all but the sign
    constexpr Bits lowest = Bits{1} << (std::numeric_limits<Depth>::digits - 1); // of the exponent
    std::atomic<bool> odd{false};
    for (std::int64_t i0 = 0; i0 <= ni; i0 += columns) {
        const std::int64_t i1 = std::min(i0 + columns, ni + 1);
        // Columns of corners on both sides of these nodes; there is none west of the first and east of the last one.
        const std::int64_t x0 = std::max<std::int64_t>(2 * i0 - 1, 0);
        const auto width = static_cast<std::size_t>(std::min(2 * i1 - 1, 2 * ni) - x0);
        for_rows(nj + 1, [&, ni = ni, nj = nj, nk = nk](std::int64_t j0, std::int64_t j1) {
            std::array<Bits, 2 * most_columns> all{};   // not 0: corners of the column differ
            std::array<Bits, 2 * most_columns> sides{}; // not 0: above and below differ
            Bits not_finite = 0;
            for (std::int64_t n = 0; n < (nk + 1) * (j1 - j0); ++n) {
                const std::int64_t kk = n / (j1 - j0);
                const std::int64_t j = j0 + n % (j1 - j0);
                const std::int64_t level = nk - kk;
                // Corners that there are none of, at the outside, are those of the neighbour.
                const Depth* const below = zcorn.data() + std::min(2 * level, 2 * nk - 1) * 4 * ni * nj + x0;
                const Depth* const above = zcorn.data() + std::max<std::int64_t>(2 * level - 1, 0) * 4 * ni * nj + x0;
                const std::int64_t south = std::max<std::int64_t>(2 * j - 1, 0) * 2 * ni;
                const std::int64_t north = std::min(2 * j, 2 * nj - 1) * 2 * ni;
                const auto bits = [](Depth depth) { return std::bit_cast<Bits>(depth); };
                for (std::size_t x = 0; x < width; ++x) {
                    const Bits bs = bits(below[south + static_cast<std::int64_t>(x)]);
                    const Bits bn = bits(below[north + static_cast<std::int64_t>(x)]);
                    const Bits as = bits(above[south + static_cast<std::int64_t>(x)]);
                    const Bits an = bits(above[north + static_cast<std::int64_t>(x)]);
                    sides[x] = (bs ^ as) | (bn ^ an);
                    all[x] = (bs ^ bn) | (bs ^ as) | (bs ^ an);
                    // The exponent carries over when it is the largest one.
                    not_finite |= ((bs & magnitude) + lowest) | ((bn & magnitude) + lowest)
                                  | ((as & magnitude) + lowest) | ((an & magnitude) + lowest);
                }
                for (std::int64_t i = i0; i < i1; ++i) {
                    const auto west = static_cast<std::size_t>(std::max<std::int64_t>(2 * i - 1, 0) - x0);
                    const auto east = static_cast<std::size_t>(std::min(2 * i, 2 * ni - 1) - x0);
                    const Bits apart = bits(below[south + static_cast<std::int64_t>(west)])
                        ^ bits(below[south + static_cast<std::int64_t>(east)]);
                    const bool single = (all[west] | all[east] | apart) == 0;
                    const bool level_sides = (sides[west] | sides[east]) == 0;
                    splits_[static_cast<std::size_t>((i * (nj + 1) + j) * (nk + 1) + kk)] =
                        static_cast<std::uint8_t>(single ? 1 : level_sides ? 4 : 8);
                }
            }
            if ((not_finite & ~magnitude) != 0) {
                odd = true;
            }
        });
        tick((i1 - i0) * (nj + 1) * (nk + 1));
    }
    if (odd) {
        for (std::size_t n = 0; n < zcorn.size(); ++n) {
            if (!std::isfinite(zcorn[n])) {
                fail("zcorn has the value " + shortest_text(zcorn[n]) + " at position " + std::to_string(n + 1)
                     + ", expected a finite number");
            }
        }
    }
}

template <class Depth, class Stored, class Convert>
void Writer::write_node_values(std::span<const Depth> zcorn, const Convert& convert)
{
    const auto [ni, nj, nk] = model_.size;
    const std::int64_t columns = slab_columns((nj + 1) * (nk + 1));
    std::vector<Stored> buffer;
    std::vector<std::size_t> starts;
    for (std::int64_t i0 = 0; i0 <= ni; i0 += columns) {
        const std::int64_t i1 = std::min(i0 + columns, ni + 1);
        const auto pillars = static_cast<std::size_t>((i1 - i0) * (nj + 1));
        const std::uint8_t* const splits = splits_.data() + i0 * (nj + 1) * (nk + 1);
        starts.assign(pillars + 1, 0);
        for (std::size_t p = 0; p < pillars; ++p) {
            const std::uint8_t* const column = splits + p * static_cast<std::size_t>(nk + 1);
            std::uint32_t sum = 0;
            for (std::int64_t kk = 0; kk <= nk; ++kk) {
                sum += column[kk];
            }
            starts[p + 1] = starts[p] + sum;
        }
        buffer.resize(starts[pillars]);
        for_rows(nj + 1, [&, ni = ni, nj = nj, nk = nk](std::int64_t j0, std::int64_t j1) {
            std::vector<Stored*> out;
            for (std::int64_t j = j0; j < j1; ++j) {
                for (std::int64_t i = i0; i < i1; ++i) {
                    out.push_back(buffer.data() + starts[static_cast<std::size_t>((i - i0) * (nj + 1) + j)]);
                }
            }
            for (std::int64_t n = 0; n < (nk + 1) * (j1 - j0); ++n) {
                const std::int64_t kk = n / (j1 - j0);
                const std::int64_t j = j0 + n % (j1 - j0);
                const std::int64_t level = nk - kk;
                const Depth* const below = zcorn.data() + std::min(2 * level, 2 * nk - 1) * 4 * ni * nj;
                const Depth* const above = zcorn.data() + std::max<std::int64_t>(2 * level - 1, 0) * 4 * ni * nj;
                const std::int64_t south = std::max<std::int64_t>(2 * j - 1, 0) * 2 * ni;
                const std::int64_t north = std::min(2 * j, 2 * nj - 1) * 2 * ni;
                for (std::int64_t i = i0; i < i1; ++i) {
                    Stored*& to = out[static_cast<std::size_t>((j - j0) * (i1 - i0) + i - i0)];
                    const std::int64_t west = std::max<std::int64_t>(2 * i - 1, 0);
                    const std::int64_t east = std::min(2 * i, 2 * ni - 1);
                    *to++ = convert(below[south + west]);
                    const std::uint8_t s = splits[((i - i0) * (nj + 1) + j) * (nk + 1) + kk];
                    if (s >= 4) {
                        *to++ = convert(below[south + east]);
                        *to++ = convert(below[north + west]);
                        *to++ = convert(below[north + east]);
                    }
                    if (s == 8) {
                        *to++ = convert(above[south + west]);
                        *to++ = convert(above[south + east]);
                        *to++ = convert(above[north + west]);
                        *to++ = convert(above[north + east]);
                    }
                }
            }
        });
        constexpr std::size_t piece = 1 << 17;
        for (std::size_t first = 0; first < buffer.size(); first += piece) {
            out_.numbers(std::span<const Stored>(buffer).subspan(first, std::min(piece, buffer.size() - first)));
            tick(0);
        }
        tick((i1 - i0) * (nj + 1) * (nk + 1));
    }
    out_.end_array();
}

void Writer::write_depths()
{
    model_.zcorn.visit([this](auto zcorn) {
        using Depth = typename std::decay_t<decltype(zcorn)>::value_type;
        bool as_float = true;
        double largest = 0;
        find_splits(zcorn);
        if constexpr (std::is_same_v<Depth, double>) {
            for (const double value : zcorn) {
                const auto part = static_cast<float>(value);
                const double rest = value - static_cast<double>(part);
                as_float = as_float && std::isfinite(part) && static_cast<double>(part) + rest == value;
                largest = std::max(largest, std::fabs(rest));
            }
        }
        split_sum_ = 0;
        for (const std::uint8_t split : splits_) {
            split_sum_ += split;
        }
        if (split_sum_ > static_cast<std::uint64_t>(std::numeric_limits<std::int32_t>::max())) {
            fail("the grid has more depths than the format can count");
        }
        out_.begin_tag("zvalues");
        out_.array("splitEnz", std::span<const std::uint8_t>(splits_));
        if (as_float) {
            out_.begin_array(Type::Float, "data", split_sum_);
            write_node_values<Depth, float>(zcorn, [](Depth depth) { return -static_cast<float>(depth); });
            out_.end_tag();
            if (largest > 0) {
                out_.begin_tag("lodexZvalues");
                out_.begin_array(Type::Double, "data", split_sum_);
                write_node_values<Depth, double>(zcorn, [](Depth depth) {
                    return static_cast<double>(depth) - static_cast<double>(static_cast<float>(depth));
                });
                out_.end_tag();
                inform("what other programs pass over",
                       "depths need 64 bits; other programs read them rounded to 32 bits, at most "
                           + shortest_text(static_cast<float>(largest)) + " off");
            }
        } else {
            out_.begin_array(Type::Double, "data", split_sum_);
            write_node_values<Depth, double>(zcorn, [](Depth depth) { return -static_cast<double>(depth); });
            out_.end_tag();
            warn("numbers of 64 bits", "depths are written in 64 bits, which some programs do not read");
        }
    });
    splits_ = {};
}

/// Numbers of all cells of the array that is begun, in the file's order.
template <class To, class From, class Convert>
void Writer::write_cells(std::span<const From> values, const Convert& convert)
{
    const auto [ni, nj, nk] = model_.size;
    const std::int64_t columns = slab_columns(nj * nk);
    const auto pitch = static_cast<std::size_t>(nj * nk) + tile_columns;
    std::vector<To> buffer(pitch * static_cast<std::size_t>(std::min(columns, ni)));
    for (std::int64_t i0 = 0; i0 < ni; i0 += columns) {
        const auto count = static_cast<std::size_t>(std::min(columns, ni - i0));
        for_rows(nj, [&, ni = ni, nj = nj, nk = nk](std::int64_t j0, std::int64_t j1) {
            for (std::int64_t n = 0; n < nk * (j1 - j0); ++n) {
                const std::int64_t kk = n / (j1 - j0);
                const std::int64_t j = j0 + n % (j1 - j0);
                const From* const from = values.data() + i0 + ni * (j + nj * (nk - 1 - kk));
                To* const to = buffer.data() + j * nk + kk;
                for (std::size_t i = 0; i < count; ++i) {
                    to[i * pitch] = convert(from[i]);
                }
            }
        });
        constexpr std::size_t piece = 1 << 17;
        const auto column = static_cast<std::size_t>(nj * nk);
        for (std::size_t i = 0; i < count; ++i) {
            for (std::size_t first = 0; first < column; first += piece) {
                const std::size_t part = std::min(piece, column - first);
                out_.numbers(std::span<const To>(buffer).subspan(i * pitch + first, part));
                tick(static_cast<std::int64_t>(part));
            }
        }
    }
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
    for (const std::int32_t value : values) {
        if (codes.empty() || !codes.contains(value)) {
            if (codes.size() == most_codes) {
                codes.clear();
                break;
            }
            codes[value] = "";
        }
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

    std::int64_t nans = 0;
    std::int64_t genuine = 0;
    bool fits_float = true;
    bool infinite = false;
    const bool plain_undefined = no_data && *no_data == undefined;
    for (const Value value : values) {
        if constexpr (real) {
            if (std::isnan(value)) {
                ++nans;
                continue;
            }
            infinite = infinite || std::isinf(value);
            const bool is_no_data = no_data && same_bits(value, *no_data);
            fits_float = fits_float
                && (is_no_data || static_cast<Value>(static_cast<float>(value)) == value); // infinity does
        }
        genuine += value == undefined && !plain_undefined ? 1 : 0;
    }
    // What -999 stands for in most cells: itself, the property's undefined value, or not a number.
    int meaning = 0;
    if (!as_byte) {
        meaning = no_data && !plain_undefined ? 1 : !no_data && !property.no_data && nans > 0 ? 2 : 0;
    }
    const bool odd_no_data = property.no_data && !no_data; // NaN or out of range
    const auto stored = [&](Value value) {
        if constexpr (real) {
            if (std::isnan(value)) {
                return undefined;
            }
        }
        return meaning == 1 && same_bits(value, *no_data) ? undefined : value;
    };
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
    if (infinite) {
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
    if constexpr (std::is_same_v<Value, double>) {
        store_double = fits_float;
        if (store_double) {
            out_.begin_array(Type::Float, "data", values.size());
            write_cells<float>(values, [&stored](Value value) { return static_cast<float>(stored(value)); });
        } else {
            warn("numbers of 64 bits", shown + " is written in 64 bits, which some programs do not read");
            out_.begin_array(Type::Double, "data", values.size());
            write_cells<double>(values, stored);
        }
    } else if (as_byte) {
        out_.begin_array(Type::Byte, "data", values.size());
        write_cells<std::uint8_t>(values, [](Value value) { return static_cast<std::uint8_t>(value); });
    } else {
        out_.begin_array(type_of<Value>, "data", values.size());
        write_cells<Value>(values, stored);
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

void Writer::write_points(const PropertyData& property)
{
    inform("what other programs pass over",
           "property \"" + to_utf8(property.name)
               + "\" stands on points and is written in a tag that other programs pass over");
    out_.begin_tag("lodexPoints");
    out_.scalar("name", std::string_view(escape(property.name)));
    out_.scalar("unit", std::string_view(escape(property.unit)));
    if (property.no_data) {
        out_.scalar("noData", *property.no_data);
    }
    if (!property.code_names.empty()) {
        write_code_names(property);
    }
    std::visit([this](const auto& values) { out_.array("data", std::span(values)); }, property.values);
    out_.end_tag();
    tick(static_cast<std::int64_t>(property.size()));
}

void Writer::write_region(const RegionData& region)
{
    const std::string name = free_name(region.name);
    inform("what other programs pass over", "region \"" + to_utf8(region.name) + "\" is written as the parameter \""
                                                + to_utf8(name) + "\" of 0 and 1");
    out_.begin_tag("parameter");
    out_.scalar("name", std::string_view(name));
    out_.begin_array(Type::Byte, "data", region.flags.size());
    write_cells<std::uint8_t>(std::span<const std::uint8_t>(region.flags),
                              [](std::uint8_t flag) { return static_cast<std::uint8_t>(flag != 0 ? 1 : 0); });
    out_.end_array();
    out_.end_tag();
    out_.begin_tag("lodexParameter");
    out_.scalar("name", std::string_view(escape(region.name)));
    out_.scalar("region", std::int32_t{region.model ? 2 : 1});
    out_.end_tag();
}

void Writer::write_faults()
{
    if (model_.faults.empty()) {
        return;
    }
    inform("what other programs pass over", "the named faults are written in a tag that other programs pass over");
    std::vector<std::string> names, faces;
    std::vector<std::int32_t> boxes;
    for (const FaultSegment& fault : model_.faults) {
        names.push_back(escape(fault.name));
        faces.push_back(escape(fault.face));
        for (const auto* range : {&fault.i, &fault.j, &fault.k}) {
            for (const std::int64_t index : *range) {
                boxes.push_back(narrow(index, "the fault index"));
            }
        }
    }
    out_.begin_tag("lodexFaults");
    out_.array("name", std::span<const std::string>(names));
    out_.array("face", std::span<const std::string>(faces));
    out_.array("box", std::span<const std::int32_t>(boxes));
    out_.end_tag();
}

void Writer::write_kept()
{
    if (model_.kept.empty()) {
        return;
    }
    inform("what other programs pass over", std::to_string(model_.kept.size())
                                                + " kept keywords are written in a tag that other programs pass over");
    std::vector<std::string> names, texts, files;
    std::vector<std::int32_t> lines;
    for (const KeptKeyword& kept : model_.kept) {
        names.push_back(escape(kept.name));
        texts.push_back(escape(kept.text));
        files.push_back(escape(kept.file));
        lines.push_back(narrow(kept.line, "the line"));
    }
    out_.begin_tag("lodexKept");
    out_.array("name", std::span<const std::string>(names));
    out_.array("text", std::span<const std::string>(texts));
    out_.array("file", std::span<const std::string>(files));
    out_.array("line", std::span<const std::int32_t>(lines));
    out_.end_tag();
}

} // namespace

WriteResult write_file(const GridModel& model, const std::filesystem::path& path, const WriteOptions& options,
                       Form form)
{
    return Writer(model, path, options, form).run();
}

} // namespace lodex::roff
