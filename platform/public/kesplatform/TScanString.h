#pragma once

#include <kesplatform/Export.h>

#include <cstddef>
#include <string_view>

namespace TScanString {

/// The index of the first unit at or after `from` that is not white space (TCType::isSpace), or
/// the length. Safe to use from several threads.
KESPLATFORM_EXPORT std::size_t skipWhitespace(std::u16string_view text,
                                              std::size_t from = 0) noexcept;

} // namespace TScanString
