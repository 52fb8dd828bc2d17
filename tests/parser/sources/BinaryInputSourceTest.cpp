#include <kescorexml/BinaryInputSource.h>

#include <gtest/gtest.h>

TEST(BinaryInputSource, HasNoLines)
{
    BinaryInputSource source({'a', '\n', 'b'}, u"id", false);
    std::string line = "as before";
    EXPECT_FALSE(source.GetNextLine(line));
    EXPECT_EQ(line, "as before");
    EXPECT_TRUE(source.GetBytes(line, 10));
    EXPECT_EQ(line, "a\nb");
}

TEST(BinaryInputSource, DeliversEveryByteThatItWasGiven)
{
    std::vector<unsigned char> bytes;
    for (int i = 0; i < 256; ++i)
        bytes.push_back(static_cast<unsigned char>(i));
    BinaryInputSource source(bytes, u"id", false);
    EXPECT_EQ(source.Size(), 256);
    EXPECT_EQ(source.Id(), u"id");
    std::string out;
    EXPECT_TRUE(source.GetBytes(out, 1000));
    EXPECT_EQ(out, std::string(bytes.begin(), bytes.end()));
    EXPECT_FALSE(source.GetBytes(out, 1000));
    source.ResetToStart();
    EXPECT_TRUE(source.GetBytes(out, 1));
    EXPECT_EQ(out, std::string(1, '\0'));
}

TEST(BinaryInputSource, SkipsLeadingWhitespaceWhenTold)
{
    BinaryInputSource source({' ', '\n', '<', 'a', '/', '>'}, u"id", true);
    std::string out;
    EXPECT_TRUE(source.GetBytes(out, 100));
    EXPECT_EQ(out, "<a/>");
    EXPECT_EQ(source.Size(), 6);
}
