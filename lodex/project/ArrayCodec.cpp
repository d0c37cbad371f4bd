#include "ArrayCodec.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <libdeflate.h>
#include <memory>
#include <new>

namespace lodex {

namespace {

/// Grid data is written often and read often: the fastest level loses a tenth of the size against the usual one.
constexpr int level = 1;

/// A chunk that keeps more than this share of its size stays plain: numbers that are mostly noise take longest to
/// deflate and gain least.
constexpr double worthwhile = 0.75;

/// A plane of bytes whose pieces keep more than this share is stored: deflating and inflating it takes longer than its
/// bytes take on the way to a disk and back.
constexpr double hard = 0.55;

struct Free {
    void operator()(libdeflate_compressor* compressor) const { libdeflate_free_compressor(compressor); }
    void operator()(libdeflate_decompressor* decompressor) const { libdeflate_free_decompressor(decompressor); }
};

libdeflate_compressor& compressor()
{
    thread_local const std::unique_ptr<libdeflate_compressor, Free> one(libdeflate_alloc_compressor(level));
    if (!one)
        throw std::bad_alloc();
    return *one;
}

libdeflate_decompressor& decompressor()
{
    thread_local const std::unique_ptr<libdeflate_decompressor, Free> one(libdeflate_alloc_decompressor());
    if (!one)
        throw std::bad_alloc();
    return *one;
}

template <std::size_t Width> void shuffle(const std::byte* from, std::size_t count, std::byte* to)
{
    for (std::size_t plane = 0; plane < Width; ++plane)
        for (std::size_t i = 0; i < count; ++i)
            to[plane * count + i] = from[i * Width + plane];
}

/// In blocks that stay in the nearest cache, as the planes lie far apart.
template <std::size_t Width> void unshuffle(const std::byte* from, std::size_t count, std::byte* to)
{
    constexpr std::size_t block = 512;
    for (std::size_t first = 0; first < count; first += block) {
        const std::size_t end = std::min(count, first + block);
        for (std::size_t plane = 0; plane < Width; ++plane)
            for (std::size_t i = first; i < end; ++i)
                to[i * Width + plane] = from[plane * count + i];
    }
}

/// All first bytes of the values, then all second ones and so on, as the file format's filter does it.
void shuffle(std::span<const std::byte> values, std::size_t width, std::byte* to)
{
    if (width == 4)
        shuffle<4>(values.data(), values.size() / 4, to);
    else if (width == 8)
        shuffle<8>(values.data(), values.size() / 8, to);
    else
        std::ranges::copy(values, to);
}

/// Share of its size that a plane of bytes keeps, judged by some pieces of it.
double compressibility(std::span<const std::byte> plane)
{
    constexpr std::size_t piece = 4096, pieces = 2;
    if (plane.size() < 8 * piece)
        return 0;
    std::array<std::byte, piece> scratch;
    std::size_t after = 0;
    for (std::size_t n = 1; n <= pieces; ++n) {
        const std::size_t start = n * (plane.size() - piece) / (pieces + 1);
        const std::size_t size =
            libdeflate_deflate_compress(&compressor(), plane.data() + start, piece, scratch.data(), scratch.size());
        after += size ? size : piece;
    }
    return static_cast<double>(after) / (pieces * piece);
}

/// Bytes at the front that are hard to deflate: planes of low bits, which are noise in most numbers.
std::size_t noise_in_front(std::span<const std::byte> shuffled, std::size_t width)
{
    const std::size_t plane = shuffled.size() / width;
    std::size_t noise = 0;
    while (noise < width * plane && compressibility(shuffled.subspan(noise, plane)) > hard)
        noise += plane;
    return noise;
}

/// A zlib stream (RFC 1950) of the bytes, the first `stored` of them as stored blocks (RFC 1951, 3.2.4), the others
/// deflated. Its size; 0 when that is not below the room.
std::size_t write_stream(std::span<const std::byte> bytes, std::size_t stored, std::span<std::byte> room)
{
    constexpr std::size_t largest_block = 65535, block_head = 5, head = 2, tail = 4;
    const std::size_t blocks = (stored + largest_block - 1) / largest_block;
    if (head + stored + blocks * block_head + tail >= room.size())
        return 0;
    std::byte* out = room.data();
    *out++ = std::byte{0x78}; // deflate, window of 32 KiB
    *out++ = std::byte{0x01}; // fastest level; makes the two bytes a multiple of 31
    for (std::size_t done = 0; done < stored;) {
        const std::size_t size = std::min(largest_block, stored - done);
        *out++ = std::byte{0}; // stored, not the last block
        for (const std::size_t number : {size, ~size}) {
            *out++ = static_cast<std::byte>(number & 0xFF);
            *out++ = static_cast<std::byte>(number >> 8 & 0xFF);
        }
        out = std::copy_n(bytes.data() + done, size, out);
        done += size;
    }
    const std::size_t left = room.size() - static_cast<std::size_t>(out - room.data()) - tail;
    const std::size_t size =
        libdeflate_deflate_compress(&compressor(), bytes.data() + stored, bytes.size() - stored, out, left);
    if (size == 0)
        return 0;
    out += size;
    const std::uint32_t sum = libdeflate_adler32(1, bytes.data(), bytes.size());
    for (int shift = 24; shift >= 0; shift -= 8)
        *out++ = static_cast<std::byte>(sum >> shift & 0xFF);
    return static_cast<std::size_t>(out - room.data());
}

} // namespace

void encode_chunk(std::span<const std::byte> values, std::size_t width, EncodedChunk& chunk)
{
    thread_local std::vector<std::byte> shuffled;
    std::span<const std::byte> source = values;
    if (width > 1) {
        shuffled.resize(values.size());
        shuffle(values, width, shuffled.data());
        source = shuffled;
    }
    const auto room = static_cast<std::size_t>(worthwhile * static_cast<double>(values.size()));
    chunk.bytes.resize(room);
    const std::size_t size = write_stream(source, noise_in_front(source, width), chunk.bytes);
    chunk.bytes.resize(size);
    chunk.plain = size == 0;
}

bool decode_chunk(std::span<const std::byte> bytes, std::size_t width, std::span<std::byte> values,
                  std::vector<std::byte>& scratch)
{
    std::byte* target = values.data();
    if (width > 1) {
        scratch.resize(values.size());
        target = scratch.data();
    }
    std::size_t size = 0;
    if (libdeflate_zlib_decompress(&decompressor(), bytes.data(), bytes.size(), target, values.size(), &size) !=
            LIBDEFLATE_SUCCESS ||
        size != values.size())
        return false;
    if (width == 4)
        unshuffle<4>(target, values.size() / 4, values.data());
    else if (width == 8)
        unshuffle<8>(target, values.size() / 8, values.data());
    return true;
}

std::uint32_t checksum(std::span<const std::byte> bytes)
{
    return libdeflate_crc32(0, bytes.data(), bytes.size());
}

} // namespace lodex
