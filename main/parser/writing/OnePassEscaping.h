#pragma once

#include "writing/EightUnits.h"
#include "writing/EscapeTable.h"

#include <cstddef>
#include <cstring>
#include <string_view>

/// Escaping while copying, for texts that are short more often than not: the caller makes room for
/// the longest result, so that one pass will do. Every function writes to that room, and returns
/// where it stopped. TwoPassEscaping is the other way.
namespace OnePassEscaping {

/// A unit takes at most this many when it is escaped: "\xFFFE;".
inline constexpr std::size_t c_maxEscapeLength = HexadecimalEscape(0xFFFE).length;

/// The room that CopyEscaped needs; replacements are copied with all the room of their entry.
constexpr std::size_t EscapedRoom(std::size_t length) noexcept
{
    return length * c_maxEscapeLength + EscapeTableEntry::c_room;
}

inline char16_t* Copy(std::u16string_view text, char16_t* to) noexcept
{
    const char16_t* from = text.data();
    const std::size_t count = text.size();
    if (count >= EightUnits::c_count) {
        const std::size_t last = count - EightUnits::c_count;
        for (std::size_t i = 0; i < last; i += EightUnits::c_count)
            EightUnits::Load(from + i).Store(to + i);
        EightUnits::Load(from + last).Store(to + last);
    } else if (count >= EightUnits::c_count / 2) {
        EightUnits::LoadEnds(from, count).StoreEnds(to, count);
    } else if (count > 0) {
        // One to three units: the first, the last and the one in the middle.
        to[0] = from[0];
        to[count / 2] = from[count / 2];
        to[count - 1] = from[count - 1];
    }
    return to + count;
}

/// Writes what a unit that needs an escape is replaced by.
inline char16_t* PutEscape(const EscapeTable& table, char16_t unit, char16_t* to) noexcept
{
    const EscapeTableEntry entry = unit < table.size() ? table[unit] : HexadecimalEscape(unit);
    std::memcpy(to, entry.text.data(), sizeof(entry.text));
    return to + entry.length;
}

/// Copies with all that needs it escaped. Long content stops at its first "<", because it is
/// written another way then, and returns null.
template <MappingTableType type>
char16_t* CopyEscaped(std::u16string_view text, char16_t* to) noexcept
{
    constexpr const EscapeTable& c_table = c_escapeTable<type>;
    const auto endsText = [](char16_t unit) {
        return type == MappingTableType::LongContent && unit == u'<';
    };
    const char16_t* from = text.data();
    const char16_t* const end = from + text.size();
    while (end - from >= static_cast<std::ptrdiff_t>(EightUnits::c_count)) {
        const EightUnits units = EightUnits::Load(from);
        units.Store(to);
        const std::size_t clean = units.FindEscape<type>();
        to += clean;
        from += clean;
        if (clean == EightUnits::c_count)
            continue;
        if (endsText(*from))
            return nullptr;
        to = PutEscape(c_table, *from++, to);
    }
    const auto rest = static_cast<std::size_t>(end - from);
    if (rest >= EightUnits::c_count / 2) {
        const EightUnits ends = EightUnits::LoadEnds(from, rest);
        if (ends.FindEscape<type>() == EightUnits::c_count) {
            ends.StoreEnds(to, rest);
            return to + rest;
        }
    }
    for (; from != end; ++from) {
        if (!NeedsEscape(c_table, *from))
            *to++ = *from;
        else if (endsText(*from))
            return nullptr;
        else
            to = PutEscape(c_table, *from, to);
    }
    return to;
}

} // namespace OnePassEscaping
