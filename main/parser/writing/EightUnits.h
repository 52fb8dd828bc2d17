#pragma once

#include "writing/EscapeTable.h"

#include <bit>
#include <cstddef>
#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

/// Eight UTF-16 units that are looked at and copied together.
class EightUnits
{
public:
    static constexpr std::size_t c_count = 8;

    static EightUnits Load(const char16_t* units) noexcept;
    /// The first four and the last four of four to eight units.
    static EightUnits LoadEnds(const char16_t* units, std::size_t count) noexcept;

    void Store(char16_t* to) const noexcept;
    /// The reverse of LoadEnds.
    void StoreEnds(char16_t* to, std::size_t count) const noexcept;

    /// The index of the first unit for which NeedsEscape is true with the table of `type`, or
    /// `c_count` when there is none.
    template <MappingTableType type>
    std::size_t FindEscape() const noexcept;

private:
    static constexpr std::size_t c_halfBytes = c_count / 2 * sizeof(char16_t);

#if defined(__SSE2__)
    explicit EightUnits(__m128i units) noexcept : m_units(units) {}

    __m128i m_units;
#else
    EightUnits() noexcept = default;

    char16_t m_units[c_count];
#endif
};

#if defined(__SSE2__)

inline EightUnits EightUnits::Load(const char16_t* units) noexcept
{
    return EightUnits(_mm_loadu_si128(reinterpret_cast<const __m128i*>(units)));
}

inline EightUnits EightUnits::LoadEnds(const char16_t* units, std::size_t count) noexcept
{
    const __m128i first = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(units));
    const __m128i last =
        _mm_loadl_epi64(reinterpret_cast<const __m128i*>(units + count - c_count / 2));
    return EightUnits(_mm_unpacklo_epi64(first, last));
}

inline void EightUnits::Store(char16_t* to) const noexcept
{
    _mm_storeu_si128(reinterpret_cast<__m128i*>(to), m_units);
}

inline void EightUnits::StoreEnds(char16_t* to, std::size_t count) const noexcept
{
    _mm_storel_epi64(reinterpret_cast<__m128i*>(to), m_units);
    const __m128i last = _mm_unpackhi_epi64(m_units, m_units);
    _mm_storel_epi64(reinterpret_cast<__m128i*>(to + count - c_count / 2), last);
}

template <MappingTableType type>
std::size_t EightUnits::FindEscape() const noexcept
{
    const auto equals = [](__m128i units, char16_t unit) {
        return _mm_cmpeq_epi16(units, _mm_set1_epi16(static_cast<short>(unit)));
    };
    // Adding 2 puts the two last units before the first, so that one comparison finds them and
    // the control units: what saturated subtraction takes to zero is at most 0x1F + 2.
    const __m128i shifted = _mm_add_epi16(m_units, _mm_set1_epi16(2));
    __m128i found = equals(_mm_subs_epu16(shifted, _mm_set1_epi16(0x1F + 2)), 0);
    if constexpr (type == MappingTableType::LongContent)
        found =
            _mm_andnot_si128(_mm_or_si128(equals(m_units, u'\t'), equals(m_units, u'\n')), found);
    found = _mm_or_si128(found, equals(m_units, u'"'));
    // '&' and the apostrophe differ in the lowest bit, '<' and '>' in the next one.
    found = _mm_or_si128(found, equals(_mm_or_si128(m_units, _mm_set1_epi16(1)), u'\''));
    found = _mm_or_si128(found, equals(_mm_or_si128(m_units, _mm_set1_epi16(2)), u'>'));
    const auto mask = static_cast<unsigned>(_mm_movemask_epi8(found));
    return mask == 0 ? c_count
                     : static_cast<std::size_t>(std::countr_zero(mask)) / sizeof(char16_t);
}

#else

inline EightUnits EightUnits::Load(const char16_t* units) noexcept
{
    EightUnits loaded;
    std::memcpy(loaded.m_units, units, 2 * c_halfBytes);
    return loaded;
}

inline EightUnits EightUnits::LoadEnds(const char16_t* units, std::size_t count) noexcept
{
    EightUnits loaded;
    std::memcpy(loaded.m_units, units, c_halfBytes);
    std::memcpy(loaded.m_units + c_count / 2, units + count - c_count / 2, c_halfBytes);
    return loaded;
}

inline void EightUnits::Store(char16_t* to) const noexcept
{
    std::memcpy(to, m_units, 2 * c_halfBytes);
}

inline void EightUnits::StoreEnds(char16_t* to, std::size_t count) const noexcept
{
    std::memcpy(to, m_units, c_halfBytes);
    std::memcpy(to + count - c_count / 2, m_units + c_count / 2, c_halfBytes);
}

template <MappingTableType type>
std::size_t EightUnits::FindEscape() const noexcept
{
    std::size_t i = 0;
    while (i < c_count && !NeedsEscape(c_escapeTable<type>, m_units[i]))
        ++i;
    return i;
}

#endif
