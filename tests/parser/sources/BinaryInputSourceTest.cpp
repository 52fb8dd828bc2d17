#include <kescorexml/BinaryInputSource.h>

#include "support/ParseOutcome.h"

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

namespace {

ParseOutcome ParseBehindWhitespace(const std::string& bytes)
{
    BinaryInputSource source(std::vector<unsigned char>(bytes.begin(), bytes.end()), u"id", true);
    return ParseSource(source);
}

/// In little-endian or big-endian units, without byte-order mark.
std::string ToUnits(std::u16string_view text, std::size_t size, bool isBigEndian)
{
    std::string bytes;
    for (const char16_t character : text) {
        std::string unit(size, '\0');
        unit[isBigEndian ? size - 1 : 0] = static_cast<char>(character & 0xFF);
        unit[isBigEndian ? size - 2 : 1] = static_cast<char>(character >> 8);
        bytes += unit;
    }
    return bytes;
}

} // namespace

TEST(BinaryInputSource, IsReadByWhatStandsBehindTheWhitespaceThatItSkips)
{
    // The bytes of this text are "<a :b='x'>", a tag with a name that begins with a colon.
    const TString bigEndian = u"\u3C61\u203A\u623D\u2778\u273E";
    const TString littleEndian = u"\u613C\u3A20\u3D62\u7827\u3E27";
    for (const bool isBigEndian : {false, true}) {
        const TString text = isBigEndian ? bigEndian : littleEndian;
        const ParseOutcome expected{
            {"<a b=x>", "'" + text.toStdString() + "'", "<c>", "</>", "</>"}, {}, {}, false};
        const TString document = u"\uFEFF<a b='x'>" + text + u"<c/></a>";
        const std::string bytes = ToUnits(document.view(), 2, isBigEndian);
        for (const char* const space : {"", " ", " \n \r\n\t", "   "})
            EXPECT_EQ(ParseBehindWhitespace(space + bytes), expected) << isBigEndian;
    }
    for (const char* const space : {"", " ", " \n \r\n\t"}) {
        EXPECT_EQ(ParseBehindWhitespace(space + std::string("\xEF\xBB\xBF<a :b='x'/>")),
                  (ParseOutcome{{"<a :b=x>", "</>"}, {}, {}, false}));
    }
}

TEST(BinaryInputSource, MayBeginBehindAByteOrderMarkThatIsNoneThen)
{
    // White space is skipped from the first byte on, so a byte-order mark stays what the parser
    // sees first.
    EXPECT_TRUE(ParseBehindWhitespace("\xEF\xBB\xBF \n<a :b='x'/>").events ==
                (std::vector<std::string>{"<a :b=x>", "</>"}));
    EXPECT_TRUE(ParseBehindWhitespace("\xEF\xBB\xBF \n<?xml version='1.0'?><a/>").fatal);
    EXPECT_FALSE(ParseBehindWhitespace(" \n\xEF\xBB\xBF<?xml version='1.0'?><a/>").fatal);
}
