#include <kesplatform/TString.h>

#include "support/RandomText.h"

#include <gtest/gtest.h>

namespace {

TString::size_type FindPlainly(const TString& text, const TString& part, TString::size_type from)
{
    const std::size_t found = text.view().find(part.view(), static_cast<std::size_t>(from));
    return found == std::u16string_view::npos ? -1 : static_cast<TString::size_type>(found);
}

TString Repeated(const TString& part, int count)
{
    TString text;
    for (int i = 0; i < count; ++i)
        text += part;
    return text;
}

} // namespace

TEST(FindText, FindsEveryPartThatAPlainSearchFinds)
{
    RandomText random(1);
    for (int round = 0; round < 3000; ++round) {
        const TString text{std::u16string_view(random.Of(u"ab", 60))};
        const TString part{std::u16string_view(random.Of(u"ab", 8))};
        const auto from = static_cast<TString::size_type>(random.Number(10));
        ASSERT_EQ(FindPlainly(text, part, from), text.indexOf(part, from)) << text << ' ' << part;
        ASSERT_EQ(FindPlainly(text, part, 0) >= 0, text.contains(part));
        ASSERT_EQ(FindPlainly(text, u"b", from), text.indexOf(u'b', from));
        ASSERT_EQ(FindPlainly(text, u"b", 0) >= 0, text.contains(u'b'));
    }
}

TEST(FindText, FindsNothingThatReachesOverAnEnd)
{
    RandomText random(3);
    for (int round = 0; round < 3000; ++round) {
        const TString text{std::u16string_view(random.Of(u"ab", 60))};
        const TString part{std::u16string_view(random.Of(u"ab", 8))};
        const auto from = static_cast<TString::size_type>(random.Number(10));
        const auto end = static_cast<TString::size_type>(random.Number(70));
        const TString::size_type expected =
            from > end ? -1 : FindPlainly(text.left(end), part, from);
        ASSERT_EQ(expected, text.indexOf(part, from, end)) << text << ' ' << part;
    }
    EXPECT_EQ(0, TString(u"aa").indexOf(u"aa", -5, 2));
    EXPECT_EQ(-1, TString(u"aa").indexOf(u"aa", 0, 1));
    EXPECT_EQ(1, TString(u"aa").indexOf(u"", 1, 1));
    EXPECT_EQ(-1, TString(u"aa").indexOf(u"", 0, -1));
}

// Every needle of two letters up to length 9, behind enough near misses that the search gives up
// comparing plainly.
TEST(FindText, FindsEveryShortPeriodBehindNearMisses)
{
    RandomText random(2);
    for (int length = 1; length <= 9; ++length) {
        for (unsigned bits = 0; bits < 1U << length; ++bits) {
            TString piece;
            for (int i = 0; i < length; ++i)
                piece += (bits >> i & 1U) != 0 ? u'b' : u'a';
            const TString needle = Repeated(piece, 4) + piece.left(length / 2) + TString(u"b");
            TString text = Repeated(piece, 40) + piece.left(length - 1);
            text += TString(std::u16string_view(random.Of(u"ab", 30)));
            ASSERT_EQ(FindPlainly(text, needle, 0), text.indexOf(needle)) << piece;
            text += needle;
            ASSERT_EQ(FindPlainly(text, needle, 0), text.indexOf(needle)) << piece;
        }
    }
}

TEST(FindText, FindsLongPartsOfRandomTexts)
{
    RandomText random(3);
    for (int round = 0; round < 400; ++round) {
        const TString text{std::u16string_view(random.Of(u"aab", 2000))};
        const TString part = text.mid(static_cast<TString::size_type>(random.Number(2000)),
                                      static_cast<TString::size_type>(random.Number(300)));
        ASSERT_EQ(FindPlainly(text, part, 0), text.indexOf(part));
        const TString absent = part + u"c";
        ASSERT_EQ(-1, text.indexOf(absent));
    }
}

// Compared plainly, each of these would take 10^11 steps.
TEST(FindText, StaysLinearForTextsThatAlmostMatch)
{
    const TString text(1000000, u'a');
    const TString half(500000, u'a');
    EXPECT_EQ(-1, text.indexOf(half + u"b"));
    EXPECT_EQ(-1, text.indexOf(TString(u"b") + half));
    EXPECT_EQ(-1, text.indexOf(half + u"b" + half.left(1000)));
    EXPECT_EQ(1000000, (text + u"b").indexOf(u"b"));
    EXPECT_EQ(500000, (text + u"b").indexOf(half + u"b"));
}

TEST(FindText, FindsTheEmptyPartUpToTheEnd)
{
    const TString text(u"abc");
    EXPECT_EQ(0, text.indexOf(u""));
    EXPECT_EQ(0, text.indexOf(u"", -7));
    EXPECT_EQ(3, text.indexOf(u"", 3));
    EXPECT_EQ(-1, text.indexOf(u"", 4));
    EXPECT_EQ(0, TString().indexOf(u""));
    EXPECT_EQ(-1, TString().indexOf(u"a"));
    EXPECT_EQ(0, text.indexOf(u"ab", -7));
    EXPECT_EQ(0, text.indexOf(u'a', -7));
}
