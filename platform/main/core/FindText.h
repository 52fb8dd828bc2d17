#pragma once

#include <cstddef>
#include <string_view>

/// The first position of `part` in `text`, or npos. An empty part is found at 0. Linear in the two
/// lengths together, whatever they hold, and without memory of its own.
std::size_t FindText(std::u16string_view text, std::u16string_view part) noexcept;
