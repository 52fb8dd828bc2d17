#include "direct/DocumentPosition.h"

#include "base/ByteScan.h"

#include <bit>

namespace {

#if defined(__SSE2__)

using ByteScan::Block;

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
    while (m_at < place) {
        PassAscii(place);
        PassBytes(place - m_at > 16 ? m_at + 16 : place);
    }
}

/// In steps of sixteen bytes, up to one with characters of several.
void DocumentPosition::PassAscii([[maybe_unused]] const char* end) noexcept
{
#if defined(__SSE2__)
    for (; end - m_at >= 16; m_at += 16) {
        const Block bytes = ByteScan::Load(m_at);
        if (ByteScan::ToBits(bytes) != 0)
            return;
        unsigned lineEnds = FindLineEnds(m_at, bytes);
        m_column = lineEnds == 0 ? m_column + 16 : 17 - static_cast<int>(std::bit_width(lineEnds));
        for (; lineEnds != 0; lineEnds &= lineEnds - 1)
            ++m_line;
    }
#endif
}

void DocumentPosition::PassBytes(const char* end) noexcept
{
    for (; m_at < end; ++m_at) {
        const auto byte = static_cast<unsigned char>(*m_at);
        if (byte == '\n' || (byte == '\r' && m_at[1] != '\n')) {
            ++m_line;
            m_column = 1;
        } else if (byte != '\r' && (byte & 0xC0) != 0x80) {
            m_column += byte >= 0xF0 ? 2 : 1;
        }
    }
}
