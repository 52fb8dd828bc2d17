#include <kescorexml/XMLUtils.h>

#include "base/Assertion.h"
#include "base/ByteScan.h"
#include "base/KesErrors.h"
#include "markup/CharacterClasses.h"
#include "markup/ConstructScanner.h"
#include "markup/RootTagFinder.h"

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

std::size_t FindUnit(std::u16string_view s, char16_t c, std::size_t pos) noexcept
{
    return ByteScan::FindFirst(s.data(), pos, s.size(), ByteScan::One<char16_t>{c});
}

/// The first position in [`from`, `end`) where `sub` starts and does not reach over `end`, or npos.
std::size_t FindText(const TString& s, const TString& sub, std::size_t from,
                     std::size_t end) noexcept
{
    const auto findPatiently = [&](std::u16string_view, std::u16string_view, std::size_t pos) {
        return ToPosition(s.indexOf(sub, static_cast<TString::size_type>(pos),
                                    static_cast<TString::size_type>(end)));
    };
    return ByteScan::FindText(s.view().substr(0, end), sub.view(), from, findPatiently);
}

std::size_t SkipWhitespace(std::string_view s, std::size_t pos) noexcept
{
    while (pos < s.size() && CharacterClasses::IsWhitespace(s[pos]))
        ++pos;
    return pos;
}

/// The quoted runs of a text from a position on, asked from front to back. What was read is not
/// read again: a run may be full of what is asked for.
class QuotedRuns
{
public:
    QuotedRuns(std::string_view text, std::size_t from) noexcept : m_text(text), m_read(from) {}

    /// Whether one of them holds `position`, which is not below the one asked before.
    bool Hold(std::size_t position) noexcept
    {
        m_quotes.Advance(m_text.substr(m_read, position - m_read));
        m_read = position;
        return m_quotes.IsInside();
    }

    /// Goes on at the quote that closes the run that holds the last position asked, and returns its
    /// place, or npos.
    std::size_t MoveToClose() noexcept
    {
        m_read = ByteScan::FindByte(m_text, m_quotes.GetOpenQuote(), m_read);
        return m_read;
    }

private:
    std::string_view m_text;
    std::size_t m_read;
    QuoteState m_quotes;
};

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
    return FindUnit(s.view(), c, pos);
}

std::size_t Find(const TString& s, const TString& sub, std::size_t pos) noexcept
{
    return FindText(s, sub, pos, s.view().size());
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
    return FindUnit(s.view().substr(0, to + 1), c, from);
}

std::size_t FindInRange(const TString& s, const TString& sub, std::size_t from,
                        std::size_t to) noexcept
{
    if (!IsRange(from, to, s.view().size()))
        return std::string::npos;
    return FindText(s, sub, from, to + 1);
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
    QuotedRuns runs(text, idx);
    const bool fitsInRun = name.find_first_of("\"'") == std::string::npos;
    // Nothing stands before the tag's "<" that could separate a name from it.
    std::size_t next = idx + 1;
    while (next <= text.size()) {
        // Stretch by stretch, so that the bytes whose quotes are read are still in the cache.
        constexpr std::size_t c_stretch = 16'384;
        const std::size_t stretchEnd = next + c_stretch + name.size();
        const std::size_t hit = ByteScan::FindText(text.substr(0, stretchEnd), name, next);
        const bool isHit = hit != std::string::npos;
        if (!isHit && stretchEnd >= text.size())
            return std::nullopt;
        next = isHit ? hit + std::max<std::size_t>(name.size(), 1) : next + c_stretch;
        if (isHit && !CharacterClasses::IsWhitespace(text[hit - 1]))
            continue;
        if (runs.Hold(isHit ? hit : next)) {
            // What is found in a run counts for nothing.
            if (fitsInRun)
                next = std::max(next, runs.MoveToClose());
            continue;
        }
        if (!isHit)
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
    return std::nullopt;
}

} // namespace XmlUtils
