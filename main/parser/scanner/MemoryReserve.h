#pragma once

#include <algorithm>
#include <cstddef>
#include <functional>
#include <limits>
#include <memory>
#include <new>

/// A little memory put aside for the time when there is no other.
class MemoryReserve
{
public:
    MemoryReserve() : m_bytes(std::make_unique_for_overwrite<std::byte[]>(m_size)) {}

    /// Makes it so large at least, unless some of it is in use: then it stays as it is. It grows by
    /// doubling; what is never used takes no memory but addresses. std::bad_alloc.
    void Require(std::size_t size)
    {
        if (size <= m_size || m_used != 0)
            return;
        const std::size_t larger = std::max(size, m_size > c_maximum / 2 ? c_maximum : 2 * m_size);
        m_bytes = std::make_unique_for_overwrite<std::byte[]>(larger);
        m_size = larger;
    }

    /// Null when the rest of the reserve is smaller.
    void* Allocate(std::size_t size) noexcept
    {
        if (size > c_maximum - 2 * sizeof(Header))
            return nullptr;
        const std::size_t rounded = (size + sizeof(Header) - 1) / sizeof(Header) * sizeof(Header);
        if (sizeof(Header) + rounded > m_size - m_used)
            return nullptr;
        auto* const header = new (m_bytes.get() + m_used) Header{m_last, false};
        m_last = header;
        m_used += sizeof(Header) + rounded;
        return header + 1;
    }

    /// False for a block that is not of the reserve. What lies behind the last block that is not
    /// back can be given out again. A block that is back may be given back once more.
    bool Deallocate(void* block) noexcept
    {
        const auto* const byte = static_cast<const std::byte*>(block);
        if (std::less<>()(byte, m_bytes.get()) || !std::less<>()(byte, m_bytes.get() + m_size))
            return false;
        if (!std::less<>()(byte, m_bytes.get() + m_used))
            return true;
        (static_cast<Header*>(block) - 1)->isBack = true;
        for (; m_last != nullptr && m_last->isBack; m_last = m_last->previous)
            m_used = static_cast<std::size_t>(reinterpret_cast<std::byte*>(m_last) - m_bytes.get());
        return true;
    }

private:
    /// Stands before each block.
    struct alignas(std::max_align_t) Header
    {
        Header* previous;
        bool isBack;
    };

    static constexpr std::size_t c_maximum = std::numeric_limits<std::size_t>::max();

    std::size_t m_size = 16 * 1024;
    std::unique_ptr<std::byte[]> m_bytes;
    std::size_t m_used = 0;
    Header* m_last = nullptr;
};
