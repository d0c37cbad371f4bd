#include "Fingerprint.h"

#include "upscaling/kernels/ParallelBlocks.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <vector>

namespace Kelvane {

namespace {

constexpr std::size_t word_bytes = sizeof(std::uint64_t);
constexpr std::size_t block_bytes = std::size_t{1} << 18;

/// One round of a multiply-rotate hash. For a given state different words make different states and the reverse.
constexpr std::uint64_t mixed(std::uint64_t state, std::uint64_t word)
{
    return std::rotl(state + word * 0xC2B2AE3D27D4EB4FULL, 31) * 0x9E3779B185EBCA87ULL;
}

} // namespace

void Fingerprint::add(std::uint64_t number)
{
    state_[0] = mixed(state_[0], number);
}

Fingerprint::State Fingerprint::of_block(std::span<const std::byte> bytes)
{
    State state{};
    constexpr std::size_t row_bytes = word_bytes * std::tuple_size_v<State>;
    const auto add_row = [&](const std::byte* row) {
        State words;
        std::memcpy(words.data(), row, row_bytes);
        for (std::size_t lane = 0; lane < state.size(); ++lane)
            state[lane] = mixed(state[lane], words[lane]);
    };
    std::size_t at = 0;
    for (; at + row_bytes <= bytes.size(); at += row_bytes)
        add_row(bytes.data() + at);
    if (at < bytes.size()) {
        std::array<std::byte, row_bytes> rest{};
        std::ranges::copy(bytes.subspan(at), rest.begin());
        add_row(rest.data());
    }
    return state;
}

void Fingerprint::add_bytes(std::span<const std::byte> bytes)
{
    std::vector<State> blocks((bytes.size() + block_bytes - 1) / block_bytes);
    for_blocks(static_cast<std::int64_t>(blocks.size()), {}, [&](std::int64_t block) {
        const std::size_t first = static_cast<std::size_t>(block) * block_bytes;
        blocks[static_cast<std::size_t>(block)] =
            of_block(bytes.subspan(first, std::min(block_bytes, bytes.size() - first)));
    });
    add(bytes.size());
    for (const State& block : blocks) {
        for (std::size_t lane = 0; lane < state_.size(); ++lane)
            state_[lane] = mixed(state_[lane], block[lane]);
    }
}

} // namespace Kelvane
