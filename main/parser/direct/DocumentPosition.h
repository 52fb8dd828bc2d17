#pragma once

/// Lines and columns of a document in UTF-8, as the scanner counts them: both from 1, columns in
/// units of UTF-16, and CR LF as one line end. Asked for rising places it makes one pass over the
/// text in all; whoever does not ask pays nothing.
class DocumentPosition
{
public:
    /// From now on, `begin` is line 1, column 1. The document ends at `end`, where a byte is
    /// readable that is no line feed.
    void Begin(const char* begin, const char* end) noexcept
    {
        *this = DocumentPosition(begin, end);
    }
    /// Moves to `place`, which stands behind a whole character and not between CR and LF.
    /// REQUIRES: not before the last one.
    void MoveTo(const char* place) noexcept;

    /// Numbers beyond those of an int wrap, as the scanner's do.
    int GetLine() const noexcept { return static_cast<int>(m_line); }
    int GetColumn() const noexcept { return static_cast<int>(m_column); }

    DocumentPosition() = default;

private:
    DocumentPosition(const char* begin, const char* end) noexcept : m_at(begin), m_end(end) {}

    void PassSixteen(unsigned count) noexcept;
    void PassLines(const char* end) noexcept;
    void PassBytes(const char* end) noexcept;

    const char* m_at = nullptr;
    const char* m_end = nullptr;
    unsigned m_line = 1;
    unsigned m_column = 1;
};
