#pragma once

#include <xercesc/util/XMLChar.hpp>

/// The character classes of XmlUtils, inline.
namespace CharacterClasses {

inline char16_t WidenSigned(char c) noexcept
{
    return static_cast<char16_t>(static_cast<signed char>(c));
}

inline bool IsWhitespace(char16_t c) noexcept
{
    return xercesc::XMLChar1_0::isWhitespace(c);
}

inline bool IsWhitespace(char c) noexcept
{
    return IsWhitespace(WidenSigned(c));
}

inline bool IsFirstNameChar(char16_t c) noexcept
{
    return xercesc::XMLChar1_0::isFirstNameChar(c);
}

inline bool IsFirstNameChar(char c) noexcept
{
    return IsFirstNameChar(WidenSigned(c));
}

inline bool IsNameChar(char16_t c) noexcept
{
    return xercesc::XMLChar1_0::isNameChar(c);
}

inline bool IsNameChar(char c) noexcept
{
    return IsNameChar(WidenSigned(c));
}

} // namespace CharacterClasses
