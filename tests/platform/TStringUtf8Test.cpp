#include <kesplatform/TString.h>

#include "support/RandomText.h"

#include <gtest/gtest.h>

#include <QString>

namespace {

/// UTF-8 of a text, written down the slow and plain way.
std::string EncodePlainly(std::u16string_view units)
{
    // Qt drops a leading byte-order mark; behind another character it is one like any other.
    std::u32string characters = U"x";
    for (std::size_t i = 0; i < units.size(); ++i) {
        const char32_t unit = units[i];
        const bool isPair = unit >= 0xD800 && unit < 0xDC00 && i + 1 < units.size() &&
                            units[i + 1] >= 0xDC00 && units[i + 1] < 0xE000;
        if (isPair)
            characters += 0x10000 + (unit - 0xD800) * 0x400 + (units[++i] - 0xDC00U);
        else
            characters += unit >= 0xD800 && unit < 0xE000 ? U'\uFFFD' : unit;
    }
    return QString::fromUcs4(characters.data(), static_cast<qsizetype>(characters.size()))
        .toUtf8()
        .mid(1)
        .toStdString();
}

/// What Qt makes of UTF-8, with the byte-order mark that it drops put back.
TString DecodeWithQt(const std::string& utf8)
{
    const QString text = QString::fromUtf8(utf8.data(), static_cast<qsizetype>(utf8.size()));
    return utf8.starts_with("\xEF\xBB\xBF") ? TString(QChar(0xFEFF) + text) : TString(text);
}

} // namespace

TEST(TStringUtf8, EncodesEveryTextAndReadsItBack)
{
    RandomText random(1);
    for (int round = 0; round < 2000; ++round) {
        const std::u16string units = random.Any(120);
        const TString text{std::u16string_view(units)};
        const std::string utf8 = text.toStdString();
        ASSERT_EQ(EncodePlainly(units), utf8);
        std::u16string repaired;
        for (const QChar unit : QString::fromUtf8("\xEF\xBB\xBF" + QByteArray::fromStdString(utf8)))
            repaired += unit.unicode();
        ASSERT_EQ(repaired, TString::fromStdString(utf8).view());
    }
}

TEST(TStringUtf8, EncodesEveryUnit)
{
    for (unsigned unit = 0; unit <= 0xFFFF; ++unit) {
        const auto c = static_cast<char16_t>(unit);
        ASSERT_EQ(EncodePlainly({&c, 1}), TString(1, c).toStdString()) << unit;
    }
}

TEST(TStringUtf8, EncodesHalvesOfPairsAsReplacements)
{
    constexpr const char* c_replacement = "\xEF\xBF\xBD";
    EXPECT_EQ(c_replacement, TString(u"\xD800").toStdString());
    EXPECT_EQ(c_replacement, TString(u"\xDFFF").toStdString());
    EXPECT_EQ(std::string(c_replacement) + c_replacement, TString(u"\xDC00\xD800").toStdString());
    EXPECT_EQ(std::string(c_replacement) + "\xF0\x90\x80\x80",
              TString(u"\xD800\xD800\xDC00").toStdString());
    EXPECT_EQ("\xF0\x90\x80\x80" + std::string(c_replacement),
              TString(u"\xD800\xDC00\xDC00").toStdString());
}

TEST(TStringUtf8, DecodesGoodAndBadBytesLikeQt)
{
    RandomText random(2);
    for (int round = 0; round < 20000; ++round) {
        const std::string bytes = random.Bytes(40);
        ASSERT_EQ(DecodeWithQt(bytes), TString::fromUtf8(bytes)) << testing::PrintToString(bytes);
    }
}

// All leads with all second bytes, followed by what may or may not complete them.
TEST(TStringUtf8, DecodesEveryPairOfBytesLikeQt)
{
    for (int first = 0; first < 256; ++first) {
        for (int second = 0; second < 256; ++second) {
            for (const char* rest : {"", "\x80", "\x80\x80", "\xBF\x41", "\xBF\xBF\x41"}) {
                const std::string bytes =
                    std::string{static_cast<char>(first), static_cast<char>(second)} + rest;
                ASSERT_EQ(DecodeWithQt(bytes), TString::fromUtf8(bytes))
                    << testing::PrintToString(bytes);
            }
        }
    }
}

TEST(TStringUtf8, KeepsALeadingByteOrderMarkAsACharacter)
{
    EXPECT_EQ(TString(u"\uFEFFa"), TString::fromUtf8("\xEF\xBB\xBF"
                                                     "a"));
    EXPECT_EQ("\xEF\xBB\xBF", TString(u"\uFEFF").toStdString());
}

TEST(TStringUtf8, KeepsZeros)
{
    const std::string bytes("a\0b", 3);
    EXPECT_EQ(3, TString::fromStdString(bytes).length());
    EXPECT_EQ(bytes, TString::fromStdString(bytes).toStdString());
    // A zero-terminated text ends there.
    EXPECT_EQ(TString(u"a"), TString(bytes.c_str()));
}

TEST(TStringUtf8, DecodesAsciiOfEveryLengthAroundOneOtherCharacter)
{
    for (std::size_t length = 0; length < 70; ++length) {
        for (std::size_t at = 0; at <= length; ++at) {
            std::string bytes(at, 'x');
            bytes += "\xE2\x82\xAC";
            bytes.append(length - at, 'x');
            std::u16string units(at, u'x');
            units += u'\u20AC';
            units.append(length - at, u'x');
            const TString text = TString::fromUtf8(bytes);
            ASSERT_EQ(units, text.view());
            ASSERT_EQ(u'\0', text.utf16()[text.length()]);
            ASSERT_EQ(bytes, text.toStdString());
        }
    }
}

TEST(TStringUtf8, LeavesADecodedTextFitToGrow)
{
    TString text = TString::fromUtf8("\xE2\x82\xAC\xE2\x82\xAC");
    for (int i = 0; i < 100; ++i)
        text += u'x';
    EXPECT_EQ(TString(u"\u20AC\u20AC") + TString(100, u'x'), text);
}
