#pragma once

#include <cstddef>
#include <cstdint>

class ListPieces;
class ParseArena;
class ParseSlab;

/// What an element holds: a contiguous sequence of items behind one pointer, on the heap or in a
/// slab of the parse that made it, so that an element without content pays for nothing else. Not
/// copyable. What is not inline serves the library alone and is not exported. Const operations may
/// run side by side.
template <class Item>
class SlabList
{
public:
    using value_type = Item;
    using iterator = Item*;
    using const_iterator = const Item*;

    SlabList() noexcept = default;
    SlabList(const SlabList&) = delete;
    SlabList& operator=(const SlabList&) = delete;
    /// The list must be empty: destroying elements is their parent's business, which does it
    /// without recursion.
    ~SlabList();

    std::size_t size() const noexcept { return m_header == nullptr ? 0 : m_header->size; }
    bool empty() const noexcept { return size() == 0; }
    iterator begin() noexcept { return m_header == nullptr ? nullptr : First(); }
    iterator end() noexcept { return begin() + size(); }
    const_iterator begin() const noexcept { return m_header == nullptr ? nullptr : First(); }
    const_iterator end() const noexcept { return begin() + size(); }
    Item& operator[](std::size_t index) noexcept { return First()[index]; }
    const Item& operator[](std::size_t index) const noexcept { return First()[index]; }
    Item& back() noexcept { return First()[m_header->size - 1]; }

    /// Makes room for `count` more items, so that the insertions below do not fail. When this
    /// throws, the list is as it was; so it is with all that may throw here.
    void ReserveMore(std::size_t count);
    /// As ReserveMore, without the slack that lets a list grow step by step.
    void ReserveExactly(std::size_t count);
    /// As ReserveMore(1) for a list that grows during a parse: with little slack and, while it is
    /// short, with none, in memory of that parse.
    void ReserveNext(ListPieces& pieces);
    /// Moves `count` items in order to the end, into memory of a parse where that will do. When
    /// this throws, they are where they were.
    void FillIn(ParseArena& arena, Item* items, std::size_t count);
    /// Inserts in front of `index`. REQUIRES: room was made with ReserveMore.
    void Insert(std::size_t index, Item&& item) noexcept { Insert(index, &item, 1); }
    /// Moves `count` items in order in front of `index`. REQUIRES: as above.
    void Insert(std::size_t index, Item* items, std::size_t count) noexcept;
    /// Inserts at the end. REQUIRES: as above.
    void PushBack(Item&& item) noexcept { Insert(size(), &item, 1); }
    Item Take(std::size_t index) noexcept;
    Item PopBack() noexcept;
    /// Drops the items behind the first `count`.
    void Truncate(std::size_t count) noexcept;
    /// Leaves the memory of an empty list, and the reference to its slab, to the caller. Null, and
    /// nothing is changed, when it lies in no slab.
    ParseSlab* TakeSlab() noexcept;
    bool HasMemory() const noexcept { return m_header != nullptr; }
    void Swap(SlabList& other) noexcept
    {
        Header* const header = m_header;
        m_header = other.m_header;
        other.m_header = header;
    }

private:
    struct Header
    {
        std::uint32_t size;
        /// The capacity; with c_slabFlag it takes 15 bits above the 16 bits that say where in a
        /// slab of a parse the list lies.
        std::uint32_t capacityAndSlab;
    };

    static constexpr std::uint32_t c_slabFlag = 0x80000000U;
    static constexpr std::uint32_t c_slabOffsetBits = 16;
    static constexpr std::size_t c_maxCapacity = c_slabFlag - 1;

    /// 0 for a list on the heap.
    std::uint32_t SlabOffset() const noexcept;

    Item* First() const noexcept { return reinterpret_cast<Item*>(m_header + 1); }
    std::size_t Capacity() const noexcept;
    static constexpr std::size_t BytesFor(std::size_t capacity) noexcept
    {
        return sizeof(Header) + capacity * sizeof(Item);
    }
    static Header* NewOnHeap(std::size_t capacity);
    static Header* NewInSlab(std::byte* memory, const ParseSlab& slab, std::size_t capacity);
    /// Moves the items into the memory of an empty list, which gets the memory that they had.
    void MoveInto(SlabList& grown) noexcept;
    void Reallocate(std::size_t capacity);
    void FreeMemory() noexcept;

    Header* m_header = nullptr;
};
