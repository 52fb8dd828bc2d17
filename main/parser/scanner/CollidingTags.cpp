#include "scanner/CollidingTags.h"

#include "bytes/OverlookedFaults.h"
#include "bytes/ScannerEncoding.h"
#include "bytes/XercesInputSource.h"
#include "markup/CharacterClasses.h"
#include "scanner/NameBuckets.h"

#include <kesplatform/TString.h>

#include <QChar>

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>

namespace {

constexpr std::size_t c_npos = std::string_view::npos;

/// A document as code units, of whatever size.
class Units
{
public:
    Units(std::string_view bytes, const ScannerEncoding& encoding) noexcept
        : m_bytes(bytes), m_units(*encoding.units), m_isUtf8(encoding.isUtf8)
    {
    }

    std::size_t Count() const noexcept { return m_bytes.size() / m_units.unitSize; }
    /// Zero behind the end.
    std::uint32_t At(std::size_t index) const noexcept
    {
        return index < Count() ? m_units.ReadUnit(m_bytes, index * m_units.unitSize) : 0;
    }
    /// npos when there is none from `from` on.
    std::size_t FindOpening(std::size_t from) const noexcept
    {
        if (m_units.unitSize == 1)
            return m_bytes.find('<', from);
        while (from < Count() && At(from) != '<')
            ++from;
        return from < Count() ? from : c_npos;
    }
    /// The last one from `from` up to `to`; npos when there is none.
    std::size_t FindLastOpening(std::size_t from, std::size_t to) const noexcept
    {
        if (m_units.unitSize == 1) {
            const std::size_t found = m_bytes.substr(from, to - from).rfind('<');
            return found == c_npos ? c_npos : from + found;
        }
        while (to > from && At(to - 1) != '<')
            --to;
        return to > from ? to - 1 : c_npos;
    }
    /// How many units make up the blank at `index`; zero where there is none. Version 1.1 knows two
    /// more, which are no part of anything in a tag of version 1.0.
    std::size_t MeasureBlank(std::size_t index) const noexcept
    {
        const std::uint32_t unit = At(index);
        if (unit < 0x80)
            return CharacterClasses::IsWhitespace(static_cast<char>(unit)) ? 1 : 0;
        if (!m_isUtf8)
            return unit == 0x85 || unit == 0x2028 ? 1 : 0;
        if (unit == 0xC2)
            return At(index + 1) == 0x85 ? 2 : 0;
        return unit == 0xE2 && At(index + 1) == 0x80 && At(index + 2) == 0xA8 ? 3 : 0;
    }
    /// As UTF-16. Single bytes that are no UTF-8 are taken for ISO-8859-1.
    TString GetText(std::size_t from, std::size_t to) const
    {
        if (m_isUtf8)
            return TString::fromUtf8(m_bytes.substr(from, to - from));
        std::u16string text;
        for (; from < to; ++from) {
            const std::uint32_t unit = At(from);
            if (unit > 0xFFFF) {
                text += QChar::highSurrogate(unit);
                text += QChar::lowSurrogate(unit);
            } else {
                text += static_cast<char16_t>(unit);
            }
        }
        return TString(std::u16string_view(text));
    }

private:
    std::string_view m_bytes;
    const EncodingTable::Scheme& m_units;
    bool m_isUtf8;
};

/// Goes through the attributes of a start tag as far as it is well-formed: the scanner goes no
/// further.
class Tag
{
public:
    /// `at` is behind its "<".
    Tag(const Units& units, std::size_t at) noexcept : m_units(units), m_at(at) { SkipName(); }

    /// Adds the names to `names`, up to one that shares its bucket with too many.
    bool HasMore(std::uint64_t maximum, bool hasNamespaces, NameBuckets& names)
    {
        while (true) {
            SkipBlanks();
            const std::size_t begin = m_at;
            SkipName();
            if (m_at == begin)
                return false;
            const std::size_t end = m_at;
            if (!SkipValue())
                return false;
            const TString name = m_units.GetText(begin, end);
            if (names.AddAttribute(name.view(), hasNamespaces) > maximum)
                return true;
        }
    }

private:
    void SkipBlanks() noexcept
    {
        while (const std::size_t length = m_units.MeasureBlank(m_at))
            m_at += length;
    }
    void SkipName() noexcept
    {
        while (!EndsName())
            ++m_at;
    }
    bool EndsName() const noexcept
    {
        const std::uint32_t unit = m_units.At(m_at);
        return unit == '=' || unit == '>' || unit == '/' || unit == '<' || unit == 0 ||
               m_units.MeasureBlank(m_at) != 0;
    }
    bool SkipValue() noexcept
    {
        SkipBlanks();
        if (m_units.At(m_at++) != '=')
            return false;
        SkipBlanks();
        const std::uint32_t quote = m_units.At(m_at++);
        if (quote != '"' && quote != '\'')
            return false;
        // No tag is gone through beyond the next "<", where the search for another one goes on: so
        // nothing is gone through twice.
        std::uint32_t unit = 0;
        while (m_at < m_units.Count() && (unit = m_units.At(m_at)) != quote && unit != '<')
            ++m_at;
        return m_at < m_units.Count() && m_units.At(m_at++) == quote;
    }

    const Units& m_units;
    std::size_t m_at;
};

/// Where a tag begins that has more than `maximum` colliding names, or npos. Such a tag is long,
/// and no well-formed one has a "<" inside: what is no such tag need not be gone through.
std::size_t FindTag(const Units& units, std::uint64_t maximum, bool hasNamespaces,
                    std::size_t& reach)
{
    // The shortest attribute is " a=''".
    constexpr std::uint64_t c_shortest = 5;
    constexpr std::uint64_t c_longestStep = 0x10000;
    const auto step = static_cast<std::size_t>(
        std::clamp(maximum, std::uint64_t{16}, c_longestStep) * c_shortest);
    std::size_t at = units.FindOpening(0);
    while (at != c_npos) {
        const std::size_t end = std::min(units.Count(), at + 1 + step);
        const std::size_t last = units.FindLastOpening(at + 1, end);
        if (last != c_npos) {
            at = last;
            continue;
        }
        const std::uint32_t next = units.At(at + 1);
        const bool isStartTag = next != '/' && next != '!' && next != '?';
        if (isStartTag) {
            NameBuckets names(NameBuckets::c_tag, reach);
            const bool collide = Tag(units, at + 1).HasMore(maximum, hasNamespaces, names);
            reach = names.GetReach();
            if (collide)
                return at;
        }
        at = units.FindOpening(end);
    }
    return c_npos;
}

} // namespace

std::optional<TextPosition> CollidingTags::FindFirst(const XercesInputSource& document,
                                                     std::uint64_t maximum, bool hasNamespaces,
                                                     std::size_t& reach)
{
    const std::string_view bytes = document.GetBytes();
    const ScannerEncoding encoding = document.GetEncoding() == XercesEncoding::Utf8
                                         ? ScannerEncoding()
                                         : ScannerEncoding::Find(bytes);
    const std::size_t at = FindTag(Units(bytes, encoding), maximum, hasNamespaces, reach);
    if (at == c_npos)
        return std::nullopt;
    return OverlookedFaults::LocateEnd(bytes.substr(0, at * encoding.units->unitSize), encoding);
}
