#include "SourceLines.h"

#include <QChar>

#include <algorithm>
#include <string_view>

namespace {

/// Bytes that are not UTF-8 are of an encoding that only the parser knows; most of these have one
/// byte for each character, and ASCII in common.
QString Decode(std::string_view line)
{
    const QByteArrayView bytes(line.data(), static_cast<qsizetype>(line.size()));
    if (bytes.isValidUtf8())
        return QString::fromUtf8(bytes);
    QString text = QString::fromLatin1(bytes);
    for (QChar& unit : text) {
        if (unit.unicode() > 0x7F)
            unit = QChar::ReplacementCharacter;
    }
    return text;
}

} // namespace

QString SourceLines::GoTo(int number)
{
    while (m_number < number) {
        ReadLine();
        ++m_number;
    }
    return Decode(m_line);
}

bool SourceLines::HasBytes()
{
    while (m_next == m_chunk.size()) {
        m_next = 0;
        if (!m_source.GetBytes(m_chunk, c_chunkBytes)) {
            m_chunk.clear();
            return false;
        }
    }
    return true;
}

void SourceLines::ReadLine()
{
    m_line.clear();
    while (HasBytes()) {
        const std::size_t end = std::min(m_chunk.find_first_of("\r\n", m_next), m_chunk.size());
        m_line.append(m_chunk, m_next, end - m_next);
        m_next = end;
        if (end == m_chunk.size())
            continue;
        const bool isReturn = m_chunk[m_next++] == '\r';
        if (isReturn && HasBytes() && m_chunk[m_next] == '\n')
            ++m_next;
        return;
    }
}
