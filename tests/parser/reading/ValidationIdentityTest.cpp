#include "support/Validation.h"

#include <gtest/gtest.h>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// Lists of numbered items, and references to them, with constraints on one list and on all.
std::string Lists(const std::string& ofOneList, const std::string& ofAll = {})
{
    return SchemaOf(R"(
        <xs:complexType name='item'>
          <xs:attribute name='id' type='xs:int'/>
          <xs:attribute name='lang'/>
        </xs:complexType>
        <xs:element name='lists'><xs:complexType><xs:sequence>
          <xs:element name='list' maxOccurs='unbounded'><xs:complexType><xs:sequence>
            <xs:element name='item' type='item' minOccurs='0' maxOccurs='unbounded'/>
            <xs:element name='ref' type='item' minOccurs='0' maxOccurs='unbounded'/>
          </xs:sequence></xs:complexType>)" +
                    ofOneList + "</xs:element></xs:sequence></xs:complexType>" + ofAll +
                    "</xs:element>");
}

/// A constraint of the values of attributes.
std::string Constraint(const std::string& kind, const std::string& selector,
                       const std::vector<std::string>& attributes = {"id"})
{
    std::string content = "<xs:selector xpath='" + selector + "'/>";
    for (const std::string& attribute : attributes)
        content += "<xs:field xpath='@" + attribute + "'/>";
    return "<xs:" + kind + " name='" + kind + "'>" + content + "</xs:" + kind + ">";
}

std::string Reference()
{
    return "<xs:keyref name='keyref' refer='key'><xs:selector xpath='ref'/>"
           "<xs:field xpath='@id'/></xs:keyref>";
}

std::string OneList(const std::string& content)
{
    return "<lists>\n<list>" + content + "</list>\n</lists>";
}

} // namespace

TEST(ValidationIdentity, UniqueValuesDifferAsTheirTypeCompares)
{
    const Validator validator(Lists(Constraint("unique", "item")));
    EXPECT_THAT(validator.Check(OneList("<item id='1'/><item id='2'/>")), IsEmpty());
    EXPECT_THAT(validator.Check(OneList("<item id='1'/><item id='01'/>")),
                ElementsAre(ViolationAt(2, 36,
                                        "element 'list' declares duplicate identity "
                                        "constraint unique values")));
}

TEST(ValidationIdentity, UniqueValuesMayBeMissingAndKeysMayNot)
{
    const std::string document = OneList("<item id='1'/><item/><item/>");
    EXPECT_THAT(Validator(Lists(Constraint("unique", "item"))).Check(document), IsEmpty());
    EXPECT_THAT(Validator(Lists(Constraint("key", "item"))).Check(document),
                ElementsAre(ViolationAt(2, 28, "element 'list'"),
                            ViolationAt(2, 35, "identity constraint key with no value")));
}

TEST(ValidationIdentity, KeysDiffer)
{
    const Validator validator(Lists(Constraint("key", "item")));
    EXPECT_THAT(validator.Check(OneList("<item id='1'/><item id='2'/>")), IsEmpty());
    EXPECT_THAT(validator.Check(OneList("<item id='1'/><item id='1'/>")),
                ElementsAre(ViolationAt(
                    2, 35, "element 'list' declares duplicate identity constraint key values")));
}

TEST(ValidationIdentity, KeysOfTwoFieldsDifferInOneOfThem)
{
    const Validator validator(Lists(Constraint("key", "item", {"id", "lang"})));
    EXPECT_THAT(validator.Check(OneList("<item id='1' lang='a'/><item id='1' lang='b'/>")),
                IsEmpty());
    EXPECT_THAT(validator.Check(OneList("<item id='1' lang='a'/><item id='1' lang='a'/>")),
                ElementsAre(ViolationAt(2, 53, "duplicate identity constraint key values")));
    EXPECT_THAT(validator.Check(OneList("<item id='1' lang='a'/><item id='1'/>")),
                ElementsAre(ViolationAt(2, 44, "identity constraint key 'key'")));
}

TEST(ValidationIdentity, ReferencesLeadToAKey)
{
    const Validator validator(Lists(Constraint("key", "item") + Reference()));
    EXPECT_THAT(validator.Check(OneList("<item id='1'/><ref id='1'/><ref id='01'/><ref/>")),
                IsEmpty());
    // Known when the element that holds the keys has been read.
    EXPECT_THAT(
        validator.Check(OneList("<item id='1'/><ref id='2'/>")),
        ElementsAre(ViolationAt(2, 41, "identity constraint key for element 'list' not found")));
}

TEST(ValidationIdentity, HoldsWithinTheElementThatDeclaresIt)
{
    const std::string document =
        "<lists>\n<list><item id='1'/></list>\n<list><item id='1'/></list></lists>";
    EXPECT_THAT(Validator(Lists(Constraint("key", "item"))).Check(document), IsEmpty());
    EXPECT_THAT(Validator(Lists("", Constraint("key", "list/item"))).Check(document),
                ElementsAre(ViolationAt(3, 21, "element 'lists' declares duplicate")));
    EXPECT_THAT(Validator(Lists(Constraint("key", "item") + Reference()))
                    .Check("<lists>\n<list><item id='1'/></list>\n"
                           "<list><ref id='1'/></list></lists>"),
                ElementsAre(ViolationAt(3, 27, "key for element 'list' not found")));
}

TEST(ValidationIdentity, EveryConstraintIsCheckedInOneDocument)
{
    const Validator validator(Lists(Constraint("key", "item") + Reference()));
    EXPECT_THAT(validator.Check(OneList("<item id='1'/><item id='1'/><item/><ref id='2'/>")),
                ElementsAre(ViolationAt(2, 35, "duplicate identity constraint key values"),
                            ViolationAt(2, 42, "identity constraint key with no value"),
                            ViolationAt(2, 62, "not found")));
}

TEST(ValidationIdentity, ValuesMayBeTheTextOfElementsOfAnyDepth)
{
    const Validator validator(SchemaOf(R"(
        <xs:element name='n'><xs:complexType mixed='true'><xs:sequence>
          <xs:element ref='n' minOccurs='0' maxOccurs='unbounded'/>
        </xs:sequence><xs:attribute name='k' type='xs:decimal'/></xs:complexType></xs:element>
        <xs:element name='a'><xs:complexType><xs:sequence>
          <xs:element ref='n' maxOccurs='unbounded'/>
        </xs:sequence></xs:complexType>
          <xs:unique name='u'><xs:selector xpath='.//n'/><xs:field xpath='@k'/></xs:unique>
        </xs:element>)"));
    EXPECT_THAT(validator.Check("<a><n k='1'><n k='2'/></n><n k='3'/></a>"), IsEmpty());
    EXPECT_THAT(validator.Check("<a><n k='1'><n k='2'/></n><n k='2.0'/></a>"),
                ElementsAre(ViolationAt(1, 39, "duplicate identity constraint unique values")));

    const Validator texts(SchemaOf(R"(
        <xs:element name='a'><xs:complexType><xs:sequence>
          <xs:element name='n' type='xs:decimal' maxOccurs='9'/>
        </xs:sequence></xs:complexType>
          <xs:unique name='u'><xs:selector xpath='n'/><xs:field xpath='.'/></xs:unique>
        </xs:element>)"));
    EXPECT_THAT(texts.Check("<a><n>1</n><n>2</n></a>"), IsEmpty());
    EXPECT_THAT(texts.Check("<a><n>1</n><n>1.0</n></a>"),
                ElementsAre(ViolationAt(1, 22, "duplicate identity constraint unique values")));
}

TEST(ValidationIdentity, SelectsInNamespaces)
{
    const Validator validator(R"(
        <xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema' xmlns:p='urn:p'
                   targetNamespace='urn:p' elementFormDefault='qualified'>
          <xs:element name='a'><xs:complexType><xs:sequence>
            <xs:element name='n' maxOccurs='9'><xs:complexType>
              <xs:attribute name='k'/>
            </xs:complexType></xs:element>
          </xs:sequence></xs:complexType>
            <xs:unique name='u'><xs:selector xpath='p:n'/><xs:field xpath='@k'/></xs:unique>
          </xs:element>
        </xs:schema>)");
    EXPECT_THAT(validator.Check("<a xmlns='urn:p'><n k='1'/><n k='2'/></a>"), IsEmpty());
    EXPECT_THAT(validator.Check("<q:a xmlns:q='urn:p'><q:n k='1'/><q:n k='1'/></q:a>"),
                ElementsAre(ViolationAt(1, 46, "duplicate identity constraint unique values")));
}

TEST(ValidationIdentity, IdentifiersAreUniqueAndReferencesToThemLeadSomewhere)
{
    const Validator validator(SchemaOf(R"(
        <xs:element name='a'><xs:complexType><xs:sequence>
          <xs:element name='n' maxOccurs='unbounded'><xs:complexType>
            <xs:attribute name='id' type='xs:ID'/><xs:attribute name='to' type='xs:IDREF'/>
          </xs:complexType></xs:element>
        </xs:sequence></xs:complexType></xs:element>)"));
    EXPECT_THAT(validator.Check("<a><n to='b'/><n id='b'/></a>"), IsEmpty());
    EXPECT_THAT(validator.Check("<a><n id='b'/><n id='b'/></a>"),
                ElementsAre(ViolationAt(1, 26, "ID value 'b' is not unique")));
    EXPECT_THAT(validator.Check("<a><n to='c'/>\n<n id='b'/></a>"),
                ElementsAre(ViolationAt(2, 16, "'c' is referenced but was never declared")));
}

TEST(ValidationIdentity, DocumentsShareNoKeys)
{
    const Validator validator(Lists(Constraint("key", "item") + Reference()));
    EXPECT_THAT(validator.Check(OneList("<item id='1'/>")), IsEmpty());
    EXPECT_THAT(validator.Check(OneList("<item id='1'/>")), IsEmpty());
    EXPECT_THAT(validator.Check(OneList("<ref id='1'/>")),
                ElementsAre(ViolationAt(2, 27, "not found")));

    const Validator identifiers(SchemaOf(R"(
        <xs:element name='a'><xs:complexType>
          <xs:attribute name='id' type='xs:ID'/><xs:attribute name='to' type='xs:IDREF'/>
        </xs:complexType></xs:element>)"));
    for (int round = 0; round < 2; ++round) {
        EXPECT_THAT(identifiers.Check("<a id='x'/>"), IsEmpty());
        EXPECT_THAT(identifiers.Check("<a to='x'/>"),
                    ElementsAre(ViolationAt(1, 12, "never declared")));
    }
}
