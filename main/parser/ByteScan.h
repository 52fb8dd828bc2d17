#pragma once

#include <bit>
#include <cstddef>
#include <cstring>
#include <string_view>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

/// Searches over bytes, sixteen at a time where the processor has the instructions for it. What to
/// look for is a pattern: a function object that tells whether there is a match at an address, and,
/// as `Matches`, the same for sixteen neighbouring addresses at once.
namespace ByteScan {

constexpr std::size_t c_npos = std::string_view::npos;

#if defined(__SSE2__)
inline __m128i Load(const char* p) noexcept
{
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
}

inline __m128i Equal(__m128i bytes, char c) noexcept
{
    return _mm_cmpeq_epi8(bytes, _mm_set1_epi8(c));
}
#endif

/// One of several bytes.
template <char First, char... Rest>
struct AnyOf
{
    bool operator()(const char* p) const noexcept { return *p == First || (... || (*p == Rest)); }
#if defined(__SSE2__)
    __m128i Matches(const char* p) const noexcept
    {
        const __m128i bytes = Load(p);
        __m128i found = Equal(bytes, First);
        ((found = _mm_or_si128(found, Equal(bytes, Rest))), ...);
        return found;
    }
#endif
};

/// `first` with `second` behind it, which must be readable for every address looked at.
struct Pair
{
    char first;
    char second;

    bool operator()(const char* p) const noexcept { return p[0] == first && p[1] == second; }
#if defined(__SSE2__)
    __m128i Matches(const char* p) const noexcept
    {
        return _mm_and_si128(Equal(Load(p), first), Equal(Load(p + 1), second));
    }
#endif
};

/// `c` with white space before it, which must be readable for every address looked at.
struct AfterWhitespace
{
    char c;

    bool operator()(const char* p) const noexcept
    {
        return *p == c && AnyOf<' ', '\t', '\n', '\r'>()(p - 1);
    }
#if defined(__SSE2__)
    __m128i Matches(const char* p) const noexcept
    {
        return _mm_and_si128(Equal(Load(p), c), AnyOf<' ', '\t', '\n', '\r'>().Matches(p - 1));
    }
#endif
};

/// The first position in [`from`, `end`) that matches, or npos.
template <class Pattern>
std::size_t FindFirst(const char* data, std::size_t from, std::size_t end, Pattern pattern) noexcept
{
#if defined(__SSE2__)
    while (from < end && end - from >= 64) {
        const __m128i low =
            _mm_or_si128(pattern.Matches(data + from), pattern.Matches(data + from + 16));
        const __m128i high =
            _mm_or_si128(pattern.Matches(data + from + 32), pattern.Matches(data + from + 48));
        if (_mm_movemask_epi8(_mm_or_si128(low, high)) != 0)
            break;
        from += 64;
    }
    while (from < end && end - from >= 16) {
        const auto found = static_cast<unsigned>(_mm_movemask_epi8(pattern.Matches(data + from)));
        if (found != 0)
            return from + static_cast<std::size_t>(std::countr_zero(found));
        from += 16;
    }
#endif
    for (; from < end; ++from) {
        if (pattern(data + from))
            return from;
    }
    return c_npos;
}

/// The first position not before `from` that holds `c`, or npos.
inline std::size_t FindByte(std::string_view text, char c, std::size_t from) noexcept
{
    if (from >= text.size())
        return c_npos;
    const void* found = std::memchr(text.data() + from, c, text.size() - from);
    return found == nullptr
               ? c_npos
               : static_cast<std::size_t>(static_cast<const char*>(found) - text.data());
}

/// The first position not before `from` where `sub` starts, or npos, with whatever the C library
/// offers for it.
inline std::size_t FindTextOfAnyKind(std::string_view text, std::string_view sub,
                                     std::size_t from) noexcept
{
#if defined(__GLIBC__)
    const void* found = ::memmem(text.data() + from, text.size() - from, sub.data(), sub.size());
    return found == nullptr
               ? c_npos
               : static_cast<std::size_t>(static_cast<const char*>(found) - text.data());
#else
    return text.find(sub, from);
#endif
}

/// The first position not before `from` where `sub` starts, or npos. Linear for every text.
inline std::size_t FindText(std::string_view text, std::string_view sub, std::size_t from) noexcept
{
    if (from > text.size() || sub.size() > text.size() - from)
        return c_npos;
    if (sub.size() < 2)
        return sub.empty() ? from : FindByte(text, sub.front(), from);
    const std::size_t end = text.size() - sub.size() + 1;
    std::size_t comparedInVain = 0;
    for (std::size_t pos = from;; ++pos) {
        pos = FindFirst(text.data(), pos, end, Pair{sub[0], sub[1]});
        if (pos == c_npos || text.compare(pos + 2, sub.size() - 2, sub.substr(2)) == 0)
            return pos;
        comparedInVain += sub.size();
        // In repetitive text this way is quadratic. The C library's never is, but starts slower.
        if (comparedInVain > 1024 + 4 * (pos - from))
            return FindTextOfAnyKind(text, sub, pos);
    }
}

} // namespace ByteScan
