#pragma once

#include <cstdint>

/// Where a character stands in a document, as the scanner counts and messages say.
struct ScanPosition
{
    /// From 1; CR LF ends one line, as CR and LF alone do.
    unsigned long long line = 1;
    /// From 1, in UTF-16 code units of the line. A byte-order mark at the start of the document is
    /// none of them.
    unsigned long long column = 1;
};

/// Goes through a document and knows the position of what comes next.
class PositionCounter
{
public:
    /// A UTF-16 code unit, or a whole character.
    void Pass(std::uint32_t unit) noexcept
    {
        const bool continuesLineEnd = unit == '\n' && m_previous == '\r';
        if (!continuesLineEnd && (unit == '\n' || unit == '\r')) {
            ++m_position.line;
            m_position.column = 1;
        } else if (!continuesLineEnd) {
            m_position.column += unit > 0xFFFF ? 2 : 1;
        }
        m_previous = unit;
    }
    const ScanPosition& Get() const noexcept { return m_position; }

private:
    ScanPosition m_position;
    std::uint32_t m_previous = 0;
};
