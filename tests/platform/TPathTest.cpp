#include <kesplatform/TPath.h>

#include <gtest/gtest.h>

#include <set>

namespace {

TString Parent(const char16_t* path)
{
    return TPath(path).RemoveFilename().GetString();
}

TString Joined(const char16_t* a, const char16_t* b)
{
    return (TPath(a) / TPath(b)).GetString();
}

} // namespace

TEST(TPath, RemovesItsLastPart)
{
    EXPECT_EQ(TString(u"a"), Parent(u"a/x"));
    EXPECT_EQ(TString(u""), Parent(u"x"));
    EXPECT_EQ(TString(u""), Parent(u""));
    EXPECT_EQ(TString(u"a/b"), Parent(u"a/b/x"));
    EXPECT_EQ(TString(u"a"), Parent(u"a//x"));
    EXPECT_EQ(TString(u"a"), Parent(u"a/"));
    EXPECT_EQ(TString(u"a\\b"), Parent(u"a\\b\\x"));
}

TEST(TPath, KeepsTheRoot)
{
    EXPECT_EQ(TString(u"/"), Parent(u"/x"));
    EXPECT_EQ(TString(u"/"), Parent(u"/"));
    EXPECT_EQ(TString(u"/a"), Parent(u"/a/x"));
    EXPECT_EQ(TString(u"C:\\"), Parent(u"C:\\x"));
    EXPECT_EQ(TString(u"c:/"), Parent(u"c:/x"));
    EXPECT_EQ(TString(u"C:/a"), Parent(u"C:/a/x"));
}

TEST(TPath, WritesForwardSlashes)
{
    EXPECT_EQ(TString(u"C:/a/b"), TPath(u"C:\\a/b").GenericString());
    EXPECT_EQ(TString(u"a/b"), TPath(u"a/b").GenericString());
    EXPECT_TRUE(TPath().GenericString().IsEmpty());
    EXPECT_EQ(TString(u"C:\\a/b"), TPath(u"C:\\a/b").GetString());
}

TEST(TPath, JoinsWithOneSlash)
{
    EXPECT_EQ(TString(u"a/b"), Joined(u"a", u"b"));
    EXPECT_EQ(TString(u"a/b"), Joined(u"a/", u"b"));
    EXPECT_EQ(TString(u"a\\b"), Joined(u"a\\", u"b"));
    EXPECT_EQ(TString(u"/b"), Joined(u"/", u"b"));
    EXPECT_EQ(TString(u"a/b/c"), Joined(u"a", u"b/c"));
}

TEST(TPath, JoinsToTheOtherSideWhenOneIsEmptyOrAbsolute)
{
    EXPECT_EQ(TString(u"a"), Joined(u"a", u""));
    EXPECT_EQ(TString(u"b"), Joined(u"", u"b"));
    EXPECT_EQ(TString(u""), Joined(u"", u""));
    EXPECT_EQ(TString(u"/b"), Joined(u"a", u"/b"));
    EXPECT_EQ(TString(u"C:\\b"), Joined(u"a", u"C:\\b"));
    EXPECT_EQ(TString(u"a/C:b"), Joined(u"a", u"C:b"));
}

TEST(TPath, IsOrderedByItsText)
{
    const std::set<TPath> paths{u"b", u"a/x", u"a", u"B"};
    std::vector<TPath> sorted(paths.begin(), paths.end());
    EXPECT_EQ((std::vector<TPath>{u"B", u"a", u"a/x", u"b"}), sorted);
    EXPECT_EQ(TPath(u"a"), TPath(TString(u"a")));
    EXPECT_NE(TPath(u"a/b"), TPath(u"a\\b"));
    EXPECT_TRUE(TPath().IsEmpty());
    EXPECT_FALSE(TPath(u"a").IsEmpty());
}
