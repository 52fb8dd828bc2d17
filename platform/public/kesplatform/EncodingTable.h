#pragma once

#include <kesplatform/DetectEncoding.h>
#include <kesplatform/Export.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string_view>

/// What is known of the encodings of Unicode: their names, their byte-order marks, and how their
/// units lie in bytes. Which of them counts for a text is decided by who reads it; this is what
/// they all go by. Safe to use from several threads.
namespace EncodingTable {

/// An encoding scheme of Unicode. They are told apart by `encoding`, not by address: each library
/// has the table.
struct Scheme
{
    /// The value by which DetectEncoding tells it.
    DetectedEncoding encoding;
    /// The name that ICU and Qt know.
    std::string_view name;
    /// What may stand before the text to show the encoding.
    std::string_view byteOrderMark;
    /// The bytes of a code unit.
    std::size_t unitSize;
    /// Which byte of a unit holds an ASCII character; the others are zero then.
    std::size_t asciiAt;

    /// The unit at a byte offset; the whole of it must be there.
    [[nodiscard]] constexpr std::uint32_t ReadUnit(std::string_view bytes,
                                                   std::size_t offset) const noexcept
    {
        std::uint32_t unit = 0;
        for (std::size_t i = 0; i < unitSize; ++i) {
            const std::size_t place = asciiAt > 0 ? i : unitSize - 1 - i;
            unit = unit << 8 | static_cast<unsigned char>(bytes[offset + place]);
        }
        return unit;
    }
    /// The ASCII character in the unit at a byte offset; zero where the bytes end before that unit
    /// does, or where it holds something else.
    [[nodiscard]] constexpr char ReadAscii(std::string_view bytes,
                                           std::size_t offset) const noexcept
    {
        if (offset > bytes.size() || bytes.size() - offset < unitSize)
            return '\0';
        const std::uint32_t unit = ReadUnit(bytes, offset);
        return unit < 0x80 ? static_cast<char>(unit) : '\0';
    }
    /// Whether the bytes begin with these ASCII characters, without byte-order mark.
    [[nodiscard]] constexpr bool IsBeginOf(std::string_view bytes,
                                           std::string_view characters) const noexcept
    {
        for (std::size_t i = 0; i < characters.size(); ++i) {
            if (ReadAscii(bytes, i * unitSize) != characters[i])
                return false;
        }
        return true;
    }
};

/// All of them. Those of larger units come first, because the byte-order mark of UTF-16LE begins
/// that of UTF-32LE; the last is UTF-8, whose units are those of all other single bytes, too.
inline constexpr Scheme c_schemes[] = {
    {Utf32LE, "UTF-32LE", std::string_view("\xFF\xFE\0\0", 4), 4, 0},
    {Utf32BE, "UTF-32BE", std::string_view("\0\0\xFE\xFF", 4), 4, 3},
    {Utf16LE, "UTF-16LE", "\xFF\xFE", 2, 0},
    {Utf16BE, "UTF-16BE", "\xFE\xFF", 2, 1},
    {Utf8, "UTF-8", "\xEF\xBB\xBF", 1, 0},
};

/// That of UTF-8.
inline constexpr const Scheme& c_utf8 = c_schemes[4];

/// What every byte-order mark is when its bytes have become text.
inline constexpr char16_t c_byteOrderMark = u'\uFEFF';

/// How "<?xm", the beginning of an XML declaration, is written in the encodings of EBCDIC.
inline constexpr std::string_view c_ebcdicDeclaration = "\x4C\x6F\xA7\x94";

/// What stands behind the byte-order mark of UTF-8; the bytes themselves without one.
[[nodiscard]] constexpr std::string_view SkipByteOrderMark(std::string_view bytes) noexcept
{
    return bytes.starts_with(c_utf8.byteOrderMark) ? bytes.substr(c_utf8.byteOrderMark.size())
                                                   : bytes;
}

/// The scheme whose byte-order mark the bytes begin with; null when there is none.
[[nodiscard]] KESPLATFORM_EXPORT const Scheme* FindByByteOrderMark(std::string_view bytes) noexcept;

/// Whether a text is a name of an encoding as the grammar of XML has it: a letter, and then
/// letters, digits, ".", "_" and "-".
[[nodiscard]] constexpr bool IsName(std::string_view text) noexcept
{
    const auto isLetter = [](char c) { return (c | 0x20) >= 'a' && (c | 0x20) <= 'z'; };
    return !text.empty() && isLetter(text.front()) &&
           std::all_of(text.begin(), text.end(), [&](char c) {
               return isLetter(c) || (c >= '0' && c <= '9') || c == '.' || c == '_' || c == '-';
           });
}

/// Whether a name is this one, in any case; `upper` is written in capitals.
[[nodiscard]] constexpr bool EqualsName(std::string_view name, std::string_view upper) noexcept
{
    return std::equal(upper.begin(), upper.end(), name.begin(), name.end(),
                      [](char expected, char c) {
                          return (c >= 'a' && c <= 'z' ? c - 'a' + 'A' : c) == expected;
                      });
}

/// Whether a name, in any case, is one of UTF-8.
[[nodiscard]] KESPLATFORM_EXPORT bool NamesUtf8(std::string_view name) noexcept;

} // namespace EncodingTable
