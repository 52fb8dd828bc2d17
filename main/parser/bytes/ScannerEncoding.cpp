#include "bytes/ScannerEncoding.h"

#include <kesplatform/XmlDeclaration.h>

using EncodingTable::Scheme;

namespace {

/// The declared encoding where single bytes can be decoded by it: it is a name, and not that of
/// larger units, for which the scanner takes UTF-8. `bytes` begins with the declaration.
std::string_view FindOfSingleBytes(std::string_view bytes)
{
    const std::string_view name = XmlDeclaration::FindEncoding(bytes);
    return EncodingTable::IsName(name) && !EncodingTable::NamesLargerUnits(name)
               ? name
               : std::string_view();
}

/// The name by which the scanner knows larger units.
std::string_view GetScannerName(const Scheme& scheme)
{
    switch (scheme.encoding) {
    case Utf32LE:
        return "UCS-4 (LE)";
    case Utf32BE:
        return "UCS-4 (BE)";
    default:
        return scheme.name;
    }
}

/// Larger units by the first bytes, as the scanner finds them; else null.
const Scheme* FindLargerUnits(std::string_view bytes)
{
    return EncodingTable::FindLargerUnits(bytes, [bytes](const Scheme& scheme) {
        return scheme.IsBeginOf(bytes, scheme.unitSize == 2 ? "<?" : "<");
    });
}

} // namespace

ScannerEncoding ScannerEncoding::Find(std::string_view bytes)
{
    ScannerEncoding found;
    found.isUtf8 = IsUtf8(bytes);
    if (found.isUtf8)
        return found;
    bytes = EncodingTable::SkipByteOrderMark(bytes);
    if (const Scheme* const larger = FindLargerUnits(bytes))
        found.units = larger;
    else if (bytes.starts_with(EncodingTable::c_ebcdicDeclaration))
        found.isAscii = false;
    else
        found.declared = FindOfSingleBytes(bytes);
    return found;
}

bool ScannerEncoding::IsUtf8(std::string_view bytes)
{
    const Scheme* const marked = EncodingTable::FindByByteOrderMark(bytes);
    if (marked != nullptr && marked->unitSize > 1)
        return false;
    // Without byte-order mark, larger units show by their zero bytes.
    if (bytes.substr(0, 4).find('\0') != std::string_view::npos ||
        bytes.starts_with(EncodingTable::c_ebcdicDeclaration))
        return false;
    bytes = EncodingTable::SkipByteOrderMark(bytes);
    // Behind a byte-order mark, nobody tells it.
    if (marked != nullptr && !FindOverlooked(bytes).empty())
        return true;
    const std::string_view name = FindOfSingleBytes(bytes);
    return name.empty() || EncodingTable::NamesUtf8(name);
}

std::string_view ScannerEncoding::FindOverlooked(std::string_view bytes)
{
    constexpr std::string_view c_start = XmlDeclaration::c_start;
    // UTF-8, which stands for all single bytes, comes last.
    for (const Scheme& scheme : EncodingTable::c_schemes) {
        if (!scheme.IsBeginOf(bytes, c_start))
            continue;
        const char space = scheme.ReadAscii(bytes, c_start.size() * scheme.unitSize);
        if (space == '\0' || space == ' ' ||
            XmlDeclaration::c_whitespace.find(space) == std::string_view::npos)
            return {};
        return scheme.unitSize > 1 ? GetScannerName(scheme) : FindOfSingleBytes(bytes);
    }
    return {};
}
