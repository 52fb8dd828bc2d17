#include <kescorexml/FileInputSource.h>

#include "base/KesErrors.h"
#include "base/LeadingWhitespace.h"
#include "bytes/XercesInputSource.h"

#include <kescorexml/CoreXml.h>

#include <kesplatform/DetectEncoding.h>
#include <kesplatform/TFormatString.h>
#include <kesplatform/TLog.h>
#include <kesplatform/Unicode.h>

#include <algorithm>

namespace {

constexpr std::uint64_t c_chunkSize = 2048;
constexpr unsigned int c_wholeFileStep = 0x100000;

/// Some devices and pipes never end.
void RequireEnd(const TFile& file, std::size_t length)
{
    if (!FitsInMemory(static_cast<std::int64_t>(length)) && file.Size() <= 0)
        throw TIO::Exception(file.GetPath(), u"the file has no size and does not end");
}

void NormalizeLineEndings(std::string& text)
{
    text.resize(Unicode::normalizeLineEndings(text.data(), text.size()));
}

} // namespace

FileInputSource::FileInputSource(const TString& fileName)
    : InputSource(fileName), m_file(TPath(fileName)), m_chunkSize(c_chunkSize), m_bufferPosition(0),
      m_encodingChecked(false), m_encodingOk(false)
{
    try {
        m_file.Open();
    } catch (const TIO::Exception& exception) {
        const TFormatString format(u"FileInputSource::FileInputSource( \"%1\" ) error: %2");
        LogMessage(TLog::Warning, format.Format(fileName, exception.GetConcatenatedMessages()));
        throw;
    }
}

FileInputSource::~FileInputSource() = default;

bool FileInputSource::GetNextChunk()
{
    m_bufferPosition = 0;
    m_buffer.resize(m_chunkSize);
    std::size_t read = 0;
    try {
        read = m_file.Read(m_buffer.data(), m_chunkSize);
    } catch (...) {
        // What was not read must never be delivered.
        m_buffer.clear();
        throw;
    }
    m_buffer.resize(read);
    return read > 0;
}

void FileInputSource::EnsureEncoding()
{
    if (!m_encodingChecked) {
        m_encodingOk = DetectEncoding(m_buffer.data(), m_buffer.size()) == Utf8;
        m_encodingChecked = true;
    }
    if (!m_encodingOk) {
        throw CorvinaException(
            CoreXml::LookupTStr(CoreXml::StringId::IDS_ERR_XML_INVALID_ENCODING),
            TError::ErrorInfo(KesErrorsError::InvalidEncoding_0xE19C2DF8(), 4, 2));
    }
}

bool FileInputSource::GetNextLine(std::string& out)
{
    if (m_bufferPosition >= m_buffer.size() && !GetNextChunk())
        return false;
    EnsureEncoding();
    out.clear();
    bool lineEnded = false;
    do {
        const auto begin = m_buffer.begin() + static_cast<std::ptrdiff_t>(m_bufferPosition);
        const auto newline = std::find(begin, m_buffer.end(), '\n');
        lineEnded = newline != m_buffer.end();
        const auto end = lineEnded ? newline + 1 : newline;
        out.append(begin, end);
        m_bufferPosition += static_cast<std::uint64_t>(end - begin);
        RequireEnd(m_file, out.size());
    } while (!lineEnded && GetNextChunk());
    NormalizeLineEndings(out);
    return true;
}

bool FileInputSource::GetBytes(std::string& out, unsigned int maxBytes)
{
    if (m_bufferPosition >= m_buffer.size() && !GetNextChunk())
        return false;
    EnsureEncoding();
    out.clear();
    std::uint64_t wanted = maxBytes;
    do {
        const std::uint64_t count = std::min(wanted, m_buffer.size() - m_bufferPosition);
        out.append(m_buffer.data() + m_bufferPosition, count);
        m_bufferPosition += count;
        wanted -= count;
    } while (wanted > 0 && GetNextChunk());
    NormalizeLineEndings(out);
    return true;
}

void FileInputSource::ResetToStart()
{
    m_bufferPosition = 0;
    m_buffer.clear();
    m_file.Seek(0);
}

std::int64_t FileInputSource::Size() const
{
    return m_file.Size();
}

XercesInputSource FileInputSource::GetXercesInputSource(ColonProcessingMode mode)
{
    auto text = std::make_shared<std::string>();
    text->reserve(c_wholeFileStep);
    if (GetBytes(*text, c_wholeFileStep)) {
        std::string step;
        step.reserve(c_wholeFileStep);
        while (GetBytes(step, c_wholeFileStep) && !step.empty()) {
            text->append(step);
            RequireEnd(m_file, text->size());
        }
    }
    const std::size_t start = SkipLeadingWhitespace(*text);
    return XercesInputSource(std::move(text), start, Id(), mode);
}
