#pragma once

#include "tree/TreeWalk.h"
#include "writing/XMLTextBuffer.h"

#include <kescorexml/DOMElement.h>
#include <kescorexml/XMLFormatter.h>

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

class AttributeBlock;

/// Writes an element tree into a string: what XMLFormatter::OutputDOMElement hands to OutputString
/// in many pieces, in one go and without recursion.
class XMLTreeWriter
{
public:
    struct Style
    {
        FormatMode mode;
        std::u16string_view indent;
        std::u16string_view indentUnit;
        std::u16string_view newline;
        /// Whose indentation stands before the text of an element that has children, asked for each
        /// of them; null for that of the children.
        const XMLFormatter* textIndentOf;
    };

    /// The views of `style` stay valid and `output` untouched as long as the writer lives.
    XMLTreeWriter(TString& output, const Style& style);

    /// Appends the element and all below it, or throws and leaves the string as it was.
    void Write(const DOMElement& element);
    /// The same for a text that is not kept: hands it to `take` piece by piece, each at least
    /// `pieceLength` units long but for the last one, until `take` returns false. The string, which
    /// must be empty, is where pieces are made, and is empty afterwards.
    template <typename Take>
    void WriteInPieces(const DOMElement& element, std::size_t pieceLength, Take&& take);

private:
    void WriteElement(const DOMElement& element);
    void WriteTagStart(const TString& name);
    void WriteAttributes(const DOMElement& element);
    void WriteAttributes(const AttributeBlock& block);
    void WriteAttributes(const XMLFormatter::AttributeMap& attributes);
    void WriteAttribute(std::u16string_view name, std::u16string_view value);
    void WriteTagEnd(bool isEmptyElement);
    void WriteCloseTag(const TString& name, std::u16string_view indent);
    void WriteText(const DOMElement& element);
    void WriteEscaped(std::u16string_view text);
    void WriteLong(std::u16string_view text);
    void WriteRaw(std::u16string_view text);
    void Open(const DOMElement& element);
    void CloseDownTo(std::size_t depth);
    void CloseInnermost();

    std::u16string_view GetIndent() const noexcept { return {m_indent.data(), m_indentLength}; }

    XMLTextBuffer m_buffer;
    Style m_style;
    /// The indentation of the deepest level so far, of which m_indentLength units are in use.
    std::u16string m_indent;
    std::size_t m_indentLength;
    TreeWalk<const DOMElement> m_walk;
    /// Those whose open tag is written, as m_walk has entered them.
    std::vector<const DOMElement*> m_open;
    /// Room to sort the attributes of one element in.
    std::vector<const XMLFormatter::AttributeMap::value_type*> m_attributes;
};

template <typename Take>
void XMLTreeWriter::WriteInPieces(const DOMElement& element, std::size_t pieceLength, Take&& take)
{
    const auto takeFrom = [&](std::size_t length) {
        const std::u16string_view piece = m_buffer.GetText();
        if (piece.size() < length)
            return true;
        const bool goesOn = take(piece);
        m_buffer.Truncate(0);
        return goesOn;
    };
    const auto closeDownTo = [&](std::size_t depth) {
        while (m_open.size() > depth) {
            CloseInnermost();
            if (!takeFrom(pieceLength))
                return false;
        }
        return true;
    };
    WriteElement(element);
    while (const DOMElement* next = m_walk.Next()) {
        if (!closeDownTo(m_walk.Depth()) || !takeFrom(pieceLength))
            return;
        WriteElement(*next);
    }
    if (closeDownTo(0))
        takeFrom(1);
}
