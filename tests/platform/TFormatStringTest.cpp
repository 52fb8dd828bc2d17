#include <kesplatform/TFormatString.h>

#include <gtest/gtest.h>

namespace {

template <typename... Arguments>
TString Format(const char16_t* format, const Arguments&... arguments)
{
    return TFormatString(format).Format(arguments...);
}

} // namespace

TEST(TFormatString, ReplacesPlaceholdersInAnyOrder)
{
    EXPECT_EQ(TString(u"x(1,2)"), Format(u"%3(%1,%2)", 1, 2, u"x"));
    EXPECT_EQ(TString(u"aa"), Format(u"%1%1", u"a"));
    EXPECT_EQ(TString(u"123456789"), Format(u"%1%2%3%4%5%6%7%8%9", 1, 2, 3, 4, 5, 6, 7, 8, 9));
    EXPECT_EQ(TString(u"a0"), Format(u"%10", u"a"));
}

TEST(TFormatString, LeavesPlaceholdersInArgumentsAlone)
{
    EXPECT_EQ(TString(u"%2 b %1"), Format(u"%1 %2 %3", u"%2", u"b", u"%1"));
    EXPECT_EQ(TString(u"%1"), Format(u"%1", TString(u"%1")));
    EXPECT_EQ(TString(u"%2"), Format(u"%1%2", u"%", u"2"));
}

TEST(TFormatString, LeavesOtherPercentSignsAlone)
{
    EXPECT_EQ(TString(u"100% %0 %a % a"), Format(u"100% %0 %a % %1", u"a"));
    EXPECT_EQ(TString(u"a%"), Format(u"%1%", u"a"));
    EXPECT_EQ(TString(u"%a"), Format(u"%%1", u"a"));
    EXPECT_EQ(TString(u"%\uFF11"), Format(u"%\uFF11", u"a"));
}

TEST(TFormatString, KeepsPlaceholdersWithoutArgument)
{
    EXPECT_EQ(TString(u"a %2"), Format(u"%1 %2", u"a"));
    EXPECT_EQ(TString(u"%1"), Format(u"%1"));
    EXPECT_EQ(TString(u" text"), Format(u"%1 text", u""));
}

TEST(TFormatString, PrintsNumbers)
{
    EXPECT_EQ(TString(u"-1 4294967295 -9 18446744073709551615 0.5"),
              Format(u"%1 %2 %3 %4 %5", -1, 4294967295U, -9LL, 18446744073709551615ULL, 0.5));
}

TEST(TFormatString, MayBeEmpty)
{
    EXPECT_TRUE(TFormatString().Format(u"a").IsEmpty());
    EXPECT_TRUE(TFormatString().GetFormat().IsEmpty());
    EXPECT_EQ(TString(u"%1"), TFormatString(TString(u"%1")).GetFormat());
}
