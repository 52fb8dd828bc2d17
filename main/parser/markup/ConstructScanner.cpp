#include "markup/ConstructScanner.h"

#include "base/ByteScan.h"

#include <algorithm>

namespace {

constexpr std::string_view c_openSection = "<![";
constexpr std::string_view c_closeSection = "]]>";
constexpr std::string_view c_closeInstruction = "?>";
constexpr std::string_view c_closeDeclaration = ">";

} // namespace

bool ConstructScanner::ChooseTerminator(std::string_view xml) noexcept
{
    const std::string_view construct = xml.substr(m_start);
    if (construct[1] == '?') {
        m_terminator = c_closeInstruction;
    } else if (construct[1] == '!') {
        // "<!-" may still become a comment.
        if (construct.size() < c_openComment.size() && c_openComment.starts_with(construct))
            return false;
        m_terminator = construct.starts_with(c_openComment)   ? c_closeComment
                       : construct.starts_with(c_openSection) ? c_closeSection
                                                              : c_closeDeclaration;
    }
    m_next = m_start + 1;
    return true;
}

std::size_t ConstructScanner::FindClose(std::string_view xml) noexcept
{
    // Two characters tell nothing yet.
    if (xml.size() < 3 || m_start > xml.size() - 3)
        return ByteScan::c_npos;
    if (m_next == 0 && !ChooseTerminator(xml))
        return ByteScan::c_npos;
    if (m_terminator.empty())
        return FindCloseOfTag(xml);
    const std::size_t found = ByteScan::FindText(xml, m_terminator, m_next);
    if (found != ByteScan::c_npos)
        return found + m_terminator.size() - 1;
    // The end of this text may hold the first characters of the terminator.
    m_next = std::max(m_next, xml.size() - (m_terminator.size() - 1));
    return ByteScan::c_npos;
}

std::size_t ConstructScanner::FindCloseOfTag(std::string_view xml) noexcept
{
    for (;;) {
        if (m_openQuote == '\0') {
            const std::size_t found = ByteScan::FindFirst(xml.data(), m_next, xml.size(),
                                                          ByteScan::AnyOf<'>', '"', '\''>());
            if (found == ByteScan::c_npos)
                break;
            m_next = found;
            if (xml[found] == '>')
                return found;
            m_openQuote = xml[found];
            m_next = found + 1;
        }
        const std::size_t found =
            ByteScan::FindFirst(xml.data(), m_next, xml.size(), ByteScan::Byte{m_openQuote});
        if (found == ByteScan::c_npos)
            break;
        m_openQuote = '\0';
        m_next = found + 1;
    }
    m_next = xml.size();
    return ByteScan::c_npos;
}

void QuoteState::Advance(std::string_view piece) noexcept
{
    std::size_t pos = 0;
    for (;;) {
        if (m_open == '\0') {
            pos =
                ByteScan::FindFirst(piece.data(), pos, piece.size(), ByteScan::AnyOf<'"', '\''>());
            if (pos == ByteScan::c_npos)
                return;
            m_open = piece[pos++];
        }
        pos = ByteScan::FindFirst(piece.data(), pos, piece.size(), ByteScan::Byte{m_open});
        if (pos == ByteScan::c_npos)
            return;
        m_open = '\0';
        ++pos;
    }
}
