#include <kescorexml/XMLUtils.h>

#include "base/Assertion.h"
#include "base/ByteScan.h"
#include "base/KesErrors.h"
#include "markup/CharacterClasses.h"
#include "markup/ConstructScanner.h"
#include "markup/RootTagFinder.h"

#include <QStringView>

#include <algorithm>
#include <string_view>

namespace {

constexpr char c_openBrace = '<';
constexpr char c_closeBrace = '>';

template <class View>
bool ContainsAt(View s, View sub, std::size_t pos) noexcept
{
    if (s.size() < sub.size() || s.size() - sub.size() < pos)
        return false;
    return s.substr(pos, sub.size()) == sub;
}

std::size_t ToPosition(std::ptrdiff_t found) noexcept
{
    return found < 0 ? std::string::npos : static_cast<std::size_t>(found);
}

/// True for the ranges that are searched at all.
bool IsRange(std::size_t from, std::size_t to, std::size_t size) noexcept
{
    return to > from && to < size;
}

QStringView ToQt(std::u16string_view text) noexcept
{
    return {text.data(), static_cast<qsizetype>(text.size())};
}

std::size_t SkipWhitespace(std::string_view s, std::size_t pos) noexcept
{
    while (pos < s.size() && CharacterClasses::IsWhitespace(s[pos]))
        ++pos;
    return pos;
}

} // namespace

namespace XmlUtils {

bool IsWhitespace(char c) noexcept
{
    return CharacterClasses::IsWhitespace(c);
}

bool IsWhitespace(char16_t c) noexcept
{
    return CharacterClasses::IsWhitespace(c);
}

bool IsFirstNameChar(char c) noexcept
{
    return CharacterClasses::IsFirstNameChar(c);
}

bool IsFirstNameChar(char16_t c) noexcept
{
    return CharacterClasses::IsFirstNameChar(c);
}

bool IsNameChar(char c) noexcept
{
    return CharacterClasses::IsNameChar(c);
}

bool IsNameChar(char16_t c) noexcept
{
    return CharacterClasses::IsNameChar(c);
}

bool ContainsSubstringAt(const std::string& s, const std::string& sub, std::size_t pos) noexcept
{
    return ContainsAt<std::string_view>(s, sub, pos);
}

bool ContainsSubstringAt(const TString& s, const TString& sub, std::size_t pos) noexcept
{
    return ContainsAt(s.view(), sub.view(), pos);
}

std::size_t Find(const std::string& s, char c, std::size_t pos) noexcept
{
    return ByteScan::FindByte(s, c, pos);
}

std::size_t Find(const std::string& s, const std::string& sub, std::size_t pos) noexcept
{
    return ByteScan::FindText(s, sub, pos);
}

std::size_t Find(const TString& s, char16_t c, std::size_t pos) noexcept
{
    if (pos >= s.view().size())
        return std::string::npos;
    return ToPosition(s.indexOf(c, static_cast<TString::size_type>(pos)));
}

std::size_t Find(const TString& s, const TString& sub, std::size_t pos) noexcept
{
    if (pos > s.view().size())
        return std::string::npos;
    return ToPosition(s.indexOf(sub, static_cast<TString::size_type>(pos)));
}

std::size_t FindInRange(const std::string& s, char c, std::size_t from, std::size_t to) noexcept
{
    if (!IsRange(from, to, s.size()))
        return std::string::npos;
    return ByteScan::FindByte(std::string_view(s).substr(0, to + 1), c, from);
}

std::size_t FindInRange(const std::string& s, const std::string& sub, std::size_t from,
                        std::size_t to) noexcept
{
    if (!IsRange(from, to, s.size()))
        return std::string::npos;
    return ByteScan::FindText(std::string_view(s).substr(0, to + 1), sub, from);
}

std::size_t FindInRange(const TString& s, char16_t c, std::size_t from, std::size_t to) noexcept
{
    if (!IsRange(from, to, s.view().size()))
        return std::string::npos;
    return ToPosition(
        ToQt(s.view().substr(0, to + 1)).indexOf(QChar(c), static_cast<qsizetype>(from)));
}

std::size_t FindInRange(const TString& s, const TString& sub, std::size_t from,
                        std::size_t to) noexcept
{
    if (!IsRange(from, to, s.view().size()))
        return std::string::npos;
    return ToPosition(s.indexOf(sub, static_cast<TString::size_type>(from),
                                static_cast<TString::size_type>(to + 1)));
}

std::size_t AdvanceFromOpenToCloseBrace(const std::string& xml, std::size_t start)
{
    if (xml.size() < 3 || start > xml.size() - 3)
        return std::string::npos;
    if (xml[start] != c_openBrace)
        ThrowAssertion(u"XMLUtils", __LINE__, u"xml[start] == c_openBrace",
                       KesErrorsError::LogicAssert_0x69F39DBB());
    const std::size_t found = ConstructScanner(start).FindClose(xml);
    if (found != std::string::npos && xml[found] != c_closeBrace)
        ThrowAssertion(u"XMLUtils", __LINE__, u"xml[found] == c_closeBrace",
                       KesErrorsError::LogicAssert_0xF3D1E5C5());
    return found;
}

bool AreQuotesMatchingInRange(const std::string& xml, std::size_t from, std::size_t to) noexcept
{
    if (to < from || from >= xml.size())
        return true;
    QuoteState quotes;
    quotes.Advance(std::string_view(xml).substr(from, std::min(to, xml.size() - 1) - from + 1));
    return !quotes.IsInside();
}

StringRange FindRootTag(const std::string& xml)
{
    return RootTagFinder().Feed(xml);
}

std::optional<std::string> FindAttributeValue(const std::string& xml, const std::string& name,
                                              StringRange tag)
{
    const std::size_t idx = tag.start;
    const std::size_t end = tag.start + tag.length - 1;
    if (!(idx < xml.size() && end < xml.size()))
        ThrowAssertion(u"XMLUtils", __LINE__, u"idx < xml.size() && end < xml.size()",
                       KesErrorsError::LogicAssert_0xA3E88D2C());
    if (!(xml[idx] == c_openBrace && xml[end] == c_closeBrace))
        ThrowAssertion(u"XMLUtils", __LINE__,
                       u"xml[idx] == c_openBrace && xml[end] == c_closeBrace",
                       KesErrorsError::LogicAssert_0xC2D03F8A());
    if (idx >= end)
        return std::nullopt;

    const std::string_view text = std::string_view(xml).substr(0, end + 1);
    QuoteState quotes;
    std::size_t quotesRead = idx;
    // Nothing stands before the tag's "<" that could separate a name from it.
    std::size_t next = idx + 1;
    for (;;) {
        // Stretch by stretch, so that the bytes whose quotes are read are still in the cache.
        constexpr std::size_t c_stretch = 16'384;
        const std::size_t stretchEnd = next + c_stretch + name.size();
        const std::size_t hit = ByteScan::FindText(text.substr(0, stretchEnd), name, next);
        if (hit == std::string::npos) {
            if (stretchEnd >= text.size())
                return std::nullopt;
            next += c_stretch;
            quotes.Advance(text.substr(quotesRead, next - quotesRead));
            quotesRead = next;
            continue;
        }
        next = hit + std::max<std::size_t>(name.size(), 1);
        if (!CharacterClasses::IsWhitespace(text[hit - 1]))
            continue;
        // What was read before is not read again: a value may be full of this name.
        quotes.Advance(text.substr(quotesRead, hit - quotesRead));
        quotesRead = hit;
        if (quotes.IsInside())
            continue;
        std::size_t pos = SkipWhitespace(text, hit + name.size());
        next = std::max(next, pos);
        if (pos >= end || text[pos] != '=')
            continue;
        pos = SkipWhitespace(text, pos + 1);
        next = std::max(next, pos);
        if (text[pos] != '"' && text[pos] != '\'')
            continue;
        const std::size_t close = ByteScan::FindByte(text, text[pos], pos + 1);
        if (close == std::string::npos)
            return std::nullopt;
        return xml.substr(pos + 1, close - pos - 1);
    }
}

} // namespace XmlUtils
