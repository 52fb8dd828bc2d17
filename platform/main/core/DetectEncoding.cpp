#include <kesplatform/DetectEncoding.h>

#include "Utf8Bytes.h"

#include <kesplatform/EncodingTable.h>

int DetectEncoding(const void* bytes, std::size_t length) noexcept
{
    const std::string_view text(static_cast<const char*>(bytes), length);
    // Without byte-order mark, they show by the zero bytes around an ASCII character.
    const EncodingTable::Scheme* const larger = EncodingTable::FindLargerUnits(
        text, [text](const auto& scheme) { return scheme.ReadAscii(text, 0) != '\0'; });
    if (larger != nullptr)
        return larger->encoding;
    const std::size_t bad = Utf8Bytes::FindInvalid(text);
    return bad == length || Utf8Bytes::IsCutSequence(text.substr(bad)) ? DetectedEncoding::Utf8
                                                                       : Unknown;
}
