#include <kescorexml/CoreXml.h>

#include "CoreXmlStringTable.h"
#include "base/Assertion.h"
#include "base/KesErrors.h"

#include <kescorexml/ExtensionXmlTokens.h>

#include <kesplatform/CoreThreadContext.h>
#include <kesplatform/InitOnce.h>
#include <kesplatform/LanguageUtils.h>
#include <kesplatform/LogicException.h>
#include <kesplatform/TLocale.h>
#include <kesplatform/TRecursiveMutex.h>

#include <QThread>
#include <QTranslator>

#include <algorithm>
#include <atomic>
#include <iterator>
#include <map>
#include <memory>
#include <mutex>
#include <new>
#include <optional>

#if defined(__linux__)
#include <sys/syscall.h>
#include <unistd.h>
#endif

#ifdef KESCOREXML_STATIC_DEFINE
int qInitResources_kescorexml();
#endif

namespace CoreXml {

namespace {

#ifdef KESCOREXML_STATIC_DEFINE
/// The translations register themselves, but a linker takes only what is referred to from an
/// archive.
[[gnu::used]] int (*const s_registration)() = &qInitResources_kescorexml;
#endif

/// The translations that were asked for so far. Safe to use from several threads.
class LocalStringTableCache
{
public:
    /// The translation of `language` or of the closest supported language; one that is empty when
    /// there is neither, and none when it is too late to look. Once handed out it does not change
    /// any more, so that any number of threads may translate with it.
    std::shared_ptr<const QTranslator> GetTranslator(const TString& language);

private:
    TRecursiveMutex m_mutex;
    std::map<TString, std::shared_ptr<const QTranslator>> m_translators;
};

constinit InitOnce s_cacheOnce;
/// Never destroyed: destructors of other static objects may still ask.
constinit LocalStringTableCache* s_cache = nullptr;

/// Set when the static objects of this library go: by then those of Qt may be gone, without which
/// no translation is found.
constinit std::atomic<bool> s_isTooLateToLoad{false};

struct EndOfLoading
{
    ~EndOfLoading() { s_isTooLateToLoad = true; }
};

const EndOfLoading s_endOfLoading;

/// Qt takes the first thread on which one of its objects is made for the application's, and warns
/// when the application object is made on another one. A translator is such an object, and may be
/// made on any thread; so the thread that loads this library comes first if it is the process's
/// main thread.
struct MainThreadNotice
{
    MainThreadNotice()
    {
#if defined(__linux__)
        if (syscall(SYS_gettid) == getpid())
            QThread::currentThread();
#endif
    }
};

const MainThreadNotice s_mainThreadNotice;

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
    if (s_isTooLateToLoad)
        return nullptr;

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
        s_cache = new (std::nothrow) LocalStringTableCache;
        if (s_cache == nullptr)
            ThrowLogicException(u"modules/platform/kescorexml/gen-strings/CoreXml",
                                PublishedLine(71).number, u"s_cache",
                                KesErrorsError::LogicAssert_0xC18F5A72());
    });
    return *s_cache;
}

bool IsEmpty(const QTranslator* translator)
{
    return translator == nullptr || translator->isEmpty();
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
    if (IsEmpty(translator.get())) {
        if (language.startsWith(LanguageUtils::GetDefaultLanguage()))
            return row.text;
        const std::optional<TString> sessionLanguage = GetSessionLanguage();
        if (!sessionLanguage)
            return row.text;
        translator = cache.GetTranslator(*sessionLanguage);
        if (translator == nullptr)
            return row.text;
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
