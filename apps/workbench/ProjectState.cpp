#include "ProjectState.h"

#include "DisplayPanel.h"
#include "MainWindow.h"
#include "SectionPanel.h"

#include <nlohmann/json.hpp>

#include <QDockWidget>
#include <QTabWidget>

#include <algorithm>
#include <array>
#include <utility>

namespace lodex {

namespace {

using nlohmann::json;

constexpr int version = 1;

constexpr std::array<const char*, 4> colour_kinds{"none", "unit", "property", "depth"};
constexpr std::array<std::pair<TreeItem::Kind, const char*>, 9> item_kinds{{
    {TreeItem::Kind::Grid, "grid"},
    {TreeItem::Kind::Properties, "properties"},
    {TreeItem::Kind::Regions, "regions"},
    {TreeItem::Kind::Units, "units"},
    {TreeItem::Kind::Activities, "activities"},
    {TreeItem::Kind::Property, "property"},
    {TreeItem::Kind::Region, "region"},
    {TreeItem::Kind::Unit, "unit"},
    {TreeItem::Kind::Activity, "activity"},
}};

std::string text_of(const json& value)
{
    return value.dump(1, ' ', false, json::error_handler_t::replace);
}

/// Null for a text of another version or without sense.
json read(const std::string& text)
{
    json value = json::parse(text, nullptr, false);
    const bool known = value.is_object() && value.contains("version") && value["version"] == json(version);
    return known ? value : json();
}

json json_of(const CellFilter& filter)
{
    json slices = json::array();
    for (const auto& ranges : filter.ranges) {
        json list = json::array();
        for (const IndexRange& range : ranges)
            list.push_back({range.first, range.last});
        slices.push_back(list);
    }
    json result{{"slices", slices},
                {"fence", filter.slices == CellFilter::Slices::Fence},
                {"region", filter.region},
                {"active_only", filter.active_only}};
    if (filter.threshold) {
        json threshold{{"property", filter.threshold->property}, {"codes", filter.threshold->codes}};
        if (filter.threshold->min)
            threshold["min"] = *filter.threshold->min;
        if (filter.threshold->max)
            threshold["max"] = *filter.threshold->max;
        result["threshold"] = threshold;
    }
    return result;
}

json json_of(const GridDisplay& display)
{
    return {{"colour", colour_kinds.at(static_cast<std::size_t>(display.colour.kind))},
            {"property", display.colour.property},
            {"filter", json_of(display.filter)},
            {"outline", display.outline},
            {"cell_edges", display.cell_edges},
            {"legend", display.legend},
            {"painted_sections", display.painted_sections}};
}

/// These throw json exceptions where the text is of another kind than expected.
CellFilter filter_of(const json& value)
{
    CellFilter filter;
    const json slices = value.value("slices", json::array());
    for (std::size_t axis = 0; axis < std::min(filter.ranges.size(), slices.size()); ++axis) {
        for (const json& range : slices[axis])
            filter.ranges[axis].push_back({range.at(0).get<std::int64_t>(), range.at(1).get<std::int64_t>()});
    }
    filter.slices = value.value("fence", false) ? CellFilter::Slices::Fence : CellFilter::Slices::Box;
    filter.region = value.value("region", std::string());
    filter.active_only = value.value("active_only", true);
    if (value.contains("threshold")) {
        const json& threshold = value["threshold"];
        CellThreshold limits{.property = threshold.value("property", std::string())};
        if (threshold.contains("min"))
            limits.min = threshold["min"].get<double>();
        if (threshold.contains("max"))
            limits.max = threshold["max"].get<double>();
        limits.codes = threshold.value("codes", std::set<std::int32_t>());
        filter.threshold = std::move(limits);
    }
    return filter;
}

GridDisplay display_of(const json& value)
{
    GridDisplay display;
    const auto kind = std::ranges::find(colour_kinds, value.value("colour", std::string("none")));
    if (kind != colour_kinds.end())
        display.colour.kind = static_cast<ColourBy::Kind>(kind - colour_kinds.begin());
    display.colour.property = value.value("property", std::string());
    display.filter = filter_of(value.value("filter", json::object()));
    display.outline = value.value("outline", display.outline);
    display.cell_edges = value.value("cell_edges", display.cell_edges);
    display.legend = value.value("legend", display.legend);
    display.painted_sections = value.value("painted_sections", display.painted_sections);
    return display;
}

} // namespace

CamerasPart::CamerasPart(MainWindow& window) : window_(window)
{
    attach_project_part(this);
}

CamerasPart::~CamerasPart()
{
    detach_project_part(this);
}

std::string CamerasPart::save() const
{
    const CameraView& camera = *window_.camera();
    json value{{"version", version},
               {"exaggeration", camera.vertical_exaggeration()},
               {"orthographic", camera.orthographic()},
               {"axes", camera.axes_shown()}};
    if (const auto place = camera.place())
        value["place"] = {{"focus", place->focus},
                          {"height", place->height},
                          {"azimuth", place->azimuth},
                          {"elevation", place->elevation}};
    json grids = json::object();
    for (const auto& [grid, display] : window_.display()->displays())
        grids[grid] = json_of(display);
    value["grids"] = grids;
    return text_of(value);
}

void CamerasPart::restore(const std::string& text)
{
    const json value = read(text);
    if (value.is_null())
        return;
    try {
        std::map<std::string, GridDisplay> displays;
        const json grids = value.value("grids", json::object());
        for (const auto& [grid, display] : grids.items())
            displays[grid] = display_of(display);
        window_.display()->set_displays(displays);
        window_.display()->set_view(value.value("exaggeration", 1.0), value.value("orthographic", false),
                                    value.value("axes", true));
        if (value.contains("place")) {
            const json& place = value["place"];
            window_.keep_place({.focus = place.at("focus").get<Point3>(),
                                .height = place.at("height").get<double>(),
                                .azimuth = place.at("azimuth").get<double>(),
                                .elevation = place.at("elevation").get<double>()});
        }
    } catch (const json::exception&) {
        return; // what was read up to there is as good as any other view
    }
}

WindowPart::WindowPart(MainWindow& window) : window_(window)
{
    attach_project_part(this);
}

WindowPart::~WindowPart()
{
    detach_project_part(this);
}

std::string WindowPart::save() const
{
    const TreeItem item = window_.tree()->item();
    json value{{"version", version}};
    const auto kind = std::ranges::find(item_kinds, item.kind, &std::pair<TreeItem::Kind, const char*>::first);
    if (kind != item_kinds.end())
        value["selected"] = {{"kind", kind->second},
                             {"grid", item.grid.toStdString()},
                             {"name", item.name.toStdString()},
                             {"number", item.number}};
    json panels = json::object();
    for (const QDockWidget* dock : window_.findChildren<QDockWidget*>(Qt::FindDirectChildrenOnly))
        panels[dock->objectName().toStdString()] = !dock->isHidden();
    value["panels"] = panels;
    value["section"] = window_.section()->state().toStdString();
    if (const auto* views = window_.findChild<QTabWidget*>("views"))
        value["view"] = views->currentWidget()->objectName().toStdString();
    return text_of(value);
}

void WindowPart::restore(const std::string& text)
{
    const json value = read(text);
    if (value.is_null())
        return;
    try {
        if (value.contains("selected")) {
            const json& selected = value["selected"];
            const auto kind =
                std::ranges::find_if(item_kinds, [word = selected.value("kind", std::string())](const auto& one) {
                    return one.second == word;
                });
            if (kind != item_kinds.end())
                window_.tree()->select(TreeItem{.kind = kind->first,
                                                .grid = QString::fromStdString(selected.value("grid", std::string())),
                                                .name = QString::fromStdString(selected.value("name", std::string())),
                                                .number = selected.value("number", 0)});
        }
        const json panels = value.value("panels", json::object());
        for (const auto& [name, shown] : panels.items()) {
            if (auto* dock = window_.findChild<QDockWidget*>(QString::fromStdString(name)))
                dock->setVisible(shown.get<bool>());
        }
        window_.section()->restore_state(QString::fromStdString(value.value("section", std::string())));
        const QString view = QString::fromStdString(value.value("view", std::string()));
        auto* views = window_.findChild<QTabWidget*>("views");
        for (int n = 0; views && n < views->count(); ++n) {
            if (views->widget(n)->objectName() == view && (n > 0 || window_.camera()->can_draw()))
                views->setCurrentIndex(n);
        }
    } catch (const json::exception&) {
        return; // what was read up to there is as good as any other layout
    }
}

} // namespace lodex
