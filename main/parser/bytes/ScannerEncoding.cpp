#include "bytes/ScannerEncoding.h"

#include <kesplatform/XmlDeclaration.h>

#include <algorithm>

using EncodingTable::Entry;

namespace {

bool IsEncodingName(std::string_view name)
{
    constexpr std::string_view c_letters = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";
    constexpr std::string_view c_others = "0123456789._-";
    return !name.empty() && c_letters.find(name.front()) != std::string_view::npos &&
           std::all_of(name.begin(), name.end(), [&](char c) {
               return c_letters.find(c) != std::string_view::npos ||
                      c_others.find(c) != std::string_view::npos;
           });
}

/// The declared encoding where single bytes can be decoded by it: it is a name, and not that of
/// larger units, for which the scanner takes UTF-8. `bytes` begins with the declaration.
std::string_view FindOfSingleBytes(std::string_view bytes)
{
    const std::string_view name = XmlDeclaration::FindEncoding(bytes);
    return IsEncodingName(name) && !EncodingTable::NamesLargerUnits(name) ? name
                                                                          : std::string_view();
}

/// The name by which the scanner knows larger units.
std::string_view GetScannerName(const Entry& entry)
{
    switch (entry.encoding) {
    case Utf32LE:
        return "UCS-4 (LE)";
    case Utf32BE:
        return "UCS-4 (BE)";
    default:
        return entry.name;
    }
}

/// Larger units by the first bytes, as the scanner finds them; else null.
const Entry* FindLargerUnits(std::string_view bytes)
{
    if (const Entry* const marked = EncodingTable::FindByByteOrderMark(bytes))
        return marked->unitSize > 1 ? marked : nullptr;
    for (const Entry& entry : EncodingTable::c_entries) {
        if (entry.unitSize > 1 && entry.IsBeginOf(bytes, entry.unitSize == 2 ? "<?" : "<"))
            return &entry;
    }
    return nullptr;
}

std::string_view SkipMark(std::string_view bytes)
{
    constexpr std::string_view c_mark = EncodingTable::c_utf8.byteOrderMark;
    return bytes.starts_with(c_mark) ? bytes.substr(c_mark.size()) : bytes;
}

} // namespace

ScannerEncoding ScannerEncoding::Find(std::string_view bytes)
{
    ScannerEncoding found;
    found.isUtf8 = IsUtf8(bytes);
    if (found.isUtf8)
        return found;
    bytes = SkipMark(bytes);
    if (const Entry* const larger = FindLargerUnits(bytes))
        found.units = larger;
    else if (bytes.starts_with(EncodingTable::c_ebcdicDeclaration))
        found.isAscii = false;
    else
        found.declared = FindOfSingleBytes(bytes);
    return found;
}

bool ScannerEncoding::IsUtf8(std::string_view bytes)
{
    const Entry* const marked = EncodingTable::FindByByteOrderMark(bytes);
    if (marked != nullptr && marked->unitSize > 1)
        return false;
    // Without byte-order mark, larger units show by their zero bytes.
    if (bytes.substr(0, 4).find('\0') != std::string_view::npos ||
        bytes.starts_with(EncodingTable::c_ebcdicDeclaration))
        return false;
    bytes = SkipMark(bytes);
    // Behind a byte-order mark, nobody tells it.
    if (marked != nullptr && !FindOverlooked(bytes).empty())
        return true;
    const std::string_view name = FindOfSingleBytes(bytes);
    return name.empty() || EncodingTable::NamesUtf8(name);
}

std::string_view ScannerEncoding::FindOverlooked(std::string_view bytes)
{
    constexpr std::string_view c_start = XmlDeclaration::c_start;
    // UTF-8, which stands for all single bytes, is the last entry.
    for (const Entry& entry : EncodingTable::c_entries) {
        if (!entry.IsBeginOf(bytes, c_start))
            continue;
        const char space = entry.ReadAscii(bytes, c_start.size() * entry.unitSize);
        if (space == '\0' || space == ' ' ||
            XmlDeclaration::c_whitespace.find(space) == std::string_view::npos)
            return {};
        return entry.unitSize > 1 ? GetScannerName(entry) : FindOfSingleBytes(bytes);
    }
    return {};
}
