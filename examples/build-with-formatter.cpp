// Writes one document twice with the same calls: as text and as a tree.
//
//     build-with-formatter

#include <kescorexml/DOM.h>
#include <kescorexml/DOMElement.h>
#include <kescorexml/XMLDomFormatter.h>
#include <kescorexml/XMLStringFormatter.h>

#include <iostream>

namespace {

/// Works with any formatter.
void WriteReadings(XMLFormatter& formatter)
{
    const unsigned char raw[] = {0x00, 0x01, 0x7F, 0xFF};

    formatter.OutputHeader();
    // An Indenter opens an element and closes it at the end of its block.
    const XMLFormatter::Indenter readings(formatter, u"readings", {{u"station", u"A7"}});
    formatter.OutputComment(u"one hour");
    formatter.OutputContentTag(u"reading",
                               {{u"at", u"12:00"},
                                {u"value", XMLFormatter::FormatDoubleAttribute(-3.5)},
                                {u"checked", XMLFormatter::FormatBooleanAttribute(true)}},
                               u"ice < 1 mm & \"dry\"");
    formatter.OutputTag(u"gap", {{u"minutes", XMLFormatter::FormatIntegerAttribute(10)}});
    const XMLFormatter::Indenter data(formatter, u"data");
    formatter.OutputBinary(raw, sizeof raw);
}

} // namespace

int main()
{
    XMLStringFormatter text(u"  ", false);
    WriteReadings(text);
    std::cout << text.GetOutput() << '\n';

    XMLDomFormatter tree;
    WriteReadings(tree);
    const std::unique_ptr<DOM> document = tree.TakeDocument();
    for (const auto& child : document->GetDocumentRoot()->GetChildren())
        std::cout << child->GetName() << ": " << child->GetAttributes().size()
                  << " attributes, text \"" << child->GetText().trimmed() << "\"\n";
    return 0;
}
