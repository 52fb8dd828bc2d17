#pragma once

#include <kesplatform/TString.h>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <new>
#include <string_view>
#include <type_traits>

/// One allocation in which several texts live together; the TStrings made from them keep the whole
/// of it alive. Whoever makes a block lays it out: it begins with a TStringBlock, and each text
/// stands in a slot of SlotSize(length) bytes at an offset that is a multiple of c_slotAlignment
/// and below 2 GiB.
///
/// Different blocks may be used from different threads; a block's texts are written before any
/// TString is made from them and never change afterwards. For code that makes very many texts at
/// once; all of it is inline.
class TStringBlock
{
public:
    /// Destroys and frees blocks that nobody refers to any more.
    class Owner
    {
    public:
        virtual void Destroy(TStringBlock* block) noexcept = 0;

    protected:
        ~Owner() = default;
    };

    static constexpr std::size_t c_slotAlignment = 4;
    static constexpr std::size_t SlotSize(std::size_t length) noexcept
    {
        const std::size_t bytes = sizeof(TString::Rep) + (length + 1) * sizeof(char16_t);
        return (bytes + c_slotAlignment - 1) / c_slotAlignment * c_slotAlignment;
    }

    /// Starts with one reference, that of the maker.
    explicit TStringBlock(Owner& owner) noexcept : m_owner(&owner) {}
    TStringBlock(const TStringBlock&) = delete;
    TStringBlock& operator=(const TStringBlock&) = delete;

    void Retain(std::size_t count = 1) noexcept;
    void Release(std::size_t count = 1) noexcept;
    /// The same while no other thread can refer to the block, which costs less.
    void RetainUnshared(std::size_t count) noexcept
    {
        m_references.store(m_references.load(std::memory_order_relaxed) + count,
                           std::memory_order_relaxed);
    }
    void ReleaseUnshared(std::size_t count) noexcept
    {
        const std::size_t left = m_references.load(std::memory_order_relaxed) - count;
        m_references.store(left, std::memory_order_relaxed);
        if (left == 0)
            m_owner->Destroy(this);
    }
    bool IsExclusive() const noexcept { return m_references.load(std::memory_order_acquire) == 1; }

    /// Puts a text into the slot at `slot`, which lies inside the allocation of this block.
    void WriteSlot(std::byte* slot, std::u16string_view text) noexcept
    {
        char16_t* units = UnitsOfSlot(slot);
        text.copy(units, text.size());
        units[text.size()] = u'\0';
        FinishSlot(slot, text.size());
    }
    /// The same in two steps: a caller writes units and a terminating zero to where UnitsOfSlot
    /// says, and then FinishSlot makes a text of them.
    static char16_t* UnitsOfSlot(std::byte* slot) noexcept
    {
        return reinterpret_cast<char16_t*>(slot + sizeof(TString::Rep));
    }
    void FinishSlot(std::byte* slot, std::size_t length) noexcept;
    /// The text of a slot, valid as long as the block.
    static std::u16string_view ViewSlot(const std::byte* slot) noexcept
    {
        const auto* rep = reinterpret_cast<const TString::Rep*>(slot);
        return {rep->Units(), static_cast<std::size_t>(rep->Length())};
    }
    /// A TString that shares the text of a slot and keeps the block alive.
    static TString ShareSlot(const std::byte* slot) noexcept
    {
        TString::Retain(RepOf(slot));
        return AdoptSlot(slot);
    }
    /// The same, taking over a reference that the caller holds.
    static TString AdoptSlot(const std::byte* slot) noexcept { return TString(RepOf(slot)); }
    /// The slot that a text stands in. REQUIRES: one that stands in a block.
    static const std::byte* SlotOf(const TString& text) noexcept
    {
        return reinterpret_cast<const std::byte*>(text.m_rep);
    }
    /// The reverse of AdoptSlot: empties a text that stands in a block and leaves its reference to
    /// the caller. Null, and nothing is changed, for a text that stands in none.
    static TStringBlock* TakeReference(TString& text) noexcept;

private:
    static TString::Rep* RepOf(const std::byte* slot) noexcept
    {
        return reinterpret_cast<TString::Rep*>(const_cast<std::byte*>(slot));
    }

    /// First, because TString counts here without looking further.
    std::atomic<std::size_t> m_references{1};
    Owner* m_owner;
};

static_assert(std::is_standard_layout_v<TStringBlock>);

inline void TStringBlock::Retain(std::size_t count) noexcept
{
    m_references.fetch_add(count, std::memory_order_relaxed);
}

inline void TStringBlock::Release(std::size_t count) noexcept
{
    if (m_references.load(std::memory_order_acquire) == count ||
        m_references.fetch_sub(count, std::memory_order_acq_rel) == count)
        m_owner->Destroy(this);
}

inline void TStringBlock::FinishSlot(std::byte* slot, std::size_t length) noexcept
{
    const auto offset = static_cast<std::uint32_t>(slot - reinterpret_cast<std::byte*>(this));
    new (slot) TString::Rep{TString::c_embeddedFlag | offset, static_cast<std::uint32_t>(length)};
}

inline TStringBlock* TStringBlock::TakeReference(TString& text) noexcept
{
    if (text.m_rep == nullptr)
        return nullptr;
    const std::uint32_t control = text.m_rep->control.load(std::memory_order_relaxed);
    if ((control & TString::c_embeddedFlag) == 0)
        return nullptr;
    auto* base = reinterpret_cast<std::byte*>(text.m_rep) - (control & ~TString::c_embeddedFlag);
    text.m_rep = nullptr;
    return reinterpret_cast<TStringBlock*>(base);
}
