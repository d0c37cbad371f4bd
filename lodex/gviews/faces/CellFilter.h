#pragma once

#include "lodex/volumes/model/GridModel.h"

#include <array>
#include <cstdint>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace lodex {

/// Cells by the value of a property; cells without a value are left out.
struct CellThreshold {
    std::string property;           ///< on cells; one that is not there leaves nothing out
    std::optional<double> min, max; ///< inclusive; an end that is not given is open
    std::set<std::int32_t> codes;   ///< of a discrete property; when there are some they count instead of min and max

    friend bool operator==(const CellThreshold&, const CellThreshold&) = default;
};

/// Which cells of a grid are drawn.
struct CellFilter {
    enum class Slices {
        Box,  ///< cells that lie in the ranges of every axis that has some
        Fence ///< cells that lie in the ranges of at least one axis; all cells when no axis has any
    };
    /// 0-based ranges along I, J, K, in any order; parts outside the grid are left out. None: the whole axis.
    std::array<std::vector<IndexRange>, 3> ranges;
    Slices slices = Slices::Box;
    std::optional<CellThreshold> threshold;
    std::string region; ///< only its cells; empty, or none of that name: all
    bool active_only = true;

    friend bool operator==(const CellFilter&, const CellFilter&) = default;
};

/// 0-based cell sections along I, J, K that shall stand out.
using SectionSets = std::array<std::set<std::int64_t>, 3>;

/// Reads the attribute "*sections" of a grid's style: a count, then so many triples of axis (1 to 3), flag and 0-based
/// section. Flag 1 paints the section; flag 0 takes the axis' former sections back. Reading ends where the text is
/// broken. Sections outside the grid are left out and counted in `outside`.
[[nodiscard]] SectionSets section_sets(std::string_view attribute, const GridSize& size,
                                       std::int64_t* outside = nullptr);

/// The cells of one grid that a filter lets through, made once and asked often. Refers to the model's arrays: they must
/// stay as they are while this lives.
class ShownCells {
public:
    ShownCells(const GridModel& model, const CellFilter& filter);
    /// The active cells of some sections; none when all sets are empty.
    ShownCells(const GridModel& model, const SectionSets& sections);
    ShownCells(ShownCells&&) = default;
    ShownCells& operator=(ShownCells&&) = default;
    ShownCells(const ShownCells&) = delete;
    ShownCells& operator=(const ShownCells&) = delete;

    [[nodiscard]] const GridSize& size() const { return size_; }
    /// 0-based indices within the grid.
    [[nodiscard]] bool shows(std::int64_t i, std::int64_t j, std::int64_t k) const
    {
        return flags_[static_cast<std::size_t>(i + size_[0] * (j + size_[1] * k))] != 0 && columns(j, k)[i] != 0;
    }
    [[nodiscard]] std::int64_t count() const;

    /// One flag per cell, 0 or 1, before the slices are taken into account.
    [[nodiscard]] std::span<const std::uint8_t> flags() const { return flags_; }
    /// What the slices say of the cells of row j, k: one flag for every I.
    [[nodiscard]] const std::uint8_t* columns(std::int64_t j, std::int64_t k) const
    {
        const bool in_j = along_j_[static_cast<std::size_t>(j)] != 0, in_k = along_k_[static_cast<std::size_t>(k)] != 0;
        if (fence_)
            return in_j || in_k ? all_.data() : along_i_.data();
        return in_j && in_k ? along_i_.data() : none_.data();
    }
    /// The I that columns() may show in row j, k, rising; empty together with `whole`: every I.
    [[nodiscard]] std::span<const std::int64_t> listed(std::int64_t j, std::int64_t k, bool& whole) const;

private:
    GridSize size_;
    bool fence_ = false;
    std::vector<std::uint8_t> own_; // flags of a filter that is more than the active flags
    std::span<const std::uint8_t> flags_;
    std::vector<std::uint8_t> along_i_, along_j_, along_k_, all_, none_;
    std::vector<std::int64_t> list_i_;

    void set_size(const GridModel& model);
    void finish();
};

} // namespace lodex
