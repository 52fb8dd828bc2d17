#pragma once

#include <cstddef>

/// Tests of very many inputs take some of them where a sanitizer makes each cost several times as
/// much: all of them run in the other builds, and what a sanitizer looks for shows in a part.
namespace Effort {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
/// From one input that is taken to the next.
constexpr std::size_t c_stride = 8;
#else
constexpr std::size_t c_stride = 1;
#endif

/// How many of so many.
constexpr std::size_t Scale(std::size_t full) noexcept
{
    return (full + c_stride - 1) / c_stride;
}

} // namespace Effort
