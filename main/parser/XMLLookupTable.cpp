#include <kescorexml/XMLLookupTable.h>

#include <kescorexml/DOM.h>
#include <kescorexml/DOMElement.h>
#include <kescorexml/DOMParser.h>
#include <kescorexml/XMLStringFormatter.h>

namespace {

constexpr const char16_t* c_packTag = u"pack";

} // namespace

namespace XmlUtils {

TString PackStringLookupTableIntoXML(const std::unordered_map<TString, TString>& map,
                                     bool suppressNewlines)
{
    if (map.empty())
        return {};
    XMLStringFormatter formatter(TString(), suppressNewlines);
    {
        const XMLFormatter::Indenter pack(formatter, c_packTag, map);
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
    const DOMElement* pack = std::as_const(*document).GetRoot()->GetChild(c_packTag);
    return pack == nullptr ? std::unordered_map<TString, TString>() : pack->GetAttributes();
}

} // namespace XmlUtils
