#include <kescorexml/Utf8InputSource.h>

#include <kesplatform/TCType.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using testing::ElementsAre;

std::vector<std::string> ReadLines(InputSource& source)
{
    std::vector<std::string> lines;
    std::string line;
    while (source.GetNextLine(line))
        lines.push_back(line);
    return lines;
}

std::string ReadAll(InputSource& source, unsigned int step)
{
    std::string all;
    std::string bytes;
    while (source.GetBytes(bytes, step)) {
        EXPECT_LE(bytes.size(), step);
        EXPECT_FALSE(bytes.empty());
        all += bytes;
    }
    return all;
}

} // namespace

TEST(Utf8InputSource, KeepsItsIdentifier)
{
    const Utf8InputSource source("<a/>", u"some id", false);
    EXPECT_EQ(source.Id(), u"some id");
    EXPECT_EQ(&source.Id(), &source.Id());
}

TEST(Utf8InputSource, CopiesAnLvalueAndMovesAnRvalue)
{
    std::string text = "<a>a text too long for a short string</a>";
    const std::string copy = text;
    Utf8InputSource copying(text, u"id", false);
    EXPECT_EQ(text, copy);
    Utf8InputSource moving(std::move(text), u"id", false);
    EXPECT_TRUE(text.empty());
    EXPECT_EQ(ReadAll(copying, 1000), copy);
    EXPECT_EQ(ReadAll(moving, 1000), copy);
}

TEST(Utf8InputSource, DeliversLinesWithTheirLineFeeds)
{
    Utf8InputSource source("a\nb", u"id", false);
    EXPECT_THAT(ReadLines(source), ElementsAre("a\n", "b"));
    std::string line = "as before";
    EXPECT_FALSE(source.GetNextLine(line));
    EXPECT_EQ(line, "as before");
}

TEST(Utf8InputSource, LeavesLineEndingsAlone)
{
    Utf8InputSource source("a\r\n\nb\rc\n", u"id", false);
    EXPECT_THAT(ReadLines(source), ElementsAre("a\r\n", "\n", "b\rc\n"));
    source.ResetToStart();
    EXPECT_EQ(ReadAll(source, 4), "a\r\n\nb\rc\n");
}

TEST(Utf8InputSource, DeliversBytesInStepsOfAnySize)
{
    const std::string text("<a>\0text\xC3\xA9</a>", 15);
    for (unsigned int step = 1; step < 20; ++step) {
        Utf8InputSource source(text, u"id", false);
        EXPECT_EQ(ReadAll(source, step), text) << step;
        std::string bytes = "as before";
        EXPECT_FALSE(source.GetBytes(bytes, step));
        EXPECT_EQ(bytes, "as before");
    }
}

TEST(Utf8InputSource, ReplacesWhatItIsGiven)
{
    Utf8InputSource source("ab\ncd", u"id", false);
    std::string out = "something";
    EXPECT_TRUE(source.GetBytes(out, 2));
    EXPECT_EQ(out, "ab");
    EXPECT_TRUE(source.GetNextLine(out));
    EXPECT_EQ(out, "\n");
    EXPECT_TRUE(source.GetBytes(out, 0));
    EXPECT_EQ(out, "");
    EXPECT_TRUE(source.GetNextLine(out));
    EXPECT_EQ(out, "cd");
}

TEST(Utf8InputSource, SkipsLeadingWhitespaceNowAndAfterEachReset)
{
    Utf8InputSource source("  \n  <a/>", u"id", true);
    std::string bytes;
    for (int i = 0; i < 2; ++i) {
        EXPECT_TRUE(source.GetBytes(bytes, 100));
        EXPECT_EQ(bytes, "<a/>");
        EXPECT_FALSE(source.GetBytes(bytes, 100));
        source.ResetToStart();
    }
    EXPECT_EQ(source.Size(), 9);
}

TEST(Utf8InputSource, KeepsLeadingWhitespaceUnlessTold)
{
    Utf8InputSource source("  <a/>", u"id", false);
    EXPECT_EQ(ReadAll(source, 100), "  <a/>");
    EXPECT_EQ(source.Size(), 6);
}

TEST(Utf8InputSource, OfWhitespaceAloneStartsAtItsEnd)
{
    for (const char* text : {"", " ", " \t\n\v\f\r"}) {
        Utf8InputSource source(std::string(text), u"id", true);
        std::string bytes;
        EXPECT_FALSE(source.GetBytes(bytes, 10));
        EXPECT_FALSE(source.GetNextLine(bytes));
        EXPECT_EQ(source.Size(), static_cast<std::int64_t>(std::string(text).size()));
    }
}

TEST(Utf8InputSource, TakesForWhitespaceWhatThePlatformDoes)
{
    for (int byte = 0; byte < 256; ++byte) {
        const std::string text{static_cast<char>(byte), 'x'};
        Utf8InputSource source(text, u"id", true);
        EXPECT_EQ(ReadAll(source, 10), TCType::isSpace(static_cast<char16_t>(byte)) ? "x" : text)
            << byte;
    }
}
