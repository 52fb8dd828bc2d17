#pragma once

#include <string>
#include <string_view>

/// The document, in UTF-8, fit for a terminal: characters that would steer it or turn the direction
/// of writing are written as references where these mean the same, in text and attribute values,
/// and as U+FFFD elsewhere.
std::string ToTerminalMarkup(std::string_view document);
