#include "direct/DocumentPosition.h"

#include "base/ByteScan.h"

#include <bit>

namespace {

/// Of CR LF the LF.
bool IsLineEnd(const char* at) noexcept
{
    return *at == '\n' || (*at == '\r' && at[1] != '\n');
}

#if defined(__SSE2__)

using ByteScan::Block;

constexpr int c_block = 16;

/// From here on, what stands before the last line end is passed over without a count of units.
constexpr std::ptrdiff_t c_long = 4096;

/// Bytes of characters that are several, and control characters, line ends among them; as bits.
unsigned FindSpecial(Block bytes) noexcept
{
    return ByteScan::ToBits(_mm_cmplt_epi8(bytes, _mm_set1_epi8('\r' + 1)));
}

/// Whether none of sixty-four bytes is special.
bool IsPlain(const char* at) noexcept
{
    const auto find = [at](int block) {
        return _mm_cmplt_epi8(ByteScan::Load(at + block * c_block), _mm_set1_epi8('\r' + 1));
    };
    const Block low = _mm_or_si128(find(0), find(1));
    const Block high = _mm_or_si128(find(2), find(3));
    return ByteScan::ToBits(_mm_or_si128(low, high)) == 0;
}

/// For sixteen bits; where there is no instruction for it, std::popcount is slow.
int CountBits(unsigned bits) noexcept
{
    bits -= bits >> 1 & 0x5555;
    bits = (bits & 0x3333) + (bits >> 2 & 0x3333);
    bits = (bits + (bits >> 4)) & 0x0F0F;
    return static_cast<int>((bits + (bits >> 8)) & 0x1F);
}

/// The line ends of sixteen bytes, behind which one more is readable, as bits.
unsigned FindLineEnds(const char* at, Block bytes) noexcept
{
    const unsigned feeds = ByteScan::ToBits(ByteScan::Equal(bytes, '\n'));
    const unsigned returns = ByteScan::ToBits(ByteScan::Equal(bytes, '\r'));
    if (returns == 0) [[likely]]
        return feeds;
    const unsigned followed = feeds >> 1 | (at[c_block] == '\n' ? 0x8000U : 0U);
    return feeds | (returns & ~followed);
}

/// The line ends of sixty-four bytes; -1 when there are others among them than line feeds.
int CountFeeds(const char* at) noexcept
{
    Block feeds = _mm_setzero_si128();
    Block returns = _mm_setzero_si128();
    for (int block = 0; block < 4; ++block) {
        const Block bytes = ByteScan::Load(at + block * c_block);
        feeds = _mm_sub_epi8(feeds, ByteScan::Equal(bytes, '\n'));
        returns = _mm_or_si128(returns, ByteScan::Equal(bytes, '\r'));
    }
    if (ByteScan::ToBits(returns) != 0)
        return -1;
    const Block sums = _mm_sad_epu8(feeds, _mm_setzero_si128());
    return _mm_cvtsi128_si32(sums) + _mm_extract_epi16(sums, 4);
}

/// The units of the characters that begin at those of sixteen bytes that `part` has as bits.
int CountUnits(Block bytes, unsigned part) noexcept
{
    // As signed numbers: 0x80 to 0xBF, which continue a character, are the lowest, and 0xF0 to
    // 0xFF, which begin a character of two units, stand right below zero.
    const unsigned notFirst = ByteScan::ToBits(_mm_cmplt_epi8(bytes, _mm_set1_epi8(-64)));
    const unsigned notPair = ByteScan::ToBits(_mm_cmplt_epi8(bytes, _mm_set1_epi8(-16)));
    const unsigned pairs = ByteScan::ToBits(bytes) & ~notPair & part;
    const int units = CountBits(~notFirst & part);
    return pairs == 0 ? units : units + CountBits(pairs);
}

#endif

} // namespace

void DocumentPosition::MoveTo(const char* place) noexcept
{
#if defined(__SSE2__)
    if (place - m_at >= c_long)
        PassLines(place);
    while (m_at < place && m_end - m_at >= c_block) {
        const auto left = place - m_at;
        if (left >= 4 * c_block && IsPlain(m_at)) {
            m_column += 4 * c_block;
            m_at += 4 * c_block;
            continue;
        }
        PassBlock(left < c_block ? static_cast<int>(left) : c_block);
    }
#endif
    PassBytes(place);
}

#if defined(__SSE2__)

/// At most sixteen bytes, where sixteen are readable.
void DocumentPosition::PassBlock(int count) noexcept
{
    const Block bytes = ByteScan::Load(m_at);
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
    while (end - at >= 4 * c_block) {
        const int feeds = CountFeeds(at);
        if (feeds >= 0) {
            m_line += feeds;
            at += 4 * c_block;
            continue;
        }
        for (int block = 0; block < 4; ++block, at += c_block)
            m_line += CountBits(FindLineEnds(at, ByteScan::Load(at)));
    }
    // Backwards there is mostly one not far away.
    while (at > m_at) {
        at -= c_block;
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
            m_column += byte >= 0xF0 ? 2 : 1;
        }
    }
}
