#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

/// Steps of sixteen characters for the loops over texts that are mostly ASCII. The pointers need
/// no alignment.
namespace AsciiSteps {

constexpr std::size_t c_step = 16;

inline bool IsAscii(const char* bytes) noexcept
{
    std::uint64_t words[2];
    std::memcpy(words, bytes, sizeof(words));
    return ((words[0] | words[1]) & 0x8080808080808080U) == 0;
}

inline bool IsAscii(const char16_t* units) noexcept
{
    std::uint64_t words[4];
    std::memcpy(words, units, sizeof(words));
    return ((words[0] | words[1] | words[2] | words[3]) & 0xFF80FF80FF80FF80U) == 0;
}

/// Copies a step for which IsAscii is true.
inline void Copy(const char* from, char16_t* to) noexcept
{
#ifdef __SSE2__
    const __m128i zero = _mm_setzero_si128();
    const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
    auto* const target = reinterpret_cast<__m128i*>(to);
    _mm_storeu_si128(target, _mm_unpacklo_epi8(bytes, zero));
    _mm_storeu_si128(target + 1, _mm_unpackhi_epi8(bytes, zero));
#else
    for (std::size_t i = 0; i < c_step; ++i)
        to[i] = static_cast<unsigned char>(from[i]);
#endif
}

/// Copies a step for which IsAscii is true.
inline void Copy(const char16_t* from, char* to) noexcept
{
#ifdef __SSE2__
    const auto* const source = reinterpret_cast<const __m128i*>(from);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(to),
                     _mm_packus_epi16(_mm_loadu_si128(source), _mm_loadu_si128(source + 1)));
#else
    for (std::size_t i = 0; i < c_step; ++i)
        to[i] = static_cast<char>(from[i]);
#endif
}

} // namespace AsciiSteps
