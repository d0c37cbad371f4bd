#include "Create.h"

#include "CellGeometry.h"
#include "LargeArray.h"
#include "ParallelBlocks.h"
#include "Random.h"
#include "VolumeKernel.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

namespace lodex {

namespace {

void check_size(const GridSize& size)
{
    for (const std::int64_t n : size)
        if (n < 1)
            throw ModelError(fmt::format("a grid of {} x {} x {} cells cannot be", size[0], size[1], size[2]));
}

/// Numbers that are written one after another, with a question every now and then whether to go on.
class NumberWriter {
public:
    NumberWriter(std::size_t total, const ProgressCheck& progress)
        : total_(static_cast<double>(total)), progress_(progress)
    {
    }

    void write(std::vector<double>& to, std::size_t count, double value)
    {
        while (count > 0) {
            const std::size_t now = std::min(count, step - since_);
            to.insert(to.end(), now, value);
            count -= now;
            since_ += now;
            written_ += now;
            if (since_ == step) {
                check_progress(progress_, static_cast<double>(written_) / total_);
                since_ = 0;
            }
        }
    }

private:
    static constexpr std::size_t step = std::size_t{1} << 21;
    double total_;
    const ProgressCheck& progress_;
    std::size_t written_ = 0, since_ = 0;
};

} // namespace

GridModel make_box(const GridSize& size, const std::array<double, 3>& spacing, const std::array<double, 3>& origin,
                   const ProgressCheck& progress)
{
    check_size(size);
    for (std::size_t axis = 0; axis < 3; ++axis)
        if (!(spacing[axis] > 0) || !std::isfinite(spacing[axis]) || !std::isfinite(origin[axis]))
            throw ModelError(
                fmt::format("spacing {} from {} along {} makes no cells", spacing[axis], origin[axis], "IJK"[axis]));
    GridModel model;
    model.size = size;
    const auto at = [&](std::size_t axis, std::int64_t n) {
        return origin[axis] + spacing[axis] * static_cast<double>(n);
    };
    // Far from the origin a small step gets lost in rounding; far steps leave the range of numbers.
    double volume = 1;
    for (std::size_t axis = 0; axis < 3; ++axis) {
        const std::int64_t n = size[axis];
        volume *= spacing[axis] * static_cast<double>(n);
        if (!std::isfinite(at(axis, n)) || !(at(axis, 0) < at(axis, 1)) || !(at(axis, n - 1) < at(axis, n)))
            throw ModelError(fmt::format("{} cells of {} from {} along {} cannot be told apart in 64-bit numbers", n,
                                         spacing[axis], origin[axis], "IJK"[axis]));
    }
    if (!std::isfinite(volume) || !(volume > 0))
        throw ModelError(fmt::format("cells of {} x {} x {} have no volume that fits a 64-bit number", spacing[0],
                                     spacing[1], spacing[2]));
    const auto pillar_numbers = static_cast<std::size_t>(6 * model.pillars());
    const auto depths = static_cast<std::size_t>(8 * model.cells());
    check_progress(progress, 0);
    NumberWriter writer(pillar_numbers + depths, progress);
    std::vector<double> coord;
    coord.reserve(pillar_numbers);
    for (std::int64_t j = 0; j <= size[1]; ++j)
        for (std::int64_t i = 0; i <= size[0]; ++i)
            for (const std::int64_t k : {std::int64_t{0}, size[2]})
                for (const double number : {at(0, i), at(1, j), at(2, k)})
                    writer.write(coord, 1, number);
    std::vector<double> zcorn;
    zcorn.reserve(depths);
    for (std::int64_t k = 0; k < size[2]; ++k)
        for (const std::int64_t side : {k, k + 1})
            writer.write(zcorn, static_cast<std::size_t>(4 * size[0] * size[1]), at(2, side));
    model.coord = RealArray(std::move(coord));
    model.zcorn = RealArray(std::move(zcorn));
    model.active.assign(static_cast<std::size_t>(model.cells()), 1);
    return model;
}

namespace {

using Style = Lodex::LayerInfo::LayeringStyle;

// Lengths in metres; u and v run from 0 to 1 along I and J.
constexpr double field_width = 3000, field_length = 2400;
constexpr double pillar_top = 1700, pillar_base = 2500;
constexpr double contact_depth = 2045;
constexpr double thinnest_cell = 0.05; // mean height below which a cell counts as pinched out

enum Facies : std::int32_t { Shale, Levee, Channel };

struct Unit {
    const char* name;
    double share; // of the K layers
    Style style;
    double thickness; // greatest one
    int channels;
};

constexpr std::array<Unit, 4> units{{{"Alder", 0.25, Style::ParallelToBase, 55, 7},
                                     {"Birch", 0.25, Style::Proportional, 46, 13},
                                     {"Cedar", 0.30, Style::ParallelToTop, 60, 18},
                                     {"Damson", 0.20, Style::Proportional, 40, 6}}};

// Distribution of porosity (fraction) and permeability (mD) of each facies, after published averages of fluvial
// reservoirs.
struct Rock {
    double porosity, porosity_spread, log_permeability, log_spread, vertical_ratio;
};
constexpr std::array<Rock, 3> rocks{
    {{0.06, 0.02, -3.0, 0.9, 0.01}, {0.16, 0.03, 3.4, 0.7, 0.1}, {0.25, 0.03, 6.4, 0.5, 0.35}}};
// How much ln permeability grows with porosity.
constexpr double log_permeability_per_porosity = 18;

// A channel belt of one unit: a sinuous line along J with a lens for a cross section.
struct ChannelBelt {
    double middle, amplitude, turns, phase; // of the line, in u
    double half_width;                      // in u
    double top, thickness;                  // share of the unit's K layers

    [[nodiscard]] double centre(double v) const
    {
        return middle + amplitude * exactly::sin_turns(turns * v + phase) +
               0.3 * amplitude * exactly::sin_turns(2.7 * turns * v + 3 * phase);
    }
};

// Noise of variance about 1 that varies smoothly from node to node of a lattice.
double smooth_noise(const CounterRandom& random, double x, double y, double z)
{
    const double base[3] = {std::floor(x), std::floor(y), std::floor(z)};
    const double rest[3] = {x - base[0], y - base[1], z - base[2]};
    double weight[3][2];
    double squares = 1;
    for (int axis = 0; axis < 3; ++axis) {
        const double t = rest[axis];
        weight[axis][1] = t * t * (3 - 2 * t);
        weight[axis][0] = 1 - weight[axis][1];
        squares *= weight[axis][0] * weight[axis][0] + weight[axis][1] * weight[axis][1];
    }
    double sum = 0;
    for (int corner = 0; corner < 8; ++corner) {
        const int side[3] = {corner & 1, corner >> 1 & 1, corner >> 2};
        std::uint64_t key = 0;
        double product = 1;
        for (int axis = 0; axis < 3; ++axis) {
            key = key << 20 | (static_cast<std::uint64_t>(base[axis] + side[axis] + 16) & 0xfffff);
            product *= weight[axis][side[axis]];
        }
        sum += product * random.normal(key);
    }
    return sum / std::sqrt(squares);
}

class ExampleField {
public:
    ExampleField(const GridSize& size, std::uint64_t seed)
        : size_(size)
        , seed_(seed)
    {
        const std::int64_t ni = size[0], nj = size[1], nk = size[2];
        fault_1_ = ni >= 3 ? std::clamp<std::int64_t>(ni * 3 / 10, 1, ni - 2) : 0;
        fault_2_ = ni >= 3 ? std::clamp<std::int64_t>(ni * 68 / 100, fault_1_ + 1, ni - 1) : ni;
        fault_3_ = nj >= 2 ? std::clamp<std::int64_t>(nj * 55 / 100, 1, nj - 1) : nj;

        const auto count = std::min<std::int64_t>(nk, static_cast<std::int64_t>(units.size()));
        starts_.push_back(0);
        double share = 0;
        for (std::int64_t n = 0; n < count; ++n) {
            share += units[static_cast<std::size_t>(n)].share;
            const auto wanted = static_cast<std::int64_t>(std::floor(share * static_cast<double>(nk) + 0.5));
            starts_.push_back(n + 1 == count ? nk : std::clamp(wanted, starts_.back() + 1, nk - (count - 1 - n)));
        }
        for (std::int64_t n = 0; n < count; ++n)
            belts_.push_back(make_belts(static_cast<std::size_t>(n)));
    }

    [[nodiscard]] GridModel make(const ProgressCheck& progress) const
    {
        GridModel model;
        model.size = size_;
        model.frame.map_units = "METRES";
        model.frame.grid_units = "METRES";
        model.coord = pillars();
        make_depths(model, partial_progress(progress, 0, 0.3));
        make_properties(model, partial_progress(progress, 0.3, 1));
        make_faults(model);
        for (std::size_t n = 0; n + 1 < starts_.size(); ++n) {
            const std::int64_t cells = starts_[n + 1] - starts_[n];
            model.layers.push_back({units[n].name, cells, static_cast<float>(cell_thickness(n)), units[n].style});
        }
        return model;
    }

private:
    [[nodiscard]] std::size_t unit_of(std::int64_t k) const
    {
        std::size_t unit = 0;
        while (k >= starts_[unit + 1])
            ++unit;
        return unit;
    }
    [[nodiscard]] double cell_thickness(std::size_t unit) const
    {
        return units[unit].thickness / static_cast<double>(starts_[unit + 1] - starts_[unit]);
    }
    [[nodiscard]] double along_i(double i) const { return i / static_cast<double>(size_[0]); }
    [[nodiscard]] double along_j(double j) const { return j / static_cast<double>(size_[1]); }

    [[nodiscard]] std::vector<ChannelBelt> make_belts(std::size_t unit) const
    {
        const CounterRandom random(seed_, 100 + unit);
        std::vector<ChannelBelt> belts;
        for (int n = 0; n < units[unit].channels; ++n) {
            const auto draw = [&](std::uint64_t which, double low, double high) {
                return low + (high - low) * random.uniform(static_cast<std::uint64_t>(n) * 16 + which);
            };
            // Two at the unit's top, where they are seen, the others anywhere.
            belts.push_back({draw(0, 0.05, 0.95), draw(1, 0.03, 0.10), draw(2, 0.7, 1.6), draw(3, 0, 1),
                             draw(4, 0.03, 0.06), n < 2 ? draw(5, -0.15, 0) : draw(5, 0, 0.9), draw(6, 0.18, 0.4)});
        }
        return belts;
    }

    // The map is bent a little and pillars lean along the faults: fault planes dip towards the side that has gone down.
    [[nodiscard]] RealArray pillars() const
    {
        const double u1 = along_i(static_cast<double>(fault_1_)), u2 = along_i(static_cast<double>(fault_2_));
        const double v3 = along_j(static_cast<double>(fault_3_));
        const auto lean_along_i = [&](double u) {
            constexpr double steepest = 0.45, at_edge = 0.2;
            if (u <= u1)
                return u1 > 0 ? -(at_edge + (steepest - at_edge) * u / u1) : -at_edge;
            if (u >= u2)
                return u2 < 1 ? at_edge + (steepest - at_edge) * (1 - u) / (1 - u2) : at_edge;
            return steepest * (2 * (u - u1) / (u2 - u1) - 1);
        };
        std::vector<float> coord;
        coord.reserve(static_cast<std::size_t>(6 * (size_[0] + 1) * (size_[1] + 1)));
        for (std::int64_t j = 0; j <= size_[1]; ++j)
            for (std::int64_t i = 0; i <= size_[0]; ++i) {
                const double u = along_i(static_cast<double>(i)), v = along_j(static_cast<double>(j));
                const double x = field_width * u + 480 * u * (1 - u) * exactly::sin_turns(0.45 * v + 0.1);
                const double y = field_length * v + 320 * v * (1 - v) * exactly::sin_turns(0.4 * u + 0.05);
                const double lean_j = 1.2 * u * (1 - u) * std::max(0.0, 1 - std::abs(v - v3) / 0.3);
                const double middle = (pillar_top + pillar_base) / 2;
                for (const double depth : {pillar_top, pillar_base}) {
                    coord.push_back(static_cast<float>(x + lean_along_i(u) * (depth - middle)));
                    coord.push_back(static_cast<float>(y + lean_j * (depth - middle)));
                    coord.push_back(static_cast<float>(depth));
                }
            }
        return RealArray(std::move(coord));
    }

    // How far the faults have taken down the cell (i, j) at a point of its corner pillars.
    [[nodiscard]] double throw_at(std::int64_t i, std::int64_t j, double u, double v) const
    {
        const double u1 = along_i(static_cast<double>(fault_1_)), u2 = along_i(static_cast<double>(fault_2_));
        if (i < fault_1_)
            return (42 + 16 * exactly::sin_turns(0.6 * v + 0.1)) * (0.35 + 0.65 * u / u1);
        if (i >= fault_2_)
            return (30 + 10 * exactly::sin_turns(0.7 * v + 0.4)) * (0.35 + 0.65 * (1 - u) / (1 - u2));
        if (j < fault_3_)
            return 0;
        // The third fault hangs on the first one and dies out before it reaches the second.
        const double v3 = along_j(static_cast<double>(fault_3_));
        const double distance = (u - u1) / (u2 - u1);
        return 30 * std::max(0.0, 1 - distance / 0.7) * (0.3 + 0.7 * (1 - v) / (1 - v3));
    }

    // Tops of the units and the base of the last one, before faulting.
    void horizons(double u, double v, std::vector<double>& depths) const
    {
        const double x = (u - 0.5) / 0.42, y = (v - 0.47) / 0.62;
        const double distance = x * x + y * y;
        const double structure = 1960 + 150 * distance / (1 + 0.35 * distance) +
                                 7 * exactly::sin_turns(1.3 * u + 0.4 * v) + 5 * exactly::sin_turns(1.7 * v - 0.6 * u);
        const double erosion = 1932 + 16 * (u - 0.5) + 4 * exactly::sin_turns(1.1 * u + 0.9 * v);
        const double thickness[] = {0, 38 + 8 * exactly::sin_turns(0.8 * u + 0.5 * v), 22 + 38 * (1 - u),
                                    34 + 6 * exactly::sin_turns(0.9 * v - 0.4 * u + 0.3)};
        depths.clear();
        depths.push_back(std::min(std::max(structure - units[0].thickness, erosion), structure));
        double base = structure;
        for (std::size_t unit = 0; unit + 1 < starts_.size(); ++unit) {
            base += thickness[unit];
            depths.push_back(base);
        }
    }

    // Depths of all K surfaces at a point; the one between two units is there once.
    void surfaces(double u, double v, double down, std::vector<double>& tops, std::vector<float>& depths) const
    {
        horizons(u, v, tops);
        depths.clear();
        for (std::size_t unit = 0; unit + 1 < starts_.size(); ++unit) {
            const double top = tops[unit], base = tops[unit + 1];
            const std::int64_t cells = starts_[unit + 1] - starts_[unit];
            for (std::int64_t n = unit == 0 ? 0 : 1; n <= cells; ++n) {
                double depth = base;
                if (units[unit].style == Style::Proportional)
                    depth = top + (base - top) * static_cast<double>(n) / static_cast<double>(cells);
                else if (units[unit].style == Style::ParallelToTop)
                    depth = std::min(base, top + cell_thickness(unit) * static_cast<double>(n));
                else
                    depth = std::max(top, base - cell_thickness(unit) * static_cast<double>(cells - n));
                depths.push_back(static_cast<float>((n == cells ? base : depth) + down));
            }
        }
    }

    [[nodiscard]] bool outside(std::int64_t i, std::int64_t j) const
    {
        if (size_[0] < 8 || size_[1] < 8)
            return false;
        const double x = (along_i(static_cast<double>(i) + 0.5) - 0.5) / 0.56;
        const double y = (along_j(static_cast<double>(j) + 0.5) - 0.5) / 0.58;
        return x * x + y * y > 1.25;
    }

    void make_depths(GridModel& model, const ProgressCheck& progress) const
    {
        const std::int64_t ni = size_[0], nj = size_[1], nk = size_[2];
        std::vector<float> zcorn = make_array<float>(static_cast<std::size_t>(8 * model.cells()));
        model.active.assign(static_cast<std::size_t>(model.cells()), 1);
        for_blocks(nj, progress, [&](std::int64_t j) {
            std::vector<double> tops;
            std::vector<float> column;
            for (std::int64_t i = 0; i < ni; ++i) {
                for (int corner = 0; corner < 4; ++corner) {
                    const int a = corner % 2, b = corner / 2;
                    const double u = along_i(static_cast<double>(i + a)), v = along_j(static_cast<double>(j + b));
                    surfaces(u, v, throw_at(i, j, u, v), tops, column);
                    for (std::int64_t k = 0; k < nk; ++k)
                        for (int c = 0; c < 2; ++c)
                            zcorn[static_cast<std::size_t>(depth_offset(size_, i, j, k, b, c) + a)] =
                                column[static_cast<std::size_t>(k + c)];
                }
            }
        });
        model.zcorn = RealArray(std::move(zcorn));
        bool any = false;
        for (std::int64_t k = 0; k < nk; ++k)
            for (std::int64_t j = 0; j < nj; ++j)
                for (std::int64_t i = 0; i < ni; ++i) {
                    auto& active = model.active[static_cast<std::size_t>(model.cell_index(i, j, k))];
                    active = !outside(i, j) && cell_height(model, i, j, k) >= thinnest_cell;
                    any = any || active;
                }
        if (!any)
            model.active.assign(static_cast<std::size_t>(model.cells()), 1);
    }

    [[nodiscard]] Facies facies_at(std::size_t unit, std::span<const double> centres, double u, double depth) const
    {
        bool levee = false;
        for (std::size_t n = 0; n < belts_[unit].size(); ++n) {
            const ChannelBelt& belt = belts_[unit][n];
            const double below = (depth - belt.top) / belt.thickness;
            if (below < 0 || below > 1)
                continue;
            const double aside = std::abs(u - centres[n]) / belt.half_width;
            // Flat on top, rounded at the base.
            if (aside * aside < 1 - below)
                return Channel;
            levee = levee || (aside < 2.4 && below < 0.45);
        }
        return levee ? Levee : Shale;
    }

    void make_properties(GridModel& model, const ProgressCheck& progress) const
    {
        const std::int64_t ni = size_[0], nj = size_[1], nk = size_[2];
        const auto cells = static_cast<std::size_t>(model.cells());
        std::vector<std::int32_t> facies(cells);
        std::vector<float> porosity(cells), perm_x(cells), perm_y(cells), perm_z(cells);
        RegionData oil{"oil_zone", std::vector<std::uint8_t>(cells), false};
        RegionData water{"water_zone", std::vector<std::uint8_t>(cells), false};
        const CounterRandom lattice(seed_, 1), own(seed_, 2), scatter(seed_, 3), vertical(seed_, 4);

        for_blocks(nj * nk, progress, [&](std::int64_t row) {
            const std::int64_t j = row % nj, k = row / nj;
            const std::size_t unit = unit_of(k);
            const double v = along_j(static_cast<double>(j) + 0.5);
            const double depth =
                (static_cast<double>(k - starts_[unit]) + 0.5) / static_cast<double>(starts_[unit + 1] - starts_[unit]);
            std::vector<double> centres;
            for (const ChannelBelt& belt : belts_[unit])
                centres.push_back(belt.centre(v));
            for (std::int64_t i = 0; i < ni; ++i) {
                const auto cell = static_cast<std::size_t>(model.cell_index(i, j, k));
                const double u = along_i(static_cast<double>(i) + 0.5);
                const Facies kind = facies_at(unit, centres, u, depth);
                const Rock& rock = rocks[static_cast<std::size_t>(kind)];
                const double noise =
                    0.8 * smooth_noise(lattice, 10 * u, 8 * v, 5 * (static_cast<double>(unit) + depth)) +
                    0.6 * own.normal(cell);
                const double phi = std::clamp(rock.porosity + rock.porosity_spread * noise, 0.01, 0.36);
                const double log_perm = rock.log_permeability + log_permeability_per_porosity * (phi - rock.porosity) +
                                        rock.log_spread * scatter.normal(cell);
                const double perm = std::clamp(exactly::exp(log_perm), 1e-4, 2e4);
                const double ratio = rock.vertical_ratio * exactly::exp(0.2 * vertical.normal(cell));
                facies[cell] = kind;
                porosity[cell] = static_cast<float>(phi);
                // Sand bodies run along J.
                perm_x[cell] = static_cast<float>(perm);
                perm_y[cell] = static_cast<float>(perm * (kind == Channel ? 1.3 : 1.0));
                perm_z[cell] = static_cast<float>(perm * ratio);
                const bool above = cell_centre(cell_corners(model, i, j, k))[2] < contact_depth;
                (above ? oil : water).flags[cell] = 1;
            }
        });

        model.properties.push_back({"FACIES", "", std::move(facies), {}, {}, false});
        model.properties.back().code_names = {{Shale, "shale"}, {Levee, "levee"}, {Channel, "channel"}};
        model.properties.push_back({"PORO", "", std::move(porosity), {}, {}, false});
        model.properties.push_back({"PERMX", "mD", std::move(perm_x), {}, {}, false});
        model.properties.push_back({"PERMY", "mD", std::move(perm_y), {}, {}, false});
        model.properties.push_back({"PERMZ", "mD", std::move(perm_z), {}, {}, false});
        model.regions = {std::move(oil), std::move(water)};
    }

    void make_faults(GridModel& model) const
    {
        const std::int64_t ni = size_[0], nj = size_[1], nk = size_[2];
        if (ni >= 3) {
            model.faults.push_back({"West_fault", {fault_1_ - 1, fault_1_ - 1}, {0, nj - 1}, {0, nk - 1}, "I+"});
            model.faults.push_back({"East_fault", {fault_2_ - 1, fault_2_ - 1}, {0, nj - 1}, {0, nk - 1}, "I+"});
        }
        if (nj >= 2)
            model.faults.push_back(
                {"Cross_fault", {fault_1_, fault_2_ - 1}, {fault_3_ - 1, fault_3_ - 1}, {0, nk - 1}, "J+"});
    }

    GridSize size_;
    std::uint64_t seed_;
    std::int64_t fault_1_ = 0, fault_2_ = 0, fault_3_ = 0; // first I, I and J index beyond each fault
    std::vector<std::int64_t> starts_;                     // first K layer of each unit, and the end
    std::vector<std::vector<ChannelBelt>> belts_;          // of each unit
};

} // namespace

GridModel make_example(const GridSize& size, std::uint64_t seed, const ProgressCheck& progress)
{
    check_size(size);
    return ExampleField(size, seed).make(progress);
}

} // namespace lodex
