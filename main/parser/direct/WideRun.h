#pragma once

#include <bit>
#include <cstddef>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

/// Copies of ASCII into UTF-16, sixteen bytes at a time where the processor has the instructions
/// for it, up to a byte that is to be looked at: one of three that the caller names, one beyond
/// ASCII, and a control character.
namespace WideRun {

constexpr std::size_t c_step = 16;

/// In character data and comments, tabs and line feeds stop nothing; in values of attributes they
/// become blanks, so that they do.
enum class Controls
{
    StopAll,
    PassTabAndLineFeed
};

template <Controls controls>
struct Stops
{
    char first;
    char second;
    char third;

    bool operator()(char byte) const noexcept
    {
        if (byte == first || byte == second || byte == third)
            return true;
        if constexpr (controls == Controls::PassTabAndLineFeed) {
            if (byte == '\t' || byte == '\n')
                return false;
        }
        const auto value = static_cast<unsigned char>(byte);
        return value < 0x20 || value >= 0x80;
    }

#if defined(__SSE2__)
    /// Bit i stands for byte i of sixteen.
    unsigned Find(__m128i bytes) const noexcept
    {
        // As signed numbers, bytes beyond ASCII are below all others.
        __m128i stops = _mm_cmplt_epi8(bytes, _mm_set1_epi8(0x20));
        if constexpr (controls == Controls::PassTabAndLineFeed) {
            const __m128i passes = _mm_or_si128(_mm_cmpeq_epi8(bytes, _mm_set1_epi8('\t')),
                                                _mm_cmpeq_epi8(bytes, _mm_set1_epi8('\n')));
            stops = _mm_andnot_si128(passes, stops);
        }
        stops = _mm_or_si128(stops, _mm_cmpeq_epi8(bytes, _mm_set1_epi8(first)));
        stops = _mm_or_si128(stops, _mm_cmpeq_epi8(bytes, _mm_set1_epi8(second)));
        stops = _mm_or_si128(stops, _mm_cmpeq_epi8(bytes, _mm_set1_epi8(third)));
        return static_cast<unsigned>(_mm_movemask_epi8(stops));
    }
#endif
};

/// One byte at a time.
struct Portable
{
    template <class Stop>
    static const char* Copy(const char* at, const char* end, Stop stop, char16_t*& to,
                            const char16_t* room) noexcept
    {
        char16_t* next = to;
        while (at < end && next < room && !stop(*at))
            *next++ = static_cast<unsigned char>(*at++);
        to = next;
        return at;
    }

    template <class Stop>
    static const char* Skip(const char* at, const char* end, Stop stop) noexcept
    {
        while (at < end && !stop(*at))
            ++at;
        return at;
    }

    static const char* SkipAscii(const char* at, const char* end) noexcept
    {
        while (at < end && static_cast<unsigned char>(*at) < 0x80)
            ++at;
        return at;
    }
};

#if defined(__SSE2__)

/// Sixteen bytes at a time.
struct Vector
{
    template <class Stop>
    static const char* Copy(const char* at, const char* end, Stop stop, char16_t*& to,
                            const char16_t* room) noexcept
    {
        const __m128i zero = _mm_setzero_si128();
        char16_t* next = to;
        while (end - at >= std::ptrdiff_t{c_step} && room - next >= std::ptrdiff_t{c_step}) {
            const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(at));
            auto* const target = reinterpret_cast<__m128i*>(next);
            _mm_storeu_si128(target, _mm_unpacklo_epi8(bytes, zero));
            _mm_storeu_si128(target + 1, _mm_unpackhi_epi8(bytes, zero));
            const unsigned stops = stop.Find(bytes);
            if (stops != 0) {
                const int passed = std::countr_zero(stops);
                to = next + passed;
                return at + passed;
            }
            at += c_step;
            next += c_step;
        }
        to = next;
        return Portable::Copy(at, end, stop, to, room);
    }

    template <class Stop>
    static const char* Skip(const char* at, const char* end, Stop stop) noexcept
    {
        for (; end - at >= std::ptrdiff_t{c_step}; at += c_step) {
            const unsigned stops = stop.Find(_mm_loadu_si128(reinterpret_cast<const __m128i*>(at)));
            if (stops != 0)
                return at + std::countr_zero(stops);
        }
        return Portable::Skip(at, end, stop);
    }

    static const char* SkipAscii(const char* at, const char* end) noexcept
    {
        const auto load = [&at](int step) {
            return _mm_loadu_si128(reinterpret_cast<const __m128i*>(at) + step);
        };
        for (; end - at >= 4 * std::ptrdiff_t{c_step}; at += 4 * c_step) {
            const __m128i low = _mm_or_si128(load(0), load(1));
            const __m128i high = _mm_or_si128(load(2), load(3));
            if (_mm_movemask_epi8(_mm_or_si128(low, high)) != 0)
                break;
        }
        for (; end - at >= std::ptrdiff_t{c_step}; at += c_step) {
            const auto beyond = static_cast<unsigned>(_mm_movemask_epi8(load(0)));
            if (beyond != 0)
                return at + std::countr_zero(beyond);
        }
        return Portable::SkipAscii(at, end);
    }
};

using Best = Vector;

#else

using Best = Portable;

#endif

/// Copies bytes from `at` to `to`, which is moved behind the units written, up to a byte that
/// stops, to `end` or to the end of the room, and returns where it stopped. What lies in the room
/// behind the units written is left with anything.
template <class Stop>
const char* Copy(const char* at, const char* end, Stop stop, char16_t*& to,
                 const char16_t* room) noexcept
{
    return Best::Copy(at, end, stop, to, room);
}

/// The same without a copy.
template <class Stop>
const char* Skip(const char* at, const char* end, Stop stop) noexcept
{
    return Best::Skip(at, end, stop);
}

/// The first byte beyond ASCII, or `end`.
inline const char* SkipAscii(const char* at, const char* end) noexcept
{
    return Best::SkipAscii(at, end);
}

} // namespace WideRun
