#pragma once

#include "writing/XMLFormatterAssertions.h"

#include <kesplatform/CorePlatformUtils.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

/// Where the escaped text goes: both kinds escape markup, carriage return and all other control
/// units; long content keeps its tabs and line feeds.
enum class MappingTableType
{
    Attribute = 0,
    LongContent = 1
};

/// The text that replaces one unit; empty when the unit is written as it is. The room is eight
/// units so that a writer may copy all of it at once.
struct EscapeTableEntry
{
    static constexpr std::size_t c_room = 8;

    std::array<char16_t, c_room> text{};
    std::uint16_t length = 0;

    constexpr EscapeTableEntry() = default;
    constexpr EscapeTableEntry(std::u16string_view replacement)
        : length(static_cast<std::uint16_t>(replacement.size()))
    {
        for (std::size_t i = 0; i < replacement.size(); ++i)
            text[i] = replacement[i];
    }

    constexpr std::u16string_view View() const { return {text.data(), length}; }
};

/// Indexed by UTF-16 unit; '>' is the last unit that may have an entry.
using EscapeTable = std::array<EscapeTableEntry, u'>' + 1>;

/// "\x", the unit in upper-case hexadecimal without leading zeros, and ";".
constexpr EscapeTableEntry HexadecimalEscape(char16_t unit)
{
    EscapeTableEntry entry(u"\\x");
    int shift = 12;
    while (shift > 0 && (unit >> shift) == 0)
        shift -= 4;
    for (; shift >= 0; shift -= 4)
        entry.text[entry.length++] = u"0123456789ABCDEF"[(unit >> shift) & 0xF];
    entry.text[entry.length++] = u';';
    return entry;
}

constexpr EscapeTable InitMappingTableType(MappingTableType type)
{
    EscapeTable table;
    for (char16_t unit = 0; unit < u' '; ++unit)
        table[unit] = HexadecimalEscape(unit);
    table[u'\r'] = {u"&#13;"};
    table[u'&'] = {u"&amp;"};
    table[u'<'] = {u"&lt;"};
    table[u'>'] = {u"&gt;"};
    table[u'\''] = {u"&apos;"};
    table[u'"'] = {u"&quot;"};
    switch (type) {
    case MappingTableType::Attribute:
        table[u'\n'] = {u"&#10;"};
        table[u'\t'] = {u"&#9;"};
        return table;
    case MappingTableType::LongContent:
        table[u'\n'] = {};
        table[u'\t'] = {};
        return table;
    }
    ThrowUnknownMappingTableType();
}

/// The table of a type; ready before anything runs.
template <MappingTableType type>
inline constexpr EscapeTable c_escapeTable = InitMappingTableType(type);

/// Whether a unit cannot be written as it is.
constexpr bool NeedsEscape(const EscapeTable& table, char16_t unit)
{
    if (unit < table.size())
        return table[unit].length != 0;
    return unit >= 0x80 && !CorePlatformUtils::IsValidCharacter(unit);
}
