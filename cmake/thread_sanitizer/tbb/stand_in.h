#pragma once

// Stand-in for the part of oneTBB that the project uses, for builds with the thread sanitizer alone. The distribution's
// library is not instrumented, so the sanitizer cannot see how it hands work to threads and reports every such hand-over as
// a race. Here plain std::thread does the work, which the sanitizer understands; the project's own code stays the same.

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <exception>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>
#include <type_traits>
#include <utility>
#include <vector>

namespace tbb {

namespace stand_in {

inline std::atomic<std::size_t>& most_threads()
{
    static std::atomic<std::size_t> number{4};
    return number;
}

/// True on a thread that works on a loop: loops inside loops run on the thread that meets them.
inline bool& inside()
{
    static thread_local bool flag = false;
    return flag;
}

/// Calls work(n) for 0 <= n < count, in any order, on several threads.
template <class Work> void run(std::size_t count, const Work& work)
{
    const std::size_t threads = std::min(count, most_threads().load());
    if (inside() || threads < 2) {
        for (std::size_t n = 0; n < count; ++n)
            work(n);
        return;
    }
    std::atomic<std::size_t> next{0};
    std::exception_ptr failure;
    std::mutex guard;
    const auto loop = [&] {
        inside() = true;
        for (std::size_t n = next++; n < count; n = next++) {
            try {
                work(n);
            } catch (...) {
                const std::lock_guard lock(guard);
                if (!failure)
                    failure = std::current_exception();
                next = count;
            }
        }
        inside() = false;
    };
    std::vector<std::thread> others;
    for (std::size_t n = 1; n < threads; ++n)
        others.emplace_back(loop);
    loop();
    for (std::thread& other : others)
        other.join();
    if (failure)
        std::rethrow_exception(failure);
}

} // namespace stand_in

template <class Index> class blocked_range {
public:
    blocked_range(Index begin, Index end, std::size_t grain = 1) : begin_(begin), end_(end), grain_(std::max<std::size_t>(1, grain)) {}
    [[nodiscard]] Index begin() const { return begin_; }
    [[nodiscard]] Index end() const { return end_; }
    [[nodiscard]] std::size_t size() const { return end_ > begin_ ? static_cast<std::size_t>(end_ - begin_) : 0; }
    [[nodiscard]] std::size_t grainsize() const { return grain_; }
    /// Pieces of grain length.
    [[nodiscard]] std::vector<blocked_range> pieces() const
    {
        std::vector<blocked_range> list;
        for (Index first = begin_; first < end_;) {
            const Index last = static_cast<std::size_t>(end_ - first) > grain_ ? static_cast<Index>(first + static_cast<Index>(grain_)) : end_;
            list.emplace_back(first, last, grain_);
            first = last;
        }
        return list;
    }

private:
    Index begin_, end_;
    std::size_t grain_;
};

template <class Index, class Body> void parallel_for(const blocked_range<Index>& range, const Body& body)
{
    const auto pieces = range.pieces();
    stand_in::run(pieces.size(), [&](std::size_t n) { body(pieces[n]); });
}

template <class Index, class Body>
    requires std::is_integral_v<Index>
void parallel_for(Index first, Index last, const Body& body)
{
    if (last > first)
        stand_in::run(static_cast<std::size_t>(last - first), [&](std::size_t n) { body(static_cast<Index>(first + static_cast<Index>(n))); });
}

template <class Range, class Value, class Body, class Join>
Value parallel_reduce(const Range& range, const Value& identity, const Body& body, const Join& join)
{
    const auto pieces = range.pieces();
    std::vector<Value> parts(pieces.size(), identity);
    stand_in::run(pieces.size(), [&](std::size_t n) { parts[n] = body(pieces[n], identity); });
    Value result = identity;
    for (const Value& part : parts)
        result = join(result, part);
    return result;
}

/// One object per thread that asks for it, made by a function or from the arguments given.
template <class T> class enumerable_thread_specific {
public:
    template <class... Arguments> explicit enumerable_thread_specific(Arguments... arguments)
        : make_([=] {
              if constexpr ((sizeof...(Arguments) == 1) && (std::is_invocable_r_v<T, Arguments> && ...))
                  return std::make_unique<T>(arguments()...);
              else
                  return std::make_unique<T>(arguments...);
          })
    {
    }
    class iterator {
    public:
        using Place = typename std::vector<std::pair<std::thread::id, std::unique_ptr<T>>>::const_iterator;
        explicit iterator(Place place) : place_(place) {}
        T& operator*() const { return *place_->second; }
        iterator& operator++()
        {
            ++place_;
            return *this;
        }
        friend bool operator==(const iterator&, const iterator&) = default;

    private:
        Place place_;
    };
    [[nodiscard]] iterator begin() const { return iterator(items_.begin()); }
    [[nodiscard]] iterator end() const { return iterator(items_.end()); }
    T& local()
    {
        const std::lock_guard lock(guard_);
        for (auto& [owner, value] : items_)
            if (owner == std::this_thread::get_id())
                return *value;
        items_.emplace_back(std::this_thread::get_id(), make_());
        return *items_.back().second;
    }

private:
    std::function<std::unique_ptr<T>()> make_;
    std::mutex guard_;
    std::vector<std::pair<std::thread::id, std::unique_ptr<T>>> items_;
};

class global_control {
public:
    enum parameter { max_allowed_parallelism };
    global_control(parameter, std::size_t value) : former_(stand_in::most_threads().exchange(value)) {}
    ~global_control() { stand_in::most_threads() = former_; }
    global_control(const global_control&) = delete;
    global_control& operator=(const global_control&) = delete;

private:
    std::size_t former_;
};

/// Work beside that of the thread that waits for it.
class task_group {
public:
    task_group() = default;
    ~task_group() { join(); }
    task_group(const task_group&) = delete;
    task_group& operator=(const task_group&) = delete;
    template <class Work> void run(Work work)
    {
        threads_.emplace_back([this, work] {
            try {
                work();
            } catch (...) {
                const std::lock_guard lock(guard_);
                if (!failure_)
                    failure_ = std::current_exception();
            }
        });
    }
    /// What runs goes on to its end; its failure is of no interest any more.
    void cancel() { cancelled_ = true; }
    void wait()
    {
        join();
        if (std::exchange(cancelled_, false))
            failure_ = nullptr;
        if (failure_)
            std::rethrow_exception(std::exchange(failure_, nullptr));
    }

private:
    void join()
    {
        for (std::thread& one : threads_)
            one.join();
        threads_.clear();
    }

    std::mutex guard_;
    std::exception_ptr failure_;
    bool cancelled_ = false; ///< of the thread that waits
    std::vector<std::thread> threads_;
};

namespace this_task_arena {
inline int max_concurrency()
{
    return static_cast<int>(stand_in::most_threads().load());
}
template <class Work> auto isolate(const Work& work)
{
    return work();
}
} // namespace this_task_arena

class task_arena {
public:
    explicit task_arena(int = 0) {}
    template <class Work> auto execute(const Work& work) { return work(); }
};

namespace info {
inline int default_concurrency()
{
    return static_cast<int>(stand_in::most_threads().load());
}
} // namespace info

} // namespace tbb
