#pragma once

#include <kescorexml/Export.h>
#include <kesplatform/TString.h>

#include <vector>

// Base64 with the alphabet of RFC 4648 and "=" as padding. All functions take time linear in their
// input. Safe to use from several threads.

/// Appends the encoding of `count` bytes to `lines`: one line, or with `splitLines` lines of 72
/// characters and a last one with the rest, without line ends. No bytes give no line; `bytes` may
/// then be null. More than 0x3FFFFFFF groups of three bytes in one line are a logic assertion.
/// Up to thirty-two neighbouring lines of 72 characters share one allocation, which the last of
/// them to go frees.
KESCOREXML_EXPORT void Base64Encode(const unsigned char* bytes, unsigned int count,
                                    std::vector<TString>& lines, bool splitLines);

/// Decodes whatever a text holds of the alphabet, four characters to three bytes; nothing is an
/// error. White space at both ends is cut off first. Only the low 8 bits of each UTF-16 unit count.
/// Characters outside the alphabet are skipped, but one "=" among those read for a group makes it
/// two bytes and more make it one. At the end of the text missing characters count as zero bits, so
/// that "QQ" gives three bytes: callers that need exact lengths write padded text.
/// The first form replaces what `bytes` holds; `bytes` is empty when memory runs out.
KESCOREXML_EXPORT void Base64Decode(const TString& text, std::vector<unsigned char>& bytes);
[[nodiscard]] KESCOREXML_EXPORT std::vector<unsigned char> Base64Decode(const TString& text);

/// True for strict, padded Base64 and for the empty text. White space makes it false, though
/// Base64Decode skips it. The unused bits before the padding may have any value.
[[nodiscard]] KESCOREXML_EXPORT bool IsBase64(const TString& text) noexcept;
