#include "bytes/XercesInputSource.h"

#include "bytes/XercesColonSanitizer.h"
#include "bytes/XercesMemory.h"

#include <kesplatform/EncodingTable.h>
#include <kesplatform/Metrics.h>
#include <kesplatform/XmlDeclaration.h>

#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/util/XMLUni.hpp>

#include <utility>

namespace {

/// The scanner counts a line end of one character right behind "<?xml" for none, which would leave
/// all positions one line short; of CR LF it counts the second half. The document is copied for it,
/// which is rare: hardly anybody breaks the line there.
std::shared_ptr<const std::string>
WidenLineEndOfDeclaration(std::shared_ptr<const std::string> data, std::size_t start)
{
    const std::string_view text = *data;
    std::string_view rest = EncodingTable::SkipByteOrderMark(text.substr(start));
    if (!rest.starts_with(XmlDeclaration::c_start))
        return data;
    rest.remove_prefix(XmlDeclaration::c_start.size());
    if (rest.starts_with("\r\n") || !(rest.starts_with('\r') || rest.starts_with('\n')))
        return data;
    const std::size_t at = text.size() - rest.size();
    std::string widened;
    widened.reserve(text.size() + 1);
    widened.append(text.substr(0, at)).append("\r\n").append(text.substr(at + 1));
    return std::make_shared<const std::string>(std::move(widened));
}

/// Whether the scanner would find another encoding than UTF-8 by itself.
bool DeclaresOtherEncoding(std::string_view utf8)
{
    const std::string_view name =
        XmlDeclaration::FindEncoding(EncodingTable::SkipByteOrderMark(utf8));
    return EncodingTable::IsName(name) && !EncodingTable::NamesUtf8(name);
}

} // namespace

XercesInputSource::XercesInputSource(const std::shared_ptr<const std::string>& data,
                                     std::size_t start, const TString& id, ColonProcessingMode mode,
                                     XercesEncoding encoding)
    : XercesInputSource(std::shared_ptr<const std::string>(data), start, id, mode, encoding)
{
}

XercesInputSource::XercesInputSource(std::shared_ptr<const std::string>&& data, std::size_t start,
                                     const TString& id, ColonProcessingMode mode,
                                     XercesEncoding encoding)
    : m_data(std::move(data)), m_mode(mode), m_start(start), m_id(id), m_encoding(encoding)
{
    if (encoding == XercesEncoding::Declared)
        Decode();
    // Whether the sanitizer will be needed is not known yet, and metrics are not to show it.
    if (mode == ColonProcessingMode::EncodeColonAttributes)
        const Metrics::Scope scope("XercesColonSanitizer");
}

void XercesInputSource::Decode()
{
    DocumentDecoding::Result decoded = DocumentDecoding::Decode(GetBytes());
    m_refusal = std::move(decoded.refusal);
    m_fault = std::move(decoded.fault);
    if (!decoded.utf8)
        return;
    m_data = std::make_shared<const std::string>(std::move(*decoded.utf8));
    m_start = 0;
    m_encoding = XercesEncoding::Utf8;
}

void XercesInputSource::Sanitize() const
{
    if (m_mode == ColonProcessingMode::EncodeColonAttributes)
        m_data = XercesColonSanitizer::EncodeColonAttributeNames(m_data);
    m_mode = ColonProcessingMode::None;
}

void XercesInputSource::Prepare() const
{
    Sanitize();
    m_data = WidenLineEndOfDeclaration(std::move(m_data), m_start);
    SetupXercesBuffer();
}

void XercesInputSource::SetupXercesBuffer() const
{
    auto* const manager = xercesc::XMLPlatformUtils::fgMemoryManager;
    WithXercesMemory([&] {
        m_xercesSource.reset(new (manager) StrictUtf8Source(GetBytes(), m_id, manager));
        // Streams that Xerces makes from the buffer read these very bytes.
        m_xercesSource->setCopyBufToStream(false);
        if (m_encoding == XercesEncoding::Utf8 || DeclaresOtherEncoding(GetBytes()))
            m_xercesSource->setEncoding(xercesc::XMLUni::fgUTF8EncodingString);
    });
}
