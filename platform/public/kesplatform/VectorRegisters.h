#pragma once

#if defined(__GNUC__) && defined(__x86_64__)

/// Only for ClearUpperVectorHalves, which asks whether the processor has the instruction.
[[gnu::target("avx")]] inline void ExecuteVzeroupper() noexcept
{
    __builtin_ia32_vzeroupper();
}

#endif

/// Puts the processor's vector registers into the state in which code for their lower halves alone,
/// as these libraries are, runs at full speed.
///
/// Code that uses the upper halves, too, is to clear them before it returns, and there are
/// libraries that do not, the hashes of Qt 6.4 among them. All 128-bit instructions of the thread
/// then wait for whatever wrote the same register before, and a parse takes up to half as long
/// again. To be called at the beginning of long work and behind such code; takes a few nanoseconds,
/// and does nothing where there are no such registers. Acts on the calling thread alone.
inline void ClearUpperVectorHalves() noexcept
{
#if defined(__GNUC__) && defined(__x86_64__)
    if (__builtin_cpu_supports("avx"))
        ExecuteVzeroupper();
#endif
}
