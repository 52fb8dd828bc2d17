#pragma once

#include <kescorexml/Export.h>
#include <kesplatform/TString.h>

/// Names and values of the module's own markup, built when the library is loaded.
/// Safe to use from several threads.
namespace XMLTokens {

/// The version attribute of a document's root element.
extern KESCOREXML_EXPORT const TString attrVersion;

/// The element of a packed lookup table.
extern KESCOREXML_EXPORT const TString tagPack;
/// The elements of a written tuple.
extern KESCOREXML_EXPORT const TString tagTuple;
extern KESCOREXML_EXPORT const TString tagValue;

/// How truth values are written.
extern KESCOREXML_EXPORT const TString valueFalse;
extern KESCOREXML_EXPORT const TString valueTrue;

} // namespace XMLTokens
