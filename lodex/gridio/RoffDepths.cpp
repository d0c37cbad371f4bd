#include <lodex/gridio/RoffDepths.h>

#include <lodex/gridio/FloatFit.h>
#include <lodex/gridio/Transpose.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <limits>
#include <tbb/blocked_range.h>
#include <tbb/parallel_for.h>
#include <type_traits>

namespace lodex::roff {

namespace {

template <class Depth> using Bits = std::conditional_t<sizeof(Depth) == 4, std::uint32_t, std::uint64_t>;
template <class Depth> constexpr Bits<Depth> magnitude = std::numeric_limits<Bits<Depth>>::max() >> 1; // but the sign
template <class Depth>
constexpr Bits<Depth> lowest_of_exponent = Bits<Depth>{1} << (std::numeric_limits<Depth>::digits - 1);

/// The highest bit is set when the depth is no finite number: the exponent carries over when it is the largest one.
template <class Depth> Bits<Depth> odd_bits(Depth depth)
{
    return (std::bit_cast<Bits<Depth>>(depth) & magnitude<Depth>) + lowest_of_exponent<Depth>;
}
template <class Depth> bool is_odd(Bits<Depth> bits)
{
    return (bits & ~magnitude<Depth>) != 0;
}

constexpr std::int64_t chunk = 256; ///< nodes along I that are looked at together, which stay in the first cache

/// Nodes of a chunk on as many levels as are transposed at a time.
template <class Depth> struct Scratch {
    std::array<std::array<std::uint8_t, chunk>, transpose_block> splits;
    std::array<std::array<Depth, chunk>, transpose_block> firsts;
    std::array<std::uint32_t, chunk> sums;
    std::array<std::uint32_t, chunk> counts;
};

/// Rows of depths round nodes: below the south and north side, above the south and north side of them.
template <class Depth> using Rows = std::array<const Depth*, 4>;

/// Nodes whose west side stands at places 0, 2, 4, ... of the rows and their east side behind it.
template <class Depth>
Bits<Depth> compare(const Rows<Depth>& rows, std::size_t nodes, std::uint32_t* counts, std::uint8_t* splits,
                    Depth* firsts, std::uint32_t* sums)
{
    const auto bits = [](Depth depth) { return std::bit_cast<Bits<Depth>>(depth); };
    const auto fold = [](Bits<Depth> value) { // 32 bits are compared in vectors on every processor
        if constexpr (sizeof(value) == 8) {
            return static_cast<std::uint32_t>(value | value >> 32);
        } else {
            return value;
        }
    };
    const Depth* const bs = rows[0];
    const Depth* const bn = rows[1];
    const Depth* const as = rows[2];
    const Depth* const an = rows[3];
    Bits<Depth> odd = 0;
    for (std::size_t n = 0; n < nodes; ++n) {
        const Bits<Depth> first = bits(bs[2 * n]);
        const Bits<Depth> bse = bits(bs[2 * n + 1]), bnw = bits(bn[2 * n]), bne = bits(bn[2 * n + 1]);
        const Bits<Depth> sides = (first ^ bits(as[2 * n])) | (bse ^ bits(as[2 * n + 1])) | (bnw ^ bits(an[2 * n]))
            | (bne ^ bits(an[2 * n + 1]));
        const Bits<Depth> all = sides | (first ^ bse) | (first ^ bnw) | (first ^ bne);
        counts[n] = fold(all) == 0 ? 1U : fold(sides) == 0 ? 4U : 8U;
        firsts[n] = std::bit_cast<Depth>(first ^ ~magnitude<Depth>);
        odd |= (first & magnitude<Depth>) + lowest_of_exponent<Depth>;
    }
    for (std::size_t n = 0; n < nodes; ++n) {
        splits[n] = static_cast<std::uint8_t>(counts[n]);
        sums[n] += counts[n];
    }
    return odd;
}

/// The largest rest of a row beyond 32 bits; not finite when a depth is too large for them.
double rest_of(std::span<const double> row)
{
    constexpr std::size_t lanes = 4;
    std::array<float, lanes * 32> rounded;
    std::array<double, lanes> largest{};
    bool too_large = false;
    for (std::size_t first = 0; first < row.size(); first += rounded.size()) {
        const auto part = row.subspan(first, std::min(rounded.size(), row.size() - first));
        narrow(part, rounded);
        std::uint32_t odd = 0;
        for (std::size_t n = 0; n < part.size(); ++n) {
            const double rest = std::fabs(part[n] - static_cast<double>(rounded[n]));
            double& most = largest[n % lanes];
            most = rest > most ? rest : most;
            odd |= odd_bits(rounded[n]);
        }
        too_large = too_large || is_odd<float>(odd);
    }
    return too_large ? std::numeric_limits<double>::infinity() : *std::max_element(largest.begin(), largest.end());
}

void raise(std::atomic<double>& to, double value)
{
    double now = to.load(std::memory_order_relaxed);
    while (value > now && !to.compare_exchange_weak(now, value)) {
    }
}

} // namespace

template <class Depth>
NodeDepths<Depth>::NodeDepths(const GridSize& size, std::span<const Depth> depths,
                              const std::function<void(std::int64_t)>& tick)
    : size_(size), depths_(depths), levels_(static_cast<std::size_t>(size[2] + 1)),
      splits_(static_cast<std::size_t>((size[0] + 1) * (size[1] + 1)) * levels_), firsts_(splits_.get().size()),
      sums_(static_cast<std::size_t>((size[0] + 1) * (size[1] + 1)))
{
    const auto [ni, nj, nk] = size_;
    constexpr std::int64_t batch = 64;
    constexpr std::int64_t grain = 4;
    for (std::int64_t j = 0; j <= nj; j += batch) {
        const std::int64_t end = std::min(j + batch, nj + 1);
        tbb::parallel_for(tbb::blocked_range<std::int64_t>(j, end, grain),
                          [this](const auto& range) { find_rows(range.begin(), range.end()); });
        tick((ni + 1) * (end - j) * (nk + 1));
    }
    constexpr std::size_t block_values = std::size_t{1} << 20;
    std::size_t values = 0;
    block_starts_.push_back(0);
    for (std::int64_t i = 0; i <= ni; ++i) {
        std::size_t column = 0;
        for (std::int64_t j = 0; j <= nj; ++j) {
            column += sums_[pillar(i, j)];
        }
        count_ += column;
        if (values > 0 && values + column > block_values && i % tile_columns == 0) {
            block_starts_.push_back(i);
            values = 0;
        }
        values += column;
    }
    block_starts_.push_back(ni + 1);
}

template <class Depth> void NodeDepths<Depth>::find_rows(std::int64_t j0, std::int64_t j1)
{
    const auto [ni, nj, nk] = size_;
    const auto scratch = std::make_unique_for_overwrite<Scratch<Depth>>();
    const auto column = static_cast<std::ptrdiff_t>((nj + 1) * (nk + 1));
    Bits<Depth> odd = 0;
    double rest = 0;
    for (std::int64_t j = j0; j < j1; ++j) {
        // Corners that there are none of, at the outside, are those of the neighbour.
        const std::int64_t south = std::max<std::int64_t>(2 * j - 1, 0);
        const std::int64_t north = std::min(2 * j, 2 * nj - 1);
        for (std::int64_t i0 = 0; i0 <= ni; i0 += chunk) {
            const std::int64_t i1 = std::min(i0 + chunk, ni + 1);
            const auto width = static_cast<std::size_t>(i1 - i0);
            scratch->sums.fill(0);
            for (std::int64_t kk0 = 0; kk0 <= nk; kk0 += static_cast<std::int64_t>(transpose_block)) {
                const std::int64_t count = std::min(nk + 1 - kk0, static_cast<std::int64_t>(transpose_block));
                for (std::int64_t n = 0; n < count; ++n) {
                    const std::int64_t level = nk - kk0 - n;
                    const std::int64_t below = std::min(2 * level, 2 * nk - 1);
                    const std::int64_t above = std::max<std::int64_t>(2 * level - 1, 0);
                    const Rows<Depth> rows{row(below, south), row(below, north), row(above, south),
                                           row(above, north)};
                    auto& splits = scratch->splits[static_cast<std::size_t>(n)];
                    auto& firsts = scratch->firsts[static_cast<std::size_t>(n)];
                    const auto look = [&](const Rows<Depth>& at, std::int64_t first, std::int64_t end) {
                        const auto place = static_cast<std::size_t>(first - i0);
                        odd |= compare<Depth>(at, static_cast<std::size_t>(end - first), scratch->counts.data(),
                                              splits.data() + place, firsts.data() + place,
                                              scratch->sums.data() + place);
                    };
                    const auto edge = [&](std::int64_t i, std::int64_t x) {
                        std::array<std::array<Depth, 2>, 4> twice;
                        Rows<Depth> at;
                        for (std::size_t r = 0; r < rows.size(); ++r) {
                            twice[r].fill(rows[r][x]);
                            at[r] = twice[r].data();
                        }
                        look(at, i, i + 1);
                    };
                    const std::int64_t inner = std::max<std::int64_t>(i0, 1);
                    const std::int64_t inner_end = std::min(i1, ni);
                    if (i0 == 0) {
                        edge(0, 0);
                    }
                    if (inner < inner_end) {
                        Rows<Depth> at = rows;
                        for (auto& r : at) {
                            r += 2 * inner - 1;
                        }
                        look(at, inner, inner_end);
                    }
                    if (i1 == ni + 1) {
                        edge(ni, 2 * ni - 1);
                    }
                    if constexpr (std::is_same_v<Depth, double>) {
                        const std::int64_t x0 = std::max<std::int64_t>(2 * i0 - 1, 0);
                        const std::int64_t x1 = std::min(2 * i1 - 1, 2 * ni);
                        for (const double* const r : rows) {
                            rest = std::max(rest, rest_of({r + x0, static_cast<std::size_t>(x1 - x0)}));
                        }
                    }
                }
                const std::size_t to = pillar(i0, j) * levels_ + static_cast<std::size_t>(kk0);
                transpose(scratch->splits[0].data(), chunk, static_cast<std::size_t>(count), width,
                          splits_.data() + to, column);
                transpose(scratch->firsts[0].data(), chunk, static_cast<std::size_t>(count), width,
                          firsts_.data() + to, column);
            }
            for (std::size_t n = 0; n < width; ++n) {
                sums_[pillar(i0 + static_cast<std::int64_t>(n), j)] = scratch->sums[n];
            }
        }
    }
    if (is_odd<Depth>(odd)) {
        odd_ = true;
    }
    if (std::isfinite(rest)) {
        raise(largest_rest_, rest);
    } else {
        too_large_ = true;
    }
}

template <class Depth>
void NodeDepths<Depth>::gather(std::int64_t i0, std::int64_t i1, std::int64_t j0, std::int64_t j1,
                               std::span<const std::size_t> starts, Depth* out)
{
    const auto [ni, nj, nk] = size_;
    struct Split {
        Depth* to;
        const Depth* first;
        const std::uint8_t* split;
        std::int64_t west, east, south, north;
    };
    std::vector<Split> list;
    for (std::int64_t j = j0; j < j1; ++j) {
        for (std::int64_t i = i0; i < i1; ++i) {
            const std::size_t number = pillar(i, j);
            Depth* const to = out + starts[number - pillar(i0, 0)];
            const Depth* const first = firsts_.data() + number * levels_;
            if (sums_[number] == levels_) {
                std::copy_n(first, levels_, to);
                continue;
            }
            list.push_back({to, first, splits_.data() + number * levels_, std::max<std::int64_t>(2 * i - 1, 0),
                            std::min(2 * i, 2 * ni - 1), std::max<std::int64_t>(2 * j - 1, 0) * 2 * ni,
                            std::min(2 * j, 2 * nj - 1) * 2 * ni});
        }
    }
    Bits<Depth> odd = 0;
    const auto put = [&odd](Depth*& to, Depth depth) {
        odd |= odd_bits(depth);
        *to++ = -depth;
    };
    // Level by level: neighbours lie close together there.
    for (std::int64_t kk = 0; kk <= nk; ++kk) {
        const std::int64_t level = nk - kk;
        const Depth* const below = row(std::min(2 * level, 2 * nk - 1), 0);
        const Depth* const above = row(std::max<std::int64_t>(2 * level - 1, 0), 0);
        for (Split& s : list) {
            const std::uint8_t split = s.split[kk];
            *s.to++ = s.first[kk];
            if (split >= 4) {
                put(s.to, below[s.south + s.east]);
                put(s.to, below[s.north + s.west]);
                put(s.to, below[s.north + s.east]);
            }
            if (split == 8) {
                put(s.to, above[s.south + s.west]);
                put(s.to, above[s.south + s.east]);
                put(s.to, above[s.north + s.west]);
                put(s.to, above[s.north + s.east]);
            }
        }
    }
    if (is_odd<Depth>(odd)) {
        odd_ = true;
    }
}

template <class Depth>
template <class Stored>
std::span<const Stored> NodeDepths<Depth>::block(std::size_t number, DepthPart part, RawBuffer& raw, RawBuffer& buffer)
{
    const std::int64_t nj = size_[1];
    const std::int64_t i0 = block_starts_[number];
    const std::int64_t i1 = block_starts_[number + 1];
    const auto pillars = static_cast<std::size_t>((i1 - i0) * (nj + 1));
    std::vector<std::size_t> starts(pillars + 1);
    for (std::size_t p = 0; p < pillars; ++p) {
        starts[p + 1] = starts[p] + sums_[pillar(i0, 0) + p];
    }
    const bool single = starts[pillars] == pillars * levels_;
    std::span<const Depth> values = firsts_.get().subspan(pillar(i0, 0) * levels_, pillars * levels_);
    if (!single) {
        const std::span<Depth> room = raw.room<Depth>(starts[pillars]);
        constexpr std::int64_t rows = 8;
        tbb::parallel_for(tbb::blocked_range<std::int64_t>(0, nj + 1, rows), [&](const auto& range) {
            gather(i0, i1, range.begin(), range.end(), starts, room.data());
        });
        values = room;
    }
    if constexpr (std::is_same_v<Depth, Stored>) {
        if (part == DepthPart::Negative) {
            return values;
        }
    }
    const std::span<Stored> room = buffer.room<Stored>(values.size());
    if constexpr (std::is_same_v<Depth, double>) {
        constexpr std::size_t grain = 1 << 14;
        tbb::parallel_for(tbb::blocked_range<std::size_t>(0, values.size(), grain), [&](const auto& range) {
            const auto from = values.subspan(range.begin(), range.size());
            const auto to = room.subspan(range.begin(), range.size());
            if constexpr (std::is_same_v<Stored, float>) {
                narrow(from, to);
            } else {
                std::vector<float> rounded(from.size());
                narrow(from, rounded);
                for (std::size_t n = 0; n < from.size(); ++n) {
                    to[n] = static_cast<double>(rounded[n]) - from[n];
                }
            }
        });
    }
    return room;
}

template class NodeDepths<float>;
template class NodeDepths<double>;
template std::span<const float> NodeDepths<float>::block(std::size_t, DepthPart, RawBuffer&, RawBuffer&);
template std::span<const float> NodeDepths<double>::block(std::size_t, DepthPart, RawBuffer&, RawBuffer&);
template std::span<const double> NodeDepths<double>::block(std::size_t, DepthPart, RawBuffer&, RawBuffer&);

} // namespace lodex::roff
