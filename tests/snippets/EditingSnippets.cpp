#include <kescorexml/DOM.h>
#include <kescorexml/DOMElement.h>
#include <kescorexml/DOMParser.h>
#include <kescorexml/DOMPath.h>
#include <kescorexml/StandaloneDOMElement.h>
#include <kescorexml/XMLDomFormatter.h>

#include <gmock/gmock.h>

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace {

std::unique_ptr<DOM> Parse(const char* xml)
{
    return DOMParser().ParseXmlString(xml, "snippet");
}

/// The names of an element and of all below it: "r(a,b(c))".
std::string Outline(const DOMElement& element)
{
    std::string text = element.GetName().toStdString();
    const char* separator = "(";
    for (const auto& child : element.GetChildren())
        text += std::exchange(separator, ",") + Outline(*child);
    return element.HasChildren() ? text + ")" : text;
}

} // namespace

TEST(EditingSnippets, ANewDocument)
{
    DOM document;
    DOMElement& list = *document.GetRoot()->AddNewChild(u"list");
    list.AddNewChild(u"item")->SetText(u"tea");
    EXPECT_EQ(document.GetDocumentRoot(), &list);
    EXPECT_EQ(Outline(*document.GetRoot()), "Document(list(item))");
}

TEST(EditingSnippets, AnElementWithoutADocument)
{
    DOMElement list(u"list");
    list.AddNewChild(u"item");
    EXPECT_EQ(list.GetDOMManager(), nullptr);
    EXPECT_EQ(Outline(list), "list(item)");
}

TEST(EditingSnippets, ATextIsSet)
{
    const auto document = Parse("<a>old</a>");
    document->GetDocumentRoot()->SetText(u"new");
    document->GetDocumentRoot()->AppendText(u" and more");
    EXPECT_EQ(document->GetDocumentRoot()->GetText(), u"new and more");
}

TEST(EditingSnippets, AttributesAreSetAndRemoved)
{
    DOMElement a(u"a");
    a.SetAttribute(u"x", u"1");
    a.SetAttribute(u"x", u"2");
    a.SetAttribute(u"y", TString::number(3.5));
    a.RemoveAttribute(u"z");
    EXPECT_EQ(a.GetAttribute(u"x") + a.GetAttribute(u"y"), u"23.5");
    a.RemoveAttribute(u"x");
    EXPECT_FALSE(a.HasAttribute(u"x"));
}

TEST(EditingSnippets, AllAttributesAtOnce)
{
    DOMElement a(u"a");
    a.SetAttributes({{u"x", u"1"}, {u"y", u"2"}});
    for (auto& [name, value] : a.GetAttributes())
        value = name + value;
    EXPECT_EQ(a.GetAttribute(u"x"), u"x1");
    EXPECT_EQ(a.GetAttribute(u"y"), u"y2");
    a.SetAttributes({});
    EXPECT_FALSE(a.HasAttributes());
}

TEST(EditingSnippets, AttributesOfAnotherElement)
{
    DOMElement to(u"to");
    to.SetAttribute(u"x", u"own");
    DOMElement from(u"from");
    from.SetAttributes({{u"x", u"other"}, {u"y", u"other"}});
    to.AdoptAttributes(from, false);
    EXPECT_EQ(to.GetAttribute(u"x") + to.GetAttribute(u"y"), u"ownother");
    EXPECT_FALSE(from.HasAttributes());
}

TEST(EditingSnippets, AnElementIsRenamed)
{
    const auto document = Parse("<a><b>x</b></a>");
    document->GetElement(u"b")->SetName(u"c");
    EXPECT_EQ(document->GetDocumentRoot()->GetChildText(u"c"), u"x");
}

TEST(EditingSnippets, AChildIsInsertedBeforeAnother)
{
    const auto document = Parse("<r><a/><c/></r>");
    DOMElement& r = *document->GetDocumentRoot();
    r.AddNewChild(u"b", r.GetChild(u"c"));
    EXPECT_EQ(Outline(r), "r(a,b,c)");
    r.InsertChild(std::make_unique<DOMElement>(u"first"), &r.GetChildren().front());
    EXPECT_EQ(Outline(r), "r(first,a,b,c)");
}

TEST(EditingSnippets, AChildThatIsMadeWhereItIsMissing)
{
    const auto document = Parse("<r><a>1</a></r>");
    DOMElement& r = *document->GetDocumentRoot();
    EXPECT_EQ(r.GetOrNewChild(u"a")->GetText(), u"1");
    r.GetOrNewChild(u"b")->SetText(u"2");
    EXPECT_EQ(Outline(r), "r(a,b)");
}

TEST(EditingSnippets, AChildIsRemoved)
{
    const auto document = Parse("<r><a/><b/><c/></r>");
    DOMElement& r = *document->GetDocumentRoot();
    r.RemoveChild(u"a");
    r.RemoveChild(r.GetChildren().back());
    EXPECT_EQ(r.RemoveChild(u"none"), nullptr);
    EXPECT_EQ(Outline(r), "r(b)");
}

TEST(EditingSnippets, AllChildrenAreRemoved)
{
    const auto document = Parse("<r><a/><b/></r>");
    const auto removed = document->GetDocumentRoot()->RemoveChildren();
    EXPECT_EQ(removed.size(), 2U);
    EXPECT_FALSE(document->GetDocumentRoot()->HasChildren());
}

TEST(EditingSnippets, EmptyChildrenAreRemoved)
{
    const auto document = Parse("<r><a/><b>x</b></r>");
    DOMElement& r = *document->GetDocumentRoot();
    EXPECT_NE(r.RemoveIfEmpty(u"a"), nullptr);
    EXPECT_EQ(r.RemoveIfEmpty(u"b"), nullptr);
    EXPECT_EQ(Outline(r), "r(b)");
}

TEST(EditingSnippets, MatchesAreRemovedWhileTheyAreVisited)
{
    const auto document = Parse("<r><old/><a><old/></a><b/></r>");
    DOMPath::Foreach(*document->GetDocumentRoot(), u"//old",
                     [](DOMElement& old) { old.GetParent()->RemoveChild(old); });
    EXPECT_EQ(Outline(*document->GetDocumentRoot()), "r(a,b)");
}

TEST(EditingSnippets, AnElementMovesWithinItsDocument)
{
    const auto document = Parse("<r><a><x/></a><b><y/></b></r>");
    document->GetElement(u"x")->Move(*document->GetElement(u"b"), document->GetElement(u"y"));
    EXPECT_EQ(Outline(*document->GetDocumentRoot()), "r(a,b(x,y))");
}

TEST(EditingSnippets, AnElementMovesToAnotherDocument)
{
    const auto from = Parse("<r><a><x/></a></r>");
    const auto to = Parse("<r/>");
    to->GetDocumentRoot()->AppendChild(from->GetDocumentRoot()->RemoveChild(u"a"));
    EXPECT_EQ(Outline(*from->GetDocumentRoot()), "r");
    EXPECT_EQ(Outline(*to->GetDocumentRoot()), "r(a(x))");
    EXPECT_EQ(to->GetElement(u"x")->GetDOMManager(), to.get());
}

TEST(EditingSnippets, AnElementIsAdopted)
{
    const auto document = Parse("<r><a><x/></a><b/></r>");
    document->GetElement(u"b")->Adopt(*document->GetElement(u"x"), nullptr);
    EXPECT_EQ(Outline(*document->GetDocumentRoot()), "r(a,b(x))");
}

TEST(EditingSnippets, AnElementThatAdoptsItselfStaysWhereItIs)
{
    const auto document = Parse("<r><a/><b/></r>");
    DOMElement& a = *document->GetElement(u"a");
    a.Adopt(a, nullptr);
    EXPECT_EQ(Outline(*document->GetDocumentRoot()), "r(a,b)");
}

TEST(EditingSnippets, AllChildrenAreAdopted)
{
    const auto document = Parse("<r><a><x/><y/></a><b><z/></b></r>");
    document->GetElement(u"b")->AdoptChildren(*document->GetElement(u"a"),
                                              document->GetElement(u"z"));
    EXPECT_EQ(Outline(*document->GetDocumentRoot()), "r(a,b(x,y,z))");
}

TEST(EditingSnippets, AnElementIsUnwrapped)
{
    const auto document = Parse("<r><a/><wrap><x/><y/></wrap><b/></r>");
    DOMElement& r = *document->GetDocumentRoot();
    DOMElement& wrap = *r.GetChild(u"wrap");
    r.AdoptChildren(wrap, &wrap);
    r.RemoveChild(wrap);
    EXPECT_EQ(Outline(r), "r(a,x,y,b)");
}

TEST(EditingSnippets, AnElementIsWrapped)
{
    const auto document = Parse("<r><a/><b/><c/></r>");
    DOMElement& r = *document->GetDocumentRoot();
    DOMElement& b = *r.GetChild(u"b");
    r.AddNewChild(u"wrap", &b)->Adopt(b, nullptr);
    EXPECT_EQ(Outline(r), "r(a,wrap(b),c)");
}

TEST(EditingSnippets, AChildComesFirst)
{
    const auto document = Parse("<r><a/><b/><c/></r>");
    document->GetElement(u"c")->MoveToFront();
    EXPECT_EQ(Outline(*document->GetDocumentRoot()), "r(c,a,b)");
}

TEST(EditingSnippets, AnElementIsCopied)
{
    const auto document = Parse("<r><a x='1'><b/></a></r>");
    DOMElement& r = *document->GetDocumentRoot();
    DOMElement* copy = r.AppendChild(std::make_unique<DOMElement>(*r.GetChild(u"a")));
    copy->SetAttribute(u"x", u"2");
    EXPECT_EQ(Outline(r), "r(a(b),a(b))");
    EXPECT_EQ(r.GetChild(u"a")->GetAttribute(u"x"), u"1");
}

TEST(EditingSnippets, ADocumentIsCopied)
{
    const auto document = Parse("<r><a/></r>");
    DOM copy;
    copy.DeepCopy(*document);
    EXPECT_TRUE(copy == *document);
    copy.GetElement(u"a")->SetText(u"x");
    EXPECT_TRUE(copy != *document);
}

TEST(EditingSnippets, ElementsAreCompared)
{
    EXPECT_TRUE(*Parse("<a x='1' y='2'><b/></a>") == *Parse("<a y='2' x='1'>\n<b></b></a>"));
    EXPECT_TRUE(*Parse("<a><b/><c/></a>") != *Parse("<a><c/><b/></a>"));
}

TEST(EditingSnippets, AFunctionReturnsAnElement)
{
    const auto makeItem = [](const char16_t* text) {
        DOMElement item(u"item");
        item.SetText(text);
        return item;
    };
    DOMElement item = makeItem(u"tea");
    EXPECT_EQ(item.GetText(), u"tea");
    item = makeItem(u"coffee");
    EXPECT_EQ(item.GetText(), u"coffee");
}

TEST(EditingSnippets, ElementsInContainers)
{
    std::vector<DOMElement> list;
    for (int i = 0; i < 10; ++i)
        list.emplace_back(u"e").SetText(TString::number(i));
    list.erase(list.begin());
    EXPECT_EQ(list.front().GetText(), u"1");
    std::map<TString, DOMElement> byName;
    byName.emplace(u"last", std::move(list.back()));
    EXPECT_EQ(byName.at(u"last").GetText(), u"9");
    std::optional<DOMElement> chosen;
    chosen = list[3];
    EXPECT_EQ(chosen->GetText(), u"4");
}

TEST(EditingSnippets, AnElementOnTheStackIsMovedIntoATree)
{
    DOMElement item(u"item");
    item.AddNewChild(u"detail");
    const DOMElement* detail = item.GetChild(u"detail");
    DOM document;
    document.GetRoot()->AppendChild(std::make_unique<DOMElement>(std::move(item)));
    EXPECT_EQ(document.GetElement(u"detail"), detail) << "no copy was made";
    EXPECT_FALSE(item.HasChildren());
}

TEST(EditingSnippets, ATreeFromFormatterCalls)
{
    XMLDomFormatter formatter;
    {
        const XMLFormatter::Indenter list(formatter, u"list");
        formatter.OutputContentTag(u"item", {{u"cups", u"2"}}, u"tea");
        formatter.OutputTag(u"gap", {});
    }
    const auto document = formatter.TakeDocument();
    EXPECT_EQ(Outline(*document->GetDocumentRoot()), "list(item,gap)");
}

TEST(EditingSnippets, AStandaloneTree)
{
    StandaloneDOMElement p(u"p");
    p.AppendText(u"some ");
    auto bold = std::make_unique<StandaloneDOMElement>(u"b");
    bold->AppendText(u"bold");
    p.AppendChild(std::move(bold));
    p.AppendText(u" text");
    EXPECT_EQ(p.GetAllText(), u"some  text");
    EXPECT_EQ(p.GetChild(u"b")->GetAllText(), u"bold");
    EXPECT_TRUE(*p.Clone() == p);
}
