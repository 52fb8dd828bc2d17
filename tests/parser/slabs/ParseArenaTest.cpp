#include "slabs/ParseArena.h"

#include "support/FailingAllocations.h"
#include "support/SmallStack.h"
#include "support/TreeTesting.h"
#include "tree/ParsedElements.h"

#include <cstdint>
#include <new>
#include <optional>
#include <random>

namespace {

std::unique_ptr<DOMElement> MakeElement(ParseArena& arena, DOM& dom, DOMElement& parent,
                                        const char* name)
{
    return ParsedElements::New(arena, TString(name), AttributeStorage(), &dom, parent);
}

/// Puts `count` children named by their number below the root, as a parse does.
void FillIn(ParseArena& arena, DOM& dom, int count)
{
    std::vector<std::unique_ptr<DOMElement>> children;
    for (int i = 0; i < count; ++i) {
        children.push_back(MakeElement(arena, dom, *dom.GetRoot(), std::to_string(i).c_str()));
        ArenaText text(arena);
        text.Append(u"text");
        ParsedElements::AppendText(*children.back(), text);
    }
    ParsedElements::AttachChildren(arena, *dom.GetRoot(), children);
}

std::string Numbers(int count)
{
    std::string text;
    for (int i = 0; i < count; ++i)
        text += (i > 0 ? "," : "") + std::to_string(i);
    return text;
}

} // namespace

TEST(ParseArena, HandsOutAlignedRoomThatDoesNotOverlap)
{
    std::mt19937 random(5);
    ParseArena arena;
    struct Piece
    {
        std::byte* memory;
        std::size_t size;
        ParseSlab* slab;
    };
    std::vector<Piece> pieces;
    for (int i = 0; i < 2000; ++i) {
        const std::size_t size = 1 + random() % ParseArena::c_maxObjectBytes;
        ParseSlab* slab = nullptr;
        std::byte* memory = arena.Allocate(size, slab);
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(memory) % alignof(void*), 0U);
        std::fill_n(memory, size, std::byte(i % 251));
        EXPECT_EQ(&ParseSlab::At(memory, slab->OffsetOf(memory)), slab);
        pieces.push_back({memory, size, slab});
    }
    for (std::size_t i = 0; i < pieces.size(); ++i) {
        const auto expected = std::byte(i % 251);
        EXPECT_TRUE(std::all_of(pieces[i].memory, pieces[i].memory + pieces[i].size,
                                [&](std::byte byte) { return byte == expected; }));
        pieces[i].slab->Release();
    }
}

TEST(ParseArena, WhatIsExpectedHasJustOneSlab)
{
    constexpr std::size_t c_bytes = 80;
    constexpr std::size_t c_count = 30;
    ParseArena arena(c_count * c_bytes);
    std::vector<ParseSlab*> slabs(c_count + 1);
    for (ParseSlab*& slab : slabs) {
        EXPECT_EQ(arena.GetRoom().empty(), &slab == &slabs.front() || &slab == &slabs.back());
        arena.Allocate(c_bytes, slab);
    }
    for (std::size_t i = 0; i < c_count; ++i)
        EXPECT_EQ(slabs[i], slabs[0]);
    // What was not expected has room, too.
    EXPECT_NE(slabs[c_count], slabs[0]);
    for (ParseSlab* slab : slabs)
        slab->Release();
}

TEST(ParseArena, MuchThatIsExpectedHasLargeSlabsAndALastOneForTheRest)
{
    constexpr std::size_t c_bytes = 128;
    constexpr std::size_t c_inSlab = (ParseSlab::c_maxBytes - sizeof(ParseSlab)) / c_bytes;
    ParseArena arena((2 * c_inSlab + 10) * c_bytes);
    std::vector<std::size_t> sizes;
    std::vector<ParseSlab*> slabs(2 * c_inSlab + 5);
    for (ParseSlab*& slab : slabs) {
        arena.Allocate(c_bytes, slab);
        const auto size =
            static_cast<std::size_t>(slab->End() - reinterpret_cast<const std::byte*>(slab));
        if (&slab == &slabs.front() || slab != *(&slab - 1))
            sizes.push_back(size);
    }
    ASSERT_EQ(sizes.size(), 3U);
    EXPECT_EQ(sizes[0], ParseSlab::c_maxBytes);
    EXPECT_EQ(sizes[1], ParseSlab::c_maxBytes);
    EXPECT_LT(sizes[2], 11 * c_bytes + sizeof(ParseSlab));
    for (ParseSlab* slab : slabs)
        slab->Release();
}

TEST(ParseArena, TextsOutliveTheArenaAndMayGrow)
{
    std::vector<TString> texts;
    {
        ParseArena arena;
        for (const TString::size_type length : {0, 1, 10, 400, 508, 509, 600, 100'000})
            texts.push_back(arena.MakeText(TString(length, u'x').view()));
    }
    for (TString& text : texts) {
        const TString before = text;
        EXPECT_EQ(text, TString(text.length(), u'x'));
        text.append(u'y');
        EXPECT_EQ(text, before + TString(u"y"));
    }
}

TEST(ParseArena, TextsAreInASlabUnlessTheyAreEmptyOrLarge)
{
    ParseArena arena;
    EXPECT_FALSE(ParseArena::IsTextForSlab(u""));
    EXPECT_TRUE(ParseArena::IsTextForSlab(u"x"));
    const std::u16string large(ParseArena::c_maxObjectBytes, u'x');
    EXPECT_FALSE(ParseArena::IsTextForSlab(large));
    EXPECT_EQ(arena.MakeText(large).view(), large);
    EXPECT_EQ(arena.GetSlab(), nullptr) << "none was needed";
}

TEST(ParseArena, TextsAreSharedMoreOftenThanTheirSlabHasRoomForObjects)
{
    ParseArena arena;
    TString first = arena.MakeText(u"name");
    ParseSlab* const slab = arena.GetSlab();
    std::vector<TString> shared;
    for (std::size_t i = 0; i < ParseSlab::c_maxBytes; ++i)
        shared.push_back(arena.ShareText(TStringBlock::SlotOf(first)));
    first.clear();
    EXPECT_FALSE(slab->IsExclusive());
    shared.resize(1);
    EXPECT_EQ(arena.GetSlab(), slab);
    arena.Close();
    EXPECT_TRUE(slab->IsExclusive()) << "only the text that is left holds it";
    EXPECT_EQ(shared[0], u"name");
}

TEST(ParseArena, HoldsNoSlabWhenItIsClosedHoweverReferencesAreCounted)
{
    for (const bool isShared : {false, true}) {
        ParseArena arena;
        const TString text = arena.MakeText(u"text");
        ParseSlab* const slab = arena.GetSlab();
        if (isShared)
            arena.ShareBeforeClosing();
        arena.Close();
        EXPECT_TRUE(slab->IsExclusive()) << isShared;
    }
}

TEST(ParseArena, ElementsOutliveTheArena)
{
    DOM dom;
    {
        ParseArena arena;
        FillIn(arena, dom, 50);
    }
    EXPECT_EQ(Outline(*dom.GetRoot()), "Document(" + Numbers(50) + ")");
    EXPECT_EQ(dom.GetDocumentRoot()->GetText(), TString(u"text"));
}

TEST(ParseArena, ListsFromAParseGrowAndShrinkLikeOthers)
{
    for (const int count : {1, 2, 100, 127, 128, 129, 1000}) {
        DOM dom;
        ParseArena arena;
        FillIn(arena, dom, count);
        std::string expected = Numbers(count);
        EXPECT_EQ(Outline(*dom.GetRoot()), "Document(" + expected + ")");
        dom.GetRoot()->AddNewChild(u"x");
        EXPECT_EQ(Outline(*dom.GetRoot()), "Document(" + expected + ",x)");
        dom.GetRoot()->RemoveChild(u"x");
        dom.GetRoot()->AddNewChild(u"y", dom.GetDocumentRoot());
        EXPECT_EQ(Outline(*dom.GetRoot()), "Document(y," + expected + ")");
        EXPECT_EQ(dom.GetRoot()->RemoveChildren().size(), static_cast<std::size_t>(count) + 1);
        dom.GetRoot()->AddNewChild(u"z");
        EXPECT_EQ(Outline(*dom.GetRoot()), "Document(z)");
    }
}

TEST(ParseArena, AListFromAParseHasRoomForWhatWasTakenOut)
{
    DOM dom;
    ParseArena arena;
    FillIn(arena, dom, 4);
    for (int i = 0; i < 20; ++i)
        dom.GetRoot()->GetChildren().back().MoveToFront();
    EXPECT_EQ(Outline(*dom.GetRoot()), "Document(0,1,2,3)");
}

TEST(ParseArena, AttachingAppendsToChildrenThatAreThere)
{
    DOM dom;
    ParseArena arena;
    AddChildren(*dom.GetRoot(), "a,b");
    FillIn(arena, dom, 3);
    EXPECT_EQ(Outline(*dom.GetRoot()), "Document(a,b,0,1,2)");
    FillIn(arena, dom, 2);
    EXPECT_EQ(Outline(*dom.GetRoot()), "Document(a,b,0,1,2,0,1)");
}

TEST(ParseArena, ParsedElementsMayBeRemovedAndOutliveTheirDocument)
{
    std::vector<std::unique_ptr<DOMElement>> removed;
    {
        DOM dom;
        ParseArena arena;
        FillIn(arena, dom, 100);
        AddError(dom.GetRoot()->GetChildren()[7], "seven");
        while (dom.GetRoot()->GetChildren().size() > 50)
            removed.push_back(dom.GetRoot()->RemoveChild(dom.GetRoot()->GetChildren()[1]));
        EXPECT_TRUE(dom.HasErrors());
    }
    for (const auto& element : removed) {
        EXPECT_EQ(element->GetDOMManager(), nullptr);
        EXPECT_EQ(element->GetText(), TString(u"text"));
    }
    DOM other;
    other.GetRoot()->AppendChild(std::move(removed[6]));
    EXPECT_EQ(Outline(*other.GetRoot()), "Document(7)");
}

TEST(ParseArena, CopiesOfParsedElementsOutliveThem)
{
    std::optional<DOMElement> copy;
    auto dom = std::make_unique<DOM>();
    {
        ParseArena arena;
        FillIn(arena, *dom, 30);
    }
    copy.emplace(*dom->GetRoot());
    EXPECT_TRUE(*copy == *dom->GetRoot());
    dom.reset();
    EXPECT_EQ(Outline(*copy), "Document(" + Numbers(30) + ")");
}

TEST(ParseArena, IsAsBeforeWhenMemoryRunsOut)
{
    DOM dom;
    ParseArena arena;
    std::size_t made = 0;
    std::vector<std::unique_ptr<DOMElement>> elements;
    elements.reserve(1000);
    const TString name(u"a");
    for (int i = 0; i < 1000; ++i) {
        const FailingAllocations failing(i % 3 == 0 ? 100 : 0);
        try {
            elements.push_back(
                ParsedElements::New(arena, name, AttributeStorage(), &dom, *dom.GetRoot()));
            ++made;
        } catch (const std::bad_alloc&) {
        }
    }
    EXPECT_GT(made, 333U);
    EXPECT_EQ(elements.size(), made);
    ParsedElements::AttachChildren(arena, *dom.GetRoot(), elements);
    EXPECT_EQ(dom.GetRoot()->GetChildren().size(), made);
}

TEST(ParseArena, ADeepParsedTreeEndsOnASmallStack)
{
    RunOnSmallStack([] {
        DOM dom;
        ParseArena arena;
        std::unique_ptr<DOMElement> inner;
        for (int i = 0; i < 1'000'000; ++i) {
            auto outer = MakeElement(arena, dom, *dom.GetRoot(), "e");
            if (inner != nullptr)
                ParsedElements::AttachChildren(arena, *outer, std::span(&inner, 1));
            inner = std::move(outer);
        }
        ParsedElements::AttachChildren(arena, *dom.GetRoot(), std::span(&inner, 1));
        DOM other;
        dom.GetDocumentRoot()->Move(*other.GetRoot(), nullptr);
        EXPECT_FALSE(dom.GetRoot()->HasChildren());
        EXPECT_TRUE(other.GetRoot()->HasChildren());
    });
}
