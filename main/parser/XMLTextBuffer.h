#pragma once

#include "UnitBlock.h"
#include "XMLEscapeTable.h"

#include <kesplatform/TString.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <string_view>

/// Appends text to a string in place, much faster than piece by piece. While the buffer lives the
/// string holds more than was written; Commit, or else the end of the buffer, cuts it to size.
/// Without Commit the string ends as it was.
class XMLTextBuffer
{
public:
    explicit XMLTextBuffer(TString& text) noexcept : m_text(text), m_keptLength(text.length()) {}
    XMLTextBuffer(const XMLTextBuffer&) = delete;
    XMLTextBuffer& operator=(const XMLTextBuffer&) = delete;
    ~XMLTextBuffer()
    {
        if (m_to != nullptr)
            m_text.resize(m_keptLength);
    }

    void Commit() noexcept
    {
        if (m_to != nullptr)
            m_keptLength = m_to - m_text.utf16();
    }

    /// Makes room for `units` units; the Put functions rely on it.
    void Reserve(std::size_t units)
    {
        if (static_cast<std::size_t>(m_end - m_to) < units)
            Grow(units);
    }

    void Put(char16_t unit) noexcept { *m_to++ = unit; }
    void Put(std::u16string_view text) noexcept;
    /// Puts the text with all that needs it escaped, which takes up to c_maxEscapeLength units for
    /// each unit.
    template <MappingTableType type>
    void PutEscaped(std::u16string_view text) noexcept;

    /// Like Put and PutEscaped, but make the room themselves.
    void Append(std::u16string_view text)
    {
        Reserve(text.size());
        Put(text);
    }
    template <MappingTableType type>
    void AppendEscaped(std::u16string_view text);

    /// The longest replacement is that of U+FFFE and U+FFFF, "\xFFFE;".
    static constexpr std::size_t c_maxEscapeLength = HexadecimalEscape(0xFFFE).length;
    /// A text of up to this length may be escaped in one go.
    static constexpr std::size_t c_escapeStep = 1024;

private:
    /// Replacements are copied with all the room that they have in their table.
    static constexpr std::size_t c_slack = EscapeTableEntry::room;

    void Grow(std::size_t units);
    template <MappingTableType type>
    void PutUnits(const char16_t* units, std::size_t count) noexcept;

    TString& m_text;
    TString::size_type m_keptLength;
    char16_t* m_to = nullptr;
    char16_t* m_end = nullptr;
};

inline void XMLTextBuffer::Grow(std::size_t units)
{
    const TString::size_type used = m_to == nullptr ? m_text.length() : m_to - m_text.utf16();
    const auto needed = static_cast<std::size_t>(used) + units + c_slack;
    // Half the units that fit in a power of two bytes, less the string's own header.
    constexpr std::size_t overhead = 8;
    std::size_t length = std::bit_ceil(std::max<std::size_t>(needed + overhead, 512)) - overhead;
    constexpr auto longest = static_cast<std::size_t>(TString::maxLength);
    if (length > longest && needed <= longest)
        length = longest;
    char16_t* first = m_text.resize(static_cast<TString::size_type>(length));
    m_to = first + used;
    m_end = first + length - c_slack;
}

inline void XMLTextBuffer::Put(std::u16string_view text) noexcept
{
    const char16_t* from = text.data();
    const std::size_t count = text.size();
    if (count >= UnitBlock::size) {
        const std::size_t last = count - UnitBlock::size;
        for (std::size_t i = 0; i < last; i += UnitBlock::size)
            UnitBlock::Load(from + i).Store(m_to + i);
        UnitBlock::Load(from + last).Store(m_to + last);
    } else if (count >= UnitBlock::size / 2) {
        UnitBlock::LoadEnds(from, count).StoreEnds(m_to, count);
    } else {
        for (std::size_t i = 0; i < count; ++i)
            m_to[i] = from[i];
    }
    m_to += count;
}

template <MappingTableType type>
void XMLTextBuffer::PutUnits(const char16_t* units, std::size_t count) noexcept
{
    constexpr const EscapeTable& table = c_escapeTable<type>;
    for (std::size_t i = 0; i < count; ++i) {
        const char16_t unit = units[i];
        if (!NeedsEscape(table, unit)) {
            Put(unit);
            continue;
        }
        const EscapeTableEntry& entry = unit < table.size() ? table[unit] : HexadecimalEscape(unit);
        std::memcpy(m_to, entry.text.data(), sizeof(entry.text));
        m_to += entry.length;
    }
}

template <MappingTableType type>
void XMLTextBuffer::PutEscaped(std::u16string_view text) noexcept
{
    const char16_t* from = text.data();
    std::size_t count = text.size();
    for (; count >= UnitBlock::size; from += UnitBlock::size, count -= UnitBlock::size) {
        const UnitBlock block = UnitBlock::Load(from);
        block.Store(m_to);
        const std::size_t clean = block.FindEscape<type>();
        m_to += clean;
        if (clean < UnitBlock::size)
            PutUnits<type>(from + clean, UnitBlock::size - clean);
    }
    if (count >= UnitBlock::size / 2) {
        const UnitBlock ends = UnitBlock::LoadEnds(from, count);
        if (ends.FindEscape<type>() == UnitBlock::size) {
            ends.StoreEnds(m_to, count);
            m_to += count;
            return;
        }
    }
    PutUnits<type>(from, count);
}

template <MappingTableType type>
void XMLTextBuffer::AppendEscaped(std::u16string_view text)
{
    while (!text.empty()) {
        const std::u16string_view step = text.substr(0, c_escapeStep);
        Reserve(step.size() * c_maxEscapeLength);
        PutEscaped<type>(step);
        text.remove_prefix(step.size());
    }
}
