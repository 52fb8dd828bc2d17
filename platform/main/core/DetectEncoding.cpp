#include <kesplatform/DetectEncoding.h>

#include "Utf8Bytes.h"

#include <kesplatform/EncodingTable.h>

namespace {

/// UTF-16 or UTF-32 by byte-order mark or by the zero bytes around an ASCII character; Unknown when
/// neither.
DetectedEncoding DetectLargerUnits(std::string_view text) noexcept
{
    const EncodingTable::Entry* const marked = EncodingTable::FindByByteOrderMark(text);
    if (marked != nullptr)
        return marked->unitSize > 1 ? marked->encoding : Unknown;
    for (const EncodingTable::Entry& entry : EncodingTable::c_entries) {
        if (entry.unitSize > 1 && entry.ReadAscii(text, 0) != '\0')
            return entry.encoding;
    }
    return Unknown;
}

} // namespace

int DetectEncoding(const void* bytes, std::size_t length) noexcept
{
    const std::string_view text(static_cast<const char*>(bytes), length);
    const DetectedEncoding larger = DetectLargerUnits(text);
    if (larger != Unknown)
        return larger;
    const std::size_t bad = Utf8Bytes::FindInvalid(text);
    return bad == length || Utf8Bytes::IsCutSequence(text.substr(bad)) ? DetectedEncoding::Utf8
                                                                       : Unknown;
}
