#pragma once

#include <lodex/gridio/RoffLayout.h>
#include <lodex/volumes/model/LargeArray.h>

#include <atomic>
#include <cstddef>
#include <functional>
#include <memory>
#include <span>
#include <vector>

namespace lodex::roff {

/// Memory for numbers of any type that is used again and again without being cleared.
class RawBuffer {
public:
    /// Room for `count` numbers of unknown values; what was there before is lost.
    template <class T> [[nodiscard]] std::span<T> room(std::size_t count)
    {
        if (count * sizeof(T) > size_) {
            bytes_.reset(); // first, for both need not fit
            size_ = count * sizeof(T);
            bytes_ = std::make_unique_for_overwrite<std::byte[]>(size_);
            advise_large_pages(bytes_.get(), size_);
        }
        return {reinterpret_cast<T*>(bytes_.get()), count};
    }

private:
    std::unique_ptr<std::byte[]> bytes_;
    std::size_t size_ = 0;
};

/// What of a depth is written: its negative (elevation), or what rounding it to 32 bits leaves over.
enum class DepthPart { Negative, Rest };

/// Depths of the corners of all cells gathered at the nodes, in the file's order.
///
/// One pass over the model finds how many depths each node needs and keeps the first of them; further depths, of nodes
/// where cells do not fit together, are looked up when they are asked for.
template <class Depth> class NodeDepths {
public:
    /// `depths` as in GridModel::zcorn, which must stay. tick(nodes) is called between parts of the work.
    NodeDepths(const GridSize& size, std::span<const Depth> depths,
               const std::function<void(std::int64_t nodes)>& tick);

    /// 1, 4 or 8 depths of each node.
    [[nodiscard]] std::span<const std::uint8_t> splits() const { return splits_.get(); }
    /// Depths of all nodes.
    [[nodiscard]] std::uint64_t count() const { return count_; }
    /// True when 32 bits hold all depths but for a finite rest.
    [[nodiscard]] bool fits_with_rest() const { return !too_large_; }
    /// The largest rest.
    [[nodiscard]] double largest_rest() const { return largest_rest_; }
    /// False when a depth was found that is no number; depths of blocks that were not made yet need not be known.
    [[nodiscard]] bool finite() const { return !odd_; }

    /// Columns of nodes along I that are handled together.
    [[nodiscard]] std::size_t blocks() const { return block_starts_.size() - 1; }
    /// Numbers of a block in the file's order, in one of the buffers or in this object. Runs on all threads.
    template <class Stored>
    [[nodiscard]] std::span<const Stored> block(std::size_t number, DepthPart part, RawBuffer& raw, RawBuffer& buffer);

private:
    /// A large array that is not cleared.
    template <class T> class Array {
    public:
        explicit Array(std::size_t size) : values_(buffer_.template room<T>(size)) {}
        [[nodiscard]] T* data() { return values_.data(); }
        [[nodiscard]] std::span<const T> get() const { return values_; }

    private:
        RawBuffer buffer_;
        std::span<T> values_;
    };

    void find_rows(std::int64_t j0, std::int64_t j1);
    void gather(std::int64_t i0, std::int64_t i1, std::int64_t j0, std::int64_t j1, std::span<const std::size_t> starts,
                Depth* out);
    [[nodiscard]] std::size_t pillar(std::int64_t i, std::int64_t j) const
    {
        return static_cast<std::size_t>(i * (size_[1] + 1) + j);
    }
    [[nodiscard]] const Depth* row(std::int64_t z, std::int64_t y) const
    {
        return depths_.data() + (z * 2 * size_[1] + y) * 2 * size_[0];
    }

    GridSize size_;
    std::span<const Depth> depths_;
    std::size_t levels_;              ///< nodes of a pillar
    Array<std::uint8_t> splits_;
    Array<Depth> firsts_;             ///< negative of the first depth of each node
    std::vector<std::uint32_t> sums_; ///< depths of each pillar
    std::vector<std::int64_t> block_starts_;
    std::uint64_t count_ = 0;
    std::atomic<bool> odd_{false};
    std::atomic<bool> too_large_{false};
    std::atomic<double> largest_rest_{0};
};

} // namespace lodex::roff
