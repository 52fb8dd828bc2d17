#pragma once

#include <kesplatform/TStringBlock.h>

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
