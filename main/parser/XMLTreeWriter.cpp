#include "XMLTreeWriter.h"

#include "IndentLimit.h"
#include "XMLEscaping.h"

#include <kescorexml/DOMElement.h>
#include <kescorexml/DOMElementChildren.h>

#include <algorithm>

namespace {

constexpr std::u16string_view c_attributeOpen = u"='";

} // namespace

XMLTreeWriter::XMLTreeWriter(TString& output, const Style& style)
    : m_buffer(output), m_style(style), m_indent(style.indent), m_indentLength(style.indent.size())
{
}

void XMLTreeWriter::Write(const DOMElement& element)
{
    WriteElement(element);
    while (!m_levels.empty()) {
        Level& level = m_levels.back();
        const auto children = level.element->GetChildren();
        if (level.nextChild < children.size())
            WriteElement(children[level.nextChild++]);
        else
            CloseLevel();
    }
    m_buffer.Commit();
}

void XMLTreeWriter::WriteElement(const DOMElement& element)
{
    m_buffer.Append({m_indent.data(), m_indentLength});
    WriteStartTag(element);
    if (element.HasChildren()) {
        m_buffer.Append(XMLFormatter::suffixOpenClose);
        m_buffer.Append(m_style.newline);
        m_levels.push_back({&element, 0});
        Indent();
    } else if (element.HasText()) {
        m_buffer.Append(XMLFormatter::suffixOpenClose);
        WriteText(element);
        WriteCloseTag(element.GetName());
    } else {
        m_buffer.Append(XMLFormatter::suffixEmpty);
        m_buffer.Append(m_style.newline);
    }
}

void XMLTreeWriter::WriteStartTag(const DOMElement& element)
{
    m_buffer.Append(XMLFormatter::prefixOpen);
    m_buffer.Append(element.GetName());
    if (!element.HasAttributes())
        return;
    m_attributes.clear();
    for (const auto& attribute : element.GetAttributes())
        m_attributes.push_back(&attribute);
    std::sort(m_attributes.begin(), m_attributes.end(),
              [](const auto* a, const auto* b) { return a->first < b->first; });
    for (const auto* attribute : m_attributes) {
        m_buffer.Append(u" ");
        m_buffer.Append(attribute->first);
        m_buffer.Append(c_attributeOpen);
        m_buffer.AppendEscaped<MappingTableType::Attribute>(attribute->second);
        m_buffer.Append(u"'");
    }
}

void XMLTreeWriter::WriteCloseTag(const TString& name)
{
    m_buffer.Append(XMLFormatter::prefixClose);
    m_buffer.Append(name);
    m_buffer.Append(XMLFormatter::suffixOpenClose);
    m_buffer.Append(m_style.newline);
}

void XMLTreeWriter::WriteText(const DOMElement& element)
{
    if (element.IsEncoded())
        WriteRaw(element.GetText());
    else
        WriteContent(element.GetText());
}

void XMLTreeWriter::WriteContent(std::u16string_view text)
{
    const auto form = m_style.mode == FormatMode::EscapeAll
                          ? XMLEscaping::ContentForm::LikeAttribute
                          : XMLEscaping::ChooseContentForm(text);
    switch (form) {
    case XMLEscaping::ContentForm::LikeAttribute:
        m_buffer.AppendEscaped<MappingTableType::Attribute>(text);
        break;
    case XMLEscaping::ContentForm::Long:
        m_buffer.AppendEscaped<MappingTableType::LongContent>(text);
        break;
    case XMLEscaping::ContentForm::CData:
        XMLEscaping::VisitCData(text, [this](std::u16string_view part) { m_buffer.Append(part); });
        break;
    }
}

void XMLTreeWriter::WriteRaw(std::u16string_view text)
{
    if (!text.starts_with(m_style.newline))
        m_buffer.Append(m_style.newline);
    m_buffer.Append(text);
    if (!text.ends_with(m_style.newline))
        m_buffer.Append(m_style.newline);
    m_buffer.Append({m_indent.data(), m_indentLength});
}

void XMLTreeWriter::Indent()
{
    const std::size_t length = m_indentLength + m_style.indentUnit.size();
    RequireIndentLength(static_cast<TString::size_type>(length));
    if (length > m_indent.size())
        m_indent.append(m_style.indentUnit);
    m_indentLength = length;
}

void XMLTreeWriter::CloseLevel()
{
    const DOMElement& element = *m_levels.back().element;
    if (element.HasText()) {
        m_buffer.Append({m_indent.data(), m_indentLength});
        WriteText(element);
    }
    m_indentLength -= m_style.indentUnit.size();
    m_buffer.Append({m_indent.data(), m_indentLength});
    WriteCloseTag(element.GetName());
    m_levels.pop_back();
}
