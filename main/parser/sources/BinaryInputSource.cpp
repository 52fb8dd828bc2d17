#include <kescorexml/BinaryInputSource.h>

#include "bytes/XercesInputSource.h"

#include <kesplatform/DetectEncoding.h>

#include <algorithm>
#include <string_view>

namespace {

/// Enough to see a byte-order mark or the pattern of zero bytes that two- and four-byte units make.
constexpr std::size_t c_bytesThatShowUnitSize = 64;

/// Whether the bytes hold ASCII characters as single bytes. In larger units, names that begin with
/// a colon are read as they stand.
bool HasSingleByteUnits(std::string_view bytes)
{
    switch (DetectEncoding(bytes.data(), std::min(bytes.size(), c_bytesThatShowUnitSize))) {
    case Utf16LE:
    case Utf16BE:
    case Utf32LE:
    case Utf32BE:
        return false;
    default:
        return true;
    }
}

} // namespace

BinaryInputSource::BinaryInputSource(const std::vector<unsigned char>& bytes, const TString& id,
                                     bool skipLeadingWhitespace)
    // The parser needs a zero byte behind the document, which only a copy can have.
    : Utf8InputSource(std::string(reinterpret_cast<const char*>(bytes.data()), bytes.size()), id,
                      skipLeadingWhitespace)
{
}

BinaryInputSource::~BinaryInputSource() = default;

bool BinaryInputSource::GetNextLine(std::string& /*out*/)
{
    return false;
}

XercesInputSource BinaryInputSource::GetXercesInputSource(ColonProcessingMode mode)
{
    // What stands before the start is not read.
    if (!HasSingleByteUnits(std::string_view(*GetData()).substr(GetStart())))
        mode = ColonProcessingMode::None;
    return XercesInputSource(GetData(), GetStart(), Id(), mode);
}
