#include <kescorexml/DOM.h>
#include <kescorexml/DOMElement.h>
#include <kescorexml/DOMElementTraversal.h>
#include <kescorexml/DOMParser.h>
#include <kescorexml/DOMPath.h>

#include <gmock/gmock.h>

#include <algorithm>
#include <iterator>
#include <memory>
#include <numeric>
#include <ranges>
#include <string>
#include <vector>

namespace {

class RangeSnippets : public testing::Test
{
protected:
    const std::unique_ptr<DOM> document = DOMParser().ParseXmlString(
        "<shop><tea price='3'/><coffee price='5'/><box><milk price='2'/></box></shop>", "shop");
    DOMElement& shop = *document->GetDocumentRoot();
};

int PriceOf(const DOMElement& element)
{
    return element.GetAttribute(u"price").toInt();
}

} // namespace

TEST_F(RangeSnippets, AChildThatMeetsACondition)
{
    const auto found = std::ranges::find_if(shop.GetChildren(),
                                            [](const auto& child) { return PriceOf(*child) > 4; });
    ASSERT_NE(found, shop.GetChildren().end());
    EXPECT_EQ((*found)->GetName(), u"coffee");
}

TEST_F(RangeSnippets, TheDearestChildOfAConstElement)
{
    const DOMElement& constant = shop;
    const auto dearest = std::ranges::max_element(
        constant.GetChildren(), {}, [](const auto& child) { return PriceOf(*child); });
    EXPECT_EQ((*dearest)->GetName(), u"coffee");
}

TEST_F(RangeSnippets, ChildrenAreCounted)
{
    EXPECT_EQ(std::ranges::count_if(shop.GetChildren(),
                                    [](const auto& child) { return child->HasAttributes(); }),
              2);
    EXPECT_TRUE(std::ranges::any_of(shop.GetChildren(),
                                    [](const auto& child) { return child->HasChildren(); }));
    EXPECT_EQ(std::ranges::size(shop.GetChildren()), 3U);
}

TEST_F(RangeSnippets, ChildrenAreSorted)
{
    std::ranges::sort(shop.GetChildren(), {}, [](const auto& child) { return child->GetName(); });
    EXPECT_EQ(shop.GetChildren().front().GetName(), u"box");
    EXPECT_EQ(shop.GetChildren().back().GetName(), u"tea");
}

TEST_F(RangeSnippets, PointersToChildrenAreKept)
{
    std::vector<const DOMElement*> cheap;
    for (const auto& child : shop.GetChildren())
        if (PriceOf(*child) < 4)
            cheap.push_back(child.get());
    EXPECT_EQ(cheap.size(), 2U);
}

TEST_F(RangeSnippets, TheSumOfAllPrices)
{
    const DOMElementTraversal::ConstPreorderTraversal all(shop);
    EXPECT_EQ(std::accumulate(all.begin(), all.end(), 0,
                              [](int sum, const DOMElement& e) { return sum + PriceOf(e); }),
              10);
}

TEST_F(RangeSnippets, AnElementAnywhere)
{
    const auto found = std::ranges::find(DOMElementTraversal::PreorderTraversal(shop),
                                         TString(u"milk"), &DOMElement::GetName);
    EXPECT_EQ(found->GetParent()->GetName(), u"box");
}

TEST_F(RangeSnippets, MatchesOfAPathAreCounted)
{
    EXPECT_EQ(std::ranges::count_if(DOMPath::Walk(shop, u"shop//*"),
                                    [](const DOMElement& e) { return e.HasAttribute(u"price"); }),
              3);
}

TEST_F(RangeSnippets, NamesOfMatchesAreCollected)
{
    std::vector<TString> names;
    std::ranges::transform(DOMPath::Walk(shop, u"shop/*"), std::back_inserter(names),
                           &DOMElement::GetName);
    EXPECT_THAT(names, testing::ElementsAre(u"tea", u"coffee", u"box"));
}

// Earlier versions of clang cannot read what the standard library of GCC has for adaptors.
#if !defined(__clang__) || __clang_major__ >= 16

TEST_F(RangeSnippets, ChildrenAreFiltered)
{
    const DOMElement& constant = shop;
    TString names;
    for (const auto& child : constant.GetChildren() | std::views::filter([](const auto& child) {
                                 return child->HasAttributes();
                             }))
        names += child->GetName();
    EXPECT_EQ(names, u"teacoffee");
}

TEST_F(RangeSnippets, ChildrenFromTheLastToTheFirst)
{
    TString names;
    for (const auto& child : shop.GetChildren() | std::views::reverse)
        names += child->GetName();
    EXPECT_EQ(names, u"boxcoffeetea");
}

TEST_F(RangeSnippets, ChildrenAsElements)
{
    const auto elements = shop.GetChildren() |
                          std::views::transform([](auto& child) -> DOMElement& { return *child; });
    for (DOMElement& element : elements)
        element.SetAttribute(u"seen", u"yes");
    EXPECT_EQ(shop.GetChild(u"box")->GetAttribute(u"seen"), u"yes");
}

TEST_F(RangeSnippets, ThePathsFirstMatches)
{
    TString names;
    for (const DOMElement& element : DOMPath::Walk(shop, u"shop//*") | std::views::take(3))
        names += element.GetName();
    EXPECT_EQ(names, u"teacoffeebox");
}

TEST_F(RangeSnippets, MatchesAreFilteredAndTransformed)
{
    int sum = 0;
    for (const int price :
         DOMPath::Walk(shop, u"//*") | std::views::filter([](const DOMElement& element) {
             return element.HasAttribute(u"price");
         }) | std::views::transform(PriceOf))
        sum += price;
    EXPECT_EQ(sum, 10);
}

TEST_F(RangeSnippets, AllElementsButTheFirst)
{
    TString names;
    for (const DOMElement& element :
         DOMElementTraversal::ConstPreorderTraversal(shop) | std::views::drop(1))
        names += element.GetName() + u" ";
    EXPECT_EQ(names, u"box milk coffee tea ");
}

TEST_F(RangeSnippets, GrandchildrenAreJoined)
{
    shop.GetChild(u"tea")->AddNewChild(u"green");
    TString names;
    for (const auto& grandchild : shop.GetChildren() | std::views::transform([](const auto& child) {
                                      return child->GetChildren();
                                  }) | std::views::join)
        names += grandchild->GetName();
    EXPECT_EQ(names, u"greenmilk");
}

#endif
