#include <kescorexml/DOM.h>
#include <kescorexml/DOMBuilder.h>
#include <kescorexml/DOMElement.h>
#include <kescorexml/SAXFileLocation.h>

#include <gtest/gtest.h>

namespace {

class CountingLocation : public SAXFileLocation
{
public:
    void GetCurrentLocation(int& line, int& column) override
    {
        line = ++calls;
        column = 10 * calls;
    }
    int calls = 0;
};

} // namespace

TEST(DOMBuilder, BeginsAtTheRootOfTheDocument)
{
    DOM dom;
    const DOMBuilder builder(dom, false);
    EXPECT_EQ(builder.PeekStack(), dom.GetRoot());
}

TEST(DOMBuilder, GrowsTheTreeUnderTheOpenElement)
{
    DOM dom;
    DOMBuilder builder(dom, false);
    builder.StartElement(u"a", {{u"x", u"1"}, {u"y", u"2"}});
    DOMElement* const a = dom.GetDocumentRoot();
    ASSERT_NE(a, nullptr);
    EXPECT_EQ(builder.PeekStack(), a);
    EXPECT_EQ(a->GetDOMManager(), &dom);
    EXPECT_EQ(a->GetAttributes(),
              (std::unordered_map<TString, TString>{{u"x", u"1"}, {u"y", u"2"}}));
    builder.StartElement(u"b", {});
    builder.TextContent(u"inner");
    builder.EndElement();
    builder.TextContent(u"after");
    builder.StartElement(u"c", {});
    builder.EndElement();
    builder.EndElement();
    EXPECT_EQ(builder.PeekStack(), dom.GetRoot());

    ASSERT_EQ(a->GetChildren().size(), 2U);
    EXPECT_EQ(a->GetChildText(u"b"), u"inner");
    EXPECT_EQ(a->GetChildren()[1].GetName(), u"c");
    EXPECT_EQ(a->GetText(), u"after");
    EXPECT_FALSE(a->IsEncoded());
}

TEST(DOMBuilder, DropsWhitespaceAloneAndKeepsOtherTextWhole)
{
    DOM dom;
    DOMBuilder builder(dom, false);
    builder.StartElement(u"a", {});
    builder.TextContent(u" \t\n\v\f\r ");
    EXPECT_FALSE(builder.PeekStack()->HasText());
    builder.TextContent(u" x ");
    builder.TextContent(u"\n");
    builder.TextContent(u" y\n");
    EXPECT_EQ(builder.PeekStack()->GetText(), u" x  y\n");
}

TEST(DOMBuilder, TakesANoBreakSpaceForText)
{
    DOM dom;
    DOMBuilder builder(dom, false);
    builder.StartElement(u"a", {});
    builder.TextContent(u" \u00A0");
    EXPECT_EQ(builder.PeekStack()->GetText(), u" \u00A0");
}

TEST(DOMBuilder, KeepsWhitespaceWhenTold)
{
    DOM dom;
    DOMBuilder builder(dom, true);
    builder.StartElement(u"a", {});
    builder.TextContent(u" ");
    builder.TextContent(u"x");
    builder.TextContent(u"\n");
    EXPECT_EQ(builder.PeekStack()->GetText(), u" x\n");
}

TEST(DOMBuilder, RecordsPositionsWhileItHasALocation)
{
    DOM dom;
    CountingLocation location;
    DOMBuilder builder(dom, false);
    builder.StartElement(u"a", {});
    DOMElement* const a = builder.PeekStack();
    builder.SetLocationInterface(&location);
    builder.StartElement(u"b", {});
    DOMElement* const b = builder.PeekStack();
    builder.TextContent(u"x");
    builder.EndElement();
    builder.SetLocationInterface(nullptr);
    builder.EndElement();
    EXPECT_EQ(b->GetStartLine(), 1);
    EXPECT_EQ(b->GetStartColumn(), 10);
    EXPECT_EQ(b->GetEndLine(), 2);
    EXPECT_EQ(b->GetEndColumn(), 20);
    EXPECT_EQ(a->GetStartLine(), 0);
    EXPECT_EQ(a->GetEndColumn(), 0);
    EXPECT_EQ(location.calls, 2);
}

TEST(DOMBuilder, RecordsZerosWhereTheLocationIsUnknown)
{
    class UnknownLocation : public SAXFileLocation
    {
    public:
        void GetCurrentLocation(int& /*line*/, int& /*column*/) override {}
    };
    DOM dom;
    UnknownLocation location;
    DOMBuilder builder(dom, false);
    builder.SetLocationInterface(&location);
    builder.StartElement(u"a", {});
    const DOMElement& a = *builder.PeekStack();
    builder.EndElement();
    EXPECT_EQ(a.GetStartLine(), 0);
    EXPECT_EQ(a.GetStartColumn(), 0);
    EXPECT_EQ(a.GetEndLine(), 0);
    EXPECT_EQ(a.GetEndColumn(), 0);
}

TEST(DOMBuilder, IsNeverDone)
{
    DOM dom;
    DOMBuilder builder(dom, false);
    EXPECT_FALSE(builder.IsDone());
}
