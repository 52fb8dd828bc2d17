#pragma once

#include <string_view>

/// Texts that end before their first zero unit. Names and values of a document are short: what
/// counts is to pass over them once and to call nothing.
namespace TerminatedText {

/// Whether `units` are `text`, which must not hold a zero.
inline bool Equals(const char16_t* units, std::u16string_view text) noexcept
{
    for (const char16_t unit : text) {
        if (*units++ != unit)
            return false;
    }
    return *units == u'\0';
}

/// Copies `units` and the zero behind them to `to`. Returns where the zero stands then; null when
/// it would not stand before `end`.
inline char16_t* Copy(const char16_t* units, char16_t* to, const char16_t* end) noexcept
{
    for (; to < end; ++to, ++units) {
        *to = *units;
        if (*units == u'\0')
            return to;
    }
    return nullptr;
}

} // namespace TerminatedText
