#include <lodex/gridio/RoffReader.h>

#include <lodex/gridio/RoffReaderImpl.h>

namespace lodex::roff {

namespace {

bool starts_like_zone(std::string_view name)
{
    constexpr std::string_view zone = "zone";
    return name.size() >= zone.size() && std::equal(zone.begin(), zone.end(), name.begin(), [](char a, char b) {
        return a == static_cast<char>(static_cast<unsigned char>(b) | 0x20U);
    });
}

} // namespace

ReadResult Reader::run()
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

namespace {

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
