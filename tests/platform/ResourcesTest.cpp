#include <kesplatform/Resources.h>

#include <kesplatform/CorvinaException.h>

#include <gmock/gmock.h>

#include <QFile>
#include <QResource>

#include <string>
#include <thread>
#include <vector>

namespace {

using testing::HasSubstr;

void AppendBigEndian(std::string& to, std::uint32_t value, int bytes)
{
    for (int shift = (bytes - 1) * 8; shift >= 0; shift -= 8)
        to += static_cast<char>(value >> shift & 0xFF);
}

/// A file's name in the form in which Qt stores it: length, hash, units.
std::string ResourceName(std::u16string_view name)
{
    std::uint32_t hash = 0;
    for (const char16_t unit : name) {
        hash = (hash << 4) + unit;
        hash ^= (hash & 0xF0000000U) >> 23;
        hash &= 0x0FFFFFFFU;
    }
    std::string bytes;
    AppendBigEndian(bytes, static_cast<std::uint32_t>(name.size()), 2);
    AppendBigEndian(bytes, hash, 4);
    for (const char16_t unit : name)
        AppendBigEndian(bytes, unit, 2);
    return bytes;
}

/// One file as an application would register it, in Qt's binary resource format, version 1.
class ApplicationResource
{
public:
    ApplicationResource(const QString& directory, std::u16string_view name,
                        const std::string& content)
        : m_directory(directory)
    {
        std::string tree;
        AppendBigEndian(tree, 0, 4); // The root directory: name, flags, children, first child.
        AppendBigEndian(tree, 2, 2);
        AppendBigEndian(tree, 1, 4);
        AppendBigEndian(tree, 1, 4);
        AppendBigEndian(tree, 0, 4); // The file: name, flags, country, language, data.
        AppendBigEndian(tree, 0, 2);
        AppendBigEndian(tree, 0, 2);
        AppendBigEndian(tree, 1, 2);
        AppendBigEndian(tree, 0, 4);
        std::string data;
        AppendBigEndian(data, static_cast<std::uint32_t>(content.size()), 4);
        data += content;

        constexpr std::uint32_t c_headerSize = 20;
        const auto treeSize = static_cast<std::uint32_t>(tree.size());
        const auto dataSize = static_cast<std::uint32_t>(data.size());
        m_bytes = "qres";
        AppendBigEndian(m_bytes, 1, 4);
        AppendBigEndian(m_bytes, c_headerSize, 4);
        AppendBigEndian(m_bytes, c_headerSize + treeSize, 4);
        AppendBigEndian(m_bytes, c_headerSize + treeSize + dataSize, 4);
        m_bytes += tree + data + ResourceName(name);
        EXPECT_TRUE(QResource::registerResource(Bytes(), m_directory));
    }
    ~ApplicationResource() { EXPECT_TRUE(QResource::unregisterResource(Bytes(), m_directory)); }
    ApplicationResource(const ApplicationResource&) = delete;
    ApplicationResource& operator=(const ApplicationResource&) = delete;

private:
    const uchar* Bytes() const { return reinterpret_cast<const uchar*>(m_bytes.data()); }

    QString m_directory;
    std::string m_bytes;
};

ResourceRegistrationCache& Cache()
{
    return ResourceRegistrationCache::GetInstance();
}

} // namespace

TEST(TResource, FindsThePlatformsOwnByTheirBareNames)
{
    const TResource resource(u"KQRC_FILEFORMAT_ZAP_XSD");
    EXPECT_EQ(resource.GetName(), u"KQRC_FILEFORMAT_ZAP_XSD");
    EXPECT_TRUE(resource.isValid());
    QFile file(":/kesplatform/KQRC_FILEFORMAT_ZAP_XSD");
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_EQ(resource.GetBytes(), file.readAll().toStdString());
    EXPECT_THAT(resource.GetBytes(), HasSubstr("<xs:element name=\"zap\">"));
}

TEST(TResource, FindsPaths)
{
    const TResource resource(u":/kesplatform/KQRC_FILEFORMAT_ZAP_XSD");
    EXPECT_TRUE(resource.isValid());
    EXPECT_EQ(resource.GetBytes(), TResource(u"KQRC_FILEFORMAT_ZAP_XSD").GetBytes());
}

TEST(TResource, FindsWhatApplicationsCompileIn)
{
    EXPECT_FALSE(TResource(u":/app/greeting").isValid());
    {
        const ApplicationResource application("/app", u"greeting", std::string("a\0b\xFF", 4));
        EXPECT_TRUE(TResource(u":/app/greeting").isValid());
        EXPECT_EQ(TResource(u":/app/greeting").GetBytes(), std::string("a\0b\xFF", 4));
    }
    EXPECT_FALSE(TResource(u":/app/greeting").isValid());
}

TEST(TResource, EmptyResourcesAreValid)
{
    const ApplicationResource application("/app", u"empty", "");
    EXPECT_TRUE(TResource(u":/app/empty").isValid());
    EXPECT_EQ(TResource(u":/app/empty").GetBytes(), "");
}

TEST(TResource, WhatIsMissingIsNotValid)
{
    for (const char16_t* name :
         {u"KQRC_FILEFORMAT_ZAP", u"", u":", u":/", u"kqrc_fileformat_zap_xsd", u":/kesplatform",
          u":/kesplatform/", u"/kesplatform/KQRC_FILEFORMAT_ZAP_XSD", u"/etc/passwd", u"."})
        EXPECT_FALSE(TResource(name).isValid()) << TString(name);
}

TEST(TResource, ReadingWhatIsMissingNamesIt)
{
    for (const TString& name : {TString(u"KQRC_NOTHING"), TString(), TString(u":/kesplatform")}) {
        try {
            static_cast<void>(TResource(name).GetBytes());
            ADD_FAILURE() << name;
        } catch (const CorvinaException& problem) {
            EXPECT_EQ(problem.GetMessagesFront(), u"Resource '" + name + u"' not found.");
            EXPECT_EQ(problem.GetErrorInfo(),
                      TError::ErrorInfo(
                          CorvinaError(0x7C1D52E9, u"CorvinaException_MissingResource_0x7C1D52E9"),
                          1, 2));
        }
    }
}

TEST(UTF8StringTResource, DecodesTheBytes)
{
    const ApplicationResource application("/app", u"text", "\xC3\xA4 \xF0\x9F\x98\x80\r\n");
    EXPECT_EQ(UTF8StringTResource(u":/app/text").GetString(), u"\u00E4 \U0001F600\r\n");
}

TEST(UTF8StringTResource, ReadsThePlatformsOwn)
{
    EXPECT_EQ(UTF8StringTResource(u"KQRC_FILEFORMAT_XML_XSD").GetString().toStdString(),
              TResource(u"KQRC_FILEFORMAT_XML_XSD").GetBytes());
}

TEST(UTF8StringTResource, MissingResourceIsNamed)
{
    try {
        const UTF8StringTResource resource(u"KQRC_NOTHING");
        ADD_FAILURE();
    } catch (const CorvinaException& problem) {
        EXPECT_TRUE(problem.GetMessagesFront().contains(u"'KQRC_NOTHING'"));
    }
}

TEST(ResourceRegistrationCache, IsOne)
{
    EXPECT_EQ(&Cache(), &Cache());
}

TEST(ResourceRegistrationCache, UnknownAliasIsItsOwnPath)
{
    EXPECT_EQ(Cache().GetResourcePath(u"KQRC_A", TString()), u"KQRC_A");
    EXPECT_EQ(Cache().GetResourcePath(u"KQRC_A", u"large"), u"KQRC_A");
    EXPECT_EQ(Cache().GetResourcePath(TString(), TString()), TString());
}

TEST(ResourceRegistrationCache, RegisteredNamesAreReplacedAndForgotten)
{
    Cache().Register(u"KQRC_B", TString(), u":/app/b");
    EXPECT_EQ(Cache().GetResourcePath(u"KQRC_B", TString()), u":/app/b");
    EXPECT_EQ(Cache().GetResourcePath(u"KQRC_A", TString()), u"KQRC_A");
    Cache().Register(u"KQRC_B", TString(), u":/app/b2");
    EXPECT_EQ(Cache().GetResourcePath(u"KQRC_B", TString()), u":/app/b2");
    Cache().Unregister(u"KQRC_B", TString());
    EXPECT_EQ(Cache().GetResourcePath(u"KQRC_B", TString()), u"KQRC_B");
    Cache().Unregister(u"KQRC_B", TString());
}

TEST(ResourceRegistrationCache, VariantsFallBackToTheAliasWithoutVariant)
{
    Cache().Register(u"KQRC_C", u"large", u":/app/c-large");
    EXPECT_EQ(Cache().GetResourcePath(u"KQRC_C", u"large"), u":/app/c-large");
    EXPECT_EQ(Cache().GetResourcePath(u"KQRC_C", u"small"), u"KQRC_C");
    EXPECT_EQ(Cache().GetResourcePath(u"KQRC_C", TString()), u"KQRC_C");
    Cache().Register(u"KQRC_C", TString(), u":/app/c");
    EXPECT_EQ(Cache().GetResourcePath(u"KQRC_C", u"large"), u":/app/c-large");
    EXPECT_EQ(Cache().GetResourcePath(u"KQRC_C", u"small"), u":/app/c");
    Cache().Unregister(u"KQRC_C", u"large");
    EXPECT_EQ(Cache().GetResourcePath(u"KQRC_C", u"large"), u":/app/c");
    Cache().Unregister(u"KQRC_C", TString());
}

TEST(ResourceRegistrationCache, RegisteredNameResolvesToAResource)
{
    const ApplicationResource application("/app", u"d", "content");
    Cache().Register(u"KQRC_D", TString(), u":/app/d");
    EXPECT_EQ(TResource(Cache().GetResourcePath(u"KQRC_D", TString())).GetBytes(), "content");
    Cache().Unregister(u"KQRC_D", TString());
}

TEST(ResourceRegistrationCache, MayBeUsedFromSeveralThreads)
{
    std::vector<std::thread> threads;
    std::vector<int> mistakes(4);
    for (std::size_t i = 0; i < mistakes.size(); ++i) {
        threads.emplace_back([i, &mistakes] {
            const TString variant = TString::number(static_cast<int>(i));
            for (int n = 0; n < 500; ++n) {
                Cache().Register(u"KQRC_E", variant, u":/app/" + variant);
                if (Cache().GetResourcePath(u"KQRC_E", variant) != u":/app/" + variant)
                    ++mistakes[i];
                Cache().Unregister(u"KQRC_E", variant);
                if (Cache().GetResourcePath(u"KQRC_E", variant) != TString(u"KQRC_E"))
                    ++mistakes[i];
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(mistakes, std::vector<int>(4, 0));
}
