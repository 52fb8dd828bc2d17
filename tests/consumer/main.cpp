#include <kescorexml/DOM.h>
#include <kescorexml/DOMElement.h>
#include <kescorexml/DOMException.h>
#include <kescorexml/DOMParser.h>
#include <kescorexml/DOMPath.h>
#include <kescorexml/XMLDomFormatter.h>

#include <iostream>

int main()
{
    const DOMParser parser;
    const auto document =
        parser.ParseXmlString("<list><item key='1'>one</item><item>two</item></list>", "list");
    for (const DOMElement* item :
         DOMPath::GetAll<const DOMElement>(*document->GetDocumentRoot(), u"//item"))
        std::cout << item->GetText() << '\n';
    try {
        document->GetDocumentRoot()->GetRequiredChild(u"name");
    } catch (const DOMException& e) {
        std::cout << e.GetMessagesFront() << '\n';
    }
    const auto broken = parser.ParseXmlString("<list><item></list>", "broken");
    std::cout << (broken->HasErrors() ? "broken" : "fine") << '\n';
    std::cout << XMLDomFormatter::RenderAsXMLString(*document, nullptr, true);
}
