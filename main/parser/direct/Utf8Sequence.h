#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

/// Characters of XML beyond ASCII, read from UTF-8 as the Unicode Standard has it (table 3-7).
namespace Utf8Sequence {

/// No character.
constexpr char32_t c_invalid = 0xFFFFFFFF;
constexpr char32_t c_nextLine = 0x85;
constexpr char32_t c_lineSeparator = 0x2028;

inline bool IsContinuation(char byte) noexcept
{
    return (static_cast<unsigned char>(byte) & 0xC0) == 0x80;
}

/// The character of three bytes at `at`, U+0800 to U+D7FF, of which texts in most scripts of Asia
/// consist; zero when Read has to look closer. REQUIRES: four readable bytes.
inline char16_t ReadThreeBytes(const char* at) noexcept
{
    const auto byte = [at](std::size_t i) -> std::uint32_t {
        return static_cast<unsigned char>(at[i]);
    };
    // Compilers load this at once.
    const std::uint32_t bytes = byte(0) | byte(1) << 8 | byte(2) << 16 | byte(3) << 24;
    if ((bytes & 0xC0C0F0) != 0x8080E0)
        return 0;
    const std::uint32_t character =
        (bytes & 0x0F) << 12 | (bytes & 0x3F00) >> 2 | (bytes & 0x3F0000) >> 16;
    const bool isCommon = character - 0x800 < 0xD000 && character != c_lineSeparator;
    return isCommon ? static_cast<char16_t>(character) : u'\0';
}

/// Copies such characters from `at` to `to`, which is moved behind them, up to another one, to
/// `room` or to the last bytes before `end`, and returns where it stopped.
inline const char* CopyThreeBytes(const char* at, const char* end, char16_t*& to,
                                  const char16_t* room) noexcept
{
    char16_t* next = to;
    // Behind each there is one more byte.
    const std::ptrdiff_t most = std::min<std::ptrdiff_t>(room - next, (end - at - 1) / 3);
    for (const char16_t* const last = next + most; next < last; at += 3) {
        const char16_t unit = ReadThreeBytes(at);
        if (unit == u'\0')
            break;
        *next++ = unit;
    }
    to = next;
    return at;
}

/// Reads the sequence of two to four bytes at `at` and passes over it. c_invalid, and `at` is as it
/// was, when it is malformed or no character of XML: half of a pair, U+FFFE or U+FFFF. Also for the
/// two that end lines in XML 1.1 only, for which Xerces counts columns now one way, now another.
/// REQUIRES: a byte that continues no sequence, such as zero, behind the text.
inline char32_t Read(const char*& at) noexcept
{
    const auto byte = [at](std::size_t i) -> char32_t { return static_cast<unsigned char>(at[i]); };
    const char32_t lead = byte(0);
    if (lead < 0xE0) {
        if (lead < 0xC2 || !IsContinuation(at[1]))
            return c_invalid;
        const char32_t character = (lead & 0x1F) << 6 | (byte(1) & 0x3F);
        if (character == c_nextLine)
            return c_invalid;
        at += 2;
        return character;
    }
    if (!IsContinuation(at[1]) || !IsContinuation(at[2]))
        return c_invalid;
    if (lead < 0xF0) {
        const char32_t character = (lead & 0x0F) << 12 | (byte(1) & 0x3F) << 6 | (byte(2) & 0x3F);
        if (character < 0x800 || (character & 0xF800) == 0xD800 || character >= 0xFFFE ||
            character == c_lineSeparator)
            return c_invalid;
        at += 3;
        return character;
    }
    if (lead > 0xF4 || !IsContinuation(at[3]))
        return c_invalid;
    const char32_t character =
        (lead & 0x07) << 18 | (byte(1) & 0x3F) << 12 | (byte(2) & 0x3F) << 6 | (byte(3) & 0x3F);
    if (character < 0x10000 || character > 0x10FFFF)
        return c_invalid;
    at += 4;
    return character;
}

/// Writes the one or two units of a character and returns where the next ones go.
inline char16_t* Write(char32_t character, char16_t* to) noexcept
{
    if (character < 0x10000) {
        *to++ = static_cast<char16_t>(character);
    } else {
        *to++ = static_cast<char16_t>(0xD7C0 + (character >> 10));
        *to++ = static_cast<char16_t>(0xDC00 + (character & 0x3FF));
    }
    return to;
}

} // namespace Utf8Sequence
