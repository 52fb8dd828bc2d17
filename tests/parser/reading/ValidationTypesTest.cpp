#include "support/Validation.h"

#include <gtest/gtest.h>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// The declaration of an element "a" whose content is a restriction of a built-in type.
std::string Restricted(const std::string& base, const std::string& facets)
{
    return "<xs:element name='a'><xs:simpleType><xs:restriction base='xs:" + base + "'>" + facets +
           "</xs:restriction></xs:simpleType></xs:element>";
}

std::string Facet(const std::string& name, const std::string& value)
{
    return "<xs:" + name + " value='" + value + "'/>";
}

std::string BuiltIn(const std::string& type)
{
    return "<xs:element name='a' type='xs:" + type + "'/>";
}

/// What the content of an element "a" may be, a text that fits and one that does not.
struct SimpleType
{
    const char* name;
    std::string declarations;
    std::string good;
    std::string bad;
    /// Part of the message.
    const char* reason;

    friend void PrintTo(const SimpleType& type, std::ostream* out) { *out << type.bad; }
};

std::string DocumentWith(const std::string& text)
{
    return "<a xmlns:p='urn:p'>" + text + "</a>";
}

class SimpleTypes : public testing::TestWithParam<SimpleType>
{
};

std::vector<SimpleType> BuiltInTypes()
{
    return {
        {"Boolean", BuiltIn("boolean"), "true", "yes", "value 'yes' is invalid boolean"},
        {"Integer", BuiltIn("int"), " -12 ", "1.5", "value '1.5'"},
        {"NoText", BuiltIn("int"), "1", "", "value ''"},
        {"Byte", BuiltIn("byte"), "127", "128", "maxInclusive facet value '127'"},
        {"NonNegative", BuiltIn("nonNegativeInteger"), "0", "-1", "minInclusive facet value '0'"},
        {"Decimal", BuiltIn("decimal"), "-.5", "1e3", "invalid character"},
        {"Double", BuiltIn("double"), "1e3", "1,5", "invalid character"},
        {"Date", BuiltIn("date"), "2024-02-29", "2023-02-29", "day value '2023-02-29'"},
        {"DateTime", BuiltIn("dateTime"), "2024-01-31T23:59:59Z", "2024-01-31 23:59:59",
         "missing 'T' separator"},
        {"Duration", BuiltIn("duration"), "P1Y2M3DT4H", "P", "duration value 'P'"},
        {"HexBinary", BuiltIn("hexBinary"), "00fF", "0", "invalid Hex-encoded binary"},
        {"Base64Binary", BuiltIn("base64Binary"), "QUJD", "QUJ", "invalid Base64-encoded binary"},
        {"QName", BuiltIn("QName"), "p:b", "q:b", "undefined prefix in QName value 'q:b'"},
        {"NCName", BuiltIn("NCName"), "b.c", "b:c", "value 'b:c' is invalid NCName"},
        {"Language", BuiltIn("language"), "de-AT", "de_AT", "value 'de_AT'"},
    };
}

std::vector<SimpleType> Facets()
{
    return {
        {"Enumeration",
         Restricted("string", Facet("enumeration", "red") + Facet("enumeration", "blue")), "blue",
         "green", "value 'green' not in enumeration"},
        {"Pattern", Restricted("string", Facet("pattern", "[A-Z]{2}\\d+")), "AB1", "AB",
         "facet '[A-Z]{2}\\d+'"},
        {"Length", Restricted("string", Facet("length", "3")), "abc", "abcd", "has length '4'"},
        {"MinLength", Restricted("string", Facet("minLength", "2")), "ab", "a", "has length '1'"},
        {"MaxLength", Restricted("string", Facet("maxLength", "2")), "\xC3\xA9\xC3\xA9", "abc",
         "has length '3'"},
        {"MinInclusive", Restricted("int", Facet("minInclusive", "5")), "5", "4", "value '4'"},
        {"MinExclusive", Restricted("int", Facet("minExclusive", "5")), "6", "5", "value '5'"},
        {"MaxInclusive", Restricted("double", Facet("maxInclusive", "1.5")), "1.5", "1.6",
         "value '1.6'"},
        {"MaxExclusive", Restricted("date", Facet("maxExclusive", "2024-01-01")), "2023-12-31",
         "2024-01-01", "value '2024-01-01'"},
        {"TotalDigits", Restricted("decimal", Facet("totalDigits", "3")), "99.9", "100.1",
         "'4' total digits"},
        {"FractionDigits", Restricted("decimal", Facet("fractionDigits", "1")), "1.5", "1.55",
         "'2' fraction digits"},
        {"CollapsedBlanks",
         Restricted("string", Facet("whiteSpace", "collapse") + Facet("length", "3")), "  a  b ",
         "a b c", "has length '5'"},
        {"PreservedBlanks",
         Restricted("string", Facet("whiteSpace", "preserve") + Facet("length", "3")), " a ", "a",
         "has length '1'"},
    };
}

std::vector<SimpleType> DerivedTypes()
{
    const std::string positive = "<xs:simpleType name='positive'><xs:restriction base='xs:int'>" +
                                 Facet("minInclusive", "1") + "</xs:restriction></xs:simpleType>";
    const std::string ints =
        "<xs:simpleType name='ints'><xs:list itemType='xs:int'/></xs:simpleType>";
    const auto element = [](const std::string& content) {
        return "<xs:element name='a'><xs:simpleType>" + content + "</xs:simpleType></xs:element>";
    };
    return {
        {"RestrictionOfARestriction",
         positive + element("<xs:restriction base='positive'>" + Facet("maxInclusive", "9") +
                            "</xs:restriction>"),
         "9", "0", "minInclusive facet value '1'"},
        {"ItemOfAList", element("<xs:list itemType='xs:int'/>"), "1 2\n3", "1 x 3", "value 'x'"},
        {"LengthOfAList",
         ints + element("<xs:restriction base='ints'>" + Facet("maxLength", "2") +
                        "</xs:restriction>"),
         "1 2", "1 2 3", "value '1 2 3' has length '3'"},
        {"MemberOfAUnion", element("<xs:union memberTypes='xs:int xs:boolean'/>"), "true", "maybe",
         "value 'maybe' does not match any member types"},
        {"FixedValue", "<xs:element name='a' type='xs:int' fixed='7'/>", "07", "8",
         "element 'a' differs from its declared fixed value"},
        {"ChildInSimpleContent", BuiltIn("string"), "b", "<a/>",
         "element 'a' is of simple type and cannot have elements"},
    };
}

std::string NameOf(const testing::TestParamInfo<SimpleType>& tested)
{
    return tested.param.name;
}

} // namespace

TEST_P(SimpleTypes, TakeTextThatFits)
{
    const Validator validator(SchemaOf(GetParam().declarations));
    EXPECT_THAT(validator.Check(DocumentWith(GetParam().good)), IsEmpty());
}

TEST_P(SimpleTypes, AreViolatedByTextThatDoesNotFit)
{
    const Validator validator(SchemaOf(GetParam().declarations));
    const std::string document = DocumentWith(GetParam().bad);
    // Text is judged once the end tag has been read.
    const int column = static_cast<int>(document.size()) + 1;
    const auto dom = validator.Parse(document);
    EXPECT_THAT(RootErrors(*dom), ElementsAre(ViolationAt(1, column, GetParam().reason)));
    EXPECT_NE(dom->GetDocumentRoot(), nullptr);
}

INSTANTIATE_TEST_SUITE_P(BuiltIn, SimpleTypes, testing::ValuesIn(BuiltInTypes()), NameOf);
INSTANTIATE_TEST_SUITE_P(Facet, SimpleTypes, testing::ValuesIn(Facets()), NameOf);
INSTANTIATE_TEST_SUITE_P(Derived, SimpleTypes, testing::ValuesIn(DerivedTypes()), NameOf);

TEST(ValidationTypes, TextArrivesWithItsWhiteSpaceAsItsTypeHasIt)
{
    const auto textOf = [](const std::string& type, const std::string& text) {
        const Validator validator(SchemaOf(BuiltIn(type)));
        const auto dom = validator.Parse(DocumentWith(text));
        EXPECT_THAT(RootErrors(*dom), IsEmpty());
        return dom->GetDocumentRoot()->GetText().toStdString();
    };
    EXPECT_EQ(textOf("string", " x \n y "), " x \n y ");
    EXPECT_EQ(textOf("normalizedString", " x \n y "), " x   y ");
    EXPECT_EQ(textOf("token", " x \n y "), "x y");
    EXPECT_EQ(textOf("int", " -12\n"), "-12");
}
