#pragma once

#include <kescorexml/InputSource.h>

#include <QString>

#include <cstddef>
#include <optional>
#include <string>

/// The lines of a source as the parser counts them, from 1: a line feed, a carriage return or both
/// end one. Reads the source in pieces, from its start on. The source must live as long.
class SourceLines
{
public:
    /// Starts before the first line.
    explicit SourceLines(InputSource& source) : m_source(source) { source.ResetToStart(); }

    /// The number of the line that was read last; 0 before the first.
    int GetNumber() const noexcept { return m_number; }
    /// Reads on to a line after that one and returns it without its end. Behind the last line there
    /// are empty ones. Bytes that are not UTF-8 become U+FFFD each.
    QString GoTo(int number);
    /// The first byte that is not UTF-8 in the line that was read last.
    std::optional<unsigned char> FindInvalidByte() const;
    /// Whether all of the source was read.
    bool IsAtEnd() { return !HasBytes(); }

private:
    static constexpr unsigned int c_chunkBytes = 65536;

    /// Reads on when it must.
    bool HasBytes();
    void ReadLine();

    InputSource& m_source;
    std::string m_chunk;
    std::size_t m_next = 0;
    std::string m_line;
    int m_number = 0;
};
