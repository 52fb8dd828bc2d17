#pragma once

#include <cstddef>
#include <string_view>

/// Searches the ">" that closes one construct of XML markup: a tag, comment, CDATA section,
/// declaration or processing instruction. The text may grow between searches; each of them goes on
/// where the one before it stopped, so all together cost one pass.
/// Different objects may be used from different threads.
class ConstructScanner
{
public:
    static constexpr std::string_view c_openComment = "<!--";
    static constexpr std::string_view c_closeComment = "-->";

    /// `start` is the position of the construct's "<".
    explicit ConstructScanner(std::size_t start) noexcept : m_start(start) {}

    std::size_t GetStart() const noexcept { return m_start; }

    /// The position of the closing ">", or npos when `xml` ends before it. `xml` begins with the
    /// text of the search before.
    std::size_t FindClose(std::string_view xml) noexcept;

private:
    bool ChooseTerminator(std::string_view xml) noexcept;
    std::size_t FindCloseOfTag(std::string_view xml) noexcept;

    std::size_t m_start;
    /// Where the next search goes on; 0 until the kind of construct is known.
    std::size_t m_next = 0;
    /// Empty for a tag.
    std::string_view m_terminator;
    /// The quote that `m_next` is inside of, or 0.
    char m_openQuote = '\0';
};

/// Where a text with quoted runs stands after some of it: outside, or inside a run that one kind of
/// quote opened and only the same kind closes.
class QuoteState
{
public:
    /// Reads the next piece of the text.
    void Advance(std::string_view piece) noexcept;

    bool IsInside() const noexcept { return m_open != '\0'; }

private:
    char m_open = '\0';
};
