#include "support/TranslationSources.h"

#include <kescorexml/CoreXml.h>

#include <QDir>
#include <QFile>
#include <QResource>
#include <QStringList>
#include <QTranslator>

#include <gtest/gtest.h>

#include <dlfcn.h>

namespace {

struct Translation
{
    const char* locale;
    qint64 size;
};

constexpr Translation c_translations[] = {
    {"zh_CN", 324}, {"zh_TW", 320}, {"sv_SE", 431}, {"th_TH", 408}, {"pt_BR", 455},
    {"ga_IE", 36},  {"fr_FR", 467}, {"fr_CA", 467}, {"es_ES", 453}, {"de_DE", 475},
    {"en_GB", 429}, {"nl_NL", 469}, {"ja_JP", 344}, {"it_IT", 433}, {"ko_KR", 348},
};

QString PathOf(const char* locale)
{
    return QStringLiteral(":/kescorexml/KQRC_MODSTRINGS_") + QString::fromLatin1(locale);
}

TEST(Resources, HoldATranslationOfExactlyTheKnownSizeForEachLocale)
{
    for (const Translation& translation : c_translations)
        EXPECT_EQ(QFile(PathOf(translation.locale)).size(), translation.size) << translation.locale;
}

TEST(Resources, HoldNothingElse)
{
    QStringList expected;
    for (const Translation& translation : c_translations)
        expected << QStringLiteral("KQRC_MODSTRINGS_") + QString::fromLatin1(translation.locale);
    expected.sort();
    EXPECT_EQ(
        QDir(QStringLiteral(":/kescorexml")).entryList(QDir::AllEntries, QDir::Name).join(' '),
        expected.join(' '));
}

TEST(Resources, AreNotCompressed)
{
    for (const Translation& translation : c_translations) {
        const QResource resource(PathOf(translation.locale));
        EXPECT_EQ(resource.compressionAlgorithm(), QResource::NoCompression) << translation.locale;
        EXPECT_EQ(resource.size(), translation.size) << translation.locale;
    }
}

TEST(Resources, TranslateBothMessagesAsTheirSourcesSay)
{
    for (const Translation& translation : c_translations) {
        const auto messages = ReadTranslationSource(QString::fromLatin1(translation.locale));
        if (translation.locale == std::string_view("ga_IE")) {
            EXPECT_TRUE(messages.empty());
            continue;
        }
        QTranslator translator;
        ASSERT_TRUE(translator.load(PathOf(translation.locale))) << translation.locale;
        EXPECT_EQ(translator.language().toStdString(), translation.locale);
        EXPECT_EQ(messages.size(), 2U) << translation.locale;
        for (const SourceMessage& message : messages) {
            const QString text = translator.translate(message.context.toUtf8().constData(),
                                                      message.source.toUtf8().constData());
            EXPECT_EQ(text.toStdString(), message.translation.toStdString()) << translation.locale;
            EXPECT_FALSE(text.isEmpty()) << translation.locale;
        }
    }
}

TEST(Resources, KeepTheNameOfTheDeclarationInEveryLanguage)
{
    for (const Translation& translation : c_translations) {
        if (translation.locale == std::string_view("ga_IE"))
            continue;
        const TString text =
            CoreXml::LookupTStr(CoreXml::StringId::IDS_ERR_XML_ENTITY, translation.locale);
        EXPECT_TRUE(text.contains(TString(u"<!ENTITY>"))) << translation.locale;
        EXPECT_TRUE(text.contains(TString(u"XML"))) << translation.locale;
    }
}

TEST(Resources, AreRegisteredByFunctionsThatNoOtherModuleSees)
{
    EXPECT_EQ(dlsym(RTLD_DEFAULT, "_Z14qInitResourcesv"), nullptr);
    EXPECT_EQ(dlsym(RTLD_DEFAULT, "_Z17qCleanupResourcesv"), nullptr);
}

} // namespace
