#pragma once

#include <kescorexml/Export.h>

/// Names and values of the module's own markup. Each constant is a zero-terminated UTF-16 text that
/// is there before any code runs and as long as the library.
/// Safe to use from several threads.
namespace XMLTokens {

/// The version attribute of a document's root element.
KESCOREXML_EXPORT extern const char16_t* const attrVersion;

/// The element of a packed lookup table.
KESCOREXML_EXPORT extern const char16_t* const tagPack;
/// The elements of a written tuple.
KESCOREXML_EXPORT extern const char16_t* const tagTuple;
KESCOREXML_EXPORT extern const char16_t* const tagValue;

/// How truth values are written.
KESCOREXML_EXPORT extern const char16_t* const valueFalse;
KESCOREXML_EXPORT extern const char16_t* const valueTrue;

} // namespace XMLTokens
