#pragma once

#include "ParallelBlocks.h"

#include <tbb/parallel_for.h>

#include <atomic>
#include <chrono>
#include <cstddef>
#include <functional>
#include <future>
#include <utility>
#include <vector>

namespace lodex {

/// The arrays of a new grid, made side by side: most of the time goes into touching their pages for the first time.
class ArrayMaker {
public:
    /// What run() is to do besides; long work is to give up once stop() is set.
    void add(std::function<void()> work) { work_.push_back(std::move(work)); }
    [[nodiscard]] const std::atomic<bool>& stop() const { return stop_; }

    /// On other threads, so that this one can ask for the user's wish meanwhile. Throws Cancelled.
    void run(const ProgressCheck& progress)
    {
        auto made = std::async(std::launch::async, [this] {
            tbb::parallel_for(std::size_t{0}, work_.size(), [this](std::size_t n) { work_[n](); });
        });
        constexpr std::chrono::milliseconds interval(20);
        while (made.wait_for(interval) != std::future_status::ready)
            if (progress && !stop_ && !progress(0))
                stop_ = true;
        made.get();
        if (stop_)
            throw Cancelled{};
    }

private:
    std::atomic<bool> stop_ = false;
    std::vector<std::function<void()>> work_;
};

} // namespace lodex
