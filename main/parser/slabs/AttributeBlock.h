#pragma once

#include "slabs/ParseArena.h"

#include <kesplatform/TString.h>
#include <kesplatform/detail/TStringBlock.h>

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

/// The names of an element's attributes in one order, shared by all the blocks that have just
/// these names. Immutable, but for what the parse that it comes from notes down.
///
/// Safe to use from several threads.
class AttributeNames
{
public:
    /// More attributes than this are kept in a map from the start: look-up in a block is linear.
    static constexpr std::size_t c_maxCount = 16;

    /// Starts with one reference, that of the caller. REQUIRES: at most c_maxCount distinct names.
    explicit AttributeNames(std::span<const TString> names);
    AttributeNames(const AttributeNames&) = delete;
    AttributeNames& operator=(const AttributeNames&) = delete;

    void Retain() noexcept { m_references.fetch_add(1, std::memory_order_relaxed); }
    void Release() noexcept;

    std::size_t Count() const noexcept { return m_count; }
    /// The units of all names together.
    std::size_t CountUnits() const noexcept { return m_units; }
    const TString& Name(std::size_t index) const noexcept { return m_names[index]; }
    /// The index of the name that comes `rank`-th in ascending order.
    std::size_t Sorted(std::size_t rank) const noexcept { return m_sorted[rank]; }
    /// Whether the slab of this number was told to keep the names alive. Part of a parse: for one
    /// thread at a time.
    bool IsKeptIn(const ParseArena::SlabNumber& slab) const noexcept { return m_keptIn == slab; }
    void SetKeptIn(const ParseArena::SlabNumber& slab) noexcept { m_keptIn = slab; }
    /// The index of `name`, or Count().
    std::size_t Find(const TString& name) const noexcept;

private:
    ~AttributeNames() = default;

    std::atomic<std::uint32_t> m_references{1};
    std::uint32_t m_count;
    std::size_t m_units = 0;
    /// The last slab that keeps the names alive.
    ParseArena::SlabNumber m_keptIn;
    std::array<TString, c_maxCount> m_names;
    std::array<std::uint8_t, c_maxCount> m_sorted{};
};

/// The attributes of one element, packed: where their names are, then the values one after the
/// other. Lives in a slab, whose references count for it. Immutable once written.
class AttributeBlock
{
public:
    /// The values in the order of `names`, with one reference, the caller's; null when they take
    /// more room than an arena gives to one object. The slab keeps `names` alive.
    static AttributeBlock* Create(ParseArena& arena, AttributeNames& names,
                                  std::span<const std::u16string_view> values);
    AttributeBlock(const AttributeBlock&) = delete;
    AttributeBlock& operator=(const AttributeBlock&) = delete;

    void Retain() noexcept { Slab().Retain(); }
    void Release() noexcept { Slab().Release(); }
    /// The slab in which the block lies.
    ParseSlab& GetSlab() const noexcept { return Slab(); }

    const AttributeNames& Names() const noexcept { return *m_names; }
    std::size_t Count() const noexcept { return m_names->Count(); }
    std::u16string_view Value(std::size_t index) const noexcept
    {
        return TStringBlock::ViewSlot(Slot(index));
    }
    /// A TString that keeps the slab alive.
    TString ShareValue(std::size_t index) const noexcept
    {
        return TStringBlock::ShareSlot(Slot(index));
    }

    /// Calls `visit(name, value)` for each attribute in the order of the document.
    template <typename Visit>
    void ForEach(Visit&& visit) const
    {
        const std::byte* slot = m_slots;
        for (std::size_t i = 0; i < m_names->Count(); ++i) {
            const std::u16string_view value = TStringBlock::ViewSlot(slot);
            visit(m_names->Name(i), value);
            slot += TStringBlock::SlotSize(value.size());
        }
    }

    /// The units of all names and values and one for each attribute.
    std::size_t CountUnits() const noexcept
    {
        std::size_t units = Count() + m_names->CountUnits();
        ForEach([&units](const TString&, std::u16string_view value) { units += value.size(); });
        return units;
    }

private:
    AttributeBlock(AttributeNames& names, std::uint32_t slabOffset) noexcept
        : m_names(&names), m_slabOffset(slabOffset)
    {
    }

    ParseSlab& Slab() const noexcept { return ParseSlab::At(this, m_slabOffset); }
    const std::byte* Slot(std::size_t index) const noexcept
    {
        const std::byte* slot = m_slots;
        for (; index > 0; --index)
            slot += TStringBlock::SlotSize(TStringBlock::ViewSlot(slot).size());
        return slot;
    }

    AttributeNames* m_names;
    std::uint32_t m_slabOffset;
    /// The first of the slots, which go on behind this object.
    alignas(TStringBlock::c_slotAlignment) std::byte m_slots[4];
};
