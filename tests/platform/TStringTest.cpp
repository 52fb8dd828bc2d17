#include <kesplatform/TString.h>

#include "support/RandomText.h"

#include <gmock/gmock.h>

#include <QStringList>

#include <algorithm>
#include <array>
#include <limits>
#include <map>
#include <sstream>
#include <stdexcept>
#include <thread>
#include <unordered_map>

namespace {

constexpr int c_rounds = 400;

QString ToQString(std::u16string_view text)
{
    return QStringView(text.data(), static_cast<qsizetype>(text.size())).toString();
}

bool SharesText(const TString& a, const TString& b)
{
    return a.utf16() == b.utf16();
}

} // namespace

TEST(TString, IsOnePointer)
{
    EXPECT_EQ(sizeof(void*), sizeof(TString));
}

TEST(TString, IsEmptyFromNothing)
{
    const std::array empties = {TString(),
                                TString(u""),
                                TString(""),
                                TString(static_cast<const char16_t*>(nullptr)),
                                TString(static_cast<const char*>(nullptr)),
                                TString(std::u16string_view()),
                                TString(QString()),
                                TString(u"abc", 0),
                                TString(u"abc", -1),
                                TString(0, u'x'),
                                TString(-5, u'x')};
    for (const TString& text : empties) {
        EXPECT_TRUE(text.IsEmpty());
        EXPECT_TRUE(text.isEmpty());
        EXPECT_EQ(0, text.length());
        EXPECT_EQ(u'\0', text.utf16()[0]);
        EXPECT_EQ(TString(), text);
    }
}

TEST(TString, HoldsTheUnitsItIsMadeOf)
{
    const std::u16string units(u"a\0\xD800z\xFFFF", 5);
    const TString text{std::u16string_view(units)};
    EXPECT_EQ(5, text.length());
    EXPECT_EQ(5, text.size());
    EXPECT_FALSE(text.IsEmpty());
    EXPECT_EQ(units, text.view());
    EXPECT_EQ(u'\xD800', text[2]);
    EXPECT_EQ(u'\0', text.utf16()[5]);
    EXPECT_TRUE(std::equal(units.begin(), units.end(), text.begin(), text.end()));
    EXPECT_EQ(text, TString(units.data(), 5));
    EXPECT_EQ(TString(u"xxx"), TString(3, u'x'));
    EXPECT_EQ(TString(u"x"), TString(u"xyz", 1));
}

TEST(TString, PassesThroughQStringUnchanged)
{
    RandomText random(1);
    for (int round = 0; round < c_rounds; ++round) {
        const std::u16string units = random.Any(100);
        const TString text{std::u16string_view(units)};
        const QString other = text;
        EXPECT_EQ(ToQString(units), other);
        EXPECT_EQ(text, TString(other));
    }
}

TEST(TString, SharesItsTextWithCopies)
{
    const TString first(u"shared");
    TString second = first; // NOLINT(performance-unnecessary-copy-initialization)
    EXPECT_TRUE(SharesText(first, second));
    TString third;
    third = second;
    EXPECT_TRUE(SharesText(first, third));
    const TString& self = third;
    third = self;
    EXPECT_EQ(TString(u"shared"), third);
}

TEST(TString, MovesWithoutTouchingTheText)
{
    TString first(u"moved");
    const char16_t* units = first.utf16();
    TString second = std::move(first);
    EXPECT_EQ(units, second.utf16());
    TString third;
    third = std::move(second);
    EXPECT_EQ(units, third.utf16());
    TString& self = third;
    third = std::move(self);
    EXPECT_EQ(TString(u"moved"), third);
}

TEST(TString, ChangesAPrivateCopyOfASharedText)
{
    TString original(u"abc");
    TString appended = original;
    appended += u'd';
    TString replaced = original;
    replaced.replace(u"b", u"BB");
    TString overwritten = original;
    std::fill_n(overwritten.resizeForOverwrite(3), 3, u'x');
    TString cleared = original;
    cleared.clear();
    EXPECT_EQ(TString(u"abc"), original);
    EXPECT_EQ(TString(u"abcd"), appended);
    EXPECT_EQ(TString(u"aBBc"), replaced);
    EXPECT_EQ(TString(u"xxx"), overwritten);
    EXPECT_TRUE(cleared.IsEmpty());
}

TEST(TString, AppendsLikeQString)
{
    RandomText random(2);
    TString text;
    QString other;
    for (int round = 0; round < c_rounds; ++round) {
        const std::u16string part = random.Any(30);
        switch (random.Number(5)) {
        case 0:
            text.append(std::u16string_view(part));
            break;
        case 1:
            text += TString(std::u16string_view(part));
            break;
        case 2:
            text += std::u16string_view(part);
            break;
        case 3: {
            const TString copy = text;
            text.append(TString(std::u16string_view(part)));
            ASSERT_EQ(TString(other), copy);
            break;
        }
        default:
            for (const char16_t unit : part)
                text += unit;
        }
        other += ToQString(part);
        ASSERT_EQ(TString(other), text);
        ASSERT_EQ(u'\0', text.utf16()[text.length()]);
    }
}

TEST(TString, AppendsZeroTerminatedTexts)
{
    TString text(u"a");
    text += u"bc";
    EXPECT_EQ(TString(u"abc"), text);
}

TEST(TString, TakesOverATextThatIsAppendedToNothing)
{
    const TString part(u"part");
    TString text;
    text.append(part);
    EXPECT_TRUE(SharesText(part, text));
}

TEST(TString, AppendsPartsOfItself)
{
    RandomText random(3);
    for (int round = 0; round < c_rounds; ++round) {
        TString text{std::u16string_view(random.Any(40))};
        // The text is of exact size, grown, or shared.
        if (random.Number(1) == 0)
            text += u'g';
        const TString other = random.Number(1) == 0 ? text : TString();
        QString expected = text;
        const std::size_t from = random.Number(static_cast<std::size_t>(text.length()));
        const std::u16string_view part = text.view().substr(from, random.Number(20));
        expected += ToQString(part);
        text.append(part);
        ASSERT_EQ(TString(expected), text);
        text.append(text);
        ASSERT_EQ(TString(expected + expected), text);
        if (expected.isEmpty())
            continue;
        text += text[0];
        ASSERT_EQ(TString(expected + expected + expected[0]), text) << round;
    }
}

TEST(TString, MovesSeldomWhileItGrows)
{
    TString text;
    int moves = 0;
    const char16_t* units = text.utf16();
    for (int i = 0; i < 100000; ++i) {
        text += static_cast<char16_t>(i);
        if (text.utf16() != units) {
            units = text.utf16();
            ++moves;
        }
    }
    EXPECT_LT(moves, 20);
    for (int i = 0; i < 100000; ++i)
        ASSERT_EQ(static_cast<char16_t>(i), text[i]);
}

TEST(TString, RefusesTextsThatAreTooLong)
{
    EXPECT_THROW(TString(TString::c_maxLength + 1, u'x'), std::length_error);
    TString text(u"abc");
    EXPECT_THROW(text.resizeForOverwrite(std::numeric_limits<TString::size_type>::max()),
                 std::length_error);
    EXPECT_EQ(TString(u"abc"), text);
    // The view is never read: its length alone is refused.
    const std::u16string_view tooLong(text.utf16(), static_cast<std::size_t>(TString::c_maxLength));
    EXPECT_THROW(text.append(tooLong), std::length_error);
    EXPECT_EQ(TString(u"abc"), text);
}

TEST(TString, GivesRoomToOverwrite)
{
    TString text(u"before");
    char16_t* to = text.resizeForOverwrite(3);
    std::copy_n(u"new", 3, to);
    EXPECT_EQ(TString(u"new"), text);
    EXPECT_EQ(nullptr, text.resizeForOverwrite(0));
    EXPECT_TRUE(text.IsEmpty());
}

TEST(TString, OverwritesItsOwnMemoryUnlessItIsShared)
{
    TString text(u"a text of some length, to be written over");
    const char16_t* const units = text.utf16();
    std::copy_n(u"a little shorter text", 21, text.resizeForOverwrite(21));
    EXPECT_EQ(text, TString(u"a little shorter text"));
    EXPECT_EQ(text.utf16()[21], u'\0');
#if defined(__GLIBC__)
    EXPECT_EQ(text.utf16(), units);
#endif
    const TString shared = text;
    std::copy_n(u"another text of twenty", 22, text.resizeForOverwrite(22));
    EXPECT_EQ(shared, TString(u"a little shorter text"));
    EXPECT_EQ(text, TString(u"another text of twenty"));
    text += u" and more than that, to grow";
    EXPECT_EQ(text, TString(u"another text of twenty and more than that, to grow"));
}

TEST(TString, ConcatenatesUtf8Literals)
{
    const TString text(u"a");
    EXPECT_EQ(text + "\xC3\xA9", u"a\u00E9");
    EXPECT_EQ("\xC3\xA9" + text, u"\u00E9a");
    EXPECT_EQ(TString(u"b") + "c" + "d" + text, u"bcda");
    EXPECT_EQ("c" + TString(u"b"), u"cb");
    EXPECT_EQ(text + "", text);
    TString sum = text;
    sum += "b";
    EXPECT_EQ(sum, u"ab");
    EXPECT_EQ(QString("q") + "r", QString("qr"));
}

TEST(TString, ConcatenatesAndSharesWhereOneSideIsEmpty)
{
    const TString a(u"left");
    const TString b(u"right");
    EXPECT_EQ(TString(u"leftright"), a + b);
    EXPECT_TRUE(SharesText(a, a + TString()));
    EXPECT_TRUE(SharesText(b, TString() + b));
    EXPECT_TRUE((TString() + TString()).IsEmpty());
    TString c(u"x");
    EXPECT_EQ(TString(u"xx"), c + c);
    EXPECT_EQ(TString(u"leftrightx"), a + b + c);
    TString d(u"y");
    EXPECT_EQ(TString(u"yleft"), std::move(d) + a);
}

TEST(TString, TakesPartsLikeQString)
{
    RandomText random(4);
    for (int round = 0; round < c_rounds; ++round) {
        const TString text{std::u16string_view(random.Any(12))};
        const QString other = text;
        const auto position = static_cast<TString::size_type>(random.Number(16)) - 2;
        const auto count = static_cast<TString::size_type>(random.Number(16)) - 2;
        ASSERT_EQ(TString(other.mid(position, count)), text.mid(position, count))
            << position << ' ' << count;
        ASSERT_EQ(TString(other.mid(position)), text.mid(position));
        const bool isWhole = count < 0 || count >= text.length();
        ASSERT_EQ(isWhole ? text : TString(other.first(count)), text.left(count));
        ASSERT_EQ(isWhole ? text : TString(other.last(count)), text.right(count));
    }
}

TEST(TString, SharesItsTextWithPartsThatAreTheWhole)
{
    const TString text(u"whole");
    EXPECT_TRUE(SharesText(text, text.left(-1)));
    EXPECT_TRUE(SharesText(text, text.left(5)));
    EXPECT_TRUE(SharesText(text, text.right(99)));
    EXPECT_TRUE(SharesText(text, text.mid(0)));
    EXPECT_TRUE(SharesText(text, text.mid(0, 5)));
    EXPECT_TRUE(SharesText(text, text.mid(0, 99)));
    EXPECT_TRUE(SharesText(text, text.trimmed()));
    EXPECT_TRUE(SharesText(text, text.trimLeft()));
}

TEST(TString, TakesNothingPastTheEndEvenForHugeNumbers)
{
    constexpr auto c_huge = std::numeric_limits<TString::size_type>::max();
    const TString text(u"abc");
    EXPECT_TRUE(text.mid(3).IsEmpty());
    EXPECT_TRUE(text.mid(c_huge, c_huge).IsEmpty());
    EXPECT_EQ(TString(u"c"), text.mid(2, c_huge));
    EXPECT_EQ(-1, text.indexOf(u"", c_huge));
    EXPECT_EQ(-1, text.indexOf(u"a", c_huge));
    EXPECT_EQ(-1, text.indexOf(u'a', c_huge));
}

TEST(TString, KnowsItsStartAndEndLikeQString)
{
    RandomText random(5);
    constexpr std::u16string_view c_alphabet = u"aAb\u00E9\u00C9\u03C3\u03A3";
    for (int round = 0; round < c_rounds; ++round) {
        const TString text{std::u16string_view(random.Of(c_alphabet, 5))};
        const TString part{std::u16string_view(random.Of(c_alphabet, 2))};
        const QString other = text;
        ASSERT_EQ(other.startsWith(QString(part)), text.startsWith(part, 1));
        ASSERT_EQ(other.endsWith(QString(part)), text.endsWith(part, 1));
        ASSERT_EQ(other.startsWith(QString(part), Qt::CaseInsensitive), text.startsWith(part, 0));
        ASSERT_EQ(other.endsWith(QString(part), Qt::CaseInsensitive), text.endsWith(part, 0));
    }
    EXPECT_TRUE(TString(u"Abc").startsWith(u"Ab"));
    EXPECT_FALSE(TString(u"Abc").startsWith(u"ab"));
    EXPECT_FALSE(TString(u"Abc").endsWith(u"C"));
}

TEST(TString, ReplacesLikeQString)
{
    RandomText random(6);
    for (int round = 0; round < c_rounds; ++round) {
        TString text{std::u16string_view(random.Of(u"ab", 20))};
        const TString before{std::u16string_view(random.Of(u"ab", 3))};
        const TString after{std::u16string_view(random.Of(u"abc", 4))};
        QString other = text;
        if (!before.IsEmpty())
            other.replace(QString(before), QString(after));
        ASSERT_EQ(TString(other), text.replace(before, after)) << before << ' ' << after;
    }
}

TEST(TString, ReplacesWithPartsOfItself)
{
    TString text(u"abab");
    EXPECT_EQ(TString(u"xx"), TString(u"abab").replace(u"ab", u"x"));
    text.replace(text, text + text);
    EXPECT_EQ(TString(u"abababab"), text);
    text.replace(u"ab", text);
    EXPECT_EQ(32, text.length());
    const char16_t* units = text.utf16();
    text.replace(u"none", u"other");
    text.replace(u"", u"other");
    EXPECT_EQ(units, text.utf16());
}

TEST(TString, SplitsLikeQStringAndKeepsEmptyParts)
{
    RandomText random(7);
    for (int round = 0; round < c_rounds; ++round) {
        const TString text{std::u16string_view(random.Of(u"ab,", 12))};
        std::vector<TString> expected;
        for (const QString& part : QString(text).split(u','))
            expected.emplace_back(part);
        ASSERT_EQ(expected, text.split(u','));
    }
    EXPECT_THAT(TString().split(u','), testing::ElementsAre(TString()));
    EXPECT_THAT(TString(u",").split(u','), testing::ElementsAre(TString(), TString()));
}

TEST(TString, TrimsAsciiWhiteSpaceOnly)
{
    const TString text(u" \t\n\v\f\rx y\u00A0\u0085 \r");
    EXPECT_EQ(TString(u"x y\u00A0\u0085"), text.trimmed());
    EXPECT_EQ(TString(u"x y\u00A0\u0085 \r"), text.trimLeft());
    EXPECT_TRUE(TString(u" \t ").trimmed().IsEmpty());
    EXPECT_TRUE(TString(u" \t ").trimLeft().IsEmpty());
    EXPECT_TRUE(TString().trimmed().IsEmpty());
}

TEST(TString, ComparesByCodeUnit)
{
    RandomText random(8);
    for (int round = 0; round < c_rounds; ++round) {
        const std::u16string units = random.Any(20);
        std::u16string others = units;
        if (!others.empty() && random.Number(3) > 0)
            others[random.Number(others.size() - 1)] = random.Number(1) == 0 ? u'\xFFFF' : u'\0';
        others.resize(random.Number(3) == 0 ? random.Number(20) : others.size());
        const TString a{std::u16string_view(units)};
        const TString b{std::u16string_view(others)};
        ASSERT_EQ(units == others, a == b);
        ASSERT_EQ(units <=> others, a <=> b);
        ASSERT_EQ(units < others, a < b);
    }
    // By character, the pair would come last.
    EXPECT_LT(TString(u"\U00010000"), TString(u"\uFFFD"));
    EXPECT_TRUE(TString(u"abc") == u"abc");
    EXPECT_FALSE(TString(u"abc") == u"ab");
    EXPECT_TRUE(TString() == u"");
}

TEST(TString, HashesEqualTextsEqually)
{
    RandomText random(9);
    const std::hash<TString> hash;
    std::map<std::size_t, TString> seen;
    for (int round = 0; round < c_rounds; ++round) {
        const std::u16string units = random.Any(30);
        const TString a{std::u16string_view(units)};
        TString grown{std::u16string_view(units)};
        grown += u'x';
        EXPECT_EQ(hash(a), hash(grown.left(a.length())));
        const auto [known, isNew] = seen.emplace(hash(a), a);
        EXPECT_TRUE(isNew || known->second == a) << "two texts with one hash of 64 bits";
    }
    EXPECT_EQ(hash(TString()), hash(TString(u"")));
    const std::unordered_map<TString, int> map{{u"one", 1}, {u"two", 2}};
    EXPECT_EQ(2, map.at(u"two"));
}

TEST(TString, WritesUtf8ToStreams)
{
    std::ostringstream out;
    out << TString(u"caf\u00E9");
    EXPECT_EQ("caf\xC3\xA9", out.str());
}

TEST(TString, CountsOwnersAcrossThreads)
{
    const TString text(u"shared by all");
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([text] {
            std::vector<TString> copies;
            for (int round = 0; round < 20000; ++round) {
                copies.push_back(text);
                if (copies.size() == 100)
                    copies.clear();
                TString changed = text;
                changed += u'!';
                if (changed.length() != 14 || text.length() != 13)
                    ADD_FAILURE() << "a text changed under its owner";
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(TString(u"shared by all"), text);
}
