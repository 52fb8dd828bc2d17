#pragma once

/// Asks for the memory at `address`, which need not be valid, because it will be written soon.
/// Does nothing where the compiler has no word for it.
inline void PrefetchForWriting(const void* address) noexcept
{
#if defined(__GNUC__)
    __builtin_prefetch(address, 1);
#else
    static_cast<void>(address);
#endif
}
