#pragma once

#include <string_view>

/// Texts that end before their first zero unit. Names of a document are short: what counts is to
/// pass over them once and to call nothing.
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

} // namespace TerminatedText
