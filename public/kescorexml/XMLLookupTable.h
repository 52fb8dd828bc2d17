#pragma once

#include <kescorexml/Export.h>

#include <kesplatform/TString.h>

#include <unordered_map>

namespace XmlUtils {

/// A map stored as the attributes of one XML element "pack", sorted by key; the empty map is the
/// empty text. Without `suppressNewlines` both tags end in a line feed. Keys are not escaped: each
/// must be an XML name. Safe to use from several threads.
[[nodiscard]] KESCOREXML_EXPORT TString PackStringLookupTableIntoXML(
    const std::unordered_map<TString, TString>& map, bool suppressNewlines);

/// Reads such a map back. Text that is not well formed, or whose document element is not "pack",
/// gives the empty map. Safe to use from several threads.
[[nodiscard]] KESCOREXML_EXPORT std::unordered_map<TString, TString>
UnpackStringLookupTableFromXML(const TString& xml);

} // namespace XmlUtils
