#include "bytes/DocumentEnd.h"

#include "bytes/DeclaredEncoding.h"
#include "bytes/StrictDecoding.h"
#include "bytes/Utf8Guard.h"

#include <kesplatform/TFormatString.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace {

constexpr std::size_t c_npos = std::string_view::npos;
constexpr std::string_view c_whitespace = " \t\r\n";

const char16_t* const c_nullCharacter = u"invalid character (Unicode: 0x0)";
const char16_t* const c_incompleteCharacter = u"incomplete character at the end of the document";

/// How bytes make units: one, two or four bytes each.
struct Units
{
    std::size_t size = 1;
    bool isBigEndian = false;
    /// Whether units below 0x80 are ASCII.
    bool isAscii = true;

    std::uint32_t Read(std::string_view bytes, std::size_t offset) const noexcept
    {
        std::uint32_t unit = 0;
        for (std::size_t i = 0; i < size; ++i) {
            const std::size_t place = isBigEndian ? i : size - 1 - i;
            unit = unit << 8 | static_cast<unsigned char>(bytes[offset + place]);
        }
        return unit;
    }
};

/// By the first bytes, as the scanner does. The longer patterns come first.
Units DetectUnits(std::string_view bytes)
{
    using namespace std::string_view_literals;
    struct Pattern
    {
        std::string_view bytes;
        Units units;
    };
    constexpr Pattern c_patterns[] = {
        {"\xFF\xFE\0\0"sv, {4, false}},
        {"\0\0\xFE\xFF"sv, {4, true}},
        {"<\0\0\0"sv, {4, false}},
        {"\0\0\0<"sv, {4, true}},
        {"\xFF\xFE"sv, {2, false}},
        {"\xFE\xFF"sv, {2, true}},
        {"<\0?\0"sv, {2, false}},
        {"\0<\0?"sv, {2, true}},
        {"\x4C\x6F\xA7\x94"sv, {1, false, false}},
    };
    for (const Pattern& pattern : c_patterns) {
        if (bytes.starts_with(pattern.bytes))
            return pattern.units;
    }
    return {};
}

std::size_t FindNull(std::string_view bytes, const Units& units)
{
    if (units.size == 1)
        return bytes.find('\0');
    for (std::size_t at = 0; at + units.size <= bytes.size(); at += units.size) {
        if (units.Read(bytes, at) == 0)
            return at;
    }
    return c_npos;
}

/// Where a character begins that the end of the bytes has cut off. Behind the root element stand
/// only white space and markup, and markup ends with ">".
std::size_t FindIncomplete(std::string_view bytes, const Units& units)
{
    if (units.size > 1)
        return bytes.size() % units.size == 0 ? c_npos : bytes.size() - bytes.size() % units.size;
    if (!units.isAscii)
        return c_npos;
    std::size_t at = bytes.rfind('>') + 1;
    while (at < bytes.size()) {
        const std::string_view rest = bytes.substr(at);
        if (c_whitespace.find(rest.front()) != c_npos || rest.front() == '\x85')
            at += 1;
        // Line ends of version 1.1.
        else if (rest.starts_with("\xC2\x85"))
            at += 2;
        else if (rest.starts_with("\xE2\x80\xA8"))
            at += 3;
        else
            break;
    }
    const bool isIncomplete = std::any_of(
        bytes.begin() + static_cast<std::ptrdiff_t>(std::min(at, bytes.size())), bytes.end(),
        [](char byte) { return static_cast<unsigned char>(byte) >= 0x80; });
    return isIncomplete ? at : c_npos;
}

/// Where a sequence of UTF-8 begins that wants more bytes than there are. The scanner drops it with
/// all that stands behind it, even markup, and refuses sequences that are wrong in other ways.
std::size_t FindCutSequence(std::string_view bytes)
{
    const auto countFollowing = [](char lead) -> std::size_t {
        const auto value = static_cast<unsigned char>(lead);
        // No character has more than three bytes behind the first, but the scanner waits for them.
        // From F5 to F7 it gets FF to see instead; see Utf8Guard.
        return value < 0xC0                     ? 0
               : value < 0xE0                   ? 1
               : value < 0xF0                   ? 2
               : value < 0xF5                   ? 3
               : value >= 0xF8 && value <= 0xFB ? 4
                                                : 5;
    };
    constexpr std::size_t c_longest = 5;
    for (std::size_t at = bytes.size() - std::min(bytes.size(), c_longest); at < bytes.size();
         ++at) {
        if (at + countFollowing(bytes[at]) >= bytes.size())
            return at;
    }
    return c_npos;
}

std::string_view SkipMark(std::string_view bytes)
{
    constexpr std::string_view c_mark = "\xEF\xBB\xBF";
    return bytes.starts_with(c_mark) ? bytes.substr(c_mark.size()) : bytes;
}

/// Where that stands which follows these bytes, the first of a document of such units. Single bytes
/// are UTF-8, or one character each where they are not ASCII.
TextPosition LocateEnd(std::string_view bytes, const Units& units)
{
    constexpr std::uint32_t c_mark = 0xFEFF;
    constexpr std::uint32_t c_firstOfTwoUnits = 0x10000;
    const bool isUtf8 = units.size == 1 && units.isAscii;
    PositionCounter counter;
    for (std::size_t at = 0; at < bytes.size(); at += units.size) {
        const std::uint32_t unit = units.Read(bytes, at);
        const bool isMark = at == 0 && unit == c_mark;
        const bool continuesCharacter = isUtf8 && (unit & 0xC0) == 0x80;
        if (!isMark && !continuesCharacter)
            counter.Pass(isUtf8 && unit >= 0xF0 ? c_firstOfTwoUnits : unit);
    }
    return counter.Get();
}

std::optional<DocumentEnd::Flaw> FindUndecodable(std::string_view bytes, std::string_view encoding)
{
    const auto position = StrictDecoding::FindUndecodable(bytes, encoding);
    if (!position)
        return std::nullopt;
    return DocumentEnd::Flaw{*position,
                             TFormatString(u"bytes that are no character in '%1' encoding")
                                 .Format(TString::fromUtf8(encoding))};
}

} // namespace

std::optional<DocumentEnd::Flaw> DocumentEnd::FindFlaw(std::string_view bytes, bool isUtf8,
                                                       bool mayHoldNull)
{
    const bool isReadAsUtf8 = isUtf8 || Utf8Guard::IsReadAsUtf8(bytes);
    bytes = SkipMark(bytes);
    const Units units = isReadAsUtf8 ? Units() : DetectUnits(bytes);
    const std::string_view encoding = isReadAsUtf8 || units.size > 1 || !units.isAscii
                                          ? std::string_view()
                                          : DeclaredEncoding::FindOfSingleBytes(bytes);
    const auto locate = [&](const char16_t* message, std::size_t offset) {
        const std::string_view before = bytes.substr(0, offset);
        std::optional<TextPosition> position;
        if (!encoding.empty())
            position = StrictDecoding::FindEnd(before, encoding);
        return Flaw{position ? *position : LocateEnd(before, units), message};
    };

    const std::size_t null = mayHoldNull ? FindNull(bytes, units) : c_npos;
    if (null != c_npos)
        return locate(c_nullCharacter, null);
    if (!encoding.empty()) {
        if (auto flaw = FindUndecodable(bytes, encoding))
            return flaw;
    }
    std::size_t incomplete = FindIncomplete(bytes, units);
    if (incomplete == c_npos && isReadAsUtf8)
        incomplete = FindCutSequence(bytes);
    if (incomplete != c_npos)
        return locate(c_incompleteCharacter, incomplete);
    return std::nullopt;
}
