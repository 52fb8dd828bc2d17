// What the settings of the reader do, each by itself, and that they outlast a document of version
// 1.1, behind which the scanner is replaced.

#include "support/ParseOutcome.h"
#include "support/ServingSink.h"
#include "support/TemporaryFile.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <ostream>
#include <string>
#include <vector>

namespace {

using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::MatchesRegex;

std::string SchemaWith(const std::string& content)
{
    return "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'>" + content + "</xs:schema>";
}

/// What a parser has done before it is put to the test.
struct History
{
    const char* name;
    /// Loaded before the documents are read.
    bool hasSchema;
    std::vector<const char*> documents;

    friend void PrintTo(const History& history, std::ostream* out) { *out << history.name; }
};

const char* const c_newer = "<?xml version='1.1'?><first xmlns='urn:first'/>";
const char* const c_plain = "<first xmlns='urn:first'/>";

class XercesXMLParserFeatures : public testing::TestWithParam<History>
{
protected:
    XercesXMLParserFeatures()
        : m_source(std::make_unique<StringInputSource>(TString(c_plain), u"first", false)),
          m_sink(std::make_shared<ServingSink>()),
          m_parser(XercesXMLParser::Create(*m_source, m_sink))
    {
        if (GetParam().hasSchema)
            m_parser->LoadXSDString(u"<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema' "
                                    u"targetNamespace='urn:first'><xs:element name='first'/>"
                                    u"</xs:schema>",
                                    u"first.xsd");
        for (const char* document : GetParam().documents) {
            Parse(document);
            EXPECT_FALSE(m_parser->HasErrors());
        }
        m_sink->events.clear();
    }

    std::vector<std::string> LoadSchema(const std::string& schema)
    {
        m_parser->ClearErrorsAndWarnings();
        m_parser->LoadXSDString(TString::fromStdString(schema), u"s.xsd");
        return ToUtf8(m_parser->GetErrors());
    }

    ParseOutcome Parse(const std::string& document)
    {
        auto source = std::make_unique<Utf8InputSource>(document, u"id", false);
        m_parser->Reload(*source, m_sink);
        m_source = std::move(source);
        m_sink->events.clear();
        m_parser->Parse();
        return {m_sink->events, ToUtf8(m_parser->GetErrors()), ToUtf8(m_parser->GetWarnings()),
                m_parser->HasFatallyErrored()};
    }

    std::unique_ptr<InputSource> m_source;
    std::shared_ptr<ServingSink> m_sink;
    std::unique_ptr<XercesXMLParser> m_parser;
};

} // namespace

TEST_P(XercesXMLParserFeatures, CheckIdentityConstraints)
{
    EXPECT_THAT(LoadSchema(SchemaWith(
                    "<xs:element name='a'><xs:complexType><xs:sequence>"
                    "<xs:element name='n' type='xs:int' maxOccurs='unbounded'/>"
                    "</xs:sequence></xs:complexType>"
                    "<xs:unique name='u'><xs:selector xpath='n'/><xs:field xpath='.'/></xs:unique>"
                    "</xs:element>")),
                IsEmpty());
    EXPECT_THAT(Parse("<a><n>1</n><n>2</n></a>").errors, IsEmpty());
    EXPECT_THAT(Parse("<a><n>1</n><n>1</n></a>").errors, ElementsAre(HasSubstr("identity")));
}

TEST_P(XercesXMLParserFeatures, CheckSchemasInFull)
{
    // Which of the two particles a "b" stands for cannot be told without looking ahead.
    EXPECT_THAT(LoadSchema(SchemaWith("<xs:element name='a'><xs:complexType><xs:sequence>"
                                      "<xs:element name='b' minOccurs='0' type='xs:int'/>"
                                      "<xs:element name='b' type='xs:int'/>"
                                      "</xs:sequence></xs:complexType></xs:element>")),
                ElementsAre(HasSubstr("unique particle attribution")));
}

TEST_P(XercesXMLParserFeatures, TakeEveryImportOfANamespace)
{
    const TemporaryFolder folder;
    for (const char* const name : {"one", "two"})
        folder.Write(name, "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema' "
                           "targetNamespace='urn:n'><xs:element name='" +
                               std::string(name) + "' type='xs:int'/></xs:schema>");
    m_sink->resolve = [&](const TString& systemId) {
        return folder.GetPath(systemId.toStdString().c_str());
    };
    EXPECT_THAT(LoadSchema("<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema' "
                           "xmlns:n='urn:n'>"
                           "<xs:import namespace='urn:n' schemaLocation='one'/>"
                           "<xs:import namespace='urn:n' schemaLocation='two'/>"
                           "<xs:element name='a'><xs:complexType><xs:sequence>"
                           "<xs:element ref='n:one'/><xs:element ref='n:two'/>"
                           "</xs:sequence></xs:complexType></xs:element></xs:schema>"),
                IsEmpty());
    EXPECT_THAT(m_sink->requests, ElementsAre("s.xsd asks for one", "s.xsd asks for two"));
    EXPECT_THAT(Parse("<a xmlns='' xmlns:n='urn:n'><n:one>1</n:one><n:two>2</n:two></a>").errors,
                IsEmpty());
}

TEST_P(XercesXMLParserFeatures, AskTheSinkForIncludes)
{
    const TemporaryFolder folder;
    const TString types = folder.Write("types.xsd", SchemaWith("<xs:simpleType name='T'>"
                                                               "<xs:restriction base='xs:int'/>"
                                                               "</xs:simpleType>"));
    m_sink->resolve = [&](const TString&) { return types; };
    EXPECT_THAT(LoadSchema(SchemaWith("<xs:include schemaLocation='sub/types.xsd'/>"
                                      "<xs:element name='a' type='T'/>")),
                IsEmpty());
    EXPECT_THAT(m_sink->requests, ElementsAre("s.xsd asks for sub/types.xsd"));
    EXPECT_THAT(Parse("<a>5</a>").errors, IsEmpty());
    EXPECT_THAT(Parse("<a>x</a>").errors, ElementsAre(HasSubstr("Error(1,9): value 'x'")));
}

TEST_P(XercesXMLParserFeatures, KeepLoadedSchemas)
{
    LoadSchema(SchemaWith("<xs:element name='a' type='xs:int'/>"));
    Parse(c_newer);
    EXPECT_THAT(Parse("<a>5</a>").errors, IsEmpty());
    EXPECT_THAT(Parse("<a>x</a>").errors, ElementsAre(HasSubstr("Error(1,9): value 'x'")));
    EXPECT_THAT(Parse("<b/>").errors, ElementsAre(HasSubstr("no declaration found")));
    EXPECT_FALSE(m_parser->HasFatallyErrored());
}

// Names like this are read in documents only.
TEST_P(XercesXMLParserFeatures, ReadNoAttributeNameThatBeginsWithAColonInASchema)
{
    EXPECT_THAT(LoadSchema(SchemaWith("<xs:element name='a' :x='1' type='xs:int'/>")),
                ElementsAre(HasSubstr("attribute name expected (id: s.xsd)"),
                            HasSubstr("fatal error during schema scan")));
}

TEST_P(XercesXMLParserFeatures, ReportNamespaceDeclarationsAsAttributes)
{
    EXPECT_THAT(Parse("<a xmlns:p='u' xmlns='v'/>").events.front(), "<a xmlns=v xmlns:p=u>");
    LoadSchema(SchemaWith("<xs:element name='a' type='xs:int'/>"));
    EXPECT_THAT(Parse("<a xmlns:p='u'>5</a>"),
                (ParseOutcome{{"<a xmlns:p=u>", "'5'", "</>"}, {}, {}, false}));
}

TEST_P(XercesXMLParserFeatures, RecordWarningsBesideErrorsOnly)
{
    LoadSchema(SchemaWith("<xs:element name='a' type='xs:int'/>"));
    const std::string type = "<!DOCTYPE a [<!ATTLIST z d CDATA 'x'>\n]>";
    const ParseOutcome outcome = Parse(type + "<a>x</a>");
    EXPECT_THAT(outcome.errors, testing::Not(IsEmpty()));
    EXPECT_THAT(outcome.warnings,
                ElementsAre(AllOf(MatchesRegex("Warning\\([0-9]+,[0-9]+\\): .* \\(id: id\\)"),
                                  HasSubstr("'z'"))));
    EXPECT_THAT(m_parser->GetMetadataForWarnings(), ElementsAre(TError::ErrorInfo::NoError()));
    EXPECT_FALSE(outcome.fatal);
    EXPECT_EQ(Parse(type + "<a>5</a>"), (ParseOutcome{{"<a>", "'5'", "</>"}, {}, {}, false}));
}

TEST_P(XercesXMLParserFeatures, RefuseEntitiesAndExternalDocumentTypes)
{
    EXPECT_THAT(Parse("<!DOCTYPE first [<!ENTITY e 'x'>]><first>&e;</first>").errors,
                Contains(HasSubstr("more than '0' entity expansions")));
    const TemporaryFolder folder;
    const std::string type = folder.Write("a.dtd", "<!ELEMENT first ANY>").toStdString();
    const ParseOutcome outcome = Parse("<!DOCTYPE first SYSTEM '" + type + "'><first/>");
    if (GetParam().hasSchema)
        EXPECT_THAT(outcome.errors, ElementsAre(HasSubstr("unable to open DTD document")));
    else
        EXPECT_EQ(outcome, (ParseOutcome{{"<first>", "</>"}, {}, {}, false}));
    EXPECT_THAT(Parse("<first><b></c></first>").errors.back(), HasSubstr("Fatal Error"));
}

INSTANTIATE_TEST_SUITE_P(
    , XercesXMLParserFeatures,
    testing::Values(History{"OfANewParser", false, {}},
                    History{"RightAfterVersion11", false, {c_newer}},
                    History{"SomeTimeAfterVersion11", false, {c_newer, c_plain}},
                    History{"OfAValidatingParser", true, {c_plain}},
                    History{"RightAfterAValidVersion11", true, {c_newer}},
                    History{"SomeTimeAfterAValidVersion11", true, {c_newer, c_plain}}),
    [](const auto& test) { return std::string(test.param.name); });
