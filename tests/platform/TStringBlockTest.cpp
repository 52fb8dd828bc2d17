#include <kesplatform/detail/TStringBlock.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <new>
#include <optional>
#include <thread>
#include <vector>

using namespace std::string_view_literals;

namespace {

/// Counts the blocks that it has destroyed.
class CountingOwner final : public TStringBlock::Owner
{
public:
    void Destroy(TStringBlock* block) noexcept override
    {
        ++m_destroyed;
        block->~TStringBlock();
        std::free(block);
    }

    int GetDestroyed() const { return m_destroyed; }

private:
    int m_destroyed = 0;
};

/// A block with its slots, laid out one behind the other.
class LaidOutBlock
{
public:
    LaidOutBlock(CountingOwner& owner, const std::vector<std::u16string_view>& texts)
    {
        std::size_t size = sizeof(TStringBlock);
        for (const std::u16string_view text : texts)
            size += TStringBlock::SlotSize(text.size());
        auto* memory = static_cast<std::byte*>(std::malloc(size));
        m_block = new (memory) TStringBlock(owner);
        std::byte* slot = memory + sizeof(TStringBlock);
        for (const std::u16string_view text : texts) {
            m_block->WriteSlot(slot, text);
            m_slots.push_back(slot);
            slot += TStringBlock::SlotSize(text.size());
        }
    }

    TStringBlock& GetBlock() const { return *m_block; }
    TString Share(std::size_t index) const { return TStringBlock::ShareSlot(m_slots[index]); }
    std::u16string_view View(std::size_t index) const
    {
        return TStringBlock::ViewSlot(m_slots[index]);
    }

private:
    TStringBlock* m_block;
    std::vector<const std::byte*> m_slots;
};

} // namespace

TEST(TStringBlock, HoldsTextsSideBySide)
{
    CountingOwner owner;
    const LaidOutBlock laidOut(owner, {u"first", u"", u"th\0rd"sv, std::u16string_view(), u"x"});
    EXPECT_EQ(u"first", laidOut.View(0));
    EXPECT_EQ(u"", laidOut.View(1));
    EXPECT_EQ(u"th\0rd"sv, laidOut.View(2));
    EXPECT_EQ(u"", laidOut.View(3));
    EXPECT_EQ(u"x", laidOut.View(4));
    EXPECT_TRUE(laidOut.Share(1).IsEmpty());
    EXPECT_EQ(TString(), laidOut.Share(1));
    laidOut.GetBlock().Release();
    EXPECT_EQ(1, owner.GetDestroyed());
}

TEST(TStringBlock, SharesSlotsWithoutCopying)
{
    CountingOwner owner;
    const LaidOutBlock laidOut(owner, {u"text"});
    {
        const TString text = laidOut.Share(0);
        const TString copy = text; // NOLINT(performance-unnecessary-copy-initialization)
        EXPECT_EQ(laidOut.View(0).data(), text.utf16());
        EXPECT_EQ(laidOut.View(0).data(), copy.utf16());
        EXPECT_EQ(TString(u"text"), text);
        EXPECT_EQ(u'\0', text.utf16()[4]);
        EXPECT_FALSE(laidOut.GetBlock().IsExclusive());
    }
    EXPECT_TRUE(laidOut.GetBlock().IsExclusive());
    laidOut.GetBlock().Release();
    EXPECT_EQ(1, owner.GetDestroyed());
}

TEST(TStringBlock, LivesAsLongAsAnyOfItsTexts)
{
    CountingOwner owner;
    std::optional<TString> first;
    TString second;
    {
        const LaidOutBlock laidOut(owner, {u"first", u"second"});
        first = laidOut.Share(0);
        second = laidOut.Share(1);
        laidOut.GetBlock().Release();
    }
    EXPECT_EQ(0, owner.GetDestroyed());
    first.reset();
    EXPECT_EQ(0, owner.GetDestroyed());
    TString moved = std::move(second);
    EXPECT_EQ(TString(u"second"), moved);
    moved.clear();
    EXPECT_EQ(1, owner.GetDestroyed());
}

TEST(TStringBlock, LivesWhileItIsRetained)
{
    CountingOwner owner;
    const LaidOutBlock laidOut(owner, {u"text"});
    TStringBlock& block = laidOut.GetBlock();
    block.Retain();
    EXPECT_FALSE(block.IsExclusive());
    block.Release();
    EXPECT_TRUE(block.IsExclusive());
    EXPECT_EQ(0, owner.GetDestroyed());
    block.Release();
    EXPECT_EQ(1, owner.GetDestroyed());
}

TEST(TStringBlock, IsNotTouchedByChangesOfItsTexts)
{
    CountingOwner owner;
    const LaidOutBlock laidOut(owner, {u"abc", u"neighbour"});
    // Even when the text is the last that shares the block.
    TString text = laidOut.Share(0);
    laidOut.GetBlock().Release();
    const std::u16string_view before = laidOut.View(0);
    TString keep = laidOut.Share(1);
    text += u'd';
    text.append(text);
    EXPECT_EQ(TString(u"abcdabcd"), text);
    EXPECT_EQ(u"abc", before);
    EXPECT_EQ(TString(u"neighbour"), keep);

    TString last = laidOut.Share(0);
    keep.clear();
    EXPECT_EQ(0, owner.GetDestroyed());
    // Appending its own units frees the block only after they were read.
    last.append(last.view());
    EXPECT_EQ(TString(u"abcabc"), last);
    EXPECT_EQ(1, owner.GetDestroyed());
}

TEST(TStringBlock, TakesAReferenceBackFromATextThatStandsInIt)
{
    CountingOwner owner;
    const LaidOutBlock laidOut(owner, {u"one"});
    TString text = laidOut.Share(0);
    EXPECT_EQ(&laidOut.GetBlock(), TStringBlock::TakeReference(text));
    EXPECT_TRUE(text.IsEmpty());
    EXPECT_EQ(nullptr, TStringBlock::TakeReference(text));
    laidOut.GetBlock().Release();
    EXPECT_EQ(0, owner.GetDestroyed());
    laidOut.GetBlock().ReleaseUnshared(1);
    EXPECT_EQ(1, owner.GetDestroyed());

    TString alone(u"alone");
    EXPECT_EQ(nullptr, TStringBlock::TakeReference(alone));
    EXPECT_EQ(TString(u"alone"), alone);
}

TEST(TStringBlock, CountsReferencesAcrossThreads)
{
    CountingOwner owner;
    const LaidOutBlock laidOut(owner, {u"one", u"two"});
    {
        std::vector<std::thread> threads;
        for (std::size_t i = 0; i < 4; ++i) {
            threads.emplace_back([text = laidOut.Share(i % 2)] {
                for (int round = 0; round < 20000; ++round) {
                    const TString copy =
                        text; // NOLINT(performance-unnecessary-copy-initialization)
                    if (copy.length() != 3)
                        ADD_FAILURE() << "a text changed under its owner";
                }
            });
        }
        laidOut.GetBlock().Release();
        for (std::thread& thread : threads)
            thread.join();
    }
    EXPECT_EQ(1, owner.GetDestroyed());
}
