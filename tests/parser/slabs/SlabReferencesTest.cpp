#include "slabs/SlabReferences.h"

#include "slabs/ParseArena.h"

#include <gtest/gtest.h>

#include <vector>

TEST(SlabReferences, GiveBackExactlyWhatWasAddedThoughSomeIsNone)
{
    ParseArena arena;
    const TString kept = arena.MakeText(u"kept");
    TString first = arena.MakeText(u"first");
    TString second = arena.MakeText(u"second");
    ParseSlab* const slab = arena.GetSlab();
    arena.Close();
    {
        SlabReferences references;
        references.Add(TStringBlock::TakeReference(first));
        references.Add(nullptr);
        references.Add(TStringBlock::TakeReference(second));
        EXPECT_FALSE(slab->IsExclusive());
    }
    EXPECT_TRUE(slab->IsExclusive());
    EXPECT_EQ(kept, u"kept");
}

TEST(SlabShares, KeepNoReferenceHoweverManyWereTaken)
{
    for (const std::size_t count : {1U, 2U, 511U, 512U, 513U, 1023U, 1024U}) {
        ParseArena arena;
        const TString text = arena.MakeText(u"text");
        ParseSlab* const slab = arena.GetSlab();
        arena.Close();
        std::vector<TString> copies;
        {
            SlabShares shares;
            for (std::size_t i = 0; i < count; ++i)
                copies.push_back(shares.Share(text, slab));
        }
        EXPECT_FALSE(slab->IsExclusive());
        copies.clear();
        EXPECT_TRUE(slab->IsExclusive()) << count;
    }
}
