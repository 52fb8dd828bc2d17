#pragma once

#include <kescorexml/IXercesInputSourceProvider.h>
#include <kescorexml/InputSource.h>

#include <kesplatform/TFile.h>

#include <vector>

/// A file read in chunks of 2048 bytes, open as long as this object lives. The identifier is the
/// file name.
///
/// The first chunk decides, once, whether DetectEncoding takes the file for UTF-8; if not, every
/// read throws a CorvinaException. Line endings are normalized within each read; a pair that two
/// reads part is not joined. What tells no size, such as a pipe or a device, and goes on beyond
/// 1,073,741,823 bytes of one line or of the document is a TIO::Exception. Different objects may be
/// used from different threads.
class KESCOREXML_EXPORT FileInputSource : public InputSource, public IXercesInputSourceProvider
{
public:
    /// TIO::Exception, logged as a warning, when the file cannot be opened.
    explicit FileInputSource(const TString& fileName);
    ~FileInputSource() override;

    bool GetNextLine(std::string& out) override;
    bool GetBytes(std::string& out, unsigned int maxBytes) override;
    void ResetToStart() override;
    /// The size on disk.
    [[nodiscard]] std::int64_t Size() const override;

    /// Reads the rest of the file into memory and skips white space at its start. The parser reads
    /// these bytes in the encoding that their byte-order mark or their declaration names.
    XercesInputSource GetXercesInputSource(ColonProcessingMode mode) override;

private:
    bool GetNextChunk();
    void EnsureEncoding();

    TFile m_file;
    const std::uint64_t m_chunkSize;
    std::vector<char> m_buffer;
    std::uint64_t m_bufferPosition;
    bool m_encodingChecked;
    bool m_encodingOk;
};
