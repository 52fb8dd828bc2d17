#pragma once

#include <kescorexml/Export.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

/// The kinds of text that someone who rewrites markup leaves alone.
enum class XMLRangeType : std::uint32_t
{
    /// "<![CDATA[" to "]]>".
    CData = 0,
    /// "<!--" to "-->".
    Comment = 1,
    /// Any other "<!" to the next ">".
    Declaration = 2,
    /// Everything else.
    None = 0xFFFFFFFF
};

/// Tells for the positions of an 8-bit XML text, asked from front to back, which kind of text they
/// lie in. Quotes mean nothing to it: a "<!" in an attribute value opens a range too. A range whose
/// terminator is missing runs to the end of the text.
///
/// Built in one pass; a walk over the text costs time linear in the ranges and the positions asked.
/// The text is not kept. A copy goes on where the original stands.
/// Different objects may be used from different threads.
class KESCOREXML_EXPORT XMLRangeTable
{
public:
    /// A table without ranges.
    XMLRangeTable();
    /// A text that begins with "!" has no ranges.
    explicit XMLRangeTable(const std::string& xml);
    /// A source that was moved from is a logic assertion.
    XMLRangeTable(const XMLRangeTable& other);
    /// The source may afterwards only be destroyed or assigned to.
    XMLRangeTable(XMLRangeTable&& other) noexcept;
    ~XMLRangeTable();
    /// A source that was moved from is a logic assertion; this table is then unchanged.
    XMLRangeTable& operator=(const XMLRangeTable& other);
    /// The source may afterwards only be destroyed or assigned to.
    XMLRangeTable& operator=(XMLRangeTable&& other) noexcept;

    /// The kind of the range that holds byte `position`; `end` becomes the index of the first byte
    /// behind that range and stays as it is when the answer is None. A position that is smaller
    /// than the one asked before is a logic assertion.
    XMLRangeType GetRangeTypeAt(std::size_t position, std::size_t& end);

private:
    struct XMLRangeTableImpl;

    std::unique_ptr<XMLRangeTableImpl> m_pImpl;
};
