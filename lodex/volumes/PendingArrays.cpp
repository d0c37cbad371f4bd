#include "PendingArrays.h"

#include "lodex/utils/FileError.h"

#include <Lodex/utils/Logger.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace lodex {

namespace {

template <class T> T undefined_value(const PropertyData& property)
{
    if constexpr (std::is_floating_point_v<T>) {
        return std::numeric_limits<T>::quiet_NaN();
    } else {
        const double none = property.no_data.value_or(std::numeric_limits<double>::quiet_NaN());
        const bool fits = none >= std::numeric_limits<T>::min() && none <= std::numeric_limits<T>::max();
        return fits ? static_cast<T>(none) : std::numeric_limits<T>::min();
    }
}

/// Stays the same while the property moves within its list.
const void* place_of_values(const PropertyData& property)
{
    return std::visit([](const auto& values) -> const void* { return values.data(); }, property.values);
}

RealArray undefined_numbers(const RealArray& array, std::size_t length)
{
    if (array.is_double())
        return std::vector<double>(length, std::numeric_limits<double>::quiet_NaN());
    return std::vector<float>(length, std::numeric_limits<float>::quiet_NaN());
}

void make_undefined(const GridArray& array, GridModel& model)
{
    const std::size_t length = array_length(model, array);
    switch (array.kind) {
    case GridArray::Pillars:
        model.coord = undefined_numbers(model.coord, length);
        break;
    case GridArray::CornerDepths:
        model.zcorn = undefined_numbers(model.zcorn, length);
        break;
    case GridArray::ActiveFlags:
        model.active.assign(length, 0);
        break;
    case GridArray::PropertyValues: {
        PropertyData& property = model.properties[array.position];
        std::visit(
            [&](auto& values) {
                using T = typename std::remove_cvref_t<decltype(values)>::value_type;
                values.assign(length, undefined_value<T>(property));
            },
            property.values);
        break;
    }
    case GridArray::RegionFlags:
        model.regions[array.position].flags.assign(length, 0);
        break;
    }
}

/// Puts values in their place. The alternative held before tells the type that the grid keeps.
void put(const GridArray& array, ArrayValues values, GridModel& model)
{
    const auto numbers = [&](RealArray& target) {
        if (auto* narrow = std::get_if<std::vector<float>>(&values))
            target = std::move(*narrow);
        else
            target = std::get<std::vector<double>>(std::move(values));
    };
    switch (array.kind) {
    case GridArray::Pillars:
        numbers(model.coord);
        break;
    case GridArray::CornerDepths:
        numbers(model.zcorn);
        break;
    case GridArray::ActiveFlags:
        model.active = std::get<std::vector<std::uint8_t>>(std::move(values));
        break;
    case GridArray::PropertyValues:
        std::visit(
            [&](auto& target) { target = std::get<std::remove_cvref_t<decltype(target)>>(std::move(values)); },
            model.properties[array.position].values);
        break;
    case GridArray::RegionFlags:
        model.regions[array.position].flags = std::get<std::vector<std::uint8_t>>(std::move(values));
        break;
    }
}

} // namespace

std::size_t array_length(const GridModel& model, const GridArray& array)
{
    switch (array.kind) {
    case GridArray::Pillars:
        return static_cast<std::size_t>(6 * model.pillars());
    case GridArray::CornerDepths:
        return static_cast<std::size_t>(8 * model.cells());
    case GridArray::PropertyValues:
        if (model.properties[array.position].on_points)
            return static_cast<std::size_t>((model.size[0] + 1) * (model.size[1] + 1) * (model.size[2] + 1));
        break;
    case GridArray::ActiveFlags:
    case GridArray::RegionFlags:
        break;
    }
    return static_cast<std::size_t>(model.cells());
}

PendingArrays::PendingArrays(std::shared_ptr<GridArrays> source, const GridModel& header)
    : complete_(false), source_(std::move(source)), properties_(header.properties.size(), State::Pending),
      regions_(header.regions.size(), State::Pending)
{
    geometry_.fill(State::Pending);
}

PendingArrays::State& PendingArrays::state(const GridArray& array)
{
    if (array.kind == GridArray::PropertyValues)
        return properties_[array.position];
    if (array.kind == GridArray::RegionFlags)
        return regions_[array.position];
    return geometry_[array.kind];
}

bool PendingArrays::is_there(const GridArray& array) const
{
    if (complete())
        return true;
    const std::lock_guard lock(mutex_);
    return complete() || state(array) == State::There;
}

std::string PendingArrays::loss(const GridArray& array) const
{
    const std::lock_guard lock(mutex_);
    return !complete() && state(array) == State::Lost ? loss_ : std::string();
}

std::shared_ptr<GridArrays> PendingArrays::source() const
{
    const std::lock_guard lock(mutex_);
    return source_;
}

void PendingArrays::bring(const GridArray& array, GridModel& model, const ProgressCheck& check)
{
    if (complete())
        return;
    const std::lock_guard lock(mutex_);
    bring_locked(array, model, check, false);
}

void PendingArrays::bring_all(GridModel& model, const ProgressCheck& check)
{
    if (complete())
        return;
    const std::lock_guard lock(mutex_);
    bring_all_locked(model, check, false);
}

void PendingArrays::bring_or_replace(const GridArray& array, GridModel& model)
{
    if (complete())
        return;
    const std::lock_guard lock(mutex_);
    bring_locked(array, model, {}, true);
}

void PendingArrays::bring_or_replace_all(GridModel& model)
{
    if (complete())
        return;
    const std::lock_guard lock(mutex_);
    bring_all_locked(model, {}, true);
}

void PendingArrays::bring_all_locked(GridModel& model, const ProgressCheck& check, bool replace)
{
    for (const auto kind : {GridArray::Pillars, GridArray::CornerDepths, GridArray::ActiveFlags})
        bring_locked({kind, 0}, model, check, replace);
    for (std::size_t i = 0; i < properties_.size(); ++i)
        bring_locked({GridArray::PropertyValues, i}, model, check, replace);
    for (std::size_t i = 0; i < regions_.size(); ++i)
        bring_locked({GridArray::RegionFlags, i}, model, check, replace);
}

void PendingArrays::bring_locked(const GridArray& array, GridModel& model, const ProgressCheck& check, bool replace)
{
    if (complete())
        return;
    State& now = state(array);
    if (now == State::Lost && !replace)
        throw ModelError(loss_);
    if (now != State::Pending)
        return;
    const std::shared_ptr<GridArrays> source = source_; // goes with the last array, which may come while this one does
    try {
        ArrayValues values = source->load(array, check);
        if (now != State::Pending)
            return; // brought while the check ran; spans of it may be in use
        put(array, std::move(values), model);
        now = State::There;
    } catch (const FileError& error) {
        if (!replace || now != State::Pending)
            throw;
        make_undefined(array, model);
        now = State::Lost;
        if (array.kind == GridArray::PropertyValues)
            lost_values_.insert(place_of_values(model.properties[array.position]));
        else if (array.kind == GridArray::RegionFlags)
            lost_values_.insert(model.regions[array.position].flags.data());
        if (loss_.empty())
            loss_ = error.what();
        Lodex::Logger::log(Lodex::LogLevel::Error, std::string(error.what()) + "; shown without values\n");
    }
    note_if_complete();
}

void PendingArrays::note_if_complete()
{
    const auto there = [](State one) { return one == State::There; };
    if (std::ranges::all_of(geometry_, there) && std::ranges::all_of(properties_, there) &&
        std::ranges::all_of(regions_, there)) {
        source_.reset();
        complete_.store(true, std::memory_order_release);
    }
}

void PendingArrays::follow(const GridModel& model)
{
    if (complete())
        return;
    const std::lock_guard lock(mutex_);
    std::set<const void*> still_lost;
    const auto state_of = [&](const void* values) {
        if (!lost_values_.contains(values))
            return State::There;
        still_lost.insert(values);
        return State::Lost;
    };
    properties_.clear();
    for (const PropertyData& property : model.properties)
        properties_.push_back(state_of(place_of_values(property)));
    regions_.clear();
    for (const RegionData& region : model.regions)
        regions_.push_back(state_of(region.flags.data()));
    lost_values_ = std::move(still_lost);
    note_if_complete();
}

} // namespace lodex
