#include "base/ShortText.h"
#include "direct/ByteClasses.h"
#include "direct/DirectScanner.h"

#include <string_view>
#include <utility>

using ByteClasses::SkipWhitespace;
using DirectScanning::Verdict;

namespace {

/// Deeper content models are left to Xerces.
constexpr std::size_t c_maxModelDepth = 64;
/// The scanner compares each attribute of an element with all others.
constexpr std::size_t c_maxDeclaredAttributes = 256;

const char* SkipOccurrence(const char* at) noexcept
{
    return *at == '?' || *at == '*' || *at == '+' ? at + 1 : at;
}

/// Whether Xerces has rules of its own for the attribute, or the colon sanitizer has.
bool IsSpecialAttribute(std::string_view name) noexcept
{
    return name.starts_with(':') || name.starts_with("xml:space") || name.starts_with("xml:id") ||
           name.starts_with("IllegalColon") || name.starts_with("xmlns:IllegalColon");
}

} // namespace

/// From behind the "[" to behind the "]". Declarations of elements and attributes, comments and
/// instructions; nothing else is plain.
const char* DirectScanner::ScanInternalSubset(const char* at)
{
    for (;;) {
        at = SkipWhitespace(at);
        if (*at == ']')
            return at + 1;
        if (ShortText::StandsAt(at, m_end, "<!ELEMENT"))
            at = ScanElementDeclaration(at + 9);
        else if (ShortText::StandsAt(at, m_end, "<!ATTLIST"))
            at = ScanAttributeList(at + 9);
        else if (ShortText::StandsAt(at, m_end, "<!--"))
            at = ScanComment(at);
        else if (ShortText::StandsAt(at, m_end, "<?"))
            at = ScanInstruction(at);
        else
            return Decline(Verdict::DocumentType);
        if (at == nullptr)
            return Decline(Verdict::DocumentType);
    }
}

const char* DirectScanner::ScanDeclaredName(const char* at, NameTable::Name*& name)
{
    const char* const begin = SkipWhitespace(at);
    const char* const end = begin == at ? nullptr : ScanName(begin);
    if (end != nullptr)
        name = &m_table.Find({begin, static_cast<std::size_t>(end - begin)});
    return end;
}

const char* DirectScanner::ScanElementDeclaration(const char* at)
{
    NameTable::Name* element = nullptr;
    at = ScanDeclaredName(at, element);
    if (at == nullptr || !m_declarations.DeclareElement(*element))
        return nullptr;
    const char* const model = SkipWhitespace(at);
    if (model == at)
        return nullptr;
    if (ShortText::StandsAt(model, m_end, "EMPTY"))
        at = model + 5;
    else if (ShortText::StandsAt(model, m_end, "ANY"))
        at = model + 3;
    else if (*model == '(')
        at = *SkipWhitespace(model + 1) == '#' ? ScanMixedModel(SkipWhitespace(model + 1))
                                               : ScanModel(model);
    else
        return nullptr;
    if (at == nullptr)
        return nullptr;
    at = SkipWhitespace(at);
    return *at == '>' ? at + 1 : nullptr;
}

const char* DirectScanner::ScanMixedModel(const char* at)
{
    constexpr std::string_view c_text = "#PCDATA";
    if (!ShortText::StandsAt(at, m_end, c_text) || !AddParticle())
        return nullptr;
    at = SkipWhitespace(at + c_text.size());
    bool hasNames = false;
    for (; *at == '|'; at = SkipWhitespace(at)) {
        hasNames = true;
        at = ScanName(SkipWhitespace(at + 1));
        if (at == nullptr || !AddParticle())
            return nullptr;
    }
    if (*at != ')')
        return nullptr;
    if (at[1] == '*')
        return at + 2;
    return hasNames ? nullptr : at + 1;
}

/// One more name, group or text of content models. No less than Xerces is charged for: it makes up
/// to four nodes of each, one for each repetition and for each separator, and an eighth of their
/// number so far is the work that one more of them makes.
bool DirectScanner::AddParticle() noexcept
{
    constexpr std::uint64_t c_nodes = 4;
    constexpr std::uint64_t c_nodesAUnit = 8;
    m_particles += c_nodes;
    m_declared += c_nodes * m_particles / c_nodesAUnit;
    return m_declared <= m_maxDeclared || Decline(Verdict::Limit) != nullptr;
}

/// Groups are kept on a stack: for each the separator that it uses, once that is known.
const char* DirectScanner::ScanModel(const char* at)
{
    std::string separators;
    for (;;) {
        // A particle begins.
        at = SkipWhitespace(at);
        if (*at == '(') {
            if (separators.size() == c_maxModelDepth || !AddParticle())
                return nullptr;
            separators.push_back(' ');
            ++at;
            continue;
        }
        at = ScanName(at);
        if (at == nullptr || !AddParticle())
            return nullptr;
        at = SkipOccurrence(at);
        // A particle has ended, and with it the groups that it closes.
        for (at = SkipWhitespace(at); *at == ')'; at = SkipWhitespace(at)) {
            at = SkipOccurrence(at + 1);
            separators.pop_back();
            if (separators.empty())
                return at;
        }
        if (*at != ',' && *at != '|')
            return nullptr;
        char& separator = separators.back();
        if (separator != ' ' && separator != *at)
            return nullptr;
        separator = *at++;
    }
}

const char* DirectScanner::ScanAttributeList(const char* at)
{
    NameTable::Name* element = nullptr;
    at = ScanDeclaredName(at, element);
    while (at != nullptr) {
        const char* const next = SkipWhitespace(at);
        if (*next == '>')
            return next + 1;
        at = ScanAttributeDeclaration(at, *element);
    }
    return nullptr;
}

const char* DirectScanner::ScanAttributeDeclaration(const char* at, const NameTable::Name& element)
{
    AttributeDeclarations::Attribute attribute{nullptr, false, std::nullopt};
    at = ScanDeclaredName(at, attribute.name);
    if (at == nullptr || IsSpecialAttribute(attribute.name->bytes))
        return nullptr;
    const char* next = SkipWhitespace(at);
    at = next == at ? nullptr : ScanAttributeType(next, attribute.isTokenized);
    if (at == nullptr)
        return nullptr;
    next = SkipWhitespace(at);
    if (next == at)
        return nullptr;
    at = ScanDefault(next, attribute);
    if (at == nullptr || !m_declarations.DeclareAttribute(element, std::move(attribute)))
        return nullptr;
    return m_declarations.Find(element)->size() > c_maxDeclaredAttributes ? nullptr : at;
}

const char* DirectScanner::ScanAttributeType(const char* at, bool& isTokenized)
{
    isTokenized = true;
    if (*at == '(') {
        do {
            const char* const begin = SkipWhitespace(at + 1);
            for (at = begin; ByteClasses::Is(*at, ByteClasses::NamePart);)
                ++at;
            if (at == begin)
                return nullptr;
            at = SkipWhitespace(at);
        } while (*at == '|');
        return *at == ')' ? at + 1 : nullptr;
    }
    // Those that begin like others come first.
    for (const std::string_view type :
         {"CDATA", "IDREFS", "IDREF", "ID", "ENTITY", "ENTITIES", "NMTOKENS", "NMTOKEN"}) {
        if (ShortText::StandsAt(at, m_end, type)) {
            isTokenized = type != "CDATA";
            return at + type.size();
        }
    }
    return nullptr;
}

const char* DirectScanner::ScanDefault(const char* at, AttributeDeclarations::Attribute& attribute)
{
    if (ShortText::StandsAt(at, m_end, "#REQUIRED"))
        return at + 9;
    if (ShortText::StandsAt(at, m_end, "#IMPLIED"))
        return at + 8;
    if (ShortText::StandsAt(at, m_end, "#FIXED")) {
        at += 6;
        const char* const next = SkipWhitespace(at);
        if (next == at)
            return nullptr;
        at = next;
    }
    BeginValues();
    const char* const end = ScanAttributeValue(at);
    if (end == nullptr)
        return nullptr;
    // References to entities and parameter entities: Xerces knows what becomes of them.
    const std::string_view source(at, static_cast<std::size_t>(end - at));
    if (source.find_first_of("&%") != std::string_view::npos)
        return nullptr;
    std::u16string value(GetValue(0), m_values[0].length);
    if (attribute.isTokenized)
        AttributeDeclarations::CollapseBlanks(value);
    attribute.defaultValue = std::move(value);
    return end;
}
