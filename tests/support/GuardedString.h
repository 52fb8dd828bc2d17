#pragma once

#include "support/FailingAllocations.h"

#include <cstddef>
#include <cstring>
#include <new>
#include <string>
#include <string_view>

#include <sys/mman.h>
#include <unistd.h>

/// Bytes between two pages that must not be touched, at the start or at the end of what may be.
class GuardedBytes
{
public:
    enum class Place
    {
        Start,
        End
    };

    /// Room for `size` bytes, all zero.
    GuardedBytes(std::size_t size, Place place) : m_page(static_cast<std::size_t>(getpagesize()))
    {
        const std::size_t pages = size / m_page + 1;
        m_mapped = (pages + 2) * m_page;
        void* const memory = mmap(nullptr, m_mapped, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (memory == MAP_FAILED)
            throw std::bad_alloc();
        m_memory = static_cast<char*>(memory);
        if (mprotect(m_memory + m_page, pages * m_page, PROT_READ | PROT_WRITE) != 0)
            throw std::bad_alloc();
        m_bytes = m_memory + m_page + (place == Place::Start ? 0 : pages * m_page - size);
    }
    ~GuardedBytes() { munmap(m_memory, m_mapped); }
    GuardedBytes(const GuardedBytes&) = delete;
    GuardedBytes& operator=(const GuardedBytes&) = delete;

    char* Get() const noexcept { return m_bytes; }

private:
    const std::size_t m_page;
    std::size_t m_mapped;
    char* m_memory;
    char* m_bytes;
};

/// A string whose first byte is the first, or whose terminating zero is the last, that may be read.
/// It may be moved from, and what has taken it must end before this object. One of less than 16
/// bytes is like any other. Only one at a time on a thread.
class GuardedString
{
public:
    GuardedString(std::string_view bytes, GuardedBytes::Place place)
        : m_bytes(bytes.size() + 1, place),
          m_placed(m_bytes.Get(), bytes.size() > std::string().capacity() ? bytes.size() + 1 : 0),
          m_string(bytes)
    {
    }

    bool IsGuarded() const noexcept { return m_string.data() == m_bytes.Get(); }
    std::string& Get() noexcept { return m_string; }

private:
    GuardedBytes m_bytes;
    PlacedAllocation m_placed;
    std::string m_string;
};
