#include "base/LeadingWhitespace.h"

#include <gtest/gtest.h>

TEST(LeadingWhitespace, EndsBeforeTheFirstOtherByte)
{
    EXPECT_EQ(SkipLeadingWhitespace(""), 0U);
    EXPECT_EQ(SkipLeadingWhitespace("a "), 0U);
    EXPECT_EQ(SkipLeadingWhitespace(" \t\r\na "), 4U);
}

TEST(LeadingWhitespace, EndsWithTheTextAlthoughMoreFollowsInMemory)
{
    EXPECT_EQ(SkipLeadingWhitespace(std::string_view("     ", 3)), 3U);
}
