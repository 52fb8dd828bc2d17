#include "writing/XMLTreeWriter.h"

#include "slabs/AttributeBlock.h"
#include "tree/DOMElementAccess.h"
#include "writing/IndentLimit.h"
#include "writing/OnePassEscaping.h"
#include "writing/XMLEscaping.h"

#include <algorithm>
#include <array>

namespace {

/// Longer texts are escaped step by step, so that room is never made for what each of their units
/// might become.
constexpr std::size_t c_escapeStep = 1024;

/// Room for the punctuation of a tag or an attribute.
constexpr std::size_t c_tagRoom = 8;

char16_t* CopyAttribute(std::u16string_view name, std::u16string_view value, char16_t* to) noexcept
{
    *to++ = u' ';
    to = OnePassEscaping::Copy(name, to);
    *to++ = u'=';
    *to++ = u'\'';
    to = OnePassEscaping::CopyEscaped<MappingTableType::Attribute>(value, to);
    *to++ = u'\'';
    return to;
}

} // namespace

XMLTreeWriter::XMLTreeWriter(TString& output, const Style& style)
    : m_buffer(output), m_style(style), m_indent(style.indent), m_indentLength(style.indent.size())
{
}

void XMLTreeWriter::Write(const DOMElement& element)
{
    WriteElement(element);
    while (const DOMElement* next = m_walk.Next()) {
        CloseDownTo(m_walk.Depth());
        WriteElement(*next);
    }
    CloseDownTo(0);
    m_buffer.Commit();
}

void XMLTreeWriter::WriteElement(const DOMElement& element)
{
    WriteTagStart(element.GetName());
    WriteAttributes(element);
    if (element.HasChildren()) {
        WriteTagEnd(false);
        Open(element);
    } else if (element.HasText()) {
        m_buffer.Append(u'>');
        WriteText(element);
        WriteCloseTag(element.GetName(), std::u16string_view());
    } else {
        WriteTagEnd(true);
    }
}

void XMLTreeWriter::Open(const DOMElement& element)
{
    m_walk.Enter(element);
    m_open.push_back(&element);
    const std::size_t length = m_indentLength + m_style.indentUnit.size();
    RequireIndentLength(static_cast<TString::size_type>(length));
    if (length > m_indent.size())
        m_indent.append(m_style.indentUnit);
    m_indentLength = length;
}

void XMLTreeWriter::CloseDownTo(std::size_t depth)
{
    while (m_open.size() > depth)
        CloseInnermost();
}

void XMLTreeWriter::CloseInnermost()
{
    const DOMElement& element = *m_open.back();
    if (element.HasText()) {
        if (m_style.textIndentOf != nullptr)
            m_buffer.Append(m_style.textIndentOf->GetIndent().view());
        else
            m_buffer.Append(GetIndent());
        WriteText(element);
    }
    m_indentLength -= m_style.indentUnit.size();
    WriteCloseTag(element.GetName(), GetIndent());
    m_open.pop_back();
}

// Tags

void XMLTreeWriter::WriteTagStart(const TString& name)
{
    const auto length = static_cast<std::size_t>(name.length());
    char16_t* to = m_buffer.Reserve(m_indentLength + length + c_tagRoom);
    to = OnePassEscaping::Copy(GetIndent(), to);
    *to++ = u'<';
    m_buffer.SetEnd(OnePassEscaping::Copy(name, to));
}

void XMLTreeWriter::WriteTagEnd(bool isEmptyElement)
{
    char16_t* to = m_buffer.Reserve(m_style.newline.size() + c_tagRoom);
    if (isEmptyElement) {
        *to++ = u' ';
        *to++ = u'/';
    }
    *to++ = u'>';
    m_buffer.SetEnd(OnePassEscaping::Copy(m_style.newline, to));
}

void XMLTreeWriter::WriteCloseTag(const TString& name, std::u16string_view indent)
{
    const auto length = static_cast<std::size_t>(name.length());
    char16_t* to = m_buffer.Reserve(indent.size() + length + m_style.newline.size() + c_tagRoom);
    to = OnePassEscaping::Copy(indent, to);
    *to++ = u'<';
    *to++ = u'/';
    to = OnePassEscaping::Copy(name, to);
    *to++ = u'>';
    m_buffer.SetEnd(OnePassEscaping::Copy(m_style.newline, to));
}

// Attributes

void XMLTreeWriter::WriteAttributes(const DOMElement& element)
{
    // The map of packed attributes would be built, and kept, for the sake of one look at it.
    if (const AttributeBlock* block = DOMElementAccess::Attributes(element).GetBlock())
        WriteAttributes(*block);
    else if (element.HasAttributes())
        WriteAttributes(element.GetAttributes());
}

void XMLTreeWriter::WriteAttributes(const AttributeBlock& block)
{
    const AttributeNames& names = block.Names();
    std::array<std::u16string_view, AttributeNames::c_maxCount> values;
    std::size_t count = 0;
    std::size_t nameUnits = 0;
    std::size_t valueUnits = 0;
    block.ForEach([&](const TString& name, std::u16string_view value) {
        values[count++] = value;
        nameUnits += static_cast<std::size_t>(name.length());
        valueUnits += value.size();
    });
    static_assert(ParseArena::c_maxObjectBytes / sizeof(char16_t) <= c_escapeStep,
                  "a block's values need not be escaped step by step");
    char16_t* to =
        m_buffer.Reserve(nameUnits + count * c_tagRoom + OnePassEscaping::EscapedRoom(valueUnits));
    for (std::size_t rank = 0; rank < count; ++rank) {
        const std::size_t index = names.Sorted(rank);
        to = CopyAttribute(names.Name(index), values[index], to);
    }
    m_buffer.SetEnd(to);
}

void XMLTreeWriter::WriteAttributes(const XMLFormatter::AttributeMap& attributes)
{
    m_attributes.clear();
    for (const auto& attribute : attributes)
        m_attributes.push_back(&attribute);
    std::sort(m_attributes.begin(), m_attributes.end(),
              [](const auto* a, const auto* b) { return a->first < b->first; });
    for (const auto* attribute : m_attributes)
        WriteAttribute(attribute->first, attribute->second);
}

void XMLTreeWriter::WriteAttribute(std::u16string_view name, std::u16string_view value)
{
    if (value.size() <= c_escapeStep) {
        char16_t* to =
            m_buffer.Reserve(name.size() + c_tagRoom + OnePassEscaping::EscapedRoom(value.size()));
        m_buffer.SetEnd(CopyAttribute(name, value, to));
        return;
    }
    m_buffer.Append(u' ');
    m_buffer.Append(name);
    m_buffer.Append(u"='");
    WriteEscaped(value);
    m_buffer.Append(u'\'');
}

// Text

void XMLTreeWriter::WriteText(const DOMElement& element)
{
    const std::u16string_view text = element.GetText();
    if (element.IsEncoded())
        WriteRaw(text);
    else if (m_style.mode != FormatMode::EscapeAll && XMLEscaping::IsLongContent(text))
        WriteLong(text);
    else
        WriteEscaped(text);
}

void XMLTreeWriter::WriteEscaped(std::u16string_view text)
{
    while (!text.empty()) {
        const std::u16string_view step = text.substr(0, c_escapeStep);
        char16_t* to = m_buffer.Reserve(OnePassEscaping::EscapedRoom(step.size()));
        m_buffer.SetEnd(OnePassEscaping::CopyEscaped<MappingTableType::Attribute>(step, to));
        text.remove_prefix(step.size());
    }
}

void XMLTreeWriter::WriteLong(std::u16string_view text)
{
    const TString::size_type start = m_buffer.GetLength();
    for (std::size_t position = 0; position < text.size(); position += c_escapeStep) {
        const std::u16string_view step = text.substr(position, c_escapeStep);
        char16_t* to = m_buffer.Reserve(OnePassEscaping::EscapedRoom(step.size()));
        to = OnePassEscaping::CopyEscaped<MappingTableType::LongContent>(step, to);
        if (to == nullptr) {
            m_buffer.Truncate(start);
            XMLEscaping::VisitCData(text,
                                    [this](std::u16string_view part) { m_buffer.Append(part); });
            return;
        }
        m_buffer.SetEnd(to);
    }
}

void XMLTreeWriter::WriteRaw(std::u16string_view text)
{
    if (!text.starts_with(m_style.newline))
        m_buffer.Append(m_style.newline);
    m_buffer.Append(text);
    if (!text.ends_with(m_style.newline))
        m_buffer.Append(m_style.newline);
    m_buffer.Append(GetIndent());
}
