#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

/// Checks of UTF-8 in steps of 64 bytes, for texts that are mostly beyond ASCII.
namespace Utf8Steps {

constexpr std::size_t c_size = 64;
/// What must be readable.
constexpr std::size_t c_readable = c_size + 1;

#ifdef __SSE2__

/// Which of the bytes have a property; bit i stands for byte i.
struct Leads
{
    std::uint64_t beyondAscii = 0;
    /// Leads of two bytes and more, of three and more, and of four.
    std::uint64_t two = 0;
    std::uint64_t three = 0;
    std::uint64_t four = 0;
};

inline __m128i IsAtLeast(__m128i bytes, unsigned least) noexcept
{
    const __m128i bound = _mm_set1_epi8(static_cast<char>(least));
    return _mm_cmpeq_epi8(_mm_max_epu8(bytes, bound), bytes);
}

/// Not zero where a byte occurs in no sequence, or begins one that its next byte makes too long,
/// half of a pair or too large.
inline __m128i FindForbidden(__m128i bytes, __m128i next) noexcept
{
    const auto is = [bytes](unsigned byte) {
        return _mm_cmpeq_epi8(bytes, _mm_set1_epi8(static_cast<char>(byte)));
    };
    const __m128i isFromA0 = IsAtLeast(next, 0xA0);
    const __m128i isFrom90 = IsAtLeast(next, 0x90);
    const __m128i isShort =
        _mm_or_si128(_mm_andnot_si128(isFromA0, is(0xE0)), _mm_andnot_si128(isFrom90, is(0xF0)));
    const __m128i isLarge =
        _mm_or_si128(_mm_and_si128(isFromA0, is(0xED)), _mm_and_si128(isFrom90, is(0xF4)));
    const __m128i isNoLead = _mm_or_si128(_mm_or_si128(is(0xC0), is(0xC1)), IsAtLeast(bytes, 0xF5));
    return _mm_or_si128(isNoLead, _mm_or_si128(isShort, isLarge));
}

inline bool IsAscii(const char* start) noexcept
{
    const auto* const vectors = reinterpret_cast<const __m128i*>(start);
    const auto load = [vectors](int i) { return _mm_loadu_si128(vectors + i); };
    const __m128i low = _mm_or_si128(load(0), load(1));
    const __m128i high = _mm_or_si128(load(2), load(3));
    return _mm_movemask_epi8(_mm_or_si128(low, high)) == 0;
}

/// How many of the bytes of a step are well-formed sequences, of which the first one begins with
/// the step: all but a last one that goes on behind the step; 0 when anything is wrong.
inline std::size_t CountValid(const char* start) noexcept
{
    constexpr std::size_t c_step = sizeof(__m128i);
    if (IsAscii(start))
        return c_size;
    Leads leads;
    __m128i forbidden = _mm_setzero_si128();
    for (std::size_t at = 0; at < c_size; at += c_step) {
        const auto load = [start, at](std::size_t offset) {
            return _mm_loadu_si128(reinterpret_cast<const __m128i*>(start + at + offset));
        };
        const auto mask = [at](__m128i bytes) {
            return std::uint64_t{static_cast<unsigned>(_mm_movemask_epi8(bytes))} << at;
        };
        const __m128i bytes = load(0);
        forbidden = _mm_or_si128(forbidden, FindForbidden(bytes, load(1)));
        leads.beyondAscii |= mask(bytes);
        leads.two |= mask(IsAtLeast(bytes, 0xC0));
        leads.three |= mask(IsAtLeast(bytes, 0xE0));
        leads.four |= mask(IsAtLeast(bytes, 0xF0));
    }
    const std::uint64_t continued = leads.two << 1 | leads.three << 2 | leads.four << 3;
    if ((leads.beyondAscii & ~leads.two) != continued || _mm_movemask_epi8(forbidden) != 0)
        return 0;
    // The leads of a sequence that is cut off.
    const std::uint64_t cut =
        (leads.two >> 63 << 63) | (leads.three >> 62 << 62) | (leads.four >> 61 << 61);
    return cut == 0 ? c_size : static_cast<std::size_t>(std::countr_zero(cut));
}

#else

/// Leaves everything to who looks at single sequences.
inline std::size_t CountValid(const char* /*start*/) noexcept
{
    return 0;
}

#endif

} // namespace Utf8Steps
