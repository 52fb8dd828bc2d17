#include <kescorexml/XMLLookupTable.h>

#include "writing/CompleteStringFormatter.h"

#include <kescorexml/DOM.h>
#include <kescorexml/DOMElement.h>
#include <kescorexml/DOMParser.h>
#include <kescorexml/XMLTokens.h>

namespace XmlUtils {

TString PackStringLookupTableIntoXML(const std::unordered_map<TString, TString>& map,
                                     bool suppressNewlines)
{
    if (map.empty())
        return {};
    CompleteStringFormatter formatter(TString(), suppressNewlines);
    {
        const XMLFormatter::Indenter pack(formatter, XMLTokens::tagPack, map);
    }
    return formatter.GetOutput();
}

std::unordered_map<TString, TString> UnpackStringLookupTableFromXML(const TString& xml)
{
    if (xml.IsEmpty())
        return {};
    const std::unique_ptr<DOM> document = DOMParser().ParseXmlString(xml, TString());
    if (document->HasErrors())
        return {};
    const DOMElement* pack = std::as_const(*document).GetRoot()->GetChild(XMLTokens::tagPack);
    return pack == nullptr ? std::unordered_map<TString, TString>() : pack->GetAttributes();
}

} // namespace XmlUtils
