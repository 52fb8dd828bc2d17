#pragma once

#include "support/FailingAllocations.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <functional>
#include <new>
#include <string>

/// Runs `change` on one World after the other, allowing it one allocation more each time, until
/// none fails. A World describes itself; whatever fails must leave it as it was, and change it
/// whole when tried again.
template <typename World>
void ExpectAllOrNothing(const std::function<void(World&)>& change)
{
    std::string after;
    {
        World world;
        change(world);
        after = world.Describe();
    }
    for (std::size_t allowed = 0;; ++allowed) {
        ASSERT_LT(allowed, 10'000U);
        bool done = true;
        World world;
        const std::string before = world.Describe();
        {
            const FailingAllocations failing(allowed);
            try {
                change(world);
            } catch (const std::bad_alloc&) {
                done = false;
            }
        }
        const bool hasFailed = FailingAllocations::HasFailed();
        // Only what reports on a change may fail without it.
        EXPECT_TRUE(done || hasFailed) << "after " << allowed;
        ASSERT_EQ(world.Describe(), done ? after : before) << "after " << allowed;
        if (!hasFailed)
            return;
        if (done)
            continue;
        change(world);
        ASSERT_EQ(world.Describe(), after) << "after " << allowed;
    }
}
