// Values of cells from a ROFF file.

#include <lodex/gridio/RoffReaderImpl.h>
#include <lodex/volumes/model/LargeArray.h>

namespace lodex::roff {

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

} // namespace lodex::roff
