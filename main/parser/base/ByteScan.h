#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstring>
#include <string_view>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

/// Searches over bytes, sixteen and more at a time where the processor has the instructions for it.
/// What to look for is a pattern: a function object that tells whether there is a match at an
/// address. For sixteen neighbouring addresses at once a pattern has two tests that may say yes too
/// often: `MayMatch`, and `Hint`, which costs the least and is asked first for long stretches.
namespace ByteScan {

constexpr std::size_t c_npos = std::string_view::npos;

#if defined(__SSE2__)

using Bytes16 = __m128i;

inline Bytes16 Load(const char* p) noexcept
{
    return _mm_loadu_si128(reinterpret_cast<const Bytes16*>(p));
}

inline Bytes16 Equal(Bytes16 bytes, char c) noexcept
{
    return _mm_cmpeq_epi8(bytes, _mm_set1_epi8(c));
}

/// Bit i stands for byte i.
inline unsigned ToBits(Bytes16 matches) noexcept
{
    return static_cast<unsigned>(_mm_movemask_epi8(matches));
}

#endif

/// One byte. For ways that are short as a rule; FindByte is better for long ones.
struct Byte
{
    char c;

    bool operator()(const char* p) const noexcept { return *p == c; }
#if defined(__SSE2__)
    Bytes16 MayMatch(const char* p) const noexcept
    {
        return Equal(Load(p), c);
    }
    Bytes16 Hint(const char* p) const noexcept
    {
        return MayMatch(p);
    }
#endif
};

/// One of several bytes.
template <char First, char... Rest>
struct AnyOf
{
    bool operator()(const char* p) const noexcept { return *p == First || (... || (*p == Rest)); }
#if defined(__SSE2__)
    Bytes16 MayMatch(const char* p) const noexcept
    {
        const Bytes16 bytes = Load(p);
        Bytes16 found = Equal(bytes, First);
        ((found = _mm_or_si128(found, Equal(bytes, Rest))), ...);
        return found;
    }
    Bytes16 Hint(const char* p) const noexcept
    {
        return MayMatch(p);
    }
#endif
};

/// `first` with `second` so many bytes behind it, which must be readable for every address looked
/// at.
struct BytePair
{
    char first;
    char second;
    std::size_t distance = 1;

    bool operator()(const char* p) const noexcept { return p[0] == first && p[distance] == second; }
#if defined(__SSE2__)
    Bytes16 MayMatch(const char* p) const noexcept
    {
        return _mm_and_si128(Equal(Load(p), first), Hint(p));
    }
    Bytes16 Hint(const char* p) const noexcept
    {
        return Equal(Load(p + distance), second);
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
    Bytes16 MayMatch(const char* p) const noexcept
    {
        // White space is below "!", and hardly anything else is: control characters, and bytes of
        // other scripts, which count as negative.
        const Bytes16 isLow = _mm_cmplt_epi8(Load(p - 1), _mm_set1_epi8('!'));
        return _mm_and_si128(Equal(Load(p), c), isLow);
    }
    Bytes16 Hint(const char* p) const noexcept
    {
        return MayMatch(p);
    }
#endif
};

#if defined(__SSE2__)

/// The first of `from`, `from` + 64, ... whose 64 bytes may hold a match or reach over `end`.
template <class Pattern>
std::size_t SkipStretches(const char* data, std::size_t from, std::size_t end,
                          Pattern pattern) noexcept
{
    const auto any = [](auto test, const char* p) {
        const Bytes16 low = _mm_or_si128(test(p), test(p + 16));
        const Bytes16 high = _mm_or_si128(test(p + 32), test(p + 48));
        return ToBits(_mm_or_si128(low, high)) != 0;
    };
    for (; end - from >= 64; from += 64) {
        if (!any([&](const char* p) { return pattern.Hint(p); }, data + from)) [[likely]]
            continue;
        if (any([&](const char* p) { return pattern.MayMatch(p); }, data + from))
            break;
    }
    return from;
}

#endif

/// The first position in [`from`, `end`) that matches, or npos.
template <class Pattern>
std::size_t FindFirst(const char* data, std::size_t from, std::size_t end, Pattern pattern) noexcept
{
    if (from >= end)
        return c_npos;
#if defined(__SSE2__)
    // Most searches end within thirty-two bytes.
    for (unsigned round = 0; end - from >= 16; ++round) {
        for (unsigned bits = ToBits(pattern.MayMatch(data + from)); bits != 0; bits &= bits - 1) {
            const std::size_t pos = from + static_cast<std::size_t>(std::countr_zero(bits));
            if (pattern(data + pos))
                return pos;
        }
        from += 16;
        if (round > 0)
            from = SkipStretches(data, from, end, pattern);
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

/// The first position not before `from`, which is not 0, that holds `c` behind white space, or
/// npos.
inline std::size_t FindByteAfterWhitespace(std::string_view text, char c, std::size_t from) noexcept
{
    const AfterWhitespace pattern{c};
    constexpr std::size_t c_rare = 256;
    constexpr std::size_t c_fewStops = 64;
    for (std::size_t pos = from, stops = 0;; ++pos, ++stops) {
        pos = FindByte(text, c, pos);
        if (pos == c_npos || pattern(text.data() + pos))
            return pos;
        // Where `c` is frequent, one search for both at once is quicker.
        if (stops > c_fewStops && stops * c_rare > pos - from)
            return FindFirst(text.data(), pos + 1, text.size(), pattern);
    }
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
    // Neighbours often go together in many places; what stands far apart does more rarely.
    const BytePair ends{sub.front(), sub.back(), sub.size() - 1};
    const std::string_view between = sub.substr(1, sub.size() - 2);
    std::size_t comparedInVain = 0;
    for (std::size_t pos = from;; ++pos) {
        pos = FindFirst(text.data(), pos, end, ends);
        if (pos == c_npos || text.substr(pos + 1).starts_with(between))
            return pos;
        comparedInVain += sub.size();
        // In repetitive text this way is quadratic. The C library's never is, but starts slower.
        if (comparedInVain > 1024 + 4 * (pos - from))
            return FindTextOfAnyKind(text, sub, pos);
    }
}

} // namespace ByteScan
