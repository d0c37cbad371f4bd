#pragma once

#include "lodex/volumes/CornerPointGrid.h"
#include "lodex/volumes/model/CellGeometry.h"
#include "lodex/volumes/model/Create.h"
#include "lodex/volumes/model/Merge.h"

#include "upscaling/mappers/MapperInfo.h"

#include <Lodex/geobase/GeobaseLib.h>
#include <Lodex/volumes/Lodex_volumes_init.h>

#include <gtest/gtest.h>

#include <memory>
#include <numeric>
#include <stdexcept>
#include <string>
#include <vector>

/// Rows of fine cells, whatever the form of the mapping.
inline std::vector<std::vector<std::int64_t>> rows_of(const Lodex::CellMapping& mapping)
{
    std::vector<std::vector<std::int64_t>> rows;
    if (!mapping.has_boxes()) {
        for (std::size_t c = 0; c + 1 < mapping.offsets.size(); ++c)
            rows.emplace_back(mapping.cells.begin() + mapping.offsets[c],
                              mapping.cells.begin() + mapping.offsets[c + 1]);
        return rows;
    }
    const auto size = [&mapping](std::size_t axis) {
        std::int64_t last = -1;
        for (const auto& range : mapping.boxes[axis])
            last = std::max(last, range.last);
        return last + 1;
    };
    // The boxes do not tell the fine grid's size: the caller's grids reach to the last index of some box.
    const std::int64_t ni = size(0), nj = size(1);
    for (const auto& k : mapping.boxes[2]) {
        for (const auto& j : mapping.boxes[1]) {
            for (const auto& i : mapping.boxes[0]) {
                const bool takes_part = mapping.coarse_flags[rows.size()] != 0;
                auto& row = rows.emplace_back();
                for (std::int64_t c = k.first; takes_part && c <= k.last; ++c)
                    for (std::int64_t b = j.first; b <= j.last; ++b)
                        for (std::int64_t a = i.first; a <= i.last; ++a)
                            if (mapping.fine_flags[static_cast<std::size_t>(a + ni * (b + nj * c))])
                                row.push_back(a + ni * (b + nj * c));
            }
        }
    }
    return rows;
}

/// Coarse cell of every fine cell, -1 for none; the first one where there are several.
inline std::vector<std::int64_t> owners_of(const Lodex::CellMapping& mapping, std::int64_t fine_cells)
{
    std::vector<std::int64_t> owners(static_cast<std::size_t>(fine_cells), -1);
    const auto rows = rows_of(mapping);
    for (std::size_t c = 0; c < rows.size(); ++c)
        for (const std::int64_t cell : rows[c])
            if (owners[static_cast<std::size_t>(cell)] < 0)
                owners[static_cast<std::size_t>(cell)] = static_cast<std::int64_t>(c);
    return owners;
}

/// An empty catalogue before and after each test, and short ways to make and match grids.
class MapperFixture : public testing::Test {
protected:
    using Rows = std::vector<std::vector<std::int64_t>>;

    MapperFixture()
    {
        Lodex::Lodex_volumes_init::initialize();
        Lodex::GeobaseLib::instance()->clear();
    }
    ~MapperFixture() override { Lodex::GeobaseLib::instance()->clear(); }

    static lodex::CornerPointGrid& add(const std::string& name, lodex::GridModel model)
    {
        return *lodex::add_grid(name, std::move(model));
    }
    static lodex::CornerPointGrid& add_box(const std::string& name, const lodex::GridSize& size,
                                           const std::array<double, 3>& spacing,
                                           const std::array<double, 3>& origin = {0, 0, 0})
    {
        return add(name, lodex::make_box(size, spacing, origin));
    }
    /// Merges runs of `step` sections along an axis; the record leads back to the source.
    static lodex::CornerPointGrid& merge(const std::string& name, const lodex::CornerPointGrid& source, int axis,
                                         std::int64_t step)
    {
        lodex::MergeRequest request;
        request.axis = axis;
        request.source_name = source.name().str();
        const std::int64_t size = source.model().size[static_cast<std::size_t>(axis)];
        for (std::int64_t first = 0; first < size; first += step)
            if (const std::int64_t last = std::min(size, first + step) - 1; last > first)
                request.sections.push_back({first, last});
        lodex::MergeReport report;
        return add(name, lodex::merge_sections(source.model(), request, report));
    }
    static void set_layers(lodex::CornerPointGrid& grid, std::vector<lodex::LayerData> layers)
    {
        grid.change([&](lodex::GridModel& model) { model.layers = std::move(layers); });
    }

    /// Matches all active cells unless flags are given.
    std::unique_ptr<Lodex::MatchedGrids> match(const std::string& mapper, const lodex::CornerPointGrid& fine,
                                               const lodex::CornerPointGrid& coarse, bool faults = false,
                                               const Lodex::ProgressCheck& progress = {})
    {
        const auto* factory = dynamic_cast<const Lodex::CellMapperFactory*>(
            Lodex::FactoryLib::instance()->find(Lodex::GridObjCellMapperFactoriesDomain(), mapper));
        if (!factory)
            throw std::logic_error("no mapper " + mapper);
        const auto flags = [](const std::vector<std::uint8_t>& given, const lodex::CornerPointGrid& grid) {
            return given.empty() ? grid.active_flags() : std::span<const std::uint8_t>(given);
        };
        return factory->create()->match({&fine, &coarse, flags(fine_flags, fine), flags(coarse_flags, coarse), faults},
                                        progress);
    }
    /// Text of the error; empty when there is none.
    std::string error(const std::string& mapper, const lodex::CornerPointGrid& fine,
                      const lodex::CornerPointGrid& coarse)
    {
        try {
            (void)match(mapper, fine, coarse);
        }
        catch (const std::runtime_error& e) {
            return e.what();
        }
        return {};
    }
    static std::vector<std::int64_t> samples(const Lodex::MatchedGrids& grids, std::int64_t coarse_cell,
                                             const std::array<int, 3>& n)
    {
        std::vector<std::int64_t> result(static_cast<std::size_t>(n[0] * n[1] * n[2]), -7);
        grids.sample(coarse_cell, n, result);
        return result;
    }
    /// One warning that holds the text?
    static bool warned(const Lodex::MatchedGrids& grids, const std::string& text)
    {
        return std::ranges::count_if(grids.warnings(), [&text](const std::string& warning) {
                   return warning.find(text) != std::string::npos;
               }) == 1;
    }

    std::vector<std::uint8_t> fine_flags, coarse_flags; ///< empty: all active cells
};
