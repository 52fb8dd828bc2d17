#include "bytes/Utf8Faults.h"

#include <kesplatform/EncodingTable.h>
#include <kesplatform/TFormatString.h>
#include <kesplatform/Unicode.h>

#include <algorithm>

namespace {

/// How many bytes the scanner expects behind the first one of a sequence.
std::size_t CountFollowing(char lead) noexcept
{
    const auto value = static_cast<unsigned char>(lead);
    // No character has more than three bytes behind the first, but the scanner waits for them. From
    // F5 to F7 it gets FF to see instead; see StrictUtf8Source.
    return value < 0xC0                     ? 0
           : value < 0xE0                   ? 1
           : value < 0xF0                   ? 2
           : value < 0xF5                   ? 3
           : value >= 0xF8 && value <= 0xFB ? 4
                                            : 5;
}

/// The scanner would speak of the byte that it got to see instead.
TString DescribeHiddenByte(char byte)
{
    const auto value = static_cast<unsigned char>(byte);
    if (value < 0xF5 || value > 0xF7)
        return {};
    return TFormatString(u"invalid byte '0xF%1' at position 1 of a 4-byte sequence")
        .Format(value - 0xF0);
}

} // namespace

std::optional<Utf8Faults::InvalidBytes> Utf8Faults::FindFirst(std::string_view bytes)
{
    const std::size_t at = Unicode::findInvalidUtf8(bytes);
    if (at == bytes.size())
        return std::nullopt;
    InvalidBytes found{LocateEnd(bytes.substr(0, at)), {}, FindCut(bytes) == at};
    found.message = found.isCut ? TString(u"incomplete character at the end of the document")
                                : DescribeHiddenByte(bytes[at]);
    return found;
}

std::size_t Utf8Faults::FindCut(std::string_view bytes) noexcept
{
    constexpr std::size_t c_longest = 5;
    for (std::size_t at = bytes.size() - std::min(bytes.size(), c_longest); at < bytes.size();
         ++at) {
        if (at + CountFollowing(bytes[at]) >= bytes.size())
            return at;
    }
    return std::string_view::npos;
}

void Utf8Faults::Pass(PositionCounter& counter, std::string_view bytes) noexcept
{
    constexpr std::uint32_t c_firstOfTwoUnits = 0x10000;
    for (const char byte : bytes) {
        const auto value = static_cast<unsigned char>(byte);
        const bool continuesCharacter = (value & 0xC0) == 0x80;
        if (!continuesCharacter)
            counter.Pass(value >= 0xF0 ? c_firstOfTwoUnits : value);
    }
}

ScanPosition Utf8Faults::LocateEnd(std::string_view bytes) noexcept
{
    PositionCounter counter;
    Pass(counter, EncodingTable::SkipByteOrderMark(bytes));
    return counter.Get();
}
