#include <kescorexml/StringInputSource.h>

#include <gtest/gtest.h>

TEST(StringInputSource, SkipsLeadingWhitespaceAndStillCountsIt)
{
    StringInputSource source(u"  \n  <a/>", u"id", true);
    std::string out;
    EXPECT_TRUE(source.GetBytes(out, 100));
    EXPECT_EQ(out, "<a/>");
    EXPECT_EQ(source.Size(), 9);
    EXPECT_EQ(source.Id(), u"id");
}

TEST(StringInputSource, HoldsItsTextAsUtf8)
{
    const TString text = u"<a>\u00E9\u20AC\U0001F600</a>";
    StringInputSource source(text, u"id", false);
    std::string out;
    EXPECT_TRUE(source.GetBytes(out, 100));
    EXPECT_EQ(out, text.toStdString());
    EXPECT_EQ(out, "<a>\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80</a>");
    EXPECT_EQ(source.Size(), static_cast<std::int64_t>(out.size()));
}

TEST(StringInputSource, MakesNoCharactersOfHalvesOfPairs)
{
    const TString text = u"<\xD800\xD83D\xDE00\xDE00\uFFFD\xDBFF";
    StringInputSource source(text, u"id", false);
    std::string out;
    EXPECT_TRUE(source.GetBytes(out, 100));
    EXPECT_EQ(out, "<\xED\xA0\x80\xF0\x9F\x98\x80\xED\xB8\x80\xEF\xBF\xBD\xED\xAF\xBF");
    EXPECT_EQ(source.Size(), 17);
}

TEST(StringInputSource, HasLines)
{
    StringInputSource source(u"a\nb", u"id", false);
    std::string line;
    EXPECT_TRUE(source.GetNextLine(line));
    EXPECT_EQ(line, "a\n");
    EXPECT_TRUE(source.GetNextLine(line));
    EXPECT_EQ(line, "b");
    EXPECT_FALSE(source.GetNextLine(line));
}

TEST(StringInputSource, DoesNotSkipWideSpaces)
{
    StringInputSource source(u"\u00A0<a/>", u"id", true);
    std::string out;
    EXPECT_TRUE(source.GetBytes(out, 100));
    EXPECT_EQ(out, "\xC2\xA0<a/>");
}
