#pragma once

#include "AsciiSteps.h"
#include "Utf8Steps.h"

#include <cstddef>
#include <string>
#include <string_view>

/// The well-formed sequences of UTF-8, in one place for all that decode or check them.
namespace Utf8Bytes {

/// The length that a lead byte announces; 0 for a byte that leads no sequence of several bytes.
inline std::size_t AnnouncedLength(unsigned char lead) noexcept
{
    if (lead < 0xE0)
        return lead >= 0xC2 ? 2 : 0;
    if (lead < 0xF0)
        return 3;
    return lead < 0xF5 ? 4 : 0;
}

/// Reads the well-formed sequence of several bytes at the start of `text`, which is not empty, and
/// returns its length; 0 when there is none.
inline std::size_t ReadSequence(std::string_view text, char32_t& character) noexcept
{
    const auto byte = [text](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    const std::size_t length = AnnouncedLength(byte(0));
    if (length == 0 || length > text.size())
        return 0;
    bool isWellFormed = (byte(1) & 0xC0) == 0x80;
    const char32_t first = byte(0);
    const char32_t second = byte(1) & 0x3FU;
    if (length == 2) {
        character = (first & 0x1F) << 6 | second;
    } else if (length == 3) {
        character = (first & 0x0F) << 12 | second << 6 | (byte(2) & 0x3FU);
        // Neither longer than need be nor half of a pair.
        isWellFormed = isWellFormed && (byte(2) & 0xC0) == 0x80 && character >= 0x800 &&
                       (character & 0xF800) != 0xD800;
    } else {
        character =
            (first & 0x07) << 18 | second << 12 | (byte(2) & 0x3FU) << 6 | (byte(3) & 0x3FU);
        isWellFormed = isWellFormed && (byte(2) & 0xC0) == 0x80 && (byte(3) & 0xC0) == 0x80 &&
                       character >= 0x10000 && character <= 0x10FFFF;
    }
    return isWellFormed ? length : 0;
}

/// Whether `text` is the beginning of a well-formed sequence, but not the whole of one.
inline bool IsCutSequence(std::string_view text)
{
    if (text.empty() || text.size() >= AnnouncedLength(static_cast<unsigned char>(text[0])))
        return false;
    // What can be completed at all can be so with the smallest or with the largest bytes.
    char32_t character = 0;
    return ReadSequence(std::string(text) + "\x80\x80\x80", character) != 0 ||
           ReadSequence(std::string(text) + "\xBF\xBF\xBF", character) != 0;
}

/// The offset of the first byte that is part of no well-formed sequence, or the size.
inline std::size_t FindInvalid(std::string_view text) noexcept
{
    std::size_t at = 0;
    char32_t character = 0;
    while (at < text.size()) {
        std::size_t inStep = 0;
        while (text.size() - at >= Utf8Steps::c_readable &&
               (inStep = Utf8Steps::CountValid(text.data() + at)) != 0)
            at += inStep;
        if (static_cast<unsigned char>(text[at]) < 0x80) {
            ++at;
            while (at + AsciiSteps::c_step <= text.size() && AsciiSteps::IsAscii(text.data() + at))
                at += AsciiSteps::c_step;
            continue;
        }
        const std::size_t length = ReadSequence(text.substr(at), character);
        if (length == 0)
            return at;
        at += length;
    }
    return at;
}

} // namespace Utf8Bytes
