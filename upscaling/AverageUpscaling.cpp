#include "AverageUpscaling.h"

#include "upscaling/kernels/ParallelBlocks.h"

#include <tbb/enumerable_thread_specific.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstring>
#include <limits>
#include <stdexcept>
#include <string>

namespace Kelvane {

namespace {

/// Coarse cells of one task where the mapping is a list. Fixed, so that sums of the report do not depend on the number of
/// threads.
constexpr std::int64_t cells_per_block = 64;
/// Fine values that a thread holds at once where the mapping has boxes: what fits into its cache. One coarse cell may have
/// more.
constexpr std::int64_t values_at_once = 1 << 16;

/// Values and weights of the fine cells of one or several coarse cells, cell after cell.
class Gathered {
public:
    explicit Gathered(const AverageRequest& request)
        : request_(request), weighted_(request.method.rules(request.power).weighted &&
                                       (!request.volumes.empty() || !request.weights.empty()))
    {
    }

    /// The fine cells of a list.
    void gather_list(std::span<const std::int64_t> cells)
    {
        const std::size_t count = cells.size();
        reserve(count);
        first_.assign(1, 0);
        count_.assign(1, count);
        request_.property.read(cells, values_.data());
        if (!weighted_)
            return;
        for (std::size_t n = 0; n < count; ++n)
            weights_[n] = request_.volumes.empty() ? 1 : request_.volumes[static_cast<std::size_t>(cells[n])];
        factor_.resize(count);
        for (const FineProperty& weight : request_.weights) {
            weight.read(cells, factor_.data());
            multiply(weight, weights_.data(), count);
        }
    }

    /// The fine cells of neighbouring boxes: index ranges along I that follow one another, in the given ranges along J and K.
    /// Whole rows of fine cells are read, then dealt out to the boxes.
    void gather_boxes(std::span<const Lodex::IndexRange> i, const Lodex::IndexRange& j, const Lodex::IndexRange& k)
    {
        first_.clear();
        std::size_t all = 0;
        for (const Lodex::IndexRange& range : i) {
            first_.push_back(all);
            all += static_cast<std::size_t>(std::max<std::int64_t>(0, range.count()) * j.count() * k.count());
        }
        reserve(all);
        count_.assign(i.size(), 0);
        const std::int64_t from = i.front().first, length = i.back().last - from + 1;
        row_.resize(static_cast<std::size_t>(length));
        if (weighted_)
            row_weights_.resize(row_.size());
        for (std::int64_t layer = k.first; layer <= k.last; ++layer) {
            for (std::int64_t row = j.first; row <= j.last; ++row) {
                const std::int64_t first = from + request_.fine_size[0] * (row + request_.fine_size[1] * layer);
                request_.property.read(first, length, row_.data());
                if (weighted_)
                    read_weights(first, length);
                deal_out(i, first, length);
            }
        }
    }

    [[nodiscard]] std::size_t count(std::size_t cell) const { return count_[cell]; }

    /// Average over the values of one of the cells; NaN when nothing is left.
    double average(std::size_t cell, PreparationCounts& counts)
    {
        const std::span<double> values = std::span(values_).subspan(first_[cell], count_[cell]);
        const std::span<double> weights = weighted_ ? std::span(weights_).subspan(first_[cell], count_[cell]) : std::span<double>();
        const bool positive = prepare(values, request_.preparation, counts);
        const AverageRules rules = request_.method.rules(request_.power);
        std::size_t refused = 0;
        if (!positive)
            for (const double value : values)
                refused += !rules.accepts(value);
        for (const double weight : weights)
            refused += !(weight >= 0);
        if (refused == 0)
            return request_.method.average(request_.power, values, weights);
        std::size_t kept = 0;
        for (std::size_t n = 0; n < values.size(); ++n) {
            if (std::isnan(values[n]) || (weighted_ && std::isnan(weights[n]))) {
                ++counts.undefined_left_out;
            } else if (!rules.accepts(values[n])) {
                ++counts.refused_left_out;
            } else {
                values[kept] = values[n];
                if (weighted_)
                    weights[kept] = weights[n];
                ++kept;
            }
        }
        return request_.method.average(request_.power, values.first(kept), weighted_ ? weights.first(kept) : weights);
    }

    /// A property that holds a negative weight among the values gathered so far; null when there is none.
    [[nodiscard]] const std::string* negative_weight() const { return negative_weight_; }

private:
    void reserve(std::size_t count)
    {
        if (values_.size() < count) {
            values_.resize(count);
            weights_.resize(weighted_ ? count : 0);
        }
    }

    void read_weights(std::int64_t first, std::int64_t length)
    {
        if (request_.volumes.empty())
            std::ranges::fill(row_weights_, 1.0);
        else
            std::copy_n(request_.volumes.data() + first, length, row_weights_.data());
        factor_.resize(row_weights_.size());
        for (const FineProperty& weight : request_.weights) {
            weight.read(first, length, factor_.data());
            // Cells that do not take part weigh nothing, whatever stands there.
            const std::uint8_t* const flag = request_.mapping.fine_flags.data() + first;
            for (std::size_t n = 0; n < factor_.size(); ++n)
                factor_[n] = flag[n] ? factor_[n] : 0;
            multiply(weight, row_weights_.data(), factor_.size());
        }
    }

    /// Values of a row whose flag is set, to the boxes that they lie in.
    void deal_out(std::span<const Lodex::IndexRange> i, std::int64_t first, std::int64_t length)
    {
        const std::uint8_t* const flag = request_.mapping.fine_flags.data() + first;
        const bool whole = std::memchr(flag, 0, static_cast<std::size_t>(length)) == nullptr;
        for (std::size_t box = 0; box < i.size(); ++box) {
            const auto begin = static_cast<std::size_t>(i[box].first - i.front().first);
            const auto cells = static_cast<std::size_t>(i[box].count());
            double* const values = values_.data() + first_[box] + count_[box];
            double* const weights = weighted_ ? weights_.data() + first_[box] + count_[box] : nullptr;
            if (whole) {
                for (std::size_t n = 0; n < cells; ++n)
                    values[n] = row_[begin + n];
                if (weights)
                    for (std::size_t n = 0; n < cells; ++n)
                        weights[n] = row_weights_[begin + n];
                count_[box] += cells;
                continue;
            }
            std::size_t found = 0;
            for (std::size_t n = begin; n < begin + cells; ++n) {
                if (!flag[n])
                    continue;
                values[found] = row_[n];
                if (weights)
                    weights[found] = row_weights_[n];
                ++found;
            }
            count_[box] += found;
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
    std::vector<double> values_, weights_, row_, row_weights_, factor_;
    std::vector<std::size_t> first_, count_; ///< of the cells gathered
    const std::string* negative_weight_ = nullptr;
};

/// One task: some coarse cells, their report.
class Task {
public:
    Task(const AverageRequest& request, AverageResult& result, UpscalingReport& report, Gathered& gathered)
        : request_(request), result_(result), report_(report), gathered_(gathered)
    {
    }

    /// Coarse cells first ... last - 1 of a mapping in rows.
    void lists(std::int64_t first, std::int64_t last)
    {
        const Lodex::CellMapping& mapping = request_.mapping;
        for (std::int64_t cell = first; cell < last; ++cell) {
            const auto at = static_cast<std::size_t>(cell);
            if (!request_.coarse_cells[at])
                continue;
            const auto begin = static_cast<std::size_t>(mapping.offsets[at]), end = static_cast<std::size_t>(mapping.offsets[at + 1]);
            gathered_.gather_list(std::span(mapping.cells).subspan(begin, end - begin));
            finish(at, 0);
        }
    }

    /// A row of coarse cells along I of a mapping with boxes.
    void boxes(std::int64_t row)
    {
        const Lodex::CellMapping& mapping = request_.mapping;
        const auto ni = static_cast<std::size_t>(request_.coarse_size[0]);
        const Lodex::IndexRange j = mapping.boxes[1][static_cast<std::size_t>(row % request_.coarse_size[1])];
        const Lodex::IndexRange k = mapping.boxes[2][static_cast<std::size_t>(row / request_.coarse_size[1])];
        const std::span<const Lodex::IndexRange> ranges = mapping.boxes[0];
        const std::int64_t lines = std::max<std::int64_t>(1, j.count() * k.count());
        const auto start = static_cast<std::size_t>(row) * ni;
        for (std::size_t first = 0; first < ni;) {
            if (!takes_part(start + first) || ranges[first].count() <= 0) {
                if (request_.coarse_cells[start + first])
                    leave_empty(start + first);
                ++first;
                continue;
            }
            std::size_t last = first + 1;
            while (last < ni && takes_part(start + last) && ranges[last].count() > 0 && ranges[last].first == ranges[last - 1].last + 1 &&
                   (ranges[last].last - ranges[first].first + 1) * lines <= values_at_once)
                ++last;
            gathered_.gather_boxes(ranges.subspan(first, last - first), j, k);
            for (std::size_t cell = first; cell < last; ++cell)
                finish(start + cell, cell - first);
            first = last;
        }
    }

private:
    [[nodiscard]] bool takes_part(std::size_t cell) const
    {
        return request_.coarse_cells[cell] && request_.mapping.coarse_flags[cell];
    }

    void leave_empty(std::size_t cell)
    {
        ++report_.coarse_cells;
        ++report_.no_fine_cell;
        result_.problems[cell] = 1;
    }

    void finish(std::size_t cell, std::size_t place)
    {
        ++report_.coarse_cells;
        const std::size_t count = gathered_.count(place);
        report_.fine_cells += static_cast<std::int64_t>(count);
        const double value = gathered_.average(place, report_.preparation);
        if (std::isfinite(value)) {
            result_.values[cell] = value;
            ++report_.done;
        } else {
            result_.problems[cell] = 1;
            ++(count == 0 ? report_.no_fine_cell : report_.nothing_left);
        }
    }

    const AverageRequest& request_;
    AverageResult& result_;
    UpscalingReport& report_;
    Gathered& gathered_;
};

} // namespace

AverageResult upscale_by_average(const AverageRequest& request, const Lodex::ProgressCheck& progress)
{
    const auto start = std::chrono::steady_clock::now();
    const auto cells = static_cast<std::int64_t>(request.coarse_cells.size());
    AverageResult result;
    result.values.assign(request.coarse_cells.size(), std::numeric_limits<double>::quiet_NaN());
    result.problems.assign(request.coarse_cells.size(), 0);

    const bool boxes = request.mapping.has_boxes();
    const std::int64_t blocks = boxes ? request.coarse_size[1] * request.coarse_size[2] : (cells + cells_per_block - 1) / cells_per_block;
    std::vector<UpscalingReport> reports(static_cast<std::size_t>(blocks));
    // Large arrays made anew for every task would cost more than the sums.
    tbb::enumerable_thread_specific<Gathered> gathered([&request] { return Gathered(request); });
    for_blocks(blocks, progress, [&](std::int64_t block) {
        Task task(request, result, reports[static_cast<std::size_t>(block)], gathered.local());
        if (boxes)
            task.boxes(block);
        else
            task.lists(block * cells_per_block, std::min(cells, (block + 1) * cells_per_block));
    });

    for (const Gathered& one : gathered)
        if (one.negative_weight())
            throw std::runtime_error("the weight property \"" + *one.negative_weight() +
                                     "\" holds negative values; expected 0 or more");
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
