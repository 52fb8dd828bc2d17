#include <kescorexml/DOM.h>
#include <kescorexml/DOMBuilder.h>
#include <kescorexml/DOMElement.h>
#include <kescorexml/SAXFileLocation.h>

#include "support/FailingAllocations.h"

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <new>
#include <thread>
#include <vector>

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

/// A list of items of which some lose, get or give away children while they are open, and some are
/// moved.
template <typename Start, typename End>
void GrowAndEdit(DOMElement& other, const Start& start, const End& end)
{
    DOMElement* const list = start(u"list");
    for (int i = 0; i < 100; ++i) {
        DOMElement* const item = start(u"item");
        for (int child = 0; child < i % 20; ++child) {
            start(TString::number(child));
            end();
            if (child % 5 == 3)
                item->RemoveChild(item->GetChildren()[1]);
            if (child % 5 == 4)
                item->AddNewChild(u"added", &item->GetChildren()[0]);
            if (child == 10)
                other.AdoptChildren(*item, nullptr);
        }
        end();
        if (i % 3 == 0)
            list->GetChildren().back().MoveToFront();
    }
    end();
}

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

TEST(DOMBuilder, TakesAttributesOfAllNamesInAnyNumber)
{
    const std::unordered_map<TString, TString> odd{{u"a", u"1"},
                                                   {TString(std::u16string(u"a\0b", 3)), u"2"},
                                                   {u"", u"3"},
                                                   {u"IllegalColon:x", u"4"},
                                                   {u"xmlns:IllegalColon", u"5"}};
    const std::unordered_map<TString, TString> plain{{u"a", u"1"}};
    const std::unordered_map<TString, TString> large{{u"a", TString(100000, u'x')}, {u"b", u""}};
    std::unordered_map<TString, TString> many;
    for (int i = 0; i < 40; ++i)
        many[u"n" + TString::number(i)] = TString::number(i);
    DOM dom;
    DOMBuilder builder(dom, false);
    for (const auto& attributes : {plain, odd, plain, many, large, {}}) {
        builder.StartElement(u"e", std::unordered_map(attributes));
        EXPECT_EQ(builder.PeekStack()->HasAttributes(), !attributes.empty());
        EXPECT_EQ(builder.PeekStack()->HasAttribute(u"b"), attributes.contains(u"b"));
        EXPECT_EQ(builder.PeekStack()->GetAttributes(), attributes);
    }
}

TEST(DOMBuilder, LetsPartsOfTheTreeBeTakenOutMeanwhile)
{
    std::unique_ptr<DOMElement> taken;
    {
        DOM dom;
        DOMBuilder builder(dom, false);
        builder.StartElement(u"list", {});
        for (int i = 0; i < 1000; ++i) {
            builder.StartElement(u"item", {{u"number", TString::number(i)}});
            builder.TextContent(u"text of " + TString::number(i));
            builder.EndElement();
            taken = builder.PeekStack()->RemoveChild(u"item");
        }
        EXPECT_FALSE(builder.PeekStack()->HasChildren());
    }
    EXPECT_EQ(taken->GetText(), u"text of 999");
    EXPECT_EQ(taken->GetAttribute(u"number"), u"999");
}

TEST(DOMBuilder, LetsTheTreeBeEditedMeanwhile)
{
    DOM dom;
    DOMBuilder builder(dom, false);
    DOMElement other(u"other");
    GrowAndEdit(
        other,
        [&builder](const TString& name) {
            builder.StartElement(TString(name), {});
            return builder.PeekStack();
        },
        [&builder] { builder.EndElement(); });

    DOM expected;
    DOMElement expectedOther(u"other");
    DOMElement* open = expected.GetRoot();
    GrowAndEdit(
        expectedOther, [&open](const TString& name) { return open = open->AddNewChild(name); },
        [&open] { open = open->GetParent(); });
    EXPECT_EQ(*dom.GetDocumentRoot(), *expected.GetDocumentRoot());
    EXPECT_EQ(other, expectedOther);
    EXPECT_EQ(dom.GetDocumentRoot()->GetChildren().size(), 100U);
}

TEST(DOMBuilder, LeavesChildrenWhereTheyAreUntilOneIsAdded)
{
    DOM dom;
    DOMBuilder builder(dom, false);
    builder.StartElement(u"list", {});
    DOMElement& list = *builder.PeekStack();
    for (int i = 0; i < 100; ++i) {
        builder.StartElement(u"item", {});
        const auto* const place = &*list.GetChildren().begin();
        builder.StartElement(u"below", {});
        builder.EndElement();
        builder.EndElement();
        EXPECT_EQ(&*list.GetChildren().begin(), place);
    }
    const auto* const place = &*list.GetChildren().begin();
    builder.EndElement();
    EXPECT_EQ(&*list.GetChildren().begin(), place);
}

TEST(DOMBuilder, LetsOtherThreadsEndElementsMeanwhile)
{
    DOM dom;
    DOMBuilder builder(dom, false);
    builder.StartElement(u"list", {});
    DOMElement& list = *builder.PeekStack();
    std::vector<std::thread> others;
    for (int i = 0; i < 50; ++i) {
        for (int child = 0; child < 100; ++child) {
            builder.StartElement(u"item", {});
            builder.StartElement(u"below", {});
            builder.EndElement();
            builder.EndElement();
        }
        others.emplace_back([taken = list.RemoveChildren()]() mutable { taken.clear(); });
    }
    for (std::thread& other : others)
        other.join();
    EXPECT_FALSE(list.HasChildren());
}

TEST(DOMBuilder, LetsOtherThreadsShareTextsMeanwhile)
{
    DOM dom;
    auto builder = std::make_unique<DOMBuilder>(dom, false);
    builder->StartElement(u"list", {});
    builder->TextContent(u"shared");
    const TString shared = builder->PeekStack()->GetText();
    std::atomic<bool> isOver = false;
    std::thread other([&] {
        while (!isOver) {
            const TString copy = shared;
            EXPECT_EQ(copy, u"shared");
        }
    });
    for (int i = 0; i < 10000; ++i) {
        builder->StartElement(u"item", {});
        builder->TextContent(u"own");
        builder->EndElement();
    }
    builder.reset();
    isOver = true;
    other.join();
    EXPECT_EQ(dom.GetDocumentRoot()->GetText(), u"shared");
}

TEST(DOMBuilder, KeepsTreeAndOpenElementsTogetherWhenMemoryRunsOut)
{
    bool hasFailed = true;
    for (std::size_t allowed = 0; hasFailed; ++allowed) {
        DOM dom;
        DOMBuilder builder(dom, false);
        try {
            const FailingAllocations failing(allowed);
            builder.StartElement(u"a", {{u"x", u"1"}});
            builder.TextContent(u"text");
            builder.StartElement(u"b", {{u"y", u"2"}});
            builder.StartElement(u"c", {});
            hasFailed = false;
        } catch (const std::bad_alloc&) {
        }
        // What is open is the last of what there is.
        const DOMElement* last = dom.GetRoot();
        while (last->HasChildren())
            last = &last->GetChildren()[0];
        EXPECT_EQ(builder.PeekStack(), last) << allowed;
        builder.StartElement(u"d", {});
        EXPECT_EQ(builder.PeekStack()->GetParent(), last) << allowed;
    }
}
