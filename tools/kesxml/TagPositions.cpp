#include "TagPositions.h"

#include "Markup.h"

TextPosition TagPositions::FindStart(TextPosition end)
{
    MarkupReader reader(m_document.substr(m_next));
    for (MarkupToken token; m_end < end && reader.Read(token);) {
        const std::size_t offset = m_next;
        m_next += token.text.size();
        using Kind = MarkupToken::Kind;
        if (token.kind != Kind::StartTag && token.kind != Kind::EmptyTag)
            continue;
        m_start = m_positions.At(offset);
        m_end = m_positions.At(m_next);
    }
    return m_end == end ? m_start : end;
}
