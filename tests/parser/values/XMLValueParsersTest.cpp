#include <kescorexml/XMLValueParsers.h>

#include <gtest/gtest.h>

namespace {

TEST(XMLValueParsers, TakesOnlyTheTokenForTrue)
{
    EXPECT_TRUE(XMLValueParsers::ParseBool(u"true"));
    for (const char16_t* text : {u"", u"True", u"TRUE", u"1", u"yes", u" true", u"true ", u"false"})
        EXPECT_FALSE(XMLValueParsers::ParseBool(text)) << TString(text);
}

TEST(XMLValueParsers, TakesTheDefaultForTheEmptyStringOnly)
{
    EXPECT_TRUE(XMLValueParsers::ParseBool(u"", true));
    EXPECT_FALSE(XMLValueParsers::ParseBool(u"", false));
    EXPECT_TRUE(XMLValueParsers::ParseBool(u"true", false));
    EXPECT_FALSE(XMLValueParsers::ParseBool(u"false", true));
    EXPECT_FALSE(XMLValueParsers::ParseBool(u"TRUE", true));
    EXPECT_FALSE(XMLValueParsers::ParseBool(u" ", true));
}

TEST(XMLValueParsers, ReadsIntegers)
{
    EXPECT_EQ(XMLValueParsers::ParseInt(u"-2147483648"), -2147483647 - 1);
    EXPECT_EQ(XMLValueParsers::ParseInt(u" 42\n"), 42);
    EXPECT_EQ(XMLValueParsers::ParseInt(u"010"), 10) << "always decimal";
    for (const char16_t* text : {u"", u"x", u"0x10", u"1.5", u"2147483648", u"1 2"})
        EXPECT_EQ(XMLValueParsers::ParseInt(text), 0) << TString(text);
}

TEST(XMLValueParsers, KeepsTheLowBitsOfUnsignedNumbers)
{
    EXPECT_EQ(XMLValueParsers::ParseUInt32(u"4294967295"), 4294967295U);
    EXPECT_EQ(XMLValueParsers::ParseUInt32(u"4294967297"), 1U);
    EXPECT_EQ(XMLValueParsers::ParseUInt32(u"18446744073709551615"), 4294967295U);
    EXPECT_EQ(XMLValueParsers::ParseUInt32(u"010"), 10U) << "always decimal";
    for (const char16_t* text :
         {u"", u"x", u"0x10", u"1.5", u"18446744073709551616", u"-1", u"-0x1"})
        EXPECT_EQ(XMLValueParsers::ParseUInt32(text), 0U) << TString(text);
}

TEST(XMLValueParsers, ReadsNumbersWithFractions)
{
    EXPECT_EQ(XMLValueParsers::ParseFloat(u"0.1"), 0.1);
    EXPECT_EQ(XMLValueParsers::ParseFloat(u" -1.5e300 "), -1.5e300);
    for (const char16_t* text : {u"", u"x", u"1,5", u"1.5x"})
        EXPECT_EQ(XMLValueParsers::ParseFloat(text), 0.0) << TString(text);
}

} // namespace
