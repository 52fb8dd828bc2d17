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
    explicit ConstructScanner(std::size_t start) noexcept : m_start(start), m_next(start + 1) {}

    std::size_t GetStart() const noexcept { return m_start; }

    /// The position of the closing ">", or npos when `xml` ends before it. `xml` begins with the
    /// text of the search before.
    std::size_t FindClose(std::string_view xml) noexcept;

    /// After a search in vain, for a tag: the quote that opened the value in which the text ends,
    /// or 0.
    char GetOpenQuote() const noexcept { return m_openQuote; }

private:
    enum class Kind : unsigned char
    {
        Unknown,
        Tag,
        Comment,
        Section,
        Instruction,
        Declaration
    };

    static Kind FindKind(std::string_view construct) noexcept;
    static std::string_view GetTerminator(Kind kind) noexcept;
    std::size_t FindCloseOfTag(std::string_view xml) noexcept;

    std::size_t m_start;
    /// Where the next search goes on.
    std::size_t m_next;
    Kind m_kind = Kind::Unknown;
    /// The quote that `m_next` is inside of, or 0.
    char m_openQuote = '\0';
};

/// Where a text with quoted runs stands after some of it: outside, or inside a run that one kind of
/// quote opened and only the same kind closes.
class QuoteState
{
public:
    QuoteState() noexcept = default;
    /// Inside a run that `open` opened, or outside when that is 0.
    explicit QuoteState(char open) noexcept : m_open(open) {}

    /// Reads the next piece of the text.
    void Advance(std::string_view piece) noexcept;

    bool IsInside() const noexcept { return m_open != '\0'; }
    /// The quote that opened the run; 0 outside.
    char GetOpenQuote() const noexcept { return m_open; }

private:
    char m_open = '\0';
};
