#include <kescorexml/XercesXMLParser.h>

#include "base/Assertion.h"
#include "base/KesErrors.h"
#include "bytes/XercesMemory.h"
#include "scanner/XercesXMLParserImpl.h"

#include <kesplatform/Resources.h>

XercesXMLParser::~XercesXMLParser() = default;

std::unique_ptr<XercesXMLParser> XercesXMLParser::Create(InputSource& source,
                                                         std::shared_ptr<SAXInterface> sink)
{
    return WithXercesMemory(
        [&] { return std::make_unique<XercesXMLParserImpl>(source, std::move(sink)); });
}

void XercesXMLParser::LoadXSDResource(const TString& resourceAlias)
{
    LoadXSDString(UTF8StringTResource(resourceAlias).GetString(), resourceAlias);
}

void ThrowInEvent()
{
    ThrowAssertion(u"XercesXMLParser", __LINE__, u"!m_isParsing",
                   KesErrorsError::LogicAssert_0x5E1D70C4());
}

void ThrowNoXercesSource()
{
    ThrowAssertion(u"XercesXMLParser", __LINE__, u"xercesableSource != nullptr",
                   KesErrorsError::LogicAssert_0x7C41D09B());
}
