#include "bytes/OverlookedFaults.h"

#include "bytes/Utf8Faults.h"

#include <kesplatform/EncodingTable.h>
#include <kesplatform/XmlDeclaration.h>

#include <algorithm>
#include <cstddef>

namespace {

constexpr std::size_t c_npos = std::string_view::npos;

const char16_t* const c_nullCharacter = u"invalid character (Unicode: 0x0)";
const char16_t* const c_incompleteCharacter = u"incomplete character at the end of the document";

/// Where the bytes begin, behind the last markup and the white space that follows it, among which
/// there is one that is not ASCII. Behind the root element stand only white space and markup, and
/// markup ends with ">".
std::size_t FindNonAsciiTail(std::string_view bytes)
{
    std::size_t at = bytes.rfind('>') + 1;
    while (at < bytes.size()) {
        const std::string_view rest = bytes.substr(at);
        if (XmlDeclaration::c_whitespace.find(rest.front()) != c_npos)
            at += 1;
        // Line ends of version 1.1.
        else if (rest.starts_with("\xC2\x85"))
            at += 2;
        else if (rest.starts_with("\xE2\x80\xA8"))
            at += 3;
        else
            break;
    }
    const bool isAscii =
        std::all_of(bytes.begin() + static_cast<std::ptrdiff_t>(std::min(at, bytes.size())),
                    bytes.end(), [](char byte) { return static_cast<unsigned char>(byte) < 0x80; });
    return isAscii ? c_npos : at;
}

/// Where a character begins that the end of the bytes has cut off.
std::size_t FindIncomplete(std::string_view bytes)
{
    const std::size_t tail = FindNonAsciiTail(bytes);
    return tail == c_npos ? Utf8Faults::FindCut(bytes) : tail;
}

} // namespace

std::optional<OverlookedFaults::Fault> OverlookedFaults::Find(std::string_view bytes,
                                                              bool mayHoldNull)
{
    bytes = EncodingTable::SkipByteOrderMark(bytes);
    const auto locate = [&](const char16_t* message, std::size_t offset) {
        return Fault{Utf8Faults::LocateEnd(bytes.substr(0, offset)), message};
    };
    const std::size_t null = mayHoldNull ? bytes.find('\0') : c_npos;
    if (null != c_npos)
        return locate(c_nullCharacter, null);
    const std::size_t incomplete = FindIncomplete(bytes);
    if (incomplete != c_npos)
        return locate(c_incompleteCharacter, incomplete);
    return std::nullopt;
}
