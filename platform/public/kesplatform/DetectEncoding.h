#pragma once

#include <kesplatform/Export.h>

#include <cstddef>

/// Encodings that DetectEncoding tells apart.
enum DetectedEncoding
{
    Unknown = 0,
    Utf8 = 1,
    Utf16LE = 2,
    Utf16BE = 3,
    Utf32LE = 4,
    Utf32BE = 5
};

/// The encoding of a text by its first bytes: 1 for UTF-8 and its subsets, with or without
/// byte-order mark (a sequence that the end of the bytes cuts is fine); 2 to 5 for UTF-16 and
/// UTF-32, by byte-order mark or by the pattern of zero bytes around ASCII; 0 for what is none of
/// these. No bytes are UTF-8.
/// Safe to use from several threads.
[[nodiscard]] KESPLATFORM_EXPORT int DetectEncoding(const void* bytes, std::size_t length) noexcept;
