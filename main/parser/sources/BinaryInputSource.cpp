#include <kescorexml/BinaryInputSource.h>

#include "bytes/XercesInputSource.h"

BinaryInputSource::BinaryInputSource(const std::vector<unsigned char>& bytes, const TString& id,
                                     bool skipLeadingWhitespace)
    : Utf8InputSource(std::string(bytes.begin(), bytes.end()), id, skipLeadingWhitespace)
{
}

BinaryInputSource::~BinaryInputSource() = default;

bool BinaryInputSource::GetNextLine(std::string& /*out*/)
{
    return false;
}

XercesInputSource BinaryInputSource::GetXercesInputSource(ColonProcessingMode mode)
{
    return XercesInputSource(GetData(), GetStart(), Id(), mode);
}
