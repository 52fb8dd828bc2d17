#pragma once

#include <kesplatform/Export.h>
#include <kesplatform/TLocale.h>

/// Which languages the suite speaks. Safe to use from several threads.
namespace LanguageUtils {

/// "en".
[[nodiscard]] KESPLATFORM_EXPORT TString GetDefaultLanguage();
/// "en_US".
[[nodiscard]] KESPLATFORM_EXPORT TString GetDefaultISOString();
/// The supported locale that is closest to `language`: itself, else one of the same language
/// (zh_HK gives zh_TW, pt_PT gives pt_BR, en_AU gives en_GB, de_AT gives de_DE), else the default.
/// Language and region are compared as they are written, "_" between them.
[[nodiscard]] KESPLATFORM_EXPORT LanguageCode
GetClosestSupportedLanguageCode(const TString& language);
/// The code as text, for example "pt_BR".
[[nodiscard]] KESPLATFORM_EXPORT TString GetISOString(const LanguageCode& language);

} // namespace LanguageUtils
