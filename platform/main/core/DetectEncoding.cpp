#include <kesplatform/DetectEncoding.h>

#include "Utf8Bytes.h"

#include <kesplatform/EncodingTable.h>

namespace {

/// The scheme of larger units than bytes; null for single bytes.
const EncodingTable::Scheme* FindLargerUnits(std::string_view text) noexcept
{
    if (const EncodingTable::Scheme* const marked = EncodingTable::FindByByteOrderMark(text))
        return marked->unitSize > 1 ? marked : nullptr;
    // Without byte-order mark, they show by the zero bytes around an ASCII character.
    for (const EncodingTable::Scheme& scheme : EncodingTable::c_schemes) {
        if (scheme.unitSize > 1 && scheme.ReadAscii(text, 0) != '\0')
            return &scheme;
    }
    return nullptr;
}

} // namespace

int DetectEncoding(const void* bytes, std::size_t length) noexcept
{
    const std::string_view text(static_cast<const char*>(bytes), length);
    if (const EncodingTable::Scheme* const larger = FindLargerUnits(text))
        return larger->encoding;
    const std::size_t bad = Utf8Bytes::FindInvalid(text);
    return bad == length || Utf8Bytes::IsCutSequence(text.substr(bad)) ? DetectedEncoding::Utf8
                                                                       : Unknown;
}
