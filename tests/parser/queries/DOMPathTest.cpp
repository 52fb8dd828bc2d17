#include <kescorexml/DOMPath.h>

#include "support/DOMPathTest.h"
#include "support/FailingAllocations.h"
#include "support/SmallStack.h"

#include <gmock/gmock.h>

#include <malloc.h>
#include <memory>
#include <stdexcept>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr int c_deepLevels = 1'000'000;

} // namespace

TEST_F(DOMPathTest, EmptyPathsAndPathsThatEndInASeparatorYieldNothing)
{
    for (const char16_t* path : {u"", u"/", u"//", u"r/", u"/r/", u"r//", u"//a/", u"*/"}) {
        EXPECT_THAT(DOMPath::GetAll(*r, path), IsEmpty()) << TString(path);
        EXPECT_EQ(DOMPath::GetFirst(*r, path), nullptr);
    }
}

TEST_F(DOMPathTest, TheFirstStepIsTheStartingElementItself)
{
    EXPECT_THAT(DOMPath::GetAll(*a1, u"a"), ElementsAre(a1));
    EXPECT_THAT(DOMPath::GetAll(*b3, u"a"), IsEmpty());
    EXPECT_THAT(DOMPath::GetAll(*r, u"r/a"), ElementsAre(a1, a3));
    EXPECT_THAT(DOMPath::GetAll(*r, u"a/b"), IsEmpty());
}

TEST_F(DOMPathTest, NamesAreComparedExactly)
{
    EXPECT_THAT(DOMPath::GetAll(*r, u"r/A"), IsEmpty());
    EXPECT_THAT(DOMPath::GetAll(*r, u"r/a*"), IsEmpty());
    EXPECT_THAT(DOMPath::GetAll(*r, u"r/ a"), IsEmpty());
    EXPECT_THAT(DOMPath::GetAll(*r, u"r/*a"), IsEmpty());
    EXPECT_THAT(DOMPath::GetAll(*r, u"r/**"), IsEmpty());
    DOMElement* starred = r->AddNewChild(u"a*");
    EXPECT_THAT(DOMPath::GetAll(*r, u"r/a*"), ElementsAre(starred));
    DOMElement* twice = r->AddNewChild(u"**");
    EXPECT_THAT(DOMPath::GetAll(*r, u"r/**"), ElementsAre(twice));
}

TEST_F(DOMPathTest, StarIsAnyOneElement)
{
    EXPECT_THAT(DOMPath::GetAll(*r, u"*"), ElementsAre(r));
    EXPECT_THAT(DOMPath::GetAll(*r, u"*/*"), ElementsAre(a1, b3, a3));
    EXPECT_THAT(DOMPath::GetAll(*r, u"//*"), ElementsAre(r, a1, b1, c, b2, b3, a2, a3));
}

TEST_F(DOMPathTest, ALeadingSeparatorStartsAtTheDocumentRoot)
{
    for (DOMElement* start : {r, b2, a3}) {
        EXPECT_THAT(DOMPath::GetAll(*start, u"/r/a"), ElementsAre(a1, a3));
        EXPECT_EQ(DOMPath::GetFirst(std::as_const(*start), u"/r/b/a"), a2);
        EXPECT_THAT(DOMPath::GetAll(*start, u"/Document"), IsEmpty());
    }
}

TEST_F(DOMPathTest, AnAbsolutePathStartsAtTheFirstOfSeveralTopLevelElements)
{
    DOMElement* second = dom.GetRoot()->AddNewChild(u"second");
    second->AddNewChild(u"a");
    for (DOMElement* start : {dom.GetRoot(), r, b2, second}) {
        EXPECT_THAT(DOMPath::GetAll(*start, u"/*"), ElementsAre(r));
        EXPECT_THAT(DOMPath::GetAll(*start, u"/r/a"), ElementsAre(a1, a3));
        EXPECT_THAT(DOMPath::GetAll(*start, u"/second"), IsEmpty());
        EXPECT_THAT(DOMPath::GetAll(*start, u"/second/a"), IsEmpty());
        EXPECT_EQ(DOMPath::GetFirst(*start, u"/*/b"), b3);
    }
}

TEST_F(DOMPathTest, DotsAndAttributesAreNoStepsButNames)
{
    for (const char16_t* name : {u".", u"..", u"@x", u"a[1]", u"text()"}) {
        c->SetAttribute(u"x", u"1");
        EXPECT_THAT(DOMPath::GetAll(*c, name), IsEmpty());
        EXPECT_THAT(DOMPath::GetAll(*c, TString(u"c/") + name), IsEmpty());
        EXPECT_THAT(DOMPath::GetAll(*r, TString(u"//") + name), IsEmpty());
        DOMElement* named = c->AddNewChild(name);
        EXPECT_THAT(DOMPath::GetAll(*named, name), ElementsAre(named));
        EXPECT_THAT(DOMPath::GetAll(*c, TString(u"c/") + name), ElementsAre(named));
        EXPECT_THAT(DOMPath::GetAll(*r, TString(u"//") + name), ElementsAre(named));
        c->RemoveChild(*named);
    }
}

TEST_F(DOMPathTest, AnAbsolutePathYieldsNothingWithoutADocumentRoot)
{
    DOMElement detached(u"r");
    detached.AddNewChild(u"a");
    EXPECT_THAT(DOMPath::GetAll(detached, u"/r"), IsEmpty());
    EXPECT_THAT(DOMPath::GetAll(detached, u"//a").size(), 1U);
    DOM empty;
    EXPECT_THAT(DOMPath::GetAll(*empty.GetRoot(), u"/Document"), IsEmpty());
    EXPECT_THAT(DOMPath::GetAll(*empty.GetRoot(), u"//Document"), ElementsAre(empty.GetRoot()));
}

TEST_F(DOMPathTest, ADoubleSeparatorInFrontStaysInTheSubtreeItselfIncluded)
{
    EXPECT_THAT(DOMPath::GetAll(*c, u"//b"), ElementsAre(b2));
    EXPECT_THAT(DOMPath::GetAll(*b3, u"//b"), ElementsAre(b3));
    EXPECT_THAT(DOMPath::GetAll(*r, u"//b"), ElementsAre(b1, b2, b3));
}

TEST_F(DOMPathTest, ADoubleSeparatorInsideMeansAnyDepthBelow)
{
    EXPECT_THAT(DOMPath::GetAll(*r, u"r//b"), ElementsAre(b1, b2, b3));
    EXPECT_THAT(DOMPath::GetAll(*b3, u"b//b"), IsEmpty());
    EXPECT_THAT(DOMPath::GetAll(*r, u"r//c/b"), ElementsAre(b2));
}

TEST(DOMPath, EachFurtherSeparatorCostsOneSibling)
{
    DOMElement a(u"a");
    DOMElement* first = a.AddNewChild(u"b");
    DOMElement* second = a.AddNewChild(u"b");
    DOMElement* third = a.AddNewChild(u"b");
    EXPECT_THAT(DOMPath::GetAll(a, u"a//b"), ElementsAre(first, second, third));
    EXPECT_THAT(DOMPath::GetAll(a, u"a///b"), ElementsAre(second, third));
    EXPECT_THAT(DOMPath::GetAll(a, u"a////b"), ElementsAre(third));
    EXPECT_THAT(DOMPath::GetAll(a, u"a/////b"), IsEmpty());
}

TEST_F(DOMPathTest, ConstAndNonConstElementsGiveConstAndNonConstMatches)
{
    using DOMPath::GetAll;
    using DOMPath::GetFirst;
    const DOMElement& constant = *r;
    EXPECT_TRUE((std::is_same_v<decltype(GetFirst(*r, u"r")), DOMElement*>));
    EXPECT_TRUE((std::is_same_v<decltype(GetFirst(constant, u"r")), DOMElement const*>));
    EXPECT_TRUE((std::is_same_v<decltype(GetAll(*r, u"r")), std::vector<DOMElement*>>));
    EXPECT_TRUE((std::is_same_v<decltype(GetAll(constant, u"r")), std::vector<DOMElement const*>>));
    EXPECT_EQ(GetFirst<DOMElement const>(*r, u"r"), r);
}

TEST_F(DOMPathTest, AGeneratorYieldsTheMatchesAndThenNull)
{
    DOMPath::Generator<DOMElement> generator(*r, u"r/a");
    EXPECT_EQ(generator.Next(), a1);
    EXPECT_EQ(generator.Next(), a3);
    EXPECT_EQ(generator.Next(), nullptr);
    EXPECT_EQ(generator.Next(), nullptr);
}

TEST_F(DOMPathTest, TheWalkIsLazyAndSeesChangesAheadOfIt)
{
    const TString path(u"r//b");
    DOMPath::IteratorTemplate<DOMElement> iterator(*r, path);
    EXPECT_EQ(&*iterator, b1);
    DOMElement* added = a3->AddNewChild(u"b");
    std::vector<DOMElement*> rest;
    for (++iterator; iterator != DOMPath::IteratorTemplate<DOMElement>(); ++iterator)
        rest.push_back(&*iterator);
    EXPECT_THAT(rest, ElementsAre(b2, b3, added));
}

TEST_F(DOMPathTest, AppendingSiblingsDuringTheWalkDoesNotDisturbIt)
{
    int visited = 0;
    for (DOMElement& match : DOMPath::Walk(*r, u"r/*")) {
        if (++visited < 100)
            match.GetParent()->AddNewChild(u"more");
    }
    EXPECT_EQ(visited, 102);
}

TEST_F(DOMPathTest, TheWalkHasLeftAMatchBeforeItIsSeen)
{
    // b1 has no children when it is found, so the walk goes on beside it; a3 is entered later.
    std::vector<DOMElement*> matches;
    for (DOMElement& match : DOMPath::Walk(*r, u"r//b")) {
        matches.push_back(&match);
        if (&match == b1) {
            b1->AddNewChild(u"b");
            matches.push_back(a3->AddNewChild(u"b"));
        }
    }
    ASSERT_EQ(matches.size(), 5U);
    EXPECT_EQ(matches[1], matches[4]) << "what was added below a3 is found, below b1 is not";
    matches.erase(matches.begin() + 1);
    EXPECT_THAT(matches, ElementsAre(b1, b2, b3, a3->GetChildren().begin()->get()));
}

TEST(DOMPath, RemovingAnEarlierSiblingDuringTheWalkPassesOverALaterOne)
{
    DOMElement top(u"top");
    for (const char16_t* name : {u"a", u"b", u"c", u"d"})
        top.AddNewChild(name);
    DOMPath::Generator<DOMElement> generator(top, u"top/*");
    EXPECT_EQ(generator.Next()->GetName(), u"a");
    EXPECT_EQ(generator.Next()->GetName(), u"b");
    top.RemoveChild(u"a");
    EXPECT_EQ(generator.Next()->GetName(), u"c");
    EXPECT_EQ(generator.Next(), nullptr);
}

template <typename T>
void ExpectRemovalIsNoticed()
{
    DOMElement top(u"top");
    for (const char16_t* name : {u"a", u"b", u"c", u"d"})
        top.AddNewChild(name);
    DOMPath::Generator<T> generator(top, u"top/*");
    generator.Next();
    generator.Next();
    top.RemoveChild(u"a");
    top.RemoveChild(u"b");
    EXPECT_THROW(generator.Next(), std::out_of_range);
}

TEST(DOMPath, RemovingMoreEarlierSiblingsThanRemainIsOutOfRange)
{
    ExpectRemovalIsNoticed<DOMElement>();
    ExpectRemovalIsNoticed<DOMElement const>();
}

TEST(DOMPath, AWalkThatFoundSiblingsMissingGoesOnOnceThereAreSome)
{
    for (const bool isLong : {false, true}) {
        TString path;
        DOMElement top(u"r");
        DOMElement* parent = &top;
        if (isLong) {
            for (int i = 0; i < 70; ++i) {
                path += u"r/";
                parent = parent->AddNewChild(u"r");
            }
        }
        path += u"r/a";
        for (int i = 0; i < 6; ++i)
            parent->AddNewChild(u"a");
        DOMPath::IteratorTemplate<DOMElement> iterator(top, path);
        ++iterator;
        ++iterator;
        ++iterator;
        // Stands at the fourth and will look at the fifth, of which it then finds only one.
        std::vector<std::unique_ptr<DOMElement>> removed;
        while (parent->GetChildren().size() > 1)
            removed.push_back(parent->RemoveChild(parent->GetChildren().back()));
        const DOMElement* shown = &*iterator;
        EXPECT_EQ(shown, removed[2].get());
        EXPECT_THROW(++iterator, std::out_of_range);
        EXPECT_THROW(++iterator, std::out_of_range);
        EXPECT_EQ(&*iterator, shown);
        EXPECT_TRUE(iterator != DOMPath::IteratorTemplate<DOMElement>());
        // Each of the two has passed over one more; the element that was to be looked at is looked
        // at again.
        while (parent->GetChildren().size() < 9)
            parent->AddNewChild(u"a");
        std::vector<const DOMElement*> rest;
        for (++iterator; iterator != DOMPath::IteratorTemplate<DOMElement>(); ++iterator)
            rest.push_back(&*iterator);
        EXPECT_THAT(rest, ElementsAre(removed[1].get(), &parent->GetChildren()[7],
                                      &parent->GetChildren()[8]));
    }
}

TEST(DOMPath, GetFirstDoesNotLookBehindTheFirstMatch)
{
    // What lies behind the match goes deeper than the stack of a walk has room for at first.
    const auto make = [](bool isDeepBehind) {
        auto top = std::make_unique<DOMElement>(u"top");
        top->AddNewChild(u"match");
        if (isDeepBehind)
            top->AppendChild(MakeChain(1000, u"e"));
        return top;
    };
    const auto alone = make(false);
    const auto deep = make(true);
    const TString path(u"//match");
    std::size_t allowed = 0;
    const auto canFind = [&](DOMElement& top) {
        bool isFound = false;
        const FailingAllocations failing(allowed);
        try {
            isFound = DOMPath::GetFirst(top, path) == &top.GetChildren().front();
        } catch (const std::bad_alloc&) {
        }
        return isFound && !FailingAllocations::HasFailed();
    };
    while (!canFind(*alone))
        ASSERT_LT(++allowed, 100U);
    EXPECT_TRUE(canFind(*deep));
    bool isAllFound = true;
    {
        const FailingAllocations failing(allowed + 1);
        try {
            static_cast<void>(DOMPath::GetAll(*deep, path));
        } catch (const std::bad_alloc&) {
            isAllFound = false;
        }
    }
    EXPECT_FALSE(isAllFound) << "or the memory allowed says nothing";
}

TEST(DOMPath, ASubtreeInWhichALongPathCannotMatchIsNotEntered)
{
    for (const int steps : {3, 62, 63, 64, 100}) {
        TString path(u"top");
        auto top = std::make_unique<DOMElement>(u"top");
        DOMElement* deepest = top.get();
        for (int i = 1; i < steps; ++i) {
            path += u"/x";
            deepest = deepest->AddNewChild(u"x");
        }
        // Deeper than any room that the first match can have left.
        top->AppendChild(MakeChain(10'000, u"y"));
        DOMPath::Generator<DOMElement> generator(*top, path);
        EXPECT_EQ(generator.Next(), deepest);
        const FailingAllocations failing(0);
        EXPECT_EQ(generator.Next(), nullptr);
        EXPECT_FALSE(FailingAllocations::HasFailed()) << steps;
    }
}

TEST(DOMPath, AVisitAllocatesNothing)
{
    DOMElement top(u"top");
    for (int i = 0; i < 1000; ++i)
        top.AddNewChild(u"a")->AddNewChild(u"b")->AddNewChild(u"c");
    const TString path(u"top//a//c");
    DOMPath::Generator<DOMElement const> generator(top, path);
    int matches = 0;
    {
        const FailingAllocations failing(0);
        while (generator.Next() != nullptr)
            ++matches;
        EXPECT_FALSE(FailingAllocations::HasFailed());
    }
    EXPECT_EQ(matches, 1000);

    TString longPath(u"top");
    for (int i = 0; i < 100; ++i)
        longPath += u"//*";
    DOMPath::Generator<DOMElement const> longWalk(top, longPath);
    const FailingAllocations failing(40);
    EXPECT_EQ(longWalk.Next(), nullptr);
    EXPECT_FALSE(FailingAllocations::HasFailed());
}

TEST(DOMPath, ALongPathInADeepTreeTakesTwoBitsForEachStepThatMayComeNext)
{
    constexpr int c_steps = 8000;
    const auto chain = MakeChain(c_steps, u"e");
    TString path(u"/");
    for (int i = 0; i < c_steps; ++i)
        path += u"/*";
    const auto heap = [] {
        // With sanitizers, which have a heap of their own, it is always empty.
        const struct mallinfo2 info = mallinfo2();
        return info.uordblks + info.hblkhd;
    };
    DOMPath::Generator<DOMElement> generator(*chain, path);
    const std::size_t before = heap();
    // At the level that it comes to last, as many steps may come next as there are levels above.
    ASSERT_NE(generator.Next(), nullptr);
    constexpr std::size_t c_live = std::size_t{c_steps} * c_steps / 2;
    EXPECT_LT(heap() - before, c_live / 4 * 2 + (2U << 20)) << "a store may be half empty";
}

TEST(DOMPath, AMillionLevelsNeedNoStack)
{
    RunOnSmallStack([] {
        auto chain = MakeChain(c_deepLevels, u"e");
        EXPECT_EQ(DOMPath::GetAll(*chain, u"//e").size(), static_cast<std::size_t>(c_deepLevels));
        EXPECT_EQ(DOMPath::GetAll(*chain, u"e//e/e//e").size(),
                  static_cast<std::size_t>(c_deepLevels - 3));
        EXPECT_EQ(DOMPath::GetFirst(*chain, u"//none"), nullptr);
        TString path(u"e");
        for (int i = 1; i < c_deepLevels; ++i)
            path += u"/e";
        const DOMElement* deepest = DOMPath::GetFirst(*chain, path);
        ASSERT_NE(deepest, nullptr);
        EXPECT_FALSE(deepest->HasChildren());
    });
}
