#pragma once

#include <gtest/gtest.h>

#include <string>

/// Fails when there is a difference. False when so many have been shown in the running test that no
/// more are of use.
inline bool ExpectSame(const std::string& difference)
{
    constexpr int c_enough = 5;
    EXPECT_EQ(difference, "");
    return testing::UnitTest::GetInstance()->current_test_info()->result()->total_part_count() <
           c_enough;
}
