#include <kescorexml/detail/ElementList.h>

#include "slabs/ParseArena.h"

#include <kescorexml/DOMElement.h>

#include <algorithm>
#include <cassert>
#include <cstdlib>
#include <limits>
#include <new>
#include <stdexcept>
#include <utility>

ElementList::~ElementList()
{
    assert(empty());
    FreeMemory();
}

std::uint32_t ElementList::SlabOffset() const noexcept
{
    const bool isInSlab = (m_header->capacityAndSlab & c_slabFlag) != 0;
    return isInSlab ? m_header->capacityAndSlab & ((1U << c_slabOffsetBits) - 1) : 0;
}

void ElementList::FreeMemory() noexcept
{
    if (m_header == nullptr)
        return;
    if (const std::uint32_t offset = SlabOffset())
        ParseSlab::At(m_header, offset).Release();
    else
        std::free(m_header);
}

ParseSlab* ElementList::TakeSlab() noexcept
{
    assert(empty());
    const std::uint32_t offset = m_header == nullptr ? 0 : SlabOffset();
    return offset == 0 ? nullptr : &ParseSlab::At(std::exchange(m_header, nullptr), offset);
}

std::size_t ElementList::Capacity() const noexcept
{
    if (m_header == nullptr)
        return 0;
    const std::uint32_t capacity = m_header->capacityAndSlab & ~c_slabFlag;
    return SlabOffset() != 0 ? capacity >> c_slabOffsetBits : capacity;
}

void ElementList::Reallocate(std::size_t capacity)
{
    if (capacity > c_maxCapacity)
        throw std::length_error("DOMElement: too many children");
    auto* header = static_cast<Header*>(std::malloc(sizeof(Header) + capacity * sizeof(Owner)));
    if (header == nullptr)
        throw std::bad_alloc();
    header->size = static_cast<std::uint32_t>(size());
    header->capacityAndSlab = static_cast<std::uint32_t>(capacity);
    auto* to = reinterpret_cast<Owner*>(header + 1);
    std::uninitialized_move_n(begin(), size(), to);
    std::destroy_n(begin(), size());
    FreeMemory();
    m_header = header;
}

void ElementList::ReserveMore(std::size_t count)
{
    const std::size_t needed = size() + count;
    const std::size_t capacity = Capacity();
    if (needed > capacity)
        Reallocate(std::max({needed, capacity + capacity / 2, std::size_t{3}}));
}

void ElementList::ReserveExactly(std::size_t count)
{
    const std::size_t needed = size() + count;
    if (needed > Capacity())
        Reallocate(needed);
}

void ElementList::FillIn(ParseArena& arena, Owner* elements, std::size_t count)
{
    const std::size_t bytes = sizeof(Header) + count * sizeof(Owner);
    if (m_header != nullptr || bytes > ParseArena::c_maxObjectBytes) {
        ReserveExactly(count);
        Insert(size(), elements, count);
        return;
    }
    ParseSlab* slab = nullptr;
    std::byte* memory = arena.Allocate(bytes, slab);
    static_assert(ParseSlab::c_maxBytes < 1U << c_slabOffsetBits);
    const auto size = static_cast<std::uint32_t>(count);
    m_header =
        new (memory) Header{size, c_slabFlag | size << c_slabOffsetBits | slab->OffsetOf(memory)};
    std::uninitialized_move_n(elements, count, First());
}

void ElementList::Insert(std::size_t index, Owner&& element) noexcept
{
    Insert(index, &element, 1);
}

void ElementList::Insert(std::size_t index, Owner* elements, std::size_t count) noexcept
{
    if (count == 0)
        return;
    assert(size() + count <= Capacity());
    Owner* first = First();
    for (std::size_t i = m_header->size; i > index; --i) {
        new (first + i - 1 + count) Owner(std::move(first[i - 1]));
        std::destroy_at(first + i - 1);
    }
    std::uninitialized_move_n(elements, count, first + index);
    m_header->size += static_cast<std::uint32_t>(count);
}

ElementList::Owner ElementList::Take(std::size_t index) noexcept
{
    Owner* first = First();
    Owner taken = std::move(first[index]);
    std::move(first + index + 1, first + m_header->size, first + index);
    std::destroy_at(first + m_header->size - 1);
    --m_header->size;
    return taken;
}

ElementList::Owner ElementList::PopBack() noexcept
{
    --m_header->size;
    Owner* last = First() + m_header->size;
    Owner taken = std::move(*last);
    std::destroy_at(last);
    return taken;
}
