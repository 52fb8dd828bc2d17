#pragma once

#include <kescorexml/CoreXmlStringId.h>
#include <kescorexml/Export.h>
#include <kescorexml/ExtensionXmlTokens.h>

#include <kesplatform/TFormatString.h>
#include <kesplatform/TString.h>

/// The module's messages in the languages that it is translated to. A message that has no
/// translation, or whose translation cannot be found, comes in built-in English; an id that is no
/// message gives the empty string. Look-ups do without an application object; Qt does not mind one
/// that is made later, if it is the main thread that makes it and has loaded this library.
/// Safe to use from several threads.
namespace CoreXml {

/// The message in `language`, an ISO string such as "de_DE", or in the closest supported language.
/// Where that has no texts either, the session's language is used; English stands for itself, and
/// for everything where there is no session. The first use of a language loads its translation;
/// what was found, or that nothing was, is kept under that name as long as the process lives, so
/// names should come from a list of languages and not from a document. Once the process ends and
/// the library's static objects are gone, languages that were not used before have no texts.
[[nodiscard]] KESCOREXML_EXPORT TString LookupTStr(StringId id, const TString& language);

/// The message in the language of the calling thread's session: that of the TLocale which
/// CoreThreadContext holds under CoreXml::attrLocale. Without a session or its locale it is the
/// built-in text, and no translation is looked at.
[[nodiscard]] KESCOREXML_EXPORT TString LookupTStr(StringId id);

/// The message in the suite's default language.
[[nodiscard]] KESCOREXML_EXPORT TString LookupTStrDefaultLang(StringId id);

/// The same messages, ready to have their placeholders replaced.
[[nodiscard]] KESCOREXML_EXPORT TFormatString LookupTFmtStr(StringId id);
[[nodiscard]] KESCOREXML_EXPORT TFormatString LookupTFmtStr(StringId id, const TString& language);
/// The same in the suite's default language.
[[nodiscard]] KESCOREXML_EXPORT TFormatString LookupTFmtStrDefaultLang(StringId id);

} // namespace CoreXml
