#include <kescorexml/detail/StandaloneContent.h>

#include "slabs/ParseArena.h"
#include "support/FailingAllocations.h"

#include <kescorexml/StandaloneDOMElement.h>

#include <gtest/gtest.h>

#include <new>
#include <string>
#include <vector>

namespace {

/// A list of texts, empty again in the end.
class Texts
{
public:
    Texts() = default;
    ~Texts() { list.Truncate(0); }
    Texts(const Texts&) = delete;
    Texts& operator=(const Texts&) = delete;

    std::string Describe() const
    {
        std::string text;
        for (const StandaloneNode& node : list)
            text += node.text.toStdString() + ' ';
        return text;
    }

    StandaloneContent list;
};

StandaloneNode MakeText(int number)
{
    return {TString::number(number), nullptr};
}

std::vector<StandaloneNode> MakeTexts(int count)
{
    std::vector<StandaloneNode> nodes;
    for (int i = 0; i < count; ++i)
        nodes.push_back(MakeText(i));
    return nodes;
}

} // namespace

TEST(StandaloneContent, InsertsErasesAndPopsWhereverItIsAsked)
{
    Texts texts;
    texts.list.ReserveMore(5);
    for (const int number : {1, 2, 3})
        texts.list.PushBack(MakeText(number));
    texts.list.Insert(0, MakeText(0));
    texts.list.Insert(2, MakeText(9));
    EXPECT_EQ(texts.Describe(), "0 1 9 2 3 ");
    EXPECT_EQ(texts.list.Take(2).text, u"9");
    EXPECT_EQ(texts.list.Take(0).text, u"0");
    EXPECT_EQ(texts.Describe(), "1 2 3 ");
    EXPECT_EQ(texts.list.PopBack().text, u"3");
    texts.list.Truncate(1);
    EXPECT_EQ(texts.Describe(), "1 ");
}

TEST(StandaloneContent, GrowsOutOfTheMemoryOfAParse)
{
    for (const int count : {1, 5, 500}) {
        Texts texts;
        std::vector<StandaloneNode> nodes = MakeTexts(count);
        {
            ParseArena arena;
            texts.list.FillIn(arena, nodes.data(), nodes.size());
        }
        texts.list.ReserveMore(2);
        texts.list.PushBack(MakeText(-1));
        texts.list.Insert(0, MakeText(-2));
        ASSERT_EQ(texts.list.size(), nodes.size() + 2);
        EXPECT_EQ(texts.list[0].text, u"-2");
        EXPECT_EQ(texts.list[1].text, u"0");
        EXPECT_EQ(texts.list.back().text, u"-1");
    }
}

TEST(StandaloneContent, IsAsItWasWhenMemoryFails)
{
    Texts texts;
    std::vector<StandaloneNode> nodes = MakeTexts(3);
    ParseArena arena;
    {
        const FailingAllocations failing(0);
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
        // Sanitizers let only operator new fail, from which slabs do not come.
        EXPECT_THROW(texts.list.FillIn(arena, nodes.data(), nodes.size()), std::bad_alloc);
#endif
        EXPECT_THROW(texts.list.ReserveExactly(1), std::bad_alloc);
    }
    EXPECT_TRUE(texts.list.empty());
    EXPECT_EQ(nodes[2].text, u"2");
    texts.list.FillIn(arena, nodes.data(), nodes.size());
    {
        const FailingAllocations failing(0);
        EXPECT_THROW(texts.list.ReserveMore(1), std::bad_alloc);
    }
    EXPECT_EQ(texts.Describe(), "0 1 2 ");
}

TEST(StandaloneContent, LeavesASlabToTheCallerAndNothingElse)
{
    ParseArena arena;
    StandaloneContent none;
    EXPECT_EQ(none.TakeSlab(), nullptr);
    Texts onHeap;
    onHeap.list.ReserveExactly(3);
    EXPECT_EQ(onHeap.list.TakeSlab(), nullptr);
    Texts inSlab;
    std::vector<StandaloneNode> nodes = MakeTexts(2);
    inSlab.list.FillIn(arena, nodes.data(), nodes.size());
    inSlab.list.Truncate(0);
    ParseSlab* const slab = inSlab.list.TakeSlab();
    ASSERT_EQ(slab, arena.GetSlab());
    slab->Release();
    EXPECT_EQ(inSlab.list.TakeSlab(), nullptr);
}
