#include "SourceLines.h"

#include <QByteArrayView>
#include <QChar>

#include <algorithm>

namespace {

/// How many bytes are UTF-8, up to the first that is not.
qsizetype CountValid(QByteArrayView bytes)
{
    if (bytes.isValidUtf8())
        return bytes.size();
    qsizetype count = 0;
    for (;;) {
        const auto lead = static_cast<unsigned char>(bytes[count]);
        const qsizetype length = lead < 0x80 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
        if (count + length > bytes.size() || !bytes.sliced(count, length).isValidUtf8())
            return count;
        count += length;
    }
}

QByteArrayView ToView(const std::string& bytes)
{
    return {bytes.data(), static_cast<qsizetype>(bytes.size())};
}

/// Bytes that are not UTF-8 may be of an encoding that only the parser knows; most of these have
/// one byte for each character, and ASCII in common.
QString Decode(QByteArrayView line)
{
    QString text;
    for (;;) {
        const qsizetype valid = CountValid(line);
        text += QString::fromUtf8(line.first(valid));
        if (valid == line.size())
            return text;
        text += QChar(QChar::ReplacementCharacter);
        line = line.sliced(valid + 1);
    }
}

} // namespace

QString SourceLines::GoTo(int number)
{
    while (m_number < number) {
        ReadLine();
        ++m_number;
    }
    return Decode(ToView(m_line));
}

std::optional<unsigned char> SourceLines::FindInvalidByte() const
{
    const QByteArrayView line = ToView(m_line);
    const qsizetype valid = CountValid(line);
    if (valid == line.size())
        return {};
    return static_cast<unsigned char>(line[valid]);
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
