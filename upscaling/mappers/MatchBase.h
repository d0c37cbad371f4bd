#pragma once

#include "upscaling/kernels/CellLocator.h"
#include "upscaling/kernels/FaultBlocks.h"
#include "upscaling/kernels/ParallelBlocks.h"

#include <Lodex/volumes/GridObjCellMapper.h>
#include <Lodex/volumes/SGrid.h>

#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace Kelvane {

/// The arrays of a grid for operators that know no grid. Valid as long as the grid is not changed.
[[nodiscard]] CornerPointView view_of(const Lodex::SGrid& grid);

/// Share of a coarse cell's volume that its fault block must hold for a clear majority.
inline constexpr double clear_majority = 2.0 / 3;

/// What all matched grids have in common: which cells take part, lists of fine cells in compressed rows, fault blocks,
/// warnings with counts, and the rules that a sample obeys whatever the mapper.
///
/// A derived class fills the mapping in its constructor by find_owners() or set_boxes(), then calls finish().
class MatchBase : public Lodex::MatchedGrids {
public:
    [[nodiscard]] const Lodex::CellMapping& mapping() const final { return mapping_; }
    [[nodiscard]] const std::vector<std::string>& warnings() const final { return warnings_; }
    /// -1 for all samples of a coarse cell that does not take part.
    void sample(std::int64_t coarse_cell, const std::array<int, 3>& n, std::span<std::int64_t> fine_cells) const final;

protected:
    /// Throws std::runtime_error when a grid or flags are missing or flags have the wrong size.
    explicit MatchBase(const Lodex::MappingRequest& request);

    /// The fine cells of the samples, any flags aside; -1 for none.
    virtual void find_samples(std::int64_t coarse_cell, const std::array<int, 3>& n,
                              std::span<std::int64_t> fine_cells) const = 0;

    /// Calls find(fine cell, its column, k) -> coarse cell or -1 for all fine cells that take part and makes the rows.
    /// `make_find` makes one `find` for a run of columns, for one thread. Throws std::runtime_error when none of the
    /// fine cells finds a coarse cell, ending in `reason`; Cancelled.
    template <class MakeFind>
    void find_owners(const MakeFind& make_find, const std::string& reason, const Lodex::ProgressCheck& progress);
    /// Boxes that fit both grids; an index without any fine index has an empty range, last = first - 1.
    void set_boxes(Lodex::IndexRelation boxes);
    /// Warnings with counts, then fault management. Throws Cancelled.
    void finish(bool fault_management, const Lodex::ProgressCheck& progress);

    void warn(std::string text) { warnings_.push_back(std::move(text)); }

    [[nodiscard]] const Lodex::SGrid& fine() const { return *fine_; }
    [[nodiscard]] const Lodex::SGrid& coarse() const { return *coarse_; }
    [[nodiscard]] const CornerPointView& fine_view() const { return fine_view_; }
    [[nodiscard]] const CornerPointView& coarse_view() const { return coarse_view_; }
    /// Made at the first call.
    [[nodiscard]] const CellLocator& fine_locator() const;
    /// Image of the centre of a sample under the coarse cell's trilinear map; `local` takes its local coordinates.
    [[nodiscard]] Point3 sample_centre(const GridColumn& column, std::int64_t k, const std::array<int, 3>& n,
                                       std::int64_t sample, std::array<double, 3>& local) const;
    [[nodiscard]] const GridColumns& coarse_columns() const { return coarse_columns_; }
    /// Calls visit(sample) for all samples, those of one column after each other: searches then stay where they are.
    template <class Visit> static void for_samples(const std::array<int, 3>& n, const Visit& visit)
    {
        const std::int64_t columns = std::int64_t{n[0]} * n[1];
        for (std::int64_t column = 0; column < columns; ++column)
            for (std::int64_t k = 0; k < n[2]; ++k)
                visit(column + columns * k);
    }

private:
    void make_rows(std::vector<std::int64_t> owners, const std::string& reason, const Lodex::ProgressCheck& progress);
    template <class Visit> void visit_members(std::int64_t coarse_cell, const Visit& visit) const;
    void choose_blocks(const Lodex::ProgressCheck& progress);
    void drop_other_blocks();
    void count_unmatched(const Lodex::ProgressCheck& progress);

    const Lodex::SGrid* fine_;
    const Lodex::SGrid* coarse_;
    CornerPointView fine_view_, coarse_view_;
    GridColumns fine_columns_, coarse_columns_;
    std::vector<std::uint8_t> own_fine_flags_, own_coarse_flags_;
    std::span<const std::uint8_t> fine_flags_, coarse_flags_;
    Lodex::CellMapping mapping_;
    std::vector<std::string> warnings_;
    FaultBlocks blocks_;
    std::vector<std::int32_t> block_of_coarse_; // empty: faults do not matter; -1: any block
    mutable std::once_flag locator_made_;
    mutable std::unique_ptr<CellLocator> locator_;
};

template <class MakeFind>
void MatchBase::find_owners(const MakeFind& make_find, const std::string& reason, const Lodex::ProgressCheck& progress)
{
    std::vector<std::int64_t> owners(fine_flags_.size(), -1);
    constexpr std::int64_t columns_a_block = 64;
    const std::int64_t count = fine_columns_.count(), layers = fine_columns_.layers();
    for_blocks((count + columns_a_block - 1) / columns_a_block, partial_progress(progress, 0, 0.9),
               [&](std::int64_t block) {
                   auto find = make_find();
                   const std::int64_t end = std::min(count, (block + 1) * columns_a_block);
                   for (std::int64_t index = block * columns_a_block; index < end; ++index) {
                       const GridColumn column = fine_columns_.column(index);
                       for (std::int64_t k = 0; k < layers; ++k) {
                           const auto cell = static_cast<std::size_t>(index + count * k);
                           if (fine_flags_[cell])
                               owners[cell] = find(fine_columns_, column, k);
                       }
                   }
               });
    make_rows(std::move(owners), reason, partial_progress(progress, 0.9, 1));
}

} // namespace Kelvane
