#pragma once

#include <kesplatform/TCType.h>

#include <algorithm>
#include <cstddef>
#include <string_view>

namespace TScanString {

/// The index of the first unit at or after `from` that is not white space (TCType::isSpace), or
/// the length. Safe to use from several threads.
[[nodiscard]] inline std::size_t skipWhitespace(std::u16string_view text,
                                                std::size_t from = 0) noexcept
{
    while (from < text.size() && TCType::isSpace(text[from]))
        ++from;
    return std::min(from, text.size());
}

} // namespace TScanString
