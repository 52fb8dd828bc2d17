#pragma once

#include <kesplatform/TString.h>

#include <cstddef>
#include <limits>

/// How much of a text or of an attribute value is shown where one line tells of an element.
inline constexpr std::size_t c_shownUnits = 60;

/// Whether it is a control character, or embeds or overrides a direction of writing.
bool IsUnsafeUnit(char16_t unit);

/// What is not said by a document, such as the name of a file, made fit for a line of a terminal
/// and still told from others: what steers a terminal, ends a line or turns the direction of
/// writing is escaped, "\n", "\x1B" or "\u202E", and so are the bytes of a name that are not UTF-8.
TString ToEscaped(const TString& text);

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

/// The same, but tabs and line feeds stay.
TString ToSafeLines(const TString& text);
