#include "Targets.h"

#include "support/ByteReader.h"
#include "support/ParseOutcome.h"
#include "support/Require.h"

#include <kescorexml/BinaryInputSource.h>
#include <kescorexml/DOM.h>
#include <kescorexml/DOMElement.h>
#include <kescorexml/DOMParser.h>
#include <kescorexml/StandaloneDOMParser.h>

#include <map>

namespace {

/// The events that a parser would report of the content of an element.
void AddEvents(const StandaloneDOMElement& element, std::vector<std::string>& events)
{
    const auto addElement = [&](const StandaloneDOMElement& child) {
        std::string event = "<" + child.GetName().toStdString();
        const std::map<TString, TString> sorted(child.GetAttributes().begin(),
                                                child.GetAttributes().end());
        for (const auto& [key, value] : sorted)
            event += " " + key.toStdString() + "=" + value.toStdString();
        events.push_back(event + ">");
        AddEvents(child, events);
        events.emplace_back("</>");
    };
    const auto addText = [&](const TString& text) {
        events.push_back("'" + text.toStdString() + "'");
    };
    element.WalkNodes(addElement, addText);
}

void RequireLikeDom(const StandaloneDOMElement& element, const DOMElement& expected)
{
    Require(element.GetName() == expected.GetName(), "both trees have the same names");
    Require(element.GetAttributes() == expected.GetAttributes(), "and attributes");
    Require(element.GetAllText() == expected.GetText(), "and texts");
    const auto children = element.GetChildren();
    Require(children.size() == expected.GetChildren().size(), "and children");
    for (std::size_t i = 0; i < children.size(); ++i)
        RequireLikeDom(children[i], expected.GetChildren()[i]);
}

/// Takes the tree apart and puts it together again.
void RequireSurgery(StandaloneDOMElement& element)
{
    const auto copy = element.Clone();
    Require(*copy == element && !(*copy != element), "a clone is equal");
    const auto children = element.GetChildren();
    if (children.empty())
        return;
    const StandaloneDOMElement& last = children.back();
    const std::size_t texts = element.GetTextNodes().size();
    auto removed = element.RemoveChild(last);
    Require(removed.get() == &last, "the very child is removed");
    Require(*copy != element, "a tree without a child is another");
    Require(element.GetChildren().size() + 1 == copy->GetChildren().size(), "one child is gone");
    Require(element.GetTextNodes().size() == texts, "texts stay");
    RequireSurgery(*removed);
    element.AppendChild(std::move(removed));
    Require(element.GetChildren().size() == copy->GetChildren().size(), "the child is back");
    auto all = element.RemoveChildren();
    Require(!element.HasChildren() && element.GetTextNodes().size() == texts, "texts stay");
    for (auto& child : all)
        element.AppendChild(std::move(child));
    Require(element.GetAllText() == copy->GetAllText(), "texts stay in order");
}

} // namespace

/// The first byte says whether white space is kept.
void FuzzTargets::StandaloneTree(Bytes bytes)
{
    ByteReader reader(bytes);
    const bool keepWhitespace = reader.Below(2) == 1;
    const std::string text = reader.Rest();
    BinaryInputSource source({text.begin(), text.end()}, u"id", false);
    const StandaloneParseResult result =
        StandaloneDOMParser().ParseXmlInputSource(source, keepWhitespace);
    const auto document = DOMParser().ParseXmlInputSource(source, keepWhitespace);
    const ParseOutcome outcome = ParseSource(source);

    Require(ToUtf8(result.errors) == outcome.errors, "errors are those of the parser");
    RequireLikeDom(*result.root, *document->GetRoot());
    if (keepWhitespace && outcome.errors.empty()) {
        std::vector<std::string> events;
        AddEvents(*result.root, events);
        Require(events == outcome.events, "content is in the order of the document");
    }
    RequireSurgery(*result.root);
}
