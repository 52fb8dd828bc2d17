#include "AttributeBlock.h"

#include <algorithm>
#include <cstddef>
#include <new>
#include <numeric>

AttributeNames::AttributeNames(std::span<const TString> names)
    : m_count(static_cast<std::uint32_t>(names.size()))
{
    std::copy(names.begin(), names.end(), m_names.begin());
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

AttributeBlock* AttributeBlock::Create(ParseArena& arena, AttributeNames& names,
                                       std::span<const std::u16string_view> values)
{
    constexpr std::size_t valuesAt = offsetof(AttributeBlock, m_slots);
    constexpr std::size_t mostBytes =
        ParseArena::maxObject - sizeof(ParseSlab::KeptNames) - alignof(ParseSlab::KeptNames);
    std::size_t bytes = valuesAt;
    for (const std::u16string_view value : values) {
        if (value.size() > mostBytes)
            return nullptr;
        bytes += TStringBlock::SlotSize(value.size());
    }
    if (bytes > mostBytes)
        return nullptr;
    ParseSlab* slab = nullptr;
    std::byte* memory = arena.AllocateNamed(std::max(bytes, sizeof(AttributeBlock)), names, slab);
    auto* block = new (memory) AttributeBlock(names, slab->OffsetOf(memory));
    std::byte* slot = memory + valuesAt;
    for (const std::u16string_view value : values) {
        slab->WriteSlot(slot, value);
        slot += TStringBlock::SlotSize(value.size());
    }
    return block;
}
