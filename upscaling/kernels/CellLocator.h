#pragma once

#include "CellGeometry.h"
#include "CellLocatorColumn.h"

#include <Lodex/utils/Progress.h>

#include <cstdint>
#include <vector>

namespace Kelvane {

/// Finds the active cell of a corner-point grid that holds a point.
///
/// A cell is the image of the unit cube under its trilinear map, faces included; of several cells that hold a point
/// (a shared face, an overlap) the one of the lowest index is found. A point closer to a face than 1e-8 of the cell
/// counts as on it, so that rounding neither opens gaps between neighbours nor lets both have a point. A cell has no
/// points where its top and base meet. Cells with corners that are not finite are left out.
///
/// The columns' bounding boxes stand in a pyramid of 2 x 2 boxes over (I, J), some 35 bytes a column; within a column
/// the cell is found by bisection of the depths at the point's areal place. Where pillars are parallel that place is
/// the same for all cells of the column; else it is found together with the cell, and a bound on how far pillars lead
/// it astray tells which columns need a closer look. Columns whose depths do not grow steadily are searched as far as
/// their largest step back asks for. Time to build is linear in the cells, memory in the columns.
///
/// The arrays of the grid outlive it and stay as they are. All functions are safe from several threads at once.
class CellLocator {
public:
    /// Throws Cancelled.
    explicit CellLocator(const CornerPointView& grid, const Lodex::ProgressCheck& progress = {});

    /// A place in a grid as seen from above.
    struct ArealPlace {
        std::int64_t column = -1; ///< i + ni * j; -1: none
        double a = 0, b = 0;      ///< coordinates within it along I and J, 0 to 1
    };

    class Cursor;

    /// 0-based index, I fastest; -1 when no active cell holds the point.
    [[nodiscard]] std::int64_t find(const Point3& point) const;
    /// The same among the cells with first_k <= k <= last_k.
    [[nodiscard]] std::int64_t find(const Point3& point, std::int64_t first_k, std::int64_t last_k) const;

    /// The column whose section at the depth of the point (at the nearest depth of any active cell of the grid when the
    /// point lies above or below all of them) holds its x and y; the lowest one on shared edges. Only columns with an
    /// active cell.
    [[nodiscard]] ArealPlace find_column(const Point3& point) const;

    [[nodiscard]] const GridColumns& columns() const { return columns_; }

private:
    // Lowest and highest x and y against the origin; rounded outwards.
    struct Box {
        float x0 = 1, x1 = 0, y0 = 1, y1 = 0;

        [[nodiscard]] bool holds(double x, double y) const { return x >= x0 && x <= x1 && y >= y0 && y <= y1; }
        [[nodiscard]] bool meets(const Box& other) const
        {
            return x0 <= other.x1 && other.x0 <= x1 && y0 <= other.y1 && other.y0 <= y1;
        }
        [[nodiscard]] bool empty() const { return !(x0 <= x1); }
        void add(const Box& other);
    };
    struct Level {
        std::int64_t ni = 0, nj = 0;
        std::vector<Box> boxes;
    };
    struct ColumnNote {
        /// How far the place of a point of a cell may lie from where the section at the point's depth has it; 0: the
        /// section tells it to rounding.
        float margin = 0;
        float slack = 0;      ///< largest step back of the depths along K, at any of the pillars
        bool upwards = false; ///< depths shrink along K; the slack is that of the other direction then
    };
    struct Candidate;

    [[nodiscard]] Box make_box(double x0, double x1, double y0, double y1) const;
    void note_column(std::int64_t index, ColumnNote& note, double& lowest, double& highest) const;
    void build_boxes(const Lodex::ProgressCheck& progress);
    void collect(const Box& area, std::vector<Candidate>& candidates) const;
    [[nodiscard]] std::int64_t find_in(const Candidate& candidate, const Point3& point, std::int64_t first_k,
                                       std::int64_t last_k) const;

    GridSize size_;
    std::span<const std::uint8_t> active_;
    GridColumns columns_;
    std::vector<ColumnNote> notes_;
    std::vector<Level> levels_; // the columns themselves first, one box last
    double origin_x_ = 0, origin_y_ = 0;
    double lowest_ = 0, highest_ = 0; // depths of active cells
    double reach_ = 0;                // half the side of the area whose columns a cursor keeps at hand
};

/// Finds many points that lie near each other: keeps the columns near the last point at hand. Answers are those of the
/// locator. For one thread.
class CellLocator::Cursor {
public:
    explicit Cursor(const CellLocator& locator, bool many = true);
    ~Cursor();
    Cursor(const Cursor&) = delete;
    Cursor& operator=(const Cursor&) = delete;

    [[nodiscard]] std::int64_t find(const Point3& point);
    [[nodiscard]] std::int64_t find(const Point3& point, std::int64_t first_k, std::int64_t last_k);
    [[nodiscard]] ArealPlace find_column(const Point3& point);

private:
    void go_to(double x, double y);

    const CellLocator& locator_;
    double reach_;
    Box area_;
    std::vector<Candidate> candidates_;
};

} // namespace Kelvane
