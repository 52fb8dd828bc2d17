// Prints what a path finds in a document.
//
//     query PATH FILE
//
// "/stations/station/sensor" starts at the document element, "//sensor" finds sensors at any
// depth, "stations/*/note" takes any element for the middle step.

#include <kescorexml/DOM.h>
#include <kescorexml/DOMElement.h>
#include <kescorexml/DOMParser.h>
#include <kescorexml/DOMPath.h>
#include <kescorexml/XMLDomFormatter.h>

#include <iostream>

int main(int argc, char** argv)
{
    if (argc != 3) {
        std::cerr << "Usage: query PATH FILE\n";
        return 2;
    }
    const TString path(argv[1]);
    const DOMParser parser;
    const std::unique_ptr<DOM> document = parser.ParseXmlFile(argv[2]);
    if (document->HasErrors()) {
        std::cerr << document->GetConcatenatedErrors() << '\n';
        return 1;
    }
    const DOMElement& root = *document->GetDocumentRoot();

    // Walk searches as the loop goes on; GetFirst stops at the first match; GetAll gives a vector.
    bool found = false;
    for (const DOMElement& match : DOMPath::Walk(root, path)) {
        std::cout << XMLDomFormatter::RenderAsXMLString(match, nullptr, false);
        found = true;
    }
    return found ? 0 : 1;
}
