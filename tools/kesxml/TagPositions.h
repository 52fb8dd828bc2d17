#pragma once

#include "TextPosition.h"

#include <string_view>

/// Finds where the start tags of a document begin, while a parser tells where they end. One walk
/// over the text for all.
class TagPositions
{
public:
    /// The text, in UTF-8 without byte-order mark, must live as long.
    explicit TagPositions(std::string_view document) : m_document(document), m_positions(document)
    {
    }

    /// Where the start tag begins that ends at `end`; `end` itself where none does, as for an
    /// element that an entity brought. REQUIRES: `end` is not before the one asked for last.
    TextPosition FindStart(TextPosition end);

private:
    std::string_view m_document;
    TextPositions m_positions;
    std::size_t m_next = 0;
    TextPosition m_start;
    TextPosition m_end;
};
