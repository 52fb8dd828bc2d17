// One that needs what is compiled into the libraries: translations and schemas.
#include <kescorexml/CoreXml.h>
#include <kescorexml/InputSource.h>
#include <kescorexml/XSDResources.h>

#include <iostream>

int main()
{
    std::cout << CoreXml::LookupTStr(CoreXml::StringId::IDS_ERR_XML_ENTITY, u"de_DE") << '\n';
    const auto schema = XSDResources::GetVersionedXsdInputSource(
        XmlFileType::Zap, VersionNumber(TString(u"18.1"), u'.', u'-', 0));
    std::cout << (schema->Size() > 100 ? "a schema" : "nothing") << '\n';
}
