#include "ProjectArrays.h"

#include "lodex/volumes/model/LargeArray.h"

#include <algorithm>
#include <utility>

namespace lodex {

namespace {

template <class T> std::vector<T> values_of(const ProjectFile& file, const StoredArray& array, const ProgressCheck& check)
{
    auto values = make_array<T>(array.count);
    file.read(array, std::as_writable_bytes(std::span(values)), check);
    return values;
}

} // namespace

ProjectArrays::ProjectArrays(std::shared_ptr<const ProjectFile> file, const StoredGrid& grid)
    : file_(std::move(file)), grid_(grid.name), pillars_(grid.pillars), corner_depths_(grid.corner_depths),
      active_flags_(grid.active_flags), properties_(grid.properties), regions_(grid.regions)
{
}

const StoredArray& ProjectArrays::stored(const GridArray& array) const
{
    switch (array.kind) {
    case GridArray::Pillars:
        return pillars_;
    case GridArray::CornerDepths:
        return corner_depths_;
    case GridArray::ActiveFlags:
        return active_flags_;
    case GridArray::PropertyValues:
        return properties_[array.position];
    case GridArray::RegionFlags:
        break;
    }
    return regions_[array.position];
}

ArrayValues ProjectArrays::load(const GridArray& array, const ProgressCheck& check)
{
    const StoredArray& from = stored(array);
    switch (from.type) {
    case NumberType::Float32:
        return values_of<float>(*file_, from, check);
    case NumberType::Float64:
        return values_of<double>(*file_, from, check);
    case NumberType::Int32:
        return values_of<std::int32_t>(*file_, from, check);
    case NumberType::Int64:
    case NumberType::UInt8:
        break;
    }
    auto flags = values_of<std::uint8_t>(*file_, from, check);
    if (std::ranges::any_of(flags, [](std::uint8_t flag) { return flag > 1; }))
        file_->fail(from.path + " of SGrid \"" + grid_ + "\" is damaged: a flag is neither 0 nor 1");
    return flags;
}

} // namespace lodex
