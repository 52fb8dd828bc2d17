#include "support/ParseOutcome.h"

#include <kescorexml/BinaryInputSource.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

TEST(XercesXMLHandler, ReportsTextBeforeTheTagThatEndsIt)
{
    const ParseOutcome outcome = ParseUtf8("<a>x<b/>y</a>");
    EXPECT_THAT(outcome.events, ElementsAre("<a>", "'x'", "<b>", "</>", "'y'", "</>"));
    EXPECT_THAT(outcome.errors, IsEmpty());
}

TEST(XercesXMLHandler, GathersARunOfTextWhateverItIsMadeOf)
{
    const ParseOutcome outcome =
        ParseUtf8("<a>one&amp;&#50;\r\n<![CDATA[<three>]]><!-- no text --><?no text?> four</a>");
    EXPECT_THAT(outcome.events, ElementsAre("<a>", "'one&2\n<three> four'", "</>"));
}

TEST(XercesXMLHandler, GathersARunLongerThanAnyBuffer)
{
    std::string text;
    for (int i = 0; i < 300000; ++i)
        text += static_cast<char>('a' + i % 26);
    const ParseOutcome outcome = ParseUtf8("<a>" + text + "<b/>" + text + "</a>");
    EXPECT_THAT(outcome.events,
                ElementsAre("<a>", "'" + text + "'", "<b>", "</>", "'" + text + "'", "</>"));
}

TEST(XercesXMLHandler, ReportsWhitespaceAsItStands)
{
    EXPECT_THAT(ParseUtf8("\n<a> <b>\t</b>\n</a>\n").events,
                ElementsAre("<a>", "' '", "<b>", "'\t'", "</>", "'\n'", "</>"));
}

TEST(XercesXMLHandler, DropsCommentsInstructionsAndDoctype)
{
    EXPECT_THAT(
        ParseUtf8("<?xml version='1.0'?><!--c--><!DOCTYPE a><?p i?><a><!--c--></a><?p i?>").events,
        ElementsAre("<a>", "</>"));
}

TEST(XercesXMLHandler, NamesElementsAndAttributesAsWritten)
{
    EXPECT_THAT(ParseUtf8("<p:a xmlns:p='u' p:x='1' x='2' xml:lang='en'/>").events,
                ElementsAre("<p:a p:x=1 x=2 xml:lang=en xmlns:p=u>", "</>"));
    // Without namespaces a prefix needs no declaration.
    EXPECT_THAT(ParseUtf8("<p:a q:x='1'/>").events, ElementsAre("<p:a q:x=1>", "</>"));
}

TEST(XercesXMLHandler, RestoresAttributeNamesThatBeginWithAColon)
{
    EXPECT_THAT(ParseUtf8("<r :a=\"1\"/>").events, ElementsAre("<r :a=1>", "</>"));
}

TEST(XercesXMLHandler, KeepsTheFirstOfTwoAttributesThatRestoreToOneName)
{
    // Names in UTF-16 bytes are not encoded on the way in, but restored all the same.
    std::vector<unsigned char> bytes = {0xFE, 0xFF};
    for (const char c : std::string("<r IllegalColon:a='1' :a='2' :b='3' IllegalColon:b='4'/>")) {
        bytes.push_back(0);
        bytes.push_back(static_cast<unsigned char>(c));
    }
    BinaryInputSource source(bytes, u"id", false);
    const ParseOutcome outcome = ParseSource(source);
    EXPECT_THAT(outcome.errors, IsEmpty());
    EXPECT_THAT(outcome.events, ElementsAre("<r :a=1 :b=3>", "</>"));
}

TEST(XercesXMLHandler, DropsAnAttributeThatRestoresToNothing)
{
    EXPECT_THAT(ParseUtf8("<r xmlns:IllegalColon='u' b='1'/>").events,
                ElementsAre("<r b=1>", "</>"));
}

TEST(XercesXMLHandler, RestoresNoElementNames)
{
    EXPECT_THAT(ParseUtf8("<IllegalColon:a/>").events, ElementsAre("<IllegalColon:a>", "</>"));
}

TEST(XercesXMLHandler, NormalizesAttributeValues)
{
    EXPECT_THAT(ParseUtf8("<a b=' x\ty\n&#10;&lt;' c=''/>").events,
                ElementsAre("<a b= x y \n< c=>", "</>"));
}

TEST(XercesXMLHandler, TellsManyNamesApart)
{
    // More names than a table of names would hold, long ones and look-alikes among them.
    std::string document = "<root>";
    std::vector<std::string> expected = {"<root>"};
    for (int round = 0; round < 2; ++round) {
        for (int i = 0; i < 5000; ++i) {
            const std::string number = std::to_string(i);
            const std::string name =
                i % 10 == 0 ? std::string(200 + static_cast<std::size_t>(i) % 100, 'n') + number
                            : "n" + number;
            document += "<" + name + " a" + number + "='" + name + "'/>";
            expected.push_back("<" + name + " a" + number + "=" + name + ">");
            expected.push_back("</>");
        }
    }
    document += "</root>";
    expected.push_back("</>");
    EXPECT_EQ(ParseUtf8(document).events, expected);
}

TEST(XercesXMLHandler, AsksAfterEachTagWhetherTheSinkIsDone)
{
    StringInputSource source(u"<a>x<b/>y</a>", u"id", false);
    const auto sink = std::make_shared<RecordingSink>();
    XercesXMLParser::Create(source, sink)->Parse();
    EXPECT_EQ(sink->isDoneCalls, 4);
}

TEST(XercesXMLHandler, FormatsAnErrorWithKindPositionMessageAndIdentifier)
{
    Utf8InputSource source("<a>\n<b>\n<c></b></a>", u"the document", false);
    const ParseOutcome outcome = ParseSource(source);
    EXPECT_THAT(outcome.errors,
                ElementsAre("Fatal Error(3,6): expected end of tag 'c' (id: the document)"));
    EXPECT_TRUE(outcome.fatal);
    EXPECT_THAT(outcome.events, ElementsAre("<a>", "'\n'", "<b>", "'\n'", "<c>"));
}

TEST(XercesXMLHandler, TellsWhatItReportsApart)
{
    Utf8InputSource source("<a>\n<b>\n<c></b></a>", u"the document", false);
    const auto sink = std::make_shared<RecordingSink>();
    const auto parser = XercesXMLParser::Create(source, sink);
    parser->Parse();
    ASSERT_THAT(parser->GetErrorDiagnostics(), SizeIs(1));
    const XMLDiagnostic& error = parser->GetErrorDiagnostics()[0];
    EXPECT_EQ(error.GetKind(), XMLDiagnostic::Kind::FatalError);
    EXPECT_EQ(error.GetLine(), 3);
    EXPECT_EQ(error.GetColumn(), 6);
    EXPECT_EQ(error.GetId(), u"the document");
    EXPECT_EQ(error.GetText(), u"expected end of tag 'c'");
    EXPECT_EQ(error.GetMessage(), parser->GetErrors()[0]);
}

TEST(XercesXMLHandler, KnowsWhereItRefusesAnEntity)
{
    Utf8InputSource source("<!DOCTYPE a [\n<!ENTITY e SYSTEM 'f'>]><a/>", u"id", false);
    const auto sink = std::make_shared<RecordingSink>();
    const auto parser = XercesXMLParser::Create(source, sink);
    parser->Parse();
    const std::vector<XMLDiagnostic>& errors = parser->GetErrorDiagnostics();
    ASSERT_THAT(errors, SizeIs(2));
    EXPECT_EQ(errors[0].GetKind(), XMLDiagnostic::Kind::Error);
    EXPECT_EQ(errors[1].GetKind(), XMLDiagnostic::Kind::FatalError);
    for (const XMLDiagnostic& error : errors) {
        EXPECT_EQ(error.GetLine(), 2);
        EXPECT_EQ(error.GetColumn(), 23);
        EXPECT_EQ(error.GetId(), u"id");
        EXPECT_EQ(error.GetText(), u"XML External <!ENTITY> definitions are not allowed. 'e'");
        EXPECT_EQ(error.GetMessage(),
                  u"XML External <!ENTITY> definitions are not allowed.(2,23) 'e'");
    }
}

TEST(XercesXMLHandler, KeepsATextThatRepeatsOnce)
{
    StringInputSource source(u"<r><n>x</n><n>x</n><n>y</n></r>", u"id", false);
    const auto sink = std::make_shared<RecordingSink>();
    const auto parser = XercesXMLParser::Create(source, sink);
    parser->LoadXSDString(
        u"<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'><xs:element name='r'>"
        u"<xs:complexType><xs:sequence><xs:element name='n' type='xs:int' maxOccurs='9'/>"
        u"</xs:sequence></xs:complexType></xs:element></xs:schema>",
        u"s.xsd");
    parser->Parse();
    const std::vector<XMLDiagnostic>& errors = parser->GetErrorDiagnostics();
    ASSERT_THAT(errors, SizeIs(3));
    EXPECT_EQ(errors[0].GetText(), errors[1].GetText());
    EXPECT_NE(errors[0].GetColumn(), errors[1].GetColumn());
    EXPECT_EQ(errors[0].GetText().utf16(), errors[1].GetText().utf16());
    EXPECT_NE(errors[0].GetText(), errors[2].GetText());
    for (const XMLDiagnostic& error : errors) {
        EXPECT_EQ(error.GetKind(), XMLDiagnostic::Kind::Error);
        EXPECT_EQ(error.GetId().utf16(), errors[0].GetId().utf16());
    }
}

TEST(XercesXMLHandler, RefusesExternalEntities)
{
    // A name that begins with "%" is that of a parameter entity.
    const std::pair<const char*, const char*> documents[] = {
        {"<!DOCTYPE a [<!ENTITY e SYSTEM \"f\">]><a/>", "(1,36) 'e'"},
        {"<!DOCTYPE a [\n<!ENTITY e PUBLIC 'p' 'f'>]><a>&e;</a>", "(2,27) 'e'"},
        {"<!DOCTYPE a [<!ENTITY % e SYSTEM 'f'> %e;]><a/>", "(1,38) '%e'"},
    };
    for (const auto& [document, ending] : documents) {
        const ParseOutcome outcome = ParseUtf8(document);
        const std::string message =
            std::string("XML External <!ENTITY> definitions are not allowed.") + ending;
        EXPECT_THAT(outcome.errors, ElementsAre(message, message));
        EXPECT_TRUE(outcome.fatal);
        EXPECT_THAT(outcome.events, IsEmpty());
    }
}

TEST(XercesXMLHandler, AllowsDeclarationsOfInternalEntities)
{
    EXPECT_THAT(ParseUtf8("<!DOCTYPE a [<!ENTITY e 'f'>]><a/>").errors, IsEmpty());
}

TEST(XercesXMLHandler, TellsWhereItStands)
{
    StringInputSource source(u"<a>\n  <b c='1'\n/>text</a>", u"id", false);
    const auto sink = std::make_shared<RecordingSink>();
    const auto parser = XercesXMLParser::Create(source, sink);
    int line = -1;
    int column = -2;
    parser->GetCurrentLocation(line, column);
    EXPECT_EQ(line, -1);
    EXPECT_EQ(column, -2);
    std::vector<std::string> places;
    sink->onEvent = [&](const std::string& event) {
        parser->GetCurrentLocation(line, column);
        places.push_back(event + "@" + std::to_string(line) + ":" + std::to_string(column));
    };
    parser->Parse();
    EXPECT_THAT(places, ElementsAre("<a>@1:4", "'\n  '@3:3", "<b c=1>@3:3", "</>@3:3",
                                    "'text'@3:11", "</>@3:11"));
}

TEST(XercesXMLHandler, StandsAtTheLastEventOutsideOfEvents)
{
    const auto ask = [](XercesXMLParser& parser) {
        int line = -1;
        int column = -2;
        parser.GetCurrentLocation(line, column);
        return std::to_string(line) + ":" + std::to_string(column);
    };
    StringInputSource good(u"<a>\n<b/>\n</a>\n\n", u"id", false);
    StringInputSource bad(u"<a>\n<b/>\n</c>\n\n", u"id", false);
    const auto sink = std::make_shared<RecordingSink>();
    const auto parser = XercesXMLParser::Create(good, sink);
    parser->Reload(good, sink);
    EXPECT_EQ(ask(*parser), "-1:-2");
    parser->Parse();
    EXPECT_EQ(ask(*parser), "3:5");
    parser->Reload(bad, sink);
    EXPECT_EQ(ask(*parser), "-1:-2");
    parser->Parse();
    EXPECT_EQ(ask(*parser), "2:5");
}
