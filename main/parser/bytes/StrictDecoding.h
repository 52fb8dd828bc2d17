#pragma once

#include "bytes/TextPosition.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

/// Decodes as the scanner does, and sees what it passes over: the bytes for which its decoders, but
/// for those of Unicode and of the most common encodings, put a replacement character in silence.
/// All here takes time linear in the bytes, and no memory for them. Xerces must be initialised;
/// throws xercesc::OutOfMemoryException.
namespace StrictDecoding {

/// Where the first bytes stand that mean no character in the encoding of that name; nothing when
/// there are none, no decoder knows the name, or it is that of ISO-8859-1, in which all bytes are
/// characters, or of US-ASCII, of which the scanner itself refuses all others. Bytes that spell
/// U+FFFD itself are fine in UTF-7 and in encodings without states.
std::optional<TextPosition> FindUndecodable(std::string_view bytes, std::string_view encoding);

/// Where that stands which follows these bytes; nothing when no decoder knows the encoding.
std::optional<TextPosition> FindEnd(std::string_view bytes, std::string_view encoding);

/// The offset of the character that the end of the bytes has cut off, else npos. `from` is where
/// one begins, in an encoding without states; it is the result when no decoder knows the encoding.
std::size_t FindIncomplete(std::string_view bytes, std::size_t from, std::string_view encoding);

/// The text, as the scanner decodes it; empty when no decoder knows the encoding.
std::string ToUtf8(std::string_view bytes, std::string_view encoding);

} // namespace StrictDecoding
