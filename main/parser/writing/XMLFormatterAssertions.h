#pragma once

#include <kesplatform/TString.h>

#include <cstddef>

// The broken contracts that other sources notice on behalf of XMLFormatter, whose name and lines
// they carry.

/// Escaping has written another number of units than it had counted. Logs both texts first.
[[noreturn]] void ThrowLengthMismatch(const TString& text, const TString& encoded,
                                      std::size_t written);
[[noreturn]] void ThrowUnknownMappingTableType();
[[noreturn]] void ThrowChildrenChanged();
