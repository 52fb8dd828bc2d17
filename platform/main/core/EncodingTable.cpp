#include <kesplatform/EncodingTable.h>

#include <algorithm>

namespace {

bool StartsWithIgnoringCase(std::string_view text, std::string_view upper) noexcept
{
    return text.size() >= upper.size() &&
           std::equal(upper.begin(), upper.end(), text.begin(), [](char expected, char c) {
               return (c >= 'a' && c <= 'z' ? c - 'a' + 'A' : c) == expected;
           });
}

bool EqualsIgnoringCase(std::string_view text, std::string_view upper) noexcept
{
    return text.size() == upper.size() && StartsWithIgnoringCase(text, upper);
}

/// What the names of encodings with larger units begin with.
constexpr std::string_view c_largerUnits[] = {"UTF-16", "UTF16", "UTF-32",
                                              "UTF32",  "UCS",   "ISO-10646-UCS"};

} // namespace

const EncodingTable::Entry* EncodingTable::FindByByteOrderMark(std::string_view bytes) noexcept
{
    const auto found =
        std::find_if(std::begin(c_entries), std::end(c_entries),
                     [&](const Entry& e) { return bytes.starts_with(e.byteOrderMark); });
    return found == std::end(c_entries) ? nullptr : found;
}

bool EncodingTable::NamesUtf8(std::string_view name) noexcept
{
    return EqualsIgnoringCase(name, "UTF-8") || EqualsIgnoringCase(name, "UTF8");
}

bool EncodingTable::NamesLargerUnits(std::string_view name) noexcept
{
    return std::any_of(
        std::begin(c_largerUnits), std::end(c_largerUnits),
        [name](std::string_view start) { return StartsWithIgnoringCase(name, start); });
}
