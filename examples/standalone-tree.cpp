// Reads a text with marks in it into the tree that keeps texts and elements in their order, and
// turns the marks into plain text.
//
//     standalone-tree

#include <kescorexml/StandaloneDOMElement.h>
#include <kescorexml/StandaloneDOMParser.h>

#include <iostream>

namespace {

TString ToPlainText(const StandaloneDOMElement& element)
{
    TString text;
    element.WalkNodes(
        [&text](const StandaloneDOMElement& child) {
            const TString mark = child.GetName() == u"b" ? u"*" : u"_";
            text += mark + child.GetAllText() + mark;
        },
        [&text](const TString& part) { text += part; });
    return text;
}

} // namespace

int main()
{
    const StandaloneDOMParser parser;
    const StandaloneParseResult result = parser.ParseXmlString(
        "<note>Readings <b>below -40</b> are checked <i>by hand</i>.</note>", "note.xml");
    for (const TString& error : result.errors)
        std::cerr << error << '\n';
    if (!result.errors.empty())
        return 1;

    // The document element is a child of `root`. It may live on without the rest.
    StandaloneDOMElement* const note = result.root->GetChild(u"note");
    std::cout << ToPlainText(*note) << '\n';
    std::cout << note->GetTextNodes().size() << " texts, " << note->GetChildren().size()
              << " elements\n";

    // Copies are made on demand, and two trees can be compared.
    const std::unique_ptr<StandaloneDOMElement> copy = note->Clone();
    copy->GetChild(u"b")->SetName(u"i");
    std::cout << ToPlainText(*copy) << '\n';
    std::cout << (*copy == *note ? "the same" : "different") << '\n';
    return 0;
}
