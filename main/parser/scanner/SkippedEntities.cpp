#include "scanner/SkippedEntities.h"

#include "bytes/Utf8Faults.h"

#include <kesplatform/EncodingTable.h>

#include <algorithm>
#include <unordered_set>
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

/// Puts references together by the names of the entities.
class Collector
{
public:
    Collector(std::string_view document, const std::unordered_map<TString, TString>& declared)
        : m_document(document), m_declared(declared)
    {
    }

    std::vector<SkippedEntity> Collect()
    {
        References references(m_document);
        for (std::string_view name = references.Next(); !name.empty(); name = references.Next()) {
            m_at = references.GetOffset();
            Add(name);
            ReadEntities();
        }
        return std::move(m_found);
    }

private:
    /// The texts of the entities that were referred to for the first time. They refer to others to
    /// any depth, so this is a list and no recursion.
    void ReadEntities()
    {
        while (!m_unread.empty()) {
            const std::string text = m_unread.back()->toStdString();
            m_unread.pop_back();
            References references(text);
            for (std::string_view name = references.Next(); !name.empty(); name = references.Next())
                Add(name);
        }
    }
    void Add(std::string_view name)
    {
        if (IsPredefined(name))
            return;
        const TString text = TString::fromUtf8(name);
        const auto declared = m_declared.find(text);
        if (declared == m_declared.end())
            AddSkipped(text);
        else if (m_read.insert(&declared->second).second)
            m_unread.push_back(&declared->second);
    }
    void AddSkipped(const TString& name)
    {
        const auto [place, isNew] = m_places.try_emplace(name, m_found.size());
        if (isNew) {
            Utf8Faults::Pass(m_counter, m_document.substr(m_counted, m_at - m_counted));
            m_counted = m_at;
            m_found.push_back({name, 0, static_cast<int>(m_counter.Get().line),
                               static_cast<int>(m_counter.Get().column)});
        }
        ++m_found[place->second].references;
    }

    std::string_view m_document;
    const std::unordered_map<TString, TString>& m_declared;
    std::unordered_set<const TString*> m_read;
    std::vector<const TString*> m_unread;
    std::unordered_map<TString, std::size_t> m_places;
    std::vector<SkippedEntity> m_found;
    /// Where the document's present reference begins.
    std::size_t m_at = 0;
    PositionCounter m_counter;
    std::size_t m_counted = 0;
};

} // namespace

std::vector<SkippedEntity>
SkippedEntities::Find(std::string_view document,
                      const std::unordered_map<TString, TString>& declared)
{
    return Collector(EncodingTable::SkipByteOrderMark(document), declared).Collect();
}
