#pragma once

#include <kescorexml/Utf8InputSource.h>

#include <vector>

/// A document held in memory as the bytes of a file: it is read in the encoding that its byte-order
/// mark or its declaration names. Different objects may be used from different threads.
class KESCOREXML_EXPORT BinaryInputSource : public Utf8InputSource
{
public:
    /// Copies the bytes. See Utf8InputSource for `skipLeadingWhitespace`.
    BinaryInputSource(const std::vector<unsigned char>& bytes, const TString& id,
                      bool skipLeadingWhitespace);
    ~BinaryInputSource() override;

    /// Always false: bytes have no lines.
    bool GetNextLine(std::string& out) override;

    XercesInputSource GetXercesInputSource(ColonProcessingMode mode) override;
};
