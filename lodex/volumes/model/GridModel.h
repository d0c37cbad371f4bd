#pragma once

#include "lodex/utils/Errors.h"

#include <Lodex/volumes/LayerInfo.h>
#include <Lodex/utils/RealArray.h>
#include <Lodex/volumes/IndexRelation.h>

#include <array>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace lodex {

using Lodex::RealArray;

/// Numbers of cells along I, J, K.
using GridSize = std::array<std::int64_t, 3>;

/// A cell property. Values stand for all ni*nj*nk cells (or (ni+1)*(nj+1)*(nk+1) points), I fastest, K downwards.
struct PropertyData {
    std::string name;
    std::string unit;                                   ///< as the file or the user wrote it; empty: none
    /// Continuous (float, double) or discrete (int32) values.
    std::variant<std::vector<float>, std::vector<double>, std::vector<std::int32_t>> values;
    std::optional<double> no_data;                      ///< value that means undefined; NaN is undefined as well
    std::map<std::int32_t, std::string> code_names;     ///< discrete only; codes without a name are absent
    bool on_points = false;                             ///< values stand on grid nodes instead of cells

    [[nodiscard]] bool discrete() const { return values.index() == 2; }
    [[nodiscard]] std::size_t size() const
    {
        return std::visit([](const auto& v) { return v.size(); }, values);
    }
};

/// A set of cells. A model region comes from units or fault blocks and always passes on to derived grids.
struct RegionData {
    std::string name;
    std::vector<std::uint8_t> flags; ///< one per cell, 0 or 1
    bool model = false;
};

/// A stratigraphic unit, from top to bottom.
struct LayerData {
    std::string unit;
    std::int64_t nb_k_cells = 0;
    float cell_thickness = 0;        ///< in the unit of the grid's depths
    Lodex::LayerInfo::LayeringStyle style = Lodex::LayerInfo::Proportional;
};

/// One piece of a named fault: cell faces of one direction over an index box, 0-based and inclusive.
struct FaultSegment {
    std::string name;
    std::array<std::int64_t, 2> i{}, j{}, k{};
    std::string face; ///< "I+", "I-", "J+", "J-", "K+", "K-" as the file wrote it ("X", "I" and the like included)
};

/// A keyword that the reader does not interpret, kept so that it can be written back.
struct KeptKeyword {
    std::string name;
    std::string text;  ///< everything between the keyword and its end, to the letter
    std::string file;  ///< where it came from
    std::int64_t line = 0;
};

/// What grid files say of coordinates; kept as read.
struct GridFrame {
    std::optional<std::array<double, 6>> map_axes; ///< x, y of a point on the Y axis, the origin, a point on the X axis
    std::string map_units;                         ///< "METRES", "FEET", ...; empty: not given
    std::string grid_units;                        ///< "METRES", "FEET", ...; empty: not given
    bool grid_units_map = false;                   ///< GRIDUNIT said MAP: coordinates are map coordinates
};

using Lodex::IndexRange;
using Lodex::IndexRelation;

/// How the cells of a grid came from the cells of another one: along each axis, for every index of this grid the index
/// range of the source that it came from. Written by merge and subdivide, composed over destroyed temporaries.
struct DerivationRecord {
    std::uint64_t source_id = 0;   ///< GridModel::id of the source, valid after renaming and after its destruction
    std::string source_name;       ///< its name at that time, for messages
    GridSize source_size{};
    IndexRelation ranges;
};

/// A corner-point grid as plain data: what readers make, operators take and give, and the catalogue's grid holds.
///
/// Pillars run from top to bottom; the volume sign of (x, y, depth) against (I, J, K) tells the handedness and either
/// is legal. Depth is positive downwards. Lengths are in the file's unit (GridFrame).
struct GridModel {
    std::uint64_t id = 0; ///< unique in this process (see next_grid_id); 0 until the grid enters the catalogue
    GridSize size{};
    /// 6 numbers a pillar (x, y, depth of the top point, then of the bottom point), (ni+1)*(nj+1) pillars, I fastest.
    RealArray coord;
    /// 8 depths a cell in the usual file order: index (2k+c)*2nj*2ni + (2j+b)*2ni + (2i+a), a, b, c in {0, 1}; c = 0 is
    /// the top.
    RealArray zcorn;
    std::vector<std::uint8_t> active; ///< one per cell, 0 or 1; never empty in a valid grid
    std::vector<PropertyData> properties;
    std::vector<RegionData> regions;  ///< in order of creation
    std::vector<LayerData> layers;    ///< empty: no stratigraphic units
    std::vector<FaultSegment> faults;
    std::vector<KeptKeyword> kept;
    GridFrame frame;
    std::vector<DerivationRecord> records;

    [[nodiscard]] std::int64_t cells() const { return size[0] * size[1] * size[2]; }
    [[nodiscard]] std::int64_t pillars() const { return (size[0] + 1) * (size[1] + 1); }
    [[nodiscard]] std::int64_t cell_index(std::int64_t i, std::int64_t j, std::int64_t k) const
    {
        return i + size[0] * (j + size[1] * k);
    }
    [[nodiscard]] const PropertyData* find_property(std::string_view name) const;
    [[nodiscard]] const RegionData* find_region(std::string_view name) const;
};

/// A number that no other grid of this process has had.
[[nodiscard]] std::uint64_t next_grid_id();

} // namespace lodex
