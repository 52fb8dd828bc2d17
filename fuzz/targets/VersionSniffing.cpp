#include "Targets.h"

#include "support/ByteReader.h"
#include "support/ParseOutcome.h"
#include "support/Require.h"
#include "support/ScannerModel.h"
#include "support/ScriptedInputSource.h"

#include <kescorexml/DOM.h>
#include <kescorexml/DOMElement.h>
#include <kescorexml/DOMParser.h>
#include <kescorexml/VersionSniffer.h>

namespace {

const TString c_attribute(u"version");

std::optional<VersionNumber> ToVersion(const std::optional<std::string>& value)
{
    if (!value)
        return std::nullopt;
    return VersionNumber(TString::fromStdString(*value), u'.', u'-', 0);
}

/// What is said to be in the root tag by reading all of the text.
std::optional<VersionNumber> SniffByModel(const std::string& xml)
{
    const XmlUtils::StringRange tag = ScannerModel::RootTag(xml);
    if (tag.start == std::string::npos)
        return std::nullopt;
    return ToVersion(ScannerModel::AttributeValue(xml, c_attribute.toStdString(), tag));
}

/// Whether sniffing reads the markup as a parser does. It takes a declaration for ended at its
/// first ">", and "<!-->" for a whole comment; values are taken as they are written.
bool IsPlain(const std::string& xml)
{
    for (const char* special : {"<!D", "<!-->", "<!--->", "&", "\t", "\n", "\r"}) {
        if (xml.find(special) != std::string::npos)
            return false;
    }
    return true;
}

} // namespace

/// The first byte says how many bytes the source delivers at once.
void FuzzTargets::VersionSniffing(Bytes bytes)
{
    ByteReader reader(bytes);
    const std::size_t atOnce = 1 + reader.Byte();
    const std::string xml = reader.Rest();
    ScriptedInputSource source(xml);
    source.DeliverAtMost(atOnce);
    const std::optional<VersionNumber> version = VersionSniffer(source, c_attribute);
    Require(source.Position() == 0, "a document is left at its start");
    Require(version == SniffByModel(xml), "a version is found as the model does");

    const auto document = DOMParser().ParseXmlString(xml, u"id");
    if (document->HasErrors() || !IsPlain(xml))
        return;
    const DOMElement& root = *document->GetDocumentRoot();
    std::optional<std::string> value;
    if (root.HasAttribute(c_attribute))
        value = root.GetAttribute(c_attribute).toStdString();
    Require(version == ToVersion(value), "a version is found as a parser does");
}
