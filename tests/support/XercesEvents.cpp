#include "XercesEvents.h"

#include <xercesc/framework/MemBufInputSource.hpp>
#include <xercesc/sax2/Attributes.hpp>
#include <xercesc/sax2/DefaultHandler.hpp>
#include <xercesc/sax2/SAX2XMLReader.hpp>
#include <xercesc/sax2/XMLReaderFactory.hpp>
#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/util/SecurityManager.hpp>
#include <xercesc/util/XMLUni.hpp>

#include <map>
#include <memory>

namespace {

/// Enough for documents of tests; more could take for ever.
constexpr XMLSize_t c_maximumEntities = 100;

using Restore = std::function<std::u16string(const std::u16string&)>;

class EventWriter : public xercesc::DefaultHandler
{
public:
    explicit EventWriter(const Restore& restore) : m_restore(restore) {}

    void startElement(const XMLCh*, const XMLCh*, const XMLCh* qname,
                      const xercesc::Attributes& attributes) override
    {
        std::map<std::u16string, std::u16string> sorted;
        for (XMLSize_t i = 0; i < attributes.getLength(); ++i) {
            const std::u16string name = m_restore(attributes.getQName(i));
            if (!name.empty())
                sorted[name] = attributes.getValue(i);
        }
        m_events += std::u16string(u"\nstart ") + qname;
        for (const auto& [name, value] : sorted)
            m_events += u"\n  " + name + u"=" + value;
        m_events += u"\n";
    }
    void endElement(const XMLCh*, const XMLCh*, const XMLCh* qname) override
    {
        m_events += std::u16string(u"\nend ") + qname + u"\n";
    }
    void characters(const XMLCh* text, XMLSize_t length) override { m_events.append(text, length); }
    void processingInstruction(const XMLCh* target, const XMLCh* data) override
    {
        m_events += std::u16string(u"\ninstruction ") + target + u" " + data + u"\n";
    }
    void comment(const XMLCh* text, XMLSize_t length) override
    {
        m_events += u"\ncomment " + std::u16string(text, length) + u"\n";
    }
    void startCDATA() override { m_events += u"\ncdata "; }
    void endCDATA() override { m_events += u"\n"; }
    void fatalError(const xercesc::SAXParseException&) override { m_isBroken = true; }

    std::optional<std::u16string> GetEvents() const
    {
        return m_isBroken ? std::nullopt : std::optional(m_events);
    }

private:
    const Restore& m_restore;
    std::u16string m_events;
    bool m_isBroken = false;
};

} // namespace

std::optional<std::u16string> ReadEvents(const std::string& xml, const Restore& restore)
{
    [[maybe_unused]] static const bool isInitialized =
        (xercesc::XMLPlatformUtils::Initialize(), true);
    EventWriter writer(restore);
    xercesc::SecurityManager security;
    security.setEntityExpansionLimit(c_maximumEntities);
    const std::unique_ptr<xercesc::SAX2XMLReader> reader(
        xercesc::XMLReaderFactory::createXMLReader());
    reader->setFeature(xercesc::XMLUni::fgSAX2CoreNameSpaces, false);
    reader->setFeature(xercesc::XMLUni::fgSAX2CoreNameSpacePrefixes, true);
    reader->setFeature(xercesc::XMLUni::fgSAX2CoreValidation, false);
    reader->setFeature(xercesc::XMLUni::fgXercesLoadExternalDTD, false);
    reader->setProperty(xercesc::XMLUni::fgXercesSecurityManager, &security);
    reader->setContentHandler(&writer);
    reader->setLexicalHandler(&writer);
    reader->setErrorHandler(&writer);
    const xercesc::MemBufInputSource source(reinterpret_cast<const XMLByte*>(xml.data()),
                                            xml.size(), "test", false);
    reader->parse(source);
    return writer.GetEvents();
}
