#pragma once

#include <compare>
#include <cstddef>
#include <string_view>

/// A place as the parser counts it, from 1; columns are UTF-16 units.
struct TextPosition
{
    int line = 1;
    int column = 1;

    friend auto operator<=>(const TextPosition&, const TextPosition&) = default;
};

/// Knows the positions in a text in UTF-8, which must live as long. One walk over it for all.
class TextPositions
{
public:
    explicit TextPositions(std::string_view text) : m_text(text) {}

    /// REQUIRES: `offset` is not before the one asked for last.
    TextPosition At(std::size_t offset);

private:
    std::string_view m_text;
    std::size_t m_offset = 0;
    TextPosition m_position;
};
