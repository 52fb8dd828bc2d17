#pragma once

#include <cstddef>
#include <string>
#include <string_view>

/// `part` as often as `count` says.
inline std::string Repeat(std::string_view part, std::size_t count)
{
    std::string text;
    text.reserve(part.size() * count);
    for (std::size_t i = 0; i < count; ++i)
        text += part;
    return text;
}
