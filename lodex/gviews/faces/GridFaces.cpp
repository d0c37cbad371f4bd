#include "GridFaces.h"

#include "FaceScanner.h"

#include <tbb/blocked_range.h>
#include <tbb/enumerable_thread_specific.h>
#include <tbb/parallel_for.h>

#include <algorithm>
#include <atomic>
#include <numeric>

namespace lodex {

using namespace face_scan;

namespace {

constexpr std::int64_t cells_per_block = 1 << 14;
constexpr std::size_t entries_per_task = 1 << 12;
constexpr std::int64_t sample = 16; // one row of so many tells how many faces there are

template <class Depth>
std::optional<FaceList> scan(const GridModel& model, const ShownCells& shown, std::span<const Depth> depths,
                             std::size_t most, std::int64_t stride = 1)
{
    const std::vector<PillarLine> pillars = pillar_lines(model);
    const FaceScanner<Depth> scanner(model, shown, depths, pillars);
    const std::int64_t rows = (model.size[1] * model.size[2] + stride - 1) / stride;
    const std::int64_t rows_per_block = std::max<std::int64_t>(1, cells_per_block / model.size[0]);
    const std::int64_t blocks = (rows + rows_per_block - 1) / rows_per_block;
    std::vector<FaceList> parts(static_cast<std::size_t>(blocks));
    std::atomic<std::size_t> found = 0;
    tbb::enumerable_thread_specific<typename FaceScanner<Depth>::Scratch> scratches(model.size[0]);
    tbb::parallel_for(tbb::blocked_range<std::int64_t>(0, blocks, 1),
                      [&](const tbb::blocked_range<std::int64_t>& range) {
                          auto& scratch = scratches.local();
                          for (std::int64_t block = range.begin(); block != range.end(); ++block) {
                              if (found.load(std::memory_order_relaxed) > most)
                                  return;
                              const std::int64_t last = std::min(rows, (block + 1) * rows_per_block);
                              FaceList& part = parts[static_cast<std::size_t>(block)];
                              for (std::int64_t r = block * rows_per_block; r < last; ++r)
                                  scanner.scan_row(r * stride % model.size[1], r * stride / model.size[1], scratch,
                                                   part);
                              found += part.faces;
                          }
                      });
    if (found > most)
        return std::nullopt;
    std::vector<std::size_t> first(parts.size() + 1, 0);
    for (std::size_t n = 0; n < parts.size(); ++n)
        first[n + 1] = first[n] + parts[n].cell.size();
    FaceList list;
    list.faces = found;
    list.cell.resize(first.back());
    list.sides.resize(first.back());
    tbb::parallel_for(std::size_t{0}, parts.size(), [&](std::size_t n) {
        std::ranges::copy(parts[n].cell, list.cell.begin() + static_cast<std::ptrdiff_t>(first[n]));
        std::ranges::copy(parts[n].sides, list.sides.begin() + static_cast<std::ptrdiff_t>(first[n]));
        parts[n] = {};
    });
    return list;
}

} // namespace

Point3 drawing_origin(const GridModel& model)
{
    std::array<double, 2> least{HUGE_VAL, HUGE_VAL}, greatest{-HUGE_VAL, -HUGE_VAL};
    model.coord.visit([&](auto coord) {
        for (std::size_t n = 0; n + 5 < coord.size(); n += 6) {
            for (std::size_t axis = 0; axis < 2; ++axis) {
                const auto number = static_cast<double>(coord[n + axis]);
                if (!std::isfinite(number))
                    continue;
                least[axis] = std::min(least[axis], number);
                greatest[axis] = std::max(greatest[axis], number);
            }
        }
    });
    Point3 origin{};
    for (std::size_t axis = 0; axis < 2; ++axis)
        origin[axis] = greatest[axis] >= least[axis] ? std::round((least[axis] + greatest[axis]) / 2) : 0;
    model.zcorn.visit([&](auto depths) {
        const auto finite = std::ranges::find_if(depths, [](auto depth) { return std::isfinite(depth); });
        if (finite != depths.end())
            origin[2] = std::round(static_cast<double>(*finite));
    });
    return origin;
}

std::optional<FaceList> list_visible_faces(const GridModel& model, const ShownCells& shown, std::size_t most)
{
    return model.zcorn.visit([&](auto depths) { return scan(model, shown, std::span(depths), most); });
}

std::size_t guess_visible_faces(const GridModel& model, const ShownCells& shown)
{
    // A stride that shares no factor with the rows of a layer meets all of them in turn.
    std::int64_t stride = sample;
    while (std::gcd(stride, model.size[1]) != 1)
        ++stride;
    return model.zcorn.visit([&](auto depths) {
        return scan(model, shown, std::span(depths), std::numeric_limits<std::size_t>::max(), stride)->faces *
               static_cast<std::size_t>(stride);
    });
}

FaceSet faces_of(const GridModel& model, const FaceList& list)
{
    FaceSet faces;
    faces.origin = drawing_origin(model);
    const std::size_t tasks = (list.cell.size() + entries_per_task - 1) / entries_per_task;
    std::vector<std::size_t> first(tasks + 1, 0);
    for (std::size_t n = 0; n < list.sides.size(); ++n)
        first[n / entries_per_task + 1] += static_cast<std::size_t>(std::popcount(list.sides[n]));
    for (std::size_t task = 0; task < tasks; ++task)
        first[task + 1] += first[task];
    faces.points.resize(12 * first.back());
    faces.cell.resize(first.back());
    faces.side.resize(first.back());
    const std::vector<PillarLine> pillars = pillar_lines(model);
    const auto [ni, nj, nk] = model.size;
    model.zcorn.visit([&, ni = ni, nj = nj](auto depths) {
        using Depth = std::remove_const_t<typename decltype(depths)::value_type>;
        const ShownCells all(model, CellFilter{.active_only = false});
        const FaceScanner<Depth> scanner(model, all, depths, pillars);
        tbb::parallel_for(std::size_t{0}, tasks, [&](std::size_t task) {
            std::size_t face = first[task];
            const std::size_t end = std::min((task + 1) * entries_per_task, list.cell.size());
            for (std::size_t n = task * entries_per_task; n < end; ++n) {
                const std::int64_t cell = list.cell[n];
                scanner.write(cell % ni, cell / ni % nj, cell / (ni * nj), list.sides[n], faces.origin,
                              faces.points.data() + 12 * face);
                for (int side = 0; side < 6; ++side) {
                    if (!(list.sides[n] >> side & 1))
                        continue;
                    faces.cell[face] = list.cell[n];
                    faces.side[face++] = static_cast<std::uint8_t>(side);
                }
            }
        });
    });
    return faces;
}

FaceSet visible_faces(const GridModel& model, const ShownCells& shown)
{
    return faces_of(model, list_visible_faces(model, shown).value());
}

} // namespace lodex
