#include <kesplatform/TLocale.h>

#include <gtest/gtest.h>

TEST(LanguageCode, LanguageIsThePartBeforeTheRegion)
{
    EXPECT_EQ(LanguageCode(u"de_DE").GetLanguage(), u"de");
    EXPECT_EQ(LanguageCode(u"zh_Hant_HK").GetLanguage(), u"zh");
    EXPECT_EQ(LanguageCode(u"de").GetLanguage(), u"de");
    EXPECT_EQ(LanguageCode(u"_DE").GetLanguage(), u"");
    EXPECT_EQ(LanguageCode().GetLanguage(), u"");
}

TEST(LanguageCode, KeepsItsText)
{
    EXPECT_EQ(LanguageCode(u"de_DE").GetISOString(), u"de_DE");
    EXPECT_EQ(LanguageCode(u"de_DE"), LanguageCode("de_DE"));
    EXPECT_NE(LanguageCode(u"de_DE"), LanguageCode(u"de"));
}

TEST(TLocale, HasTheLanguageItWasMadeOf)
{
    EXPECT_EQ(TLocale(LanguageCode(u"sv_SE")).getLanguageCode(), LanguageCode(u"sv_SE"));
}
