#include "support/ErrorsOf.h"
#include "support/RecordingMetrics.h"
#include "support/TemporaryFile.h"

#include <kescorexml/DOMElement.h>
#include <kescorexml/DOMParser.h>
#include <kescorexml/FileInputSource.h>
#include <kescorexml/StringInputSource.h>

#include <kesplatform/LogicException.h>

#include <QFile>
#include <QTemporaryDir>
#include <kescorexml/DOM.h>
#include <kesplatform/CorvinaException.h>
#include <kesplatform/Resources.h>
#include <kesplatform/TFile.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

const char* const c_intSchema = "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'>"
                                "<xs:element name='a' type='xs:int'/></xs:schema>";

std::unique_ptr<InputSource> Schema(const char* text, const TString& id)
{
    return std::make_unique<StringInputSource>(text, id, false);
}

/// How often a parser was made or switched to validation.
int CountPreparations(const RecordingMetrics& metrics)
{
    int count = 0;
    for (const std::string& line : metrics.GetLines())
        count += line == "+XercesXMLParser_PrepareParserState" ? 1 : 0;
    return count;
}

/// Counts how often it is rewound, and reading it may fail.
class CountingSchema : public StringInputSource
{
public:
    CountingSchema() : StringInputSource(c_intSchema, u"s.xsd", false) {}

    void ResetToStart() override
    {
        ++resets;
        StringInputSource::ResetToStart();
        if (fails)
            throw TIO::Exception(TPath(u"s.xsd"), u"gone");
    }

    int resets = 0;
    bool fails = false;
};

} // namespace

TEST(DOMParserSchema, ValidatesAgainstACompiledInSchema)
{
    DOMParser parser;
    parser.AddXSDResourceId(QtKesResourceId::FileformatZapXsd);
    EXPECT_THAT(ErrorsOf(*parser.ParseXmlString("<zap version='10.2'/>", u"id")), IsEmpty());
    EXPECT_THAT(ErrorsOf(*parser.ParseXmlString("<zap/>", u"id")),
                ElementsAre(HasSubstr("'version'")));
    EXPECT_THAT(ErrorsOf(*parser.ParseXmlString("<zip/>", u"id")),
                ElementsAre("Error(1,7): no declaration found for element 'zip' (id: id)"));
}

TEST(DOMParserSchema, ThrowsForAnUnknownResource)
{
    DOMParser parser;
    EXPECT_THROW(parser.AddXSDResourceId(static_cast<QtKesResourceId>(1)), CorvinaException);
    EXPECT_FALSE(parser.ParseXmlString("<a/>", u"id")->HasErrors());
}

TEST(DOMParserSchema, UsesSeveralSchemasInTheOrderAdded)
{
    DOMParser parser;
    parser.AddXSDInputSource(Schema(c_intSchema, u"one.xsd"));
    parser.AddXSDInputSource(
        Schema("<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema' targetNamespace='urn:n'>"
               "<xs:element name='b' type='xs:boolean'/></xs:schema>",
               u"two.xsd"));
    EXPECT_THAT(ErrorsOf(*parser.ParseXmlString("<a>5</a>", u"id")), IsEmpty());
    EXPECT_THAT(ErrorsOf(*parser.ParseXmlString("<a>x</a>", u"id")), SizeIs(1));
    EXPECT_THAT(ErrorsOf(*parser.ParseXmlString("<b xmlns='urn:n'>true</b>", u"id")), IsEmpty());
    EXPECT_THAT(ErrorsOf(*parser.ParseXmlString("<b xmlns='urn:n'>x</b>", u"id")), SizeIs(1));
}

TEST(DOMParserSchema, PutsErrorsOfTheSchemaBeforeThoseOfTheDocument)
{
    DOMParser parser;
    parser.AddXSDInputSource(Schema("<xs:schema", u"broken.xsd"));
    parser.AddXSDInputSource(Schema(c_intSchema, u"good.xsd"));
    const auto dom = parser.ParseXmlString("<a>x</a>", u"id");
    const std::vector<std::string> errors = ErrorsOf(*dom);
    ASSERT_EQ(errors.size(), 3U);
    EXPECT_THAT(errors[0], HasSubstr("(id: broken.xsd)"));
    EXPECT_THAT(errors[1], HasSubstr("fatal error during schema scan"));
    EXPECT_THAT(errors[2], HasSubstr("(id: id)"));
    EXPECT_EQ(dom->GetDocumentRoot()->GetText(), u"x");
    std::list<TString> onRoot;
    dom->GetRoot()->GetErrors(onRoot);
    EXPECT_EQ(onRoot.size(), 3U);
}

TEST(DOMParserSchema, DropsWarnings)
{
    DOMParser parser;
    parser.AddXSDInputSource(Schema(c_intSchema, u"s.xsd"));
    const auto dom =
        parser.ParseXmlString("<!DOCTYPE a [<!ATTLIST z d CDATA 'x'>]><a>x</a>", u"id");
    EXPECT_THAT(ErrorsOf(*dom), testing::Not(IsEmpty()));
    EXPECT_FALSE(dom->HasWarnings());

    const auto valid =
        parser.ParseXmlString("<!DOCTYPE a [<!ATTLIST z d CDATA 'x'>]><a>5</a>", u"id");
    EXPECT_FALSE(valid->HasErrors());
    EXPECT_FALSE(valid->HasWarnings());
    EXPECT_EQ(valid->GetDocumentRoot()->GetText(), u"5");
}

TEST(DOMParserSchema, ReadsASchemaFileAgainForEachParse)
{
    const TemporaryFolder folder;
    DOMParser parser;
    parser.AddXSDInputSource(std::make_unique<FileInputSource>(folder.Write("s.xsd", c_intSchema)));
    for (int i = 0; i < 3; ++i) {
        EXPECT_THAT(ErrorsOf(*parser.ParseXmlString("<a>5</a>", u"id")), IsEmpty());
        EXPECT_THAT(ErrorsOf(*parser.ParseXmlString("<a>x</a>", u"id")), SizeIs(1));
    }
}

TEST(DOMParserSchema, RewindsASourceFromItsSecondUseOn)
{
    DOMParser parser;
    parser.ParseXmlString("<a/>", u"id");
    auto owned = std::make_unique<CountingSchema>();
    CountingSchema& schema = *owned;
    parser.AddXSDInputSource(std::move(owned));
    for (int uses = 1; uses <= 3; ++uses) {
        EXPECT_THAT(ErrorsOf(*parser.ParseXmlString("<a>x</a>", u"id")), SizeIs(1));
        EXPECT_EQ(schema.resets, uses - 1);
    }
}

TEST(DOMParserSchema, LetsWhatASchemasSourceThrowsOutOfAFileParse)
{
    const TemporaryFolder folder;
    const TString path = folder.Write("a.xml", "<a>1</a>");
    DOMParser parser;
    auto owned = std::make_unique<CountingSchema>();
    CountingSchema& schema = *owned;
    parser.AddXSDInputSource(std::move(owned));
    EXPECT_FALSE(parser.ParseXmlFile(path)->HasErrors());
    schema.fails = true;
    EXPECT_THROW(parser.ParseXmlFile(path), TIO::Exception);
    schema.fails = false;
    EXPECT_FALSE(parser.ParseXmlFile(path)->HasErrors());
    EXPECT_TRUE(parser.ParseXmlFile(folder.GetPath("none.xml"))->HasErrors());
}

TEST(DOMParserSchema, TheFirstDeclarationWins)
{
    const char* const booleanSchema = "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'>"
                                      "<xs:element name='a' type='xs:boolean'/></xs:schema>";
    const auto lastError = [](const char* first, const char* second, const char* document) {
        DOMParser parser;
        parser.AddXSDInputSource(Schema(first, u"1.xsd"));
        parser.AddXSDInputSource(Schema(second, u"2.xsd"));
        std::string last;
        for (const std::string& error : ErrorsOf(*parser.ParseXmlString(document, u"id"))) {
            if (error.find("(id: id)") != std::string::npos)
                last = error;
        }
        return last;
    };
    EXPECT_EQ(lastError(c_intSchema, booleanSchema, "<a>5</a>"), "");
    EXPECT_NE(lastError(c_intSchema, booleanSchema, "<a>true</a>"), "");
    EXPECT_EQ(lastError(booleanSchema, c_intSchema, "<a>true</a>"), "");
    EXPECT_NE(lastError(booleanSchema, c_intSchema, "<a>5</a>"), "");
}

TEST(DOMParserSchema, AssertsThatASchemaHasAnIdentifier)
{
    DOMParser parser;
    parser.AddXSDInputSource(Schema(c_intSchema, TString()));
    EXPECT_THROW(parser.ParseXmlString("<a/>", u"id"), LogicException);
}

TEST(DOMParserSchema, ReusesItsParserOnlyWhileItHasLoadedNoSchema)
{
    const RecordingMetrics metrics;
    DOMParser parser;
    EXPECT_EQ(CountPreparations(metrics), 0);
    parser.ParseXmlString("<a/>", u"id");
    parser.ParseXmlString("<a>", u"id");
    parser.ParseXmlString("<a/>", u"id");
    EXPECT_EQ(CountPreparations(metrics), 1);
    parser.AddXSDInputSource(Schema(c_intSchema, u"s.xsd"));
    // The parser at hand is switched to validation; from then on each parse makes one and
    // switches it.
    parser.ParseXmlString("<a>5</a>", u"id");
    EXPECT_EQ(CountPreparations(metrics), 2);
    parser.ParseXmlString("<a>5</a>", u"id");
    EXPECT_EQ(CountPreparations(metrics), 4);
    parser.ParseXmlString("<a>5</a>", u"id");
    EXPECT_EQ(CountPreparations(metrics), 6);
}

TEST(DOMParserSchema, KeepsNothingOfAnEarlierParseInAReusedParser)
{
    const DOMParser parser;
    EXPECT_TRUE(parser.ParseXmlString("<a>text", u"id")->HasErrors());
    const auto dom = parser.ParseXmlString("<b/>", u"id");
    EXPECT_FALSE(dom->HasErrors());
    EXPECT_FALSE(dom->GetRoot()->HasText());
    EXPECT_FALSE(dom->GetDocumentRoot()->HasText());
    EXPECT_FALSE(parser.ParseXmlString("<?xml version='1.1'?><a>&#1;</a>", u"id")->HasErrors());
    EXPECT_TRUE(parser.ParseXmlString("<a>&#1;</a>", u"id")->HasErrors());
}

TEST(DOMParserSchema, OpensNoExternalDocumentTypeAfterADocumentOfVersion11)
{
    QTemporaryDir directory;
    const QString dtd = directory.filePath("a.dtd");
    QFile file(dtd);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("<!ELEMENT a EMPTY>");
    file.close();

    DOMParser parser;
    parser.ParseXmlString("<?xml version='1.1'?><a/>", u"first");
    parser.AddXSDInputSource(std::make_unique<StringInputSource>(
        TString(u"<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'>"
                u"<xs:element name='a'/></xs:schema>"),
        u"a.xsd", false));
    const TString document = TString(u"<!DOCTYPE a SYSTEM '") + TString(dtd) + u"'><a/>";
    const std::unique_ptr<DOM> dom = parser.ParseXmlString(document, u"second");
    EXPECT_THAT(dom->GetConcatenatedErrors().toStdString(),
                ::testing::HasSubstr("unable to open DTD document"));
}

TEST(DOMParserSchema, ThatCouldNotBeSetUpDoesNotSwitchValidationOffInSilence)
{
    auto& names = ResourceRegistrationCache::GetInstance();
    const TString base = u"KQRC_FILEFORMAT_XML_XSD";
    DOMParser parser;
    parser.ParseXmlString("<a/>", u"before");
    parser.AddXSDInputSource(std::make_unique<StringInputSource>(
        TString(u"<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'>"
                u"<xs:element name='a' type='xs:int'/></xs:schema>"),
        u"a.xsd", false));
    names.Register(base, TString(), u"no such resource");
    EXPECT_THROW(parser.ParseXmlString("<a>1</a>", u"broken"), CorvinaException);
    names.Unregister(base, TString());
    EXPECT_TRUE(parser.ParseXmlString("<a>x</a>", u"after")->HasErrors());
    EXPECT_FALSE(parser.ParseXmlString("<a>1</a>", u"after")->HasErrors());
}

TEST(DOMParserSchema, LetsWhatTheStatisticsHandlerThrowsOutOfAFileParse)
{
    QTemporaryDir directory;
    const QString path = directory.filePath("a.xml");
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("<a/>");
    file.close();
    DOMParser parser;
    parser.SetStatisticsEventHandler(
        [](const DOMParserStatistics&) { throw TIO::Exception(TPath(u"elsewhere"), u"no room"); });
    EXPECT_THROW(parser.ParseXmlFile(path), TIO::Exception);
}
