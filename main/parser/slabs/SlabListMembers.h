#pragma once

#include "slabs/ListPieces.h"
#include "slabs/ParseArena.h"

#include <kescorexml/detail/SlabList.h>

#include <algorithm>
#include <cassert>
#include <memory>
#include <new>
#include <stdexcept>
#include <utility>

// What SlabList leaves to the one source that instantiates it for an item, whose type is complete
// there.

template <class Item>
SlabList<Item>::~SlabList()
{
    assert(empty());
    FreeMemory();
}

template <class Item>
std::uint32_t SlabList<Item>::SlabOffset() const noexcept
{
    const bool isInSlab = (m_header->capacityAndSlab & c_slabFlag) != 0;
    return isInSlab ? m_header->capacityAndSlab & ((1U << c_slabOffsetBits) - 1) : 0;
}

template <class Item>
void SlabList<Item>::FreeMemory() noexcept
{
    if (m_header == nullptr)
        return;
    if (const std::uint32_t offset = SlabOffset())
        ParseSlab::At(m_header, offset).Release();
    else
        ::operator delete(m_header);
}

template <class Item>
ParseSlab* SlabList<Item>::TakeSlab() noexcept
{
    assert(empty());
    const std::uint32_t offset = m_header == nullptr ? 0 : SlabOffset();
    return offset == 0 ? nullptr : &ParseSlab::At(std::exchange(m_header, nullptr), offset);
}

template <class Item>
std::size_t SlabList<Item>::Capacity() const noexcept
{
    if (m_header == nullptr)
        return 0;
    const std::uint32_t capacity = m_header->capacityAndSlab & ~c_slabFlag;
    return SlabOffset() != 0 ? capacity >> c_slabOffsetBits : capacity;
}

template <class Item>
typename SlabList<Item>::Header* SlabList<Item>::NewOnHeap(std::size_t capacity)
{
    if (capacity > c_maxCapacity)
        throw std::length_error("An element cannot have so many children");
    static_assert(alignof(Item) <= sizeof(Header));
    void* const memory = ::operator new(BytesFor(capacity));
    return new (memory) Header{0, static_cast<std::uint32_t>(capacity)};
}

template <class Item>
typename SlabList<Item>::Header* SlabList<Item>::NewInSlab(std::byte* memory, const ParseSlab& slab,
                                                           std::size_t capacity)
{
    static_assert(ParseSlab::c_maxBytes < 1U << c_slabOffsetBits);
    const auto items = static_cast<std::uint32_t>(capacity);
    return new (memory) Header{0, c_slabFlag | items << c_slabOffsetBits | slab.OffsetOf(memory)};
}

template <class Item>
void SlabList<Item>::MoveInto(SlabList& grown) noexcept
{
    Item* const to = grown.First();
    const std::size_t count = size();
    // One after the other, which lets a compiler make a copy of it.
    for (std::size_t i = 0; i < count; ++i) {
        Item& item = First()[i];
        new (to + i) Item(std::move(item));
        std::destroy_at(&item);
    }
    Swap(grown);
    m_header->size = static_cast<std::uint32_t>(count);
    if (grown.m_header != nullptr)
        grown.m_header->size = 0;
}

template <class Item>
void SlabList<Item>::Reallocate(std::size_t capacity)
{
    SlabList grown;
    grown.m_header = NewOnHeap(capacity);
    MoveInto(grown);
}

template <class Item>
void SlabList<Item>::ReserveMore(std::size_t count)
{
    const std::size_t needed = size() + count;
    const std::size_t capacity = Capacity();
    if (needed > capacity)
        Reallocate(std::max({needed, capacity + capacity / 2, std::size_t{3}}));
}

template <class Item>
void SlabList<Item>::ReserveExactly(std::size_t count)
{
    const std::size_t needed = size() + count;
    if (needed > Capacity())
        Reallocate(needed);
}

template <class Item>
void SlabList<Item>::ReserveNext(ListPieces& pieces)
{
    const std::size_t capacity = Capacity();
    const std::size_t needed = size() + 1;
    if (needed <= capacity)
        return;
    SlabList grown;
    const std::size_t bytes = BytesFor(needed);
    if (bytes <= ListPieces::c_maxBytes) {
        ParseSlab* slab = nullptr;
        std::byte* const memory = pieces.Take(bytes, slab);
        grown.m_header = NewInSlab(memory, *slab, needed);
    } else {
        grown.m_header = NewOnHeap(std::max(needed, capacity + capacity / 8));
    }
    MoveInto(grown);
    if (BytesFor(capacity) > ListPieces::c_maxBytes)
        return;
    auto* const outgrown = reinterpret_cast<std::byte*>(grown.m_header);
    if (ParseSlab* const slab = grown.TakeSlab())
        pieces.GiveBack(outgrown, BytesFor(capacity), *slab);
}

template <class Item>
void SlabList<Item>::FillIn(ParseArena& arena, Item* items, std::size_t count)
{
    const std::size_t bytes = BytesFor(count);
    if (m_header != nullptr || bytes > ParseArena::c_maxObjectBytes) {
        ReserveExactly(count);
        Insert(size(), items, count);
        return;
    }
    ParseSlab* slab = nullptr;
    std::byte* const memory = arena.Allocate(bytes, slab);
    m_header = NewInSlab(memory, *slab, count);
    m_header->size = static_cast<std::uint32_t>(count);
    std::uninitialized_move_n(items, count, First());
}

template <class Item>
void SlabList<Item>::Insert(std::size_t index, Item* items, std::size_t count) noexcept
{
    if (count == 0)
        return;
    assert(size() + count <= Capacity());
    Item* const first = First();
    for (std::size_t i = m_header->size; i > index; --i) {
        new (first + i - 1 + count) Item(std::move(first[i - 1]));
        std::destroy_at(first + i - 1);
    }
    std::uninitialized_move_n(items, count, first + index);
    m_header->size += static_cast<std::uint32_t>(count);
}

template <class Item>
Item SlabList<Item>::Take(std::size_t index) noexcept
{
    Item* const first = First();
    Item taken = std::move(first[index]);
    std::move(first + index + 1, end(), first + index);
    std::destroy_at(&back());
    --m_header->size;
    return taken;
}

template <class Item>
Item SlabList<Item>::PopBack() noexcept
{
    Item taken = std::move(back());
    std::destroy_at(&back());
    --m_header->size;
    return taken;
}

template <class Item>
void SlabList<Item>::Truncate(std::size_t count) noexcept
{
    std::destroy(begin() + count, end());
    if (m_header != nullptr)
        m_header->size = static_cast<std::uint32_t>(count);
}
