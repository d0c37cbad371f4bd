#include "GridItems.h"

#include "lodex/volumes/model/CellGeometry.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace lodex {

const Lodex::CString& GridProperty::unit() const
{
    unit_ = data().unit;
    return unit_;
}

Lodex::Property::Values GridProperty::values() const
{
    const PropertyData& there = grid_.with({GridArray::PropertyValues, position_}).properties[position_];
    return std::visit([](const auto& v) -> Values { return std::span(v); }, there.values);
}

void GridProperties::rebuild()
{
    // New ones are made first: when memory runs out the former ones are still in their places.
    std::vector<std::unique_ptr<GridProperty>> items;
    const auto& properties = grid_.header().properties;
    const auto former = [this](const std::string& name) {
        return std::ranges::find_if(items_, [&](const auto& item) { return item && item->name().str() == name; });
    };
    for (const PropertyData& property : properties)
        items.push_back(former(property.name) != items_.end() ? nullptr : std::make_unique<GridProperty>(grid_, property.name));
    for (std::size_t i = 0; i < properties.size(); ++i) {
        if (!items[i])
            items[i] = std::move(*former(properties[i].name));
        items[i]->set_position(i);
    }
    items_ = std::move(items);
}

Lodex::CString GridProperties::property_name(int index) const
{
    const Lodex::Property* item = property(index);
    return item ? item->name() : Lodex::CString();
}

Lodex::Property* GridProperties::property(int index) const
{
    return index >= 0 && index < nb_properties() ? items_[static_cast<std::size_t>(index)].get() : nullptr;
}

Lodex::Property* GridProperties::find(const Lodex::CString& name) const
{
    return property(property_index(name));
}

int GridProperties::property_index(const Lodex::CString& name) const
{
    const auto it = std::ranges::find_if(items_, [&](const auto& item) { return item->name() == name; });
    return it == items_.end() ? -1 : static_cast<int>(it - items_.begin());
}

namespace {

/// Inverts the trilinear map of a cell by Newton's method. True when the point has local coordinates within [0, 1] up to
/// a small slack, which are returned cut to that range.
bool invert_trilinear(const CellCorners& corners, const Point3& point, Point3& local)
{
    constexpr int max_iterations = 30;
    constexpr double slack = 1e-6;
    Point3 u{0.5, 0.5, 0.5};
    for (int iteration = 0; iteration < max_iterations; ++iteration) {
        std::array<std::array<double, 3>, 3> jacobian{}; // [direction][component]
        Point3 position{};
        for (std::size_t n = 0; n < 8; ++n) {
            const std::array<double, 3> w{n & 1 ? u[0] : 1 - u[0], n & 2 ? u[1] : 1 - u[1], n & 4 ? u[2] : 1 - u[2]};
            const std::array<double, 3> sign{n & 1 ? 1. : -1., n & 2 ? 1. : -1., n & 4 ? 1. : -1.};
            for (std::size_t c = 0; c < 3; ++c) {
                position[c] += w[0] * w[1] * w[2] * corners[n][c];
                jacobian[0][c] += sign[0] * w[1] * w[2] * corners[n][c];
                jacobian[1][c] += w[0] * sign[1] * w[2] * corners[n][c];
                jacobian[2][c] += w[0] * w[1] * sign[2] * corners[n][c];
            }
        }
        const Point3 rest{point[0] - position[0], point[1] - position[1], point[2] - position[2]};
        const auto determinant = [](const Point3& a, const Point3& b, const Point3& c) {
            return a[0] * (b[1] * c[2] - b[2] * c[1]) - a[1] * (b[0] * c[2] - b[2] * c[0]) +
                   a[2] * (b[0] * c[1] - b[1] * c[0]);
        };
        const double volume = determinant(jacobian[0], jacobian[1], jacobian[2]);
        if (!(std::abs(volume) > 0))
            return false;
        const Point3 step{determinant(rest, jacobian[1], jacobian[2]) / volume,
                          determinant(jacobian[0], rest, jacobian[2]) / volume,
                          determinant(jacobian[0], jacobian[1], rest) / volume};
        double change = 0;
        for (std::size_t c = 0; c < 3; ++c) {
            u[c] += step[c];
            change = std::max(change, std::abs(step[c]));
        }
        if (!std::isfinite(change) || change > 1e6)
            return false;
        if (change < 1e-12)
            break;
    }
    for (std::size_t c = 0; c < 3; ++c) {
        if (u[c] < -slack || u[c] > 1 + slack)
            return false;
        local[c] = std::clamp(u[c], 0., 1.);
    }
    return true;
}

} // namespace

bool NodeLattice::local_coordinates(const std::array<double, 3>& point, std::array<double, 3>& uvw) const
{
    const GridModel& model = grid_.model();
    for (std::int64_t k = 0; k < model.size[2]; ++k) {
        for (std::int64_t j = 0; j < model.size[1]; ++j) {
            for (std::int64_t i = 0; i < model.size[0]; ++i) {
                if (!model.active[static_cast<std::size_t>(model.cell_index(i, j, k))])
                    continue;
                const CellCorners corners = cell_corners(model, i, j, k);
                bool outside = false;
                for (std::size_t c = 0; c < 3 && !outside; ++c) {
                    double low = std::numeric_limits<double>::infinity(), high = -low;
                    for (const Point3& corner : corners) {
                        low = std::min(low, corner[c]);
                        high = std::max(high, corner[c]);
                    }
                    outside = !(point[c] >= low && point[c] <= high);
                }
                Point3 local;
                if (outside || !invert_trilinear(corners, point, local))
                    continue;
                uvw = {(static_cast<double>(i) + local[0]) / static_cast<double>(model.size[0]),
                       (static_cast<double>(j) + local[1]) / static_cast<double>(model.size[1]),
                       (static_cast<double>(k) + local[2]) / static_cast<double>(model.size[2])};
                return true;
            }
        }
    }
    return false;
}

} // namespace lodex
