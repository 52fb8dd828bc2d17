#pragma once

#include <kesplatform/Export.h>

#include <cstddef>
#include <string_view>

namespace Unicode {

/// Turns CR LF and every other CR into LF, in place, and returns the new length in bytes.
/// Safe to use from several threads.
KESPLATFORM_EXPORT std::size_t normalizeLineEndings(char* text, std::size_t length) noexcept;

/// The offset of the first byte that is part of no well-formed sequence of UTF-8, or the size.
/// Safe to use from several threads.
KESPLATFORM_EXPORT std::size_t findInvalidUtf8(std::string_view bytes) noexcept;

} // namespace Unicode
