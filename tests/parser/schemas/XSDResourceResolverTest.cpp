#include <kescorexml/XSDResources.h>

#include "support/ScriptedInputSource.h"

#include <kescorexml/DOMException.h>
#include <kescorexml/LookupResource.h>

#include <kesplatform/LogicException.h>
#include <kesplatform/Resources.h>
#include <kesplatform/TLog.h>

#include <gtest/gtest.h>

#include <dlfcn.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace {

/// While set, this thread finds no resource: a build from which the schemas were left out.
thread_local bool t_hideResources = false;

/// What this thread finds before the text of each resource.
thread_local const char16_t* t_textBefore = u"";

} // namespace

/// Stands before the platform's own in the order of symbol look-up.
bool TResource::isValid() const
{
    using Function = bool (*)(const TResource*);
    static const auto original =
        reinterpret_cast<Function>(dlsym(RTLD_NEXT, "_ZNK9TResource7isValidEv"));
    return !t_hideResources && original(this);
}

/// In place of the platform's own.
UTF8StringTResource::UTF8StringTResource(const TString& name)
    : m_text(t_textBefore + TString::fromStdString(TResource(name).GetBytes()))
{
}

namespace {

using namespace XSDResources;

struct Schema
{
    XmlFileType type;
    const char* baseName;
    bool hasVersions;
};

constexpr Schema c_schemas[] = {
    {XmlFileType::Zap, "KQRC_FILEFORMAT_ZAP_XSD", true},
    {XmlFileType::Zeb, "KQRC_FILEFORMAT_ZEB_XSD", true},
    {XmlFileType::Zil, "KQRC_FILEFORMAT_ZIL_XSD", true},
    {XmlFileType::Zok, "KQRC_FILEFORMAT_ZOK_XSD", true},
    {XmlFileType::Zun, "KQRC_FILEFORMAT_ZUN_XSD", false},
    {XmlFileType::Zyq, "KQRC_FILEFORMAT_ZYQ_XSD", false},
};

constexpr int c_typesWithoutSchema[] = {0, 6, 7, 9, -1, 100, 0x7fffffff, -0x7fffffff - 1};

VersionNumber Version(const char* text)
{
    return {TString(text), u'.', u'-', 0};
}

std::string Name(XmlFileType type, const char* version)
{
    return GetVersionedXsdResourceName(type, Version(version)).toStdString();
}

std::string ReadAll(InputSource& source)
{
    std::string all;
    for (std::string chunk; source.GetBytes(chunk, 4096);)
        all += chunk;
    return all;
}

/// Collects what is logged while it lives.
class Log
{
public:
    Log()
        : m_previous(TLog::SetSink([this](const TLog::Record& record) {
              m_severities.push_back(record.severity);
              m_messages.push_back(record.message.toStdString());
          }))
    {
    }
    ~Log() { TLog::SetSink(m_previous); }
    Log(const Log&) = delete;
    Log& operator=(const Log&) = delete;

    const std::vector<int>& Severities() const { return m_severities; }
    const std::vector<std::string>& Messages() const { return m_messages; }

private:
    std::vector<int> m_severities;
    std::vector<std::string> m_messages;
    TLog::Sink m_previous;
};

/// Keeps what is logged by the way out of the test's output.
class XSDResourceResolver : public testing::Test
{
protected:
    const Log& GetLog() const { return m_log; }

private:
    Log m_log;
};

TEST_F(XSDResourceResolver, NumbersTheFileTypes)
{
    EXPECT_EQ(static_cast<int>(XmlFileType::Zap), 1);
    EXPECT_EQ(static_cast<int>(XmlFileType::Zeb), 2);
    EXPECT_EQ(static_cast<int>(XmlFileType::Zil), 3);
    EXPECT_EQ(static_cast<int>(XmlFileType::Zok), 4);
    EXPECT_EQ(static_cast<int>(XmlFileType::Zun), 5);
    EXPECT_EQ(static_cast<int>(XmlFileType::Zor), 6);
    EXPECT_EQ(static_cast<int>(XmlFileType::Zum), 7);
    EXPECT_EQ(static_cast<int>(XmlFileType::Zyq), 8);
}

TEST_F(XSDResourceResolver, ExistForTheKnownVersionsOfVersionedTypes)
{
    for (const Schema& schema : c_schemas) {
        for (const char* version : {"18.1", "10.5", "10.4", "10.3", "10.2", "10.2.7", "10.3-beta"})
            EXPECT_TRUE(IsThereAnXSDResource(schema.type, Version(version))) << version;
        for (const char* version : {"10.1", "10.6", "18.0", "18.2", "19.0", "10", "", "1.10"})
            EXPECT_EQ(IsThereAnXSDResource(schema.type, Version(version)), !schema.hasVersions)
                << schema.baseName << ' ' << version;
    }
}

TEST_F(XSDResourceResolver, DoNotExistForOtherTypes)
{
    for (const int type : c_typesWithoutSchema) {
        for (const char* version : {"18.1", "10.2", "19.0"}) {
            const auto fileType = static_cast<XmlFileType>(type);
            EXPECT_FALSE(IsThereAnXSDResource(fileType, Version(version))) << type;
            EXPECT_EQ(Name(fileType, version), "") << type;
            EXPECT_EQ(GetVersionedXsdInputSource(fileType, Version(version)), nullptr) << type;
        }
    }
}

TEST_F(XSDResourceResolver, HaveTheirBaseNameInTheCurrentVersion)
{
    for (const Schema& schema : c_schemas) {
        EXPECT_EQ(Name(schema.type, "18.1"), schema.baseName);
        EXPECT_EQ(Name(schema.type, "18.1.0"), schema.baseName);
    }
    EXPECT_TRUE(GetLog().Messages().empty());
}

TEST_F(XSDResourceResolver, HaveTheVersionInTheirNameInOtherVersions)
{
    for (const Schema& schema : c_schemas) {
        for (const char* version : {"10_2", "10_3", "10_4", "10_5"}) {
            std::string dotted = version;
            dotted[2] = '.';
            EXPECT_EQ(Name(schema.type, dotted.c_str()),
                      schema.hasVersions ? std::string(schema.baseName) + '_' + version : "");
        }
    }
}

TEST_F(XSDResourceResolver, DoNotFallBackToAnotherVersion)
{
    for (const char* version : {"10.1", "10.6", "18.0", "18.2", "19.0", "18.1-beta", "18.1.1"}) {
        for (const Schema& schema : c_schemas) {
            EXPECT_EQ(Name(schema.type, version), "") << version;
            EXPECT_EQ(GetVersionedXsdInputSource(schema.type, Version(version)), nullptr);
        }
    }
}

TEST_F(XSDResourceResolver, LogEveryVersionThatIsNotTheCurrentOne)
{
    Name(XmlFileType::Zap, "10.3");
    Name(XmlFileType::Zun, "10.3.1-rc");
    EXPECT_EQ(
        GetLog().Messages(),
        (std::vector<std::string>{"XSD Resource version '10.3' != Current version '18.1'",
                                  "XSD Resource version '10.3.1-rc' != Current version '18.1'"}));
    EXPECT_EQ(GetLog().Severities(), (std::vector<int>{1, 1}));
}

TEST_F(XSDResourceResolver, LogNothingForTypesWithoutSchema)
{
    Name(XmlFileType::Zor, "10.3");
    Name(static_cast<XmlFileType>(9), "10.3");
    EXPECT_TRUE(GetLog().Messages().empty());
}

TEST_F(XSDResourceResolver, AreThoseThatTheAliasesName)
{
    EXPECT_EQ(Name(XmlFileType::Zok, "10.4"),
              LookupResource(QtKesResourceId::FileformatZokXsd_10_4).toStdString());
    EXPECT_EQ(Name(XmlFileType::Zyq, "18.1"),
              LookupResource(QtKesResourceId::FileformatZyqXsd).toStdString());
}

TEST_F(XSDResourceResolver, OpenAsSourcesOfTheirTextNamedAfterTheResource)
{
    for (const Schema& schema : c_schemas) {
        for (const char* version : {"18.1", "10.2", "10.3", "10.4", "10.5"}) {
            const std::string name = Name(schema.type, version);
            const auto source = GetVersionedXsdInputSource(schema.type, Version(version));
            ASSERT_EQ(source == nullptr, name.empty()) << schema.baseName << ' ' << version;
            if (source == nullptr)
                continue;
            EXPECT_EQ(source->Id().toStdString(), name);
            const std::string text = ReadAll(*source);
            EXPECT_EQ(text, TResource(TString(name.c_str())).GetBytes()) << name;
            EXPECT_FALSE(text.empty()) << name;
        }
    }
}

TEST_F(XSDResourceResolver, OpenAsSourcesThatSkipNoWhiteSpace)
{
    ScriptedInputSource document("<zap version='10.4'/>");
    t_textBefore = u" \n\t";
    const auto current = GetVersionedXsdInputSource(XmlFileType::Zap, Version("18.1"));
    const auto older = GetVersionedXsdInputSource(XmlFileType::Zap, Version("10.4"));
    const auto sniffed =
        GetVersionedXsdInputSourceForDocument(XmlFileType::Zap, document, TString());
    t_textBefore = u"";
    for (InputSource* const source : {current.get(), older.get(), sniffed.get()}) {
        ASSERT_NE(source, nullptr);
        EXPECT_TRUE(ReadAll(*source).starts_with(" \n\t<")) << source->Id();
    }
}

TEST_F(XSDResourceResolver, AreLookedForWithoutAWordToTheLog)
{
    for (const int type : {0, 1, 2, 3, 4, 5, 6, 7, 8, 9}) {
        for (const char* version : {"18.1", "10.5", "10.2", "10.1", "19.0", "18.1-beta", ""})
            static_cast<void>(
                IsThereAnXSDResource(static_cast<XmlFileType>(type), Version(version)));
    }
    EXPECT_TRUE(GetLog().Messages().empty());
}

TEST_F(XSDResourceResolver, AssertThatTheCurrentSchemaWasBuiltIn)
{
    const auto current = Version("18.1");
    ScriptedInputSource document("<zil version='18.1'/>");
    const std::function<void()> calls[] = {
        [&] { static_cast<void>(GetVersionedXsdResourceName(XmlFileType::Zil, current)); },
        [&] { static_cast<void>(GetVersionedXsdInputSource(XmlFileType::Zil, current)); },
        [&] {
            static_cast<void>(
                GetVersionedXsdInputSourceForDocument(XmlFileType::Zil, document, TString()));
        },
    };
    for (const std::function<void()>& call : calls) {
        t_hideResources = true;
        try {
            call();
            t_hideResources = false;
            ADD_FAILURE() << "nothing was thrown";
        } catch (const LogicException& e) {
            t_hideResources = false;
            EXPECT_EQ(e.GetFile(), u"modules/platform/kescorexml/main/parser/XSDResourceResolver");
            EXPECT_EQ(e.GetLine(), 69);
            EXPECT_EQ(e.GetText(), u"Resource 'KQRC_FILEFORMAT_ZIL_XSD' did not resolve.");
            EXPECT_EQ(e.GetErrorInfo().GetError(),
                      CorvinaError(0xABCA807E, u"LogicException_LogicAssert_0xABCA807E"));
        }
    }
    EXPECT_TRUE(GetLog().Messages().empty());
    EXPECT_TRUE(IsThereAnXSDResource(XmlFileType::Zil, current)) << "does not look";
}

TEST_F(XSDResourceResolver, AreNotAssertedForOtherVersions)
{
    t_hideResources = true;
    const std::string name = Name(XmlFileType::Zil, "10.2");
    t_hideResources = false;
    EXPECT_EQ(name, "");
}

TEST_F(XSDResourceResolver, FollowTheVersionOfADocument)
{
    const struct
    {
        const char* text;
        const char* attribute;
        const char* name;
    } cases[] = {
        {"<?xml version='1.0'?><zap version='10.4'/>", "", "KQRC_FILEFORMAT_ZAP_XSD_10_4"},
        {"<zap format='10.2' version='10.4'/>", "format", "KQRC_FILEFORMAT_ZAP_XSD_10_2"},
        {"<zap version='18.1'/>", "version", "KQRC_FILEFORMAT_ZAP_XSD"},
    };
    for (const auto& c : cases) {
        ScriptedInputSource document(c.text);
        const auto source =
            GetVersionedXsdInputSourceForDocument(XmlFileType::Zap, document, c.attribute);
        ASSERT_NE(source, nullptr) << c.text;
        EXPECT_EQ(source->Id().toStdString(), c.name);
        EXPECT_EQ(document.Position(), 0U);
    }
}

TEST_F(XSDResourceResolver, AreMissingForADocumentOfAnotherVersion)
{
    ScriptedInputSource document("<zap version='19.0'/>");
    EXPECT_EQ(GetVersionedXsdInputSourceForDocument(XmlFileType::Zap, document, TString()),
              nullptr);
    EXPECT_EQ(GetVersionedXsdInputSourceForDocument(XmlFileType::Zor, document, TString()),
              nullptr);
}

TEST_F(XSDResourceResolver, SniffTheDocumentBeforeTheyLookAtItsType)
{
    for (const int type : c_typesWithoutSchema) {
        ScriptedInputSource without("<zap/>");
        EXPECT_THROW(static_cast<void>(GetVersionedXsdInputSourceForDocument(
                         static_cast<XmlFileType>(type), without, TString())),
                     DOMException)
            << type;
        ScriptedInputSource with("<zap version='10.4'/>");
        EXPECT_EQ(
            GetVersionedXsdInputSourceForDocument(static_cast<XmlFileType>(type), with, TString()),
            nullptr)
            << type;
        EXPECT_EQ(with.Resets(), 1) << type;
        EXPECT_GT(with.Furthest(), 0U) << type;
    }
    EXPECT_TRUE(GetLog().Messages().empty());
}

TEST_F(XSDResourceResolver, NeedADocumentThatNamesItsVersion)
{
    for (const char* text : {"<zap format='10.4'/>", "<?xml version='1.0'?>", ""}) {
        ScriptedInputSource document{std::string(text)};
        try {
            static_cast<void>(
                GetVersionedXsdInputSourceForDocument(XmlFileType::Zap, document, TString()));
            ADD_FAILURE() << "nothing was thrown for " << text;
        } catch (const DOMException& e) {
            EXPECT_EQ(e.GetMessagesFront(), u"Version attribute missing.");
            const TError::ErrorInfo& info = e.GetErrorInfo();
            EXPECT_EQ(info.GetError().GetCode(), 0xCA8DC404U);
            EXPECT_EQ(info.GetError().GetIdentifier(),
                      u"DOMException_MissingVersionAttribute_0xCA8DC404");
            EXPECT_EQ(info.GetErrorSource(), 1);
            EXPECT_EQ(info.GetStatusCode(), 2);
        }
        EXPECT_EQ(document.Position(), 0U);
    }
}

} // namespace
