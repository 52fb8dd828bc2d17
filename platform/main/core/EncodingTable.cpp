#include <kesplatform/EncodingTable.h>

#include <algorithm>

namespace {

/// What the names of encodings with larger units begin with.
constexpr std::string_view c_largerUnits[] = {"UTF-16", "UTF16", "UTF-32",
                                              "UTF32",  "UCS",   "ISO-10646-UCS"};

} // namespace

const EncodingTable::Scheme* EncodingTable::FindByByteOrderMark(std::string_view bytes) noexcept
{
    const auto found =
        std::find_if(std::begin(c_schemes), std::end(c_schemes),
                     [&](const Scheme& e) { return bytes.starts_with(e.byteOrderMark); });
    return found == std::end(c_schemes) ? nullptr : found;
}

bool EncodingTable::NamesUtf8(std::string_view name) noexcept
{
    return EqualsName(name, "UTF-8") || EqualsName(name, "UTF8");
}

bool EncodingTable::NamesLargerUnits(std::string_view name) noexcept
{
    return std::any_of(std::begin(c_largerUnits), std::end(c_largerUnits),
                       [name](std::string_view start) { return StartsWithName(name, start); });
}
