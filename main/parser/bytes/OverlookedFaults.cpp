#include "bytes/OverlookedFaults.h"

#include "bytes/ScannerEncoding.h"
#include "bytes/StrictDecoding.h"
#include "bytes/Utf8Faults.h"

#include <kesplatform/TFormatString.h>
#include <kesplatform/Unicode.h>
#include <kesplatform/XmlDeclaration.h>

#include <QChar>

#include <algorithm>
#include <cstddef>

namespace {

constexpr std::size_t c_npos = std::string_view::npos;

const char16_t* const c_nullCharacter = u"invalid character (Unicode: 0x0)";
const char16_t* const c_incompleteCharacter = u"incomplete character at the end of the document";

std::size_t FindNull(std::string_view bytes, const EncodingTable::Scheme& units)
{
    if (units.unitSize == 1)
        return bytes.find('\0');
    for (std::size_t at = 0; at + units.unitSize <= bytes.size(); at += units.unitSize) {
        if (units.ReadUnit(bytes, at) == 0)
            return at;
    }
    return c_npos;
}

/// Where the bytes begin, behind the last markup and the white space that follows it, among which
/// there is one that is not ASCII. Behind the root element stand only white space and markup, and
/// markup ends with ">".
std::size_t FindNonAsciiTail(std::string_view bytes)
{
    std::size_t at = bytes.rfind('>') + 1;
    while (at < bytes.size()) {
        const std::string_view rest = bytes.substr(at);
        if (XmlDeclaration::c_whitespace.find(rest.front()) != c_npos || rest.front() == '\x85')
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
std::size_t FindIncomplete(std::string_view bytes, const ScannerEncoding& encoding)
{
    const std::size_t unitSize = encoding.units->unitSize;
    if (unitSize > 1)
        return bytes.size() % unitSize == 0 ? c_npos : bytes.size() - bytes.size() % unitSize;
    if (!encoding.isAscii)
        return c_npos;
    const std::size_t tail = FindNonAsciiTail(bytes);
    if (tail != c_npos && !encoding.declared.empty())
        return StrictDecoding::FindIncomplete(bytes, tail, encoding.declared);
    if (tail == c_npos && encoding.isUtf8)
        return Utf8Faults::FindCut(bytes);
    return tail;
}

TString DescribeUndecodable(std::string_view encoding)
{
    return TFormatString(u"bytes that are no character in '%1' encoding")
        .Format(TString::fromUtf8(encoding));
}

} // namespace

std::optional<OverlookedFaults::Fault> OverlookedFaults::Find(std::string_view bytes, bool isUtf8,
                                                              bool mayHoldNull)
{
    const ScannerEncoding encoding = isUtf8 ? ScannerEncoding() : ScannerEncoding::Find(bytes);
    bytes = EncodingTable::SkipByteOrderMark(bytes);
    const auto locate = [&](const char16_t* message, std::size_t offset) {
        return Fault{LocateEnd(bytes.substr(0, offset), encoding), message};
    };

    const std::size_t null = mayHoldNull ? FindNull(bytes, *encoding.units) : c_npos;
    if (null != c_npos)
        return locate(c_nullCharacter, null);
    if (!encoding.declared.empty()) {
        if (const auto at = StrictDecoding::FindUndecodable(bytes, encoding.declared))
            return Fault{*at, DescribeUndecodable(encoding.declared)};
    }
    const std::size_t incomplete = FindIncomplete(bytes, encoding);
    if (incomplete != c_npos)
        return locate(c_incompleteCharacter, incomplete);
    return std::nullopt;
}

TextPosition OverlookedFaults::LocateEnd(std::string_view bytes, const ScannerEncoding& encoding)
{
    if (!encoding.declared.empty()) {
        if (const auto position = StrictDecoding::FindEnd(bytes, encoding.declared))
            return *position;
    }
    const EncodingTable::Scheme& units = *encoding.units;
    if (units.unitSize == 1 && encoding.isAscii)
        return Utf8Faults::LocateEnd(bytes);
    constexpr std::uint32_t c_byteOrderMark = 0xFEFF;
    PositionCounter counter;
    for (std::size_t at = 0; at < bytes.size(); at += units.unitSize) {
        const std::uint32_t unit = units.ReadUnit(bytes, at);
        if (at > 0 || unit != c_byteOrderMark)
            counter.Pass(unit);
    }
    return counter.Get();
}

std::string OverlookedFaults::ToUtf8(std::string_view bytes, bool isUtf8)
{
    const ScannerEncoding encoding = isUtf8 ? ScannerEncoding() : ScannerEncoding::Find(bytes);
    if (!encoding.isAscii)
        return {};
    if (!encoding.declared.empty())
        return StrictDecoding::ToUtf8(bytes, encoding.declared);
    const EncodingTable::Scheme& units = *encoding.units;
    if (units.unitSize == 1)
        return std::string(bytes);
    std::u16string text;
    for (std::size_t at = 0; at < bytes.size(); at += units.unitSize) {
        const std::uint32_t unit = units.ReadUnit(bytes, at);
        if (unit > 0xFFFF) {
            text += QChar::highSurrogate(unit);
            text += QChar::lowSurrogate(unit);
        } else {
            text += static_cast<char16_t>(unit);
        }
    }
    return Unicode::toUtf8KeepingHalves(text);
}
