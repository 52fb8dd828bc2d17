#pragma once

#include <kesplatform/TString.h>

#include <version>

#if defined(__cpp_lib_format)

#include <format>
#include <string_view>

/// std::format writes the text as UTF-8 and takes the format specifications of strings. It stands
/// in a header of its own, because the one that it needs is large. Different objects may be used
/// from different threads.
template <>
struct std::formatter<TString> : std::formatter<std::string_view>
{
    /// What std::format calls.
    template <typename Context>
    typename Context::iterator format(const TString& text, Context& context) const
    {
        return std::formatter<std::string_view>::format(text.toStdString(), context);
    }
};

#endif
