#pragma once

#include "slabs/ParseArena.h"

#include <kesplatform/TString.h>
#include <kesplatform/detail/TStringBlock.h>

#include <cstddef>

/// References to slabs that are given back: those to the same slab that come one after the other
/// all at once, which spares an atomic operation for each.
class SlabReferences
{
public:
    SlabReferences() = default;
    SlabReferences(const SlabReferences&) = delete;
    SlabReferences& operator=(const SlabReferences&) = delete;
    ~SlabReferences() { GiveBack(); }

    /// Takes over one reference; null is none.
    void Add(TStringBlock* block) noexcept
    {
        if (block == nullptr)
            return;
        if (block != m_block) {
            GiveBack();
            m_block = block;
            m_count = 0;
        }
        ++m_count;
    }

private:
    void GiveBack() noexcept
    {
        if (m_block != nullptr)
            m_block->Release(m_count);
    }

    TStringBlock* m_block = nullptr;
    std::size_t m_count = 0;
};

/// References to slabs that are taken: many at once of the slab that was named last, and what is
/// left of them is given back, which spares an atomic operation for most.
class SlabShares
{
public:
    SlabShares() = default;
    SlabShares(const SlabShares&) = delete;
    SlabShares& operator=(const SlabShares&) = delete;
    ~SlabShares() { GiveBack(); }

    /// One reference, which is the caller's. REQUIRES: somebody holds one during the call.
    void Take(TStringBlock& block) noexcept
    {
        if (&block != m_block || m_count == 0) {
            GiveBack();
            block.Retain(c_atOnce);
            m_block = &block;
            m_count = c_atOnce;
        }
        --m_count;
    }
    /// A copy of a text, as its copy constructor makes it. It is quick for one in `slab`.
    TString Share(const TString& text, ParseSlab* slab) noexcept
    {
        if (slab == nullptr || !slab->Holds(TStringBlock::SlotOf(text)))
            return text;
        Take(*slab);
        return TStringBlock::AdoptSlot(TStringBlock::SlotOf(text));
    }

private:
    /// About as many as the elements of a slab refer to it.
    static constexpr std::size_t c_atOnce = 512;

    void GiveBack() noexcept
    {
        if (m_count > 0)
            m_block->Release(m_count);
    }

    TStringBlock* m_block = nullptr;
    std::size_t m_count = 0;
};
