#include "base/ShortText.h"
#include "direct/ByteClasses.h"
#include "direct/DirectScanner.h"
#include "direct/WideRun.h"

#include <kescorexml/ParseLimits.h>

#include <algorithm>

using DirectScanning::Verdict;

namespace {

/// How many attributes of an element are expected again.
constexpr std::size_t c_maxRemembered = 32;

using Names = std::vector<NameTable::Name*>;

bool BeginsWith(const Names& names, const Names& first) noexcept
{
    return first.size() <= names.size() && std::equal(first.begin(), first.end(), names.begin());
}

} // namespace

const char* DirectScanner::ScanStartTag(const char* at)
{
    // Declarations refer to the names of their document.
    if (m_declarations.IsEmpty())
        m_table.ForgetIfLarge();
    else if (m_names.IsLarge())
        return Decline(Verdict::DocumentType);
    const char* const begin = at + 1;
    NameTable::Name* named = nullptr;
    at = ScanElementName(begin, named);
    if (at == nullptr)
        return nullptr;
    NameTable::Name& element = *named;
    const auto length = static_cast<std::size_t>(at - begin);
    BeginValues();
    ++m_tag;
    for (;;) {
        const char* const next = ByteClasses::SkipWhitespace(at);
        const bool isEmpty = *next == '/';
        if (isEmpty && next[1] != '>')
            return Decline(Verdict::Markup);
        if (isEmpty || *next == '>') {
            if (!isEmpty)
                m_open.push_back({begin, length});
            return StartElement(next + (isEmpty ? 2 : 1), element, isEmpty);
        }
        if (next == at)
            return Decline(Verdict::Markup);
        at = ScanAttribute(next, element);
        if (at == nullptr)
            return nullptr;
    }
}

const char* DirectScanner::ScanElementName(const char* at, NameTable::Name*& element)
{
    // Elements mostly follow each other as they did before.
    element = m_table.GuessElement();
    if (element != nullptr && ShortText::StandsAt(at, m_end, element->bytes)) {
        const char* const behind = at + element->bytes.size();
        if (ByteClasses::IsAscii(*behind) && !ByteClasses::Is(*behind, ByteClasses::NamePart)) {
            m_table.NoteElement(*element);
            return behind;
        }
    }
    const char* const behind = ScanName(at);
    if (behind != nullptr) {
        element = &m_table.Find({at, static_cast<std::size_t>(behind - at)});
        m_table.NoteElement(*element);
    }
    return behind;
}

const char* DirectScanner::ScanAttribute(const char* at, NameTable::Name& element)
{
    at = ScanAttributeName(at, element);
    if (at == nullptr)
        return nullptr;
    NameTable::Name& name = *m_attributes.back();
    // Of two attributes of one name in a tag, Xerces says what is wrong.
    if (name.lastTag == m_tag)
        return Decline(Verdict::Markup);
    name.lastTag = m_tag;
    if (*at != '=')
        at = ByteClasses::SkipWhitespace(at);
    if (*at != '=')
        return Decline(Verdict::Markup);
    return ScanAttributeValue(ByteClasses::SkipWhitespace(at + 1));
}

const char* DirectScanner::ScanAttributeName(const char* at, const NameTable::Name& element)
{
    // Elements of one name mostly have the same attributes.
    const std::size_t index = m_attributes.size();
    if (index < element.lastAttributes.size()) {
        NameTable::Name* const expected = element.lastAttributes[index];
        const std::size_t length = expected->bytes.size();
        if (ShortText::StandsAt(at, m_end, expected->bytes) && at[length] == '=') {
            m_attributes.push_back(expected);
            return at + length;
        }
    }
    // The colon sanitizer puts another name in its place, which it alone can choose.
    if (*at == ':')
        return Decline(Verdict::ColonName);
    const char* const begin = at;
    at = ScanName(at);
    if (at != nullptr)
        m_attributes.push_back(&m_table.Find({begin, static_cast<std::size_t>(at - begin)}));
    return at;
}

const char* DirectScanner::ScanAttributeValue(const char* at)
{
    const char quote = *at;
    if (quote != '"' && quote != '\'')
        return Decline(Verdict::Markup);
    ++at;
    m_values.push_back({static_cast<std::size_t>(m_to - m_units.Begin()), 0, false});
    const WideRun::Stops<WideRun::Controls::StopAll> stops{quote, '<', '&'};
    for (;;) {
        m_to = m_units.Reserve(m_to, c_slack + WideRun::c_step);
        at = WideRun::Copy(at, m_end, stops, m_to, m_units.End() - c_slack);
        if (*at == quote) {
            const char16_t* const begin = m_units.Begin() + m_values.back().offset;
            m_values.back().length = static_cast<std::size_t>(m_to - begin);
            return at + 1;
        }
        switch (*at) {
        case '<':
            return Decline(Verdict::Markup);
        case '&':
            m_values.back().hasReference = true;
            at = ScanReference(at);
            break;
        case '\r':
            if (at[1] == '\n')
                ++at;
            [[fallthrough]];
        case '\n':
        case '\t':
            *m_to++ = u' ';
            ++at;
            break;
        default:
            at = ScanCharacters(at);
        }
        if (at == nullptr)
            return nullptr;
    }
}

const char* DirectScanner::StartElement(const char* at, NameTable::Name& element, bool isEmpty)
{
    if (m_passesOn && !IsValidAround(at))
        return nullptr;
    const std::size_t count = m_attributes.size();
    m_attributeNames.resize(count);
    m_attributeValues.resize(count);
    for (std::size_t i = 0; i < count; ++i) {
        m_attributeNames[i] = m_attributes[i]->entry->name.utf16();
        m_attributeValues[i] = {GetValue(i), m_values[i].length};
    }
    if (count <= c_maxRemembered && !BeginsWith(element.lastAttributes, m_attributes))
        element.lastAttributes = m_attributes;
    if (!m_declarations.IsEmpty() && !ApplyDeclarations(element))
        return nullptr;
    m_eventEnd = at;
    m_sink->StartElement({m_names, *element.entry, m_attributeNames, m_attributeValues});
    if (isEmpty)
        m_sink->EndElement();
    m_isDone = m_sink->IsDone();
    return at;
}

bool DirectScanner::ApplyDeclarations(const NameTable::Name& element)
{
    const auto* const declared = m_declarations.Find(element);
    if (declared == nullptr)
        return true;
    m_declared += declared->size();
    for (const AttributeDeclarations::Attribute& attribute : *declared) {
        if (attribute.name->lastTag == m_tag) {
            if (attribute.isTokenized && !CollapseBlanks(*attribute.name))
                return false;
        } else if (attribute.defaultValue) {
            m_attributeNames.push_back(attribute.name->entry->name.utf16());
            m_attributeValues.push_back(*attribute.defaultValue);
            m_output += attribute.name->bytes.size() + attribute.defaultValue->size() +
                        ParseLimits::c_unitsOfImpliedAttribute;
        }
    }
    if (m_output > m_maxOutput || m_declared > m_maxDeclared)
        return Decline(Verdict::Limit) != nullptr;
    return true;
}

/// Of a value in the tag. Which blanks count that came by reference, Xerces knows.
bool DirectScanner::CollapseBlanks(const NameTable::Name& attribute)
{
    const auto found = std::find(m_attributes.begin(), m_attributes.end(), &attribute);
    const auto index = static_cast<std::size_t>(found - m_attributes.begin());
    if (m_values[index].hasReference)
        return Decline(Verdict::DocumentType) != nullptr;
    std::u16string value(m_attributeValues[index]);
    AttributeDeclarations::CollapseBlanks(value);
    std::copy(value.begin(), value.end(), m_units.Begin() + m_values[index].offset);
    m_attributeValues[index] = m_attributeValues[index].substr(0, value.size());
    return true;
}

void DirectScanner::BeginValues() noexcept
{
    m_attributes.clear();
    m_values.clear();
    m_to = m_units.Begin();
}

const char* DirectScanner::ScanEndTag(const char* at)
{
    const OpenTag& open = m_open.back();
    at += 2;
    if (!ShortText::StandsAt(at, m_end, {open.name, open.length}))
        return Decline(Verdict::Markup);
    at += open.length;
    if (*at != '>')
        at = ByteClasses::SkipWhitespace(at);
    if (*at != '>')
        return Decline(Verdict::Markup);
    ++at;
    if (m_passesOn && !IsValidAround(at))
        return nullptr;
    m_open.pop_back();
    m_eventEnd = at;
    m_sink->EndElement();
    m_isDone = m_sink->IsDone();
    return at;
}
