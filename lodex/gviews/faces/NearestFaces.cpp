#include "FaceScanner.h"

#include <tbb/blocked_range.h>
#include <tbb/enumerable_thread_specific.h>
#include <tbb/parallel_for.h>
#include <tbb/parallel_sort.h>

#include <atomic>

namespace lodex {

using namespace face_scan;

namespace {

constexpr std::uint8_t reached = 1 << 7; // a hidden cell that can be looked into
constexpr std::size_t grain = 1 << 12;

/// Goes from the surface of a body through its hidden cells, all cells at one distance after the other. Which thread
/// comes to a cell first does not matter: the cells and faces at each distance are the same.
template <class Depth> class Search {
public:
    Search(const GridModel& model, const ShownCells& shown, const ShownCells& body, std::span<const Depth> depths)
        : shown_(shown), body_(body), pillars_(pillar_lines(model)), scanner_(model, shown, depths, pillars_),
          size_(model.size), marks_(static_cast<std::size_t>(model.cells()))
    {
    }

    FaceList run(const FaceList& surface, std::size_t most)
    {
        begin(surface);
        for (int distance = 1; !front_.empty() && (distance == 1 || faces_ < most); ++distance) {
            tbb::enumerable_thread_specific<Step> steps;
            tbb::parallel_for(tbb::blocked_range<std::size_t>(0, front_.size(), grain),
                              [&](const tbb::blocked_range<std::size_t>& range) {
                                  Step& step = steps.local();
                                  for (std::size_t n = range.begin(); n != range.end(); ++n)
                                      look_round(front_[n], step);
                              });
            std::size_t found = 0;
            front_.clear();
            for (const Step& step : steps) {
                found += step.found.size();
                front_.insert(front_.end(), step.next.begin(), step.next.end());
            }
            if (distance > 1 && faces_ + found > most)
                break;
            for (const Step& step : steps) {
                for (const auto& [cell, side] : step.found)
                    add(cell, side);
            }
            tbb::parallel_sort(front_.begin(), front_.end()); // neighbours in memory after one another
        }
        tbb::parallel_sort(cells_.begin(), cells_.end());
        FaceList list;
        list.faces = faces_;
        list.sides.reserve(cells_.size());
        for (const std::uint32_t cell : cells_)
            list.sides.push_back(marks_[cell]);
        list.cell = std::move(cells_);
        return list;
    }

private:
    /// What lies at the next distance.
    struct Step {
        std::vector<std::uint32_t> next;
        std::vector<std::pair<std::uint32_t, std::uint8_t>> found; // cell and side
    };

    void begin(const FaceList& surface)
    {
        const auto [ni, nj, nk] = size_;
        for (std::size_t n = 0; n < surface.cell.size(); ++n) {
            const std::int64_t cell = surface.cell[n];
            if (shown_.shows(cell % ni, cell / ni % nj, cell / (ni * nj))) {
                add(surface.cell[n], surface.sides[n]);
            } else {
                marks_[surface.cell[n]] = reached;
                front_.push_back(surface.cell[n]);
            }
        }
    }

    void add(std::uint32_t cell, std::uint8_t sides)
    {
        if (marks_[cell] == 0)
            cells_.push_back(cell);
        faces_ += static_cast<std::size_t>(std::popcount(static_cast<std::uint8_t>(sides & ~marks_[cell])));
        marks_[cell] |= sides;
    }

    void look_round(std::uint32_t from, Step& step)
    {
        const std::int64_t cell = from;
        const std::array<std::int64_t, 3> strides{1, size_[0], size_[0] * size_[1]};
        const std::array<std::int64_t, 3> index{cell % size_[0], cell / size_[0] % size_[1], cell / strides[2]};
        for (std::size_t axis = 0; axis < 3; ++axis) {
            for (const std::int64_t way : {-1, 1}) {
                std::array<std::int64_t, 3> other = index;
                other[axis] += way;
                if (other[axis] < 0 || other[axis] >= size_[axis])
                    continue;
                const auto neighbour = static_cast<std::uint32_t>(cell + way * strides[axis]);
                const std::atomic_ref mark(marks_[neighbour]);
                const std::uint8_t known = mark.load(std::memory_order_relaxed);
                if (known & reached)
                    continue;
                const auto [i, j, k] = other;
                if (!shown_.shows(i, j, k)) {
                    if (body_.shows(i, j, k) && !(mark.fetch_or(reached, std::memory_order_relaxed) & reached))
                        step.next.push_back(neighbour);
                    continue;
                }
                // Its side that looks back.
                const auto side = static_cast<CellSide>(2 * axis + (way < 0 ? 1 : 0));
                if (!(known & bit(side)) && scanner_.is_face(i, j, k, side))
                    step.found.emplace_back(neighbour, bit(side));
            }
        }
    }

    const ShownCells& shown_;
    const ShownCells& body_;
    std::vector<PillarLine> pillars_;
    FaceScanner<Depth> scanner_;
    GridSize size_;
    std::vector<std::uint8_t> marks_; // of hidden cells `reached`, of shown ones their sides
    std::vector<std::uint32_t> front_, cells_;
    std::size_t faces_ = 0;
};

} // namespace

FaceList nearest_faces(const GridModel& model, const ShownCells& shown, const ShownCells& body,
                       const FaceList& surface, std::size_t most)
{
    return model.zcorn.visit([&](auto depths) {
        using Depth = std::remove_const_t<typename decltype(depths)::value_type>;
        return Search<Depth>(model, shown, body, depths).run(surface, most);
    });
}

} // namespace lodex
