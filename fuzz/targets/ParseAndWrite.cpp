#include "Targets.h"

#include "support/Require.h"
#include "support/WrittenTree.h"

#include <kescorexml/DOMElement.h>
#include <kescorexml/DOMParser.h>
#include <kescorexml/XMLDomFormatter.h>

/// Parses, writes and parses again.
void FuzzTargets::ParseAndWrite(Bytes bytes)
{
    const DOMParser parser;
    const auto document = parser.ParseXmlBytes({bytes.begin(), bytes.end()});
    if (document->HasErrors())
        return;
    const DOMElement& element = *document->GetDocumentRoot();
    const TString written = XMLDomFormatter::RenderAsXMLString(*document, nullptr, true);
    if (!WrittenTree::IsTreeWritable(element))
        return;

    const auto again = parser.ParseXmlString(written, u"written");
    RequireEqual(again->GetConcatenatedErrors(), TString(), "what was written can be parsed");
    WrittenTree::RequireReadBack(*again->GetDocumentRoot(), element, 0);
    if (*again == *document)
        RequireEqual(XMLDomFormatter::RenderAsXMLString(*again, nullptr, true), written,
                     "an equal tree is written alike");
}
