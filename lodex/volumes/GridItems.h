#pragma once

#include "CornerPointGrid.h"

#include <Lodex/geobase/Property.h>
#include <Lodex/geobase/Region.h>
#include <Lodex/geobase/Style.h>
#include <Lodex/volumes/LayerInfo.h>
#include <Lodex/volumes/RockFeature.h>
#include <Lodex/volumes/SGridCube.h>

namespace lodex {

/// One property of a grid. Lives as long as the grid has a property of its name, so that observers of its style keep it.
class GridProperty final : public Lodex::Property {
public:
    GridProperty(const CornerPointGrid& grid, const std::string& name) : grid_(grid), name_(name), style_(name) {}

    void set_position(std::size_t position) { position_ = position; }
    [[nodiscard]] const PropertyData& data() const { return grid_.header().properties[position_]; }

    [[nodiscard]] const Lodex::CString& name() const override { return name_; }
    [[nodiscard]] const Lodex::CString& unit() const override;
    [[nodiscard]] Lodex::Style* style() const override { return &style_; }
    [[nodiscard]] Values values() const override;
    [[nodiscard]] std::optional<double> no_data() const override { return data().no_data; }
    [[nodiscard]] bool discrete() const override { return data().discrete(); }
    [[nodiscard]] const std::map<std::int32_t, std::string>& code_names() const override { return data().code_names; }

private:
    const CornerPointGrid& grid_;
    Lodex::CString name_;
    mutable Lodex::CString unit_;
    mutable Lodex::Style style_;
    std::size_t position_ = 0;
};

class GridProperties final : public Lodex::PropertyDB {
public:
    explicit GridProperties(const CornerPointGrid& grid) : grid_(grid) {}
    /// Follows the model's list; objects of names that are still there stay.
    void rebuild();

    [[nodiscard]] int nb_properties() const override { return static_cast<int>(items_.size()); }
    [[nodiscard]] Lodex::CString property_name(int index) const override;
    [[nodiscard]] Lodex::Property* property(int index) const override;
    [[nodiscard]] Lodex::Property* find(const Lodex::CString& name) const override;
    [[nodiscard]] int property_index(const Lodex::CString& name) const override;

private:
    const CornerPointGrid& grid_;
    std::vector<std::unique_ptr<GridProperty>> items_;
};

class GridRegion final : public Lodex::Region {
public:
    GridRegion(const CornerPointGrid& grid, std::size_t position)
        : grid_(grid), name_(grid.header().regions[position].name), position_(position)
    {
    }
    [[nodiscard]] const Lodex::CString& name() const override { return name_; }
    [[nodiscard]] std::span<const std::uint8_t> flags() const override
    {
        return grid_.with({GridArray::RegionFlags, position_}).regions[position_].flags;
    }
    [[nodiscard]] bool is_model_region() const override { return data().model; }

private:
    [[nodiscard]] const RegionData& data() const { return grid_.header().regions[position_]; }
    const CornerPointGrid& grid_;
    Lodex::CString name_;
    std::size_t position_;
};

class GridLayer final : public Lodex::LayerInfo, private Lodex::RockFeature {
public:
    /// depth_scale: internal units in one unit of the grid's depths.
    GridLayer(const LayerData& data, double depth_scale) : data_(data), depth_scale_(depth_scale), name_(data.unit) {}
    [[nodiscard]] long nb_k_cells() const override { return static_cast<long>(data_.nb_k_cells); }
    [[nodiscard]] float cell_thickness() const override { return static_cast<float>(data_.cell_thickness * depth_scale_); }
    [[nodiscard]] LayeringStyle layering_style() const override { return data_.style; }
    [[nodiscard]] Lodex::RockFeature* rock_feature() const override { return const_cast<GridLayer*>(this); }

private:
    [[nodiscard]] const Lodex::CString& name() const override { return name_; }
    LayerData data_;
    double depth_scale_;
    Lodex::CString name_;
};

/// Node counts and point location among the active cells (a walk through all of them).
class NodeLattice final : public Lodex::SGridCube {
public:
    explicit NodeLattice(const CornerPointGrid& grid) : grid_(grid) {}
    [[nodiscard]] long nu() const override { return static_cast<long>(grid_.header().size[0]) + 1; }
    [[nodiscard]] long nv() const override { return static_cast<long>(grid_.header().size[1]) + 1; }
    [[nodiscard]] long nw() const override { return static_cast<long>(grid_.header().size[2]) + 1; }
    [[nodiscard]] bool local_coordinates(const std::array<double, 3>& point, std::array<double, 3>& uvw) const override;

private:
    const CornerPointGrid& grid_;
};

} // namespace lodex
