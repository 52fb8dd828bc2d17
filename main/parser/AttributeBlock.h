#pragma once

#include <kescorexml/Export.h>
#include <kesplatform/TString.h>

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

/// The names of an element's attributes in one order, shared by all the blocks that have just
/// these names. Immutable.
///
/// Safe to use from several threads.
class KESCOREXML_EXPORT AttributeNames final : public TStringBlock::Owner
{
public:
    /// More attributes than this are kept in a map from the start: look-up in a block is linear.
    static constexpr std::size_t maxCount = 16;

    /// Starts with one reference, that of the caller. REQUIRES: at most maxCount distinct names.
    explicit AttributeNames(std::span<const TString> names);
    AttributeNames(const AttributeNames&) = delete;
    AttributeNames& operator=(const AttributeNames&) = delete;

    void Retain() noexcept { m_references.fetch_add(1, std::memory_order_relaxed); }
    void Release() noexcept;

    std::size_t Count() const noexcept { return m_count; }
    const TString& Name(std::size_t index) const noexcept { return m_names[index]; }
    /// The index of the name that comes `rank`-th in ascending order.
    std::size_t Sorted(std::size_t rank) const noexcept { return m_sorted[rank]; }
    /// The index of `name`, or Count().
    std::size_t Find(const TString& name) const noexcept;

    void Destroy(TStringBlock* block) noexcept override;

private:
    ~AttributeNames() = default;

    std::atomic<std::uint32_t> m_references{1};
    std::uint32_t m_count;
    std::array<TString, maxCount> m_names;
    std::array<std::uint8_t, maxCount> m_sorted{};
};

/// The attributes of one element in one allocation: a reference to their names, then the values.
/// Immutable once written, counted like every TStringBlock.
class KESCOREXML_EXPORT AttributeBlock final : public TStringBlock
{
public:
    /// Blocks stay small, so that a value which outlives its element holds on to little.
    static constexpr std::size_t maxBytes = 65536;

    /// A block with these values in the order of `names`, with one reference, the caller's; null
    /// when it would be larger than maxBytes. Shares `names`.
    static AttributeBlock* Create(AttributeNames& names,
                                  std::span<const std::u16string_view> values);

    const AttributeNames& Names() const noexcept
    {
        return static_cast<const AttributeNames&>(GetOwner());
    }
    std::size_t Count() const noexcept { return Names().Count(); }
    std::u16string_view Value(std::size_t index) const noexcept { return ViewSlot(Slot(index)); }
    TString ShareValue(std::size_t index) const noexcept { return ShareSlot(Slot(index)); }

    /// Calls `visit(name, value)` for each attribute in the order of the document.
    template <typename Visit>
    void ForEach(Visit&& visit) const
    {
        const AttributeNames& names = Names();
        const std::byte* slot = FirstSlot();
        for (std::size_t i = 0; i < names.Count(); ++i) {
            const std::u16string_view value = ViewSlot(slot);
            visit(names.Name(i), value);
            slot += SlotSize(value.size());
        }
    }

private:
    explicit AttributeBlock(AttributeNames& names) noexcept : TStringBlock(names) {}

    const std::byte* FirstSlot() const noexcept
    {
        return reinterpret_cast<const std::byte*>(this + 1);
    }
    const std::byte* Slot(std::size_t index) const noexcept
    {
        const std::byte* slot = FirstSlot();
        for (; index > 0; --index)
            slot += SlotSize(ViewSlot(slot).size());
        return slot;
    }
};
