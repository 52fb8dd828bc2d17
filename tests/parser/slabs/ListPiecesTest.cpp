#include "slabs/ListPieces.h"

#include "support/FailingAllocations.h"

#include <kescorexml/DOMElement.h>
#include <kescorexml/detail/ElementList.h>

#include <gtest/gtest.h>

#include <cstddef>
#include <memory>
#include <new>
#include <utility>

namespace {

/// A list of elements, empty again in the end.
class Elements
{
public:
    Elements() = default;
    ~Elements() { list.Truncate(0); }
    Elements(const Elements&) = delete;
    Elements& operator=(const Elements&) = delete;

    void Add(ListPieces& pieces)
    {
        auto element = std::make_unique<DOMElement>(TString::number(list.size()));
        list.ReserveNext(pieces);
        list.PushBack(std::move(element));
    }
    bool CountsUp() const
    {
        for (std::size_t i = 0; i < list.size(); ++i) {
            if (list[i]->GetName() != TString::number(i))
                return false;
        }
        return true;
    }
    const void* Place() const noexcept { return list.begin(); }

    ElementList list;
};

} // namespace

TEST(ListPieces, AreHandedOutAgainForListsOfTheSameSize)
{
    ParseArena arena;
    ListPieces pieces(arena);
    Elements first;
    first.Add(pieces);
    const void* const ofOne = first.Place();
    first.Add(pieces);
    const void* const ofTwo = first.Place();
    first.Add(pieces);
    Elements second;
    second.Add(pieces);
    EXPECT_EQ(second.Place(), ofOne);
    second.Add(pieces);
    EXPECT_EQ(second.Place(), ofTwo);
    Elements third;
    third.Add(pieces);
    EXPECT_EQ(third.Place(), ofOne);
    EXPECT_TRUE(first.CountsUp() && second.CountsUp() && third.CountsUp());
}

TEST(ListPieces, TakeOverThoseOfAnotherArenaWhichMayBeGone)
{
    Elements first;
    Elements second;
    ParseArena arena;
    ListPieces pieces(arena);
    {
        ParseArena other;
        ListPieces others(other);
        first.Add(others);
    }
    const void* const ofOne = first.Place();
    first.Add(pieces);
    second.Add(pieces);
    EXPECT_EQ(second.Place(), ofOne);
    second.Add(pieces);
    EXPECT_TRUE(first.CountsUp() && second.CountsUp());
}

TEST(ListPieces, HoldListsOfAnyLength)
{
    ParseArena arena;
    ListPieces pieces(arena);
    for (const std::size_t length : {1U, 15U, 16U, 17U, 18U, 300U, 5000U}) {
        Elements elements;
        while (elements.list.size() < length)
            elements.Add(pieces);
        EXPECT_TRUE(elements.CountsUp()) << length;
        EXPECT_EQ(elements.list.size(), length);
    }
}

TEST(ListPieces, AreLeftInPlaceWhileThereIsRoom)
{
    ParseArena arena;
    ListPieces pieces(arena);
    Elements elements;
    elements.list.ReserveMore(2);
    elements.Add(pieces);
    const void* const place = elements.Place();
    elements.Add(pieces);
    EXPECT_EQ(elements.Place(), place);
    elements.list.PopBack();
    elements.Add(pieces);
    EXPECT_EQ(elements.Place(), place);
}

TEST(ListPieces, OutliveTheArenaThatTheyComeFromAndLeaveNothingBehind)
{
    const std::ptrdiff_t before = CountLiveAllocations();
    {
        Elements kept;
        {
            ParseArena arena;
            ListPieces pieces(arena);
            for (int i = 0; i < 20; ++i) {
                // Of two that are outgrown at once, one is dropped.
                Elements one;
                Elements other;
                for (Elements* elements : {&one, &other, &one, &other, &kept})
                    elements->Add(pieces);
            }
        }
        EXPECT_TRUE(kept.CountsUp());
        EXPECT_EQ(kept.list.size(), 20U);
    }
    EXPECT_EQ(CountLiveAllocations(), before);
}

TEST(ListPieces, LeaveAListAsItWasWhenMemoryRunsOut)
{
    ParseArena arena;
    ListPieces pieces(arena);
    Elements elements;
    int failed = 0;
    for (std::size_t length = 0; length < 100; ++length) {
        try {
            const FailingAllocations failing(0);
            elements.list.ReserveNext(pieces);
        } catch (const std::bad_alloc&) {
            ++failed;
        }
        EXPECT_EQ(elements.list.size(), length);
        EXPECT_TRUE(elements.CountsUp());
        elements.Add(pieces);
    }
    EXPECT_GT(failed, 5);
}
