#pragma once

#include <kesplatform/Export.h>

#include <cstddef>
#include <string>
#include <string_view>

namespace Unicode {

/// Turns CR LF and every other CR into LF, in place, and returns the new length in bytes.
/// Safe to use from several threads.
KESPLATFORM_EXPORT std::size_t normalizeLineEndings(char* text, std::size_t length) noexcept;

/// The offset of the first byte that is part of no well-formed sequence of UTF-8, or the size.
/// Safe to use from several threads.
[[nodiscard]] KESPLATFORM_EXPORT std::size_t findInvalidUtf8(std::string_view bytes) noexcept;

/// UTF-8 in which a unit that is half of no pair keeps its value, in three bytes that no reader of
/// UTF-8 takes for a character. Other texts become what TString::toStdString gives.
/// Safe to use from several threads.
[[nodiscard]] KESPLATFORM_EXPORT std::string toUtf8KeepingHalves(std::u16string_view units);

} // namespace Unicode
