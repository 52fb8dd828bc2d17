#pragma once

#include "bytes/TextPosition.h"

#include <cstdint>
#include <optional>

class XercesInputSource;

/// Start tags with so many attributes whose hashes collide that the scanner must not see them: it
/// sends no event before the end of a tag.
namespace CollidingTags {

/// Where the first of them begins. More than `maximum` attributes share a bucket in it. A tag in a
/// comment, a CDATA section or an entity's text counts, too. In encodings of single bytes that are
/// not based on ASCII, none is found.
///
/// Takes little time for a document whose tags are short: it looks at a few bytes in a thousand.
std::optional<TextPosition> FindFirst(const XercesInputSource& document, std::uint64_t maximum);

} // namespace CollidingTags
