#include "VerbTools.h"

#include "lodex/interpreter/Lists.h"

#include <Lodex/geobase/Style.h>
#include <Lodex/utils/COSNameList.h>
#include <Lodex/utils/PathName.h>

#include <algorithm>
#include <set>

namespace lodex {

namespace {

template <class Item> std::vector<std::string_view> names_of(const std::vector<Item>& items, std::string Item::*name)
{
    std::vector<std::string_view> names;
    for (const Item& item : items)
        names.push_back(item.*name);
    return names;
}

/// Properties or regions to copy. Nothing: all of them (keyword absent, or a word that means all is in the list).
std::optional<std::vector<std::string>> names_to_copy(const Call& call, std::string_view keyword, const std::string& what,
                                                      std::initializer_list<std::string_view> words_for_all,
                                                      const std::vector<std::string_view>& existing)
{
    if (!call.has(keyword))
        return std::nullopt;
    const auto means_all = [&](const std::string& name) { return std::ranges::find(words_for_all, name) != words_for_all.end(); };
    std::set<std::string_view> known(words_for_all);
    known.insert(existing.begin(), existing.end());
    const auto longest = std::ranges::max_element(known, {}, &std::string_view::size);
    std::vector<std::string> names;
    try {
        names = resolve_joined(
            call.text(keyword), [&](const std::string& name) { return known.contains(name); }, longest->size(), what);
    } catch (const CommandError& error) {
        call.fail(error.what(), keyword);
    }
    if (std::ranges::any_of(names, means_all))
        return std::nullopt;
    return names;
}

} // namespace

void read_carry_options(const Call& call, const CornerPointGrid& source, CarryOptions& options)
{
    const GridModel& model = source.model();
    options.source_name = source.name().str();
    options.copy_properties = call.flag("copy_properties");
    options.properties =
        names_to_copy(call, "properties", "property", {"all_properties"}, names_of(model.properties, &PropertyData::name));
    options.copy_regions = call.flag("copy_regions");
    options.regions = names_to_copy(call, "regions", "region", {"all_regions", "everywhere"},
                                    names_of(model.regions, &RegionData::name));
    options.copy_fault_blocks = call.flag("copy_fb_regions");
}

void add_made_grid(const Call& call, const CornerPointGrid& source, GridModel made)
{
    const CornerPointGrid* grid = add_grid(call.text("name"), std::move(made));
    const Lodex::Style* style = source.style();
    if (call.flag("copy_style") && style)
        grid->style()->copy_attributes(*style);
}

void set_property(CornerPointGrid& grid, PropertyData property)
{
    grid.change([&](GridModel& model) { put_item(model.properties, std::move(property)); });
}

const PropertyData& property_of(const Call& call, std::string_view keyword, const GridModel& model)
{
    const PropertyData* property = model.find_property(call.text(keyword));
    if (!property)
        call.fail("there is no property \"" + call.text(keyword) + "\"", keyword);
    return *property;
}

const PropertyData& cell_property_of(const Call& call, std::string_view keyword, const GridModel& model)
{
    const PropertyData& property = property_of(call, keyword, model);
    if (property.on_points)
        call.fail("the property \"" + property.name + "\" stands on points; expected a property of cells", keyword);
    return property;
}

int axis_of_direction(const Call& call)
{
    return static_cast<int>(std::ranges::find(axis_directions, call.text("direction")) - axis_directions.begin());
}

std::string percent_text(double part)
{
    return format_general(100 * part, 3) + " %";
}

std::vector<std::string> mapper_names()
{
    std::vector<std::string> names;
    for (const Lodex::CString& type : {Lodex::GeoSGridCellMapper::type(), Lodex::MetaSGridCellMapper::type()}) {
        Lodex::COSNameList paths;
        Lodex::GridObjCellMapper::mapper_list_names(paths, type);
        for (const Lodex::CString& path : paths)
            names.push_back(Lodex::PathName::basename(path).str());
    }
    return names;
}

std::unique_ptr<Lodex::MatchedGrids> match_grids(Call& call, std::string_view keyword, const Lodex::MappingRequest& request,
                                                 const ProgressCheck& progress)
{
    const auto* factory = dynamic_cast<const Lodex::CellMapperFactory*>(
        Lodex::FactoryLib::instance()->find(Lodex::GridObjCellMapperFactoriesDomain(), call.text(keyword)));
    if (!factory)
        call.fail("there is no mapper \"" + call.text(keyword) + "\"", keyword);
    try {
        auto matched = factory->create()->match(request, progress);
        for (const std::string& warning : matched->warnings())
            call.warn(warning);
        return matched;
    } catch (const std::runtime_error& error) {
        call.fail(error.what(), keyword);
    }
}

} // namespace lodex
