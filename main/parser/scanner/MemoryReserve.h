#pragma once

#include <cstddef>
#include <functional>
#include <memory>

/// A little memory put aside for the time when there is no other.
class MemoryReserve
{
public:
    MemoryReserve() : m_bytes(std::make_unique_for_overwrite<std::byte[]>(c_size)) {}

    /// Null when the rest of the reserve is smaller.
    void* Allocate(std::size_t size) noexcept
    {
        const std::size_t rounded = (size + c_alignment - 1) / c_alignment * c_alignment;
        if (rounded < size || rounded > c_size - m_used)
            return nullptr;
        void* const block = m_bytes.get() + m_used;
        m_used += rounded;
        ++m_blocks;
        return block;
    }

    /// False for a block that is not of the reserve. The reserve is whole again once all its blocks
    /// are back.
    bool Deallocate(const void* block) noexcept
    {
        const auto* const byte = static_cast<const std::byte*>(block);
        if (std::less<>()(byte, m_bytes.get()) || !std::less<>()(byte, m_bytes.get() + c_size))
            return false;
        if (--m_blocks == 0)
            m_used = 0;
        return true;
    }

private:
    static constexpr std::size_t c_size = 16 * 1024;
    static constexpr std::size_t c_alignment = alignof(std::max_align_t);

    std::unique_ptr<std::byte[]> m_bytes;
    std::size_t m_used = 0;
    std::size_t m_blocks = 0;
};
