#include <kesplatform/LanguageUtils.h>

#include <algorithm>
#include <array>
#include <string_view>

namespace {

constexpr std::u16string_view c_defaultLocale = u"en_US";

/// The locales that there are translations for, and the default, which needs none. Of several
/// with one language the first is the one for regions that nothing else is known about.
constexpr std::array<std::u16string_view, 16> c_supportedLocales = {
    u"en_GB", c_defaultLocale, u"de_DE", u"es_ES", u"fr_FR", u"fr_CA", u"ga_IE", u"it_IT",
    u"ja_JP", u"ko_KR",        u"nl_NL", u"pt_BR", u"sv_SE", u"th_TH", u"zh_CN", u"zh_TW"};

std::u16string_view LanguageOf(std::u16string_view locale)
{
    return locale.substr(0, locale.find(u'_'));
}

/// Hong Kong and Macau write Chinese like Taiwan; "zh_Hant" says so outright.
bool IsTraditionalChinese(std::u16string_view locale)
{
    return locale == u"zh_HK" || locale == u"zh_MO" || locale == u"zh_Hant" ||
           locale.starts_with(u"zh_Hant_");
}

std::u16string_view ClosestLocale(std::u16string_view locale)
{
    if (std::ranges::find(c_supportedLocales, locale) != c_supportedLocales.end())
        return locale;
    // English without a region is the default's language, that of other regions is closer to
    // British spelling.
    if (locale == LanguageOf(c_defaultLocale))
        return c_defaultLocale;
    if (IsTraditionalChinese(locale))
        return u"zh_TW";
    const auto* found = std::ranges::find(c_supportedLocales, LanguageOf(locale), &LanguageOf);
    return found == c_supportedLocales.end() ? c_defaultLocale : *found;
}

} // namespace

TString LanguageUtils::GetDefaultLanguage()
{
    return TString(LanguageOf(c_defaultLocale));
}

TString LanguageUtils::GetDefaultISOString()
{
    return TString(c_defaultLocale);
}

LanguageCode LanguageUtils::GetClosestSupportedLanguageCode(const TString& language)
{
    return LanguageCode(TString(ClosestLocale(language.view())));
}

TString LanguageUtils::GetISOString(const LanguageCode& language)
{
    return language.GetISOString();
}
