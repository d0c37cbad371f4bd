#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace lodex {

/// How one chunk of an array stands in a file: as the file format's shuffle filter and deflate filter leave it, or plain
/// where that gains little.
struct EncodedChunk {
    std::vector<std::byte> bytes; ///< of no meaning where plain: the values themselves stand in the file
    bool plain = false;
};

/// Most bytes that one byte of deflated data can stand for. Bounds what a damaged or hostile file can make us allocate.
inline constexpr std::uint64_t largest_deflate_ratio = 1032;

/// Encodes values of `width` bytes each (1, 4 or 8). Depends on the bytes alone. The chunk keeps its memory for the next.
void encode_chunk(std::span<const std::byte> values, std::size_t width, EncodedChunk& chunk);

/// Inflates and unshuffles a chunk that is not plain: fills `values`, whose size is that of the chunk. False when the bytes
/// do not stand for just so many. `scratch` is kept by the caller for the next chunk.
[[nodiscard]] bool decode_chunk(std::span<const std::byte> bytes, std::size_t width, std::span<std::byte> values,
                                std::vector<std::byte>& scratch);

/// CRC-32 as in zip files; what is stored for every chunk.
[[nodiscard]] std::uint32_t checksum(std::span<const std::byte> bytes);

} // namespace lodex
