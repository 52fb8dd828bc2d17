#include <kescorexml/XMLValueParsers.h>

#include <kescorexml/XMLTokens.h>

#include <gtest/gtest.h>

#include <string_view>

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

/// The module's own markup as a static object finds it in its constructor.
struct Tokens
{
    std::u16string_view tagTuple = View(XMLTokens::tagTuple);
    std::u16string_view tagValue = View(XMLTokens::tagValue);
    std::u16string_view tagPack = View(XMLTokens::tagPack);
    std::u16string_view attrVersion = View(XMLTokens::attrVersion);
    std::u16string_view valueTrue = View(XMLTokens::valueTrue);
    std::u16string_view valueFalse = View(XMLTokens::valueFalse);
    bool isTrue = XMLValueParsers::ParseBool(u"true");

    static std::u16string_view View(const char16_t* token)
    {
        return token == nullptr ? std::u16string_view() : token;
    }
};

// Before every other object that is not constant.
__attribute__((init_priority(101))) const Tokens s_early;

TEST(XMLTokens, NamesTheModulesOwnMarkup)
{
    for (const Tokens& tokens : {s_early, Tokens()}) {
        EXPECT_EQ(tokens.tagTuple, u"tuple");
        EXPECT_EQ(tokens.tagValue, u"value");
        EXPECT_EQ(tokens.tagPack, u"pack");
        EXPECT_EQ(tokens.attrVersion, u"version");
        EXPECT_EQ(tokens.valueTrue, u"true");
        EXPECT_EQ(tokens.valueFalse, u"false");
        EXPECT_TRUE(tokens.isTrue);
    }
}

} // namespace
