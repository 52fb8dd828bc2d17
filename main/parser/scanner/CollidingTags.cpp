#include "scanner/CollidingTags.h"

#include "bytes/Utf8Faults.h"
#include "bytes/XercesInputSource.h"
#include "markup/CharacterClasses.h"
#include "scanner/NameBuckets.h"

#include <kesplatform/TString.h>

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>

namespace {

constexpr std::size_t c_npos = std::string_view::npos;

/// A document in UTF-8.
class Bytes
{
public:
    explicit Bytes(std::string_view bytes) noexcept : m_bytes(bytes) {}

    std::size_t Count() const noexcept { return m_bytes.size(); }
    /// Zero behind the end.
    char At(std::size_t index) const noexcept
    {
        return index < m_bytes.size() ? m_bytes[index] : '\0';
    }
    /// npos when there is none from `from` on.
    std::size_t FindOpening(std::size_t from) const noexcept { return m_bytes.find('<', from); }
    /// The last one from `from` up to `to`; npos when there is none.
    std::size_t FindLastOpening(std::size_t from, std::size_t to) const noexcept
    {
        const std::size_t found = m_bytes.substr(from, to - from).rfind('<');
        return found == c_npos ? c_npos : from + found;
    }
    /// How many bytes make up the blank at `index`; zero where there is none. Version 1.1 knows two
    /// more, which are no part of anything in a tag of version 1.0.
    std::size_t MeasureBlank(std::size_t index) const noexcept
    {
        const char byte = At(index);
        if (static_cast<unsigned char>(byte) < 0x80)
            return CharacterClasses::IsWhitespace(byte) ? 1 : 0;
        const std::string_view rest = m_bytes.substr(index);
        return rest.starts_with("\xC2\x85") ? 2 : rest.starts_with("\xE2\x80\xA8") ? 3 : 0;
    }
    TString GetText(std::size_t from, std::size_t to) const
    {
        return TString::fromUtf8(m_bytes.substr(from, to - from));
    }

private:
    std::string_view m_bytes;
};

/// Goes through the attributes of a start tag as far as it is well-formed: the scanner goes no
/// further.
class Tag
{
public:
    /// `at` is behind its "<".
    Tag(const Bytes& bytes, std::size_t at) noexcept : m_bytes(bytes), m_at(at) { SkipName(); }

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
            const TString name = m_bytes.GetText(begin, end);
            if (names.AddAttribute(name.view(), hasNamespaces) > maximum)
                return true;
        }
    }

private:
    void SkipBlanks() noexcept
    {
        while (const std::size_t length = m_bytes.MeasureBlank(m_at))
            m_at += length;
    }
    void SkipName() noexcept
    {
        while (!EndsName())
            ++m_at;
    }
    bool EndsName() const noexcept
    {
        const char byte = m_bytes.At(m_at);
        return byte == '=' || byte == '>' || byte == '/' || byte == '<' || byte == 0 ||
               m_bytes.MeasureBlank(m_at) != 0;
    }
    bool SkipValue() noexcept
    {
        SkipBlanks();
        if (m_bytes.At(m_at++) != '=')
            return false;
        SkipBlanks();
        const char quote = m_bytes.At(m_at++);
        if (quote != '"' && quote != '\'')
            return false;
        // No tag is gone through beyond the next "<", where the search for another one goes on: so
        // nothing is gone through twice.
        char byte = '\0';
        while (m_at < m_bytes.Count() && (byte = m_bytes.At(m_at)) != quote && byte != '<')
            ++m_at;
        return m_at < m_bytes.Count() && m_bytes.At(m_at++) == quote;
    }

    const Bytes& m_bytes;
    std::size_t m_at;
};

/// The shortest attribute is " a=''".
constexpr std::uint64_t c_shortest = 5;

/// Where a tag begins that has more than `maximum` colliding names, or npos. Such a tag is long,
/// and no well-formed one has a "<" inside: what is no such tag need not be gone through.
std::size_t FindTag(const Bytes& bytes, std::uint64_t maximum, bool hasNamespaces,
                    std::size_t& reach)
{
    constexpr std::uint64_t c_longestStep = 0x10000;
    const auto step = static_cast<std::size_t>(
        std::clamp(maximum, std::uint64_t{16}, c_longestStep) * c_shortest);
    std::size_t at = bytes.FindOpening(0);
    while (at != c_npos) {
        const std::size_t end = std::min(bytes.Count(), at + 1 + step);
        const std::size_t last = bytes.FindLastOpening(at + 1, end);
        if (last != c_npos) {
            at = last;
            continue;
        }
        const char next = bytes.At(at + 1);
        const bool isStartTag = next != '/' && next != '!' && next != '?';
        if (isStartTag) {
            NameBuckets names(NameBuckets::c_tag, reach);
            const bool collide = Tag(bytes, at + 1).HasMore(maximum, hasNamespaces, names);
            reach = names.GetReach();
            if (collide)
                return at;
        }
        at = bytes.FindOpening(end);
    }
    return c_npos;
}

} // namespace

std::optional<ScanPosition> CollidingTags::FindFirst(const XercesInputSource& document,
                                                     std::uint64_t maximum, bool hasNamespaces,
                                                     std::size_t& reach)
{
    const std::string_view bytes = document.GetBytes();
    const std::size_t at = FindTag(Bytes(bytes), maximum, hasNamespaces, reach);
    if (at == c_npos)
        return std::nullopt;
    return Utf8Faults::LocateEnd(bytes.substr(0, at));
}

bool CollidingTags::HasAny(std::u16string_view text, std::uint64_t maximum, bool hasNamespaces,
                           std::size_t& reach)
{
    if (text.size() / c_shortest <= maximum)
        return false;
    const std::string bytes = TString(text).toStdString();
    return FindTag(Bytes(bytes), maximum, hasNamespaces, reach) != c_npos;
}
