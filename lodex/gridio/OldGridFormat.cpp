#include <lodex/gridio/OldGridFormat.h>

#include <lodex/gridio/InitFormat.h>
#include <lodex/gridio/RecordGrid.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <limits>

namespace lodex {

namespace {

const GridFormatRegistrar<OldGridFormat> registrar;

constexpr std::array<std::string_view, 2> file_endings = {".grid", ".fgrid"};

using namespace records;

constexpr std::size_t corner_numbers = 24; ///< x, y, depth of eight corners, I fastest, top before bottom
constexpr std::size_t cell_items = 7;      ///< i, j, k, number, active flag, host cell, coarsening group

class OldGridReader {
public:
    OldGridReader(const Source& source, const ReadOptions& options, ProgressCheck progress, MemoryBudget& budget,
                  MessageLog& log)
        : options_(options), budget_(budget), log_(log), reader_(source.open(std::move(progress)))
    {
        budget_.add_file(reader_->file_bytes());
    }

    void read(GridModel& model)
    {
        model_ = &model;
        for (;;) {
            while (read_usual_cell()) {
            }
            const auto header = reader_->next();
            if (!header) {
                break;
            }
            read_record(*header);
        }
        reader_->check_unchanged();
        if (!size_known_) {
            throw FileError(reader_->file(), 0, "ends before DIMENS");
        }
        if (cell_) {
            throw FileError(reader_->file(), 0, "ends before the CORNERS of cell " + cell_text(*cell_));
        }
        if (listed_ == 0) {
            throw FileError(reader_->file(), 0, "lists no cells");
        }
        if (!options_.properties_only) {
            fill_pillars();
            fill_cells();
            model.coord = std::move(coord_);
            model.zcorn = std::move(zcorn_);
        }
        tell();
    }

private:
    static std::string cell_text(const GridSize& cell)
    {
        return '(' + std::to_string(cell[0] + 1) + ", " + std::to_string(cell[1] + 1) + ", "
               + std::to_string(cell[2] + 1) + ")";
    }

    void read_record(const Header& header)
    {
        if (cell_ && header.name != "CORNERS") {
            reader_->fail("stands where the CORNERS of cell " + cell_text(*cell_) + " are expected");
        }
        if (header.name == "DIMENS" && listed_ > 0) {
            refinements_.begin(); // without an "LGR" before it
        }
        if (refinements_.take(header)) {
            return;
        }
        if (header.name == "COORDS") {
            read_cell(header);
        } else if (header.name == "CORNERS") {
            read_corners(header);
        } else if (header.name == "DIMENS") {
            read_size(header);
        } else if (header.name == "RADIAL" && header.type == Type::String && header.count == 1) {
            if (reader_->read_strings().front().starts_with('T')) {
                reader_->fail("states radial coordinates, expected Cartesian ones");
            }
        } else if (!read_frame(*reader_, header, model_->frame, log_)) {
            passed_.add(header);
        }
    }

    void read_size(const Header& header)
    {
        if (size_known_) {
            reader_->fail("occurs twice");
        }
        constexpr std::size_t least = 3;
        if (header.type != Type::Integer || header.count < least) {
            reader_->fail("is " + std::to_string(header.count) + " values of type " + header.type_name
                          + ", expected 3 of type INTE");
        }
        const auto items = reader_->read_integers(least);
        model_->size = checked_size(*reader_, items[0], items[1], items[2]);
        check_wanted_size(*reader_, model_->size, options_);
        size_known_ = true;
        const auto cells = static_cast<std::uint64_t>(model_->cells());
        const auto pillars = static_cast<std::uint64_t>(model_->pillars());
        budget_.claim(*reader_, 2 * cells);
        model_->active.assign(static_cast<std::size_t>(cells), 0);
        seen_.assign(static_cast<std::size_t>(cells), 0);
        if (!options_.properties_only) {
            budget_.claim(*reader_, cells * 8 * sizeof(float) + pillars * (6 * sizeof(float) + 1));
            zcorn_ = reserved_array<float>(static_cast<std::size_t>(8 * cells));
            zcorn_.resize(static_cast<std::size_t>(8 * cells));
            coord_.assign(static_cast<std::size_t>(6 * pillars), 0.0F);
            pillar_known_.assign(static_cast<std::size_t>(pillars), 0);
        }
    }

    void read_cell(const Header& header)
    {
        if (!size_known_) {
            reader_->fail("stands before DIMENS");
        }
        constexpr std::size_t least = 3;
        if (header.type != Type::Integer || header.count < least || header.count > cell_items) {
            reader_->fail("is " + std::to_string(header.count) + " values of type " + header.type_name
                          + ", expected 4, 5 or 7 of type INTE");
        }
        std::array<std::int32_t, cell_items> items{};
        const std::size_t count = reader_->read(std::span<std::int32_t>(items));
        usual_.emplace("COORDS", Type::Integer, count);
        begin_cell(items, count);
    }

    /// A cell as most are: COORDS and CORNERS like those of the cell before, one behind the other. False when something
    /// else comes, which the general way reads.
    bool read_usual_cell()
    {
        if (!usual_ || refinements_.inside() || cell_) {
            return false;
        }
        std::array<std::int32_t, cell_items> items{};
        if (!reader_->read_usual(*usual_, std::span<std::int32_t>(items).first(usual_->count()))) {
            return false;
        }
        begin_cell(items, usual_->count());
        std::array<float, corner_numbers> numbers;
        if (!reader_->read_usual(usual_corners_, std::span<float>(numbers))) {
            return false;
        }
        put_corners(numbers);
        return true;
    }

    void begin_cell(const std::array<std::int32_t, cell_items>& items, std::size_t count)
    {
        GridSize cell{};
        for (std::size_t axis = 0; axis < 3; ++axis) {
            cell[axis] = std::int64_t{items[axis]} - 1;
            if (cell[axis] < 0 || cell[axis] >= model_->size[axis]) {
                reader_->fail("is of cell " + cell_text(cell) + " of a grid of " + size_text(model_->size) + " cells");
            }
        }
        index_ = static_cast<std::size_t>(model_->cell_index(cell[0], cell[1], cell[2]));
        if (seen_[index_] != 0) {
            reader_->fail("is of cell " + cell_text(cell) + ", which occurred before");
        }
        seen_[index_] = 1;
        ++listed_;
        constexpr std::size_t flag_item = 4;
        model_->active[index_] = static_cast<std::uint8_t>(count <= flag_item || items[flag_item] != 0);
        cell_ = cell;
    }

    void read_corners(const Header& header)
    {
        if (!cell_) {
            reader_->fail("stands without COORDS before it");
        }
        if (header.type != Type::Real || header.count != corner_numbers) {
            reader_->fail("is " + std::to_string(header.count) + " values of type " + header.type_name
                          + ", expected 24 of type REAL");
        }
        std::array<float, corner_numbers> numbers;
        reader_->read(std::span<float>(numbers));
        put_corners(numbers);
    }

    void put_corners(const std::array<float, corner_numbers>& numbers)
    {
        const GridSize cell = *cell_;
        cell_.reset();
        if (options_.properties_only) {
            return;
        }
        for (std::size_t corner = 0; corner < 8; ++corner) {
            const float* const point = numbers.data() + 3 * corner;
            if (!std::isfinite(point[0]) || !std::isfinite(point[1]) || !std::isfinite(point[2])) {
                reader_->fail("corner " + std::to_string(corner + 1) + " of cell " + cell_text(cell)
                              + " is not finite");
            }
            zcorn_[depth_index(cell, corner)] = point[2];
            add_point(pillar_index(cell, corner), point);
        }
    }

    [[nodiscard]] std::size_t depth_index(const GridSize& cell, std::size_t corner) const
    {
        const auto [ni, nj, nk] = model_->size;
        const auto side = [&](std::size_t bit) { return static_cast<std::int64_t>(corner >> bit & 1); };
        return static_cast<std::size_t>((2 * cell[2] + side(2)) * 4 * nj * ni + (2 * cell[1] + side(1)) * 2 * ni
                                        + 2 * cell[0] + side(0));
    }

    [[nodiscard]] std::size_t pillar_index(const GridSize& cell, std::size_t corner) const
    {
        return static_cast<std::size_t>(cell[0] + static_cast<std::int64_t>(corner & 1)
                                        + (model_->size[0] + 1)
                                              * (cell[1] + static_cast<std::int64_t>(corner >> 1 & 1)));
    }

    /// Lets the pillar reach to the point; the point, or the end that it replaces, has to stand on the line.
    void add_point(std::size_t index, const float* point)
    {
        float* const top = coord_.data() + 6 * index;
        float* const bottom = top + 3;
        if (pillar_known_[index] == 0) {
            pillar_known_[index] = 1;
            std::copy_n(point, 3, top);
            std::copy_n(point, 3, bottom);
            return;
        }
        std::array<float, 3> inner;
        std::copy_n(point, 3, inner.begin());
        if (point[2] < top[2]) {
            std::copy_n(top, 3, inner.begin());
            std::copy_n(point, 3, top);
        } else if (point[2] > bottom[2]) {
            std::copy_n(bottom, 3, inner.begin());
            std::copy_n(point, 3, bottom);
        }
        const double height = double{bottom[2]} - double{top[2]};
        const double part = height > 0 ? (double{inner[2]} - double{top[2]}) / height : 0.0;
        double off = 0;
        double size = 0;
        for (std::size_t axis = 0; axis < 2; ++axis) {
            off = std::max(off, std::fabs(double{top[axis]} + part * (double{bottom[axis]} - double{top[axis]})
                                          - double{inner[axis]}));
            size = std::max(size, std::fabs(double{inner[axis]}));
        }
        // Numbers of 32 bits, and a millimetre or so.
        constexpr double rounding = 8 * std::numeric_limits<float>::epsilon();
        constexpr double least = 1e-3;
        if (off > least + rounding * size) {
            ++points_off_;
            largest_off_ = std::max(largest_off_, off);
        }
    }

    /// Pillars without a listed cell get the place of the nearest one that has: no cell of theirs has a volume.
    void fill_pillars()
    {
        const std::int64_t columns = model_->size[0] + 1;
        const std::int64_t rows = model_->size[1] + 1;
        std::vector<std::uint8_t> row_known(static_cast<std::size_t>(rows), 0);
        const auto copy = [this](std::int64_t from, std::int64_t to, std::int64_t count) {
            std::copy_n(coord_.begin() + 6 * from, 6 * count, coord_.begin() + 6 * to);
        };
        const auto spread = [](std::int64_t count, auto known, auto fill) {
            std::int64_t before = -1;
            for (std::int64_t i = 0; i < count; ++i) {
                if (!known(i)) {
                    continue;
                }
                for (std::int64_t gap = before + 1; gap < i; ++gap) {
                    fill(gap, before >= 0 && gap - before <= i - gap ? before : i);
                }
                before = i;
            }
            for (std::int64_t gap = before + 1; gap < count && before >= 0; ++gap) {
                fill(gap, before);
            }
            return before >= 0;
        };
        for (std::int64_t row = 0; row < rows; ++row) {
            const std::int64_t first = row * columns;
            const bool any = spread(
                columns, [&](std::int64_t i) { return pillar_known_[static_cast<std::size_t>(first + i)] != 0; },
                [&](std::int64_t to, std::int64_t from) { copy(first + from, first + to, 1); });
            row_known[static_cast<std::size_t>(row)] = static_cast<std::uint8_t>(any);
        }
        spread(
            rows, [&](std::int64_t row) { return row_known[static_cast<std::size_t>(row)] != 0; },
            [&](std::int64_t to, std::int64_t from) { copy(from * columns, to * columns, columns); });
        for (std::size_t pillar = 0; pillar < pillar_known_.size(); ++pillar) {
            float* const top = coord_.data() + 6 * pillar;
            if (top[2] == top[5]) {
                top[5] = top[2] + 1; // some length, so that the line has a direction
            }
        }
    }

    /// Cells that the file does not list fill what is between the listed ones above and below, or have no thickness.
    void fill_cells()
    {
        if (listed_ == seen_.size()) {
            return;
        }
        const auto [ni, nj, nk] = model_->size;
        for (std::int64_t j = 0; j < nj; ++j) {
            for (std::int64_t i = 0; i < ni; ++i) {
                std::int64_t k = 0;
                while (k < nk) {
                    if (listed(i, j, k)) {
                        ++k;
                        continue;
                    }
                    std::int64_t end = k;
                    while (end < nk && !listed(i, j, end)) {
                        ++end;
                    }
                    for (std::size_t corner = 0; corner < 4; ++corner) {
                        fill_run({i, j, k}, end, corner);
                    }
                    k = end;
                }
            }
        }
    }

    [[nodiscard]] bool listed(std::int64_t i, std::int64_t j, std::int64_t k) const
    {
        return seen_[static_cast<std::size_t>(model_->cell_index(i, j, k))] != 0;
    }

    void fill_run(const GridSize& first, std::int64_t end, std::size_t corner)
    {
        const auto depth = [&](std::int64_t k, std::size_t side) -> float& {
            return zcorn_[depth_index({first[0], first[1], k}, corner + 4 * side)];
        };
        const bool above = first[2] > 0;
        const bool below = end < model_->size[2];
        const float pillar_top = coord_[6 * pillar_index(first, corner) + 2];
        const double from = above ? depth(first[2] - 1, 1) : below ? depth(end, 0) : pillar_top;
        const double to = below ? double{depth(end, 0)} : from;
        const auto count = static_cast<double>(end - first[2]);
        for (std::int64_t k = first[2]; k < end; ++k) {
            const auto step = static_cast<double>(k - first[2]);
            depth(k, 0) = static_cast<float>(from + (to - from) * step / count);
            depth(k, 1) = static_cast<float>(from + (to - from) * (step + 1) / count);
        }
    }

    void tell()
    {
        const auto add = [this](Message::Level level, const std::string& kind, const std::string& text) {
            log_.add(kind, {level, to_utf8(reader_->file()), 0, text});
        };
        if (const auto missing = seen_.size() - listed_; missing > 0) {
            add(Message::Level::Info, "cells not listed",
                std::to_string(missing) + " of " + std::to_string(seen_.size())
                    + " cells are not listed: they are inactive");
        }
        if (points_off_ > 0) {
            char text[32];
            std::snprintf(text, sizeof text, "%.3g", largest_off_);
            add(Message::Level::Warning, "pillars",
                std::to_string(points_off_)
                    + " corner points do not stand on a straight pillar; the largest distance is " + text
                    + "; the pillars run from the highest to the deepest point");
        }
        refinements_.tell(log_, reader_->file());
        passed_.tell(log_, reader_->file(), "not part of the grid");
    }

    const ReadOptions& options_;
    MemoryBudget& budget_;
    MessageLog& log_;
    std::unique_ptr<Reader> reader_;
    GridModel* model_ = nullptr;
    bool size_known_ = false;
    std::optional<UsualArray> usual_; ///< COORDS as the last ones were
    const UsualArray usual_corners_{"CORNERS", Type::Real, corner_numbers};
    std::optional<GridSize> cell_; ///< whose corners come next, 0-based
    std::size_t index_ = 0;
    std::size_t listed_ = 0;
    std::vector<std::uint8_t> seen_;
    std::vector<std::uint8_t> pillar_known_;
    std::vector<float> coord_;
    std::vector<float> zcorn_;
    std::uint64_t points_off_ = 0;
    double largest_off_ = 0;
    Refinements refinements_;
    PassedOver passed_;
};

} // namespace

namespace old_grid {

ReadResult read(const Source& grid, const std::optional<Source>& init, const ReadOptions& options)
{
    return read_with_init(grid, init, options,
                          [&](ProgressCheck progress, MemoryBudget& budget, MessageLog& log, GridModel& model) {
                              OldGridReader(grid, options, std::move(progress), budget, log).read(model);
                              return false;
                          });
}

} // namespace old_grid

std::span<const std::string_view> OldGridFormat::endings() const
{
    return file_endings;
}

bool OldGridFormat::recognises(std::string_view head, const std::filesystem::path&) const
{
    bool size = false;
    bool cells = false;
    for (const Header& header : peek_headers(head)) {
        if (header.name == "FILEHEAD" || header.name == "GRIDHEAD" || header.name == "SPECGRID") {
            return false;
        }
        size = size || header.name == "DIMENS";
        cells = cells || header.name == "COORDS";
    }
    return size && cells;
}

ReadResult OldGridFormat::read(const std::filesystem::path& path, const ReadOptions& options) const
{
    const Source grid{path, {}};
    const auto init = find_init(path, grid.open()->formatted());
    return old_grid::read(grid, init ? std::optional(Source{*init, {}}) : std::nullopt, options);
}

} // namespace lodex
