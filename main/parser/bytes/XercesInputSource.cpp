#include "bytes/XercesInputSource.h"

#include "bytes/ScannerEncoding.h"
#include "bytes/StrictUtf8Source.h"
#include "bytes/XercesColonSanitizer.h"
#include "bytes/XercesMemory.h"
#include "bytes/XercesText.h"

#include <kesplatform/EncodingTable.h>
#include <kesplatform/Metrics.h>
#include <kesplatform/XmlDeclaration.h>

#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/util/XMLUni.hpp>

#include <utility>

namespace {

/// The scanner counts a line end of one character right behind "<?xml" for none, which would leave
/// all positions one line short; of CR LF it counts the second half. Only of single bytes: in units
/// of two or four, positions behind such a line end are one line short. The document is copied for
/// it, which is rare: hardly anybody breaks the line there.
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
    if (mode == ColonProcessingMode::EncodeColonAttributes)
        const Metrics::Scope scope("XercesColonSanitizer");
}

void XercesInputSource::Sanitize() const
{
    if (m_mode == ColonProcessingMode::EncodeColonAttributes)
        m_data = XercesColonSanitizer::EncodeUnmeasured(m_data);
    m_mode = ColonProcessingMode::None;
}

void XercesInputSource::Prepare() const
{
    Sanitize();
    m_data = WidenLineEndOfDeclaration(std::move(m_data), m_start);
    SetupXercesBuffer();
}

bool XercesInputSource::MayHoldNull() const noexcept
{
    return m_strictSource == nullptr || m_strictSource->MayHoldNull();
}

void XercesInputSource::SetupXercesBuffer() const
{
    const std::string_view bytes = GetBytes();
    auto* const manager = xercesc::XMLPlatformUtils::fgMemoryManager;
    WithXercesMemory([&] {
        if (m_encoding == XercesEncoding::Utf8 || ScannerEncoding::IsUtf8(bytes)) {
            auto* const strict = new (manager) StrictUtf8Source(bytes, m_id, manager);
            m_xercesSource.reset(strict);
            m_strictSource = strict;
        } else {
            m_xercesSource.reset(new (manager) xercesc::MemBufInputSource(
                reinterpret_cast<const XMLByte*>(bytes.data()), bytes.size(),
                GetInternalXMLChPtrFromTString(m_id), false, manager));
        }
        // Streams that Xerces makes from the buffer read these very bytes.
        m_xercesSource->setCopyBufToStream(false);
        if (m_encoding == XercesEncoding::Utf8)
            m_xercesSource->setEncoding(xercesc::XMLUni::fgUTF8EncodingString);
        else if (const auto overlooked = ScannerEncoding::FindOverlooked(bytes);
                 !overlooked.empty())
            m_xercesSource->setEncoding(
                GetInternalXMLChPtrFromTString(TString::fromUtf8(overlooked)));
    });
}
