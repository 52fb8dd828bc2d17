#pragma once

/// Character classes of the platform. Safe to use from several threads.
namespace TCType {

/// U+0009 to U+000D and U+0020, nothing else: a no-break space is text.
[[nodiscard]] constexpr bool isSpace(char16_t unit) noexcept
{
    return unit == u' ' || (unit >= u'\t' && unit <= u'\r');
}

} // namespace TCType
