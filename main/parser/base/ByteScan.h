#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstring>
#include <string_view>

#if defined(__SSE2__)
#include <immintrin.h>
#endif

/// Searches over bytes and over units of UTF-16, sixteen bytes and more at a time where the
/// processor has the instructions for it. What to look for is a pattern: a function object that
/// tells whether there is a match at an address, and is asked that in the order of addresses. For
/// the units of sixteen neighbouring bytes at once a pattern has two tests that may say yes too
/// often: `MayMatch`, and `Hint`, which costs the least and is asked first for long stretches.
namespace ByteScan {

constexpr std::size_t c_npos = std::string_view::npos;

#if defined(__SSE2__)

using Bytes16 = __m128i;

template <class Unit>
Bytes16 Load(const Unit* p) noexcept
{
    return _mm_loadu_si128(reinterpret_cast<const Bytes16*>(p));
}

inline Bytes16 Equal(Bytes16 bytes, char c) noexcept
{
    return _mm_cmpeq_epi8(bytes, _mm_set1_epi8(c));
}

inline Bytes16 Equal(Bytes16 units, char16_t c) noexcept
{
    return _mm_cmpeq_epi16(units, _mm_set1_epi16(static_cast<short>(c)));
}

/// Bit i stands for byte i.
inline unsigned ToBits(Bytes16 matches) noexcept
{
    return static_cast<unsigned>(_mm_movemask_epi8(matches));
}

#endif

/// One unit. For distances that are short as a rule; FindByte is better for long ones.
template <class Unit>
struct One
{
    Unit c;

    bool operator()(const Unit* p) const noexcept { return *p == c; }
#if defined(__SSE2__)
    Bytes16 MayMatch(const Unit* p) const noexcept
    {
        return Equal(Load(p), c);
    }
    Bytes16 Hint(const Unit* p) const noexcept
    {
        return MayMatch(p);
    }
#endif
};

using Byte = One<char>;

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

/// `first` with `second` so many units behind it, which must be readable for every address looked
/// at.
template <class Unit>
struct UnitPair
{
    Unit first;
    Unit second;
    std::size_t distance = 1;

    bool operator()(const Unit* p) const noexcept { return p[0] == first && p[distance] == second; }
#if defined(__SSE2__)
    Bytes16 MayMatch(const Unit* p) const noexcept
    {
        return _mm_and_si128(Equal(Load(p), first), Hint(p));
    }
    Bytes16 Hint(const Unit* p) const noexcept
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

/// The first of `from`, `from` + n, ..., n units being 64 bytes, whose n units may hold a match or
/// reach over `end`.
template <class Unit, class Pattern>
std::size_t SkipStretches(const Unit* data, std::size_t from, std::size_t end,
                          Pattern pattern) noexcept
{
    constexpr std::size_t c_quarter = sizeof(Bytes16) / sizeof(Unit);
    const auto any = [](auto test, const Unit* p) {
        const Bytes16 low = _mm_or_si128(test(p), test(p + c_quarter));
        const Bytes16 high = _mm_or_si128(test(p + 2 * c_quarter), test(p + 3 * c_quarter));
        return ToBits(_mm_or_si128(low, high)) != 0;
    };
    for (; end - from >= 4 * c_quarter; from += 4 * c_quarter) {
        if (!any([&](const Unit* p) { return pattern.Hint(p); }, data + from)) [[likely]]
            continue;
        if (any([&](const Unit* p) { return pattern.MayMatch(p); }, data + from))
            break;
    }
    return from;
}

#if defined(__GNUC__)

inline bool HasAvx2() noexcept
{
    return __builtin_cpu_supports("avx2") != 0;
}

[[gnu::target("avx2")]] inline __m256i Fill32(char c) noexcept
{
    return _mm256_set1_epi8(c);
}

[[gnu::target("avx2")]] inline __m256i Fill32(char16_t c) noexcept
{
    return _mm256_set1_epi16(static_cast<short>(c));
}

/// The units of 32 bytes at `p` that match.
template <class Unit>
[[gnu::target("avx2")]] inline __m256i MatchesOf32(const Unit* p, __m256i first, __m256i second,
                                                   std::size_t distance) noexcept
{
    const __m256i here = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p));
    const __m256i there = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p + distance));
    if constexpr (sizeof(Unit) == 1)
        return _mm256_and_si256(_mm256_cmpeq_epi8(here, first), _mm256_cmpeq_epi8(there, second));
    else
        return _mm256_and_si256(_mm256_cmpeq_epi16(here, first), _mm256_cmpeq_epi16(there, second));
}

/// SkipStretches for a processor that HasAvx2. Looks at both units of the pair at once: in markup
/// each of them alone is so frequent that guesses about a hint would often be wrong.
template <class Unit>
[[gnu::target("avx2")]] std::size_t SkipStretchesWithAvx2(const Unit* data, std::size_t from,
                                                          std::size_t end,
                                                          UnitPair<Unit> pair) noexcept
{
    constexpr std::size_t c_half = sizeof(__m256i) / sizeof(Unit);
    const __m256i first = Fill32(pair.first);
    const __m256i second = Fill32(pair.second);
    for (; end - from >= 2 * c_half; from += 2 * c_half) {
        const Unit* const p = data + from;
        const __m256i found =
            _mm256_or_si256(MatchesOf32(p, first, second, pair.distance),
                            MatchesOf32(p + c_half, first, second, pair.distance));
        if (_mm256_testz_si256(found, found) == 0)
            break;
    }
    return from;
}

template <class Unit>
std::size_t SkipStretches(const Unit* data, std::size_t from, std::size_t end,
                          UnitPair<Unit> pair) noexcept
{
    return HasAvx2() ? SkipStretchesWithAvx2(data, from, end, pair)
                     : SkipStretches<Unit, UnitPair<Unit>>(data, from, end, pair);
}

#endif

#endif

/// The first position in [`from`, `end`) that matches, or npos, one after the other.
template <class Unit, class Pattern>
std::size_t FindFirstPortably(const Unit* data, std::size_t from, std::size_t end,
                              Pattern pattern) noexcept
{
    for (; from < end; ++from) {
        if (pattern(data + from))
            return from;
    }
    return c_npos;
}

/// The first position in [`from`, `end`) that matches, or npos.
template <class Unit, class Pattern>
std::size_t FindFirst(const Unit* data, std::size_t from, std::size_t end, Pattern pattern) noexcept
{
    if (from >= end)
        return c_npos;
#if defined(__SSE2__)
    constexpr std::size_t c_step = sizeof(Bytes16) / sizeof(Unit);
    // Most searches end within one stretch.
    constexpr unsigned c_stepsOfStretch = 4;
    unsigned steps = c_stepsOfStretch;
    while (end - from >= c_step) {
        for (unsigned bits = ToBits(pattern.MayMatch(data + from)); bits != 0; bits &= bits - 1) {
            const std::size_t pos =
                from + static_cast<std::size_t>(std::countr_zero(bits)) / sizeof(Unit);
            if (pattern(data + pos))
                return pos;
        }
        from += c_step;
        if (--steps == 0) {
            from = SkipStretches(data, from, end, pattern);
            steps = c_stepsOfStretch;
        }
    }
#endif
    return FindFirstPortably(data, from, end, pattern);
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

/// The same, quicker where `c` comes soon as a rule.
inline std::size_t FindByteSoon(std::string_view text, char c, std::size_t from) noexcept
{
    constexpr std::size_t c_soon = 64;
    const std::size_t end = std::min(text.size(), from + c_soon);
    const std::size_t found = FindFirst(text.data(), from, end, Byte{c});
    return found != c_npos ? found : FindByte(text, c, end);
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

/// Whether the units of `sub` but the first and the last stand at their places behind `start`.
template <class Unit>
bool HasBetweenEnds(const Unit* start, std::basic_string_view<Unit> sub) noexcept
{
    // What is searched for is short as a rule, and found: then a call of memcmp takes longer.
    constexpr std::size_t c_short = 8;
    if (sub.size() > c_short)
        return std::memcmp(start + 1, sub.data() + 1, (sub.size() - 2) * sizeof(Unit)) == 0;
    for (std::size_t i = 1; i + 1 < sub.size(); ++i) {
        if (start[i] != sub[i])
            return false;
    }
    return true;
}

/// The first position not before `from` where `sub` starts, or npos. Linear for every text if
/// `findPatiently` is, which is called in the same way.
template <class Unit, class FindPatiently>
std::size_t FindText(std::basic_string_view<Unit> text, std::basic_string_view<Unit> sub,
                     std::size_t from, FindPatiently findPatiently) noexcept
{
    if (from > text.size() || sub.size() > text.size() - from)
        return c_npos;
    if (sub.empty())
        return from;
    const std::size_t end = text.size() - sub.size() + 1;
    // Neighbours often go together in many places; what stands far apart does more rarely.
    const UnitPair<Unit> ends{sub.front(), sub.back(), sub.size() - 1};
    std::size_t comparedInVain = 0;
    for (std::size_t pos = from;; ++pos) {
        pos = FindFirst(text.data(), pos, end, ends);
        if (pos == c_npos || HasBetweenEnds(text.data() + pos, sub))
            return pos;
        comparedInVain += sub.size();
        // In repetitive text this way is quadratic.
        if (comparedInVain > 1024 + 4 * (pos - from))
            return findPatiently(text, sub, pos);
    }
}

/// The first position not before `from` where `sub` starts, or npos, with whatever the C library
/// offers for it. Never quadratic, but slow to start.
inline std::size_t FindTextPatiently(std::string_view text, std::string_view sub,
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
    if (sub.size() == 1)
        return FindByte(text, sub.front(), from);
    return FindText<char>(text, sub, from,
                          [](auto... where) { return FindTextPatiently(where...); });
}

} // namespace ByteScan
