#include "PermeabilityUpscaling.h"

#include "MappingCells.h"

#include "upscaling/kernels/ParallelBlocks.h"
#include "upscaling/upscalers/AverageUpscaler.h"
#include "upscaling/upscalers/LocalUpscaler.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <limits>
#include <numeric>
#include <stdexcept>

namespace Kelvane {

namespace {

constexpr double undefined = std::numeric_limits<double>::quiet_NaN();

/// Samples that are held at once; a single coarse cell may have more.
constexpr std::size_t samples_at_once = 1 << 20;

/// Number of distinct fine indices along each axis among the cells of a coarse cell, 0 when it has none.
class FineExtent {
public:
    FineExtent(const Lodex::CellMapping& mapping, const std::array<std::int64_t, 3>& fine_size, const GridSize& coarse_size)
        : mapping_(mapping), fine_(fine_size), coarse_(coarse_size)
    {
        for (std::size_t axis = 0; axis < 3; ++axis)
            seen_[axis].resize(static_cast<std::size_t>(fine_[axis]));
    }

    std::array<std::int64_t, 3> operator()(std::int64_t coarse_cell)
    {
        std::array<std::int64_t, 3> distinct{};
        const auto meet = [&](std::int64_t cell) {
            const std::array<std::int64_t, 3> index{cell % fine_[0], cell / fine_[0] % fine_[1], cell / (fine_[0] * fine_[1])};
            for (std::size_t axis = 0; axis < 3; ++axis) {
                auto& seen = seen_[axis][static_cast<std::size_t>(index[axis])];
                if (seen != stamp_) {
                    seen = stamp_;
                    ++distinct[axis];
                }
            }
        };
        ++stamp_;
        for_fine_cells(mapping_, fine_, coarse_, coarse_cell, meet);
        return distinct;
    }

private:
    const Lodex::CellMapping& mapping_;
    std::array<std::int64_t, 3> fine_;
    GridSize coarse_;
    std::array<std::vector<std::int64_t>, 3> seen_;
    std::int64_t stamp_ = 0;
};

/// A coarse cell that has fine cells, and its samples.
struct SampledCell {
    std::int64_t cell = 0;
    std::array<int, 3> n{};
    std::size_t first = 0; ///< its samples start here in the arrays of the batch
    std::int64_t fine_cells = 0;
    bool nothing_left = false;
    flow::FramedCell framed;
    PreparationCounts counts;

    [[nodiscard]] std::size_t samples() const
    {
        return static_cast<std::size_t>(n[0]) * static_cast<std::size_t>(n[1]) * static_cast<std::size_t>(n[2]);
    }
};

class Run {
public:
    Run(const PermeabilityRequest& request, const Lodex::ProgressCheck& progress)
        : request_(request), progress_(progress), average_(dynamic_cast<const AverageUpscaler*>(&request.method)),
          local_(dynamic_cast<const LocalUpscaler*>(&request.method))
    {
        if (!average_ && !local_)
            throw std::invalid_argument("the method cannot upscale a permeability");
        scalar_ = average_ || !local_->tensor_input();
    }

    PermeabilityResult operator()()
    {
        const auto start = std::chrono::steady_clock::now();
        prepare_result();
        const std::vector<SampledCell> cells = choose_samples();
        std::size_t first = 0;
        while (first < cells.size()) {
            check_progress(progress_, done(first, cells.size()));
            std::size_t last = first, samples = 0;
            while (last < cells.size() && (last == first || samples + cells[last].samples() <= samples_at_once))
                samples += cells[last++].samples();
            batch_.assign(cells.begin() + static_cast<std::ptrdiff_t>(first), cells.begin() + static_cast<std::ptrdiff_t>(last));
            const double from = done(first, cells.size()), to = done(last, cells.size());
            const double sampled = from + sampling_share * (to - from);
            take_samples(samples, partial_progress(progress_, from, sampled));
            if (local_)
                solve(partial_progress(progress_, sampled, to));
            else
                average();
            first = last;
        }
        check_progress(progress_, 1);
        result_.report.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
        return std::move(result_);
    }

private:
    /// Part of the work on some cells that is taking their samples; the rest is solving.
    static constexpr double sampling_share = 0.25;

    static double done(std::size_t cell, std::size_t cells)
    {
        return 0.05 + 0.95 * static_cast<double>(cell) / static_cast<double>(std::max<std::size_t>(1, cells));
    }

    void prepare_result()
    {
        const bool boundary = local_ && local_->uses_boundary();
        const bool ij = boundary && request_.options.boundary != flow::Boundary::Confined;
        const bool all = boundary && request_.options.boundary == flow::Boundary::Unconfined;
        const std::array<bool, 6> made{true, true, true, ij, all, all};
        for (std::size_t n = 0; n < 6; ++n)
            if (made[n])
                result_.components[n].assign(request_.coarse_cells.size(), undefined);
        result_.problems.assign(request_.coarse_cells.size(), 0);
    }

    /// Coarse cells with fine cells and how they are sampled; the others are problems.
    std::vector<SampledCell> choose_samples()
    {
        const auto count = static_cast<std::int64_t>(request_.coarse_cells.size());
        constexpr std::int64_t block_length = 256;
        const std::int64_t blocks = (count + block_length - 1) / block_length;
        std::vector<std::vector<SampledCell>> found(static_cast<std::size_t>(blocks));
        for_blocks(blocks, partial_progress(progress_, 0, 0.05), [&](std::int64_t block) {
            FineExtent extent(request_.matched.mapping(), request_.fine_size, request_.coarse.size);
            for (std::int64_t cell = block * block_length; cell < std::min(count, (block + 1) * block_length); ++cell) {
                const auto at = static_cast<std::size_t>(cell);
                if (!request_.coarse_cells[at])
                    continue;
                const auto distinct = extent(cell);
                SampledCell sampled;
                sampled.cell = cell;
                for (std::size_t axis = 0; axis < 3; ++axis) {
                    const auto most = static_cast<std::int64_t>(request_.sampling[axis]);
                    const std::int64_t wanted = request_.fixed_sampling ? most : std::min(most, distinct[axis]);
                    sampled.n[axis] = static_cast<int>(distinct[axis] == 0 ? 0 : wanted);
                }
                found[static_cast<std::size_t>(block)].push_back(sampled);
            }
        });
        std::vector<SampledCell> cells;
        for (const auto& block : found) {
            for (const SampledCell& cell : block) {
                ++result_.report.coarse_cells;
                if (cell.samples() > 0) {
                    cells.push_back(cell);
                } else {
                    ++result_.report.no_fine_cell;
                    result_.problems[static_cast<std::size_t>(cell.cell)] = 1;
                }
            }
        }
        return cells;
    }

    void take_samples(std::size_t samples, const Lodex::ProgressCheck& progress)
    {
        std::size_t first = 0;
        for (SampledCell& cell : batch_) {
            cell.first = first;
            first += cell.samples();
        }
        const std::size_t arrays = scalar_ ? 1 : 3;
        for (std::size_t n = 0; n < arrays; ++n)
            values_[n].resize(samples);
        fine_.resize(samples);
        passable_.resize(samples);
        constexpr std::size_t cells_at_once = 16;
        const std::size_t blocks = (batch_.size() + cells_at_once - 1) / cells_at_once;
        for_blocks(static_cast<std::int64_t>(blocks), progress, [&](std::int64_t block) {
            const std::size_t begin = static_cast<std::size_t>(block) * cells_at_once;
            for (std::size_t n = begin; n < std::min(batch_.size(), begin + cells_at_once); ++n)
                sample(batch_[n], arrays);
        });
    }

    void sample(SampledCell& cell, std::size_t arrays)
    {
        const std::size_t count = cell.samples();
        const std::span<std::int64_t> fine = std::span(fine_).subspan(cell.first, count);
        const std::span<std::uint8_t> passable = std::span(passable_).subspan(cell.first, count);
        request_.matched.sample(cell.cell, cell.n, fine);
        std::vector<std::int64_t> places;
        places.reserve(count);
        for (std::size_t n = 0; n < count; ++n) {
            passable[n] = fine[n] >= 0;
            if (passable[n])
                places.push_back(fine[n]);
        }
        cell.fine_cells = static_cast<std::int64_t>(places.size());
        std::vector<double> read(places.size());
        for (std::size_t array = 0; array < arrays; ++array) {
            const std::span<double> values = std::span(values_[array]).subspan(cell.first, count);
            request_.permeability[array].read(places, read.data());
            prepare(read, request_.preparation, cell.counts);
            std::size_t next = 0;
            std::size_t defined = 0, missing = 0;
            for (std::size_t n = 0; n < count; ++n) {
                values[n] = passable[n] ? read[next++] : 0;
                if (values[n] < 0)
                    values[n] = 0; // sealed, and as such a neighbour of undefined ones
                defined += passable[n] && !std::isnan(values[n]);
                missing += std::isnan(values[n]);
            }
            if (missing > 0 && defined > 0)
                cell.counts.undefined_filled += fill_undefined(values, passable, cell.n);
            // A cell whose samples are all sealed has permeability 0; one that holds nothing but undefined ones has none.
            cell.nothing_left = cell.nothing_left || (defined == 0 && missing > 0);
            for (double& value : values) {
                if (!(value > 0)) {
                    value = 0;
                    ++cell.counts.sealed;
                }
            }
        }
        if (local_) {
            const auto& size = request_.coarse.size;
            cell.framed = flow::frame_cell(
                cell_corners(request_.coarse, cell.cell % size[0], cell.cell / size[0] % size[1], cell.cell / (size[0] * size[1])));
        }
    }

    void store(const SampledCell& cell, const std::array<double, 6>& tensor, bool backup)
    {
        const auto at = static_cast<std::size_t>(cell.cell);
        UpscalingReport& report = result_.report;
        report.fine_cells += cell.fine_cells;
        report.preparation.add(cell.counts);
        const bool finite = std::ranges::all_of(tensor, [](double component) { return std::isfinite(component); });
        if (cell.nothing_left || !finite) {
            ++report.nothing_left;
            result_.problems[at] = 1;
            return;
        }
        ++report.done;
        // Every sample lies in an inactive cell or in none: sealed, but worth a look.
        if (cell.fine_cells == 0)
            result_.problems[at] = 1;
        if (backup) {
            ++report.backup;
            result_.problems[at] = 1;
        }
        for (std::size_t n = 0; n < 6; ++n)
            if (!result_.components[n].empty())
                result_.components[n][at] = tensor[n];
    }

    void average()
    {
        const AverageRules rules = average_->rules(request_.power);
        std::vector<double> answers(batch_.size());
        tbb::parallel_for(tbb::blocked_range<std::size_t>(0, batch_.size(), 16), [&](const auto& range) {
            for (std::size_t n = range.begin(); n != range.end(); ++n) {
                const std::span<double> values = std::span(values_[0]).subspan(batch_[n].first, batch_[n].samples());
                const bool sealed = !rules.accepts_zero && std::ranges::find(values, 0.0) != values.end();
                answers[n] = sealed ? 0 : average_->average(request_.power, values, {});
            }
        });
        for (std::size_t n = 0; n < batch_.size(); ++n)
            store(batch_[n], {answers[n], answers[n], answers[n], 0, 0, 0}, false);
    }

    void solve(const Lodex::ProgressCheck& progress)
    {
        std::vector<flow::Block> blocks(batch_.size());
        for (std::size_t n = 0; n < batch_.size(); ++n) {
            const SampledCell& cell = batch_[n];
            const auto part = [&](std::size_t array) {
                return std::span<const double>(values_[scalar_ ? 0 : array]).subspan(cell.first, cell.samples());
            };
            blocks[n] = {.n = cell.n,
                         .size = cell.framed.size,
                         .corners = local_->true_geometry() ? &cell.framed.corners : nullptr,
                         .ki = part(0),
                         .kj = part(1),
                         .kk = part(2)};
        }
        std::vector<flow::BlockResult> results(blocks.size());
        local_->upscale(blocks, request_.options, results, progress);
        for (std::size_t n = 0; n < batch_.size(); ++n) {
            result_.report.iterations += results[n].iterations;
            result_.report.most_iterations = std::max(result_.report.most_iterations, results[n].iterations);
            result_.report.largest_residual = std::max(result_.report.largest_residual, results[n].residual);
            store(batch_[n], results[n].tensor, results[n].backup);
        }
    }

    const PermeabilityRequest& request_;
    const Lodex::ProgressCheck& progress_;
    const AverageUpscaler* average_;
    const LocalUpscaler* local_;
    bool scalar_ = true;
    PermeabilityResult result_;
    std::vector<SampledCell> batch_;
    std::array<std::vector<double>, 3> values_;
    std::vector<std::int64_t> fine_;
    std::vector<std::uint8_t> passable_;
};

} // namespace

std::int64_t fill_undefined(std::span<double> values, std::span<const std::uint8_t> passable, const std::array<int, 3>& n)
{
    const auto ni = static_cast<std::size_t>(n[0]), nj = static_cast<std::size_t>(n[1]), nk = static_cast<std::size_t>(n[2]);
    std::vector<std::size_t> open;
    double sum = 0;
    std::size_t defined = 0;
    for (std::size_t at = 0; at < values.size(); ++at) {
        if (!passable[at])
            continue;
        if (std::isnan(values[at])) {
            open.push_back(at);
        } else {
            sum += values[at];
            ++defined;
        }
    }
    if (defined == 0 || open.empty())
        return 0;
    const double mean = sum / static_cast<double>(defined);
    const auto filled = static_cast<std::int64_t>(open.size());
    while (!open.empty()) {
        std::vector<std::pair<std::size_t, double>> wave;
        std::vector<std::size_t> left;
        for (const std::size_t at : open) {
            const std::size_t i = at % ni, j = at / ni % nj, k = at / (ni * nj);
            double around = 0;
            int count = 0;
            const auto ask = [&](bool there, std::size_t neighbour) {
                if (there && passable[neighbour] && !std::isnan(values[neighbour])) {
                    around += values[neighbour];
                    ++count;
                }
            };
            ask(i > 0, at - 1);
            ask(i + 1 < ni, at + 1);
            ask(j > 0, at - ni);
            ask(j + 1 < nj, at + ni);
            ask(k > 0, at - ni * nj);
            ask(k + 1 < nk, at + ni * nj);
            if (count > 0)
                wave.emplace_back(at, around / count);
            else
                left.push_back(at);
        }
        if (wave.empty()) {
            for (const std::size_t at : left)
                values[at] = mean;
            break;
        }
        for (const auto& [at, value] : wave)
            values[at] = value;
        open = std::move(left);
    }
    return filled;
}

PermeabilityResult upscale_permeability(const PermeabilityRequest& request, const Lodex::ProgressCheck& progress)
{
    return Run(request, progress)();
}

} // namespace Kelvane
