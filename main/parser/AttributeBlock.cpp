#include "AttributeBlock.h"

#include <algorithm>
#include <cstdlib>
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

void AttributeNames::Destroy(TStringBlock* block) noexcept
{
    std::free(block);
    Release();
}

AttributeBlock* AttributeBlock::Create(AttributeNames& names,
                                       std::span<const std::u16string_view> values)
{
    std::size_t bytes = sizeof(AttributeBlock);
    for (const std::u16string_view value : values) {
        if (value.size() > maxBytes)
            return nullptr;
        bytes += SlotSize(value.size());
    }
    if (bytes > maxBytes)
        return nullptr;
    void* memory = std::malloc(bytes);
    if (memory == nullptr)
        throw std::bad_alloc();
    auto* block = new (memory) AttributeBlock(names);
    names.Retain();
    auto* slot = static_cast<std::byte*>(memory) + sizeof(AttributeBlock);
    for (const std::u16string_view value : values) {
        block->WriteSlot(slot, value);
        slot += SlotSize(value.size());
    }
    return block;
}
