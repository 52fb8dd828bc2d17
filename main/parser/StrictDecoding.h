#pragma once

#include <optional>
#include <string_view>

/// Finds the bytes for which the scanner's decoders, but for those of Unicode and of the most
/// common encodings, put a replacement character in silence.
namespace StrictDecoding {

/// From 1, in lines of the document and UTF-16 code units of the line.
struct Position
{
    unsigned long long line = 1;
    unsigned long long column = 1;
};

/// Where the first bytes stand that mean no character in the encoding of that name; nothing when
/// there are none or no decoder knows the name. Bytes that spell U+FFFD itself are fine in
/// encodings without states. Takes time linear in the bytes, and no memory for them. Xerces must be
/// initialised; throws xercesc::OutOfMemoryException.
std::optional<Position> FindUndecodable(std::string_view bytes, std::string_view encoding);

} // namespace StrictDecoding
