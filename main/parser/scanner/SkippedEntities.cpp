#include "scanner/SkippedEntities.h"

#include "bytes/Utf8Faults.h"

#include <kesplatform/EncodingTable.h>

#include <algorithm>
#include <unordered_map>
#include <utility>

namespace {

/// Goes through a document for references, outside of what looks like markup and is none.
class References
{
public:
    explicit References(std::string_view document) noexcept : m_text(document) {}

    /// The name of the next one; empty behind the last.
    std::string_view Next() noexcept
    {
        while (m_at < m_text.size()) {
            if (m_text[m_at] == '<')
                PassOpening();
            else if (m_text[m_at] != '&')
                ++m_at;
            else if (const std::string_view name = PassReference(); !name.empty())
                return name;
        }
        return {};
    }
    /// Where the last one begins.
    std::size_t GetOffset() const noexcept { return m_begin; }

private:
    bool StandsHere(std::string_view text) const noexcept
    {
        return m_text.substr(m_at).starts_with(text);
    }
    void PassThrough(std::string_view end) noexcept
    {
        const std::size_t found = m_text.find(end, m_at);
        m_at = found == std::string_view::npos ? m_text.size() : found + end.size();
    }
    void PassOpening() noexcept
    {
        if (!PassUnparsed()) {
            if (StandsHere("<!DOCTYPE"))
                PassDocumentType();
            else
                ++m_at;
        }
    }
    /// Comments, instructions and sections of characters.
    bool PassUnparsed() noexcept
    {
        constexpr std::pair<std::string_view, std::string_view> c_constructs[] = {
            {"<!--", "-->"}, {"<?", "?>"}, {"<![CDATA[", "]]>"}};
        for (const auto& [begin, end] : c_constructs) {
            if (StandsHere(begin)) {
                m_at += begin.size();
                PassThrough(end);
                return true;
            }
        }
        return false;
    }
    void PassDocumentType() noexcept
    {
        bool isInside = false;
        while (m_at < m_text.size()) {
            if (PassUnparsed())
                continue;
            const char c = m_text[m_at++];
            if (c == '"' || c == '\'')
                PassThrough({&c, 1});
            else if (c == '[' || c == ']')
                isInside = c == '[';
            else if (c == '>' && !isInside)
                return;
        }
    }
    /// The name of an entity; empty for one of a character.
    std::string_view PassReference() noexcept
    {
        m_begin = m_at++;
        const std::size_t begin = m_at;
        PassThrough(";");
        const std::string_view name = m_text.substr(begin, m_at - begin - 1);
        return name.starts_with('#') ? std::string_view() : name;
    }

    std::string_view m_text;
    std::size_t m_at = 0;
    std::size_t m_begin = 0;
};

bool IsPredefined(std::string_view name) noexcept
{
    constexpr std::string_view c_names[] = {"amp", "lt", "gt", "quot", "apos"};
    return std::find(std::begin(c_names), std::end(c_names), name) != std::end(c_names);
}

} // namespace

std::vector<SkippedEntity> SkippedEntities::Find(std::string_view document,
                                                 const std::unordered_set<TString>& declared)
{
    document = EncodingTable::SkipByteOrderMark(document);
    std::vector<SkippedEntity> found;
    std::unordered_map<TString, std::size_t> known;
    References references(document);
    PositionCounter counter;
    std::size_t counted = 0;
    for (std::string_view name = references.Next(); !name.empty(); name = references.Next()) {
        if (IsPredefined(name))
            continue;
        const TString text = TString::fromUtf8(name);
        if (declared.contains(text))
            continue;
        const auto [place, isNew] = known.try_emplace(text, found.size());
        if (isNew) {
            const std::size_t at = references.GetOffset();
            Utf8Faults::Pass(counter, document.substr(counted, at - counted));
            counted = at;
            found.push_back({text, 0, static_cast<int>(counter.Get().line),
                             static_cast<int>(counter.Get().column)});
        }
        ++found[place->second].references;
    }
    return found;
}
