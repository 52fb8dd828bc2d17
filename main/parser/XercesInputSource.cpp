#include "XercesInputSource.h"

#include "DeclaredEncoding.h"
#include "GuardedUtf8Source.h"
#include "Utf8Guard.h"
#include "XercesColonSanitizer.h"
#include "XercesMemory.h"
#include "XercesText.h"

#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/util/XMLUni.hpp>

XercesInputSource::XercesInputSource(const std::shared_ptr<const std::string>& data,
                                     std::size_t start, const TString& id, ColonProcessingMode mode,
                                     XercesEncoding encoding)
    : m_data(data), m_start(start), m_encoding(encoding)
{
    SetupXercesBuffer(start, id, mode, encoding);
}

XercesInputSource::XercesInputSource(std::shared_ptr<const std::string>&& data, std::size_t start,
                                     const TString& id, ColonProcessingMode mode,
                                     XercesEncoding encoding)
    : m_data(std::move(data)), m_start(start), m_encoding(encoding)
{
    SetupXercesBuffer(start, id, mode, encoding);
}

void XercesInputSource::SetupXercesBuffer(std::size_t start, const TString& id,
                                          ColonProcessingMode mode, XercesEncoding encoding)
{
    if (mode == ColonProcessingMode::EncodeColonAttributes)
        m_data = XercesColonSanitizer::EncodeColonAttributeNames(m_data);
    const std::string_view bytes = std::string_view(*m_data).substr(start);
    auto* const manager = xercesc::XMLPlatformUtils::fgMemoryManager;
    WithXercesMemory([&] {
        if (encoding == XercesEncoding::Utf8 || Utf8Guard::IsReadAsUtf8(bytes))
            m_xercesSource.reset(new (manager) GuardedUtf8Source(bytes, id, manager));
        else
            m_xercesSource.reset(new (manager) xercesc::MemBufInputSource(
                reinterpret_cast<const XMLByte*>(bytes.data()), bytes.size(),
                GetInternalXMLChPtrFromTString(id), false, manager));
        // Streams that Xerces makes from the buffer read these very bytes.
        m_xercesSource->setCopyBufToStream(false);
        if (encoding == XercesEncoding::Utf8)
            m_xercesSource->setEncoding(xercesc::XMLUni::fgUTF8EncodingString);
        else if (const auto overlooked = DeclaredEncoding::FindOverlooked(bytes);
                 !overlooked.empty())
            m_xercesSource->setEncoding(
                GetInternalXMLChPtrFromTString(TString::fromUtf8(overlooked)));
    });
}
