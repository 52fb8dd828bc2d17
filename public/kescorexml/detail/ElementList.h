#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <utility>

class DOMElement;
class ParseArena;
class ParseSlab;

/// The owned children of an element: a contiguous sequence behind one pointer, so that an element
/// without children pays for nothing else. Not copyable. What is not inline serves the library
/// alone and is not exported. Const operations may run side by side.
class ElementList
{
public:
    using Owner = std::unique_ptr<DOMElement>;
    using iterator = Owner*;
    using const_iterator = const Owner*;

    ElementList() noexcept = default;
    ElementList(const ElementList&) = delete;
    ElementList& operator=(const ElementList&) = delete;
    /// The list must be empty: destroying elements is their parent's business, which does it
    /// without recursion.
    ~ElementList();

    std::size_t size() const noexcept { return m_header == nullptr ? 0 : m_header->size; }
    bool empty() const noexcept { return size() == 0; }
    iterator begin() noexcept { return m_header == nullptr ? nullptr : First(); }
    iterator end() noexcept { return begin() + size(); }
    const_iterator begin() const noexcept { return m_header == nullptr ? nullptr : First(); }
    const_iterator end() const noexcept { return begin() + size(); }
    Owner& operator[](std::size_t index) noexcept { return First()[index]; }
    const Owner& operator[](std::size_t index) const noexcept { return First()[index]; }
    Owner& back() noexcept { return First()[m_header->size - 1]; }

    /// Makes room for `count` more elements, so that the insertions below do not fail.
    void ReserveMore(std::size_t count);
    /// As ReserveMore, without the slack that lets a list grow step by step.
    void ReserveExactly(std::size_t count);
    /// Moves `count` elements out of `elements`, in order, to the end, into memory of a parse where
    /// that will do.
    void FillIn(ParseArena& arena, Owner* elements, std::size_t count);
    /// Inserts in front of `index`. REQUIRES: room was made with ReserveMore.
    void Insert(std::size_t index, Owner&& element) noexcept;
    void PushBack(Owner&& element) noexcept { Insert(size(), std::move(element)); }
    /// Moves `count` elements out of `elements`, in order, in front of `index`. REQUIRES: as above.
    void Insert(std::size_t index, Owner* elements, std::size_t count) noexcept;
    Owner Take(std::size_t index) noexcept;
    Owner PopBack() noexcept;
    /// Leaves the memory of an empty list, and the reference to its slab, to the caller. Null, and
    /// nothing is changed, when it lies in no slab.
    ParseSlab* TakeSlab() noexcept;
    bool HasMemory() const noexcept { return m_header != nullptr; }
    void Swap(ElementList& other) noexcept { std::swap(m_header, other.m_header); }

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

    Owner* First() const noexcept { return reinterpret_cast<Owner*>(m_header + 1); }
    std::size_t Capacity() const noexcept;
    void Reallocate(std::size_t capacity);
    void FreeMemory() noexcept;

    Header* m_header = nullptr;
};
