#pragma once

#include "ParallelBlocks.h"
#include "VolumeKernel.h"

#include <tbb/enumerable_thread_specific.h>

#include <algorithm>
#include <cstdint>
#include <span>
#include <vector>

namespace lodex {

/// Division of a grid into boxes of some ten thousand cells, the same for every number of threads.
class GridBlocks {
public:
    struct Box {
        IndexRange i, j, k;
        [[nodiscard]] std::int64_t width() const { return i.last - i.first + 1; }
    };

    explicit GridBlocks(const GridSize& size)
        : GridBlocks(size, default_steps(size))
    {
    }
    GridBlocks(const GridSize& size, const GridSize& steps)
        : size_(size)
        , step_(steps)
    {
        for (std::size_t axis = 0; axis < 3; ++axis) {
            step_[axis] = std::clamp<std::int64_t>(step_[axis], 1, std::max<std::int64_t>(size[axis], 1));
            counts_[axis] = (size[axis] + step_[axis] - 1) / step_[axis];
        }
    }

    [[nodiscard]] std::int64_t count() const { return counts_[0] * counts_[1] * counts_[2]; }

    [[nodiscard]] Box box(std::int64_t block) const
    {
        return {range(0, block % counts_[0]), range(1, block / counts_[0] % counts_[1]),
                range(2, block / (counts_[0] * counts_[1]))};
    }

private:
    [[nodiscard]] static GridSize default_steps(const GridSize& size)
    {
        const std::int64_t i = std::clamp<std::int64_t>(size[0], 1, 4096);
        const std::int64_t j = std::clamp<std::int64_t>(8192 / i, 1, std::max<std::int64_t>(size[1], 1));
        return {i, j, 65536 / (i * j)};
    }
    [[nodiscard]] IndexRange range(std::size_t axis, std::int64_t n) const
    {
        return {n * step_[axis], std::min((n + 1) * step_[axis], size_[axis]) - 1};
    }

    GridSize size_;
    GridSize step_{};
    GridSize counts_{};
};

/// Signed volumes of the cells of a box, row by row: calls work(j, k, volumes) with J in the outer and K in the inner
/// loop, so that the pillars of a row are worked out once.
class BoxVolumes {
public:
    template <class Work> void run(const GridModel& model, const GridBlocks::Box& box, const Work& work)
    {
        const std::int64_t width = box.width();
        const std::int64_t pillars = model.size[0] + 1;
        volumes_.resize(static_cast<std::size_t>(width));
        front_.load(model.coord, box.i.first + pillars * box.j.first, width + 1);
        model.zcorn.visit([&](auto depths) {
            for (std::int64_t j = box.j.first; j <= box.j.last; ++j) {
                back_.swap(front_);
                front_.load(model.coord, box.i.first + pillars * (j + 1), width + 1);
                for (std::int64_t k = box.k.first; k <= box.k.last; ++k) {
                    const auto row = [&](int b, int c) {
                        return depths.data() + depth_offset(model.size, box.i.first, j, k, b, c);
                    };
                    volume_row(width, back_, front_, row(0, 0), row(1, 0), row(0, 1), row(1, 1), volumes_.data());
                    work(j, k, std::span<double>(volumes_));
                }
            }
        });
    }

private:
    PillarRow back_, front_;
    std::vector<double> volumes_;
};

/// Calls work(block, box, j, k, volumes) for all rows of all blocks; see for_blocks() for threads and progress.
template <class Work>
void for_volume_rows(const GridModel& model, const GridBlocks& blocks, const ProgressCheck& progress, const Work& work)
{
    tbb::enumerable_thread_specific<BoxVolumes> scratch;
    for_blocks(blocks.count(), progress, [&](std::int64_t block) {
        const GridBlocks::Box box = blocks.box(block);
        scratch.local().run(model, box, [&](std::int64_t j, std::int64_t k, std::span<double> volumes) {
            work(block, box, j, k, volumes);
        });
    });
}

} // namespace lodex
