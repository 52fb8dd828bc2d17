#pragma once

#include "bytes/XercesText.h"

#include <xercesc/framework/XMLDocumentHandler.hpp>

/// Notes whether the XML declaration of a document names another version than 1.0. Installed while
/// the prolog is read, before any element comes.
class XmlVersionWatch : public xercesc::XMLDocumentHandler
{
public:
    bool SawOtherVersion() const noexcept { return m_sawOtherVersion; }

    void XMLDecl(const XMLCh* version, const XMLCh* /*encoding*/, const XMLCh* /*standalone*/,
                 const XMLCh* /*actualEncoding*/) override
    {
        m_sawOtherVersion = ViewXMLCh(version) != u"1.0";
    }

    void docCharacters(const XMLCh*, XMLSize_t, bool) override {}
    void docComment(const XMLCh*) override {}
    void docPI(const XMLCh*, const XMLCh*) override {}
    void endDocument() override {}
    void endElement(const xercesc::XMLElementDecl&, unsigned int, bool, const XMLCh*) override {}
    void endEntityReference(const xercesc::XMLEntityDecl&) override {}
    void ignorableWhitespace(const XMLCh*, XMLSize_t, bool) override {}
    void resetDocument() override {}
    void startDocument() override {}
    void startElement(const xercesc::XMLElementDecl&, unsigned int, const XMLCh*,
                      const xercesc::RefVectorOf<xercesc::XMLAttr>&, XMLSize_t, bool, bool) override
    {
    }
    void startEntityReference(const xercesc::XMLEntityDecl&) override {}

private:
    bool m_sawOtherVersion = false;
};
