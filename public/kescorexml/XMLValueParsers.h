#pragma once

#include <kescorexml/Export.h>
#include <kesplatform/TString.h>

#include <cstdint>

/// Readers of attribute values as XMLFormatter writes them. Text that is no such value is not an
/// error. Numbers are decimal, in the C locale, with white space around them ignored.
/// Safe to use from several threads.
namespace XMLValueParsers {

/// True only for exactly "true".
[[nodiscard]] KESCOREXML_EXPORT bool ParseBool(const TString& text) noexcept;
/// `defaultValue` for the empty string.
[[nodiscard]] KESCOREXML_EXPORT bool ParseBool(const TString& text, bool defaultValue) noexcept;

/// 0 for bad text and for numbers that do not fit.
[[nodiscard]] KESCOREXML_EXPORT int ParseInt(const TString& text);
/// The low 32 bits of an unsigned 64-bit number; 0 for bad text and for numbers beyond that.
[[nodiscard]] KESCOREXML_EXPORT std::uint32_t ParseUInt32(const TString& text);
/// 0 for bad text and for numbers that do not fit.
[[nodiscard]] KESCOREXML_EXPORT double ParseFloat(const TString& text);

} // namespace XMLValueParsers
