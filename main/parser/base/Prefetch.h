#pragma once

#include <cstddef>

/// Asks for the memory at `address`, which need not be valid, because it will be read soon. Does
/// nothing where the compiler has no word for it, as all of these.
inline void PrefetchForReading(const void* address) noexcept
{
#if defined(__GNUC__)
    __builtin_prefetch(address);
#else
    static_cast<void>(address);
#endif
}

/// The same for memory that will be written soon.
inline void PrefetchForWriting(const void* address) noexcept
{
#if defined(__GNUC__)
    __builtin_prefetch(address, 1);
#else
    static_cast<void>(address);
#endif
}

/// The same for `size` bytes.
inline void PrefetchForWriting(const std::byte* bytes, std::size_t size) noexcept
{
    constexpr std::size_t c_cacheLine = 64;
    for (std::size_t i = 0; i < size; i += c_cacheLine)
        PrefetchForWriting(bytes + i);
}
