#pragma once

#include <string_view>
#include <unordered_set>

/// What the internal subset of a document type says of the white space in elements.
class DeclaredSpace
{
public:
    /// Nothing is declared.
    DeclaredSpace() = default;
    /// The text must live as long.
    explicit DeclaredSpace(std::string_view documentType);

    /// Whether elements of that name hold text and elements mixed.
    bool IsMixed(std::string_view element) const { return m_mixed.contains(element); }
    /// Whether xml:space is "preserve" on elements of that name unless they say otherwise.
    bool IsPreserved(std::string_view element) const { return m_preserved.contains(element); }

private:
    std::unordered_set<std::string_view> m_mixed;
    std::unordered_set<std::string_view> m_preserved;
};
