#include "scanner/MessageList.h"

#include <gtest/gtest.h>

TEST(MessageList, IsEmptyAndCompleteOnceItIsCleared)
{
    MessageList list(XMLDiagnostic::Kind::Error);
    EXPECT_TRUE(list.IsEmpty());
    list.Miss(u"id", 1, 2);
    EXPECT_FALSE(list.IsEmpty());
    EXPECT_FALSE(list.IsComplete());
    list.Clear();
    EXPECT_TRUE(list.IsEmpty());
    EXPECT_TRUE(list.IsComplete());
}

TEST(MessageList, EndsWithHowManyAreMissingWhereTheFirstOfThemWas)
{
    MessageList list(XMLDiagnostic::Kind::Error);
    list.Miss(u"first", 1, 2);
    list.Miss(u"second", 3, 4);
    list.Close(u"10");
    EXPECT_TRUE(list.IsComplete());
    ASSERT_EQ(list.GetKept().size(), 1U);
    const XMLDiagnostic& last = list.GetKept().front();
    EXPECT_EQ(last.GetText().view().substr(0, 20), u"2 more from here on;");
    EXPECT_EQ(last.GetLine(), 1U);
    EXPECT_EQ(last.GetColumn(), 2U);
}
