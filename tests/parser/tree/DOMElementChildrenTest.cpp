#include <kescorexml/DOMElementChildren.h>

#include "support/TreeTesting.h"

#include <algorithm>
#include <ranges>
#include <stdexcept>
#include <type_traits>

namespace {

template <typename View>
constexpr bool c_isBorrowedView = std::ranges::view<View>&& std::ranges::borrowed_range<View>&&
    std::ranges::viewable_range<View>&& std::ranges::contiguous_range<View>&&
        std::ranges::sized_range<View>&& std::ranges::common_range<View>;

static_assert(c_isBorrowedView<DOMElementChildren>);
static_assert(c_isBorrowedView<ConstDOMElementChildren>);
static_assert(std::ranges::contiguous_range<const DOMElementChildren>);
static_assert(std::ranges::contiguous_range<const ConstDOMElementChildren>);
static_assert(std::is_same_v<std::ranges::range_reference_t<DOMElementChildren>,
                             std::unique_ptr<DOMElement>&>);
static_assert(std::is_same_v<std::ranges::range_reference_t<ConstDOMElementChildren>,
                             const std::unique_ptr<DOMElement>&>);

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
    EXPECT_THROW(static_cast<void>(children.at(0)), std::out_of_range);
    EXPECT_THROW(static_cast<void>(view.at(0)), std::out_of_range);
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
    static_assert(std::is_same_v<decltype(*copy.begin()), const ElementList::value_type&>);
    static_assert(std::is_same_v<decltype(*copy.rbegin()), const ElementList::value_type&>);
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
    EXPECT_THROW(static_cast<void>(view.at(2)), std::out_of_range);
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
    EXPECT_NO_THROW(static_cast<void>(root->GetChildren().at(1)));
    EXPECT_THROW(static_cast<void>(root->GetChildren().at(2)), std::out_of_range);
    EXPECT_THROW(static_cast<void>(std::as_const(*root).GetChildren().at(2)), std::out_of_range);
    EXPECT_THROW(static_cast<void>(root->GetChildren().at(static_cast<std::size_t>(-1))),
                 std::out_of_range);
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

TEST(DOMElementChildren, AreFoundByAlgorithmsWhoseResultsOutliveTheView)
{
    const auto root = MakeTree("r(a,b,c)");
    const auto isB = [](const auto& child) { return child->GetName() == u"b"; };
    const auto found = std::ranges::find_if(root->GetChildren(), isB);
    EXPECT_EQ(found->get(), &Find(*root, "b"));
    const auto foundConst = std::ranges::find_if(std::as_const(*root).GetChildren(), isB);
    EXPECT_EQ(foundConst->get(), &Find(*root, "b"));
    EXPECT_EQ(found, root->FindChild(Find(*root, "b")));
}

TEST(DOMElementChildren, AreComparedByAProjection)
{
    const auto root = MakeTree("r(a,b,c)");
    int price = 7;
    for (const auto& child : root->GetChildren())
        child->SetText(TString::number(price = price * 5 % 11));
    const auto textOf = [](const auto& child) { return child->GetText().toInt(); };
    const auto& children = std::as_const(*root).GetChildren();
    EXPECT_EQ((*std::ranges::max_element(children, {}, textOf))->GetText(), u"10");
    EXPECT_EQ((*std::ranges::min_element(root->GetChildren(), {}, textOf))->GetText(), u"2");
}

TEST(DOMElementChildren, CanBeSorted)
{
    const auto root = MakeTree("r(b,c(d),a)");
    std::ranges::sort(root->GetChildren(), {}, [](const auto& child) { return child->GetName(); });
    EXPECT_EQ(Outline(*root), "r(a,b,c(d))");
    for (const auto& child : root->GetChildren())
        EXPECT_EQ(child->GetParent(), root.get());
    EXPECT_EQ(Outline(*root->RemoveChild(u"c")), "c(d)");
}

// Earlier versions of clang cannot read what the standard library of GCC has for adaptors.
#if !defined(__clang__) || __clang_major__ >= 16

TEST(DOMElementChildren, ArePipedIntoAdaptors)
{
    const auto root = MakeTree("r(a,b(x),c,d(y))");
    const DOMElement& constant = *root;
    const auto hasChildren = [](const auto& child) { return child->HasChildren(); };
    const auto nameOf = [](const auto& child) { return child->GetName(); };
    std::string names;
    for (const auto& child : constant.GetChildren() | std::views::filter(hasChildren))
        names += child->GetName().toStdString();
    EXPECT_EQ(names, "bd");
    // A pipe keeps no reference to the view that it was made of.
    auto reversed = root->GetChildren() | std::views::reverse | std::views::transform(nameOf);
    root->AddNewChild(u"e");
    names.clear();
    for (const TString& name : reversed)
        names += name.toStdString();
    EXPECT_EQ(names, "edcba");
    for (const auto& child : root->GetChildren() | std::views::drop(3))
        child->SetText(u"seen");
    EXPECT_EQ(Find(*root, "d").GetText(), u"seen");
    EXPECT_EQ(Find(*root, "c").GetText(), u"");
}

#endif
