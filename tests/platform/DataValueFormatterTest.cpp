#include <kesplatform/DataValue.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <random>

namespace {

TString Canonical(const DataValue& value)
{
    return DataValueFormatter::Format(value, {.canonical = true});
}

TString ForPeople(const DataValue& value)
{
    return DataValueFormatter::Format(value, {});
}

/// The length of the shortest text among those that printf writes of a double and that read back
/// equal, with every number of digits, plain and with an exponent.
TString::size_type ShortestPrintedLength(double value)
{
    int shortest = 64;
    for (int digits = 0; digits <= 24; ++digits) {
        for (const bool plain : {false, true}) {
            char text[512];
            const int length = plain ? std::snprintf(text, sizeof text, "%.*f", digits, value)
                                     : std::snprintf(text, sizeof text, "%.*e", digits, value);
            if (std::strtod(text, nullptr) == value)
                shortest = std::min(shortest, length);
        }
    }
    return shortest;
}

} // namespace

TEST(DataValue, IsNullByDefaultAndOnlyThen)
{
    EXPECT_TRUE(DataValue().IsNull());
    EXPECT_FALSE(DataValue(false).IsNull());
    EXPECT_FALSE(DataValue(u"").IsNull());
    EXPECT_FALSE(DataValue(0).IsNull());
}

TEST(DataValue, IsEqualToTheSameValueOfTheSameType)
{
    EXPECT_EQ(DataValue(1), DataValue(std::int64_t{1}));
    EXPECT_NE(DataValue(1), DataValue(1.0));
    EXPECT_NE(DataValue(1), DataValue(true));
    EXPECT_EQ(DataValue(u"a"), DataValue(TString("a")));
    EXPECT_NE(DataValue(DataDate{2024, 2, 29}), DataValue(DataDate{2024, 2, 28}));
    EXPECT_NE(DataValue(DataDate{2024, 2, 29}), DataValue(DataDateTime{{2024, 2, 29}}));
}

TEST(DataValueFormatter, NullIsEmpty)
{
    EXPECT_EQ(Canonical(DataValue()), u"");
    EXPECT_EQ(ForPeople(DataValue()), u"");
}

TEST(DataValueFormatter, BooleansAreWords)
{
    EXPECT_EQ(Canonical(DataValue(true)), u"true");
    EXPECT_EQ(Canonical(DataValue(false)), u"false");
}

TEST(DataValueFormatter, StringsAreAsTheyAre)
{
    const TString text = u" a<b \U0001F600\n\"";
    EXPECT_EQ(Canonical(DataValue(text)), text);
    EXPECT_EQ(ForPeople(DataValue(text)), text);
}

TEST(DataValueFormatter, IntegersAreDecimal)
{
    EXPECT_EQ(Canonical(DataValue(0)), u"0");
    EXPECT_EQ(Canonical(DataValue(-1234567)), u"-1234567");
    EXPECT_EQ(Canonical(DataValue(std::numeric_limits<std::int64_t>::min())),
              u"-9223372036854775808");
    EXPECT_EQ(Canonical(DataValue(std::numeric_limits<std::int64_t>::max())),
              u"9223372036854775807");
}

TEST(DataValueFormatter, DoublesAreShort)
{
    EXPECT_EQ(Canonical(DataValue(0.0)), u"0");
    EXPECT_EQ(Canonical(DataValue(-0.0)), u"-0");
    EXPECT_EQ(Canonical(DataValue(0.1)), u"0.1");
    EXPECT_EQ(Canonical(DataValue(1.5)), u"1.5");
    EXPECT_EQ(Canonical(DataValue(-42.0)), u"-42");
    EXPECT_EQ(Canonical(DataValue(0.1 + 0.2)), u"0.30000000000000004");
    EXPECT_EQ(Canonical(DataValue(1e300)), u"1e+300");
    EXPECT_EQ(Canonical(DataValue(5e-324)), u"5e-324");
}

TEST(DataValueFormatter, DoublesThatAreNotFiniteHaveNames)
{
    const double infinity = std::numeric_limits<double>::infinity();
    const double nan = std::numeric_limits<double>::quiet_NaN();
    for (const auto format : {Canonical, ForPeople}) {
        EXPECT_EQ(format(DataValue(infinity)), u"inf");
        EXPECT_EQ(format(DataValue(-infinity)), u"-inf");
        EXPECT_EQ(format(DataValue(nan)), u"nan");
        EXPECT_EQ(format(DataValue(std::copysign(nan, -1.0))), u"nan");
    }
    EXPECT_EQ(Canonical(DataValue(infinity)).toDouble(), infinity);
    EXPECT_EQ(Canonical(DataValue(-infinity)).toDouble(), -infinity);
    EXPECT_TRUE(std::isnan(Canonical(DataValue(nan)).toDouble()));
}

TEST(DataValueFormatter, DoublesAreTheShortestTextThatReadsBackEqual)
{
    std::mt19937_64 random(12345);
    for (int i = 0; i < 20000; ++i) {
        // Half of any bits at all, half of sizes that people write down.
        const auto value =
            i % 2 == 0 ? std::bit_cast<double>(random())
                       : std::ldexp(static_cast<double>(random()), static_cast<int>(i % 90) - 80);
        if (!std::isfinite(value))
            continue;
        const TString text = Canonical(DataValue(value));
        bool ok = false;
        ASSERT_EQ(text.toDouble(&ok), value) << text;
        ASSERT_TRUE(ok) << text;
        ASSERT_EQ(std::strtod(text.toStdString().c_str(), nullptr), value) << text;
        ASSERT_EQ(text.length(), ShortestPrintedLength(value)) << text;
    }
}

TEST(DataValueFormatter, SmallDecimalsReadAsTheyWereWritten)
{
    for (int hundredths = -2500; hundredths <= 2500; ++hundredths) {
        const double value = hundredths / 100.0;
        char expected[32];
        std::snprintf(expected, sizeof expected, "%.15g", value);
        ASSERT_EQ(Canonical(DataValue(value)), TString(expected));
    }
}

TEST(DataValueFormatter, DatesAreIso8601)
{
    EXPECT_EQ(Canonical(DataValue(DataDate{2024, 2, 29})), u"2024-02-29");
    EXPECT_EQ(Canonical(DataValue(DataDate{987, 12, 1})), u"0987-12-01");
    EXPECT_EQ(Canonical(DataValue(DataDate{0, 1, 1})), u"0000-01-01");
    EXPECT_EQ(Canonical(DataValue(DataDate())), u"1970-01-01");
    EXPECT_EQ(ForPeople(DataValue(DataDate{2024, 2, 29})), u"2024-02-29");
}

TEST(DataValueFormatter, YearsBeyondFourDigitsAndBeforeZeroHaveASign)
{
    EXPECT_EQ(Canonical(DataValue(DataDate{9999, 12, 31})), u"9999-12-31");
    EXPECT_EQ(Canonical(DataValue(DataDate{10000, 1, 1})), u"+10000-01-01");
    EXPECT_EQ(Canonical(DataValue(DataDate{-44, 3, 15})), u"-0044-03-15");
    EXPECT_EQ(Canonical(DataValue(DataDate{-123456, 3, 15})), u"-123456-03-15");
    EXPECT_EQ(Canonical(DataValue(DataDate{std::numeric_limits<int>::min(), 1, 1})),
              u"-2147483648-01-01");
}

TEST(DataValueFormatter, DateTimesHaveMillisecondsOnlyWhenThereAreSome)
{
    EXPECT_EQ(Canonical(DataValue(DataDateTime{{2024, 2, 29}, 13, 5, 0, 0})),
              u"2024-02-29T13:05:00");
    EXPECT_EQ(Canonical(DataValue(DataDateTime{{2024, 2, 29}, 0, 0, 9, 123})),
              u"2024-02-29T00:00:09.123");
    EXPECT_EQ(Canonical(DataValue(DataDateTime{{-1, 1, 2}, 23, 59, 59, 7})),
              u"-0001-01-02T23:59:59.007");
}

TEST(DataValueFormatter, FieldsOfDatesAreWrittenAsTheyAre)
{
    const int low = std::numeric_limits<int>::min();
    EXPECT_EQ(Canonical(DataValue(DataDateTime{{low, low, low}, low, low, low, low})),
              u"-2147483648--2147483648--2147483648T-2147483648:-2147483648:-2147483648"
              u".-2147483648");
}

TEST(DataValueFormatter, NumbersForPeopleHaveGroupsAndSixDigits)
{
    EXPECT_EQ(ForPeople(DataValue(1234567)), u"1,234,567");
    EXPECT_EQ(ForPeople(DataValue(-999)), u"-999");
    EXPECT_EQ(ForPeople(DataValue(std::numeric_limits<std::int64_t>::min())),
              u"-9,223,372,036,854,775,808");
    EXPECT_EQ(ForPeople(DataValue(3.14159265)), u"3.14159");
    EXPECT_EQ(ForPeople(DataValue(123456.0)), u"123,456");
    EXPECT_EQ(ForPeople(DataValue(0.5)), u"0.5");
}

TEST(DataDateTime, IsMidnightOfTheFirstOfJanuary1970ByDefault)
{
    const DataDateTime time;
    EXPECT_EQ(time, (DataDateTime{{1970, 1, 1}, 0, 0, 0, 0}));
    EXPECT_EQ(Canonical(DataValue(time)), u"1970-01-01T00:00:00");
}
