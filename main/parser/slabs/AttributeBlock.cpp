#include "slabs/AttributeBlock.h"

#include "base/ShortText.h"

#include <algorithm>
#include <cstddef>
#include <new>
#include <numeric>

AttributeNames::AttributeNames(std::span<const TString> names)
    : m_count(static_cast<std::uint32_t>(names.size()))
{
    std::copy(names.begin(), names.end(), m_names.begin());
    for (const TString& name : names)
        m_units += name.view().size();
    const auto sortedEnd = m_sorted.begin() + static_cast<std::ptrdiff_t>(m_count);
    std::iota(m_sorted.begin(), sortedEnd, std::uint8_t{0});
    std::sort(m_sorted.begin(), sortedEnd,
              [this](std::uint8_t a, std::uint8_t b) { return m_names[a] < m_names[b]; });
}

void AttributeNames::Release() noexcept
{
    if (m_references.fetch_sub(1, std::memory_order_acq_rel) == 1)
        delete this;
}

std::size_t AttributeNames::Find(const TString& name) const noexcept
{
    std::size_t index = 0;
    while (index < m_count && !(m_names[index] == name))
        ++index;
    return index;
}

namespace {

/// What a block leaves of an object of the arena for the arena to keep the names.
constexpr std::size_t c_bytesForNames =
    sizeof(ParseSlab::KeptNames) + alignof(ParseSlab::KeptNames);

} // namespace

AttributeBlock* AttributeBlock::Create(ParseArena& arena, AttributeNames& names,
                                       std::span<const std::u16string_view> values)
{
    constexpr std::size_t c_valuesAt = offsetof(AttributeBlock, m_slots);
    constexpr std::size_t c_maxBytes = ParseArena::c_maxObjectBytes - c_bytesForNames;
    std::size_t bytes = c_valuesAt;
    for (const std::u16string_view value : values) {
        if (value.size() > c_maxBytes)
            return nullptr;
        bytes += TStringBlock::SlotSize(value.size());
    }
    if (bytes > c_maxBytes)
        return nullptr;
    ParseSlab* slab = nullptr;
    std::byte* memory = arena.AllocateNamed(std::max(bytes, sizeof(AttributeBlock)), names, slab);
    auto* block = new (memory) AttributeBlock(names, slab->OffsetOf(memory));
    std::byte* slot = memory + c_valuesAt;
    for (const std::u16string_view value : values) {
        char16_t* const units = TStringBlock::UnitsOfSlot(slot);
        ShortText::Copy(value.data(), units, value.size());
        units[value.size()] = u'\0';
        slab->FinishSlot(slot, value.size());
        slot += TStringBlock::SlotSize(value.size());
    }
    return block;
}
