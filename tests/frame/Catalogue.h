#pragma once

#include "lodex/interpreter/Interpreter.h"
#include "lodex/volumes/CornerPointGrid.h"
#include "lodex/volumes/model/Create.h"

#include <Lodex/geobase/GeobaseLib.h>
#include <Lodex/geobase/Style.h>
#include <Lodex/utils/COSNameList.h>

#include <memory>
#include <string>
#include <vector>

/// A box of equal cells in the catalogue.
inline lodex::CornerPointGrid* add_box(const std::string& name, const lodex::GridSize& size = {4, 3, 5})
{
    return lodex::add_grid(name, lodex::make_box(size, {100, 100, 10}));
}

inline void add_property(lodex::CornerPointGrid* grid, const std::string& name, float value = 1)
{
    grid->change([&](lodex::GridModel& model) {
        lodex::PropertyData property;
        property.name = name;
        property.values = std::vector<float>(static_cast<std::size_t>(model.cells()), value);
        model.properties.push_back(property);
    });
}

inline void add_region(lodex::CornerPointGrid* grid, const std::string& name)
{
    grid->change([&](lodex::GridModel& model) {
        lodex::RegionData region;
        region.name = name;
        region.flags.assign(static_cast<std::size_t>(model.cells()), 1);
        model.regions.push_back(region);
    });
}

/// Layers of these numbers of K cells; unit names A, B, ...
inline void set_layers(lodex::CornerPointGrid* grid, const std::vector<int>& sizes)
{
    grid->change([&](lodex::GridModel& model) {
        model.layers.clear();
        char unit = 'A';
        for (const int size : sizes) {
            lodex::LayerData layer;
            layer.unit = std::string(1, unit++);
            layer.nb_k_cells = size;
            layer.cell_thickness = 10;
            model.layers.push_back(layer);
        }
    });
}

/// What the style of a grid says of its painted sections.
inline std::string painted_sections(const std::string& grid)
{
    return lodex::find_grid(grid)->style()->attribute("*sections").str();
}

/// An object that is no grid, with items under every list key.
class OtherObject : public Lodex::GObj {
public:
    explicit OtherObject(const std::string& name) : GObj(name) {}

    [[nodiscard]] const Lodex::TypeId& type_id() const override
    {
        static constexpr Lodex::TypeId type("Other", nullptr);
        return type;
    }
    void name_list(const Lodex::CString&, Lodex::COSNameList& names) const override
    {
        names.clear();
        names.append("item");
    }
    [[nodiscard]] Lodex::Style* style() const override { return nullptr; }
};

inline void add_other_object(const std::string& name)
{
    Lodex::GeobaseLib::instance()->add(std::make_unique<OtherObject>(name));
}

/// Empties the catalogue when it goes.
struct CleanCatalogue {
    CleanCatalogue() { Lodex::GeobaseLib::instance()->clear(); }
    ~CleanCatalogue() { Lodex::GeobaseLib::instance()->clear(); }
    CleanCatalogue(const CleanCatalogue&) = delete;
    CleanCatalogue& operator=(const CleanCatalogue&) = delete;
};

/// Collects the texts that reach the interpreter.
struct CommandLog {
    CommandLog()
    {
        lodex::Interpreter::instance().set_listener([this](const std::string& text) { texts.push_back(text); });
    }
    ~CommandLog() { lodex::Interpreter::instance().set_listener({}); }
    CommandLog(const CommandLog&) = delete;
    CommandLog& operator=(const CommandLog&) = delete;

    /// The only text since the last call; fails the test's expectations when there are others.
    std::string take()
    {
        const std::string text = texts.size() == 1 ? texts.front() : "(" + std::to_string(texts.size()) + " texts)";
        texts.clear();
        return text;
    }

    std::vector<std::string> texts;
};
