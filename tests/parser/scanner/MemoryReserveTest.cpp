#include "scanner/MemoryReserve.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <limits>
#include <vector>

TEST(MemoryReserve, GivesAlignedBlocksThatDoNotOverlap)
{
    MemoryReserve reserve;
    std::vector<void*> blocks;
    while (void* const block = reserve.Allocate(100)) {
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block) % alignof(std::max_align_t), 0U);
        std::memset(block, static_cast<int>(blocks.size()), 100);
        blocks.push_back(block);
    }
    EXPECT_GT(blocks.size(), 100U);
    for (std::size_t i = 0; i < blocks.size(); ++i) {
        const auto* const bytes = static_cast<const unsigned char*>(blocks[i]);
        EXPECT_EQ(bytes[0], static_cast<unsigned char>(i));
        EXPECT_EQ(bytes[99], static_cast<unsigned char>(i));
    }
}

TEST(MemoryReserve, IsWholeAgainWhenAllIsBack)
{
    MemoryReserve reserve;
    for (int round = 0; round < 3; ++round) {
        std::vector<void*> blocks;
        while (void* const block = reserve.Allocate(1000))
            blocks.push_back(block);
        EXPECT_EQ(blocks.size(), 16U);
        for (void* const block : blocks)
            EXPECT_TRUE(reserve.Deallocate(block));
    }
}

TEST(MemoryReserve, GivesOutAgainWhatLiesBehindTheLastBlockThatIsNotBack)
{
    MemoryReserve reserve;
    void* const first = reserve.Allocate(100);
    for (int round = 0; round < 1000; ++round) {
        // As the stack of a destructor grows.
        void* const small = reserve.Allocate(1000);
        void* const large = reserve.Allocate(2000);
        ASSERT_NE(large, nullptr);
        EXPECT_TRUE(reserve.Deallocate(small));
        EXPECT_TRUE(reserve.Deallocate(large));
    }
    EXPECT_TRUE(reserve.Deallocate(first));
    EXPECT_EQ(reserve.Allocate(1), first);
}

TEST(MemoryReserve, TakesABlockBackTwice)
{
    MemoryReserve reserve;
    void* const first = reserve.Allocate(100);
    void* const second = reserve.Allocate(100);
    for (int i = 0; i < 2; ++i)
        EXPECT_TRUE(reserve.Deallocate(first));
    EXPECT_NE(reserve.Allocate(100), first);
    for (int i = 0; i < 2; ++i)
        EXPECT_TRUE(reserve.Deallocate(second));
}

TEST(MemoryReserve, GrowsWhileNothingOfItIsInUse)
{
    constexpr std::size_t c_large = 100'000;
    MemoryReserve reserve;
    void* const block = reserve.Allocate(100);
    reserve.Require(c_large);
    EXPECT_EQ(reserve.Allocate(c_large - 100), nullptr);
    EXPECT_TRUE(reserve.Deallocate(block));
    reserve.Require(c_large);
    void* const large = reserve.Allocate(c_large - 100);
    ASSERT_NE(large, nullptr);
    std::memset(large, 1, c_large - 100);
    EXPECT_TRUE(reserve.Deallocate(large));
}

TEST(MemoryReserve, KnowsItsOwnBlocks)
{
    MemoryReserve reserve;
    int other = 0;
    EXPECT_FALSE(reserve.Deallocate(&other));
    EXPECT_FALSE(reserve.Deallocate(nullptr));
    EXPECT_EQ(reserve.Allocate(std::numeric_limits<std::size_t>::max()), nullptr);
}
