#pragma once

#include <Lodex/utils/Progress.h>

#include <tbb/blocked_range.h>
#include <tbb/parallel_for.h>

#include <algorithm>
#include <cstdint>

namespace Kelvane {

using Lodex::Cancelled;
using Lodex::ProgressCheck;

/// Asks whether to go on; throws Cancelled when not.
inline void check_progress(const ProgressCheck& progress, double done)
{
    if (progress && !progress(done))
        throw Cancelled{};
}

/// Part of a longer piece of work as a ProgressCheck of its own, from `from` to `to` of the whole.
[[nodiscard]] inline ProgressCheck partial_progress(const ProgressCheck& progress, double from, double to)
{
    if (!progress)
        return {};
    return [&progress, from, to](double done) {
        return progress(from + (to - from) * done);
    };
}

/// Calls work(block) for 0 <= block < count on all threads, in some thirty batches; `progress` is called from this
/// thread before each batch and at the end. What belongs to which block must not depend on the number of threads.
template <class Work> void for_blocks(std::int64_t count, const ProgressCheck& progress, const Work& work)
{
    const std::int64_t batch = std::max<std::int64_t>(16, (count + 31) / 32);
    for (std::int64_t first = 0; first < count; first += batch) {
        check_progress(progress, static_cast<double>(first) / static_cast<double>(count));
        tbb::parallel_for(tbb::blocked_range<std::int64_t>(first, std::min(first + batch, count), 1),
                          [&work](const tbb::blocked_range<std::int64_t>& range) {
                              for (std::int64_t block = range.begin(); block != range.end(); ++block)
                                  work(block);
                          });
    }
    check_progress(progress, 1);
}

} // namespace Kelvane
