#include "direct/DocumentPosition.h"

#include "base/ByteScan.h"

#include <bit>

namespace {

#if defined(__SSE2__)

using ByteScan::Block;

/// The bytes that begin no character, as bits.
unsigned FindContinuations(Block bytes) noexcept
{
    // As signed numbers, 80 to BF are the lowest.
    return ByteScan::ToBits(_mm_cmplt_epi8(bytes, _mm_set1_epi8('\xC0')));
}

/// The bytes that begin a character of two units, as bits.
unsigned FindLongLeads(Block bytes) noexcept
{
    const Block isLong = _mm_cmpeq_epi8(_mm_max_epu8(bytes, _mm_set1_epi8('\xF0')), bytes);
    return ByteScan::ToBits(isLong);
}

/// The line ends of sixteen bytes, behind which one more is readable, as bits: of CR LF the LF.
unsigned FindLineEnds(const char* at, Block bytes) noexcept
{
    const unsigned feeds = ByteScan::ToBits(ByteScan::Equal(bytes, '\n'));
    const unsigned returns = ByteScan::ToBits(ByteScan::Equal(bytes, '\r'));
    if (returns == 0) [[likely]]
        return feeds;
    const unsigned followed = feeds >> 1 | (at[16] == '\n' ? 0x8000U : 0U);
    return feeds | (returns & ~followed);
}

#endif

} // namespace

void DocumentPosition::MoveTo(const char* place) noexcept
{
    const char* at = m_at;
    int line = m_line;
    int column = m_column;
#if defined(__SSE2__)
    for (; place - at >= 16; at += 16) {
        const Block bytes = ByteScan::Load(at);
        const unsigned ends = FindLineEnds(at, bytes);
        // What stands behind the last line end; all when there is none.
        const unsigned counted =
            ends == 0 ? 0xFFFFU : 0xFFFFU & ~((2U << (std::bit_width(ends) - 1)) - 1);
        line += std::popcount(ends);
        const int before = ends == 0 ? column : 1;
        column = before + std::popcount(counted & ~FindContinuations(bytes)) +
                 std::popcount(counted & FindLongLeads(bytes));
    }
#endif
    for (; at < place; ++at) {
        const auto byte = static_cast<unsigned char>(*at);
        if (byte == '\n' || (byte == '\r' && at[1] != '\n')) {
            ++line;
            column = 1;
        } else if ((byte & 0xC0) != 0x80) {
            column += byte >= 0xF0 ? 2 : 1;
        }
    }
    m_at = at;
    m_line = line;
    m_column = column;
}
