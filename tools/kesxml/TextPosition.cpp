#include "TextPosition.h"

#include <algorithm>

namespace {

/// The UTF-16 units that begin with a byte of UTF-8.
int UnitsOf(char byte)
{
    const auto value = static_cast<unsigned char>(byte);
    if ((value & 0xC0U) == 0x80)
        return 0;
    return value < 0xF0 ? 1 : 2;
}

} // namespace

TextPosition TextPositions::At(std::size_t offset)
{
    for (const std::size_t end = std::min(offset, m_text.size()); m_offset < end; ++m_offset) {
        const char byte = m_text[m_offset];
        // Of CR LF, the second ends the line.
        const bool isReturn = byte == '\r' && !m_text.substr(m_offset + 1).starts_with('\n');
        if (byte == '\n' || isReturn)
            m_position = {m_position.line + 1, 1};
        else
            m_position.column += UnitsOf(byte);
    }
    return m_position;
}
