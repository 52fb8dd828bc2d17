#include <kesplatform/TString.h>

#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cmath>
#include <cstdio>
#include <limits>
#include <random>

namespace {

TString Printed(double value, char format, int precision)
{
    const std::array<char, 6> pattern = {'%', '.', '*', format, '\0'};
    std::string text(2000, '\0');
    const int length = std::snprintf(text.data(), text.size(), pattern.data(), precision, value);
    text.resize(static_cast<std::size_t>(length));
    return TString::fromStdString(text);
}

template <typename Integer>
void ExpectPrintsEnds()
{
    for (const Integer value : {std::numeric_limits<Integer>::min(), Integer(0), Integer(7),
                                std::numeric_limits<Integer>::max()})
        EXPECT_EQ(TString::fromStdString(std::to_string(value)), TString::number(value));
}

} // namespace

TEST(TStringNumbers, PrintsIntegersOfEveryWidth)
{
    ExpectPrintsEnds<int>();
    ExpectPrintsEnds<unsigned int>();
    ExpectPrintsEnds<long>();
    ExpectPrintsEnds<unsigned long>();
    ExpectPrintsEnds<long long>();
    ExpectPrintsEnds<unsigned long long>();
}

TEST(TStringNumbers, PrintsDoublesLikePrintf)
{
    std::mt19937_64 engine(1);
    for (int round = 0; round < 2000; ++round) {
        const double value = std::bit_cast<double>(engine());
        if (std::isnan(value))
            continue;
        for (const char format : {'e', 'E', 'f', 'g', 'G'}) {
            for (const int precision : {0, 1, 6, 17, 40})
                ASSERT_EQ(Printed(value, format, precision),
                          TString::number(value, format, precision));
        }
    }
    for (const double value : {0.0, -0.0, 1.0, 1e5, 1e6, 0.1, 1e-4, 1e-5, 123456789.0, 1e300}) {
        EXPECT_EQ(Printed(value, 'g', 17), TString::number(value, 'g', 17));
        EXPECT_EQ(Printed(value, 'g', 6), TString::number(value));
        EXPECT_EQ(Printed(value, 'e', 6), TString::number(value, 'e', -1));
        EXPECT_EQ(Printed(value, 'f', 1000), TString::number(value, 'f', 1000));
    }
}

TEST(TStringNumbers, PrintsWhatIsNoFiniteNumber)
{
    constexpr double c_infinite = std::numeric_limits<double>::infinity();
    constexpr double c_nan = std::numeric_limits<double>::quiet_NaN();
    EXPECT_EQ(TString(u"inf"), TString::number(c_infinite));
    EXPECT_EQ(TString(u"-INF"), TString::number(-c_infinite, 'G'));
    EXPECT_EQ(TString(u"nan"), TString::number(c_nan));
    EXPECT_EQ(TString(u"nan"), TString::number(std::copysign(c_nan, -1.0)));
}

TEST(TStringNumbers, ReadsBackDoublesOfSeventeenDigits)
{
    std::mt19937_64 engine(2);
    for (int round = 0; round < 2000; ++round) {
        const double value = std::bit_cast<double>(engine());
        if (!std::isfinite(value))
            continue;
        bool ok = false;
        ASSERT_EQ(value, TString::number(value, 'g', 17).toDouble(&ok));
        ASSERT_TRUE(ok);
    }
}

TEST(TStringNumbers, ReadsNumbersBetweenBlanks)
{
    bool ok = false;
    EXPECT_EQ(42, TString(u" \t\r\n42\v\f ").toInt(&ok));
    EXPECT_TRUE(ok);
    EXPECT_EQ(-42, TString(u"-42").toInt(&ok));
    EXPECT_TRUE(ok);
    EXPECT_EQ(42, TString(u"+42").toInt());
    EXPECT_EQ(std::numeric_limits<int>::min(), TString(u"-2147483648").toInt(&ok));
    EXPECT_TRUE(ok);
    EXPECT_EQ(std::numeric_limits<unsigned long long>::max(),
              TString(u"18446744073709551615").toULongLong(&ok));
    EXPECT_TRUE(ok);
    EXPECT_EQ(-1.5e3, TString(u" -1.5e3\n").toDouble(&ok));
    EXPECT_TRUE(ok);
}

TEST(TStringNumbers, ReadsOtherBases)
{
    bool ok = false;
    EXPECT_EQ(0x3473F8, TString(u"3473F8").toInt(&ok, 16));
    EXPECT_TRUE(ok);
    EXPECT_EQ(0x1F, TString(u"0x1f").toInt(&ok, 0));
    EXPECT_TRUE(ok);
    EXPECT_EQ(8, TString(u"010").toInt(&ok, 0));
    EXPECT_EQ(10, TString(u"010").toInt(&ok));
    EXPECT_EQ(0xD5E47E3EULL, TString(u"D5E47E3E").toULongLong(&ok, 16));
    EXPECT_TRUE(ok);
}

TEST(TStringNumbers, GivesZeroAndFalseForBadTextAndOverflow)
{
    for (const char16_t* text :
         {u"", u" ", u"x", u"1x", u"1 2", u"--1", u"1,000", u"2147483648", u"-2147483649", u"1.0",
          u"0x10", u"\u0661", u"\uFF11", u"\u00A01", u"1\u2003", u"\xD800"}) {
        bool ok = true;
        EXPECT_EQ(0, TString(text).toInt(&ok)) << TString(text);
        EXPECT_FALSE(ok) << TString(text);
    }
    for (const char16_t* text : {u"", u"-1", u"18446744073709551616", u"1.0", u"\u00A01"}) {
        bool ok = true;
        EXPECT_EQ(0U, TString(text).toULongLong(&ok)) << TString(text);
        EXPECT_FALSE(ok) << TString(text);
    }
    for (const char16_t* text :
         {u"", u".", u"1e400", u"-1e400", u"1,5", u"1.0x", u"1\u00A0", u"\u0661", u"1e", u"e1"}) {
        bool ok = true;
        EXPECT_EQ(0.0, TString(text).toDouble(&ok)) << TString(text);
        EXPECT_FALSE(ok) << TString(text);
    }
    const TString embeddedZero(u"1\0002", 3);
    bool ok = true;
    EXPECT_EQ(0, embeddedZero.toInt(&ok));
    EXPECT_FALSE(ok);
}
