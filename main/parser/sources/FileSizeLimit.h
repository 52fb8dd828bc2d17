#pragma once

#include <cstdint>

/// Whether a file of so many bytes is read as a whole; a larger one is read in chunks.
constexpr bool FitsInMemory(std::int64_t fileSize) noexcept
{
    return fileSize <= 0x3FFFFFFF;
}
