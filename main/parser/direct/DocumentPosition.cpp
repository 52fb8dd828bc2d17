#include "direct/DocumentPosition.h"

#include "base/ByteScan.h"

#include <algorithm>
#include <bit>
#include <cstddef>

namespace {

/// Of CR LF the LF.
bool IsLineEnd(const char* at) noexcept
{
    return *at == '\n' || (*at == '\r' && at[1] != '\n');
}

#if defined(__SSE2__)

using ByteScan::Bytes16;

constexpr unsigned c_step = 16;

/// From here on, what stands before the last line end is passed over without a count of units.
constexpr std::ptrdiff_t c_long = 4096;

/// Bytes of characters that are several, and control characters, line ends among them; as bits.
unsigned FindSpecial(Bytes16 bytes) noexcept
{
    return ByteScan::ToBits(_mm_cmplt_epi8(bytes, _mm_set1_epi8('\r' + 1)));
}

/// Whether none of sixty-four bytes is special.
bool IsPlain(const char* at) noexcept
{
    const auto find = [at](unsigned step) {
        return _mm_cmplt_epi8(ByteScan::Load(at + step * c_step), _mm_set1_epi8('\r' + 1));
    };
    const Bytes16 low = _mm_or_si128(find(0), find(1));
    const Bytes16 high = _mm_or_si128(find(2), find(3));
    return ByteScan::ToBits(_mm_or_si128(low, high)) == 0;
}

/// For sixteen bits; where there is no instruction for it, std::popcount is slow.
unsigned CountBits(unsigned bits) noexcept
{
    bits -= bits >> 1 & 0x5555;
    bits = (bits & 0x3333) + (bits >> 2 & 0x3333);
    bits = (bits + (bits >> 4)) & 0x0F0F;
    return (bits + (bits >> 8)) & 0x1F;
}

/// The line ends of sixteen bytes, behind which one more is readable, as bits.
unsigned FindLineEnds(const char* at, Bytes16 bytes) noexcept
{
    const unsigned feeds = ByteScan::ToBits(ByteScan::Equal(bytes, '\n'));
    const unsigned returns = ByteScan::ToBits(ByteScan::Equal(bytes, '\r'));
    if (returns == 0) [[likely]]
        return feeds;
    const unsigned followed = feeds >> 1 | (at[c_step] == '\n' ? 0x8000U : 0U);
    return feeds | (returns & ~followed);
}

/// The line ends of sixty-four bytes; -1 when there are others among them than line feeds.
int CountFeeds(const char* at) noexcept
{
    Bytes16 feeds = _mm_setzero_si128();
    Bytes16 returns = _mm_setzero_si128();
    for (unsigned step = 0; step < 4; ++step) {
        const Bytes16 bytes = ByteScan::Load(at + step * c_step);
        feeds = _mm_sub_epi8(feeds, ByteScan::Equal(bytes, '\n'));
        returns = _mm_or_si128(returns, ByteScan::Equal(bytes, '\r'));
    }
    if (ByteScan::ToBits(returns) != 0)
        return -1;
    const Bytes16 sums = _mm_sad_epu8(feeds, _mm_setzero_si128());
    return _mm_cvtsi128_si32(sums) + _mm_extract_epi16(sums, 4);
}

/// The units of the characters that begin at those of sixteen bytes that `part` has as bits.
unsigned CountUnits(Bytes16 bytes, unsigned part) noexcept
{
    // As signed numbers: 0x80 to 0xBF, which continue a character, are the lowest, and 0xF0 to
    // 0xFF, which begin a character of two units, stand right below zero.
    const unsigned notFirst = ByteScan::ToBits(_mm_cmplt_epi8(bytes, _mm_set1_epi8(-64)));
    const unsigned notPair = ByteScan::ToBits(_mm_cmplt_epi8(bytes, _mm_set1_epi8(-16)));
    const unsigned pairs = ByteScan::ToBits(bytes) & ~notPair & part;
    const unsigned units = CountBits(~notFirst & part);
    return pairs == 0 ? units : units + CountBits(pairs);
}

#endif

} // namespace

void DocumentPosition::MoveTo(const char* place) noexcept
{
#if defined(__SSE2__)
    if (place - m_at >= c_long)
        PassLines(place);
    while (m_at < place && m_end - m_at >= std::ptrdiff_t{c_step}) {
        const auto left = place - m_at;
        if (left >= std::ptrdiff_t{4 * c_step} && IsPlain(m_at)) {
            m_column += 4 * c_step;
            m_at += 4 * c_step;
            continue;
        }
        PassSixteen(static_cast<unsigned>(std::min<std::ptrdiff_t>(left, c_step)));
    }
#endif
    PassBytes(place);
}

#if defined(__SSE2__)

/// At most sixteen bytes, where sixteen are readable.
void DocumentPosition::PassSixteen(unsigned count) noexcept
{
    const Bytes16 bytes = ByteScan::Load(m_at);
    unsigned part = (1U << count) - 1;
    if ((FindSpecial(bytes) & part) == 0) [[likely]] {
        m_column += count;
    } else {
        unsigned lineEnds = FindLineEnds(m_at, bytes) & part;
        if (lineEnds != 0) {
            part &= ~0U << std::bit_width(lineEnds);
            m_column = 1;
            for (; lineEnds != 0; lineEnds &= lineEnds - 1)
                ++m_line;
        }
        m_column += CountUnits(bytes, part);
    }
    m_at += count;
}

/// To the last line end of a stretch; to its start if there is none.
void DocumentPosition::PassLines(const char* end) noexcept
{
    const char* at = m_at;
    while (end - at >= std::ptrdiff_t{4 * c_step}) {
        const int feeds = CountFeeds(at);
        if (feeds >= 0) {
            m_line += static_cast<unsigned>(feeds);
            at += 4 * c_step;
            continue;
        }
        for (unsigned step = 0; step < 4; ++step, at += c_step)
            m_line += CountBits(FindLineEnds(at, ByteScan::Load(at)));
    }
    // Backwards there is mostly one not far away.
    while (at > m_at) {
        at -= c_step;
        const unsigned lineEnds = FindLineEnds(at, ByteScan::Load(at));
        if (lineEnds != 0) {
            m_at = at + std::bit_width(lineEnds);
            m_column = 1;
            return;
        }
    }
}

#endif

void DocumentPosition::PassBytes(const char* end) noexcept
{
    for (; m_at < end; ++m_at) {
        const auto byte = static_cast<unsigned char>(*m_at);
        if (IsLineEnd(m_at)) {
            ++m_line;
            m_column = 1;
        } else if ((byte & 0xC0) != 0x80) {
            m_column += byte >= 0xF0 ? 2U : 1U;
        }
    }
}
