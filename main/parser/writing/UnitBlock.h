#pragma once

#include "writing/XMLEscapeTable.h"

#include <bit>
#include <cstddef>
#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

/// Eight UTF-16 units that are looked at and copied together.
class UnitBlock
{
public:
    static constexpr std::size_t size = 8;

    static UnitBlock Load(const char16_t* units) noexcept;
    /// The first four and the last four of four to eight units.
    static UnitBlock LoadEnds(const char16_t* units, std::size_t count) noexcept;

    void Store(char16_t* to) const noexcept;
    /// The reverse of LoadEnds.
    void StoreEnds(char16_t* to, std::size_t count) const noexcept;

    /// The index of the first unit for which NeedsEscape is true with the table of `type`, or
    /// `size` when there is none.
    template <MappingTableType type>
    std::size_t FindEscape() const noexcept;

private:
    static constexpr std::size_t c_half = size / 2 * sizeof(char16_t);

#if defined(__SSE2__)
    explicit UnitBlock(__m128i units) noexcept : m_units(units) {}

    __m128i m_units;
#else
    UnitBlock() noexcept = default;

    char16_t m_units[size];
#endif
};

#if defined(__SSE2__)

inline UnitBlock UnitBlock::Load(const char16_t* units) noexcept
{
    return UnitBlock(_mm_loadu_si128(reinterpret_cast<const __m128i*>(units)));
}

inline UnitBlock UnitBlock::LoadEnds(const char16_t* units, std::size_t count) noexcept
{
    const __m128i first = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(units));
    const __m128i last =
        _mm_loadl_epi64(reinterpret_cast<const __m128i*>(units + count - size / 2));
    return UnitBlock(_mm_unpacklo_epi64(first, last));
}

inline void UnitBlock::Store(char16_t* to) const noexcept
{
    _mm_storeu_si128(reinterpret_cast<__m128i*>(to), m_units);
}

inline void UnitBlock::StoreEnds(char16_t* to, std::size_t count) const noexcept
{
    _mm_storel_epi64(reinterpret_cast<__m128i*>(to), m_units);
    const __m128i last = _mm_unpackhi_epi64(m_units, m_units);
    _mm_storel_epi64(reinterpret_cast<__m128i*>(to + count - size / 2), last);
}

template <MappingTableType type>
std::size_t UnitBlock::FindEscape() const noexcept
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
    return mask == 0 ? size : static_cast<std::size_t>(std::countr_zero(mask)) / sizeof(char16_t);
}

#else

inline UnitBlock UnitBlock::Load(const char16_t* units) noexcept
{
    UnitBlock block;
    std::memcpy(block.m_units, units, 2 * c_half);
    return block;
}

inline UnitBlock UnitBlock::LoadEnds(const char16_t* units, std::size_t count) noexcept
{
    UnitBlock block;
    std::memcpy(block.m_units, units, c_half);
    std::memcpy(block.m_units + size / 2, units + count - size / 2, c_half);
    return block;
}

inline void UnitBlock::Store(char16_t* to) const noexcept
{
    std::memcpy(to, m_units, 2 * c_half);
}

inline void UnitBlock::StoreEnds(char16_t* to, std::size_t count) const noexcept
{
    std::memcpy(to, m_units, c_half);
    std::memcpy(to + count - size / 2, m_units + size / 2, c_half);
}

template <MappingTableType type>
std::size_t UnitBlock::FindEscape() const noexcept
{
    std::size_t i = 0;
    while (i < size && !NeedsEscape(c_escapeTable<type>, m_units[i]))
        ++i;
    return i;
}

#endif
