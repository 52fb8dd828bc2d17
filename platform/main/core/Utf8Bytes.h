#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

/// The well-formed sequences of UTF-8, in one place for all that decode or check them.
namespace Utf8Bytes {

/// Bytes that the ASCII loops take at a time.
constexpr std::size_t c_step = 16;

inline bool IsAsciiStep(const char* bytes) noexcept
{
    std::uint64_t words[2];
    std::memcpy(words, bytes, sizeof(words));
    return ((words[0] | words[1]) & 0x8080808080808080U) == 0;
}

inline bool IsContinuation(unsigned char byte) noexcept
{
    return (byte & 0xC0) == 0x80;
}

/// The length that a lead byte announces; 0 for a byte that leads no sequence of several bytes.
inline std::size_t AnnouncedLength(unsigned char lead) noexcept
{
    if (lead >= 0xC2 && lead <= 0xDF)
        return 2;
    if (lead >= 0xE0 && lead <= 0xEF)
        return 3;
    return lead >= 0xF0 && lead <= 0xF4 ? 4 : 0;
}

/// Whether `second` may follow `lead`: leaves out overlong forms, surrogates and what lies beyond
/// U+10FFFF.
inline bool IsSecond(unsigned char lead, unsigned char second) noexcept
{
    switch (lead) {
    case 0xE0:
        return second >= 0xA0 && second <= 0xBF;
    case 0xED:
        return second >= 0x80 && second <= 0x9F;
    case 0xF0:
        return second >= 0x90 && second <= 0xBF;
    case 0xF4:
        return second >= 0x80 && second <= 0x8F;
    default:
        return IsContinuation(second);
    }
}

/// The length of the well-formed sequence of several bytes at the start of `text`, 0 when there is
/// none. `text` is not empty.
inline std::size_t SequenceLength(std::string_view text) noexcept
{
    const auto byte = [text](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    const std::size_t length = AnnouncedLength(byte(0));
    if (length == 0 || length > text.size() || !IsSecond(byte(0), byte(1)))
        return 0;
    for (std::size_t i = 2; i < length; ++i) {
        if (!IsContinuation(byte(i)))
            return 0;
    }
    return length;
}

/// Whether `text` is the beginning of a well-formed sequence, but not the whole of one.
inline bool IsCutSequence(std::string_view text) noexcept
{
    const auto byte = [text](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    if (text.empty() || text.size() >= AnnouncedLength(byte(0)))
        return false;
    if (text.size() > 1 && !IsSecond(byte(0), byte(1)))
        return false;
    return text.size() < 3 || IsContinuation(byte(2));
}

/// The offset of the first byte that is part of no well-formed sequence, or the size.
inline std::size_t FindInvalid(std::string_view text) noexcept
{
    std::size_t at = 0;
    while (at < text.size()) {
        if (static_cast<unsigned char>(text[at]) < 0x80) {
            ++at;
            while (at + c_step <= text.size() && IsAsciiStep(text.data() + at))
                at += c_step;
            continue;
        }
        const std::size_t length = SequenceLength(text.substr(at));
        if (length == 0)
            return at;
        at += length;
    }
    return at;
}

} // namespace Utf8Bytes
