#include "AverageUpscaling.h"

#include "upscaling/kernels/ParallelBlocks.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <limits>
#include <stdexcept>
#include <string>

namespace Kelvane {

namespace {

/// Coarse cells of one task. Fixed, so that sums of the report do not depend on the number of threads.
constexpr std::int64_t cells_per_block = 64;

/// Values and weights of the fine cells of one coarse cell.
class Gathered {
public:
    explicit Gathered(const AverageRequest& request)
        : request_(request), weighted_(request.method.rules(request.power).weighted &&
                                       (!request.volumes.empty() || !request.weights.empty()))
    {
    }

    /// Number of fine cells.
    std::size_t gather(std::int64_t coarse_cell)
    {
        const Lodex::CellMapping& mapping = request_.mapping;
        std::size_t count = 0;
        if (mapping.has_boxes()) {
            if (!mapping.coarse_flags[static_cast<std::size_t>(coarse_cell)])
                return 0;
            const auto& size = request_.coarse_size;
            const Lodex::IndexRange i = mapping.boxes[0][static_cast<std::size_t>(coarse_cell % size[0])];
            const Lodex::IndexRange j = mapping.boxes[1][static_cast<std::size_t>(coarse_cell / size[0] % size[1])];
            const Lodex::IndexRange k = mapping.boxes[2][static_cast<std::size_t>(coarse_cell / (size[0] * size[1]))];
            reserve(static_cast<std::size_t>(i.count() * j.count() * k.count()));
            for (std::int64_t layer = k.first; layer <= k.last; ++layer)
                for (std::int64_t row = j.first; row <= j.last; ++row)
                    count += gather_run(i.first + request_.fine_size[0] * (row + request_.fine_size[1] * layer), i.count(), count);
        } else {
            const auto first = static_cast<std::size_t>(mapping.offsets[static_cast<std::size_t>(coarse_cell)]);
            const auto last = static_cast<std::size_t>(mapping.offsets[static_cast<std::size_t>(coarse_cell) + 1]);
            count = last - first;
            reserve(count);
            gather_list(std::span(mapping.cells).subspan(first, count));
        }
        return count;
    }

    /// Average over the first `count` values; NaN when nothing is left.
    double average(std::size_t count, PreparationCounts& counts)
    {
        const std::span values(values_.data(), count);
        prepare(values, request_.preparation, counts);
        const AverageRules rules = request_.method.rules(request_.power);
        std::size_t kept = 0;
        bool all = true;
        for (std::size_t n = 0; n < count; ++n)
            all = all && rules.accepts(values[n]) && (!weighted_ || weights_[n] >= 0);
        if (all) {
            kept = count;
        } else {
            for (std::size_t n = 0; n < count; ++n) {
                if (std::isnan(values[n]) || (weighted_ && std::isnan(weights_[n]))) {
                    ++counts.undefined_left_out;
                } else if (!rules.accepts(values[n])) {
                    ++counts.refused_left_out;
                } else {
                    values[kept] = values[n];
                    if (weighted_)
                        weights_[kept] = weights_[n];
                    ++kept;
                }
            }
        }
        return request_.method.average(request_.power, values.first(kept),
                                       weighted_ ? std::span<const double>(weights_.data(), kept) : std::span<const double>());
    }

    /// The property that holds a negative weight among the values gathered last; null when there is none.
    [[nodiscard]] const std::string* negative_weight() const { return negative_weight_; }

private:
    void reserve(std::size_t count)
    {
        if (values_.size() < count) {
            values_.resize(count);
            weights_.resize(weighted_ ? count : 0);
            factor_.resize(request_.weights.empty() ? 0 : count);
        }
    }

    std::size_t gather_run(std::int64_t first, std::int64_t length, std::size_t at)
    {
        const std::span<const std::uint8_t> flags = request_.mapping.fine_flags;
        const std::size_t found = request_.property.read(first, length, flags, values_.data() + at);
        if (!weighted_)
            return found;
        double* const weights = weights_.data() + at;
        if (request_.volumes.empty()) {
            std::fill_n(weights, found, 1.0);
        } else {
            const double* const volumes = request_.volumes.data() + first;
            const std::uint8_t* const flag = flags.data() + first;
            std::size_t n = 0;
            // Nothing but the packed places is written beyond the run's own end.
            for (std::int64_t cell = 0; cell < length && n < found; ++cell) {
                weights[n] = volumes[cell];
                n += flag[cell] != 0;
            }
        }
        for (const FineProperty& weight : request_.weights) {
            weight.read(first, length, flags, factor_.data());
            multiply(weight, weights, found);
        }
        return found;
    }

    void gather_list(std::span<const std::int64_t> cells)
    {
        request_.property.read(cells, values_.data());
        if (!weighted_)
            return;
        for (std::size_t n = 0; n < cells.size(); ++n)
            weights_[n] = request_.volumes.empty() ? 1 : request_.volumes[static_cast<std::size_t>(cells[n])];
        for (const FineProperty& weight : request_.weights) {
            weight.read(cells, factor_.data());
            multiply(weight, weights_.data(), cells.size());
        }
    }

    void multiply(const FineProperty& weight, double* weights, std::size_t count)
    {
        for (std::size_t n = 0; n < count; ++n) {
            weights[n] *= factor_[n];
            if (factor_[n] < 0)
                negative_weight_ = &weight.name();
        }
    }

    const AverageRequest& request_;
    bool weighted_;
    std::vector<double> values_, weights_, factor_;
    const std::string* negative_weight_ = nullptr;
};

} // namespace

AverageResult upscale_by_average(const AverageRequest& request, const Lodex::ProgressCheck& progress)
{
    const auto start = std::chrono::steady_clock::now();
    const auto cells = static_cast<std::int64_t>(request.coarse_cells.size());
    AverageResult result;
    result.values.assign(request.coarse_cells.size(), std::numeric_limits<double>::quiet_NaN());
    result.problems.assign(request.coarse_cells.size(), 0);

    const std::int64_t blocks = (cells + cells_per_block - 1) / cells_per_block;
    std::vector<UpscalingReport> reports(static_cast<std::size_t>(blocks));
    std::vector<const std::string*> negative(static_cast<std::size_t>(blocks), nullptr);
    for_blocks(blocks, progress, [&](std::int64_t block) {
        UpscalingReport& report = reports[static_cast<std::size_t>(block)];
        Gathered gathered(request);
        for (std::int64_t cell = block * cells_per_block; cell < std::min(cells, (block + 1) * cells_per_block); ++cell) {
            const auto at = static_cast<std::size_t>(cell);
            if (!request.coarse_cells[at])
                continue;
            ++report.coarse_cells;
            const std::size_t count = gathered.gather(cell);
            report.fine_cells += static_cast<std::int64_t>(count);
            const double value = gathered.average(count, report.preparation);
            if (std::isfinite(value)) {
                result.values[at] = value;
                ++report.done;
            } else {
                result.problems[at] = 1;
                ++(count == 0 ? report.no_fine_cell : report.nothing_left);
            }
        }
        negative[static_cast<std::size_t>(block)] = gathered.negative_weight();
    });

    for (const std::string* name : negative)
        if (name)
            throw std::runtime_error("the weight property \"" + *name + "\" holds negative values; expected 0 or more");
    for (const UpscalingReport& part : reports) {
        result.report.coarse_cells += part.coarse_cells;
        result.report.done += part.done;
        result.report.no_fine_cell += part.no_fine_cell;
        result.report.nothing_left += part.nothing_left;
        result.report.fine_cells += part.fine_cells;
        result.report.preparation.add(part.preparation);
    }
    result.report.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    return result;
}

} // namespace Kelvane
