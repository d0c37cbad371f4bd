#include <lodex/gridio/RoffReader.h>

#include <lodex/gridio/MessageLog.h>
#include <lodex/gridio/RoffInput.h>
#include <lodex/gridio/RoffLayout.h>
#include <lodex/volumes/model/LargeArray.h>
#include <lodex/utils/Memory.h>
#include <lodex/volumes/model/GridText.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cmath>
#include <limits>
#include <set>
#include <tbb/blocked_range.h>
#include <tbb/parallel_for.h>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace lodex::roff {

namespace {

constexpr std::int64_t depth_columns = 64; ///< cells along I whose depths are spread together
constexpr auto most_nodes = static_cast<std::size_t>(depth_columns + 1);

bool starts_like_zone(std::string_view name)
{
    constexpr std::string_view zone = "zone";
    return name.size() >= zone.size() && std::equal(zone.begin(), zone.end(), name.begin(), [](char a, char b) {
        return a == static_cast<char>(static_cast<unsigned char>(b) | 0x20U);
    });
}

/// How stored numbers become coordinates: (stored + offset) * scale.
struct Transform {
    std::array<double, 3> offset{};
    std::array<double, 3> scale{1, 1, -1};

    [[nodiscard]] double apply(std::size_t axis, double stored) const
    {
        // Not adding nothing keeps the sign of zero.
        return (offset[axis] == 0 ? stored : stored + offset[axis]) * scale[axis];
    }
    [[nodiscard]] bool exact_in_float(std::size_t axis) const
    {
        return offset[axis] == 0 && std::fabs(scale[axis]) == 1;
    }
};

/// Puts a depth that needs no more than its sign changed in its place.
struct StoreDepth {
    float sign;
    template <class Depth, class Stored> void operator()(Depth& depth, Stored stored) const
    {
        depth = static_cast<Depth>(stored) * static_cast<Depth>(sign);
    }
};

/// The same for a row of them, past the cache: nothing reads them soon, and they need not be read to be written. False
/// when the place does not allow it.
bool stream(float* out, const float* from, std::size_t count, float sign)
{
#if defined(__SSE2__)
    constexpr std::size_t lanes = 4;
    if (reinterpret_cast<std::uintptr_t>(out) % (lanes * sizeof(float)) != 0 || count % lanes != 0) {
        return false;
    }
    const __m128 signs = _mm_set1_ps(sign);
    for (std::size_t n = 0; n < count; n += lanes) {
        _mm_stream_ps(out + n, _mm_mul_ps(_mm_loadu_ps(from + n), signs));
    }
    return true;
#else
    (void)out, (void)from, (void)count, (void)sign;
    return false;
#endif
}

/// make_array() for the largest array of a grid: the system hands out its pages on all threads.
template <class T> std::vector<T> make_touched_array(std::size_t size)
{
    constexpr std::size_t large = std::size_t{1} << 26;
    if (size * sizeof(T) < large) {
        return make_array<T>(size);
    }
    std::vector<T> array;
    array.reserve(size);
    auto* const bytes = reinterpret_cast<volatile char*>(array.data());
#if defined(__linux__) && defined(MADV_HUGEPAGE)
    constexpr std::uintptr_t page = 4096;
    const auto first = (reinterpret_cast<std::uintptr_t>(array.data()) + page - 1) / page * page;
    const auto last = reinterpret_cast<std::uintptr_t>(array.data() + size) / page * page;
    // Advice only: what it returns changes nothing.
    (void)madvise(reinterpret_cast<void*>(first), last - first, MADV_HUGEPAGE);
#endif
    constexpr std::size_t step = 4096;
    constexpr std::size_t grain = 4096; // pages
    tbb::parallel_for(tbb::blocked_range<std::size_t>(0, size * sizeof(T) / step, grain), [bytes](const auto& range) {
        for (std::size_t n = range.begin(); n != range.end(); ++n) {
            bytes[n * step] = 0;
        }
    });
    array.resize(size);
    return array;
}

/// To be called behind the last stream() of a thread, before others read what it wrote.
void end_streams()
{
#if defined(__SSE2__)
    _mm_sfence();
#endif
}

class Reader {
public:
    Reader(const ByteSource& source, const ReadOptions& options)
        : source_(source), options_(options),
          max_bytes_(options.max_bytes > 0 ? options.max_bytes : model_memory_limit()),
          input_(source, [this](std::uint64_t bytes) { claim(bytes); }, [this](std::uint64_t bytes) { tick(bytes); })
    {
    }

    ReadResult run()
    {
        check_cancelled();
        Tag tag;
        while (input_.next(tag, [this](std::string_view name) { return wanted(name); })) {
            take(std::move(tag));
        }
        if (const std::uint64_t bytes = input_.bytes_behind_end(); bytes > 0) {
            warn("bytes behind the end", input_.here(),
                 std::to_string(bytes) + " bytes behind the tag eof are passed over");
        }
        finish();
        source_.check_unchanged();
        result_.messages = log_.take();
        result_.bytes = source_.size();
        if (options_.progress && !options_.progress(1)) {
            throw Cancelled{};
        }
        return std::move(result_);
    }

private:
    void claim(std::uint64_t bytes)
    {
        if (bytes > max_bytes_ || claimed_ > max_bytes_ - bytes) {
            throw FileError(source_.name(), input_.text() ? input_.here() : 0,
                            "asks for " + std::to_string(claimed_ + bytes) + " bytes of memory, more than the "
                                + std::to_string(max_bytes_) + " bytes allowed");
        }
        claimed_ += bytes;
    }
    void release(std::uint64_t bytes) { claimed_ -= std::min(claimed_, bytes); }
    void tick(std::uint64_t bytes)
    {
        done_ += bytes;
        check_cancelled();
    }
    void check_cancelled() const
    {
        constexpr double almost = 0.99;
        const double whole = static_cast<double>(std::max<std::uint64_t>(source_.size(), 1));
        if (options_.progress && !options_.progress(std::min(almost, static_cast<double>(done_) / whole))) {
            throw Cancelled{};
        }
    }
    void add_message(const std::string& kind, Message::Level level, std::int64_t place, std::string text)
    {
        if (!input_.text() && place > 0) {
            text = "at byte " + std::to_string(place) + ": " + text;
        }
        log_.add(kind, {level, to_utf8(source_.name()), input_.text() ? place : 0, std::move(text)});
    }
    void warn(const std::string& kind, std::int64_t place, std::string text)
    {
        add_message(kind, Message::Level::Warning, place, std::move(text));
    }
    void inform(const std::string& kind, std::int64_t place, std::string text)
    {
        add_message(kind, Message::Level::Info, place, std::move(text));
    }

    [[nodiscard]] bool wanted(std::string_view name) const;
    void take(Tag tag);
    const Key& need(const Tag& tag, std::string_view key) const;
    std::string text_of(const Tag& tag, std::string_view key, std::string otherwise = {}) const;
    std::vector<std::string> texts_of(const Tag& tag, std::string_view key, std::size_t count) const;
    std::int32_t integer_of(const Tag& tag, std::string_view key, std::int32_t otherwise) const;

    void take_version(const Tag& tag);
    void take_dimensions(const Tag& tag);
    void take_transform(const Tag& tag, std::string_view suffix, std::array<double, 3>& values, bool is_scale);
    void take_subgrids(const Tag& tag);
    void take_active(const Tag& tag);
    void take_parameter(const Tag& tag);
    void take_parameter_notes(const Tag& tag);
    void take_points(const Tag& tag);
    void take_units(const Tag& tag);
    void take_frame(const Tag& tag);
    void take_faults(const Tag& tag);
    void take_kept(const Tag& tag);
    void finish();
    void finish_coordinates();
    void finish_depths();
    void name_units();
    void turn_elevations();

    void need_size(const Tag& tag) const
    {
        if (!sized_) {
            input_.fail(tag.place, "tag \"" + to_utf8(tag.name) + "\" stands before the tag dimensions");
        }
    }
    void need_cells(const Key& key, const std::string& what) const
    {
        const auto cells = static_cast<std::uint64_t>(result_.model.cells());
        if (!key.array || key.count != cells) {
            input_.fail(key.place, what + " has " + std::to_string(key.count) + " values, expected "
                                       + std::to_string(cells) + " (" + size_text(result_.model.size) + ')');
        }
    }

    template <class Work> void in_batches(std::int64_t count, std::uint64_t bytes, const Work& work);
    template <class From, class To, class Convert>
    void turn_cells(const Key& key, std::vector<To>& to, const Convert& convert);
    template <class From, class To, class Combine>
    void spread_depths(const Key& key, std::span<To> to, const Combine& combine);
    void count_splits();
    template <class Stored> bool all_fit_float(const Key& key, std::size_t axis);
    template <class Stored> void fill_depths(const Key& key, const Key* rest);
    [[noreturn]] void bad_number(const Key& key, std::uint64_t index) const
    {
        input_.fail(key.place,
                    "value " + std::to_string(index + 1) + " of \"" + to_utf8(key.name) + "\" is not finite");
    }
    template <class T> [[noreturn]] void find_bad_number(const Key& key);

    const ByteSource& source_;
    const ReadOptions& options_;
    std::uint64_t max_bytes_;
    std::uint64_t claimed_ = 0;
    std::uint64_t done_ = 0;
    MessageLog log_;
    ReadResult result_;
    Input input_;
    bool sized_ = false;
    Transform transform_;
    bool own_ = false; ///< written by this program, which states the storage of the coordinates
    bool coord_double_ = false;
    bool zcorn_double_ = false;
    std::set<std::string> seen_;
    std::optional<Tag> corner_lines_, corner_rest_, z_values_, z_rest_, units_;
    std::int64_t subgrids_place_ = 0;
    std::set<std::string> names_;
    bool parameter_open_ = false; ///< a property that notes may still come for
    std::vector<std::uint8_t> splits_;
    std::vector<std::int64_t> starts_; ///< first value of each pillar, in the file's order, and the end
};

bool Reader::wanted(std::string_view name) const
{
    static const std::set<std::string_view> all = {"filedata",       "version",     "dimensions",    "translate",
                                                   "scale",          "subgrids",    "active",        "parameter",
                                                   "lodexParameter", "lodexPoints", "lodexUnits",    "lodexFrame",
                                                   "lodexFaults",    "lodexKept",   "lodexGeometry", "eof"};
    static const std::set<std::string_view> geometry = {"cornerLines", "zvalues", "lodexCornerLines", "lodexZvalues"};
    return all.contains(name) || (!options_.properties_only && geometry.contains(name));
}

void Reader::take(Tag tag)
{
    const std::string name = tag.name;
    if (!wanted(name)) {
        if (!options_.properties_only
            || (name != "cornerLines" && name != "zvalues" && !name.starts_with(own_tag_prefix))) {
            inform("tags passed over", tag.place, "tag \"" + to_utf8(name) + "\" is not known here and passed over");
        }
        return;
    }
    if (name != "parameter" && name != "lodexParameter" && name != "lodexPoints" && !seen_.insert(name).second) {
        input_.fail(tag.place, "tag \"" + name + "\" stands there a second time");
    }
    if (name == "parameter") {
        take_parameter(tag);
        return;
    }
    if (name == "lodexParameter") {
        take_parameter_notes(tag);
        return;
    }
    parameter_open_ = false;
    if (name == "version") {
        take_version(tag);
    } else if (name == "dimensions") {
        take_dimensions(tag);
    } else if (name == "translate") {
        take_transform(tag, "offset", transform_.offset, false);
    } else if (name == "scale") {
        take_transform(tag, "scale", transform_.scale, true);
    } else if (name == "subgrids") {
        take_subgrids(tag);
    } else if (name == "active") {
        take_active(tag);
    } else if (name == "cornerLines") {
        corner_lines_ = std::move(tag);
    } else if (name == "zvalues") {
        z_values_ = std::move(tag);
    } else if (name == "lodexCornerLines") {
        corner_rest_ = std::move(tag);
    } else if (name == "lodexZvalues") {
        z_rest_ = std::move(tag);
    } else if (name == "lodexPoints") {
        take_points(tag);
    } else if (name == "lodexUnits") {
        units_ = std::move(tag);
    } else if (name == "lodexFrame") {
        take_frame(tag);
    } else if (name == "lodexFaults") {
        take_faults(tag);
    } else if (name == "lodexKept") {
        take_kept(tag);
    } else if (name == "lodexGeometry") {
        own_ = true;
        coord_double_ = integer_of(tag, "coordDouble", 0) != 0;
        zcorn_double_ = integer_of(tag, "zcornDouble", 0) != 0;
    }
}

const Key& Reader::need(const Tag& tag, std::string_view key) const
{
    const Key* const found = tag.find(key);
    if (found == nullptr) {
        input_.fail(tag.place, "tag \"" + to_utf8(tag.name) + "\" has no " + std::string(key));
    }
    return *found;
}

std::string Reader::text_of(const Tag& tag, std::string_view key, std::string otherwise) const
{
    const Key* const found = tag.find(key);
    return found == nullptr ? std::move(otherwise) : unescape(input_.string(*found));
}

std::vector<std::string> Reader::texts_of(const Tag& tag, std::string_view key, std::size_t count) const
{
    const Key& found = need(tag, key);
    if (found.type != Type::Char || found.count != count) {
        input_.fail(found.place, "\"" + to_utf8(found.name) + "\" has " + std::to_string(found.count)
                                     + " values, expected " + std::to_string(count) + " texts");
    }
    std::vector<std::string> texts;
    for (const std::string& text : found.strings) {
        texts.push_back(unescape(text));
    }
    return texts;
}

std::int32_t Reader::integer_of(const Tag& tag, std::string_view key, std::int32_t otherwise) const
{
    const Key* const found = tag.find(key);
    return found == nullptr ? otherwise : input_.integer(*found);
}

void Reader::take_version(const Tag& tag)
{
    const Key& major = need(tag, "major");
    const std::int32_t version = input_.integer(major);
    constexpr std::int32_t known = 2;
    constexpr std::int32_t most = 99;
    if (version < 0 || version > most) {
        input_.fail(major.place, "version " + std::to_string(version) + ", expected " + std::to_string(known)
                                     + (input_.text() ? "" : ": both byte orders mixed?"));
    }
    if (version != known) {
        warn("versions", major.place,
             "version " + std::to_string(version) + " is read as version " + std::to_string(known));
    }
}

void Reader::take_dimensions(const Tag& tag)
{
    GridSize size{};
    constexpr std::array<std::string_view, 3> keys = {"nX", "nY", "nZ"};
    for (std::size_t axis = 0; axis < 3; ++axis) {
        const Key& key = need(tag, keys[axis]);
        size[axis] = input_.integer(key);
        if (size[axis] < 1) {
            input_.fail(key.place,
                        std::string(keys[axis]) + " is " + std::to_string(size[axis]) + ", expected 1 or more");
        }
    }
    // Arrays have at most 2^31 values.
    constexpr std::int64_t most = std::numeric_limits<std::int32_t>::max();
    if (size[0] > most / size[1] || size[0] * size[1] > most / size[2]) {
        input_.fail(tag.place, "a grid of " + size_text(size) + " cells is larger than the format can hold");
    }
    if (options_.size && *options_.size != size) {
        input_.fail(tag.place, "the file is for a grid of " + size_text(size) + " cells, the grid has "
                                   + size_text(*options_.size));
    }
    result_.model.size = size;
    sized_ = true;
}

void Reader::take_transform(const Tag& tag, std::string_view suffix, std::array<double, 3>& values, bool is_scale)
{
    constexpr std::array<char, 3> axes = {'x', 'y', 'z'};
    for (std::size_t axis = 0; axis < 3; ++axis) {
        if (const Key* const key = tag.find(axes[axis] + std::string(suffix))) {
            values[axis] = input_.real(*key);
            if (!std::isfinite(values[axis]) || (is_scale && values[axis] == 0)) {
                input_.fail(key->place, "\"" + key->name + "\" cannot be " + std::to_string(values[axis]));
            }
        }
    }
}

void Reader::take_subgrids(const Tag& tag)
{
    need_size(tag);
    const Key& key = need(tag, "nLayers");
    subgrids_place_ = key.place;
    const std::int64_t nk = result_.model.size[2];
    if (key.count > static_cast<std::uint64_t>(nk)) {
        input_.fail(key.place, "nLayers has " + std::to_string(key.count) + " subgrids for " + std::to_string(nk)
                                   + " layers");
    }
    std::int64_t sum = 0;
    for (const std::int32_t layers : input_.integers(key)) {
        if (layers < 1) {
            input_.fail(key.place, "a subgrid of " + std::to_string(layers) + " layers");
        }
        sum += layers;
        LayerData layer;
        layer.nb_k_cells = layers;
        layer.unit = "Subgrid_" + std::to_string(result_.model.layers.size() + 1);
        result_.model.layers.push_back(std::move(layer));
    }
    if (sum != nk) {
        input_.fail(key.place, "the subgrids have " + std::to_string(sum) + " layers together, the grid has "
                                   + std::to_string(nk));
    }
}

/// Calls work(0) .. work(count - 1) on all threads and asks for progress between groups of them; `bytes` is what they
/// read.
template <class Work> void Reader::in_batches(std::int64_t count, std::uint64_t bytes, const Work& work)
{
    constexpr std::int64_t batch = 16;
    std::uint64_t told = 0;
    for (std::int64_t first = 0; first < count; first += batch) {
        const std::int64_t end = std::min(first + batch, count);
        tbb::parallel_for(tbb::blocked_range<std::int64_t>(first, end, 1), [&work](const auto& range) {
            for (std::int64_t n = range.begin(); n != range.end(); ++n) {
                work(n);
            }
        });
        const auto now = static_cast<std::uint64_t>(static_cast<double>(bytes) * static_cast<double>(end)
                                                    / static_cast<double>(count));
        tick(input_.text() ? 0 : now - told);
        told = now;
    }
}

/// Values of all cells from the file's order into that of the model.
template <class From, class To, class Convert>
void Reader::turn_cells(const Key& key, std::vector<To>& to, const Convert& convert)
{
    const GridSize size = result_.model.size;
    const auto [ni, nj, nk] = size;
    const std::vector<Tile> tiles = cut_into_tiles(size);
    in_batches(
        static_cast<std::int64_t>(tiles.size()), key.count * sizeof(From), [&, ni = ni, nj = nj, nk = nk](auto n) {
            const Tile& tile = tiles[static_cast<std::size_t>(n)];
            const std::int64_t pitch = tile.pitch();
            const std::int64_t column = tile.kk.count();
            thread_local std::vector<From> buffer;
            buffer.resize(static_cast<std::size_t>(pitch * tile.i.count()));
            std::array<const From*, tile_columns> columns{};
            for (std::int64_t i = tile.i.first; i < tile.i.end; ++i) {
                const std::int64_t first = (i * nj + tile.j.first) * nk + tile.kk.first;
                From* const room = buffer.data() + (i - tile.i.first) * pitch;
                columns[static_cast<std::size_t>(i - tile.i.first)] = input_.load(
                    key, static_cast<std::uint64_t>(first), static_cast<std::size_t>(tile.j.count() * column), room);
            }
            const auto width = static_cast<std::size_t>(tile.i.count());
            for (std::int64_t j = tile.j.first; j < tile.j.end; ++j) {
                const std::int64_t from = (j - tile.j.first) * column;
                for (std::int64_t kk = 0; kk < column; ++kk) {
                    const std::int64_t k = nk - 1 - (tile.kk.first + kk);
                    To* const out = to.data() + tile.i.first + ni * (j + nj * k);
                    for (std::size_t i = 0; i < width; ++i) {
                        out[i] = convert(columns[i][from + kk]);
                    }
                }
            }
        });
}

void Reader::take_active(const Tag& tag)
{
    need_size(tag);
    const Key& key = need(tag, "data");
    need_cells(key, "active");
    if (bytes_of(key.type) != 1) {
        input_.fail(key.place, "active is of the type " + std::string(type_name(key.type)) + ", expected bool");
    }
    claim(key.count);
    auto active = make_array<std::uint8_t>(key.count);
    turn_cells<std::uint8_t>(key, active,
                             [](std::uint8_t value) { return static_cast<std::uint8_t>(value != 0 ? 1 : 0); });
    result_.model.active = std::move(active);
}

void Reader::take_parameter(const Tag& tag)
{
    need_size(tag);
    PropertyData property;
    const Key* const name = tag.find("name");
    property.name = name == nullptr ? std::string() : to_utf8(input_.string(*name));
    if (property.name.empty()) {
        property.name = "PARAMETER_" + std::to_string(result_.model.properties.size() + 1);
        warn("parameters without a name", tag.place, "a parameter without a name is read as " + property.name);
    }
    const std::string shown = "parameter \"" + property.name + '"';
    if (!names_.insert(property.name).second) {
        const std::string stem = property.name;
        for (int number = 2; !names_.insert(property.name).second; ++number) {
            property.name = stem + '_' + std::to_string(number);
        }
        warn("names that stand twice", tag.place, shown + " stands there twice; the second one is read as \""
                                                      + property.name + '"');
    }
    const Key& data = need(tag, "data");
    need_cells(data, shown);
    const Key* const codes = tag.find("codeValues");
    const Key* const code_names = tag.find("codeNames");
    if ((codes == nullptr) != (code_names == nullptr) || (codes != nullptr && codes->count != code_names->count)) {
        const Key& place = codes != nullptr ? *codes : *code_names;
        input_.fail(place.place, shown + " has " + std::to_string(codes == nullptr ? 0 : codes->count)
                                     + " codeValues and "
                                     + std::to_string(code_names == nullptr ? 0 : code_names->count) + " codeNames");
    }
    property.no_data = undefined_number;
    claim(data.count * std::max<std::size_t>(4, bytes_of(data.type)));
    const auto same = [](auto value) { return value; };
    switch (data.type) {
    case Type::Float: {
        auto values = make_array<float>(data.count);
        turn_cells<float>(data, values, same);
        property.values = std::move(values);
        break;
    }
    case Type::Double: {
        auto values = make_array<double>(data.count);
        turn_cells<double>(data, values, same);
        property.values = std::move(values);
        break;
    }
    case Type::Int: {
        auto values = make_array<std::int32_t>(data.count);
        turn_cells<std::int32_t>(data, values, same);
        property.values = std::move(values);
        break;
    }
    case Type::Byte:
    case Type::Bool: {
        auto values = make_array<std::int32_t>(data.count);
        turn_cells<std::uint8_t>(data, values, same);
        property.values = std::move(values);
        property.no_data.reset();
        if (data.type == Type::Byte) {
            property.no_data = undefined_byte;
        }
        break;
    }
    case Type::Char:
        input_.fail(data.place, shown + " has texts for values");
    }
    if (codes != nullptr) {
        if (!property.discrete()) {
            inform("codes of continuous parameters", codes->place,
                   shown + " has code names but continuous values; the names are passed over");
        } else {
            if (code_names->type != Type::Char) {
                input_.fail(code_names->place, shown + " has codeNames of the type "
                                                   + std::string(type_name(code_names->type)) + ", expected char");
            }
            const std::vector<std::int32_t> values = input_.integers(*codes);
            for (std::size_t n = 0; n < values.size(); ++n) {
                if (!code_names->strings[n].empty()) {
                    property.code_names[values[n]] = to_utf8(code_names->strings[n]);
                }
            }
        }
    }
    release(input_.text() ? data.count * bytes_of(data.type) : 0);
    result_.model.properties.push_back(std::move(property));
    parameter_open_ = true;
}

/// What the writer noted of the parameter before.
void Reader::take_parameter_notes(const Tag& tag)
{
    if (!parameter_open_) {
        input_.fail(tag.place, "tag \"" + tag.name + "\" does not stand behind a parameter");
    }
    parameter_open_ = false;
    PropertyData& property = result_.model.properties.back();
    if (integer_of(tag, "region", 0) != 0) {
        if (!property.discrete()) {
            input_.fail(tag.place, "a region of continuous values");
        }
        RegionData region;
        region.name = text_of(tag, "name", property.name);
        region.model = integer_of(tag, "region", 0) == 2;
        const auto& values = std::get<std::vector<std::int32_t>>(property.values);
        claim(values.size());
        region.flags.resize(values.size());
        std::transform(values.begin(), values.end(), region.flags.begin(),
                       [](std::int32_t value) { return static_cast<std::uint8_t>(value != 0 ? 1 : 0); });
        names_.erase(property.name);
        release(4 * values.size());
        result_.model.properties.pop_back();
        result_.model.regions.push_back(std::move(region));
        return;
    }
    names_.erase(property.name);
    property.name = text_of(tag, "name", property.name);
    names_.insert(property.name);
    property.unit = text_of(tag, "unit");
    const Key* const no_data = tag.find("noData");
    const bool as_double = integer_of(tag, "storeDouble", 0) != 0;
    if (auto* const values = std::get_if<std::vector<float>>(&property.values); values != nullptr && as_double) {
        claim(8 * values->size());
        property.values = std::vector<double>(values->begin(), values->end());
    }
    const std::int32_t undefined = integer_of(tag, "undefined", 0);
    property.no_data.reset();
    if (no_data != nullptr) {
        property.no_data = input_.real(*no_data);
    }
    const Key* const at = tag.find("exceptionAt");
    std::visit(
        [&](auto& values) {
            using Value = typename std::decay_t<decltype(values)>::value_type;
            constexpr bool real = std::is_floating_point_v<Value>;
            constexpr double limit = 2147483647.0;
            if (undefined != 0) {
                std::optional<Value> replacement;
                if constexpr (real) {
                    replacement = undefined == 2 ? std::numeric_limits<Value>::quiet_NaN()
                                                 : static_cast<Value>(property.no_data.value_or(undefined_number));
                } else if (property.no_data && std::fabs(*property.no_data) <= limit + 1
                           && *property.no_data <= limit) {
                    replacement = static_cast<Value>(*property.no_data);
                }
                if (replacement) {
                    std::replace(values.begin(), values.end(), static_cast<Value>(undefined_number), *replacement);
                }
            }
            if (at == nullptr) {
                return;
            }
            const Key& exceptions = need(tag, "exceptionValue");
            const std::vector<std::int32_t> places = input_.integers(*at);
            std::vector<double> true_values;
            if constexpr (real) {
                true_values = input_.reals(exceptions);
            } else {
                const auto integers = input_.integers(exceptions);
                true_values.assign(integers.begin(), integers.end());
            }
            if (true_values.size() != places.size()) {
                input_.fail(at->place, std::to_string(places.size()) + " places for "
                                           + std::to_string(true_values.size()) + " values");
            }
            for (std::size_t n = 0; n < places.size(); ++n) {
                if (places[n] < 0 || static_cast<std::size_t>(places[n]) >= values.size()) {
                    input_.fail(at->place, "there is no cell " + std::to_string(places[n]));
                }
                values[static_cast<std::size_t>(places[n])] = static_cast<Value>(true_values[n]);
            }
        },
        property.values);
    if (const Key* const codes = tag.find("codeValues")) {
        property.code_names.clear();
        const auto values = input_.integers(*codes);
        const auto texts = texts_of(tag, "codeNames", values.size());
        for (std::size_t n = 0; n < values.size(); ++n) {
            property.code_names[values[n]] = texts[n];
        }
    }
}

void Reader::take_points(const Tag& tag)
{
    need_size(tag);
    PropertyData property;
    property.on_points = true;
    property.name = text_of(tag, "name");
    property.unit = text_of(tag, "unit");
    if (const Key* const no_data = tag.find("noData")) {
        property.no_data = input_.real(*no_data);
    }
    const Key& data = need(tag, "data");
    const auto points = static_cast<std::uint64_t>(result_.model.pillars() * (result_.model.size[2] + 1));
    if (data.count != points) {
        input_.fail(data.place, "property \"" + to_utf8(property.name) + "\" has " + std::to_string(data.count)
                                    + " values, expected " + std::to_string(points) + " for the points of "
                                    + size_text(result_.model.size) + " cells");
    }
    claim(data.count * std::max<std::size_t>(4, bytes_of(data.type)));
    const auto read = [&](auto type) {
        using Value = decltype(type);
        std::vector<Value> values(data.count);
        const Value* const numbers = input_.load(data, 0, values.size(), values.data());
        if (numbers != values.data()) {
            std::copy(numbers, numbers + values.size(), values.begin());
        }
        property.values = std::move(values);
    };
    switch (data.type) {
    case Type::Float:
        read(float{});
        break;
    case Type::Double:
        read(double{});
        break;
    default:
        property.values = input_.integers(data);
    }
    if (const Key* const codes = tag.find("codeValues")) {
        const auto values = input_.integers(*codes);
        const auto texts = texts_of(tag, "codeNames", values.size());
        for (std::size_t n = 0; n < values.size(); ++n) {
            property.code_names[values[n]] = texts[n];
        }
    }
    result_.model.properties.push_back(std::move(property));
}

void Reader::take_units(const Tag& tag)
{
    auto& layers = result_.model.layers;
    const auto names = texts_of(tag, "unit", layers.size());
    const auto thickness = input_.reals(need(tag, "cellThickness"));
    const auto style = input_.integers(need(tag, "style"));
    if (thickness.size() != layers.size() || style.size() != layers.size()) {
        input_.fail(tag.place, "the tag does not fit the " + std::to_string(layers.size()) + " subgrids");
    }
    for (std::size_t n = 0; n < layers.size(); ++n) {
        if (style[n] < 0 || style[n] > 2) {
            input_.fail(tag.place, "there is no layering style " + std::to_string(style[n]));
        }
        layers[n].unit = names[n];
        layers[n].cell_thickness = static_cast<float>(thickness[n]);
        layers[n].style = static_cast<Lodex::LayerInfo::LayeringStyle>(style[n]);
    }
}

void Reader::take_frame(const Tag& tag)
{
    GridFrame& frame = result_.model.frame;
    frame.map_units = text_of(tag, "mapUnits");
    frame.grid_units = text_of(tag, "gridUnits");
    frame.grid_units_map = integer_of(tag, "gridUnitsMap", 0) != 0;
    if (const Key* const axes = tag.find("mapAxes")) {
        const auto values = input_.reals(*axes);
        frame.map_axes.emplace();
        if (values.size() != frame.map_axes->size()) {
            input_.fail(axes->place, "mapAxes has " + std::to_string(values.size()) + " values, expected 6");
        }
        std::copy(values.begin(), values.end(), frame.map_axes->begin());
    }
}

void Reader::take_faults(const Tag& tag)
{
    constexpr std::size_t indices = 6;
    const auto ranges = input_.integers(need(tag, "box"));
    const auto names = texts_of(tag, "name", ranges.size() / indices);
    const auto faces = texts_of(tag, "face", ranges.size() / indices);
    for (std::size_t n = 0; n < names.size(); ++n) {
        const std::int32_t* const box = ranges.data() + n * indices;
        result_.model.faults.push_back({names[n], {box[0], box[1]}, {box[2], box[3]}, {box[4], box[5]}, faces[n]});
    }
}

void Reader::take_kept(const Tag& tag)
{
    const auto lines = input_.integers(need(tag, "line"));
    const auto names = texts_of(tag, "name", lines.size());
    const auto texts = texts_of(tag, "text", lines.size());
    const auto files = texts_of(tag, "file", lines.size());
    for (std::size_t n = 0; n < lines.size(); ++n) {
        result_.model.kept.push_back({names[n], texts[n], files[n], lines[n]});
    }
}

template <class T> void Reader::find_bad_number(const Key& key)
{
    constexpr std::uint64_t piece = 4096;
    std::vector<T> buffer(piece);
    for (std::uint64_t first = 0; first < key.count; first += piece) {
        const auto count = static_cast<std::size_t>(std::min(piece, key.count - first));
        const T* const values = input_.load(key, first, count, buffer.data());
        for (std::size_t n = 0; n < count; ++n) {
            if (!std::isfinite(values[n])) {
                bad_number(key, first + n);
            }
        }
    }
    input_.fail(key.place, "a coordinate is out of range");
}

void Reader::finish_coordinates()
{
    GridModel& model = result_.model;
    const auto [ni, nj, nk] = model.size;
    const Key& key = need(*corner_lines_, "data");
    const auto expected = static_cast<std::uint64_t>(6 * model.pillars());
    if (key.count != expected) {
        input_.fail(key.place, "cornerLines has " + std::to_string(key.count) + " values, expected "
                                   + std::to_string(expected) + " (6 x " + std::to_string(ni + 1) + " x "
                                   + std::to_string(nj + 1) + ')');
    }
    claim(16 * expected);
    const std::vector<double> stored = input_.reals(key);
    std::vector<double> rest;
    if (corner_rest_) {
        const Key& rest_key = need(*corner_rest_, "data");
        if (rest_key.count != expected) {
            input_.fail(rest_key.place, "lodexCornerLines does not fit cornerLines");
        }
        rest = input_.reals(rest_key);
    }
    std::vector<double> coord(stored.size());
    bool fits = true;
    for (std::int64_t i = 0; i <= ni; ++i) {
        for (std::int64_t j = 0; j <= nj; ++j) {
            const auto from = static_cast<std::size_t>(6 * (i * (nj + 1) + j));
            const auto to = static_cast<std::size_t>(6 * (i + (ni + 1) * j));
            for (std::size_t n = 0; n < 6; ++n) {
                // The file has the bottom point first.
                const std::size_t at = from + (n + 3) % 6;
                double value = transform_.apply(n % 3, stored[at]);
                if (!rest.empty()) {
                    value += rest[at];
                }
                if (!std::isfinite(value)) {
                    bad_number(key, at);
                }
                fits = fits && static_cast<double>(static_cast<float>(value)) == value;
                coord[to + n] = value;
            }
        }
    }
    if (own_ ? coord_double_ : !fits) {
        model.coord = std::move(coord);
    } else {
        model.coord = std::vector<float>(coord.begin(), coord.end());
    }
    release(16 * expected - model.coord.size() * model.coord.bytes_per_value());
}

/// Reads splitEnz and finds where each pillar's depths begin.
void Reader::count_splits()
{
    const auto [ni, nj, nk] = result_.model.size;
    const auto nodes = static_cast<std::uint64_t>(result_.model.pillars() * (nk + 1));
    const Key* const key = z_values_->find("splitEnz");
    claim(nodes);
    if (key == nullptr) {
        // Each node has one depth then, which the number of depths must bear out before the memory is taken.
        const Key& data = need(*z_values_, "data");
        if (data.count != nodes) {
            input_.fail(data.place, "zvalues has " + std::to_string(data.count) + " values without splitEnz, expected "
                                        + std::to_string(nodes) + ", one for each node");
        }
        splits_.assign(nodes, 1);
    } else {
        if (key->count != nodes || bytes_of(key->type) != 1) {
            input_.fail(key->place, "splitEnz has " + std::to_string(key->count) + " values of the type "
                                        + std::string(type_name(key->type)) + ", expected " + std::to_string(nodes)
                                        + " of the type byte (" + std::to_string(ni + 1) + " x "
                                        + std::to_string(nj + 1) + " x " + std::to_string(nk + 1) + ')');
        }
        splits_.resize(nodes);
        const std::uint8_t* const values = input_.load(*key, 0, nodes, splits_.data());
        if (values != splits_.data()) {
            std::copy(values, values + nodes, splits_.begin());
        }
    }
    const auto pillars = static_cast<std::size_t>(result_.model.pillars());
    const auto column = static_cast<std::size_t>(nk + 1);
    starts_.resize(pillars + 1);
    std::int64_t sum = 0;
    for (std::size_t pillar = 0; pillar < pillars; ++pillar) {
        starts_[pillar] = sum;
        const std::uint8_t* const begin = splits_.data() + pillar * column;
        unsigned bad = 0;
        std::int64_t values = 0;
        for (std::size_t n = 0; n < column; ++n) {
            const unsigned split = begin[n];
            // One bit, and one of the lowest four.
            bad |= (split & (split - 1)) | (split > 8 ? 1U : 0U) | (split == 0 ? 1U : 0U);
            values += split;
        }
        if (bad != 0) {
            const auto* const found = std::find_if(begin, begin + column, [](std::uint8_t split) {
                return split != 1 && split != 2 && split != 4 && split != 8;
            });
            input_.fail(key->place, "value " + std::to_string(found - splits_.data() + 1) + " of splitEnz is "
                                        + std::to_string(*found) + ", expected 1, 2, 4 or 8");
        }
        sum += values;
    }
    starts_[pillars] = sum;
}

/// Calls combine(corner depth of the model, stored number) for every corner of every cell.
template <class From, class To, class Combine>
void Reader::spread_depths(const Key& key, std::span<To> to, const Combine& combine)
{
    const auto [ni, nj, nk] = result_.model.size;
    const std::int64_t tiles = (ni + depth_columns - 1) / depth_columns;
    // Rows of nodes that a thread loads at a time.
    const std::int64_t rows = std::clamp<std::int64_t>(tile_values / depth_columns / (nk + 1), 1, nj + 1);
    const std::int64_t row_groups = (nj + 1 + rows - 1) / rows;
    std::atomic<bool> bad{false};
    const auto work = [&, ni = ni, nj = nj, nk = nk](std::int64_t n) {
        // Cells i0 <= i < i1, whose corners fill whole cache lines, and the nodes on both sides of each.
        const std::int64_t i0 = n / row_groups * depth_columns;
        const std::int64_t i1 = std::min(i0 + depth_columns, ni);
        const std::int64_t j0 = n % row_groups * rows;
        const std::int64_t j1 = std::min(j0 + rows, nj + 1);
        const auto nodes = static_cast<std::size_t>(i1 - i0 + 1);
        const auto corners = 2 * (nodes - 1);
        const auto pillar_of = [i0, nj](std::size_t c, std::int64_t j) {
            return static_cast<std::size_t>((i0 + static_cast<std::int64_t>(c)) * (nj + 1) + j);
        };
        thread_local std::vector<From> buffer;
        std::array<const From*, most_nodes> values{};
        std::array<std::size_t, most_nodes + 1> room{};
        for (std::size_t c = 0; c < nodes; ++c) {
            // The odd 16 keep the columns apart in the cache.
            room[c + 1] =
                room[c] + 16 + static_cast<std::size_t>(starts_[pillar_of(c, j1)] - starts_[pillar_of(c, j0)]);
        }
        buffer.resize(room[nodes]);
        bool finite = true;
        for (std::size_t c = 0; c < nodes; ++c) {
            const std::size_t count = room[c + 1] - room[c] - 16;
            values[c] =
                input_.load(key, static_cast<std::uint64_t>(starts_[pillar_of(c, j0)]), count, buffer.data() + room[c]);
            for (std::size_t v = 0; v < count; ++v) {
                finite &= std::fabs(values[c][v]) <= std::numeric_limits<From>::max();
            }
        }
        if (!finite) {
            bad = true;
            return;
        }
        // Stored numbers of a row of nodes: below south, below north, above south, above north. That of the first
        // node's west side comes first and belongs to no cell here.
        std::array<std::array<From, 2 * most_nodes>, 4> line;
        const auto put = [&](std::size_t side, const From* from, std::int64_t j, std::int64_t kk) {
            // Plane of corners below the nodes (tops of the cells there) or above them.
            const std::int64_t z = 2 * (nk - kk) - (side < 2 ? 0 : 1);
            const std::int64_t y = 2 * j - (side % 2 == 0 ? 1 : 0);
            if (z < 0 || z >= 2 * nk || y < 0 || y >= 2 * nj) {
                return;
            }
            To* const out = to.data() + (z * 2 * nj + y) * 2 * ni + 2 * i0;
            if constexpr (std::is_same_v<Combine,
                                         StoreDepth> && std::is_same_v<From, float> && std::is_same_v<To, float>) {
                if (stream(out, from, corners, combine.sign)) {
                    return;
                }
            }
            if (corners == 2 * depth_columns) {
                for (std::size_t x = 0; x < 2 * depth_columns; ++x) {
                    combine(out[x], from[x]);
                }
            } else {
                for (std::size_t x = 0; x < corners; ++x) {
                    combine(out[x], from[x]);
                }
            }
        };
        // One level after the other: what is written lies close together then.
        struct Row {
            bool single = true; ///< one depth at each of its nodes
            std::array<const From*, most_nodes> values{};
            std::array<const std::uint8_t*, most_nodes> split{};
        };
        thread_local std::vector<Row> row_list;
        row_list.assign(static_cast<std::size_t>(j1 - j0), {});
        for (std::int64_t j = j0; j < j1; ++j) {
            Row& row = row_list[static_cast<std::size_t>(j - j0)];
            for (std::size_t c = 0; c < nodes; ++c) {
                const std::size_t pillar = pillar_of(c, j);
                row.values[c] = values[c] + (starts_[pillar] - starts_[pillar_of(c, j0)]);
                row.split[c] = splits_.data() + pillar * static_cast<std::size_t>(nk + 1);
                row.single = row.single && starts_[pillar + 1] - starts_[pillar] == nk + 1;
            }
        }
        for (std::int64_t kk = 0; kk <= nk; ++kk) {
            for (std::int64_t j = j0; j < j1; ++j) {
                Row& row = row_list[static_cast<std::size_t>(j - j0)];
                if (row.single) {
                    for (std::size_t c = 0; c < nodes; ++c) {
                        line[0][2 * c] = line[0][2 * c + 1] = row.values[c][kk];
                    }
                    for (std::size_t side = 0; side < 4; ++side) {
                        put(side, line[0].data() + 1, j, kk);
                    }
                    continue;
                }
                bool apart = false;
                for (std::size_t c = 0; c < nodes; ++c) {
                    const From* const v = row.values[c];
                    const std::uint8_t s = row.split[c][kk];
                    const std::size_t step = s >= 4 ? 1 : 0;
                    line[0][2 * c] = line[2][2 * c] = v[0];
                    line[0][2 * c + 1] = line[2][2 * c + 1] = v[step];
                    line[1][2 * c] = line[3][2 * c] = v[2 * step];
                    line[1][2 * c + 1] = line[3][2 * c + 1] = v[3 * step];
                    if (s == 8 || s == 2) [[unlikely]] {
                        apart = true;
                        const From* const above = v + s / 2;
                        line[2][2 * c] = above[0];
                        line[2][2 * c + 1] = above[step];
                        line[3][2 * c] = above[2 * step];
                        line[3][2 * c + 1] = above[3 * step];
                    }
                    row.values[c] = v + s;
                }
                for (std::size_t side = 0; side < 4; ++side) {
                    put(side, line[apart ? side : side % 2].data() + 1, j, kk);
                }
            }
        }
        end_streams();
    };
    in_batches(tiles * row_groups, key.count * sizeof(From), work);
    if (bad) {
        find_bad_number<From>(key);
    }
}

/// True when 32 bits hold all values of an axis.
template <class Stored> bool Reader::all_fit_float(const Key& key, std::size_t axis)
{
    if (std::is_same_v<Stored, float> && transform_.exact_in_float(axis)) {
        return true;
    }
    constexpr std::uint64_t piece = 1 << 16;
    std::vector<Stored> buffer(piece);
    for (std::uint64_t first = 0; first < key.count; first += piece) {
        const auto count = static_cast<std::size_t>(std::min(piece, key.count - first));
        const Stored* const values = input_.load(key, first, count, buffer.data());
        for (std::size_t n = 0; n < count; ++n) {
            const double value = transform_.apply(axis, static_cast<double>(values[n]));
            if (static_cast<double>(static_cast<float>(value)) != value) {
                return false;
            }
        }
        check_cancelled();
    }
    return true;
}

template <class Stored> void Reader::fill_depths(const Key& key, const Key* rest)
{
    static constexpr std::size_t depth_axis = 2;
    const auto corners = static_cast<std::size_t>(8 * result_.model.cells());
    const auto fill = [&](auto kind) {
        using Depth = decltype(kind);
        claim(corners * sizeof(Depth));
        auto zcorn = make_touched_array<Depth>(corners);
        const Transform transform = transform_;
        const bool exact = sizeof(Depth) >= sizeof(Stored) && transform.exact_in_float(depth_axis);
        if (exact) {
            const auto sign = static_cast<float>(transform.scale[depth_axis]);
            spread_depths<Stored>(key, std::span(zcorn), StoreDepth{sign});
        } else {
            spread_depths<Stored>(key, std::span(zcorn), [&transform](Depth& depth, Stored stored) {
                depth = static_cast<Depth>(transform.apply(depth_axis, static_cast<double>(stored)));
            });
        }
        if (rest != nullptr) {
            spread_depths<double>(*rest, std::span(zcorn), [](Depth& depth, double part) {
                depth = static_cast<Depth>(static_cast<double>(depth) + part);
            });
        }
        if (!exact || rest != nullptr) {
            const bool finite =
                std::all_of(zcorn.begin(), zcorn.end(), [](Depth depth) { return std::isfinite(depth); });
            if (!finite) {
                input_.fail(key.place, "a depth is out of range");
            }
        }
        result_.model.zcorn = std::move(zcorn);
    };
    if (own_ ? zcorn_double_ : !all_fit_float<Stored>(key, depth_axis)) {
        fill(double{});
    } else {
        fill(float{});
    }
}

void Reader::finish_depths()
{
    count_splits();
    const Key& key = need(*z_values_, "data");
    const auto expected = static_cast<std::uint64_t>(starts_.back());
    if (key.count != expected) {
        input_.fail(key.place, "zvalues has " + std::to_string(key.count) + " values, expected "
                                   + std::to_string(expected) + " after splitEnz");
    }
    const Key* rest = nullptr;
    if (z_rest_) {
        rest = &need(*z_rest_, "data");
        if (rest->count != expected || rest->type != Type::Double) {
            input_.fail(rest->place, "lodexZvalues does not fit zvalues");
        }
    }
    if (key.type == Type::Float) {
        fill_depths<float>(key, rest);
    } else if (key.type == Type::Double) {
        fill_depths<double>(key, rest);
    } else {
        input_.fail(key.place, "zvalues is of the type " + std::string(type_name(key.type)) + ", expected float");
    }
}

/// Depths that decrease downwards are elevations: K always runs from the bottom up in the file.
void Reader::turn_elevations()
{
    GridModel& model = result_.model;
    if (own_) {
        return;
    }
    const auto plane = static_cast<std::size_t>(4 * model.size[0] * model.size[1]);
    double down = 0;
    model.zcorn.visit([&](auto z) {
        const auto bottom = z.size() - plane;
        for (std::size_t n = 0; n < plane; ++n) {
            down += static_cast<double>(z[bottom + n]) - static_cast<double>(z[n]);
        }
    });
    if (!(down < 0)) {
        return;
    }
    model.zcorn.visit_mutable([](auto z) {
        for (auto& depth : z) {
            depth = -depth;
        }
    });
    model.coord.visit_mutable([](auto coord) {
        for (std::size_t n = 2; n < coord.size(); n += 3) {
            coord[n] = -coord[n];
        }
    });
    warn("signs of depths", z_values_->place, "z increases upwards in the file; depths are its negative");
}

/// Names of the units from a zone parameter that has one named code for each subgrid.
void Reader::name_units()
{
    GridModel& model = result_.model;
    const auto per_layer = model.size[0] * model.size[1];
    for (const PropertyData& property : model.properties) {
        if (!property.discrete() || property.code_names.empty() || !starts_like_zone(property.name)) {
            continue;
        }
        const auto& values = std::get<std::vector<std::int32_t>>(property.values);
        std::vector<std::string> names;
        std::int64_t first = 0;
        for (const LayerData& layer : model.layers) {
            const std::int64_t end = first + layer.nb_k_cells * per_layer;
            std::optional<std::int32_t> code;
            bool one = true;
            for (std::int64_t cell = first; cell < end && one; ++cell) {
                const std::int32_t value = values[static_cast<std::size_t>(cell)];
                if (property.no_data && value == *property.no_data) {
                    continue;
                }
                one = !code || *code == value;
                code = value;
            }
            const auto name = code ? property.code_names.find(*code) : property.code_names.end();
            if (!one || name == property.code_names.end()
                || std::find(names.begin(), names.end(), name->second) != names.end()) {
                names.clear();
                break;
            }
            names.push_back(name->second);
            first = end;
        }
        if (names.size() == model.layers.size()) {
            for (std::size_t n = 0; n < names.size(); ++n) {
                model.layers[n].unit = names[n];
            }
            inform("names of units", subgrids_place_,
                   "the units have the names of the codes of parameter \"" + property.name + '"');
            return;
        }
    }
}

void Reader::finish()
{
    GridModel& model = result_.model;
    if (!sized_) {
        throw FileError(source_.name(), 0, "has no tag dimensions: it is not about a grid");
    }
    if (units_) {
        take_units(*units_);
    } else if (!model.layers.empty()) {
        name_units();
    }
    if (options_.properties_only) {
        return;
    }
    if (!corner_lines_ && !z_values_) {
        throw FileError(source_.name(), 0, "has no geometry (cornerLines and zvalues), only parameters for a grid of "
                                               + size_text(model.size) + " cells");
    }
    if (!corner_lines_ || !z_values_) {
        throw FileError(source_.name(), 0,
                        corner_lines_ ? "has cornerLines but no zvalues" : "has zvalues but no cornerLines");
    }
    finish_coordinates();
    finish_depths();
    turn_elevations();
    if (model.active.empty()) {
        claim(static_cast<std::uint64_t>(model.cells()));
        model.active.assign(static_cast<std::size_t>(model.cells()), 1);
    }
}

ReadResult read(const ByteSource& source, const std::filesystem::path& path, const ReadOptions& options)
{
    ReadResult result = Reader(source, options).run();
    result.files.push_back(path);
    return result;
}

} // namespace

std::string escape(std::string_view text)
{
    constexpr std::string_view digits = "0123456789abcdef";
    std::string result;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (c == '"' || c == '\\' || byte < 0x20 || byte == 0x7F) {
            result += '\\';
            result += digits[byte >> 4];
            result += digits[byte & 15];
        } else {
            result += c;
        }
    }
    return result;
}

std::string unescape(std::string_view text)
{
    const auto digit = [](char c) {
        return c >= '0' && c <= '9' ? c - '0' : c >= 'a' && c <= 'f' ? c - 'a' + 10 : -1;
    };
    std::string result;
    for (std::size_t n = 0; n < text.size(); ++n) {
        if (text[n] == '\\' && n + 2 < text.size() && digit(text[n + 1]) >= 0 && digit(text[n + 2]) >= 0) {
            result += static_cast<char>(16 * digit(text[n + 1]) + digit(text[n + 2]));
            n += 2;
        } else {
            result += text[n];
        }
    }
    return result;
}

ReadResult read_file(const std::filesystem::path& path, const ReadOptions& options)
{
    const ByteSource source(path);
    return read(source, path, options);
}

ReadResult read_bytes(std::string_view bytes, const std::filesystem::path& name, const ReadOptions& options)
{
    const ByteSource source(bytes, name.string());
    return read(source, name, options);
}

} // namespace lodex::roff
