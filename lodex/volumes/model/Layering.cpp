#include "Layering.h"

#include "CellGeometry.h"
#include "PropertyTools.h"
#include "Summation.h"
#include "VolumeKernel.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <optional>
#include <variant>

namespace lodex {

std::int64_t layer_index(std::span<const LayerData> layers, std::int64_t k)
{
    if (k < 0)
        return -1;
    for (std::size_t n = 0; n < layers.size(); ++n) {
        if (k < layers[n].nb_k_cells)
            return static_cast<std::int64_t>(n);
        k -= layers[n].nb_k_cells;
    }
    return -1;
}

std::vector<std::int64_t> layer_starts(std::span<const LayerData> layers)
{
    std::vector<std::int64_t> starts{0};
    for (const LayerData& layer : layers)
        starts.push_back(starts.back() + layer.nb_k_cells);
    return starts;
}

double mean_cell_height(const GridModel& model, const IndexRange& range)
{
    CompensatedSum heights;
    std::int64_t count = 0;
    model.zcorn.visit([&](auto depths) {
        for (std::int64_t k = range.first; k <= range.last; ++k)
            for (std::int64_t j = 0; j < model.size[1]; ++j) {
                const std::uint8_t* const active = model.active.data() + model.cell_index(0, j, k);
                const auto row = [&](int b, int c) {
                    return depths.data() + depth_offset(model.size, 0, j, k, b, c);
                };
                const auto *const top0 = row(0, 0), *const top1 = row(1, 0), *const base0 = row(0, 1),
                                  *const base1 = row(1, 1);
                const auto edge = [](auto base, auto top) {
                    return static_cast<double>(base) - static_cast<double>(top);
                };
                for (std::int64_t i = 0; i < model.size[0]; ++i) {
                    if (!active[i])
                        continue;
                    heights.add((edge(base0[2 * i], top0[2 * i]) + edge(base0[2 * i + 1], top0[2 * i + 1]) +
                                 edge(base1[2 * i], top1[2 * i]) + edge(base1[2 * i + 1], top1[2 * i + 1])) /
                                4);
                    ++count;
                }
            }
    });
    return count ? heights.value() / static_cast<double>(count) : 0;
}

namespace {

LayerData make_layer(const GridModel& model, std::string unit, const IndexRange& range, double depth_unit)
{
    return {std::move(unit), range.last - range.first + 1,
            static_cast<float>(mean_cell_height(model, range) / depth_unit), Lodex::LayerInfo::Proportional};
}

// The one code of the active, defined cells of each K layer, nothing where there is no such cell.
struct LayerCodes {
    std::vector<std::optional<std::int32_t>> codes;
    std::int64_t first_varying = -1; // K layer on which there are several, -1: none
};

LayerCodes codes_of_layers(const GridModel& model, const PropertyData& property)
{
    const auto& values = std::get<std::vector<std::int32_t>>(property.values);
    LayerCodes result;
    const std::int64_t columns = model.size[0] * model.size[1];
    for (std::int64_t k = 0; k < model.size[2]; ++k) {
        std::optional<std::int32_t> code;
        for (std::int64_t column = 0; column < columns; ++column) {
            const auto cell = static_cast<std::size_t>(k * columns + column);
            if (!model.active[cell] || !is_defined(property, cell))
                continue;
            if (code && *code != values[cell]) {
                result.first_varying = k;
                return result;
            }
            code = values[cell];
        }
        result.codes.push_back(code);
    }
    return result;
}

std::vector<LayerData> layers_from_codes(const GridModel& model, const PropertyData& property,
                                         std::span<const std::optional<std::int32_t>> codes, double depth_unit)
{
    std::vector<LayerData> result;
    std::map<std::string, int> uses;
    const auto nk = static_cast<std::int64_t>(codes.size());
    for (std::int64_t first = 0; first < nk;) {
        std::optional<std::int32_t> code;
        std::int64_t end = first;
        for (; end < nk; ++end) {
            const auto& next = codes[static_cast<std::size_t>(end)];
            if (next && code && *next != *code)
                break;
            if (next)
                code = next;
        }
        std::string unit = property.name;
        if (code) {
            const auto name = property.code_names.find(*code);
            const bool named = name != property.code_names.end() && !name->second.empty();
            unit = named ? name->second : fmt::format("{}_{}", property.name, *code);
        }
        if (const int use = ++uses[unit]; use > 1)
            unit += fmt::format("_{}", use);
        result.push_back(make_layer(model, unit, {first, end - 1}, depth_unit));
        first = end;
    }
    return result;
}

} // namespace

std::vector<LayerData> layers_from_property(const GridModel& model, std::string_view name, double depth_unit)
{
    const PropertyData* const property = model.find_property(name);
    if (!property || !property->discrete() || property->on_points)
        throw ModelError(fmt::format("there is no discrete cell property \"{}\"", name));
    const LayerCodes codes = codes_of_layers(model, *property);
    if (codes.first_varying >= 0)
        throw ModelError(fmt::format("property \"{}\" is not constant on K layer {}", name, codes.first_varying));
    return layers_from_codes(model, *property, codes.codes, depth_unit);
}

std::vector<LayerData> layers_from_sizes(const GridModel& model, std::span<const std::string> units,
                                         std::span<const std::int64_t> sizes, double depth_unit)
{
    if (units.size() != sizes.size())
        throw ModelError(fmt::format("{} units do not fit {} sizes", units.size(), sizes.size()));
    std::vector<LayerData> result;
    std::int64_t first = 0;
    for (std::size_t n = 0; n < units.size(); ++n) {
        if (sizes[n] < 1)
            throw ModelError(fmt::format("unit \"{}\" has {} K cells, it needs one at least", units[n], sizes[n]));
        if (sizes[n] > model.size[2] - first)
            throw ModelError(fmt::format("the units have more than the grid's {} K cells", model.size[2]));
        result.push_back(make_layer(model, units[n], {first, first + sizes[n] - 1}, depth_unit));
        first += sizes[n];
    }
    if (first != model.size[2])
        throw ModelError(fmt::format("the units have {} K cells, the grid has {}", first, model.size[2]));
    return result;
}

void fill_layering_info(GridModel& model, double depth_unit)
{
    if (!model.layers.empty())
        throw ModelError("the grid has layers already");
    const PropertyData* const zone = model.find_property("ZONE");
    if (zone && zone->discrete() && !zone->on_points) {
        const LayerCodes codes = codes_of_layers(model, *zone);
        const bool any = std::ranges::any_of(codes.codes, [](const auto& code) { return code.has_value(); });
        if (codes.first_varying < 0 && any) {
            model.layers = layers_from_codes(model, *zone, codes.codes, depth_unit);
            return;
        }
    }
    model.layers = {make_layer(model, "unit_1", {0, model.size[2] - 1}, depth_unit)};
}

double LayerSurface::depth(double top, double base) const
{
    const double thickness = base - top;
    const double step = std::copysign(std::min(distance, std::abs(thickness)), thickness);
    switch (style) {
    case Lodex::LayerInfo::ParallelToTop: return top + step;
    case Lodex::LayerInfo::ParallelToBase: return base - step;
    default: return top + fraction * thickness;
    }
}

std::vector<LayerSurface> layer_surfaces(const GridModel& model, double depth_unit, std::vector<std::string>& warnings)
{
    std::vector<LayerSurface> result(static_cast<std::size_t>(model.size[2] + 1));
    const std::vector<std::int64_t> starts = layer_starts(model.layers);
    for (std::size_t unit = 0; unit < model.layers.size(); ++unit) {
        const LayerData& layer = model.layers[unit];
        LayerSurface surface{true, starts[unit], starts[unit + 1] - 1, 0, 0, layer.style};
        const double thickness = static_cast<double>(layer.cell_thickness) * depth_unit;
        if (layer.style != Lodex::LayerInfo::Proportional && !(thickness > 0 && std::isfinite(thickness))) {
            if (layer.nb_k_cells > 1)
                warnings.push_back(fmt::format("layer \"{}\" has no cell thickness: it is divided evenly", layer.unit));
            surface.style = Lodex::LayerInfo::Proportional;
        }
        const bool from_top = surface.style == Lodex::LayerInfo::ParallelToTop;
        for (std::int64_t above = 1; above < layer.nb_k_cells; ++above) {
            surface.fraction = static_cast<double>(above) / static_cast<double>(layer.nb_k_cells);
            surface.distance = thickness * static_cast<double>(from_top ? above : layer.nb_k_cells - above);
            result[static_cast<std::size_t>(starts[unit] + above)] = surface;
        }
    }
    return result;
}

std::vector<RegionData> unit_regions(const GridModel& model)
{
    std::vector<RegionData> regions;
    const std::int64_t columns = model.size[0] * model.size[1];
    const std::vector<std::int64_t> starts = layer_starts(model.layers);
    for (std::size_t n = 0; n < model.layers.size(); ++n) {
        auto it = std::ranges::find(regions, model.layers[n].unit, &RegionData::name);
        if (it == regions.end()) {
            regions.push_back(
                {model.layers[n].unit, std::vector<std::uint8_t>(static_cast<std::size_t>(model.cells())), true});
            it = regions.end() - 1;
        }
        std::fill(it->flags.begin() + starts[n] * columns, it->flags.begin() + starts[n + 1] * columns,
                  std::uint8_t{1});
    }
    return regions;
}

} // namespace lodex
