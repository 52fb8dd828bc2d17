#include "support/TemporaryFile.h"
#include "support/Validation.h"

#include <kescorexml/DOMBuilder.h>
#include <kescorexml/XercesXMLParser.h>

#include <gtest/gtest.h>

#include <map>
#include <stdexcept>

namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::UnorderedElementsAre;

/// Builds a document and finds the schemas that a schema names in a folder, by their last names.
class BuilderThatServesSchemas : public SAXInterfaceExtension
{
public:
    BuilderThatServesSchemas(DOM& document, const TemporaryFolder& folder)
        : m_builder(document, false), m_folder(folder)
    {
    }

    void StartElement(TString&& name, std::unordered_map<TString, TString>&& attributes) override
    {
        m_builder.StartElement(std::move(name), std::move(attributes));
    }
    void EndElement() override { m_builder.EndElement(); }
    void TextContent(const TString& text) override { m_builder.TextContent(text); }

    TString ResolveSchemaLocation(const TString&, const TString& systemId) override
    {
        const std::string name = systemId.toStdString();
        requests.push_back(name);
        return m_folder.GetPath(name.substr(name.rfind('/') + 1).c_str());
    }
    TString FilterSchemaText(const TString& text, const TString& path) override
    {
        served.push_back(path.toStdString());
        return TString(text).replace(u"@limit@", u"100");
    }

    std::vector<std::string> requests;
    std::vector<std::string> served;

private:
    DOMBuilder m_builder;
    const TemporaryFolder& m_folder;
};

/// A catalogue whose schema includes its types, which include a part, and imports another
/// namespace.
class ServedSchemas : public testing::Test
{
protected:
    ServedSchemas()
    {
        m_folder.Write("parts.xsd", SchemaOf(R"(
            <xs:simpleType name='price'><xs:restriction base='xs:decimal'>
              <xs:maxInclusive value='@limit@'/>
            </xs:restriction></xs:simpleType>)"));
        m_folder.Write("types.xsd", SchemaOf(R"(
            <xs:include schemaLocation='deeper/parts.xsd'/>
            <xs:complexType name='entry'><xs:simpleContent><xs:extension base='price'>
              <xs:attribute name='id' type='xs:NCName' use='required'/>
            </xs:extension></xs:simpleContent></xs:complexType>)"));
        m_folder.Write("unit.xsd", R"(
            <xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema' targetNamespace='urn:unit'>
              <xs:attribute name='unit'><xs:simpleType><xs:restriction base='xs:token'>
                <xs:enumeration value='EUR'/><xs:enumeration value='CHF'/>
              </xs:restriction></xs:simpleType></xs:attribute>
            </xs:schema>)");
    }

    static std::string Catalogue()
    {
        return R"(
            <xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema' xmlns:c='urn:c'
                       xmlns:u='urn:unit' targetNamespace='urn:c'
                       elementFormDefault='qualified'>
              <xs:import namespace='urn:unit' schemaLocation='http://example.invalid/unit.xsd'/>
              <xs:include schemaLocation='types.xsd'/>
              <xs:element name='catalogue'><xs:complexType>
                <xs:sequence>
                  <xs:element name='entry' type='c:entry' maxOccurs='unbounded'/>
                </xs:sequence>
                <xs:attribute ref='u:unit' use='required'/>
              </xs:complexType></xs:element>
            </xs:schema>)";
    }

    std::vector<std::string> Check(const std::string& schema, const std::string& text)
    {
        StringInputSource source(TString::fromStdString(text), u"doc.xml", false);
        const auto parser = XercesXMLParser::Create(source, m_sink);
        parser->LoadXSDString(TString::fromStdString(schema), u"main.xsd");
        std::vector<std::string> errors = ErrorsOf(*parser);
        parser->Parse();
        for (const std::string& error : ErrorsOf(*parser))
            errors.push_back(error);
        return errors;
    }

    static std::vector<std::string> ErrorsOf(const Parser& parser)
    {
        std::vector<std::string> result;
        for (const TString& error : parser.GetErrors())
            result.push_back(error.toStdString());
        return result;
    }

    TemporaryFolder m_folder;
    DOM m_document;
    std::shared_ptr<BuilderThatServesSchemas> m_sink =
        std::make_shared<BuilderThatServesSchemas>(m_document, m_folder);
};

} // namespace

TEST_F(ServedSchemas, ValidateAsOne)
{
    EXPECT_THAT(Check(Catalogue(), "<catalogue xmlns='urn:c' xmlns:u='urn:unit' u:unit='EUR'>"
                                   "<entry id='x'>1.50</entry></catalogue>"),
                IsEmpty());
    ASSERT_NE(m_document.GetDocumentRoot(), nullptr);
    EXPECT_EQ(m_document.GetDocumentRoot()->GetChild(u"entry")->GetText(), u"1.50");
}

TEST_F(ServedSchemas, ReportViolationsOfEachOfThem)
{
    EXPECT_THAT(Check(Catalogue(), "<catalogue xmlns='urn:c' xmlns:u='urn:unit' u:unit='USD'>\n"
                                   "<entry>1</entry>\n"
                                   "<entry id='x'>101</entry>\n"
                                   "<other/></catalogue>"),
                ElementsAre(ViolationAt(1, 58, "value 'USD' not in enumeration"),
                            ViolationAt(2, 8, "missing required attribute 'id'"),
                            ViolationAt(3, 26, "maxInclusive facet value '100'"),
                            ViolationAt(4, 9, "no declaration found for element 'other'"),
                            ViolationAt(4, 21, "element 'other' is not allowed")));
}

TEST_F(ServedSchemas, AreAskedForByTheLocationsThatTheSchemasName)
{
    Check(Catalogue(), "<catalogue/>");
    EXPECT_THAT(m_sink->requests, UnorderedElementsAre("http://example.invalid/unit.xsd",
                                                       "types.xsd", "deeper/parts.xsd"));
    EXPECT_THAT(m_sink->served, UnorderedElementsAre(m_folder.GetPath("unit.xsd").toStdString(),
                                                     m_folder.GetPath("types.xsd").toStdString(),
                                                     m_folder.GetPath("parts.xsd").toStdString()));
}

TEST_F(ServedSchemas, MayIncludeEachOther)
{
    m_folder.Write("parts.xsd",
                   SchemaOf("<xs:include schemaLocation='types.xsd'/><xs:simpleType name='price'>"
                            "<xs:restriction base='xs:decimal'/></xs:simpleType>"));
    EXPECT_THAT(Check(SchemaOf("<xs:include schemaLocation='types.xsd'/>"
                               "<xs:element name='e' type='entry'/>"),
                      "<e id='x'>x</e>"),
                ElementsAre(ViolationAt(1, 16, "invalid character")));
}

TEST_F(ServedSchemas, ThatAreBrokenGiveErrorsThatNameThem)
{
    m_folder.Write("parts.xsd", "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'>");
    const std::string path = m_folder.GetPath("parts.xsd").toStdString();
    EXPECT_THAT(Check(Catalogue(), "<catalogue xmlns='urn:c'/>"), Contains(HasSubstr(path)));

    m_folder.Write("parts.xsd", SchemaOf("<xs:simpleType name='price'/>"));
    EXPECT_THAT(Check(Catalogue(), "<catalogue xmlns='urn:c'/>"), Contains(HasSubstr(path)));
    EXPECT_NE(m_document.GetDocumentRoot(), nullptr);
}
