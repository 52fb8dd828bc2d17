#pragma once

#include "markup/ConstructScanner.h"

#include <kescorexml/XMLUtils.h>

#include <cstddef>
#include <string_view>

/// Finds out, for positions that are asked from front to back, which start tag of a text holds
/// them. Unlike a search around the position it knows comments, character data, quoted values and
/// the declarations inside a document type declaration for what they are. One pass in all.
/// The text must outlive the walker. Different objects may be used from different threads.
class StartTagWalker
{
public:
    explicit StartTagWalker(std::string_view xml) noexcept : m_xml(xml) {}

    /// The start tag, from "<" to ">", that holds `position` outside its quoted values; none when
    /// the position lies elsewhere or in a tag that is not closed. Requires that `position` is not
    /// below the one asked before.
    XmlUtils::StringRange GetStartTagAround(std::size_t position) noexcept;

    /// The first start tag of the text, once a position in it or behind it has been asked.
    XmlUtils::StringRange GetRootTag() const noexcept { return m_rootTag; }

private:
    bool MoveToNextConstruct(std::size_t position) noexcept;
    std::size_t FindEndOfConstruct(std::size_t position) noexcept;
    std::size_t FindCloseOfTag(std::size_t position) noexcept;

    std::string_view m_xml;
    /// The current construct: its "<" and the first byte behind it.
    std::size_t m_start = 0;
    std::size_t m_end = 0;
    bool m_isStartTag = false;
    /// The quotes of the current start tag up to `m_quotesRead`.
    QuoteState m_quotes;
    std::size_t m_quotesRead = 0;
    XmlUtils::StringRange m_rootTag;
};
