#pragma once

#include "UnitBlock.h"
#include "XMLEscapeTable.h"

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

/// Copies with all that needs it escaped. Long content stops at its first "<", because it is
/// written another way then, and returns null.
template <MappingTableType type>
char16_t* CopyUnitsEscaped(const char16_t* from, std::size_t count, char16_t* to) noexcept
{
    constexpr const EscapeTable& table = c_escapeTable<type>;
    for (std::size_t i = 0; i < count; ++i) {
        const char16_t unit = from[i];
        if (!NeedsEscape(table, unit)) {
            *to++ = unit;
            continue;
        }
        if (type == MappingTableType::LongContent && unit == u'<')
            return nullptr;
        const EscapeTableEntry entry = unit < table.size() ? table[unit] : HexadecimalEscape(unit);
        std::memcpy(to, entry.text.data(), sizeof(entry.text));
        to += entry.length;
    }
    return to;
}

template <MappingTableType type>
char16_t* CopyEscaped(std::u16string_view text, char16_t* to) noexcept
{
    const char16_t* from = text.data();
    std::size_t count = text.size();
    for (; count >= UnitBlock::size; from += UnitBlock::size, count -= UnitBlock::size) {
        const UnitBlock block = UnitBlock::Load(from);
        block.Store(to);
        const std::size_t clean = block.FindEscape<type>();
        to += clean;
        if (clean < UnitBlock::size) {
            to = CopyUnitsEscaped<type>(from + clean, UnitBlock::size - clean, to);
            if (type == MappingTableType::LongContent && to == nullptr)
                return nullptr;
        }
    }
    if (count >= UnitBlock::size / 2) {
        const UnitBlock ends = UnitBlock::LoadEnds(from, count);
        if (ends.FindEscape<type>() == UnitBlock::size) {
            ends.StoreEnds(to, count);
            return to + count;
        }
    }
    return CopyUnitsEscaped<type>(from, count, to);
}

} // namespace UnitCopy
