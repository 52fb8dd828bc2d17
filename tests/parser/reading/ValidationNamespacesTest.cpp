#include "support/TemporaryFile.h"
#include "support/Validation.h"

#include <gtest/gtest.h>

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

/// An element "a" of the namespace "urn:a" with a child "b" and an attribute "k", both local.
std::string LocalsIn(const std::string& attributes)
{
    return "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema' targetNamespace='urn:a' " +
           attributes + R"(>
        <xs:element name='a'><xs:complexType>
          <xs:sequence><xs:element name='b' type='xs:int'/></xs:sequence>
          <xs:attribute name='k' type='xs:int'/>
        </xs:complexType></xs:element>
      </xs:schema>)";
}

/// An element "a" that takes exactly the attributes of the namespace "xml".
std::string XmlAttributes()
{
    return R"(
      <xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'>
        <xs:import namespace='http://www.w3.org/XML/1998/namespace'/>
        <xs:element name='a'><xs:complexType>
          <xs:attribute ref='xml:lang'/><xs:attribute ref='xml:space'/>
          <xs:attribute ref='xml:base'/><xs:attribute ref='xml:id'/>
        </xs:complexType></xs:element>
      </xs:schema>)";
}

} // namespace

TEST(ValidationNamespaces, GoByTheNamespaceAndNotByThePrefix)
{
    const Validator validator(LocalsIn("elementFormDefault='qualified'"));
    EXPECT_THAT(validator.Check("<a xmlns='urn:a' k='1'><b>1</b></a>"), IsEmpty());
    EXPECT_THAT(validator.Check("<p:a xmlns:p='urn:a'><q:b xmlns:q='urn:a'>1</q:b></p:a>"),
                IsEmpty());
    EXPECT_THAT(validator.Check("<a><b>1</b></a>"),
                testing::Contains(ViolationAt(1, 4, "no declaration found for element 'a'")));
    EXPECT_THAT(validator.Check("<a xmlns='urn:b'><b>1</b></a>"), Not(IsEmpty()));
    EXPECT_THAT(validator.Check("<p:a xmlns:p='urn:a'><p:b>x</p:b></p:a>"),
                ElementsAre(ViolationAt(1, 34, "value 'x'")));
}

TEST(ValidationNamespaces, LeaveNamesInTheTreeAsWritten)
{
    const Validator validator(LocalsIn("elementFormDefault='qualified'"));
    const auto dom = validator.Parse("<p:a xmlns:p='urn:a' k='1'><p:b>1</p:b></p:a>");
    EXPECT_THAT(RootErrors(*dom), IsEmpty());
    EXPECT_EQ(dom->GetDocumentRoot()->GetName(), u"p:a");
    EXPECT_NE(dom->GetDocumentRoot()->GetChild(u"p:b"), nullptr);
    EXPECT_EQ(dom->GetDocumentRoot()->GetAttribute(u"xmlns:p"), u"urn:a");
}

TEST(ValidationNamespaces, LocalElementsAreInNoneUnlessTheSchemaSaysSo)
{
    const Validator validator(LocalsIn(""));
    EXPECT_THAT(validator.Check("<p:a xmlns:p='urn:a'><b>1</b></p:a>"), IsEmpty());
    EXPECT_THAT(validator.Check("<p:a xmlns:p='urn:a'><p:b>1</p:b></p:a>"), Not(IsEmpty()));
    EXPECT_THAT(validator.Check("<a xmlns='urn:a'><b>1</b></a>"), Not(IsEmpty()));
}

TEST(ValidationNamespaces, LocalAttributesAreInNoneUnlessTheSchemaSaysSo)
{
    const std::string plain = "<p:a xmlns:p='urn:a' k='1'><b>1</b></p:a>";
    const std::string prefixed = "<p:a xmlns:p='urn:a' p:k='1'><b>1</b></p:a>";
    const Validator unqualified(LocalsIn(""));
    EXPECT_THAT(unqualified.Check(plain), IsEmpty());
    EXPECT_THAT(unqualified.Check(prefixed),
                ElementsAre(ViolationAt(1, 30, "attribute 'k' must be unqualified")));
    const Validator qualified(LocalsIn("attributeFormDefault='qualified'"));
    EXPECT_THAT(qualified.Check(prefixed), IsEmpty());
    EXPECT_THAT(qualified.Check(plain),
                ElementsAre(ViolationAt(1, 28, "attribute 'k' must be qualified")));
}

TEST(ValidationNamespaces, AnUnknownPrefixIsAnError)
{
    const Validator validator(LocalsIn(""));
    EXPECT_THAT(validator.Check("<p:a xmlns:p='urn:a' q:k='1'><b>1</b></p:a>"), Not(IsEmpty()));
    EXPECT_THAT(validator.Check("<q:a/>"), Not(IsEmpty()));
}

TEST(ValidationNamespaces, SchemasOfSeveralAreUsedTogether)
{
    Validator validator(LocalsIn(""));
    validator.Add(R"(
        <xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema' xmlns:a='urn:a'
                   targetNamespace='urn:c' elementFormDefault='qualified'>
          <xs:import namespace='urn:a'/>
          <xs:element name='c'><xs:complexType><xs:sequence>
            <xs:element ref='a:a' maxOccurs='unbounded'/>
          </xs:sequence></xs:complexType></xs:element>
        </xs:schema>)",
                  "c.xsd");
    EXPECT_THAT(
        validator.Check("<c xmlns='urn:c'><a:a xmlns:a='urn:a'><b xmlns=''>1</b></a:a></c>"),
        IsEmpty());
    EXPECT_THAT(validator.Check("<c xmlns='urn:c' xmlns:a='urn:a'>\n<a:a><b xmlns=''>x</b></a:a>\n"
                                "<a:a k='y'><b xmlns=''>1</b></a:a></c>"),
                ElementsAre(ViolationAt(2, 23, "value 'x'"), ViolationAt(3, 12, "value 'y'")));
}

TEST(ValidationNamespaces, TheAttributesOfXmlAreKnownToEverySchema)
{
    const Validator validator(XmlAttributes());
    EXPECT_THAT(validator.Check("<a xml:lang='de-AT' xml:space='preserve' xml:id='i'"
                                " xml:base='http://example.org/'/>"),
                IsEmpty());
    EXPECT_THAT(validator.Check("<a xml:lang=''/>"), IsEmpty());
    EXPECT_THAT(validator.Check("<a xml:space='perhaps'/>"),
                ElementsAre(ViolationAt(1, 25, "value 'perhaps' not in enumeration")));
    EXPECT_THAT(validator.Check("<a xml:lang='not a language'/>"),
                ElementsAre(ViolationAt(1, 31, "value 'not a language'")));
    EXPECT_THAT(validator.Check("<a xml:id='1'/>"), ElementsAre(ViolationAt(1, 16, "value '1'")));
    EXPECT_THAT(validator.Check("<a xml:other='1'/>"),
                ElementsAre(ViolationAt(1, 19, "other' is not declared for element 'a'")));
}

TEST(ValidationNamespaces, ADocumentNeitherNamesNorLoadsItsSchema)
{
    const Validator validator(LocalsIn(""));
    const TemporaryFolder folder;
    const std::string b =
        folder
            .Write("b.xsd", "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema' "
                            "targetNamespace='urn:b'><xs:element name='b'/></xs:schema>")
            .toStdString();
    const std::string xsi = " xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance' ";
    EXPECT_THAT(
        validator.Check("<b xmlns='urn:b'" + xsi + "xsi:schemaLocation='urn:b " + b + "'/>"),
        testing::Contains(HasSubstr("no declaration found for element 'b'")));
    EXPECT_THAT(
        validator.Check("<b" + xsi + "xsi:noNamespaceSchemaLocation='" +
                        folder.Write("n.xsd", SchemaOf("<xs:element name='b'/>")).toStdString() +
                        "'/>"),
        testing::Contains(HasSubstr("no declaration found for element 'b'")));
    EXPECT_THAT(validator.Check("<p:a xmlns:p='urn:a' k='x'" + xsi +
                                "xsi:schemaLocation='urn:a nowhere.xsd'><b>1</b></p:a>"),
                ElementsAre(ViolationAt(1, 121, "value 'x'")));
}
