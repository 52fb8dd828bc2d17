#pragma once

#include <cstddef>
#include <string_view>

/// The shifts of UTF-7: "+", digits of six bits that spell units of sixteen, and what is no digit.
/// ICU drops digits that are no part of a unit when they are zero.
namespace Utf7 {

inline bool IsDigit(char c) noexcept
{
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '+' ||
           c == '/';
}

/// Behind the digits of the shift whose "+" stands at `at`.
inline std::size_t FindShiftEnd(std::string_view bytes, std::size_t at) noexcept
{
    do
        ++at;
    while (at < bytes.size() && IsDigit(bytes[at]));
    return at;
}

/// Whether the bytes end in that shift.
inline bool EndsShift(std::string_view bytes, std::size_t at) noexcept
{
    return FindShiftEnd(bytes, at) == bytes.size();
}

/// The offset of the "+" of the first shift without digits, other than "+-", or with digits that
/// are no part of a unit; npos when there is none.
inline std::size_t FindSurplus(std::string_view bytes) noexcept
{
    std::size_t at = 0;
    while ((at = bytes.find('+', at)) != std::string_view::npos) {
        const std::size_t end = FindShiftEnd(bytes, at);
        const std::size_t digits = end - at - 1;
        const bool isPlus = digits == 0 && bytes.substr(end, 1) == "-";
        if (!isPlus && (digits == 0 || digits * 6 % 16 >= 6))
            return at;
        at = end;
    }
    return at;
}

} // namespace Utf7
