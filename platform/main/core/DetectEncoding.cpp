#include <kesplatform/DetectEncoding.h>

#include "Utf8Bytes.h"

namespace {

/// UTF-16 or UTF-32 by mark or by the zero bytes around an ASCII character; Unknown when neither.
DetectedEncoding DetectWide(const unsigned char* b, std::size_t length) noexcept
{
    const bool four = length >= 4;
    if (four && b[0] == 0xFF && b[1] == 0xFE && b[2] == 0 && b[3] == 0)
        return Utf32LE;
    if (four && b[0] == 0 && b[1] == 0 && b[2] == 0xFE && b[3] == 0xFF)
        return Utf32BE;
    if (length >= 2 && b[0] == 0xFF && b[1] == 0xFE)
        return Utf16LE;
    if (length >= 2 && b[0] == 0xFE && b[1] == 0xFF)
        return Utf16BE;

    const auto isAscii = [](unsigned char byte) { return byte > 0 && byte < 0x80; };
    if (four && isAscii(b[0]) && b[1] == 0 && b[2] == 0 && b[3] == 0)
        return Utf32LE;
    if (four && b[0] == 0 && b[1] == 0 && b[2] == 0 && isAscii(b[3]))
        return Utf32BE;
    if (length >= 2 && isAscii(b[0]) && b[1] == 0)
        return Utf16LE;
    if (length >= 2 && b[0] == 0 && isAscii(b[1]))
        return Utf16BE;
    return Unknown;
}

} // namespace

int DetectEncoding(const void* bytes, std::size_t length) noexcept
{
    const auto* first = static_cast<const unsigned char*>(bytes);
    const DetectedEncoding wide = DetectWide(first, length);
    if (wide != Unknown)
        return wide;
    const std::string_view text(static_cast<const char*>(bytes), length);
    const std::size_t bad = Utf8Bytes::FindInvalid(text);
    return bad == length || Utf8Bytes::IsCutSequence(text.substr(bad)) ? DetectedEncoding::Utf8
                                                                       : Unknown;
}
