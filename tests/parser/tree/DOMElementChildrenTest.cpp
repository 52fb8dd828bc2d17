#include <kescorexml/DOMElementChildren.h>

#include "support/TreeTesting.h"

#include <stdexcept>

namespace {

template <typename Iterator>
std::string NamesBetween(Iterator begin, Iterator end)
{
    std::string names;
    for (; begin != end; ++begin)
        names += (*begin)->GetName().toStdString();
    return names;
}

} // namespace

TEST(DOMElementChildren, OfALeafIsEmpty)
{
    DOMElement leaf(TString(u"a"));
    DOMElementChildren children(leaf);
    const DOMElementChildren& view = children;
    EXPECT_TRUE(view.empty());
    EXPECT_EQ(view.size(), 0U);
    EXPECT_EQ(children.begin(), children.end());
    EXPECT_EQ(view.begin(), view.end());
    EXPECT_EQ(children.rbegin(), children.rend());
    EXPECT_EQ(view.crbegin(), view.crend());
    EXPECT_THROW(children.at(0), std::out_of_range);
    EXPECT_THROW(view.at(0), std::out_of_range);
}

TEST(DOMElementChildren, IndexesInDocumentOrder)
{
    const auto root = MakeTree("r(a,b,c)");
    DOMElementChildren children = root->GetChildren();
    const auto view = std::as_const(*root).GetChildren();
    EXPECT_EQ(view.size(), 3U);
    EXPECT_FALSE(view.empty());
    const char* names[] = {"a", "b", "c"};
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(children.at(i).GetName(), TString(names[i]));
        EXPECT_EQ(&view.at(i), &children.at(i));
        EXPECT_EQ(&children[i], &children.at(i));
        EXPECT_EQ(&view[i], &children.at(i));
    }
    EXPECT_EQ(&children.front(), &children[0]);
    EXPECT_EQ(&view.front(), &children[0]);
    EXPECT_EQ(&children.back(), &children[2]);
    EXPECT_EQ(&view.back(), &children[2]);
    static_assert(std::is_same_v<decltype(view.at(0)), const DOMElement&>);
    static_assert(std::is_same_v<decltype(children.at(0)), DOMElement&>);
}

TEST(DOMElementChildren, OfAConstElementStayConst)
{
    const auto root = MakeTree("r(a,b)");
    const DOMElement& constant = *root;
    auto view = constant.GetChildren();
    auto copy = view;
    static_assert(std::is_same_v<decltype(copy.front()), const DOMElement&>);
    static_assert(std::is_same_v<decltype(copy.back()), const DOMElement&>);
    static_assert(std::is_same_v<decltype(copy.at(0)), const DOMElement&>);
    static_assert(std::is_same_v<decltype(copy[0]), const DOMElement&>);
    static_assert(std::is_same_v<decltype(*copy.begin()), const ElementList::Owner&>);
    static_assert(std::is_same_v<decltype(*copy.rbegin()), const ElementList::Owner&>);
    using Const = decltype(view);
    static_assert(!std::is_constructible_v<DOMElementChildren, Const>);
    static_assert(!std::is_convertible_v<Const, DOMElementChildren>);
    static_assert(!std::is_assignable_v<DOMElementChildren&, Const>);
    static_assert(!std::is_convertible_v<const DOMElement&, DOMElementChildren>);
    EXPECT_EQ(&view.front(), &root->GetChildren().front());
    EXPECT_EQ(&copy.back(), &root->GetChildren().back());
    EXPECT_EQ(NamesBetween(view.begin(), view.end()), "ab");
    EXPECT_EQ(NamesBetween(view.cbegin(), view.cend()), "ab");
    EXPECT_EQ(NamesBetween(view.rbegin(), view.rend()), "ba");
    EXPECT_EQ(NamesBetween(view.crbegin(), view.crend()), "ba");
    EXPECT_EQ(view.size(), 2U);
    EXPECT_FALSE(view.empty());
    EXPECT_EQ(&view[1], &view.at(1));
    EXPECT_THROW(view.at(2), std::out_of_range);
}

TEST(DOMElementChildren, OfEitherKindServeWhereAConstViewIsWanted)
{
    const auto root = MakeTree("r(a,b)");
    const auto count = [](const DOMElementChildren& children) { return children.size(); };
    const auto countConst = [](ConstDOMElementChildren children) { return children.size(); };
    EXPECT_EQ(count(root->GetChildren()), 2U);
    EXPECT_EQ(count(std::as_const(*root).GetChildren()), 2U);
    EXPECT_EQ(countConst(root->GetChildren()), 2U);
    EXPECT_EQ(countConst(std::as_const(*root).GetChildren()), 2U);
    const DOMElementChildren& kept = std::as_const(*root).GetChildren();
    root->AddNewChild(u"c");
    EXPECT_EQ(kept.size(), 3U) << "a view follows later changes";
    DOMElementChildren fromElement = *root;
    EXPECT_EQ(fromElement.size(), 3U);
}

TEST(DOMElementChildren, AtOfTheSizeIsOutOfRange)
{
    const auto root = MakeTree("r(a,b)");
    EXPECT_NO_THROW(root->GetChildren().at(1));
    EXPECT_THROW(root->GetChildren().at(2), std::out_of_range);
    EXPECT_THROW(std::as_const(*root).GetChildren().at(2), std::out_of_range);
    EXPECT_THROW(root->GetChildren().at(static_cast<std::size_t>(-1)), std::out_of_range);
}

TEST(DOMElementChildren, IteratesBothWays)
{
    const auto root = MakeTree("r(a,b,c)");
    DOMElementChildren children = root->GetChildren();
    const DOMElementChildren view = children;
    EXPECT_EQ(NamesBetween(children.begin(), children.end()), "abc");
    EXPECT_EQ(NamesBetween(view.begin(), view.end()), "abc");
    EXPECT_EQ(NamesBetween(children.cbegin(), children.cend()), "abc");
    EXPECT_EQ(NamesBetween(children.rbegin(), children.rend()), "cba");
    EXPECT_EQ(NamesBetween(view.rbegin(), view.rend()), "cba");
    EXPECT_EQ(NamesBetween(children.crbegin(), children.crend()), "cba");
}

TEST(DOMElementChildren, FollowsLaterChanges)
{
    const auto root = MakeTree("r(a)");
    const DOMElementChildren view = root->GetChildren();
    root->AddNewChild(u"b");
    EXPECT_EQ(NamesBetween(view.begin(), view.end()), "ab");
    root->RemoveChild(u"a");
    EXPECT_EQ(NamesBetween(view.begin(), view.end()), "b");
    root->RemoveChildren();
    EXPECT_TRUE(view.empty());
}

TEST(DOMElementChildren, CopiesAndAssignmentsShowTheSameElement)
{
    const auto first = MakeTree("r(a)");
    const auto second = MakeTree("s(b,c)");
    DOMElementChildren view = first->GetChildren();
    DOMElementChildren copy(view);
    DOMElementChildren moved(std::move(copy));
    first->AddNewChild(u"x");
    EXPECT_EQ(moved.size(), 2U);
    view = second->GetChildren();
    EXPECT_EQ(NamesBetween(view.begin(), view.end()), "bc");
    EXPECT_EQ(NamesBetween(moved.begin(), moved.end()), "ax");
}
