#include <kescorexml/CoreXml.h>

#include "CoreXmlStringTable.h"
#include "base/KesErrors.h"

#include <kescorexml/ExtensionXmlTokens.h>

#include <kesplatform/CoreThreadContext.h>
#include <kesplatform/InitOnce.h>
#include <kesplatform/LanguageUtils.h>
#include <kesplatform/LogicException.h>
#include <kesplatform/TLocale.h>
#include <kesplatform/TReadWriteLock.h>

#include <QTranslator>

#include <algorithm>
#include <iterator>
#include <map>
#include <memory>
#include <mutex>
#include <new>
#include <optional>

namespace CoreXml {

namespace {

/// The translations that were asked for so far. Safe to use from several threads.
class LocalStringTableCache
{
public:
    /// The translation of `language` or of the closest supported language; one that is empty when
    /// there is neither. Once handed out it does not change any more, so that any number of
    /// threads may translate with it.
    std::shared_ptr<const QTranslator> GetTranslator(const TString& language);

private:
    TRecursiveMutex m_mutex;
    std::map<TString, std::shared_ptr<const QTranslator>> m_translators;
};

InitOnce s_cacheOnce;
std::unique_ptr<LocalStringTableCache> s_cache;

bool Load(QTranslator& translator, const TString& language)
{
    return translator.load(QStringLiteral(":/kescorexml/KQRC_MODSTRINGS_") + QString(language));
}

std::shared_ptr<const QTranslator> LocalStringTableCache::GetTranslator(const TString& language)
{
    const std::lock_guard lock(m_mutex);
    const auto known = m_translators.find(language);
    if (known != m_translators.end())
        return known->second;

    auto translator = std::make_shared<QTranslator>();
    if (!Load(*translator, language)) {
        const LanguageCode closest = LanguageUtils::GetClosestSupportedLanguageCode(language);
        Load(*translator, LanguageUtils::GetISOString(closest));
    }
    m_translators.emplace(language, translator);
    return translator;
}

LocalStringTableCache& GetCache()
{
    // Thrown from inside, so that the next call tries again.
    s_cacheOnce.Run([] {
        s_cache.reset(new (std::nothrow) LocalStringTableCache);
        if (s_cache == nullptr)
            ThrowLogicException(u"modules/platform/kescorexml/gen-strings/CoreXml", 71, u"s_cache",
                                KesErrorsError::LogicAssert_0xC18F5A72());
    });
    return *s_cache;
}

StringTableRow FindRow(StringId id)
{
    const auto* const row = std::ranges::find(c_stringTable, id, &StringTableRow::id);
    return row == std::end(c_stringTable) ? StringTableRow{id, "", ""} : *row;
}

/// Nothing when the calling thread has no session or the session no locale.
std::optional<TString> GetSessionLanguage()
{
    if (!CoreThreadContext::HasSessionId())
        return std::nullopt;
    const boost::any object = CoreThreadContext::GetObject(attrLocale);
    const auto* const locale = boost::any_cast<TLocale>(&object);
    if (locale == nullptr)
        return std::nullopt;
    return locale->getLanguageCode().GetISOString();
}

} // namespace

TString LookupTStr(StringId id, const TString& language)
{
    const StringTableRow row = FindRow(id);
    LocalStringTableCache& cache = GetCache();
    std::shared_ptr<const QTranslator> translator = cache.GetTranslator(language);
    if (translator->isEmpty()) {
        if (language.startsWith(LanguageUtils::GetDefaultLanguage()))
            return row.text;
        const std::optional<TString> sessionLanguage = GetSessionLanguage();
        if (!sessionLanguage)
            return row.text;
        translator = cache.GetTranslator(*sessionLanguage);
    }
    const TString text = translator->translate(row.key, row.text, nullptr, -1);
    return text.IsEmpty() ? TString(row.text) : text;
}

TString LookupTStr(StringId id)
{
    const std::optional<TString> language = GetSessionLanguage();
    return language ? LookupTStr(id, *language) : TString(FindRow(id).text);
}

TString LookupTStrDefaultLang(StringId id)
{
    return LookupTStr(id, LanguageUtils::GetDefaultISOString());
}

TFormatString LookupTFmtStr(StringId id)
{
    return LookupTStr(id);
}

TFormatString LookupTFmtStr(StringId id, const TString& language)
{
    return LookupTStr(id, language);
}

TFormatString LookupTFmtStrDefaultLang(StringId id)
{
    return LookupTStrDefaultLang(id);
}

} // namespace CoreXml
