#include <kesplatform/Resources.h>

#include <gmock/gmock.h>

#include <QString>

#include <xercesc/framework/MemBufInputSource.hpp>
#include <xercesc/framework/XMLGrammarPoolImpl.hpp>
#include <xercesc/sax/SAXParseException.hpp>
#include <xercesc/sax2/DefaultHandler.hpp>
#include <xercesc/sax2/SAX2XMLReader.hpp>
#include <xercesc/sax2/XMLReaderFactory.hpp>
#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/util/XMLUni.hpp>

#include <memory>
#include <string>
#include <vector>

namespace {

using testing::IsEmpty;
using testing::Not;

/// A reader that validates as the suite does, and everything it complained about.
class SchemaReader : public xercesc::DefaultHandler
{
public:
    SchemaReader() : m_reader(xercesc::XMLReaderFactory::createXMLReader())
    {
        using xercesc::XMLUni;
        for (const XMLCh* feature :
             {XMLUni::fgSAX2CoreNameSpaces, XMLUni::fgSAX2CoreNameSpacePrefixes,
              XMLUni::fgSAX2CoreValidation, XMLUni::fgXercesIdentityConstraintChecking,
              XMLUni::fgXercesSchemaFullChecking, XMLUni::fgXercesHandleMultipleImports,
              XMLUni::fgXercesSchema, XMLUni::fgXercesUseCachedGrammarInParse})
            m_reader->setFeature(feature, true);
        m_reader->setErrorHandler(this);
    }

    const xercesc::Grammar* Load(const TString& name)
    {
        const std::string schema = TResource(name).GetBytes();
        return m_reader->loadGrammar(Source(schema), xercesc::Grammar::SchemaGrammarType, true);
    }

    void Parse(const std::string& document) { m_reader->parse(Source(document)); }

    const std::vector<std::string>& GetMessages() const { return m_messages; }

    void warning(const xercesc::SAXParseException& problem) override { Record(problem); }
    void error(const xercesc::SAXParseException& problem) override { Record(problem); }
    void fatalError(const xercesc::SAXParseException& problem) override { Record(problem); }

private:
    static xercesc::MemBufInputSource Source(const std::string& text)
    {
        return {reinterpret_cast<const XMLByte*>(text.data()), text.size(), "memory"};
    }

    void Record(const xercesc::SAXParseException& problem)
    {
        m_messages.push_back(TString(problem.getMessage()).toStdString());
    }

    std::unique_ptr<xercesc::SAX2XMLReader> m_reader;
    std::vector<std::string> m_messages;
};

/// A schema that belongs to a file type, and a version that documents of it may have.
struct FileSchema
{
    std::string resource;
    std::string root;
    std::string version;
};

std::vector<FileSchema> FileSchemas()
{
    std::vector<FileSchema> schemas;
    for (const char* type : {"ZAP", "ZEB", "ZIL", "ZOK", "ZUN", "ZYQ"}) {
        const std::string base = std::string("KQRC_FILEFORMAT_") + type + "_XSD";
        const std::string root = TString(QString(type).toLower()).toStdString();
        schemas.push_back({base, root, "18.1"});
        if (root == "zun" || root == "zyq")
            continue;
        for (const char* minor : {"2", "3", "4", "5"})
            schemas.push_back({base + "_10_" + minor, root, std::string("10.") + minor});
    }
    return schemas;
}

class XercesEnvironment : public testing::Test
{
protected:
    static void SetUpTestSuite() { xercesc::XMLPlatformUtils::Initialize(); }
    static void TearDownTestSuite() { xercesc::XMLPlatformUtils::Terminate(); }
};

class BaseSchemas : public XercesEnvironment
{
protected:
    BaseSchemas()
    {
        EXPECT_NE(m_reader.Load(u"KQRC_FILEFORMAT_XML_XSD"), nullptr);
        EXPECT_NE(m_reader.Load(u"KQRC_FILEFORMAT_USER_XSD"), nullptr);
        EXPECT_THAT(m_reader.GetMessages(), IsEmpty());
    }

    SchemaReader m_reader;
};

class FileSchemaTest : public BaseSchemas, public testing::WithParamInterface<FileSchema>
{
protected:
    FileSchemaTest()
    {
        EXPECT_NE(m_reader.Load(GetParam().resource.c_str()), nullptr);
        EXPECT_THAT(m_reader.GetMessages(), IsEmpty());
    }

    /// A document with the schema's root, whose start tag and content are completed by the test.
    void ParseRoot(const std::string& attributes, const std::string& content = {})
    {
        const std::string& root = GetParam().root;
        m_reader.Parse("<" + root + " " + attributes + ">" + content + "</" + root + ">");
    }

    void ParseVersion(const std::string& version) { ParseRoot("version='" + version + "'"); }
};

} // namespace

TEST(Schemas, AreTwentyTwoForFilesAndTwoForAllOfThem)
{
    EXPECT_EQ(FileSchemas().size(), 22U);
    for (const FileSchema& schema : FileSchemas())
        EXPECT_TRUE(TResource(schema.resource.c_str()).isValid()) << schema.resource;
    EXPECT_TRUE(TResource(u"KQRC_FILEFORMAT_XML_XSD").isValid());
    EXPECT_TRUE(TResource(u"KQRC_FILEFORMAT_USER_XSD").isValid());
    EXPECT_FALSE(TResource(u"KQRC_FILEFORMAT_ZUN_XSD_10_3").isValid());
    EXPECT_FALSE(TResource(u"KQRC_FILEFORMAT_ZYQ_XSD_10_3").isValid());
}

TEST_F(BaseSchemas, CheckTheXmlAttributes)
{
    m_reader.Load(u"KQRC_FILEFORMAT_ZAP_XSD");
    m_reader.Parse("<zap version='18.1' xml:lang='de-AT' xml:space='preserve' xml:id='a'"
                   " xml:base='http://example.org/'><b xml:lang=''/></zap>");
    EXPECT_THAT(m_reader.GetMessages(), IsEmpty());
    m_reader.Parse("<zap version='18.1' xml:space='perhaps'/>");
    EXPECT_THAT(m_reader.GetMessages(), Not(IsEmpty()));
}

TEST_F(BaseSchemas, CheckUserData)
{
    m_reader.Load(u"KQRC_FILEFORMAT_ZAP_XSD");
    const std::string begin =
        "<zap version='18.1' xmlns:u='http://kescorexml.invalid/xml/user' u:note='n'>";
    m_reader.Parse(begin + "<u:data name='n' more='m'>text<x/></u:data></zap>");
    EXPECT_THAT(m_reader.GetMessages(), IsEmpty());
    m_reader.Parse(begin + "<u:data/></zap>");
    EXPECT_THAT(m_reader.GetMessages(), Not(IsEmpty()));
}

TEST_F(BaseSchemas, LoadTogetherWithAllFileTypes)
{
    const std::vector<std::string> types = {"zap", "zeb", "zil", "zok", "zun", "zyq"};
    for (const std::string& type : types) {
        const QString alias = "KQRC_FILEFORMAT_" + QString::fromStdString(type).toUpper() + "_XSD";
        EXPECT_NE(m_reader.Load(alias), nullptr);
    }
    EXPECT_THAT(m_reader.GetMessages(), IsEmpty());
}

TEST_P(FileSchemaTest, AcceptsOpenContent)
{
    ParseRoot("version='" + GetParam().version + "' other='x' xmlns:f='http://f' f:g='y'",
              "text<any thing='z'><f:deep/>more</any><any/>");
    EXPECT_THAT(m_reader.GetMessages(), IsEmpty());
}

TEST_P(FileSchemaTest, AcceptsPatchLevelsAndSuffixes)
{
    ParseVersion(GetParam().version + ".7");
    ParseVersion(GetParam().version + "-beta");
    EXPECT_THAT(m_reader.GetMessages(), IsEmpty());
}

TEST_P(FileSchemaTest, RequiresAVersion)
{
    ParseRoot("");
    EXPECT_THAT(m_reader.GetMessages(), Not(IsEmpty()));
}

TEST_P(FileSchemaTest, RejectsWhatIsNoVersion)
{
    ParseVersion("new");
    EXPECT_THAT(m_reader.GetMessages(), Not(IsEmpty()));
}

TEST_P(FileSchemaTest, RejectsAnotherRoot)
{
    m_reader.Parse("<other version='" + GetParam().version + "'/>");
    EXPECT_THAT(m_reader.GetMessages(), Not(IsEmpty()));
}

TEST_P(FileSchemaTest, AcceptsOtherVersionsOnlyWhenItHasNone)
{
    const bool isVersioned = GetParam().version != "18.1";
    ParseVersion("10.6");
    EXPECT_EQ(m_reader.GetMessages().empty(), !isVersioned);
    const std::size_t before = m_reader.GetMessages().size();
    ParseVersion(GetParam().version + "1");
    EXPECT_EQ(m_reader.GetMessages().size() == before, !isVersioned);
}

INSTANTIATE_TEST_SUITE_P(Schemas, FileSchemaTest, testing::ValuesIn(FileSchemas()),
                         [](const auto& tested) { return tested.param.resource; });
