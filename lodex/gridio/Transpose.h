#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace lodex {

/// Rows and columns that are transposed in registers and write whole cache lines of 32-bit values.
inline constexpr std::size_t transpose_block = 16;

namespace transpose_detail {

#if defined(__SSE2__)

template <class T> __m128i load(const T* from)
{
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
}
template <class T> void store(T* to, __m128i value)
{
    _mm_storeu_si128(reinterpret_cast<__m128i*>(to), value);
}

/// 16 x 16 values of one byte.
inline void block(const std::uint8_t* from, std::ptrdiff_t row, std::uint8_t* to, std::ptrdiff_t column)
{
    __m128i a[transpose_block], b[transpose_block];
    for (std::size_t n = 0; n < transpose_block; ++n) {
        a[n] = load(from + static_cast<std::ptrdiff_t>(n) * row);
    }
    // Each step interleaves rows that lie half of all apart; after four of them rows are columns.
    const auto step = [](const __m128i* in, __m128i* out) {
        for (std::size_t n = 0; n < transpose_block / 2; ++n) {
            out[2 * n] = _mm_unpacklo_epi8(in[n], in[n + transpose_block / 2]);
            out[2 * n + 1] = _mm_unpackhi_epi8(in[n], in[n + transpose_block / 2]);
        }
    };
    step(a, b);
    step(b, a);
    step(a, b);
    step(b, a);
    for (std::size_t n = 0; n < transpose_block; ++n) {
        store(to + static_cast<std::ptrdiff_t>(n) * column, a[n]);
    }
}

/// 16 x 16 values of four bytes, which are bits only.
template <class T>
    requires(sizeof(T) == 4)
void block(const T* from, std::ptrdiff_t row, T* to, std::ptrdiff_t column)
{
    constexpr std::ptrdiff_t lanes = 4;
    for (std::ptrdiff_t x = 0; x < static_cast<std::ptrdiff_t>(transpose_block); x += lanes) {
        for (std::ptrdiff_t y = 0; y < static_cast<std::ptrdiff_t>(transpose_block); y += lanes) {
            const T* const at = from + y * row + x;
            const __m128i r0 = load(at), r1 = load(at + row), r2 = load(at + 2 * row), r3 = load(at + 3 * row);
            const __m128i low01 = _mm_unpacklo_epi32(r0, r1), low23 = _mm_unpacklo_epi32(r2, r3);
            const __m128i high01 = _mm_unpackhi_epi32(r0, r1), high23 = _mm_unpackhi_epi32(r2, r3);
            T* const out = to + x * column + y;
            store(out, _mm_unpacklo_epi64(low01, low23));
            store(out + column, _mm_unpackhi_epi64(low01, low23));
            store(out + 2 * column, _mm_unpacklo_epi64(high01, high23));
            store(out + 3 * column, _mm_unpackhi_epi64(high01, high23));
        }
    }
}

/// 16 x 16 values of eight bytes.
template <class T>
    requires(sizeof(T) == 8)
void block(const T* from, std::ptrdiff_t row, T* to, std::ptrdiff_t column)
{
    constexpr std::ptrdiff_t lanes = 2;
    for (std::ptrdiff_t x = 0; x < static_cast<std::ptrdiff_t>(transpose_block); x += lanes) {
        for (std::ptrdiff_t y = 0; y < static_cast<std::ptrdiff_t>(transpose_block); y += lanes) {
            const __m128i r0 = load(from + y * row + x), r1 = load(from + (y + 1) * row + x);
            store(to + x * column + y, _mm_unpacklo_epi64(r0, r1));
            store(to + (x + 1) * column + y, _mm_unpackhi_epi64(r0, r1));
        }
    }
}

#else

template <class T> void block(const T* from, std::ptrdiff_t row, T* to, std::ptrdiff_t column)
{
    for (std::ptrdiff_t x = 0; x < static_cast<std::ptrdiff_t>(transpose_block); ++x) {
        for (std::ptrdiff_t y = 0; y < static_cast<std::ptrdiff_t>(transpose_block); ++y) {
            to[x * column + y] = from[y * row + x];
        }
    }
}

#endif

} // namespace transpose_detail

/// Puts the value of row y and column x of `from` at y of column x of `to`. `row` is the distance of two rows of
/// `from`, negative ones too, `column` that of two columns of `to`, in values.
template <class T>
void transpose(const T* from, std::ptrdiff_t row, std::size_t rows, std::size_t columns, T* to, std::ptrdiff_t column)
{
    std::size_t y = 0;
    for (; y + transpose_block <= rows; y += transpose_block) {
        const T* const line = from + static_cast<std::ptrdiff_t>(y) * row;
        std::size_t x = 0;
        for (; x + transpose_block <= columns; x += transpose_block) {
            transpose_detail::block(line + x, row, to + static_cast<std::ptrdiff_t>(x) * column + y, column);
        }
        for (; x < columns; ++x) {
            T* const out = to + static_cast<std::ptrdiff_t>(x) * column + y;
            for (std::size_t n = 0; n < transpose_block; ++n) {
                out[n] = line[static_cast<std::ptrdiff_t>(n) * row + static_cast<std::ptrdiff_t>(x)];
            }
        }
    }
    for (; y < rows; ++y) {
        const T* const line = from + static_cast<std::ptrdiff_t>(y) * row;
        for (std::size_t x = 0; x < columns; ++x) {
            to[static_cast<std::ptrdiff_t>(x) * column + static_cast<std::ptrdiff_t>(y)] = line[x];
        }
    }
}

} // namespace lodex
