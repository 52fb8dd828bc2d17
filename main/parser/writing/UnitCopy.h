#pragma once

#include "writing/UnitBlock.h"
#include "writing/XMLEscapeTable.h"

#include <cstddef>
#include <cstring>
#include <string_view>

/// Copying of UTF-16 units for texts that are short more often than not. Every function writes to
/// room that the caller has made, and returns where it stopped.
namespace UnitCopy {

/// A unit takes at most this many when it is escaped: "\xFFFE;".
inline constexpr std::size_t c_maxEscapeLength = HexadecimalEscape(0xFFFE).length;

/// The room that CopyEscaped needs; replacements are copied with all the room of their entry.
constexpr std::size_t EscapedRoom(std::size_t length) noexcept
{
    return length * c_maxEscapeLength + EscapeTableEntry::room;
}

inline char16_t* Copy(std::u16string_view text, char16_t* to) noexcept
{
    const char16_t* from = text.data();
    const std::size_t count = text.size();
    if (count >= UnitBlock::size) {
        const std::size_t last = count - UnitBlock::size;
        for (std::size_t i = 0; i < last; i += UnitBlock::size)
            UnitBlock::Load(from + i).Store(to + i);
        UnitBlock::Load(from + last).Store(to + last);
    } else if (count >= UnitBlock::size / 2) {
        UnitBlock::LoadEnds(from, count).StoreEnds(to, count);
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
    constexpr const EscapeTable& table = c_escapeTable<type>;
    const auto endsText = [](char16_t unit) {
        return type == MappingTableType::LongContent && unit == u'<';
    };
    const char16_t* from = text.data();
    const char16_t* const end = from + text.size();
    while (end - from >= static_cast<std::ptrdiff_t>(UnitBlock::size)) {
        const UnitBlock block = UnitBlock::Load(from);
        block.Store(to);
        const std::size_t clean = block.FindEscape<type>();
        to += clean;
        from += clean;
        if (clean == UnitBlock::size)
            continue;
        if (endsText(*from))
            return nullptr;
        to = PutEscape(table, *from++, to);
    }
    const auto rest = static_cast<std::size_t>(end - from);
    if (rest >= UnitBlock::size / 2) {
        const UnitBlock ends = UnitBlock::LoadEnds(from, rest);
        if (ends.FindEscape<type>() == UnitBlock::size) {
            ends.StoreEnds(to, rest);
            return to + rest;
        }
    }
    for (; from != end; ++from) {
        if (!NeedsEscape(table, *from))
            *to++ = *from;
        else if (endsText(*from))
            return nullptr;
        else
            to = PutEscape(table, *from, to);
    }
    return to;
}

} // namespace UnitCopy
