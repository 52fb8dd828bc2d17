#include <kesplatform/Unicode.h>

#include "support/RandomText.h"

#include <gtest/gtest.h>

#include <QString>

#include <array>
#include <random>
#include <string>
#include <string_view>

namespace {

std::string Normalize(std::string text)
{
    const std::size_t length = Unicode::normalizeLineEndings(text.data(), text.size());
    EXPECT_LE(length, text.size());
    text.resize(length);
    return text;
}

} // namespace

TEST(Unicode, TurnsEveryLineEndingIntoLineFeed)
{
    EXPECT_EQ("a\nb\nc\nd", Normalize("a\r\nb\rc\nd"));
    EXPECT_EQ("\n\n", Normalize("\r\r"));
    EXPECT_EQ("\n\n", Normalize("\n\r"));
    EXPECT_EQ("\n\n", Normalize("\r\r\n"));
    EXPECT_EQ("\n", Normalize("\r\n"));
    EXPECT_EQ("\n", Normalize("\r"));
}

TEST(Unicode, LeavesOtherTextsAlone)
{
    EXPECT_EQ("", Normalize(""));
    EXPECT_EQ(0U, Unicode::normalizeLineEndings(nullptr, 0));
    EXPECT_EQ("a\n\nb", Normalize("a\n\nb"));
    EXPECT_EQ(std::string("a\0b", 3), Normalize(std::string("a\0b", 3)));
}

TEST(Unicode, NormalizesLineEndingsLikeTwoReplacements)
{
    RandomText random(1);
    for (int round = 0; round < 2000; ++round) {
        QString text = QString::fromStdU16String(random.Of(u"ab\r\r\n", 30));
        const std::string normalized = Normalize(text.toStdString());
        text.replace(QStringLiteral("\r\n"), QStringLiteral("\n")).replace(u'\r', u'\n');
        ASSERT_EQ(text.toStdString(), normalized);
    }
}

TEST(Unicode, TouchesNothingBehindTheText)
{
    std::string text = "a\r\n\r";
    EXPECT_EQ(2U, Unicode::normalizeLineEndings(text.data(), 3));
    EXPECT_EQ("a\n", text.substr(0, 2));
    EXPECT_EQ('\r', text[3]);
}

TEST(Unicode, LooksAtNothingBehindTheText)
{
    const std::u16string_view text = u"abcdefghijklmnopqrstuvwxyz";
    for (std::size_t length = 0; length < text.size(); ++length) {
        const std::string utf8 = Unicode::toUtf8KeepingHalves(text.substr(0, length));
        EXPECT_EQ(utf8.size(), length);
        EXPECT_STREQ(utf8.c_str(), std::string("abcdefghijklmnopqrstuvwxyz", length).c_str());
    }
}

TEST(Unicode, FindsTheFirstByteThatIsNoUtf8)
{
    EXPECT_EQ(Unicode::findInvalidUtf8(""), 0U);
    EXPECT_EQ(Unicode::findInvalidUtf8("<a>\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80"), 12U);
    for (const char* const sequence :
         {"\x80", "\xBF", "\xC0\x80", "\xC1\xBF", "\xC3", "\xC3x", "\xE2\x82", "\xE2\x82x",
          "\xE0\x9F\xBF", "\xED\xA0\x80", "\xF0\x8F\xBF\xBF", "\xF4\x90\x80\x80",
          "\xF5\x80\x80\x80", "\xF8\x88\x80\x80\x80", "\xFE", "\xFF"}) {
        for (const std::size_t before : {0U, 1U, 15U, 16U, 17U, 1000U})
            EXPECT_EQ(Unicode::findInvalidUtf8(std::string(before, 'x') + sequence), before);
        EXPECT_EQ(Unicode::findInvalidUtf8(std::string("\xE2\x82\xAC") + sequence + "\xFF"), 3U);
    }
}

TEST(Unicode, FindsTheByteThatIsNoUtf8AmongLongStretchesOfAnyCharacters)
{
    constexpr std::array<std::string_view, 5> c_pieces{
        "a stretch of ASCII that is longer than what is looked at in one step, by a word or two, ",
        "word ", "\xC3\xA9", "\xE0\xB0\xA4", "\xF0\x9F\x98\x80"};
    constexpr std::array<std::string_view, 7> c_faults{
        "\x80", "\xC1\xBF", "\xC3x", "\xE0\x9F\xBF", "\xED\xA0\x80", "\xF4\x90\x80\x80", "\xFF"};
    std::mt19937 random(20261122);
    const auto draw = [&](std::size_t pieces) {
        std::string text;
        for (std::size_t i = 0; i < pieces; ++i)
            text += c_pieces[random() % c_pieces.size()];
        return text;
    };
    for (int round = 0; round < 3000; ++round) {
        const std::string before = draw(random() % 40);
        const std::string fault(c_faults[random() % c_faults.size()]);
        ASSERT_EQ(Unicode::findInvalidUtf8(before), before.size());
        ASSERT_EQ(Unicode::findInvalidUtf8(before + fault + draw(random() % 40)), before.size());
    }
}

TEST(Unicode, KeepsHalvesOfPairsInBytesThatAreNoUtf8)
{
    EXPECT_EQ("", Unicode::toUtf8KeepingHalves(u""));
    EXPECT_EQ("\xED\xA0\x80", Unicode::toUtf8KeepingHalves(u"\xD800"));
    EXPECT_EQ("a\xED\xAF\xBF\xED\xA0\xBD\xF0\x9F\x98\x80\xED\xB0\x80z",
              Unicode::toUtf8KeepingHalves(u"a\xDBFF\xD83D\xD83D\xDE00\xDC00z"));
    EXPECT_EQ("\xEF\xBF\xBD", Unicode::toUtf8KeepingHalves(u"\uFFFD"));
    RandomText random(7);
    for (int i = 0; i < 1000; ++i) {
        const TString text(random.Any(40));
        const std::string bytes = Unicode::toUtf8KeepingHalves(text.view());
        const std::string replaced = text.toStdString();
        // Where no half is lone, they are the same; else the bytes are as many, and no UTF-8.
        EXPECT_EQ(bytes.size(), replaced.size());
        EXPECT_EQ(Unicode::findInvalidUtf8(bytes) == bytes.size(), bytes == replaced);
    }
}
