#include "slabs/AttributeBlock.h"

#include "support/AttributeBlocks.h"

#include <gtest/gtest.h>

#include <array>
#include <memory>
#include <random>
#include <string>
#include <string_view>
#include <vector>

TEST(AttributeBlock, HoldsNamesAndValuesInOrder)
{
    AttributeBlock* block = MakeBlock({{u"b", u"1"}, {u"a", u""}, {u"c", u"\xD800x"}});
    ASSERT_NE(block, nullptr);
    EXPECT_EQ(block->Count(), 3U);
    EXPECT_EQ(block->Names().Name(0), TString(u"b"));
    EXPECT_EQ(block->Value(0), u"1");
    EXPECT_EQ(block->Value(1), u"");
    EXPECT_EQ(block->Value(2), u"\xD800x");
    EXPECT_EQ(block->ShareValue(2), TString(u"\xD800x"));
    EXPECT_EQ(block->Names().Find(u"c"), 2U);
    EXPECT_EQ(block->Names().Find(u"x"), 3U);
    std::string order;
    for (std::size_t rank = 0; rank < 3; ++rank)
        order += block->Names().Name(block->Names().Sorted(rank)).toStdString();
    EXPECT_EQ(order, "abc");
    std::string visited;
    block->ForEach([&](const TString& name, std::u16string_view value) {
        visited += name.toStdString() + TString(value).toStdString().substr(0, 1) + " ";
    });
    EXPECT_EQ(visited.substr(0, 5), "b1 a ");
    const TString shared = block->ShareValue(0);
    block->Release();
    EXPECT_EQ(shared, TString(u"1")) << "a shared value keeps the block";
}

TEST(AttributeBlock, IsNotMadeBeyondItsLargestSize)
{
    const TString large(ParseArena::c_maxObjectBytes / sizeof(char16_t), u'x');
    const TString fits(ParseArena::c_maxObjectBytes / sizeof(char16_t) - 100, u'x');
    EXPECT_EQ(MakeBlock({{u"k", large}}), nullptr);
    EXPECT_EQ(MakeBlock({{u"k", TString(1'000'000, u'x')}}), nullptr);
    EXPECT_EQ(MakeBlock({{u"k", fits}, {u"l", fits}}), nullptr);
    AttributeBlock* block = MakeBlock({{u"k", fits}});
    ASSERT_NE(block, nullptr);
    EXPECT_EQ(block->Value(0), fits.view());
    block->Release();
}

TEST(AttributeBlock, SharesOneListOfNamesAmongMany)
{
    const std::array<TString, 2> names{TString(u"a"), TString(u"b")};
    auto* list = new AttributeNames(names);
    auto arena = std::make_unique<ParseArena>();
    std::mt19937 random(3);
    std::vector<AttributeBlock*> blocks;
    std::vector<std::array<std::u16string, 2>> expected;
    for (int i = 0; i < 100; ++i) {
        expected.push_back(
            {std::u16string(random() % 20, u'x'), std::u16string(random() % 20, u'y')});
        const std::array<std::u16string_view, 2> values{expected.back()[0], expected.back()[1]};
        blocks.push_back(AttributeBlock::Create(*arena, *list, values));
    }
    // The blocks keep what they need.
    list->Release();
    arena.reset();
    for (std::size_t i = 0; i < blocks.size(); ++i) {
        EXPECT_EQ(&blocks[i]->Names(), &blocks[0]->Names());
        EXPECT_EQ(blocks[i]->Value(0), expected[i][0]);
        EXPECT_EQ(blocks[i]->Value(1), expected[i][1]);
    }
    for (AttributeBlock* block : blocks)
        block->Release();
}
