#include <kesplatform/LanguageUtils.h>

#include <gtest/gtest.h>

#include <string>

namespace {

std::string Closest(const char* language)
{
    return LanguageUtils::GetISOString(LanguageUtils::GetClosestSupportedLanguageCode(language))
        .toStdString();
}

} // namespace

TEST(LanguageUtils, DefaultIsEnglishOfTheUnitedStates)
{
    EXPECT_EQ(LanguageUtils::GetDefaultLanguage(), u"en");
    EXPECT_EQ(LanguageUtils::GetDefaultISOString(), u"en_US");
}

TEST(LanguageUtils, SupportedLocalesAreClosestToThemselves)
{
    for (const char* locale :
         {"zh_CN", "zh_TW", "sv_SE", "th_TH", "pt_BR", "ga_IE", "fr_FR", "fr_CA", "es_ES", "de_DE",
          "en_GB", "nl_NL", "ja_JP", "it_IT", "ko_KR", "en_US"})
        EXPECT_EQ(Closest(locale), locale);
}

TEST(LanguageUtils, OtherRegionsGetTheirLanguage)
{
    EXPECT_EQ(Closest("de_AT"), "de_DE");
    EXPECT_EQ(Closest("es_MX"), "es_ES");
    EXPECT_EQ(Closest("fr_BE"), "fr_FR");
    EXPECT_EQ(Closest("nl_BE"), "nl_NL");
    EXPECT_EQ(Closest("pt_PT"), "pt_BR");
    EXPECT_EQ(Closest("sv_FI"), "sv_SE");
}

TEST(LanguageUtils, LanguageWithoutRegionGetsItsMainRegion)
{
    EXPECT_EQ(Closest("de"), "de_DE");
    EXPECT_EQ(Closest("fr"), "fr_FR");
    EXPECT_EQ(Closest("en"), "en_US");
    EXPECT_EQ(Closest("zh"), "zh_CN");
}

TEST(LanguageUtils, EnglishOfOtherRegionsIsBritish)
{
    EXPECT_EQ(Closest("en_AU"), "en_GB");
    EXPECT_EQ(Closest("en_IE"), "en_GB");
}

TEST(LanguageUtils, ChineseIsTraditionalWhereItIsWrittenSo)
{
    EXPECT_EQ(Closest("zh_HK"), "zh_TW");
    EXPECT_EQ(Closest("zh_MO"), "zh_TW");
    EXPECT_EQ(Closest("zh_Hant"), "zh_TW");
    EXPECT_EQ(Closest("zh_Hant_HK"), "zh_TW");
    EXPECT_EQ(Closest("zh_SG"), "zh_CN");
    EXPECT_EQ(Closest("zh_Hans_CN"), "zh_CN");
}

TEST(LanguageUtils, AnythingElseGetsTheDefault)
{
    for (const char* language : {"", "pl_PL", "xx", "_", "DE_de", "deu", "d", "english"})
        EXPECT_EQ(Closest(language), "en_US") << language;
}
