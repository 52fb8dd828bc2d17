#pragma once

#include "base/Prefetch.h"

#include <kesplatform/TString.h>
#include <kesplatform/detail/TStringBlock.h>

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

class AttributeNames;

/// A piece of memory that what a parse makes is put into, one thing after the other: elements,
/// attributes, texts and lists of children. Each of them holds a reference; the last one to go
/// frees the whole.
///
/// Slabs are small, so that something which outlives its document holds on to little.
class ParseSlab final : public TStringBlock
{
public:
    static constexpr std::size_t c_maxBytes = 16384;

    /// Starts with one reference, that of the caller.
    static ParseSlab* Create(std::size_t bytes);

    std::byte* Begin() noexcept { return reinterpret_cast<std::byte*>(this + 1); }
    std::byte* End() noexcept { return reinterpret_cast<std::byte*>(this) + m_bytes; }
    /// Whether an address is one in this slab.
    bool Holds(const void* address) const noexcept
    {
        const auto begin = reinterpret_cast<std::uintptr_t>(this);
        return reinterpret_cast<std::uintptr_t>(address) - begin < m_bytes;
    }
    std::uint32_t OffsetOf(const void* object) const noexcept
    {
        return static_cast<std::uint32_t>(static_cast<const std::byte*>(object) -
                                          reinterpret_cast<const std::byte*>(this));
    }
    static ParseSlab& At(const void* object, std::uint32_t offset) noexcept
    {
        auto* bytes = static_cast<const std::byte*>(object) - offset;
        return *reinterpret_cast<ParseSlab*>(const_cast<std::byte*>(bytes));
    }

    /// A list of names that blocks in this slab refer to; kept alive as long as the slab.
    struct KeptNames
    {
        KeptNames* next;
        AttributeNames* names;
    };
    KeptNames*& FirstKeptNames() noexcept { return m_names; }

private:
    explicit ParseSlab(std::size_t bytes) noexcept;

    static Owner& GetSlabOwner() noexcept;

    std::size_t m_bytes;
    KeptNames* m_names = nullptr;
};

/// Hands out memory from slabs, each bigger than the one before up to ParseSlab::c_maxBytes. One
/// parse uses one arena, on one thread, and what comes out of it stays there until the arena is
/// closed, unless it is told otherwise; from then on it may end on any.
class ParseArena
{
public:
    /// What is larger is not worth a place in a slab.
    static constexpr std::size_t c_maxObjectBytes = ParseSlab::c_maxBytes / 8;

    /// For as many bytes as may come.
    ParseArena() noexcept;
    /// For things that take so many bytes together, as Allocate counts them: slabs that have room
    /// for just these, each as large as may be. More may come.
    explicit ParseArena(std::size_t expectedBytes) noexcept;
    ParseArena(const ParseArena&) = delete;
    ParseArena& operator=(const ParseArena&) = delete;
    ~ParseArena() { Close(); }

    /// For an arena whose things other threads may see, and end, before it is closed.
    void ShareBeforeClosing() noexcept { m_isShared = true; }

    /// What an object takes.
    static constexpr std::size_t RoundUp(std::size_t bytes) noexcept
    {
        return (bytes + alignof(void*) - 1) & ~(alignof(void*) - 1);
    }
    /// Room for one object, aligned for pointers, with a reference to `slab` that goes with it.
    /// REQUIRES: at most c_maxObjectBytes.
    std::byte* Allocate(std::size_t bytes, ParseSlab*& slab)
    {
        bytes = RoundUp(bytes);
        if (static_cast<std::size_t>(m_end - m_next) < bytes)
            OpenSlab(bytes);
        --m_references;
        slab = m_slab;
        std::byte* object = m_next;
        m_next += bytes;
        PrefetchAhead(bytes);
        return object;
    }

    /// Lets go of the slab in use; what is in it stays.
    void Close() noexcept;

    /// Whether MakeText puts a text into a slab; it makes others as TString does.
    static bool IsTextForSlab(std::u16string_view text) noexcept
    {
        return !text.empty() && TStringBlock::SlotSize(text.size()) <= c_maxObjectBytes;
    }
    TString MakeText(std::u16string_view text);
    /// A text that stands in the slab in use, made by MakeText or FinishSlot before. As often as
    /// may be, for it takes no room.
    TString ShareText(const std::byte* slot) noexcept
    {
        // What is larger than the smallest object has left references over.
        if (m_references > static_cast<std::size_t>(m_end - m_next) / c_smallestObject)
            --m_references;
        else
            m_slab->Retain();
        return TStringBlock::AdoptSlot(slot);
    }

    /// The slab in use, or null.
    ParseSlab* GetSlab() const noexcept { return m_slab; }
    /// What is left of it: there begins the next object that is not larger.
    std::span<std::byte> GetRoom() const noexcept { return {m_next, m_end}; }
    /// A number that no other slab has or had.
    struct SlabNumber
    {
        std::uint64_t arena = 0;
        std::uint64_t slab = 0;

        bool operator==(const SlabNumber&) const = default;
    };
    /// The number of the slab in use.
    const SlabNumber& GetSlabNumber() const noexcept { return m_slabNumber; }

    /// Room for attributes named by `names`, which `slab` keeps alive.
    std::byte* AllocateNamed(std::size_t bytes, AttributeNames& names, ParseSlab*& slab);

private:
    static constexpr std::size_t c_firstSlabBytes = 1024;
    /// The least that anything handed out takes of a slab.
    static constexpr std::size_t c_smallestObject = alignof(void*);

    void OpenSlab(std::size_t bytes);
    std::size_t GetNextSlabBytes() const noexcept;
    /// Memory that is written for the first time in long is waited for; so it is asked for while
    /// what comes before it is filled in.
    void PrefetchAhead(std::size_t bytes) const noexcept
    {
        constexpr std::size_t c_distance = 1024;
        PrefetchForWriting(m_next + c_distance, bytes);
    }

    ParseSlab* m_slab = nullptr;
    SlabNumber m_slabNumber;
    std::byte* m_next = nullptr;
    std::byte* m_end = nullptr;
    /// References to the slab that were taken at once and not given out yet: one for each of the
    /// smallest objects that it could hold.
    std::size_t m_references = 0;
    std::size_t m_nextSlabBytes = c_firstSlabBytes;
    /// What is expected beyond the slab in use; 0 when nobody knows.
    std::size_t m_expectedBytes = 0;
    bool m_isShared = false;
};
