#pragma once

#include <kesplatform/TString.h>

#include <cstddef>
#include <limits>

/// What a document says, made fit for a line of a terminal: runs of white space become one blank
/// (none at either end), and units that steer a terminal or turn the direction of writing become
/// U+FFFD. A text of more than `limit` units is cut, with an ellipsis as its last unit.
TString ToOneLine(const TString& text, std::size_t limit = std::numeric_limits<std::size_t>::max());

/// The attribute value, escaped so that it stays on one line and could be put back between single
/// quotes. It is cut as above; white space is kept, as references.
TString ToAttributeText(const TString& value,
                        std::size_t limit = std::numeric_limits<std::size_t>::max());

/// The text with a blank for each unit of white space, and U+FFFD for each that steers a terminal
/// or turns the direction of writing.
TString ToSafeUnits(const TString& text);
