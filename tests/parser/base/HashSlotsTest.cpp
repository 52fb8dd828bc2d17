#include "base/HashSlots.h"

#include <gtest/gtest.h>

#include <deque>

#include <malloc.h>

namespace {

struct Numbered
{
    std::uint32_t hash;
    int number;
};

Numbered* FindNumber(const HashSlots<Numbered>& slots, std::uint32_t hash, int number)
{
    return slots.Find(hash, [number](const Numbered& known) { return known.number == number; });
}

} // namespace

TEST(HashSlots, FindsWhatWasAddedAndNothingElse)
{
    std::deque<Numbered> owned;
    HashSlots<Numbered> slots;
    EXPECT_EQ(FindNumber(slots, 0, 0), nullptr);
    for (int i = 0; i < 1000; ++i) {
        slots.Reserve(owned.size() + 1);
        // Seven share each hash, and many more their slot.
        slots.Add(owned.emplace_back(Numbered{static_cast<std::uint32_t>(i / 7) * 64, i}));
    }
    for (Numbered& object : owned) {
        EXPECT_EQ(FindNumber(slots, object.hash, object.number), &object);
        EXPECT_EQ(FindNumber(slots, object.hash + 64, object.number), nullptr);
    }
    EXPECT_EQ(FindNumber(slots, 0, 1000), nullptr);
}

TEST(HashSlots, GiveBackWhatManyHaveMadeThemTake)
{
    const auto heap = [] {
        // With sanitizers, which have a heap of their own, it is always empty.
        const struct mallinfo2 info = mallinfo2();
        return info.uordblks + info.hblkhd;
    };
    HashSlots<Numbered> slots;
    std::size_t const before = heap();
    slots.Reserve(64);
    for (std::size_t count = 128; count <= 65536; count *= 2)
        slots.Reserve(count);
    slots.Clear();
    EXPECT_LE(heap(), before + 4096);
}

TEST(HashSlots, ForgetsAllWhetherTheyWereFewOrMany)
{
    for (const int count : {3, 10000}) {
        std::deque<Numbered> owned;
        HashSlots<Numbered> slots;
        for (int round = 0; round < 2; ++round) {
            for (int i = 0; i < count; ++i) {
                slots.Reserve(static_cast<std::size_t>(i) + 1);
                slots.Add(owned.emplace_back(Numbered{static_cast<std::uint32_t>(i), round}));
            }
            ASSERT_NE(FindNumber(slots, 2, round), nullptr);
            slots.Clear();
            EXPECT_EQ(FindNumber(slots, 2, round), nullptr);
        }
    }
}
