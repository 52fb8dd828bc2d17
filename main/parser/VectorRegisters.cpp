#include "VectorRegisters.h"

#if defined(__GNUC__) && defined(__x86_64__)

namespace {

[[gnu::target("avx")]] void ClearUpperHalves() noexcept
{
    __builtin_ia32_vzeroupper();
}

} // namespace

void ClearUpperVectorHalves() noexcept
{
    if (__builtin_cpu_supports("avx"))
        ClearUpperHalves();
}

#else

void ClearUpperVectorHalves() noexcept {}

#endif
