#pragma once

#include "XMLTextBuffer.h"

#include <kescorexml/XMLFormatter.h>

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// Writes an element tree into a string: what XMLFormatter::OutputDOMElement hands to its sink in
/// many pieces, in one go and without recursion.
class XMLTreeWriter
{
public:
    struct Style
    {
        FormatMode mode;
        std::u16string_view indent;
        std::u16string_view indentUnit;
        std::u16string_view newline;
    };

    /// The views of `style` stay valid and `output` untouched as long as the writer lives.
    XMLTreeWriter(TString& output, const Style& style);

    /// Appends the element and all below it, or throws and leaves the string as it was.
    void Write(const DOMElement& element);

private:
    /// An element whose open tag is written, and its next child.
    struct Level
    {
        const DOMElement* element;
        std::size_t nextChild;
    };

    void WriteElement(const DOMElement& element);
    void WriteStartTag(const DOMElement& element);
    void WriteCloseTag(const TString& name);
    void WriteText(const DOMElement& element);
    void WriteContent(std::u16string_view text);
    void WriteRaw(std::u16string_view text);
    void Indent();
    void CloseLevel();

    XMLTextBuffer m_buffer;
    Style m_style;
    /// The indentation of the deepest level so far, of which m_indentLength units are in use.
    std::u16string m_indent;
    std::size_t m_indentLength;
    std::vector<Level> m_levels;
    std::vector<const std::pair<const TString, TString>*> m_attributes;
};
