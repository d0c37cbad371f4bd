#include "ProjectWriting.h"

#include "ProjectArrays.h"
#include "ProjectContents.h"
#include "lodex/geobase/ProjectUnits.h"
#include "lodex/interpreter/Interpreter.h"
#include "lodex/utils/FileError.h"
#include "lodex/utils/Version.h"
#include "lodex/volumes/ActivityModel.h"
#include "lodex/volumes/CornerPointGrid.h"

#include <Lodex/geobase/GeobaseLib.h>
#include <Lodex/geobase/Property.h>
#include <Lodex/geobase/Style.h>

#include <algorithm>
#include <chrono>
#include <fmt/chrono.h>
#include <set>

namespace lodex {

namespace {

using Lodex::GeobaseLib;

TextPairs attributes_of(const Lodex::Style& style)
{
    return {style.attributes().begin(), style.attributes().end()};
}

template <class T> constexpr NumberType number_type()
{
    if constexpr (std::is_same_v<T, float>)
        return NumberType::Float32;
    else if constexpr (std::is_same_v<T, double>)
        return NumberType::Float64;
    else if constexpr (std::is_same_v<T, std::int32_t>)
        return NumberType::Int32;
    else if constexpr (std::is_same_v<T, std::int64_t>)
        return NumberType::Int64;
    else
        return NumberType::UInt8;
}

/// Values that are in memory.
struct Values {
    NumberType type = NumberType::UInt8;
    std::span<const std::byte> bytes;
};

template <class T> Values values_of(std::span<const T> values)
{
    return {number_type<T>(), std::as_bytes(values)};
}

Values values_of(const GridModel& model, const GridArray& array)
{
    const auto real = [](const RealArray& numbers) {
        return numbers.visit([](auto values) { return values_of(values); });
    };
    switch (array.kind) {
    case GridArray::Pillars:
        return real(model.coord);
    case GridArray::CornerDepths:
        return real(model.zcorn);
    case GridArray::ActiveFlags:
        return values_of(std::span(model.active));
    case GridArray::PropertyValues:
        return std::visit([](const auto& values) { return values_of(std::span(values)); },
                          model.properties[array.position].values);
    case GridArray::RegionFlags:
        break;
    }
    return values_of(std::span(model.regions[array.position].flags));
}

std::size_t width_of(const GridModel& model, const GridArray& array)
{
    switch (array.kind) {
    case GridArray::Pillars:
        return model.coord.bytes_per_value();
    case GridArray::CornerDepths:
        return model.zcorn.bytes_per_value();
    case GridArray::PropertyValues:
        return model.properties[array.position].values.index() == 1 ? sizeof(double) : sizeof(float);
    case GridArray::ActiveFlags:
    case GridArray::RegionFlags:
        break;
    }
    return 1;
}

std::vector<GridArray> arrays_of(const GridModel& model)
{
    std::vector<GridArray> list{{GridArray::Pillars}, {GridArray::CornerDepths}, {GridArray::ActiveFlags}};
    for (std::size_t i = 0; i < model.properties.size(); ++i)
        list.push_back({GridArray::PropertyValues, i});
    for (std::size_t i = 0; i < model.regions.size(); ++i)
        list.push_back({GridArray::RegionFlags, i});
    return list;
}

std::vector<const CornerPointGrid*> all_grids()
{
    std::vector<const CornerPointGrid*> grids;
    for (Lodex::GObj* object : GeobaseLib::instance()->objects(Lodex::SGrid::static_type_id_()))
        grids.push_back(&as_grid(object));
    return grids;
}

std::uint64_t bytes_of_grids(const std::vector<const CornerPointGrid*>& grids)
{
    std::uint64_t total = 0;
    for (const CornerPointGrid* grid : grids) {
        for (const GridArray& array : arrays_of(grid->header()))
            total += array_length(grid->header(), array) * width_of(grid->header(), array);
    }
    return total;
}

std::string now_text()
{
    return fmt::format("{:%Y-%m-%dT%H:%M:%SZ}",
                       fmt::gmtime(std::chrono::system_clock::to_time_t(std::chrono::system_clock::now())));
}

/// The activities of all grids, each once.
class ActivityTable {
public:
    std::size_t position_of(Lodex::SGridActivity* activity)
    {
        const auto [known, is_new] = positions_.emplace(activity, stored_.size());
        if (is_new)
            stored_.push_back(stored(*activity));
        return known->second;
    }
    [[nodiscard]] const std::vector<StoredActivity>& stored() const { return stored_; }

private:
    static StoredActivity stored(Lodex::SGridActivity& activity)
    {
        using Kind = Lodex::SGridActivity::Kind;
        const std::string name = activity.name().str();
        switch (activity.kind()) {
        case Kind::Upgridding:
            return {"upgridding", name,
                    to_text(static_cast<Lodex::SGridUpgriddingActivityData&>(activity).coarsening_data())};
        case Kind::Downgridding:
            return {"downgridding", name,
                    to_text(static_cast<Lodex::SGridDowngriddingActivityData&>(activity).refinement_data())};
        case Kind::Coarsening:
            break;
        }
        auto& coarsening = static_cast<Lodex::SGridGridCoarseningModificationActivityData&>(activity);
        return {"coarsening", name, to_text(*coarsening.grid_coarsening_data())};
    }

    std::map<Lodex::SGridActivity*, std::size_t> positions_;
    std::vector<StoredActivity> stored_;
};

/// What is in memory is written, what still lies in a project file is copied from there.
StoredArray write_array(ProjectFileWriter& writer, const CornerPointGrid& grid, const GridArray& array,
                        const std::string& path)
{
    const PendingArrays& pending = grid.pending();
    if (const std::string loss = pending.loss(array); !loss.empty())
        throw ModelError("SGrid \"" + grid.name().str() + "\" cannot be saved: part of it is lost: " + loss);
    if (!pending.is_there(array)) {
        const std::shared_ptr<GridArrays> source = pending.source();
        if (const auto* project = dynamic_cast<const ProjectArrays*>(source.get()))
            return writer.copy(path, project->file(), project->stored(array));
        grid.load();
    }
    const Values values = values_of(grid.header(), array);
    return writer.write(path, values.type, values.bytes);
}

StoredGrid write_grid(ProjectFileWriter& writer, const CornerPointGrid& grid, const std::string& folder,
                      ActivityTable& activities)
{
    StoredGrid stored;
    const GridModel& model = grid.header();
    stored.name = grid.name().str();
    GridModel& header = stored.header;
    header.id = model.id;
    header.size = model.size;
    header.layers = model.layers;
    header.faults = model.faults;
    header.kept = model.kept;
    header.frame = model.frame;
    header.records = model.records;

    stored.pillars = write_array(writer, grid, {GridArray::Pillars}, folder + "/pillars");
    stored.corner_depths = write_array(writer, grid, {GridArray::CornerDepths}, folder + "/corner_depths");
    stored.active_flags = write_array(writer, grid, {GridArray::ActiveFlags}, folder + "/active_flags");
    writer.describe(folder, "name", stored.name);
    writer.describe(folder, "size", model.size);
    for (std::size_t i = 0; i < model.properties.size(); ++i) {
        const PropertyData& property = model.properties[i];
        const std::string path = folder + "/properties/" + std::to_string(i);
        stored.properties.push_back(write_array(writer, grid, {GridArray::PropertyValues, i}, path));
        writer.describe(path, "name", property.name);
        writer.describe(path, "unit", property.unit);
        PropertyData described;
        described.name = property.name;
        described.unit = property.unit;
        described.no_data = property.no_data;
        described.code_names = property.code_names;
        described.on_points = property.on_points;
        header.properties.push_back(std::move(described));
        stored.property_styles.push_back(
            attributes_of(*grid.property_db()->property(static_cast<int>(i))->style()));
    }
    for (std::size_t i = 0; i < model.regions.size(); ++i) {
        const RegionData& region = model.regions[i];
        const std::string path = folder + "/regions/" + std::to_string(i);
        stored.regions.push_back(write_array(writer, grid, {GridArray::RegionFlags, i}, path));
        writer.describe(path, "name", region.name);
        header.regions.push_back({region.name, {}, region.model});
    }

    std::vector<std::int64_t> ranges;
    for (const DerivationRecord& record : model.records) {
        for (const auto& axis : record.ranges) {
            for (const IndexRange& range : axis)
                ranges.insert(ranges.end(), {range.first, range.last});
        }
    }
    if (!ranges.empty()) {
        const Values values = values_of(std::span<const std::int64_t>(ranges));
        stored.records = writer.write(folder + "/record_ranges", values.type, values.bytes);
    }
    std::string kept;
    for (const KeptKeyword& keyword : model.kept)
        kept += keyword.text;
    if (!kept.empty())
        stored.kept = writer.write(folder + "/kept_texts", NumberType::UInt8, std::as_bytes(std::span(kept)));

    if (const Lodex::Style* style = grid.style())
        stored.style = attributes_of(*style);
    for (Lodex::SGridActivity* activity : grid.activities().activities())
        stored.activities.push_back(activities.position_of(activity));
    return stored;
}

/// Styles that belong to no grid.
std::vector<std::pair<std::string, TextPairs>> free_styles(const std::vector<const CornerPointGrid*>& grids)
{
    std::set<std::string> bound;
    for (const CornerPointGrid* grid : grids)
        bound.insert(grid->name().str());
    std::vector<std::pair<std::string, TextPairs>> styles;
    for (Lodex::GObj* object : GeobaseLib::instance()->objects(Lodex::Style::static_type_id_())) {
        if (!bound.contains(object->name().str()))
            styles.emplace_back(object->name().str(), attributes_of(static_cast<Lodex::Style&>(*object)));
    }
    return styles;
}

/// As write_project(), but what is wrong with a grid is a ModelError.
void write_all(const std::filesystem::path& path, const std::map<std::string, std::string>& parts,
               const ProgressCheck& check)
{
    const std::vector<const CornerPointGrid*> grids = all_grids();
    ProjectFileWriter writer(path, bytes_of_grids(grids), check);
    ProjectContents contents;
    contents.program = std::string("lodex ") + program_version();
    contents.written = now_text();
    contents.horizontal_unit = measurement_unit(project_horizontal_unit()).name().str();
    contents.vertical_unit = measurement_unit(project_vertical_unit()).name().str();
    ActivityTable activities;
    for (const CornerPointGrid* grid : grids) {
        const std::string folder = "/grids/" + std::to_string(contents.grids.size());
        contents.grids.push_back(write_grid(writer, *grid, folder, activities));
    }
    contents.activities = activities.stored();
    contents.styles = free_styles(grids);
    contents.journal = Interpreter::instance().journal();
    contents.parts.assign(parts.begin(), parts.end());
    const std::int64_t format = project_format;
    writer.describe("/", "format", std::span(&format, 1));
    writer.describe("/", "program", contents.program);
    writer.describe("/", "written", contents.written);
    writer.commit(contents_text(contents));
}

} // namespace

void write_project(const std::filesystem::path& path, const std::map<std::string, std::string>& parts,
                   const ProgressCheck& check)
{
    try {
        write_all(path, parts, check);
    } catch (const FileError&) {
        throw;
    } catch (const ModelError& error) {
        throw FileError(path.string(), 0, error.what());
    }
}

} // namespace lodex
