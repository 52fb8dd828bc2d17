#include "support/ParserSession.h"
#include "support/RecordingMetrics.h"
#include "support/ServingSink.h"
#include "support/TemporaryFile.h"

#include <kescorexml/LookupResource.h>

#include <kesplatform/TFile.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <xercesc/framework/XMLErrorCodes.hpp>
#include <xercesc/util/RuntimeException.hpp>
#include <xercesc/util/XMLExceptMsgs.hpp>

#if defined(__SANITIZE_ADDRESS__)
#include <sanitizer/lsan_interface.h>
#endif

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

const char16_t* const c_schema =
    u"<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'>"
    u"<xs:element name='a'><xs:complexType><xs:sequence>"
    u"<xs:element name='n' type='xs:int' minOccurs='0' maxOccurs='unbounded'/>"
    u"</xs:sequence><xs:attribute name='d' type='xs:string' default='def'/></xs:complexType>"
    u"</xs:element></xs:schema>";

const std::vector<std::string> c_baseSchemas = {"KQRC_FILEFORMAT_XML_XSD",
                                                "KQRC_FILEFORMAT_USER_XSD"};

std::string SchemaWith(const std::string& content)
{
    return "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'>" + content + "</xs:schema>";
}

ParseOutcome LoadServed(const std::shared_ptr<ServingSink>& sink, const std::string& schema)
{
    StringInputSource source(u"<a>5</a>", u"id", false);
    const auto parser = XercesXMLParser::Create(source, sink);
    parser->LoadXSDString(TString::fromStdString(schema), u"s.xsd");
    ParseOutcome outcome;
    outcome.errors = ToUtf8(parser->GetErrors());
    parser->Parse();
    for (const std::string& error : ToUtf8(parser->GetErrors()))
        outcome.errors.push_back(error);
    return outcome;
}

const std::string c_including =
    SchemaWith("<xs:include schemaLocation='sub/types.xsd'/><xs:element name='a' type='T'/>");
const std::string c_types =
    SchemaWith("<xs:simpleType name='T'><xs:restriction base='xs:int'/></xs:simpleType>");

} // namespace

TEST(AbstractXMLParser, LoadsTheBaseSchemasWithTheFirstSchema)
{
    ParserSession session("<a/>");
    EXPECT_THAT(session.parser->GetXSDNames(), IsEmpty());
    session.parser->LoadXSDString(c_schema, u"first.xsd");
    EXPECT_THAT(ToUtf8(session.parser->GetXSDNames()),
                ElementsAre(c_baseSchemas[0], c_baseSchemas[1], "first.xsd"));
    session.parser->LoadXSDString(
        u"<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema' targetNamespace='urn:n'/>",
        u"second.xsd");
    EXPECT_THAT(ToUtf8(session.parser->GetXSDNames()),
                ElementsAre(c_baseSchemas[0], c_baseSchemas[1], "first.xsd", "second.xsd"));
    EXPECT_FALSE(session.parser->HasErrors());
    EXPECT_FALSE(session.parser->HasWarnings());
}

TEST(AbstractXMLParser, BaseSchemasAreThoseThatTheAliasesName)
{
    EXPECT_EQ(LookupResource(QtKesResourceId::FileformatXmlXsd).toStdString(), c_baseSchemas[0]);
    EXPECT_EQ(LookupResource(QtKesResourceId::FileformatUserXsd).toStdString(), c_baseSchemas[1]);
}

TEST(AbstractXMLParser, ValidatesAgainstALoadedSchema)
{
    ParserSession good("<a><n>1</n></a>");
    good.parser->LoadXSDString(c_schema, u"s.xsd");
    EXPECT_EQ(good.Parse(),
              (ParseOutcome{{"<a d=def>", "<n>", "'1'", "</>", "</>"}, {}, {}, false}));

    ParserSession bad("<a>\n <n>x</n>\n <m/>\n</a>");
    bad.parser->LoadXSDString(c_schema, u"s.xsd");
    const ParseOutcome outcome = bad.Parse();
    EXPECT_THAT(outcome.errors,
                ElementsAre(HasSubstr("Error(2,10): value 'x' does not match"),
                            HasSubstr("Error(3,6): no declaration found for element 'm' (id: id)"),
                            HasSubstr("Error(4,5): element 'm' is not allowed")));
    EXPECT_FALSE(outcome.fatal);
    // White space where only elements may stand is not reported.
    EXPECT_THAT(outcome.events, ElementsAre("<a d=def>", "<n>", "'x'", "</>", "<m>", "</>", "</>"));
}

TEST(AbstractXMLParser, KnowsColonAttributesInValidatedDocuments)
{
    ParserSession session("<a :d='1'/>");
    session.Load(SchemaWith("<xs:element name='a'><xs:complexType>"
                            "<xs:anyAttribute processContents='skip'/></xs:complexType>"
                            "</xs:element>"));
    EXPECT_EQ(session.Parse(), (ParseOutcome{{"<a :d=1>", "</>"}, {}, {}, false}));
}

TEST(AbstractXMLParser, ReportsBothValidityAndWellFormednessErrors)
{
    ParserSession session("<a><n>x</n></b>");
    session.parser->LoadXSDString(c_schema, u"s.xsd");
    const ParseOutcome outcome = session.Parse();
    EXPECT_TRUE(outcome.fatal);
    ASSERT_GE(outcome.errors.size(), 2U);
    EXPECT_THAT(outcome.errors.front(), testing::StartsWith("Error(1,"));
    EXPECT_THAT(outcome.errors.back(), testing::StartsWith("Fatal Error(1,"));
}

TEST(AbstractXMLParser, RecordsWhatIsWrongWithASchema)
{
    ParserSession session("<a/>");
    EXPECT_THAT(session.Load(SchemaWith("<xs:element name='a' type='T'/>")).errors,
                ElementsAre("Error(1,87): type ':T' not found (id: s.xsd)"));
    ParserSession broken("<a/>");
    const ParseOutcome outcome = broken.Load("<xs:schema");
    EXPECT_THAT(outcome.errors,
                ElementsAre("Fatal Error(1,11): unexpected end of input (id: s.xsd)",
                            "Fatal Error: fatal error during schema scan (id: )"));
    EXPECT_TRUE(outcome.fatal);
    EXPECT_THAT(ToUtf8(broken.parser->GetXSDNames()),
                ElementsAre(c_baseSchemas[0], c_baseSchemas[1], "s.xsd"));
}

TEST(AbstractXMLParser, StaysInValidatingModeAcrossParsesAndReloads)
{
    ParserSession session("<a><n>x</n></a>");
    session.parser->LoadXSDString(c_schema, u"s.xsd");
    const ParseOutcome first = session.Parse();
    EXPECT_THAT(first.errors, SizeIs(1));
    session.sink = std::make_shared<RecordingSink>();
    session.parser->Reload(session.source, session.sink);
    EXPECT_EQ(session.Parse(), first);
    EXPECT_THAT(session.parser->GetXSDNames(), SizeIs(3));
    session.source.ResetToStart();

    // Also behind a document whose version makes the scanner start afresh.
    StringInputSource newer(u"<?xml version='1.1'?><a/>", u"id", false);
    session.parser->Reload(newer, std::make_shared<RecordingSink>());
    session.parser->Parse();
    EXPECT_FALSE(session.parser->HasErrors());
    session.sink = std::make_shared<RecordingSink>();
    session.parser->Reload(session.source, session.sink);
    EXPECT_EQ(session.Parse(), first);
}

TEST(AbstractXMLParser, KnowsTheBaseSchemas)
{
    const std::string schema =
        "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'>"
        "<xs:import namespace='http://www.w3.org/XML/1998/namespace'/>"
        "<xs:element name='a'><xs:complexType><xs:attribute ref='xml:space'/></xs:complexType>"
        "</xs:element></xs:schema>";
    ParserSession good("<a xml:space='preserve'/>");
    EXPECT_THAT(good.Load(schema).errors, IsEmpty());
    EXPECT_THAT(good.Parse().errors, IsEmpty());
    ParserSession bad("<a xml:space='other'/>");
    bad.Load(schema);
    EXPECT_THAT(bad.Parse().errors, testing::Not(IsEmpty()));
}

TEST(AbstractXMLParser, LoadsASchemaFromAFileUnderItsPath)
{
    const TemporaryFolder folder;
    const TString path =
        folder.Write("s.xsd", "<?xml version='1.0' encoding='ISO-8859-1'?><!-- \xE9 -->" +
                                  TString(c_schema).toStdString());
    ParserSession session("<a><n>x</n></a>");
    session.parser->LoadXSDFile(path);
    EXPECT_THAT(session.parser->GetXSDNames(), testing::Contains(path));
    EXPECT_FALSE(session.parser->HasErrors());
    EXPECT_THAT(session.Parse().errors, SizeIs(1));
    EXPECT_THROW(session.parser->LoadXSDFile(folder.GetPath("missing.xsd")), TIO::Exception);
}

TEST(AbstractXMLParser, LoadsASchemaFromAResourceUnderItsAlias)
{
    ParserSession session("<zap/>");
    session.parser->LoadXSDResource(u"KQRC_FILEFORMAT_ZAP_XSD");
    EXPECT_THAT(ToUtf8(session.parser->GetXSDNames()),
                ElementsAre(c_baseSchemas[0], c_baseSchemas[1], "KQRC_FILEFORMAT_ZAP_XSD"));
    EXPECT_THAT(session.Parse().errors, ElementsAre(HasSubstr("'version'")));
    EXPECT_THROW(session.parser->LoadXSDResource(u"no such resource"), CorvinaException);
}

TEST(AbstractXMLParser, ReportsTheScopesOfSchemaLoading)
{
    ParserSession session("<a/>");
    const RecordingMetrics metrics;
    session.parser->LoadXSDString(c_schema, u"s.xsd");
    EXPECT_THAT(metrics.GetLines(),
                ElementsAre("+XercesXMLParser_LoadXSDSource", "+XercesXMLParser_PrepareParserState",
                            "+XercesXMLParser_LoadXSDSource", "-XercesXMLParser_LoadXSDSource",
                            "+XercesXMLParser_LoadXSDSource", "-XercesXMLParser_LoadXSDSource",
                            "-XercesXMLParser_PrepareParserState",
                            "-XercesXMLParser_LoadXSDSource"));
}

TEST(AbstractXMLParser, AsksASinkThatServesSchemasForImportsAndIncludes)
{
    const TemporaryFolder folder;
    const TString path = folder.Write("types.xsd", c_types);
    const auto sink = std::make_shared<ServingSink>();
    sink->resolve = [&](const TString&) { return path; };
    EXPECT_THAT(LoadServed(sink, c_including).errors, IsEmpty());
    EXPECT_THAT(sink->requests, ElementsAre("s.xsd asks for sub/types.xsd"));
    EXPECT_THAT(sink->filtered, ElementsAre(path.toStdString() + ": " + c_types));

    const auto importer = std::make_shared<ServingSink>();
    importer->resolve = sink->resolve;
    importer->filter = [](const TString& text) {
        return TString(text).replace(u"<xs:simpleType", u"<xs:simpleType ");
    };
    LoadServed(importer, SchemaWith("<xs:import namespace='urn:n' schemaLocation='n.xsd'/>"));
    EXPECT_THAT(importer->requests, ElementsAre("s.xsd asks for n.xsd"));
}

TEST(AbstractXMLParser, WhatASinkThrowsInsteadOfASchemaPassesThrough)
{
    const TemporaryFolder folder;
    const TString path = folder.Write("types.xsd", c_types);
    const std::function<void()> throwers[] = {
        [] { throw 42; }, [] { throw std::runtime_error("x"); },
        // Xerces would take these for its own, and the schema for read.
        [] { throw xercesc::XMLErrs::ExpectedCommentOrCDATA; },
        [] { throw xercesc::RuntimeException("f", 1, xercesc::XMLExcepts::CPtr_PointerIsZero); }};
    for (const auto& thrower : throwers) {
        for (const bool isAboutText : {false, true}) {
            ParserSession session("<a>5</a>");
            const auto sink = std::make_shared<ServingSink>();
            sink->resolve = [&](const TString&) {
                if (!isAboutText)
                    thrower();
                return path;
            };
            sink->filter = [&](const TString& text) {
                if (isAboutText)
                    thrower();
                return text;
            };
            session.parser->Reload(session.source, sink);
            EXPECT_ANY_THROW(session.parser->LoadXSDString(c_including, u"s.xsd"));
            EXPECT_THAT(ToUtf8(session.parser->GetXSDNames()),
                        ElementsAre(c_baseSchemas[0], c_baseSchemas[1]));
        }
    }
}

TEST(AbstractXMLParser, AsksNoSinkForAnythingElse)
{
    const TemporaryFolder folder;
    const TString path = folder.Write("types.xsd", c_types);
    const auto sink = std::make_shared<ServingSink>();
    sink->resolve = [&](const TString&) { return path; };
    LoadServed(sink, SchemaWith("<xs:redefine schemaLocation='types.xsd'/>"));
    LoadServed(sink, "<!DOCTYPE xs:schema SYSTEM 'types.dtd'>" + SchemaWith(""));
    EXPECT_THAT(sink->requests, IsEmpty());
}

TEST(AbstractXMLParser, KnowsNoLocationUnlessOverridden)
{
    struct Plain : AbstractXMLParser
    {
        using AbstractXMLParser::AbstractXMLParser;
        void LoadXSDSource(InputSource&) override {}
        void ParseImpl() override {}
    };
    StringInputSource source(u"<a/>", u"id", false);
    Plain parser(source, nullptr);
    int line = -1;
    int column = -2;
    parser.GetCurrentLocation(line, column);
    parser.Parse();
    parser.GetCurrentLocation(line, column);
    EXPECT_EQ(line, -1);
    EXPECT_EQ(column, -2);
}

TEST(AbstractXMLParser, CompilesTheTextThatTheSinkReturns)
{
    const TemporaryFolder folder;
    const TString path = folder.Write("types.xsd", "no schema at all");
    const auto sink = std::make_shared<ServingSink>();
    sink->resolve = [&](const TString&) { return path; };
    sink->filter = [](const TString&) {
        return TString::fromStdString("<?xml version='1.0' encoding='UTF-16'?>" + c_types);
    };
    EXPECT_THAT(LoadServed(sink, c_including).errors, IsEmpty());
}

TEST(AbstractXMLParser, TakesOneByteForEachUnitOfAServedText)
{
    const TemporaryFolder folder;
    const TString path = folder.Write("types.xsd", c_types);
    const auto sink = std::make_shared<ServingSink>();
    sink->resolve = [&](const TString&) { return path; };
    // Two characters of two bytes cut two bytes off the end, which are blanks here.
    sink->filter = [](const TString& text) {
        return TString(u"<!--\u00E9\u00E9-->") + text + u"  ";
    };
    EXPECT_THAT(LoadServed(sink, c_including).errors, IsEmpty());
    sink->filter = [](const TString& text) { return TString(u"<!--\u00E9\u00E9-->") + text; };
    EXPECT_THAT(LoadServed(sink, c_including).errors, testing::Not(IsEmpty()));
}

TEST(AbstractXMLParser, FindsNothingWhereTheSinkNamesNoPath)
{
    const auto sink = std::make_shared<ServingSink>();
    EXPECT_THAT(LoadServed(sink, c_including).errors,
                ElementsAre(HasSubstr("type ':T' not found")));
    EXPECT_THAT(sink->requests, SizeIs(1));
    EXPECT_THAT(sink->filtered, IsEmpty());
}

TEST(AbstractXMLParser, LetsExceptionsOfSchemaLoadingPassAndGoesOnAfterwards)
{
    const TemporaryFolder folder;
    const auto sink = std::make_shared<ServingSink>();
    sink->resolve = [&](const TString&) { return folder.GetPath("missing.xsd"); };
    StringInputSource source(u"<a>5</a>", u"id", false);
    const auto parser = XercesXMLParser::Create(source, sink);
    const TString including = TString::fromStdString(c_including);
    EXPECT_THROW(parser->LoadXSDString(including, u"s.xsd"), TIO::Exception);
    sink->resolve = [&](const TString&) -> TString { throw std::runtime_error("no"); };
    EXPECT_THROW(parser->LoadXSDString(including, u"s.xsd"), std::runtime_error);

    const TString path = folder.Write("types.xsd", c_types);
    sink->resolve = [&](const TString&) { return path; };
    parser->LoadXSDString(including, u"s.xsd");
    EXPECT_FALSE(parser->HasErrors());
    parser->Parse();
    EXPECT_FALSE(parser->HasErrors());
    EXPECT_THAT(sink->events, ElementsAre("<a>", "'5'", "</>"));
}

TEST(AbstractXMLParser, AsksTheSinkOfTheLastReload)
{
    const TemporaryFolder folder;
    const TString path = folder.Write("types.xsd", c_types);
    StringInputSource source(u"<a>5</a>", u"id", false);
    const auto parser = XercesXMLParser::Create(source, std::make_shared<ServingSink>());
    const auto sink = std::make_shared<ServingSink>();
    sink->resolve = [&](const TString&) { return path; };
    parser->Reload(source, sink);
    parser->LoadXSDString(TString::fromStdString(c_including), u"s.xsd");
    EXPECT_FALSE(parser->HasErrors());
    EXPECT_THAT(sink->requests, SizeIs(1));
}

TEST(AbstractXMLParser, ReadsNothingFromTheDiskThatASchemaRefersTo)
{
    const TemporaryFolder folder;
    const std::string types = folder.Write("types.xsd", c_types).toStdString();
    ParserSession including("<a>5</a>");
    EXPECT_THAT(including
                    .Load(SchemaWith("<xs:include schemaLocation='" + types +
                                     "'/><xs:element name='a' type='T'/>"))
                    .errors,
                ElementsAre(HasSubstr("type ':T' not found")));

    const std::string entity = folder.Write("type.txt", "xs:int").toStdString();
    ParserSession entities("<a>x</a>");
    EXPECT_THAT(entities
                    .Load("<!DOCTYPE xs:schema [<!ENTITY e SYSTEM '" + entity + "'>]>" +
                          SchemaWith("<xs:annotation><xs:documentation>&e;</xs:documentation>"
                                     "</xs:annotation><xs:element name='a' type='xs:int'/>"))
                    .errors,
                IsEmpty());
}

TEST(AbstractXMLParser, TakesTheDocumentTypeOfASchemaForEmpty)
{
    const TemporaryFolder folder;
    const std::string dtd =
        folder.Write("a.dtd", "<!ATTLIST xs:element type CDATA 'xs:int'>").toStdString();
#if defined(__SANITIZE_ADDRESS__)
    // Some builds of Xerces pay for an old fault with a small leak for each document type.
    const __lsan::ScopedDisabler allowed;
#endif
    // With the file's default type the document would be invalid.
    ParserSession session("<a>x</a>");
    EXPECT_THAT(session
                    .Load("<!DOCTYPE xs:schema SYSTEM '" + dtd + "'>" +
                          SchemaWith("<xs:element name='a'/>"))
                    .errors,
                IsEmpty());
    EXPECT_THAT(session.Parse().errors, IsEmpty());
}

TEST(AbstractXMLParser, RefusesAnExternalDocumentTypeWhenItValidates)
{
    const TemporaryFolder folder;
    const std::string dtd = folder.Write("a.dtd", "<!ELEMENT a ANY>").toStdString();
    ParserSession session("<!DOCTYPE a SYSTEM '" + dtd + "'><a/>");
    session.parser->LoadXSDString(c_schema, u"s.xsd");
    const ParseOutcome outcome = session.Parse();
    EXPECT_THAT(outcome.errors, ElementsAre(HasSubstr("unable to open DTD document")));
    EXPECT_TRUE(outcome.fatal);
    EXPECT_THAT(outcome.events, IsEmpty());
}

TEST(AbstractXMLParser, FollowsNoSchemaLocationOfADocument)
{
    const TemporaryFolder folder;
    const std::string types =
        folder.Write("b.xsd", SchemaWith("<xs:element name='b' type='xs:int'/>")).toStdString();
    ParserSession session("<b xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance' "
                          "xsi:noNamespaceSchemaLocation='" +
                          types + "'>5</b>");
    session.parser->LoadXSDString(c_schema, u"s.xsd");
    EXPECT_THAT(session.Parse().errors,
                ElementsAre(HasSubstr("no declaration found for element 'b'")));
}
