#pragma once

#include <kesplatform/TCType.h>

#include <cstddef>
#include <string_view>

/// The index of the first byte that is no white space, or the length.
inline std::size_t SkipLeadingWhitespace(std::string_view bytes) noexcept
{
    std::size_t index = 0;
    while (index < bytes.size() && TCType::isSpace(static_cast<unsigned char>(bytes[index])))
        ++index;
    return index;
}
