#pragma once

#include <kescorexml/SkippedEntity.h>

#include <kesplatform/TString.h>

#include <string_view>
#include <unordered_map>
#include <vector>

/// What the scanner leaves out without a word: where a document type is declared outside of the
/// document, an entity may be declared there, and a reference to one that it does not know is none
/// of its business.
namespace SkippedEntities {

/// Those to which content and attribute values refer, in the order of their first references.
/// `declared` are the texts, by name, of the entities that the document declares itself: each is
/// looked at where the document refers to it first, and once. REQUIRES: a document in UTF-8 that
/// the scanner has read to its end without a fatal error. Declarations are passed over. Takes time
/// linear in the document.
std::vector<SkippedEntity> Find(std::string_view document,
                                const std::unordered_map<TString, TString>& declared);

} // namespace SkippedEntities
