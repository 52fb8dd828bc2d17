#include "support/Validation.h"

#include <gtest/gtest.h>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* c_xsi = " xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance' ";

std::string Element(const std::string& name, const std::string& attributes = {})
{
    return "<xs:element name='" + name + "' " + attributes + "/>";
}

std::string Sequence(const std::string& content)
{
    return "<xs:sequence>" + content + "</xs:sequence>";
}

/// The declaration of an element "a" of complex type.
std::string Root(const std::string& content, const std::string& attributes = {})
{
    return "<xs:element name='a'><xs:complexType " + attributes + ">" + content +
           "</xs:complexType></xs:element>";
}

/// The same, for a type that is derived from the type "base".
std::string DerivedRoot(const std::string& how, const std::string& content)
{
    return Root("<xs:complexContent><xs:" + how + " base='base'>" + content + "</xs:" + how +
                "></xs:complexContent>");
}

std::string BaseType(const std::string& content, const std::string& attributes = {})
{
    return "<xs:complexType name='base' " + attributes + ">" + content + "</xs:complexType>";
}

std::string Attribute(const std::string& attributes)
{
    return "<xs:attribute name='k' " + attributes + "/>";
}

struct Violation
{
    int column;
    /// Part of the message.
    const char* reason;
};

/// What may be inside an element "a", a document that keeps to it and one that does not.
struct Structure
{
    const char* name;
    std::string declarations;
    std::string good;
    std::string bad;
    std::vector<Violation> violations;

    friend void PrintTo(const Structure& structure, std::ostream* out) { *out << structure.bad; }
};

std::vector<Structure> Attributes()
{
    return {
        {"Required",
         Root(Attribute("use='required'")),
         "<a k=''/>",
         "<a/>",
         {{5, "missing required attribute 'k'"}}},
        {"Prohibited",
         BaseType(Attribute("")) + DerivedRoot("restriction", Attribute("use='prohibited'")),
         "<a/>",
         "<a k=''/>",
         {{10, "prohibited attribute 'k' is present"}}},
        {"Fixed",
         Root(Attribute("fixed='v'")),
         "<a k='v'/>",
         "<a k='w'/>",
         {{11, "attribute 'k' has value 'w'"}}},
        {"Typed",
         Root(Attribute("type='xs:int'")),
         "<a k='1'/>",
         "<a k='x'/>",
         {{11, "value 'x'"}}},
        {"Undeclared",
         Root(Attribute("")),
         "<a k=''/>",
         "<a l=''/>",
         {{10, "attribute 'l' is not declared for element 'a'"}}},
        {"InAGroup",
         "<xs:attributeGroup name='g'>" + Attribute("use='required'") + "</xs:attributeGroup>" +
             Root("<xs:attributeGroup ref='g'/>"),
         "<a k=''/>",
         "<a/>",
         {{5, "missing required attribute 'k'"}}},
        {"OfSimpleContent",
         Root("<xs:simpleContent><xs:extension base='xs:int'>" + Attribute("use='required'") +
              "</xs:extension></xs:simpleContent>"),
         "<a k=''>1</a>",
         "<a>x</a>",
         {{4, "missing required attribute 'k'"}, {9, "value 'x'"}}},
    };
}

std::vector<Structure> Children()
{
    const std::string bAndC = Sequence(Element("b") + Element("c"));
    const std::string twoOrThree = Sequence(Element("b", "minOccurs='2' maxOccurs='3'"));
    return {
        {"Order",
         Root(bAndC),
         "<a><b/><c/></a>",
         "<a><c/><b/></a>",
         {{16, "element 'c' is not allowed for content model '(b,c)'"}}},
        {"MissingChild",
         Root(bAndC),
         "<a><b/><c/></a>",
         "<a><b/></a>",
         {{12, "missing elements in content model '(b,c)'"}}},
        {"Choice",
         Root("<xs:choice>" + Element("b") + Element("c") + "</xs:choice>"),
         "<a><c/></a>",
         "<a><b/><c/></a>",
         {{16, "element 'c' is not allowed for content model '(b|c)'"}}},
        {"All",
         Root("<xs:all>" + Element("b") + Element("c") + "</xs:all>"),
         "<a><c/><b/></a>",
         "<a><c/><c/></a>",
         {{16, "element 'c' is not allowed"}}},
        {"TooFew", Root(twoOrThree), "<a><b/><b/></a>", "<a><b/></a>", {{12, "missing elements"}}},
        {"TooMany",
         Root(twoOrThree),
         "<a><b/><b/><b/></a>",
         "<a><b/><b/><b/><b/></a>",
         {{24, "element 'b' is not allowed"}}},
        {"Group",
         "<xs:group name='g'>" + Sequence(Element("b")) + "</xs:group>" +
             Root("<xs:group ref='g'/>"),
         "<a><b/></a>",
         "<a><c/></a>",
         {{8, "no declaration found for element 'c'"}, {12, "element 'c' is not allowed"}}},
    };
}

std::vector<Structure> TextAndWildcards()
{
    return {
        {"Empty",
         Root(""),
         "<a/>",
         "<a><b/></a>",
         {{8, "no declaration found for element 'b'"}, {12, "content model 'EMPTY'"}}},
        {"TextWhereElementsStand",
         Root(Sequence(Element("b"))),
         "<a> <b/> </a>",
         "<a>x<b/></a>",
         {{5, "no character data is allowed"}}},
        {"Mixed",
         Root(Sequence(Element("b")), "mixed='true'"),
         "<a>x<b/>y</a>",
         "<a>x<c/>y</a>",
         {{9, "no declaration found for element 'c'"}, {14, "element 'c' is not allowed"}}},
        {"StrictWildcard",
         Element("b") + Root(Sequence("<xs:any/>")),
         "<a><b/></a>",
         "<a><c/></a>",
         {{8, "no declaration found for element 'c'"}}},
        {"LaxWildcard",
         Element("b", "type='xs:int'") + Root(Sequence("<xs:any processContents='lax'/>")),
         "<a><c/></a>",
         "<a><b>x</b></a>",
         {{12, "value 'x'"}}},
        {"UnknownRoot",
         Element("a"),
         "<a/>",
         "<z/>",
         {{5, "no declaration found for element 'z'"}}},
    };
}

std::vector<Structure> Derivation()
{
    const std::string heads = Element("h", "type='xs:int'") +
                              Element("s", "type='xs:int' substitutionGroup='h'") +
                              Element("z", "type='xs:int'");
    const std::string derived = "<xs:complexType name='derived'><xs:complexContent>"
                                "<xs:extension base='base'/></xs:complexContent></xs:complexType>";
    return {
        {"Extension",
         BaseType(Sequence(Element("b"))) + DerivedRoot("extension", Sequence(Element("c"))),
         "<a><b/><c/></a>",
         "<a><b/></a>",
         {{12, "missing elements in content model '(b,c)'"}}},
        {"Restriction",
         BaseType(Sequence(Element("b", "maxOccurs='9'"))) +
             DerivedRoot("restriction", Sequence(Element("b"))),
         "<a><b/></a>",
         "<a><b/><b/></a>",
         {{16, "element 'b' is not allowed"}}},
        {"AbstractType",
         BaseType("", "abstract='true'") + derived + Element("a", "type='base'"),
         std::string("<a") + c_xsi + "xsi:type='derived'/>",
         "<a/>",
         {{5, "type of element 'a' is abstract"}}},
        {"NamedType",
         BaseType("") + "<xs:complexType name='other'/>" + derived + Element("a", "type='base'"),
         std::string("<a") + c_xsi + "xsi:type='derived'/>",
         std::string("<a") + c_xsi + "xsi:type='other'/>",
         {{76, "type 'other' specified in 'xsi:type' does not derive"}}},
        {"SubstitutionGroup",
         heads + Root(Sequence("<xs:element ref='h'/>")),
         "<a><s>1</s></a>",
         "<a><z>1</z></a>",
         {{16, "element 'z' is not allowed"}}},
        {"AbstractElement",
         Element("h", "abstract='true'") + Element("s", "substitutionGroup='h'") +
             Root(Sequence("<xs:element ref='h'/>")),
         "<a><s/></a>",
         "<a><h/></a>",
         {{8, "element 'h' is abstract"}}},
        {"Nil",
         Element("a", "type='xs:int' nillable='true'"),
         std::string("<a") + c_xsi + "xsi:nil='true'/>",
         std::string("<a") + c_xsi + "xsi:nil='true'>1</a>",
         {{78, "element 'a' is nil and must be empty"}}},
        {"NilWhereThereIsNone",
         Element("a", "type='xs:string'"),
         "<a/>",
         std::string("<a") + c_xsi + "xsi:nil='true'/>",
         {{74, "'xsi:nil' specified for non-nillable element 'a'"}}},
        {"Recursion",
         BaseType(Sequence(Element("t", "type='base' minOccurs='0'")) +
                  Attribute("type='xs:int'")) +
             Element("a", "type='base'"),
         "<a><t><t k='1'/></t></a>",
         "<a><t><t k='x'/></t></a>",
         {{17, "value 'x'"}}},
    };
}

std::string NameOf(const testing::TestParamInfo<Structure>& tested)
{
    return tested.param.name;
}

class Structures : public testing::TestWithParam<Structure>
{
};

} // namespace

TEST_P(Structures, TakeDocumentsThatKeepToThem)
{
    EXPECT_THAT(Validator(SchemaOf(GetParam().declarations)).Check(GetParam().good), IsEmpty());
}

TEST_P(Structures, AreViolatedByDocumentsThatDoNot)
{
    std::vector<testing::Matcher<std::string>> expected;
    for (const Violation& violation : GetParam().violations)
        expected.emplace_back(ViolationAt(1, violation.column, violation.reason));
    EXPECT_THAT(Validator(SchemaOf(GetParam().declarations)).Check(GetParam().bad),
                testing::ElementsAreArray(expected));
}

INSTANTIATE_TEST_SUITE_P(Attribute, Structures, testing::ValuesIn(Attributes()), NameOf);
INSTANTIATE_TEST_SUITE_P(Children, Structures, testing::ValuesIn(Children()), NameOf);
INSTANTIATE_TEST_SUITE_P(TextAndWildcards, Structures, testing::ValuesIn(TextAndWildcards()),
                         NameOf);
INSTANTIATE_TEST_SUITE_P(Derivation, Structures, testing::ValuesIn(Derivation()), NameOf);

TEST(ValidationStructure, AddsTheAttributesThatTheSchemaGivesByDefault)
{
    const Validator validator(
        SchemaOf(Root(Attribute("default='d'") + "<xs:attribute name='l' fixed='f'/>")));
    const auto dom = validator.Parse("<a/>");
    EXPECT_THAT(RootErrors(*dom), IsEmpty());
    EXPECT_EQ(dom->GetDocumentRoot()->GetAttribute(u"k"), u"d");
    EXPECT_EQ(dom->GetDocumentRoot()->GetAttribute(u"l"), u"f");
    EXPECT_EQ(validator.Parse("<a k='own'/>")->GetDocumentRoot()->GetAttribute(u"k"), u"own");
}

TEST(ValidationStructure, NormalisesAttributesAsTheirTypesSay)
{
    const Validator validator(
        SchemaOf(Root(Attribute("type='xs:token'") + "<xs:attribute name='l' type='xs:string'/>")));
    const auto dom = validator.Parse("<a k='  x \n y ' l=' z '/>");
    EXPECT_THAT(RootErrors(*dom), IsEmpty());
    EXPECT_EQ(dom->GetDocumentRoot()->GetAttribute(u"k"), u"x y");
    EXPECT_EQ(dom->GetDocumentRoot()->GetAttribute(u"l"), u" z ");
}
