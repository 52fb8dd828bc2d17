#pragma once

#include <string>
#include <string_view>

/// Writes a well-formed document with each tag, comment and instruction on a line of its own,
/// indented by two blanks a level. `document` is UTF-8 without byte-order mark. Formatting what was
/// formatted changes nothing. The cost is linear.
///
/// Only white space between markup changes, and the encoding that the XML declaration names, which
/// becomes UTF-8; all else stays as it is written: references, quotes, the order of attributes,
/// comments. Left alone is the content of elements that hold text other than white space, that hold
/// nothing but text, or whose white space xml:space or a content model of the document type
/// preserves, and all elements in it, but those in which xml:space says "default" again. One empty
/// line stays where there are some, and a comment behind a tag on its line. Line ends become line
/// feeds, as for every reader of XML.
std::string FormatMarkup(std::string_view document, bool header);
