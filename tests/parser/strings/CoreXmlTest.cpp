#include <kescorexml/CoreXml.h>

#include "support/FailingAllocations.h"
#include "support/TranslationSources.h"

#include <kescorexml/ExtensionXmlTokens.h>

#include <kesplatform/CoreThreadContext.h>
#include <kesplatform/LanguageUtils.h>
#include <kesplatform/LogicException.h>
#include <kesplatform/TLocale.h>

#include <gtest/gtest.h>

#include <QString>

#include <atomic>
#include <cstdlib>
#include <fstream>
#include <new>
#include <sstream>
#include <thread>
#include <vector>

namespace {

/// While set, this thread's allocations that may return null do.
thread_local bool t_failNothrowAllocations = false;

} // namespace

void* operator new(std::size_t size, const std::nothrow_t&) noexcept
{
    if (t_failNothrowAllocations)
        return nullptr;
    try {
        return ::operator new(size);
    } catch (...) {
        return nullptr;
    }
}

namespace {

using CoreXml::StringId;

constexpr StringId c_ids[] = {StringId::IDS_ERR_XML_ENTITY, StringId::IDS_ERR_XML_INVALID_ENCODING};
constexpr const char16_t* c_entityText = u"XML External <!ENTITY> definitions are not allowed.";
constexpr const char16_t* c_encodingText = u"The XML file is in an unsupported encoding.";
constexpr const char* c_locales[] = {"zh_CN", "zh_TW", "sv_SE", "th_TH", "pt_BR", "fr_FR", "fr_CA",
                                     "es_ES", "de_DE", "en_GB", "nl_NL", "ja_JP", "it_IT", "ko_KR"};

static_assert(static_cast<std::uint32_t>(StringId::IDS_ERR_XML_ENTITY) == 0xcde820df);
static_assert(static_cast<std::uint32_t>(StringId::IDS_ERR_XML_INVALID_ENCODING) == 0x927f7f7b);

TString BuiltIn(StringId id)
{
    return id == StringId::IDS_ERR_XML_ENTITY ? c_entityText : c_encodingText;
}

/// What the translation source of a locale has for a message.
TString Translated(StringId id, const char* locale)
{
    for (const SourceMessage& message : ReadTranslationSource(QString::fromLatin1(locale))) {
        if (message.source == QString(BuiltIn(id)))
            return message.translation;
    }
    return {};
}

/// Leaves the thread without session, as a thread starts.
class CoreXmlStrings : public testing::Test
{
protected:
    void SetUp() override { CoreThreadContext::Clear(); }
    void TearDown() override { CoreThreadContext::Clear(); }

    static void SetLocale(const char* locale)
    {
        CoreThreadContext::SetObject(CoreXml::attrLocale, TLocale(LanguageCode(locale)));
    }

    static void StartSession(const char* locale)
    {
        CoreThreadContext::SetSessionId(u"session");
        SetLocale(locale);
    }
};

TEST_F(CoreXmlStrings, AreThoseOfTheList)
{
    std::ifstream list(TESTS_SOURCE_DIR "/../gen-strings/CoreXml.tsv");
    std::size_t rows = 0;
    for (std::string line; std::getline(list, line); ++rows) {
        std::istringstream fields(line);
        std::string id;
        std::string key;
        std::string text;
        std::getline(fields, id, '\t');
        std::getline(fields, key, '\t');
        std::getline(fields, text);
        const auto value = static_cast<std::uint32_t>(std::stoul(id, nullptr, 16));
        EXPECT_EQ(CoreXml::LookupTStr(static_cast<StringId>(value)).toStdString(), text) << key;
    }
    EXPECT_EQ(rows, std::size(c_ids));
}

TEST_F(CoreXmlStrings, AreBuiltInWithoutSessionWhateverTheLocale)
{
    SetLocale("de_DE");
    for (const StringId id : c_ids)
        EXPECT_EQ(CoreXml::LookupTStr(id), BuiltIn(id));
}

TEST_F(CoreXmlStrings, SpeakTheLanguageOfTheSession)
{
    for (const char* locale : c_locales) {
        StartSession(locale);
        for (const StringId id : c_ids)
            EXPECT_EQ(CoreXml::LookupTStr(id), Translated(id, locale)) << locale;
    }
}

TEST_F(CoreXmlStrings, AreBuiltInForASessionWithoutLocale)
{
    CoreThreadContext::SetSessionId(u"session");
    for (const StringId id : c_ids) {
        EXPECT_EQ(CoreXml::LookupTStr(id), BuiltIn(id));
        EXPECT_EQ(CoreXml::LookupTStr(id, u"xx_YY"), BuiltIn(id));
    }
}

TEST_F(CoreXmlStrings, AreBuiltInWhenTheSessionsLocaleIsOfAnotherType)
{
    CoreThreadContext::SetSessionId(u"session");
    CoreThreadContext::SetObject(CoreXml::attrLocale, 42);
    EXPECT_EQ(CoreXml::LookupTStr(StringId::IDS_ERR_XML_ENTITY), c_entityText);
}

TEST_F(CoreXmlStrings, SpeakEveryLanguageThatIsAskedFor)
{
    for (const char* locale : c_locales) {
        for (const StringId id : c_ids)
            EXPECT_EQ(CoreXml::LookupTStr(id, locale), Translated(id, locale)) << locale;
    }
    EXPECT_NE(CoreXml::LookupTStr(StringId::IDS_ERR_XML_ENTITY, u"de_DE"), c_entityText);
}

TEST_F(CoreXmlStrings, PreferTheLanguageThatIsAskedForToThatOfTheSession)
{
    StartSession("fr_FR");
    for (const StringId id : c_ids)
        EXPECT_EQ(CoreXml::LookupTStr(id, u"de_DE"), Translated(id, "de_DE"));
}

TEST_F(CoreXmlStrings, FallBackToTheClosestSupportedLanguage)
{
    for (const StringId id : c_ids) {
        EXPECT_EQ(CoreXml::LookupTStr(id, u"de_AT"), Translated(id, "de_DE"));
        EXPECT_EQ(CoreXml::LookupTStr(id, u"zh_HK"), Translated(id, "zh_TW"));
        EXPECT_EQ(CoreXml::LookupTStr(id, u"pt_PT"), Translated(id, "pt_BR"));
    }
}

TEST_F(CoreXmlStrings, FallBackToBuiltInTextsWithoutSession)
{
    for (const char16_t* language : {u"xx_YY", u"", u"ga_IE", u"../de_DE", u"_"}) {
        for (const StringId id : c_ids)
            EXPECT_EQ(CoreXml::LookupTStr(id, language), BuiltIn(id)) << TString(language);
    }
}

TEST_F(CoreXmlStrings, FallBackToTheSessionsLanguageBeforeBuiltInTexts)
{
    StartSession("sv_SE");
    for (const char16_t* language : {u"xx_YY", u"", u"ga_IE"}) {
        for (const StringId id : c_ids)
            EXPECT_EQ(CoreXml::LookupTStr(id, language), Translated(id, "sv_SE"))
                << TString(language);
    }
}

TEST_F(CoreXmlStrings, FallBackToBuiltInTextsWhenTheSessionsLanguageHasNone)
{
    for (const char* sessionLocale : {"ga_IE", "xx_YY", "en_US"}) {
        StartSession(sessionLocale);
        for (const StringId id : c_ids) {
            EXPECT_EQ(CoreXml::LookupTStr(id), BuiltIn(id)) << sessionLocale;
            EXPECT_EQ(CoreXml::LookupTStr(id, u"xx_YY"), BuiltIn(id)) << sessionLocale;
        }
    }
}

TEST_F(CoreXmlStrings, TakeEnglishForEnglishWhateverTheSession)
{
    StartSession("ja_JP");
    for (const StringId id : c_ids) {
        EXPECT_EQ(CoreXml::LookupTStr(id, u"en_US"), BuiltIn(id));
        EXPECT_EQ(CoreXml::LookupTStr(id, u"en"), BuiltIn(id));
        EXPECT_EQ(CoreXml::LookupTStr(id, u"en_AU"), Translated(id, "en_GB"));
    }
}

TEST_F(CoreXmlStrings, RecogniseTheDefaultLanguageInLowerCaseOnly)
{
    ASSERT_EQ(LanguageUtils::GetDefaultLanguage(), u"en");
    StartSession("ja_JP");
    EXPECT_EQ(CoreXml::LookupTStr(StringId::IDS_ERR_XML_ENTITY, u"EN_XX"),
              Translated(StringId::IDS_ERR_XML_ENTITY, "ja_JP"));
}

TEST_F(CoreXmlStrings, AreEnglishInTheDefaultLanguage)
{
    StartSession("ko_KR");
    for (const StringId id : c_ids) {
        EXPECT_EQ(CoreXml::LookupTStrDefaultLang(id), BuiltIn(id));
        EXPECT_EQ(CoreXml::LookupTStrDefaultLang(id),
                  CoreXml::LookupTStr(id, LanguageUtils::GetDefaultISOString()));
    }
}

TEST_F(CoreXmlStrings, ComeAsFormatsToo)
{
    StartSession("it_IT");
    for (const StringId id : c_ids) {
        EXPECT_EQ(CoreXml::LookupTFmtStr(id).GetFormat(), Translated(id, "it_IT"));
        EXPECT_EQ(CoreXml::LookupTFmtStr(id, u"nl_NL").GetFormat(), Translated(id, "nl_NL"));
        EXPECT_EQ(CoreXml::LookupTFmtStrDefaultLang(id).GetFormat(), BuiltIn(id));
    }
}

TEST_F(CoreXmlStrings, AreEmptyForAnUnknownId)
{
    for (const std::uint32_t value : {0U, 0xcde820deU, 0xffffffffU}) {
        const auto id = static_cast<StringId>(value);
        CoreThreadContext::Clear();
        EXPECT_TRUE(CoreXml::LookupTStr(id).IsEmpty());
        EXPECT_TRUE(CoreXml::LookupTStr(id, u"de_DE").IsEmpty());
        StartSession("de_DE");
        EXPECT_TRUE(CoreXml::LookupTStr(id).IsEmpty());
        EXPECT_TRUE(CoreXml::LookupTStr(id, u"xx_YY").IsEmpty());
        EXPECT_TRUE(CoreXml::LookupTStrDefaultLang(id).IsEmpty());
        EXPECT_TRUE(CoreXml::LookupTFmtStr(id).GetFormat().IsEmpty());
    }
}

TEST_F(CoreXmlStrings, RememberThatThereIsNothingForALanguage)
{
    const TString language(u"xx_QQ");
    EXPECT_EQ(CoreXml::LookupTStr(StringId::IDS_ERR_XML_ENTITY, language), c_entityText);
    TString text;
    {
        // Room for two short texts, none for another look at the translations.
        const FailingAllocations failing(2);
        text = CoreXml::LookupTStr(StringId::IDS_ERR_XML_ENTITY, language);
    }
    EXPECT_EQ(text, c_entityText);
}

TEST_F(CoreXmlStrings, MayBeLookedUpBySeveralThreads)
{
    std::vector<TString> expected;
    for (const char* locale : c_locales)
        expected.push_back(Translated(StringId::IDS_ERR_XML_ENTITY, locale));

    std::atomic<int> wrong = 0;
    std::vector<std::thread> threads;
    for (std::size_t first = 0; first < 4; ++first) {
        threads.emplace_back([&, first] {
            for (std::size_t i = 0; i < 50 * std::size(c_locales); ++i) {
                const std::size_t index = (first + i) % std::size(c_locales);
                StartSession(c_locales[index]);
                if (CoreXml::LookupTStr(StringId::IDS_ERR_XML_ENTITY) != expected[index])
                    ++wrong;
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(wrong, 0);
}

/// Ends the process with 0 when the missing cache is reported, and is made up for afterwards.
void LookUpWithoutMemoryForTheCache()
{
    t_failNothrowAllocations = true;
    try {
        static_cast<void>(CoreXml::LookupTStr(StringId::IDS_ERR_XML_ENTITY, u"de_DE"));
        std::_Exit(1);
    } catch (const LogicException& e) {
        t_failNothrowAllocations = false;
        if (e.GetText() != u"s_cache" || e.GetLine() != 71 ||
            e.GetFile() != u"modules/platform/kescorexml/gen-strings/CoreXml")
            std::_Exit(2);
    }
    const TString text = CoreXml::LookupTStr(StringId::IDS_ERR_XML_ENTITY, u"de_DE");
    std::_Exit(text == Translated(StringId::IDS_ERR_XML_ENTITY, "de_DE") ? 0 : 3);
}

TEST(CoreXmlStringsDeathTest, ReportACacheThatCannotBeMadeAndTryAgain)
{
#if defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "an exception that leaves std::call_once blocks all later calls under TSan";
#endif
    // The cache is made once in a process, so this needs one of its own.
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(LookUpWithoutMemoryForTheCache(), testing::ExitedWithCode(0), "");
}

} // namespace
