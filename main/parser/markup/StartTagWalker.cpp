#include "markup/StartTagWalker.h"

#include "base/ByteScan.h"

namespace {

constexpr std::string_view c_openDoctype = "<!DOCTYPE";

/// The ">" that closes the construct at `start`, or npos. "<!-->" is the start of a comment, whose
/// dashes do not close it.
std::size_t FindClose(std::string_view xml, std::size_t start) noexcept
{
    constexpr std::string_view c_open = ConstructScanner::c_openComment;
    constexpr std::string_view c_close = ConstructScanner::c_closeComment;
    if (!xml.substr(start).starts_with(c_open))
        return ConstructScanner(start).FindClose(xml);
    const std::size_t found = ByteScan::FindText(xml, c_close, start + c_open.size());
    return found == ByteScan::c_npos ? found : found + c_close.size() - 1;
}

/// The first byte behind the document type declaration that opens at `start`, or npos. Its internal
/// subset has quoted texts, comments and instructions that may hold any of its delimiters.
std::size_t FindEndOfDoctype(std::string_view xml, std::size_t start) noexcept
{
    bool isInSubset = false;
    std::size_t pos = start + 1;
    for (;;) {
        pos = ByteScan::FindFirst(xml.data(), pos, xml.size(),
                                  ByteScan::AnyOf<'>', '"', '\'', '[', ']', '<'>());
        if (pos == ByteScan::c_npos)
            return ByteScan::c_npos;
        const char c = xml[pos];
        if (c == '>' && !isInSubset)
            return pos + 1;
        if (c == '[' || c == ']') {
            isInSubset = c == '[';
        } else if (c == '"' || c == '\'') {
            pos = ByteScan::FindByte(xml, c, pos + 1);
        } else if (xml.substr(pos).starts_with(ConstructScanner::c_openComment) ||
                   xml.substr(pos).starts_with("<?")) {
            pos = FindClose(xml, pos);
        }
        if (pos == ByteScan::c_npos)
            return ByteScan::c_npos;
        ++pos;
    }
}

} // namespace

/// The ">" that closes the tag at `m_start`, or npos. On the way the quotes up to `position` are
/// read, so that they need not be read again.
std::size_t StartTagWalker::FindCloseOfTag(std::size_t position) noexcept
{
    ConstructScanner scanner(m_start);
    const std::size_t close = scanner.FindClose(m_xml.substr(0, position));
    if (close != ByteScan::c_npos)
        return close;
    if (position >= m_start + 3) {
        m_quotes = QuoteState(scanner.GetOpenQuote());
        m_quotesRead = position;
    }
    return scanner.FindClose(m_xml);
}

std::size_t StartTagWalker::FindEndOfConstruct(std::size_t position) noexcept
{
    if (m_xml.substr(m_start).starts_with(c_openDoctype))
        return FindEndOfDoctype(m_xml, m_start);
    const std::size_t close = m_isStartTag ? FindCloseOfTag(position) : FindClose(m_xml, m_start);
    return close == ByteScan::c_npos ? ByteScan::c_npos : close + 1;
}

bool StartTagWalker::MoveToNextConstruct(std::size_t position) noexcept
{
    const std::size_t open = ByteScan::FindByteSoon(m_xml, '<', m_end);
    m_isStartTag = false;
    m_start = m_end = m_xml.size();
    if (open == ByteScan::c_npos || m_xml.size() - open < 2)
        return false;
    m_start = open;
    m_quotes = QuoteState();
    m_quotesRead = m_start;
    const char kind = m_xml[m_start + 1];
    m_isStartTag = kind != '!' && kind != '?' && kind != '/';
    const std::size_t end = FindEndOfConstruct(position);
    if (end == ByteScan::c_npos) {
        m_isStartTag = false;
        return false;
    }
    m_end = end;
    if (m_isStartTag && m_rootTag.start == std::string::npos)
        m_rootTag = {m_start, m_end - m_start};
    return true;
}

XmlUtils::StringRange StartTagWalker::GetStartTagAround(std::size_t position) noexcept
{
    while (m_end <= position) {
        if (!MoveToNextConstruct(position))
            return {};
    }
    if (!m_isStartTag || position < m_start)
        return {};
    // What was read for an earlier position is not read again: a tag may be as long as the text.
    m_quotes.Advance(m_xml.substr(m_quotesRead, position - m_quotesRead));
    m_quotesRead = position;
    if (m_quotes.IsInside())
        return {};
    return {m_start, m_end - m_start};
}
