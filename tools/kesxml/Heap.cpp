#include "Heap.h"

#if __has_include(<malloc.h>)
#include <malloc.h>
#endif

std::optional<std::size_t> GetHeapInUse()
{
#if defined(__GLIBC__) && (__GLIBC__ > 2 || __GLIBC_MINOR__ >= 33)
    const struct mallinfo2 info = mallinfo2();
    // Large blocks are mapped on their own and counted apart.
    return info.uordblks + info.hblkhd;
#else
    return std::nullopt;
#endif
}
