#pragma once

#include <array>
#include <cstdint>

/// What the bytes of a document may be part of, where they are ASCII. All others, and those of the
/// letters of other scripts, are looked at as characters.
namespace ByteClasses {

enum Class : std::uint8_t
{
    NameStart = 1,
    NamePart = 2,
    Whitespace = 4,
    /// May stand in character data or in a comment, as it is.
    Plain = 8,
    /// Plain, and neither an end nor a reference nor a line end of any text or value.
    Inert = 16
};

constexpr std::array<std::uint8_t, 256> MakeTable()
{
    std::array<std::uint8_t, 256> table{};
    for (unsigned byte = 0x20; byte < 0x80; ++byte)
        table[byte] = Plain | Inert;
    for (const char byte : {'<', '&', ']', '"', '\''})
        table[static_cast<unsigned char>(byte)] = Plain;
    for (const unsigned byte : {0x09U, 0x0AU, 0x0DU, 0x20U})
        table[byte] = Plain | Whitespace;
    table[' '] |= Inert;
    for (unsigned letter = 'a'; letter <= 'z'; ++letter) {
        table[letter] |= NameStart | NamePart;
        table[letter - 'a' + 'A'] |= NameStart | NamePart;
    }
    for (const unsigned byte : {unsigned{'_'}, unsigned{':'}})
        table[byte] |= NameStart | NamePart;
    for (unsigned digit = '0'; digit <= '9'; ++digit)
        table[digit] |= NamePart;
    for (const unsigned byte : {unsigned{'-'}, unsigned{'.'}})
        table[byte] |= NamePart;
    return table;
}

inline constexpr std::array<std::uint8_t, 256> c_table = MakeTable();

inline bool Is(char byte, Class kind) noexcept
{
    return (c_table[static_cast<unsigned char>(byte)] & kind) != 0;
}

inline bool IsAscii(char byte) noexcept
{
    return static_cast<unsigned char>(byte) < 0x80;
}

inline const char* SkipWhitespace(const char* at) noexcept
{
    while (Is(*at, Whitespace))
        ++at;
    return at;
}

} // namespace ByteClasses
