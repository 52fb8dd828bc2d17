#include "support/TemporaryFile.h"
#include "support/Validation.h"

#include <kescorexml/StandaloneDOMParser.h>

#include <gtest/gtest.h>

#include <random>

namespace {

using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::MatchesRegex;
using testing::Not;
using testing::SizeIs;

std::string Invoice()
{
    return SchemaOf(R"(
        <xs:element name='invoice'><xs:complexType>
          <xs:sequence>
            <xs:element name='item' maxOccurs='unbounded'><xs:complexType><xs:simpleContent>
              <xs:extension base='xs:decimal'>
                <xs:attribute name='count' type='xs:positiveInteger' use='required'/>
              </xs:extension>
            </xs:simpleContent></xs:complexType></xs:element>
          </xs:sequence>
          <xs:attribute name='date' type='xs:date' use='required'/>
        </xs:complexType></xs:element>)");
}

const char* const c_badInvoice = "<invoice date='today'>\n"
                                 "  <item count='1'>x</item>\n"
                                 "  <item>3.50</item>\n"
                                 "  <gift/>\n"
                                 "  <item count='2'>4</item>\n"
                                 "</invoice>";

auto ErrorsOfTheBadInvoice()
{
    return ElementsAre(ViolationAt(1, 23, "'today'"), ViolationAt(2, 27, "invalid character"),
                       ViolationAt(3, 9, "missing required attribute 'count'"),
                       ViolationAt(4, 10, "no declaration found for element 'gift'"),
                       ViolationAt(6, 11, "element 'gift' is not allowed"));
}

std::vector<std::string> AllErrors(const DOM& dom)
{
    std::vector<std::string> result;
    for (const TString& error : dom.GetErrors())
        result.push_back(error.toStdString());
    return result;
}

} // namespace

TEST(ValidationReport, ListsEveryViolationOnTheRootElementInOrder)
{
    const auto dom = Validator(Invoice()).Parse(c_badInvoice);
    EXPECT_THAT(RootErrors(*dom), ErrorsOfTheBadInvoice());
    EXPECT_EQ(AllErrors(*dom), RootErrors(*dom)) << "no other element bears any";
    EXPECT_FALSE(dom->HasWarnings());
}

TEST(ValidationReport, LeavesTheWholeTree)
{
    const auto dom = Validator(Invoice()).Parse(c_badInvoice);
    const DOMElement* invoice = dom->GetDocumentRoot();
    ASSERT_NE(invoice, nullptr);
    EXPECT_EQ(invoice->GetAttribute(u"date"), u"today");
    std::vector<std::string> children;
    for (const auto& child : invoice->GetChildren())
        children.push_back(child->GetName().toStdString() + "=" + child->GetText().toStdString());
    EXPECT_THAT(children, ElementsAre("item=x", "item=3.50", "gift=", "item=4"));
}

TEST(ValidationReport, IsTheSameForEveryWayIn)
{
    DOMParser parser;
    parser.AddXSDInputSource(SchemaSource(Invoice(), "schema.xsd"));
    const std::string text = c_badInvoice;
    EXPECT_THAT(RootErrors(*parser.ParseXmlString(TString::fromStdString(text), u"doc.xml")),
                ErrorsOfTheBadInvoice());
    StringInputSource source(TString::fromStdString(text), u"doc.xml", false);
    EXPECT_THAT(RootErrors(*parser.ParseXmlInputSource(source, true)), ErrorsOfTheBadInvoice());
    EXPECT_THAT(RootErrors(*parser.ParseXmlBytes({text.begin(), text.end()})),
                AllOf(SizeIs(5), Contains(MatchesRegex("Error\\(1,23\\): .+ \\(id: .*\\)"))));

    const TemporaryFolder folder;
    const TString path = folder.Write("bad.xml", text);
    const std::vector<std::string> ofFile = RootErrors(*parser.ParseXmlFile(path));
    EXPECT_THAT(ofFile, SizeIs(5));
    EXPECT_THAT(ofFile, testing::Each(testing::EndsWith(" (id: " + path.toStdString() + ")")));

    StandaloneDOMParser standalone;
    standalone.AddXSDInputSource(SchemaSource(Invoice(), "schema.xsd"));
    std::vector<std::string> ofStandalone;
    for (const TString& error : standalone.ParseXmlString(text, u"doc.xml").errors)
        ofStandalone.push_back(error.toStdString());
    EXPECT_THAT(ofStandalone, ErrorsOfTheBadInvoice());
}

TEST(ValidationReport, GoesOnAfterThousandsOfViolations)
{
    constexpr int c_count = 5000;
    std::string document = "<invoice date='2024-01-31'>\n";
    for (int i = 0; i < c_count; ++i)
        document += "<item count='0'>1</item>\n";
    const std::vector<std::string> errors = Validator(Invoice()).Check(document + "</invoice>");
    ASSERT_THAT(errors, SizeIs(c_count));
    for (int i = 0; i < c_count; ++i)
        ASSERT_THAT(errors[static_cast<std::size_t>(i)], ViolationAt(i + 2, 17, "value '0'"));
}

TEST(ValidationReport, CountsLinesAndColumnsInCharacters)
{
    const Validator validator(SchemaOf("<xs:element name='a' type='xs:int'/>"));
    EXPECT_THAT(validator.Check("<a><!-- \xC3\xA9\xE4\xB8\xAD -->x</a>"),
                ElementsAre(ViolationAt(1, 20, "value 'x'")));
    EXPECT_THAT(validator.Check("<a>\r\n\r\nx</a>"), ElementsAre(ViolationAt(3, 6, "value")));
}

TEST(ValidationReport, ShowsViolationsBeforeAFatalError)
{
    const std::vector<std::string> errors =
        Validator(Invoice()).Check("<invoice date='today'><item count='1'>x</item></other>");
    ASSERT_THAT(errors, SizeIs(3));
    EXPECT_THAT(errors[0], ViolationAt(1, 23, "'today'"));
    EXPECT_THAT(errors[1], ViolationAt(1, 47, "invalid character"));
    EXPECT_THAT(errors[2], testing::StartsWith("Fatal Error(1,"));
}

TEST(ValidationReport, DocumentsDoNotDisturbEachOther)
{
    const Validator validator(Invoice());
    const std::string good = "<invoice date='2024-01-31'><item count='1'>1</item></invoice>";
    const char* const disturbing[] = {c_badInvoice,
                                      "<invoice date='2024-01-31'><item",
                                      "",
                                      "<?xml version='1.1'?><other/>",
                                      "<!DOCTYPE invoice [<!ELEMENT invoice EMPTY>]><invoice/>",
                                      "<!DOCTYPE a [<!ENTITY e SYSTEM 'f'>]><a>&e;</a>"};
    for (const char* document : disturbing) {
        const auto first = validator.Parse(document);
        const std::vector<std::string> errors = RootErrors(*first);
        EXPECT_THAT(errors, Not(IsEmpty())) << document;
        EXPECT_THAT(validator.Check(good), IsEmpty()) << document;
        EXPECT_THAT(validator.Check(c_badInvoice), ErrorsOfTheBadInvoice()) << document;
        EXPECT_EQ(RootErrors(*first), errors) << "changed by a later parse: " << document;
        EXPECT_EQ(validator.Check(document), errors);
    }
}

TEST(ValidationReport, SchemasAddedLaterCheckLaterDocuments)
{
    DOMParser parser;
    EXPECT_THAT(RootErrors(*parser.ParseXmlString("<a>x</a>", u"doc.xml")), IsEmpty());
    parser.AddXSDInputSource(
        SchemaSource(SchemaOf("<xs:element name='a' type='xs:int'/>"), "a.xsd"));
    EXPECT_THAT(RootErrors(*parser.ParseXmlString("<a>x</a>", u"doc.xml")), SizeIs(1));
    EXPECT_THAT(RootErrors(*parser.ParseXmlString("<b/>", u"doc.xml")), SizeIs(1));
    parser.AddXSDInputSource(SchemaSource("<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'"
                                          " targetNamespace='urn:b'><xs:element name='b'/>"
                                          "</xs:schema>",
                                          "b.xsd"));
    EXPECT_THAT(RootErrors(*parser.ParseXmlString("<b xmlns='urn:b'/>", u"doc.xml")), IsEmpty());
    EXPECT_THAT(RootErrors(*parser.ParseXmlString("<a>x</a>", u"doc.xml")), SizeIs(1));
}

TEST(ValidationReport, ABrokenSchemaGivesErrorsThatNameIt)
{
    const std::string a = "<xs:element name='a'/>";
    const std::string schemas[] = {
        "",
        " ",
        "text",
        "<xs:schema",
        "<other/>",
        SchemaOf(a + a),
        SchemaOf("<xs:element name='a' type='none'/>"),
        SchemaOf("<xs:element name='a' type='xs:none'/>"),
        SchemaOf("<xs:element ref='a'/>"),
        SchemaOf("<xs:element/>"),
        SchemaOf("<xs:unknown/>"),
        SchemaOf("<xs:element name='a' wrong='1'/>"),
        SchemaOf("<xs:element name='1'/>"),
        SchemaOf("<xs:element name='a' minOccurs='2'/>"),
        SchemaOf("<xs:simpleType name='s'/>"),
        SchemaOf("<xs:simpleType name='s'><xs:restriction base='s'/></xs:simpleType>"),
        SchemaOf("<xs:simpleType name='s'><xs:restriction base='xs:int'>"
                 "<xs:minInclusive value='2'/><xs:maxInclusive value='1'/>"
                 "</xs:restriction></xs:simpleType>"),
        SchemaOf("<xs:simpleType name='s'><xs:restriction base='xs:int'>"
                 "<xs:maxLength value='2'/></xs:restriction></xs:simpleType>"),
        SchemaOf("<xs:simpleType name='s'><xs:restriction base='xs:string'>"
                 "<xs:pattern value='['/></xs:restriction></xs:simpleType>"
                 "<xs:element name='a' type='s' default='x'/>"),
        SchemaOf("<xs:complexType name='t'><xs:complexContent><xs:extension base='t'/>"
                 "</xs:complexContent></xs:complexType>"),
        SchemaOf("<xs:group name='g'><xs:sequence><xs:group ref='g'/></xs:sequence></xs:group>"
                 "<xs:complexType name='t'><xs:group ref='g'/></xs:complexType>"),
        SchemaOf("<xs:element name='a'><xs:key name='k'><xs:selector xpath='['/>"
                 "<xs:field xpath='@i'/></xs:key></xs:element>"),
        SchemaOf("<xs:element name='a'><xs:keyref name='r' refer='none'><xs:selector xpath='b'/>"
                 "<xs:field xpath='@i'/></xs:keyref></xs:element>"),
        SchemaOf("<xs:import namespace='urn:x'/><xs:element name='a' type='x:t' "
                 "xmlns:x='urn:x'/>"),
    };
    for (const std::string& schema : schemas) {
        const Validator validator(schema);
        const auto dom = validator.Parse("<a/>");
        EXPECT_THAT(RootErrors(*dom), Contains(HasSubstr("schema.xsd"))) << schema;
        ASSERT_NE(dom->GetDocumentRoot(), nullptr) << schema;
        EXPECT_EQ(dom->GetDocumentRoot()->GetName(), u"a") << "the document is read all the same";
        EXPECT_EQ(validator.Check("<a/>"), RootErrors(*dom)) << "and so is the next";
    }
}

TEST(ValidationReport, ADamagedSchemaNeverBringsAParseDown)
{
    const std::string schema = Invoice();
    const std::string good = "<invoice date='2024-01-31'><item count='1'>1</item></invoice>";
    ASSERT_THAT(Validator(schema).Check(good), IsEmpty());
    for (std::size_t length = 0; length + 1 < schema.size(); length += 7) {
        const Validator validator(schema.substr(0, length));
        EXPECT_THAT(validator.Check(good), Contains(HasSubstr("Fatal Error"))) << length;
    }
    std::mt19937 random(1);
    for (int round = 0; round < 300; ++round) {
        std::string damaged = schema;
        for (int i = 0; i < 3; ++i)
            damaged[random() % damaged.size()] = schema[random() % schema.size()];
        const auto dom = Validator(damaged).Parse(good);
        ASSERT_NE(dom->GetDocumentRoot(), nullptr) << damaged;
        EXPECT_EQ(dom->GetDocumentRoot()->GetName(), u"invoice") << damaged;
    }
}
