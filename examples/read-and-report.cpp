// Reads a document and says what is in it, or what is wrong with it and where.
//
//     read-and-report FILE

#include <kescorexml/DOM.h>
#include <kescorexml/DOMElement.h>
#include <kescorexml/DOMParser.h>

#include <iostream>

namespace {

void Report(const DOMElement& station)
{
    std::cout << station.GetAttribute(u"id") << ", " << station.GetAttribute(u"name") << " (line "
              << station.GetStartLine() << ")\n";
    if (const DOMElement* position = station.GetChild(u"position"))
        std::cout << "    at " << position->GetAttribute(u"latitude") << ", "
                  << position->GetAttribute(u"longitude") << '\n';
    for (const auto& child : station.GetChildren()) {
        if (child->GetName() != u"sensor")
            continue;
        std::cout << "    " << child->GetAttribute(u"kind") << " in "
                  << child->GetAttribute(u"unit");
        if (child->HasText())
            std::cout << ", " << child->GetText();
        std::cout << '\n';
    }
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 2) {
        std::cerr << "Usage: read-and-report FILE\n";
        return 2;
    }
    DOMParser parser;
    parser.SetEnableLineNumbersOnElements(true);
    const std::unique_ptr<DOM> document = parser.ParseXmlFile(argv[1]);

    // A parse never throws because of what it reads; it writes its errors down in the document.
    if (document->HasErrors()) {
        std::cout << document->GetConcatenatedErrors() << '\n';
        return 1;
    }
    const DOMElement& network = *document->GetDocumentRoot();
    std::cout << "Network " << network.GetAttribute(u"network") << ", updated "
              << network.GetAttribute(u"updated") << '\n';
    for (const auto& station : network.GetChildren())
        Report(*station);
    return 0;
}
