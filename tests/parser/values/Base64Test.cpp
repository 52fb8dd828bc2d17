#include <kescorexml/Base64.h>

#include "support/Assertions.h"
#include "support/Base64Model.h"
#include "support/FailingAllocations.h"
#include "support/RandomBytes.h"

#include <QByteArray>
#include <QRegularExpression>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using Bytes = std::vector<unsigned char>;

Bytes MakeBytes(RandomBytes& random, std::size_t count)
{
    Bytes bytes(count);
    for (unsigned char& byte : bytes)
        byte = static_cast<unsigned char>(random.Below(256));
    return bytes;
}

std::vector<TString> Encode(const Bytes& bytes, bool splitLines)
{
    std::vector<TString> lines;
    Base64Encode(bytes.data(), static_cast<unsigned int>(bytes.size()), lines, splitLines);
    return lines;
}

TString EncodeByQt(const Bytes& bytes)
{
    const QByteArray array(reinterpret_cast<const char*>(bytes.data()),
                           static_cast<qsizetype>(bytes.size()));
    return QString::fromLatin1(array.toBase64());
}

Bytes ToBytes(std::string_view text)
{
    return Bytes(text.begin(), text.end());
}

TEST(Base64, EncodesNothingAsNoLine)
{
    std::vector<TString> lines{u"before"};
    Base64Encode(nullptr, 0, lines, false);
    Base64Encode(nullptr, 0, lines, true);
    EXPECT_EQ(lines, std::vector<TString>{u"before"});
}

TEST(Base64, EncodesAsQtDoes)
{
    RandomBytes random(1);
    for (std::size_t count = 1; count < 400; ++count) {
        const Bytes bytes = MakeBytes(random, count);
        ASSERT_EQ(Encode(bytes, false), std::vector<TString>{EncodeByQt(bytes)}) << count;
    }
}

TEST(Base64, EncodesEveryGroupOfTwelveBits)
{
    Bytes bytes;
    for (unsigned bits = 0; bits < 4096; ++bits) {
        bytes.push_back(static_cast<unsigned char>(bits >> 4));
        bytes.push_back(static_cast<unsigned char>(bits << 4 | bits >> 8));
        bytes.push_back(static_cast<unsigned char>(bits));
    }
    EXPECT_EQ(Encode(bytes, false), std::vector<TString>{EncodeByQt(bytes)});
    EXPECT_EQ(Base64Decode(EncodeByQt(bytes)), bytes);
}

TEST(Base64, EncodesFiftyFourBytesAsOneLine)
{
    const std::vector<TString> lines = Encode(Bytes(54, 'x'), true);
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_EQ(lines[0].length(), 72);
}

TEST(Base64, EncodesFiftyFiveBytesAsTwoLines)
{
    const std::vector<TString> lines = Encode(Bytes(55, 'x'), true);
    ASSERT_EQ(lines.size(), 2U);
    EXPECT_EQ(lines[0].length(), 72);
    EXPECT_EQ(lines[1], TString(u"eA=="));
}

TEST(Base64, CutsTheEncodingIntoLines)
{
    RandomBytes random(2);
    for (std::size_t count = 1; count < 400; ++count) {
        const Bytes bytes = MakeBytes(random, count);
        const std::vector<TString> lines = Encode(bytes, true);
        TString joined;
        for (std::size_t i = 0; i < lines.size(); ++i) {
            if (i + 1 < lines.size()) {
                ASSERT_EQ(lines[i].length(), 72);
            }
            ASSERT_FALSE(lines[i].IsEmpty());
            joined += lines[i];
        }
        ASSERT_LE(lines.back().length(), 72);
        ASSERT_EQ(joined, EncodeByQt(bytes)) << count;
    }
}

TEST(Base64, CutsTheEncodingIntoLinesBeyondThoseThatAreMadeTogether)
{
    RandomBytes random(7);
    for (const std::size_t lineCount : {31U, 32U, 33U, 63U, 64U, 65U, 200U}) {
        for (const std::size_t rest : {0U, 1U, 53U}) {
            const Bytes bytes = MakeBytes(random, lineCount * 54 + rest);
            const std::vector<TString> lines = Encode(bytes, true);
            ASSERT_EQ(lines.size(), lineCount + (rest == 0 ? 0 : 1));
            TString joined;
            for (std::size_t i = 0; i < lines.size(); ++i) {
                if (i < lineCount) {
                    ASSERT_EQ(lines[i].length(), 72);
                }
                ASSERT_EQ(lines[i].utf16()[lines[i].length()], u'\0');
                joined += lines[i];
            }
            ASSERT_EQ(joined, EncodeByQt(bytes)) << lineCount << ' ' << rest;
        }
    }
}

TEST(Base64, MakesLinesThatOutliveTheirNeighbours)
{
    RandomBytes random(8);
    const Bytes bytes = MakeBytes(random, 70 * 54);
    const TString expected = EncodeByQt(bytes);
    for (const std::size_t kept : {0U, 31U, 32U, 33U, 63U, 64U, 69U}) {
        const TString line = Encode(bytes, true)[kept];
        EXPECT_EQ(line, expected.mid(static_cast<TString::size_type>(kept * 72), 72)) << kept;
    }
}

TEST(Base64, MakesThirtyTwoLinesWithOneAllocation)
{
    const Bytes bytes(64 * 54 + 1, 'x');
    std::vector<TString> lines;
    lines.reserve(100);
    // Twice the lines that are made together, and the rest.
    const FailingAllocations failing(3);
    EXPECT_NO_THROW(
        Base64Encode(bytes.data(), static_cast<unsigned int>(bytes.size()), lines, true));
    EXPECT_FALSE(FailingAllocations::HasFailed());
}

TEST(Base64, AppendsToTheLinesThatAreThere)
{
    std::vector<TString> lines{u"before"};
    Base64Encode(ToBytes("AB").data(), 2, lines, true);
    Base64Encode(ToBytes("ABC").data(), 3, lines, false);
    EXPECT_EQ(lines, (std::vector<TString>{u"before", u"QUI=", u"QUJD"}));
}

TEST(Base64, RefusesALineWhoseLengthWouldOverflow)
{
    std::vector<TString> lines;
    const unsigned char byte = 0;
    for (const unsigned int count : {0x3FFFFFFFU * 3 + 1, 0xFFFFFFFFU})
        ExpectAssertion([&] { Base64Encode(&byte, count, lines, false); }, u"Base64", 0,
                        u"onethird <= 0x3FFFFFFF", u"D5E47E3E");
    EXPECT_TRUE(lines.empty());
}

TEST(Base64, DecodesWhatItEncodes)
{
    RandomBytes random(3);
    for (std::size_t count = 0; count < 400; ++count) {
        const Bytes bytes = MakeBytes(random, count);
        ASSERT_EQ(Base64Decode(EncodeByQt(bytes)), bytes) << count;
        TString lines;
        for (const TString& line : Encode(bytes, true))
            lines += u"  " + line + u"\r\n";
        ASSERT_EQ(Base64Decode(lines), bytes) << count;
    }
}

TEST(Base64, DecodesLargeTexts)
{
    RandomBytes random(4);
    for (std::size_t count = 4090; count < 4100; ++count) {
        const Bytes bytes = MakeBytes(random, count);
        ASSERT_EQ(Base64Decode(EncodeByQt(bytes)), bytes) << count;
        ASSERT_EQ(Base64Decode(u"*" + EncodeByQt(bytes)), bytes) << count;
    }
    const Bytes large = MakeBytes(random, 1'000'000);
    EXPECT_EQ(Base64Decode(EncodeByQt(large)), large);
}

TEST(Base64, SkipsForeignCharacters)
{
    EXPECT_EQ(Base64Decode(u"QUJD"), ToBytes("ABC"));
    EXPECT_EQ(Base64Decode(u"QU JD"), ToBytes("ABC"));
    EXPECT_EQ(Base64Decode(u" \tQ*U\nJ-D\r\n"), ToBytes("ABC"));
}

TEST(Base64, TakesPaddingForMissingBytes)
{
    EXPECT_EQ(Base64Decode(u"QUI="), ToBytes("AB"));
    EXPECT_EQ(Base64Decode(u"QQ=="), ToBytes("A"));
    EXPECT_EQ(Base64Decode(u"QQ==="), ToBytes("A"));
    EXPECT_EQ(Base64Decode(u"=QUJD"), ToBytes("AB"));
    EXPECT_EQ(Base64Decode(u"QQ==QUJD"), (Bytes{'A', 0x24, 0x30, 0x00}));
}

TEST(Base64, CountsMissingCharactersAsZeroBits)
{
    EXPECT_EQ(Base64Decode(u"QQ"), (Bytes{0x41, 0, 0}));
    EXPECT_EQ(Base64Decode(u"QUI"), (Bytes{0x41, 0x42, 0}));
    EXPECT_EQ(Base64Decode(u"QUJDQ"), (Bytes{'A', 'B', 'C', 0x40, 0, 0}));
    EXPECT_EQ(Base64Decode(u"QUJD*"), (Bytes{'A', 'B', 'C', 0, 0, 0}));
}

TEST(Base64, LooksAtTheLowEightBitsOfEachUnit)
{
    EXPECT_EQ(Base64Decode(u"\u0151\u2055\uFF4A\u0044"), ToBytes("ABC"));
    EXPECT_EQ(Base64Decode(u"QU\u0149\u013D"), ToBytes("AB"));
}

TEST(Base64, ReplacesWhatTheVectorHolds)
{
    Bytes bytes(100, 1);
    Base64Decode(u"QUJD", bytes);
    EXPECT_EQ(bytes, ToBytes("ABC"));
    Base64Decode(u" \n", bytes);
    EXPECT_TRUE(bytes.empty());
    Base64Decode(TString(), bytes);
    EXPECT_TRUE(bytes.empty());
}

TEST(Base64, ReservesTheLengthOfTheText)
{
    Bytes bytes;
    Base64Decode(TString(1000, u'Q'), bytes);
    EXPECT_GE(bytes.capacity(), 1000U);
}

TEST(Base64, DecodesAsAModelDoes)
{
    RandomBytes random(5);
    for (int round = 0; round < 60000; ++round) {
        const std::string bytes = random.Of("AQZaz09+/ABCDEFGHIJKLMNOPQ=* \n", 40);
        std::u16string units;
        for (const char c : bytes)
            units += static_cast<char16_t>(c | (random.Below(8) == 0 ? 0x0100 : 0));
        const TString text(units);
        ASSERT_EQ(Base64Decode(text), Base64Model::Decode(text)) << bytes;
    }
}

TEST(Base64, RecognisesStrictTexts)
{
    for (const char16_t* text : {u"", u"QUJD", u"QUI=", u"QQ==", u"QR==", u"QUJDQUJD", u"+/+/"})
        EXPECT_TRUE(IsBase64(text)) << TString(text);
    for (const char16_t* text :
         {u"QUJ", u"QU JD", u"QUJD\n", u"QUI=\n", u"QUI\n", u"A===", u"====", u"QQ==QUJD", u"QU=D",
          u"QUJ-", u"QUJ_", u"\u0151UJD", u"QUI\u013D", u"Q=I="})
        EXPECT_FALSE(IsBase64(text)) << TString(text);
}

TEST(Base64, RecognisesWhatTheRegularExpressionDoes)
{
    const QRegularExpression expression(QRegularExpression::anchoredPattern(
        "^([A-Za-z0-9+/]{4})*([A-Za-z0-9+/]{3}=|[A-Za-z0-9+/]{2}==)?$"));
    RandomBytes random(6);
    int positive = 0;
    for (int round = 0; round < 50000; ++round) {
        const std::string text =
            random.Of("AZaz09+/", 12) + random.Of(round % 2 == 0 ? "=" : "=A \n-", 4);
        const bool expected =
            text.size() % 4 == 0 && expression.match(QString::fromStdString(text)).hasMatch();
        ASSERT_EQ(IsBase64(TString::fromStdString(text)), expected) << text;
        positive += expected;
    }
    EXPECT_GT(positive, 1000);
}

TEST(Base64, RecognisesTextsOfAnyLength)
{
    const TString text(40'000'000, u'A');
    EXPECT_TRUE(IsBase64(text));
    EXPECT_FALSE(IsBase64(text + u"AAA\n"));
    EXPECT_TRUE(IsBase64(text + u"AA=="));
}

} // namespace
