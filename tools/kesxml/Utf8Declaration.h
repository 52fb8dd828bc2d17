#pragma once

#include <string>
#include <string_view>

/// A text that begins with an XML declaration or has none, with UTF-8 in place of the encoding that
/// is named, unless that is UTF-8 already.
std::string ToUtf8Declaration(std::string_view text);
