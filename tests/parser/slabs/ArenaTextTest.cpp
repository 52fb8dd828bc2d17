#include "slabs/ArenaText.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

namespace {

std::u16string MakeUnits(std::mt19937& random, std::size_t length)
{
    std::u16string units;
    for (std::size_t i = 0; i < length; ++i)
        units += static_cast<char16_t>(u'a' + random() % 26);
    return units;
}

} // namespace

TEST(ArenaText, IsWhatItsPiecesWereWhereverTheyEndUp)
{
    std::mt19937 random(7);
    ParseArena arena;
    ArenaText run(arena);
    std::vector<std::u16string> expected;
    std::vector<TString> taken;
    for (int i = 0; i < 3000; ++i) {
        const std::size_t longest = i % 50 == 0 ? 5000 : 60;
        const std::size_t pieces = 1 + random() % 4;
        std::u16string whole;
        for (std::size_t k = 0; k < pieces; ++k) {
            const std::u16string piece = MakeUnits(random, 1 + random() % longest);
            run.Append(piece);
            whole += piece;
            ASSERT_EQ(run.View(), whole);
        }
        taken.push_back(run.Take());
        expected.push_back(whole);
        ASSERT_TRUE(run.IsEmpty());
    }
    for (std::size_t i = 0; i < taken.size(); ++i)
        ASSERT_EQ(taken[i].view(), expected[i]);
}

TEST(ArenaText, OutlivesTheArena)
{
    TString text;
    {
        ParseArena arena;
        // The first object of an arena opens its first slab, which the next one goes into.
        const TString first = arena.MakeText(u"first");
        ArenaText run(arena);
        run.Append(u"to ");
        run.Append(u"stay");
        text = run.Take();
    }
    EXPECT_EQ(text, u"to stay");
    text += u" and grow";
    EXPECT_EQ(text, u"to stay and grow");
}

TEST(ArenaText, WhatIsDroppedTakesNoRoom)
{
    ParseArena arena;
    const TString first = arena.MakeText(u"first");
    const std::byte* const next = arena.GetRoom().data();
    ArenaText run(arena);
    run.Append(u"\n    ");
    run.Drop();
    EXPECT_TRUE(run.IsEmpty());
    EXPECT_EQ(run.View(), u"");
    EXPECT_EQ(arena.GetRoom().data(), next);
    run.Append(u"kept");
    EXPECT_EQ(run.Take(), u"kept");
    EXPECT_GT(arena.GetRoom().data(), next);
}

TEST(ArenaText, ALongRunThatIsDroppedLeavesNothingToTheNext)
{
    ParseArena arena;
    ArenaText run(arena);
    run.Append(std::u16string(100000, u'x'));
    run.Drop();
    EXPECT_TRUE(run.IsEmpty());
    run.Append(u"next");
    EXPECT_EQ(run.View(), u"next");
    EXPECT_EQ(run.Take(), u"next");
}

TEST(ArenaText, MayHoldNullUnits)
{
    using namespace std::string_view_literals;
    ParseArena arena;
    const TString first = arena.MakeText(u"first");
    ArenaText run(arena);
    run.Append(u"a\0b"sv);
    EXPECT_EQ(run.Take().view(), u"a\0b"sv);
}
