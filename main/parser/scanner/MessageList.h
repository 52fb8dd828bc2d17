#pragma once

#include <kescorexml/XMLDiagnostic.h>

#include <cstddef>
#include <cstdint>
#include <vector>

/// The errors or the warnings of a parse as they are reported, up to the first for which the
/// account of messages has no room. A fatal error, of which a parse has hardly more than one,
/// always has.
class MessageList
{
public:
    /// The kind of what tells how many are missing.
    explicit MessageList(XMLDiagnostic::Kind kind) noexcept : m_kind(kind) {}

    /// Whether none was reported.
    bool IsEmpty() const noexcept { return m_kept.empty() && m_missing == 0; }
    void Keep(XMLDiagnostic&& message) { m_kept.push_back(std::move(message)); }
    /// One that was reported there is not kept.
    void Miss(const TString& id, unsigned long long line, unsigned long long column);
    /// REQUIRES: one is kept.
    XMLDiagnostic& Last() noexcept { return m_kept.back(); }
    /// REQUIRES: so many are kept.
    XMLDiagnostic& At(std::size_t index) noexcept { return m_kept[index]; }
    void Clear() noexcept;

    /// Those that were kept.
    const std::vector<XMLDiagnostic>& GetKept() const noexcept { return m_kept; }
    bool IsComplete() const noexcept { return m_missing == 0; }
    /// Ends the list with how many are missing, at the place of the first of them; `limit` says
    /// what all take more than. REQUIRES: it is not complete.
    void Close(const TString& limit);

private:
    XMLDiagnostic::Kind m_kind;
    std::vector<XMLDiagnostic> m_kept;
    std::uint64_t m_missing = 0;
    // Of the first that is missing.
    TString m_id;
    unsigned long long m_line = 0;
    unsigned long long m_column = 0;
};
