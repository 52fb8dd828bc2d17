#pragma once

namespace CorePlatformUtils {

/// Whether a UTF-16 unit may stand in XML 1.0 text. Halves of surrogate pairs count as valid, so
/// that characters beyond the basic plane survive. Safe to use from several threads.
[[nodiscard]] constexpr bool IsValidCharacter(char16_t unit) noexcept
{
    if (unit < 0x20)
        return unit == u'\t' || unit == u'\n' || unit == u'\r';
    return unit < 0xFFFE;
}

} // namespace CorePlatformUtils
