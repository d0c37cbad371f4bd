#pragma once

#include "GridArrays.h"

#include <atomic>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <vector>

namespace lodex {

/// Which arrays of a grid are there, which still lie in a file, and which are lost. Safe from several threads.
class PendingArrays {
public:
    /// Everything is there.
    PendingArrays() = default;
    /// Nothing is there. Properties and regions are those of the header, in its order.
    PendingArrays(std::shared_ptr<GridArrays> source, const GridModel& header);

    [[nodiscard]] bool complete() const { return complete_.load(std::memory_order_acquire); }
    [[nodiscard]] bool is_there(const GridArray& array) const;
    /// Why the array is lost; empty when it is not.
    [[nodiscard]] std::string loss(const GridArray& array) const;
    /// Where the arrays come from that are not there; null when all are.
    [[nodiscard]] std::shared_ptr<GridArrays> source() const;

    /// Brings one array, or all. Throws FileError when one cannot be had (what is there stays), Cancelled.
    void bring(const GridArray& array, GridModel& model, const ProgressCheck& check = {});
    void bring_all(GridModel& model, const ProgressCheck& check = {});

    /// The same for callers that cannot handle a failure: an array that cannot be had is put down as lost, once in the log,
    /// and has undefined values from then on (NaN, the property's no-data value, the lowest code; flags 0).
    void bring_or_replace(const GridArray& array, GridModel& model);
    void bring_or_replace_all(GridModel& model);

    /// To be called after properties and regions of the model were changed, with nothing pending: what was lost stays lost
    /// until its values are replaced or gone.
    void follow(const GridModel& model);

private:
    enum class State : std::uint8_t { There, Pending, Lost };

    [[nodiscard]] State& state(const GridArray& array);
    [[nodiscard]] State state(const GridArray& array) const { return const_cast<PendingArrays*>(this)->state(array); }
    void bring_locked(const GridArray& array, GridModel& model, const ProgressCheck& check, bool replace);
    void note_if_complete();
    void bring_all_locked(GridModel& model, const ProgressCheck& check, bool replace);

    mutable std::recursive_mutex mutex_; ///< a progress check may draw a window, which asks for arrays
    std::atomic<bool> complete_{true};
    std::shared_ptr<GridArrays> source_;
    std::array<State, 3> geometry_{};
    std::vector<State> properties_;
    std::vector<State> regions_;
    std::string loss_;                ///< message of the first array that was lost
    std::set<const void*> lost_values_; ///< where the values of lost properties and regions stand
};

} // namespace lodex
