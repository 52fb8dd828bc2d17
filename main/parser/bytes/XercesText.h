#pragma once

#include <kesplatform/TString.h>

#include <xercesc/util/XercesDefs.hpp>

#include <string_view>

// Xerces and TString both hold UTF-16.
static_assert(sizeof(XMLCh) == sizeof(char16_t));

inline std::u16string_view ViewXMLCh(const XMLCh* text, std::size_t length) noexcept
{
    return {reinterpret_cast<const char16_t*>(text), length};
}

/// Null gives the empty text.
inline std::u16string_view ViewXMLCh(const XMLCh* text) noexcept
{
    return text == nullptr ? std::u16string_view()
                           : std::u16string_view(reinterpret_cast<const char16_t*>(text));
}

/// A negative length stands for a zero-terminated text.
inline TString GetTStringFromXMLChPtr(const XMLCh* text, int length)
{
    return TString(length < 0 ? ViewXMLCh(text)
                              : ViewXMLCh(text, static_cast<std::size_t>(length)));
}

/// Zero-terminated; valid as long as `text` is unchanged.
inline const XMLCh* GetInternalXMLChPtrFromTString(const TString& text) noexcept
{
    return reinterpret_cast<const XMLCh*>(text.utf16());
}
