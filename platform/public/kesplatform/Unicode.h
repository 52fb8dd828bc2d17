#pragma once

#include <kesplatform/Export.h>

#include <cstddef>

namespace Unicode {

/// Turns CR LF and every other CR into LF, in place, and returns the new length in bytes.
/// Safe to use from several threads.
KESPLATFORM_EXPORT std::size_t normalizeLineEndings(char* text, std::size_t length) noexcept;

} // namespace Unicode
