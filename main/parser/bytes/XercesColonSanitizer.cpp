#include "bytes/XercesColonSanitizer.h"

#include "base/Assertion.h"
#include "base/ByteScan.h"
#include "base/KesErrors.h"
#include "markup/CharacterClasses.h"
#include "markup/StartTagWalker.h"

#include <kescorexml/XMLRangeTable.h>
#include <kescorexml/XMLUtils.h>

#include <optional>
#include <string_view>
#include <utility>
#include <vector>

namespace {

constexpr char c_colon = ':';
constexpr std::string_view c_encodedPrefix = "IllegalColon:";
constexpr std::u16string_view c_encodedPrefix16 = u"IllegalColon:";
constexpr std::u16string_view c_namespacePrefix16 = u"xmlns:IllegalColon";
constexpr std::string_view c_namespaceDeclaration =
    "xmlns:IllegalColon='http://kescorexml.invalid/xml/ThisShouldNotAppear'";

/// The next occurrence of a byte, remembered: whoever asks for rising positions again and again
/// makes one pass over the text in all.
class NextByte
{
public:
    NextByte(std::string_view text, char c) noexcept : m_text(text), m_byte(c) {}

    std::size_t GetFrom(std::size_t position) noexcept
    {
        if (!m_isKnown || m_found < position) {
            m_found = ByteScan::FindByteSoon(m_text, m_byte, position);
            m_isKnown = true;
        }
        return m_found;
    }

private:
    std::string_view m_text;
    char m_byte;
    bool m_isKnown = false;
    std::size_t m_found = 0;
};

class XercesColonSanitizerImpl
{
public:
    explicit XercesColonSanitizerImpl(std::shared_ptr<const std::string> input) noexcept
        : m_input(std::move(input)), m_walker(*m_input), m_nextClose(*m_input, '>'),
          m_nextOpen(*m_input, '<')
    {
    }

    /// The next colon that begins the name of an attribute in a start tag, or npos.
    std::size_t FindNextColonAttribute(std::size_t from);

    /// The index behind the root element's name. Requires that a colon was found.
    std::size_t FindNamespaceInsertPoint() const;

private:
    std::size_t SkipNameAndWhitespace(std::size_t pos) const noexcept;
    bool LooksLikeInsideTag(std::size_t idx, std::size_t close) noexcept;
    bool IsInStartTag(std::size_t idx, std::size_t close) noexcept;

    std::shared_ptr<const std::string> m_input;
    /// Built for the first colon that may count; most texts have none.
    std::optional<XMLRangeTable> m_ranges;
    StartTagWalker m_walker;
    NextByte m_nextClose;
    NextByte m_nextOpen;
};

std::size_t XercesColonSanitizerImpl::SkipNameAndWhitespace(std::size_t pos) const noexcept
{
    const std::string& input = *m_input;
    while (pos < input.size() && CharacterClasses::IsNameChar(input[pos]))
        ++pos;
    while (pos < input.size() && CharacterClasses::IsWhitespace(input[pos]))
        ++pos;
    return pos;
}

/// What the braces around `idx` say; `close` is the next ">" from there on. Cheap, but taken in by
/// a ">" in character data.
bool XercesColonSanitizerImpl::LooksLikeInsideTag(std::size_t idx, std::size_t close) noexcept
{
    const std::size_t open = m_nextOpen.GetFrom(idx);
    return open == ByteScan::c_npos ? (*m_input)[close - 1] == '/' : open > close;
}

/// True when `idx` lies in a start tag, outside quotes, and `close` ends that tag. When another ">"
/// ends it, `close` is part of a value, and the quotes between `idx` and `close` do not match.
bool XercesColonSanitizerImpl::IsInStartTag(std::size_t idx, std::size_t close) noexcept
{
    const XmlUtils::StringRange tag = m_walker.GetStartTagAround(idx);
    return tag.start != std::string::npos && tag.start + tag.length == close + 1;
}

std::size_t XercesColonSanitizerImpl::FindNextColonAttribute(std::size_t from)
{
    const std::string& input = *m_input;
    for (;;) {
        // Nothing stands before a colon at 0.
        const std::size_t idx =
            ByteScan::FindByteAfterWhitespace(input, c_colon, from == 0 ? 1 : from);
        if (idx == ByteScan::c_npos)
            return std::string::npos;
        if (input[idx] != c_colon)
            ThrowAssertion(u"XercesColonSanitizer", PublishedLine(114), u"input[idx] == c_colon",
                           KesErrorsError::LogicAssert_0x83E9A0D6());
        const std::size_t afterName = SkipNameAndWhitespace(idx + 1);
        if (afterName == input.size())
            return std::string::npos;
        if (input[afterName] != '=') {
            from = afterName;
            continue;
        }
        const std::size_t close = m_nextClose.GetFrom(idx);
        if (close == ByteScan::c_npos)
            return std::string::npos;
        from = idx + 1;
        if (!LooksLikeInsideTag(idx, close))
            continue;
        if (!m_ranges)
            m_ranges.emplace(input);
        if (m_ranges->GetRangeTypeAt(idx, from) != XMLRangeType::None)
            continue;
        if (IsInStartTag(idx, close))
            return idx;
    }
}

std::size_t XercesColonSanitizerImpl::FindNamespaceInsertPoint() const
{
    const XmlUtils::StringRange rootTag = m_walker.GetRootTag();
    if (rootTag.start == std::string::npos)
        ThrowAssertion(u"XercesColonSanitizer", PublishedLine(190), u"range.start != string::npos",
                       KesErrorsError::LogicAssert_0xE2B6083F());
    const std::string& input = *m_input;
    std::size_t pos = rootTag.start + 1;
    while (pos < input.size() && CharacterClasses::IsWhitespace(input[pos]))
        ++pos;
    while (pos < input.size() && CharacterClasses::IsNameChar(input[pos]))
        ++pos;
    if (pos >= input.size())
        ThrowAssertion(u"XercesColonSanitizer", PublishedLine(62),
                       u"xmlnsInsertPoint != string::npos",
                       KesErrorsError::LogicAssert_0x4D57F21B());
    return pos;
}

/// The text with the namespace declaration at `insertPoint` and with the reserved prefix in place
/// of each of `colons`, which lie behind it.
std::shared_ptr<const std::string> MakeEncodedText(std::string_view input, std::size_t insertPoint,
                                                   const std::vector<std::size_t>& colons)
{
    auto encoded = std::make_shared<std::string>();
    encoded->reserve(input.size() + 1 + c_namespaceDeclaration.size() +
                     colons.size() * (c_encodedPrefix.size() - 1));
    encoded->append(input.substr(0, insertPoint));
    encoded->push_back(' ');
    encoded->append(c_namespaceDeclaration);
    std::size_t prev = insertPoint;
    for (const std::size_t idx : colons) {
        encoded->append(input.substr(prev, idx - prev));
        encoded->append(c_encodedPrefix);
        prev = idx + 1;
    }
    encoded->append(input.substr(prev));
    return encoded;
}

} // namespace

namespace XercesColonSanitizer {

std::shared_ptr<const std::string>
EncodeColonAttributeNames(const std::shared_ptr<const std::string>& input)
{
    XercesColonSanitizerImpl sanitizer(input);
    std::size_t idx = sanitizer.FindNextColonAttribute(0);
    if (idx == std::string::npos)
        return input;
    const std::size_t insertPoint = sanitizer.FindNamespaceInsertPoint();
    // All colons are known before the copy is made, so that it can be reserved at its final size.
    std::vector<std::size_t> colons;
    for (; idx != std::string::npos; idx = sanitizer.FindNextColonAttribute(idx + 1)) {
        // A root element's name that begins with a colon is no attribute.
        if (idx >= insertPoint)
            colons.push_back(idx);
    }
    return colons.empty() ? input : MakeEncodedText(*input, insertPoint, colons);
}

TString RestoreEncodedAttributeNames(TString name)
{
    const std::u16string_view text = name.view();
    if (text.starts_with(c_encodedPrefix16))
        return TString(text.substr(c_encodedPrefix16.size() - 1));
    if (text.starts_with(c_namespacePrefix16))
        return {};
    return name;
}

} // namespace XercesColonSanitizer
