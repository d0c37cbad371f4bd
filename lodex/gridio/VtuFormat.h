#pragma once

#include <lodex/gridio/GridFormat.h>

namespace lodex {

/// VTK's XML file of an unstructured grid, for viewers; written only.
///
/// The active cells as hexahedra, I fastest. x and y are the model's, z is minus the depth, so that up is up in a
/// viewer; lengths stay in the model's unit. Corners are in 64 bits. Cells share a point where their corners on one
/// pillar, at the same node between layers, have the same depth, so faults and gaps stay open. Hexahedra have positive
/// volume in (x, y, z) whatever the handedness of the grid. Cell data: I, J, K (1-based), Unit (1-based, when there are
/// units), every property in its own type, every region as 0 and 1. Undefined values of real properties are NaN, of
/// discrete ones they stay. Names of codes and units are text arrays of the field data, "FACIES codes" with entries
/// like "1 Sand". Binary data is appended raw with 64-bit lengths. Memory: a few numbers for each pillar.
class VtuFormat : public GridFormat {
public:
    [[nodiscard]] std::string_view name() const override { return "vtu"; }
    [[nodiscard]] std::string_view description() const override { return "VTK unstructured grid"; }
    [[nodiscard]] std::span<const std::string_view> endings() const override;
    [[nodiscard]] bool can_read() const override { return false; }
    [[nodiscard]] bool can_write() const override { return true; }
    [[nodiscard]] bool recognises(std::string_view, const std::filesystem::path&) const override { return false; }
    WriteResult write(const GridModel& model, const std::filesystem::path& path,
                      const WriteOptions& options) const override;
};

} // namespace lodex
