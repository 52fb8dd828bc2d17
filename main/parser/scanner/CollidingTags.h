#pragma once

#include "bytes/ScanPosition.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

class XercesInputSource;

/// Start tags with so many attributes whose hashes collide that the scanner must not see them: it
/// sends no event before the end of a tag.
namespace CollidingTags {

/// Where the first of them begins. More than `maximum` attributes share a bucket in it. A tag in a
/// comment, a CDATA section or an entity's text counts, too. In encodings of single bytes that are
/// not based on ASCII, none is found.
///
/// `reach` is that of the scanner's table (see NameBuckets), and afterwards what the document may
/// make of it. With `hasNamespaces`, it is the parts of names behind their prefixes that collide.
///
/// Takes little time for a document whose tags are short: it looks at a few bytes in a thousand.
std::optional<ScanPosition> FindFirst(const XercesInputSource& document, std::uint64_t maximum,
                                      bool hasNamespaces, std::size_t& reach);

/// Whether there is one in the text of an entity, in which character references stand for what they
/// mean. All else is as above; most texts of entities cost hardly anything.
bool HasAny(std::u16string_view text, std::uint64_t maximum, bool hasNamespaces,
            std::size_t& reach);

} // namespace CollidingTags
