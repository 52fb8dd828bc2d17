#include <kescorexml/DOMPath.h>

#include "support/DOMPathTest.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <iterator>
#include <ranges>
#include <stdexcept>
#include <type_traits>

namespace {

template <typename Range>
constexpr bool c_isBorrowedInputView =
    std::ranges::input_range<Range>&& std::ranges::input_range<const Range>&&
        std::ranges::view<Range>&& std::ranges::borrowed_range<Range>&&
            std::ranges::viewable_range<Range>&& std::ranges::common_range<Range>;

static_assert(c_isBorrowedInputView<DOMPath::IterableTemplate<DOMElement>>);
static_assert(c_isBorrowedInputView<DOMPath::IterableTemplate<const DOMElement>>);
// Copies do not advance.
static_assert(!std::forward_iterator<DOMPath::IteratorTemplate<DOMElement>>);
static_assert(
    std::is_same_v<std::iter_value_t<DOMPath::IteratorTemplate<const DOMElement>>, DOMElement>);

using testing::ElementsAre;
using testing::IsEmpty;

} // namespace

TEST_F(DOMPathTest, AnIteratorWithoutMatchIsTheEndAtOnce)
{
    const TString path(u"none");
    DOMPath::IterableTemplate<DOMElement> walk = DOMPath::Walk(*r, path);
    EXPECT_TRUE(walk.begin() == walk.end());
    EXPECT_FALSE(walk.begin() != walk.end());
    DOMPath::IteratorTemplate<DOMElement> end;
    ++end;
    EXPECT_TRUE(end == walk.end());
}

TEST_F(DOMPathTest, LiveIteratorsAreNeverEqualAndExhaustedOnesAreTheEnd)
{
    const TString path(u"r");
    DOMPath::IterableTemplate<DOMElement> walk = DOMPath::Walk(*r, path);
    auto one = walk.begin();
    const auto other = walk.begin();
    EXPECT_EQ(&*one, &*other);
    EXPECT_TRUE(one != other);
    EXPECT_FALSE(one == other);
    EXPECT_TRUE(one == one);
    ++one;
    EXPECT_TRUE(one == walk.end());
}

TEST_F(DOMPathTest, ACopiedIteratorShowsItsElementButCannotAdvance)
{
    const TString path(u"//b");
    DOMPath::IteratorTemplate<DOMElement> original(*r, path);
    DOMPath::IteratorTemplate<DOMElement> copy(original);
    EXPECT_EQ(&*copy, b1);
    EXPECT_TRUE(copy != original);
    EXPECT_THROW(++copy, std::out_of_range);
    EXPECT_THROW(copy++, std::out_of_range);
    EXPECT_EQ(&*copy, b1);

    DOMPath::IteratorTemplate<DOMElement> assigned;
    assigned = original;
    EXPECT_EQ(assigned->GetName(), u"b");
    EXPECT_THROW(++assigned, std::out_of_range);

    DOMPath::IteratorTemplate<DOMElement> previous = original++;
    EXPECT_EQ(&*previous, b1);
    EXPECT_THROW(++previous, std::out_of_range);
    EXPECT_EQ(&*original, b2);
    ++original;
    EXPECT_EQ(&*original, b3);
}

TEST_F(DOMPathTest, AnIteratorAssignedToItselfGoesOn)
{
    DOMPath::IteratorTemplate<DOMElement> iterator(*r, u"//b");
    const DOMPath::IteratorTemplate<DOMElement>& self = iterator;
    iterator = self;
    EXPECT_EQ(&*iterator, b1);
    ++iterator;
    EXPECT_EQ(&*iterator, b2);
}

TEST_F(DOMPathTest, ACopyOfTheEndIsTheEnd)
{
    const DOMPath::IteratorTemplate<DOMElement> end;
    DOMPath::IteratorTemplate<DOMElement> copy(end);
    EXPECT_TRUE(copy == end);
    DOMPath::IteratorTemplate<DOMElement> assigned(*r, u"//b");
    assigned = end;
    EXPECT_TRUE(assigned == end);
    EXPECT_TRUE(assigned++ == end);
}

TEST_F(DOMPathTest, AdvancingPastTheLastMatchReturnsItAndEnds)
{
    DOMPath::IteratorTemplate<DOMElement> iterator(*r, u"r/b");
    const DOMPath::IteratorTemplate<DOMElement> last = iterator++;
    EXPECT_EQ(&*last, b3);
    EXPECT_TRUE(iterator == DOMPath::IteratorTemplate<DOMElement>());
    EXPECT_TRUE(last != iterator);
}

TEST_F(DOMPathTest, ACopyOfALongWalkCannotAdvanceEither)
{
    const auto chain = MakeChain(100, u"e");
    TString path(u"e");
    for (int i = 0; i < 80; ++i)
        path += u"/e";
    path += u"//e";
    DOMPath::IteratorTemplate<DOMElement> original(*chain, path);
    DOMPath::IteratorTemplate<DOMElement> copy(original);
    EXPECT_EQ(&*copy, &*original);
    EXPECT_THROW(++copy, std::out_of_range);
    int matches = 0;
    for (; original != DOMPath::IteratorTemplate<DOMElement>(); ++original)
        ++matches;
    EXPECT_EQ(matches, 19);
}

TEST_F(DOMPathTest, ACopyTakenAfterTheWalkLeftTheLastElementEnds)
{
    // The starting element is left as soon as it is found, so nothing is left to look at.
    const TString path(u"r");
    DOMPath::IteratorTemplate<DOMElement> copy =
        DOMPath::IteratorTemplate<DOMElement>(DOMPath::IteratorTemplate<DOMElement>(*r, path));
    const DOMPath::IteratorTemplate<DOMElement>& original = copy;
    DOMPath::IteratorTemplate<DOMElement> second(original);
    ++second;
    EXPECT_TRUE(second == DOMPath::IteratorTemplate<DOMElement>());
}

TEST_F(DOMPathTest, AMovedIteratorGoesOn)
{
    const TString path(u"//b");
    DOMPath::IteratorTemplate<DOMElement> original(*r, path);
    DOMPath::IteratorTemplate<DOMElement> moved(std::move(original));
    EXPECT_EQ(&*moved, b1);
    EXPECT_EQ(&*original, b1) << "what was moved from still shows its element";
    ++original;
    EXPECT_EQ(&*original, b1) << "and stays there";
    ++moved;
    DOMPath::IteratorTemplate<DOMElement> assigned(*r, path);
    assigned = std::move(moved);
    EXPECT_EQ(&*assigned, b2);
    ++assigned;
    EXPECT_EQ(&*assigned, b3);
    ++assigned;
    EXPECT_TRUE(assigned == DOMPath::IteratorTemplate<DOMElement>());
}

TEST_F(DOMPathTest, AConstRangeHandsOutConstElements)
{
    const TString path(u"r/a");
    DOMPath::IterableTemplate<DOMElement> walk = DOMPath::Walk(*r, path);
    const DOMPath::IterableTemplate<DOMElement>& constant = walk;
    EXPECT_TRUE((std::is_same_v<decltype(*walk.begin()), DOMElement&>));
    EXPECT_TRUE((std::is_same_v<decltype(*constant.begin()), DOMElement const&>));
    EXPECT_TRUE((std::is_same_v<decltype(*walk.cbegin()), DOMElement const&>));
    std::vector<const DOMElement*> matches;
    for (const DOMElement& match : constant)
        matches.push_back(&match);
    EXPECT_THAT(matches, ElementsAre(a1, a3));
    EXPECT_TRUE(walk.cbegin() != walk.cend());
    EXPECT_TRUE(constant.begin() != constant.end());

    const DOMElement& constRoot = *r;
    DOMPath::IterableTemplate<DOMElement const> constWalk = DOMPath::Walk(constRoot, path);
    EXPECT_TRUE((std::is_same_v<decltype(*constWalk.begin()), DOMElement const&>));
    EXPECT_EQ(&*constWalk.begin(), a1);
    EXPECT_EQ(&*std::as_const(constWalk).begin(), a1);
    EXPECT_EQ(&*constWalk.cbegin(), a1);
    EXPECT_TRUE(constWalk.begin() != constWalk.end());
}

TEST_F(DOMPathTest, ARangeRefersToThePathOfItsCaller)
{
    TString path(u"r/a");
    DOMPath::IterableTemplate<DOMElement> walk = DOMPath::Walk(*r, path);
    path = u"r/b";
    EXPECT_EQ(&*walk.begin(), b3);
}

TEST_F(DOMPathTest, ARangeKeepsATemporaryPath)
{
    std::vector<const DOMElement*> matches;
    for (const DOMElement& match : DOMPath::Walk(*r, u"r/a/a name too long for anything inline"))
        matches.push_back(&match);
    EXPECT_THAT(matches, IsEmpty());
    for (const DOMElement& match : DOMPath::Walk(*r, TString(u"r") + TString(u"/a")))
        matches.push_back(&match);
    EXPECT_THAT(matches, ElementsAre(a1, a3));
    DOMPath::IterableTemplate<DOMElement> walk = DOMPath::Walk(*r, u"r/b");
    DOMPath::IterableTemplate<DOMElement> copy(walk);
    EXPECT_EQ(&*copy.begin(), b3);
}

TEST_F(DOMPathTest, ForeachVisitsAllMatchesInOrder)
{
    std::vector<const DOMElement*> visited;
    DOMPath::Foreach(*r, u"//b", [&visited](DOMElement& match) {
        match.SetText(u"seen");
        visited.push_back(&match);
    });
    EXPECT_THAT(visited, ElementsAre(b1, b2, b3));
    EXPECT_EQ(b2->GetText(), u"seen");
    visited.clear();
    DOMPath::Foreach(std::as_const(*r), u"r/a",
                     [&visited](const DOMElement& match) { visited.push_back(&match); });
    EXPECT_THAT(visited, ElementsAre(a1, a3));
}

TEST_F(DOMPathTest, ForeachMayChangeTheTree)
{
    int calls = 0;
    DOMPath::Foreach(*r, u"//*", [&calls, this](DOMElement& match) {
        ++calls;
        match.AddNewChild(u"b");
        if (&match != r)
            match.Move(*r, nullptr);
    });
    EXPECT_EQ(calls, 8);
    EXPECT_EQ(r->GetChildren().size(), 8U);
}

TEST_F(DOMPathTest, ForeachCollectsConstMatchesFirstToo)
{
    int calls = 0;
    DOMPath::Foreach(std::as_const(*r), u"r/*", [&calls, this](const DOMElement&) {
        if (++calls < 100)
            r->AddNewChild(u"more");
    });
    EXPECT_EQ(calls, 3);
}

TEST_F(DOMPathTest, ForeachWithoutAFunctionFailsOnlyAtAMatch)
{
    const std::function<void(DOMElement&)> none;
    const std::function<void(const DOMElement&)> constNone;
    DOMPath::Foreach(*r, u"none", none);
    DOMPath::Foreach(std::as_const(*r), u"none", constNone);
    EXPECT_THROW(DOMPath::Foreach(*r, u"r", none), std::bad_function_call);
    EXPECT_THROW(DOMPath::Foreach(std::as_const(*r), u"r", constNone), std::bad_function_call);
}

TEST_F(DOMPathTest, AlgorithmsGoOverARangeAndTheirResultsOutliveIt)
{
    auto found = std::ranges::find_if(DOMPath::Walk(*r, u"//b"),
                                      [this](const DOMElement& b) { return b.GetParent() == c; });
    EXPECT_EQ(&*found, b2);
    EXPECT_EQ(&*++found, b3) << "the walk goes on behind what was found";
    EXPECT_EQ(
        std::ranges::count_if(DOMPath::Walk(std::as_const(*r), u"//a"), &DOMElement::HasChildren),
        1);
    std::ranges::for_each(DOMPath::Walk(*r, u"//a"), [](DOMElement& a) { a.SetText(u"seen"); });
    EXPECT_EQ(a2->GetText(), u"seen");
    std::vector<TString> names;
    std::ranges::transform(DOMPath::Walk(*r, u"r/*"), std::back_inserter(names),
                           &DOMElement::GetName);
    EXPECT_THAT(names, ElementsAre(u"a", u"b", u"a"));
}

// Earlier versions of clang cannot read what the standard library of GCC has for adaptors.
#if !defined(__clang__) || __clang_major__ >= 16

TEST_F(DOMPathTest, ARangeIsPipedIntoAdaptors)
{
    std::vector<const DOMElement*> matches;
    for (const DOMElement& a :
         DOMPath::Walk(std::as_const(*r), u"//a") |
             std::views::filter([](const DOMElement& element) { return !element.HasChildren(); }) |
             std::views::take(2))
        matches.push_back(&a);
    EXPECT_THAT(matches, ElementsAre(a2, a3));
    const TString path(u"//a");
    auto range = DOMPath::Walk(*r, path);
    std::vector<TString> names;
    for (const TString& name : range | std::views::transform(&DOMElement::GetName))
        names.push_back(name);
    EXPECT_THAT(names, ElementsAre(u"a", u"a", u"a"));
}

#endif
