#include "base/StackGuard.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <stdexcept>

#if defined(__linux__)
#include <pthread.h>
#endif

namespace {

/// A thread's stack, from `low` up to `top`, of which all below `end` is kept in reserve.
struct Reserve
{
    bool isKnown = false;
    std::uintptr_t low = 0;
    std::uintptr_t end = 0;
    std::uintptr_t top = 0;
};

Reserve FindReserve() noexcept
{
    Reserve reserve;
    reserve.isKnown = true;
#if defined(__linux__)
    pthread_attr_t attributes;
    if (pthread_getattr_np(pthread_self(), &attributes) != 0)
        return reserve;
    void* low = nullptr;
    std::size_t size = 0;
    if (pthread_attr_getstack(&attributes, &low, &size) == 0) {
        constexpr std::size_t c_maxBytes = std::size_t{128} * 1024;
        reserve.low = reinterpret_cast<std::uintptr_t>(low);
        reserve.end = reserve.low + std::min(size / 4, c_maxBytes);
        reserve.top = reserve.low + size;
    }
    pthread_attr_destroy(&attributes);
#endif
    return reserve;
}

thread_local Reserve t_reserve;

} // namespace

namespace StackGuard {

bool HasRoom(std::size_t bytes) noexcept
{
    if (!t_reserve.isKnown)
        t_reserve = FindReserve();
    const auto here = reinterpret_cast<std::uintptr_t>(__builtin_frame_address(0));
    if (here < t_reserve.low || here >= t_reserve.top)
        return true;
    return here >= t_reserve.end && here - t_reserve.end >= bytes;
}

void RequireRoom(const char* what)
{
    if (!HasRoom())
        throw std::length_error(what);
}

} // namespace StackGuard
