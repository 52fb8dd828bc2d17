#include <kescorexml/DOM.h>
#include <kescorexml/DOMElement.h>
#include <kescorexml/DOMException.h>
#include <kescorexml/DOMParser.h>
#include <kescorexml/DOMPath.h>
#include <kescorexml/InputSourceUtils.h>
#include <kescorexml/SAXInterface.h>
#include <kescorexml/StandaloneDOMParser.h>
#include <kescorexml/StringInputSource.h>
#include <kescorexml/XercesXMLParser.h>
#include <kesplatform/LogicException.h>
#include <kesplatform/TFile.h>

#include "Folder.h"

#include <gmock/gmock.h>

#include <list>
#include <memory>
#include <string>

using testing::ElementsAre;

namespace {

constexpr const char* c_schema = R"(<xs:schema xmlns:xs="http://www.w3.org/2001/XMLSchema">
  <xs:element name="point"><xs:complexType>
    <xs:attribute name="x" type="xs:integer" use="required"/>
  </xs:complexType></xs:element>
</xs:schema>)";

} // namespace

TEST(ErrorSnippets, WhatIsWrongWithADocumentIsRecorded)
{
    const auto document = DOMParser().ParseXmlString("<list>\n  <item>\n</list>", "list.xml");
    EXPECT_TRUE(document->HasErrors());
    EXPECT_EQ(document->GetConcatenatedErrors(),
              u"Fatal Error(3,3): expected end of tag 'item' (id: list.xml)");
    EXPECT_EQ(document->GetDocumentRoot()->GetName(), u"list") << "what was read until then";
}

TEST(ErrorSnippets, ErrorsTakenApart)
{
    const auto document = DOMParser().ParseXmlString("<a>\n<b>tea</a>", "a.xml");
    const auto errors = document->GetErrorDiagnostics();
    ASSERT_EQ(errors.size(), 1U);
    EXPECT_EQ(errors[0].GetKind(), XMLDiagnostic::Kind::FatalError);
    EXPECT_EQ(errors[0].GetLine(), 2);
    EXPECT_EQ(errors[0].GetColumn(), 9);
    EXPECT_EQ(errors[0].GetId(), u"a.xml");
    EXPECT_EQ(errors[0].GetText(), u"expected end of tag 'b'");
}

TEST(ErrorSnippets, AnEmptyTextIsAnError)
{
    const auto document = DOMParser().ParseXmlString("", "nothing");
    EXPECT_TRUE(document->HasErrors());
    EXPECT_EQ(document->GetDocumentRoot(), nullptr);
}

TEST(ErrorSnippets, ErrorsOfTheStandaloneParser)
{
    const auto result = StandaloneDOMParser().ParseXmlString("<a></b>", u"a.xml");
    ASSERT_FALSE(result.errors.empty());
    EXPECT_EQ(result.errors.size(), result.diagnostics.size());
    EXPECT_EQ(result.diagnostics[0].GetLine(), 1);
}

TEST(ErrorSnippets, AnErrorOfOnesOwn)
{
    const auto document = DOMParser().ParseXmlString("<list><item/></list>", "list.xml");
    for (const DOMElement& item : DOMPath::Walk(*document->GetDocumentRoot(), u"//item"))
        if (!item.HasText())
            item.Error(u"an item has no text");
    EXPECT_THAT(document->GetErrors(), ElementsAre(TString(u"an item has no text")));
    EXPECT_TRUE(document->HasUnreportedErrors());
    EXPECT_FALSE(document->HasCancelErrors());
}

TEST(ErrorSnippets, AWarningOfOnesOwn)
{
    const auto document = DOMParser().ParseXmlString("<list/>", "list.xml");
    document->GetDocumentRoot()->Warning(u"the list is empty");
    EXPECT_FALSE(document->HasErrors());
    EXPECT_EQ(document->GetConcatenatedWarnings(), u"the list is empty");
}

TEST(ErrorSnippets, AMessageInFrontOfTheOthers)
{
    const auto document = DOMParser().ParseXmlString("<a/>", "a");
    const DOMElement& a = *document->GetDocumentRoot();
    a.Error(u"second");
    a.PrefixError(u"first");
    a.Warning(u"4");
    a.PrefixWarning(u"3");
    EXPECT_EQ(document->GetConcatenatedErrors(), u"first\nsecond");
    EXPECT_EQ(document->GetConcatenatedWarnings(), u"3\n4");
}

TEST(ErrorSnippets, AnErrorWithARecordForPrograms)
{
    const auto document = DOMParser().ParseXmlString("<a/>", "a");
    const TError::ErrorInfo info(CorvinaError(7, u"MyError_7"), 1, 2);
    document->GetDocumentRoot()->Error(u"wrong", info);
    EXPECT_EQ(document->GetMetadataForErrors().front().GetError().GetCode(), 7U);
}

TEST(ErrorSnippets, ErrorsOfOneElementAndWhatIsBelow)
{
    const auto document = DOMParser().ParseXmlString("<r><a><b/></a><c/></r>", "r");
    document->GetElement(u"b")->Error(u"wrong");
    EXPECT_TRUE(document->GetElement(u"a")->HasErrors());
    EXPECT_FALSE(document->GetElement(u"c")->HasErrors());
    std::list<TString> errors;
    document->GetElement(u"a")->GetErrors(errors);
    EXPECT_EQ(errors.size(), 1U);
    document->GetElement(u"a")->ClearErrors();
    EXPECT_FALSE(document->HasErrors());
}

TEST(ErrorSnippets, ErrorsGoWithTheirElements)
{
    const auto from = DOMParser().ParseXmlString("<r><a/></r>", "from");
    const auto to = DOMParser().ParseXmlString("<r/>", "to");
    from->GetElement(u"a")->Error(u"wrong");
    to->GetDocumentRoot()->AppendChild(from->GetDocumentRoot()->RemoveChild(u"a"));
    EXPECT_FALSE(from->HasErrors());
    EXPECT_TRUE(to->HasErrors());
    to->GetDocumentRoot()->RemoveChild(u"a");
    EXPECT_FALSE(to->HasErrors()) << "gone with the element";
}

TEST(ErrorSnippets, ADetachedElementHasNowhereToKeepErrors)
{
    const DOMElement alone(u"a");
    EXPECT_THROW(alone.Error(u"wrong"), LogicException);
    EXPECT_THROW(alone.Warning(u"wrong"), LogicException);
}

TEST(ErrorSnippets, ExceptionsAreThoseOfTheStandardLibraryToo)
{
    const DOMElement alone(u"a");
    try {
        alone.RequireAttribute(u"id");
        FAIL();
    } catch (const std::exception& exception) {
        EXPECT_STREQ(exception.what(), "id");
    }
}

TEST(ErrorSnippets, AFileThatCannotBeOpenedNamesItself)
{
    try {
        const auto source = InputSourceUtils::InputSourceFromFileName("/no/such.xml", false);
        FAIL();
    } catch (const TIO::Exception& exception) {
        EXPECT_EQ(exception.GetPath().GetString(), u"/no/such.xml");
        EXPECT_STREQ(exception.what(), "/no/such.xml: No such file or directory");
    }
}

TEST(ErrorSnippets, ADocumentIsValidated)
{
    DOMParser parser;
    parser.AddXSDInputSource(std::make_unique<StringInputSource>(c_schema, u"point.xsd", false));
    EXPECT_FALSE(parser.ParseXmlString("<point x='1'/>", "good")->HasErrors());
    EXPECT_TRUE(parser.ParseXmlString("<point/>", "bad")->HasErrors());
    const auto worse = parser.ParseXmlString("<point x='left'/>", "worse");
    EXPECT_EQ(worse->GetErrorDiagnostics().at(0).GetLine(), 1);
}

TEST(ErrorSnippets, ASchemaFromAFile)
{
    const Folder folder;
    const std::string path = folder.Write("point.xsd", c_schema);
    DOMParser parser;
    parser.AddXSDInputSource(InputSourceUtils::InputSourceFromFileName(path.c_str(), false));
    EXPECT_TRUE(parser.ParseXmlString("<point x='left'/>", "p")->HasErrors());
}

TEST(ErrorSnippets, ASchemaThatIncludesAnotherReadsNoFile)
{
    DOMParser parser;
    parser.AddXSDInputSource(std::make_unique<StringInputSource>(
        u"<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'>"
        u"<xs:include schemaLocation='types.xsd'/><xs:element name='a' type='T'/></xs:schema>",
        u"a.xsd", false));
    EXPECT_TRUE(parser.ParseXmlString("<a>1</a>", "a")->HasErrors());
}

TEST(ErrorSnippets, ASchemaThatIncludesAnotherIsServedByASink)
{
    class ServingSink : public SAXInterfaceExtension
    {
    public:
        void StartElement(TString&&, std::unordered_map<TString, TString>&&) override {}
        void EndElement() override {}
        void TextContent(const TString&) override {}
        TString ResolveSchemaLocation(const TString&, const TString& systemId) override
        {
            return folder + u"/" + systemId;
        }
        TString FilterSchemaText(const TString& text, const TString&) override { return text; }
        TString folder;
    };
    const Folder folder;
    folder.Write("types.xsd", "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'>"
                              "<xs:simpleType name='T'><xs:restriction base='xs:integer'/>"
                              "</xs:simpleType></xs:schema>");
    const auto sink = std::make_shared<ServingSink>();
    sink->folder = folder.Path("").c_str();
    for (const char16_t* xml : {u"<a>1</a>", u"<a>one</a>"}) {
        StringInputSource source(xml, u"a.xml", false);
        const auto parser = XercesXMLParser::Create(source, sink);
        parser->LoadXSDString(
            u"<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'>"
            u"<xs:include schemaLocation='types.xsd'/><xs:element name='a' type='T'/></xs:schema>",
            u"a.xsd");
        EXPECT_THAT(parser->GetErrors(), testing::IsEmpty());
        parser->Parse();
        EXPECT_EQ(parser->HasErrors(), TString(xml).contains(u"one"));
    }
}
