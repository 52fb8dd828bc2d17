#include "XercesInputSource.h"

#include "Utf8Guard.h"
#include "XercesColonSanitizer.h"
#include "XercesText.h"

#include <kesplatform/LogicException.h>

#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/util/XMLUni.hpp>

namespace {

std::shared_ptr<const std::string> Sanitize(const std::shared_ptr<const std::string>& data)
{
    try {
        return XercesColonSanitizer::EncodeColonAttributeNames(data);
    } catch (const LogicException&) {
        // Something that looks like an attribute in a text without any root tag. The text goes to
        // the scanner as it is, which says what is wrong with it.
        return data;
    }
}

} // namespace

XercesInputSource::XercesInputSource(const std::shared_ptr<const std::string>& data,
                                     std::size_t start, const TString& id, ColonProcessingMode mode,
                                     XercesEncoding encoding)
    : m_data(data)
{
    SetupXercesBuffer(start, id, mode, encoding);
}

XercesInputSource::XercesInputSource(std::shared_ptr<const std::string>&& data, std::size_t start,
                                     const TString& id, ColonProcessingMode mode,
                                     XercesEncoding encoding)
    : m_data(std::move(data))
{
    SetupXercesBuffer(start, id, mode, encoding);
}

XercesInputSource::~XercesInputSource() = default;

void XercesInputSource::SetupXercesBuffer(std::size_t start, const TString& id,
                                          ColonProcessingMode mode, XercesEncoding encoding)
{
    if (mode == ColonProcessingMode::EncodeColonAttributes)
        m_data = Sanitize(m_data);
    if (encoding == XercesEncoding::Utf8 ||
        Utf8Guard::IsReadAsUtf8(std::string_view(*m_data).substr(start)))
        m_data = Utf8Guard::RefuseBeyondLastCharacter(m_data);
    auto* const manager = xercesc::XMLPlatformUtils::fgMemoryManager;
    const auto* const bytes = reinterpret_cast<const XMLByte*>(m_data->data());
    m_xercesSource.reset(new (manager) xercesc::MemBufInputSource(
        bytes + start, m_data->size() - start, GetInternalXMLChPtrFromTString(id), false, manager));
    // Streams that Xerces makes from the buffer read these very bytes.
    m_xercesSource->setCopyBufToStream(false);
    if (encoding == XercesEncoding::Utf8)
        m_xercesSource->setEncoding(xercesc::XMLUni::fgUTF8EncodingString);
}
