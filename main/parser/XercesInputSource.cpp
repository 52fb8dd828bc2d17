#include "XercesInputSource.h"

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
                                     std::size_t start, const TString& id, ColonProcessingMode mode)
    : m_data(data)
{
    SetupXercesBuffer(start, id, mode);
}

XercesInputSource::XercesInputSource(std::shared_ptr<const std::string>&& data, std::size_t start,
                                     const TString& id, ColonProcessingMode mode)
    : m_data(std::move(data))
{
    SetupXercesBuffer(start, id, mode);
}

XercesInputSource::~XercesInputSource() = default;

void XercesInputSource::ReadAsUtf8()
{
    m_xercesSource->setEncoding(xercesc::XMLUni::fgUTF8EncodingString);
}

void XercesInputSource::SetupXercesBuffer(std::size_t start, const TString& id,
                                          ColonProcessingMode mode)
{
    if (mode == ColonProcessingMode::EncodeColonAttributes)
        m_data = Sanitize(m_data);
    auto* const manager = xercesc::XMLPlatformUtils::fgMemoryManager;
    const auto* const bytes = reinterpret_cast<const XMLByte*>(m_data->data());
    m_xercesSource.reset(new (manager) xercesc::MemBufInputSource(
        bytes + start, m_data->size() - start, GetInternalXMLChPtrFromTString(id), false, manager));
    // Streams that Xerces makes from the buffer read these very bytes.
    m_xercesSource->setCopyBufToStream(false);
}
