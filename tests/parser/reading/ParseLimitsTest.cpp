#include "support/ErrorsOf.h"
#include "support/ParseOutcome.h"
#include "support/Repeat.h"
#include "support/SmallStack.h"

#include <kescorexml/DOMElement.h>
#include <kescorexml/DOMParser.h>
#include <kescorexml/StandaloneDOMParser.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>

namespace {

using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::MatchesRegex;
using testing::SizeIs;

const char* const c_openSchema =
    "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'><xs:element name='a'>"
    "<xs:complexType mixed='true'><xs:sequence><xs:any processContents='lax' minOccurs='0' "
    "maxOccurs='unbounded'/></xs:sequence><xs:anyAttribute processContents='lax'/>"
    "</xs:complexType></xs:element></xs:schema>";

/// Schemas with a target namespace leave documents without namespace to their own document type.
const char* const c_targetSchema =
    "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema' targetNamespace='urn:u'>"
    "<xs:element name='z' type='xs:int'/></xs:schema>";

/// Takes a level of the scanner's recursion, or some, for each word.
const std::string c_wordsPattern = "(\\w+[ ,]?)*\\w*";
const std::string c_wordsSchema =
    "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'><xs:element name='a'><xs:simpleType>"
    "<xs:restriction base='xs:string'><xs:pattern value='" +
    c_wordsPattern + "'/></xs:restriction></xs:simpleType></xs:element></xs:schema>";

/// Counts what reaches it, as the amplification limit counts what a document spells out.
class CountingSink : public SAXInterface
{
public:
    void StartElement(TString&& name, std::unordered_map<TString, TString>&& attributes) override
    {
        units += 1 + static_cast<std::uint64_t>(name.length());
        for (const auto& [key, value] : attributes)
            units += 1 + static_cast<std::uint64_t>(key.length() + value.length());
        attributeCount += attributes.size();
        ++elements;
    }
    void EndElement() override {}
    void TextContent(const TString& text) override
    {
        units += static_cast<std::uint64_t>(text.length());
    }

    std::uint64_t units = 0;
    std::uint64_t elements = 0;
    std::uint64_t attributeCount = 0;
};

/// A parser for one document, which validates when it has a schema.
struct Session
{
    explicit Session(std::string text, const char* schema = nullptr)
        : source(std::move(text), u"id", false), sink(std::make_shared<CountingSink>()),
          parser(XercesXMLParser::Create(source, sink))
    {
        if (schema != nullptr)
            parser->LoadXSDString(schema, u"schema");
    }
    std::vector<std::string> Parse()
    {
        parser->Parse();
        EXPECT_EQ(parser->HasFatallyErrored(), parser->HasErrors());
        return ToUtf8(parser->GetErrors());
    }
    std::vector<std::string> ParseExpanding()
    {
        parser->AllowEntityExpansion_Insecure();
        return Parse();
    }

    Utf8InputSource source;
    std::shared_ptr<CountingSink> sink;
    std::unique_ptr<XercesXMLParser> parser;
};

template <typename Make>
std::string Concatenate(int count, Make&& make)
{
    std::string text;
    for (int i = 0; i < count; ++i)
        text += make(std::to_string(i));
    return text;
}

/// Of two or three letters.
std::string MakeShortName(const std::string& number)
{
    const int value = std::stoi(number);
    std::string name(1, static_cast<char>('a' + value % 26));
    name += static_cast<char>('a' + value / 26 % 26);
    if (value >= 26 * 26)
        name += static_cast<char>('a' + value / 676);
    return name;
}

std::string WithDoctype(const std::string& declarations, const std::string& content)
{
    return "<!DOCTYPE a [" + declarations + "]>" + content;
}

/// Parameter entities that each name the one before twice.
std::string DoublingParameterEntities(int levels)
{
    std::string declarations = "<!ENTITY % a0 ''>";
    for (int i = 1; i <= levels; ++i) {
        const std::string former = "&#37;a" + std::to_string(i - 1) + ";";
        declarations += "<!ENTITY % a" + std::to_string(i) + " '" + former + former + "'>";
    }
    return declarations + "%a" + std::to_string(levels) + ";";
}

/// `levels` parameter entities that each name the one before.
std::string NestedParameterEntities(int levels)
{
    return "<!ENTITY % a0 ''>" +
           Concatenate(levels,
                       [](const std::string& i) {
                           return "<!ENTITY % a" + std::to_string(std::stoi(i) + 1) + " '&#37;a" +
                                  i + ";'>";
                       }) +
           "%a" + std::to_string(levels) + ";";
}

std::string Nest(int levels)
{
    return Repeat("<a>", static_cast<std::size_t>(levels)) +
           Repeat("</a>", static_cast<std::size_t>(levels));
}

/// One fatal error of the usual form that names the limit and its setter.
auto IsOnlyError(const char* limit, const char* setter)
{
    return ElementsAre(
        AllOf(MatchesRegex("Fatal Error\\([0-9]+,[0-9]+\\): .* \\(.*\\) \\(id: id\\)"),
              HasSubstr(std::string("(") + limit + " limit, " + setter + ")")));
}

const auto c_isAmplificationError = IsOnlyError("amplification", "SetAmplificationLimit");
const auto c_isExpansionError = IsOnlyError("expansion", "SetExpansionLimit");
const auto c_isDepthError = IsOnlyError("validation depth", "SetValidationDepthLimit");
const auto c_isValidationWorkError = IsOnlyError("validation work", "SetValidationWorkLimit");
const auto c_isStackError =
    ElementsAre(MatchesRegex("Fatal Error\\([0-9]+,[0-9]+\\): validation takes more stack than the "
                             "thread has \\(id: id\\)"));

} // namespace

TEST(ParseLimits, AreOnFromTheStart)
{
    const ParseLimits limits;
    EXPECT_EQ(limits.GetAmplificationLimit(), (ParseLimits::Growth{100, 25165824}));
    EXPECT_EQ(limits.GetExpansionLimit(), (ParseLimits::Growth{100, 33554432}));
    EXPECT_EQ(limits.GetValidationDepthLimit(), 10000U);
    EXPECT_EQ(limits.GetValidationWorkLimit(), (ParseLimits::Growth{100, 67108864}));
    EXPECT_EQ(limits.GetNameCollisionLimit(), 1024U);
    EXPECT_EQ(limits.GetMessageLimit(), (ParseLimits::Growth{20, 16777216}));
    Session session("<a/>");
    EXPECT_EQ(static_cast<ParseLimits&>(*session.parser), limits);
    EXPECT_EQ(static_cast<const ParseLimits&>(DOMParser()), limits);
    EXPECT_EQ(static_cast<const ParseLimits&>(StandaloneDOMParser()), limits);
}

// Amplification

TEST(ParseLimits, TextInFrontOfTheTagThatExceedsALimitReachesTheSink)
{
    Utf8InputSource source(std::string("<a>text<b/></a>"), u"id", false);
    const auto sink = std::make_shared<RecordingSink>();
    const auto parser = XercesXMLParser::Create(source, sink);
    // The element a takes two units, the text four, and b would take two more.
    parser->SetAmplificationLimit(0, 7);
    parser->Parse();
    EXPECT_THAT(sink->events, ElementsAre("<a>", "'text'"));
    EXPECT_TRUE(parser->HasFatallyErrored());
}

TEST(ParseLimits, AmplificationCountsTextNamesAttributesAndElements)
{
    // With what elements and attributes cost more that the document does not spell out.
    const std::pair<std::string, std::uint64_t> documents[] = {
        {"<a>text</a>", 0},
        {"<a><bb/>x<bb/>\n</a>", 0},
        {"<a>\xF0\x9F\x98\x80&lt;&#x20AC;<![CDATA[x]]></a>", 0},
        {WithDoctype("<!ENTITY e 'value'>", "<a b='&e;'>&e;</a>"), 0},
        {WithDoctype("<!ATTLIST b c CDATA 'default' d CDATA 'e'>", "<a><b/><b d='xyz'/></a>"),
         3 * 15},
        {WithDoctype("<!ENTITY e '<b c=\"d\">x</b><e/>'>", "<a f=''>&e;<b/>&e;</a>"),
         4 * 47 + 2 * 15},
        {WithDoctype("<!ENTITY e '&f;'><!ENTITY f '<b/>'>", "<a>&e;</a>"), 47},
    };
    for (const auto& [document, implied] : documents) {
        SCOPED_TRACE(document);
        Session whole(document);
        EXPECT_THAT(whole.ParseExpanding(), IsEmpty());
        const std::uint64_t units = whole.sink->units + implied;
        EXPECT_GT(units, 0U);

        whole.parser->SetAmplificationLimit(0, units);
        EXPECT_THAT(whole.Parse(), IsEmpty());
        whole.parser->SetAmplificationLimit(0, units - 1);
        EXPECT_THAT(whole.Parse(), c_isAmplificationError);
    }
}

TEST(ParseLimits, AmplificationCountsTheAttributesThatASchemaAdds)
{
    const char* const schema =
        "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'><xs:element name='a'>"
        "<xs:complexType><xs:attribute name='b' type='xs:string' default='value'/>"
        "</xs:complexType></xs:element></xs:schema>";
    Session session("<a/>", schema);
    EXPECT_THAT(session.Parse(), IsEmpty());
    EXPECT_EQ(session.sink->units, 2U + 7U);
    session.parser->SetAmplificationLimit(0, 2 + 6 + 16);
    EXPECT_THAT(session.Parse(), IsEmpty());
    session.parser->SetAmplificationLimit(0, 2 + 6 + 15);
    EXPECT_THAT(session.Parse(), c_isAmplificationError);
}

TEST(ParseLimits, AmplificationIsMeasuredByTheBytesOfTheDocument)
{
    const std::string start = "<!DOCTYPE a [<!ENTITY e '";
    const std::string end = "'>]><a>&e;&e;&e;</a>";
    const std::string value(40, 'x');
    const std::string document = start + value + end;
    ASSERT_LT(document.size(), 120U);
    for (const bool isAllowed : {true, false}) {
        // 122 units are twice the bytes of a document that is padded to 61 bytes for each two.
        const std::size_t size = isAllowed ? 122 : 121;
        Session session(document + std::string(size - document.size(), ' '));
        session.parser->SetAmplificationLimit(1, 0);
        const auto errors = session.ParseExpanding();
        if (isAllowed)
            EXPECT_THAT(errors, IsEmpty());
        else
            EXPECT_THAT(errors, c_isAmplificationError);
    }
}

TEST(ParseLimits, ALargeEntityUsedOftenIsAmplification)
{
    const std::string document = WithDoctype("<!ENTITY e '" + std::string(100000, 'x') + "'>",
                                             "<a>" + Repeat("&e;", 10000) + "</a>");
    Session session(document);
    // The work is that of reading the entity, which is limited, too.
    EXPECT_THAT(session.ParseExpanding(), c_isAmplificationError);
    EXPECT_LE(session.sink->units, 100 * document.size());
}

TEST(ParseLimits, ALargeEntityUsedOftenInAttributesIsLimitedBeforeTheTagEnds)
{
    Session session(WithDoctype("<!ENTITY e '" + std::string(100000, 'x') + "'>",
                                "<a b='" + Repeat("&e;", 10000) + "'/>"));
    EXPECT_THAT(session.ParseExpanding(), c_isExpansionError);
    EXPECT_EQ(session.sink->elements, 0U);
}

TEST(ParseLimits, ManyDefaultAttributesOnManyElementsAreAmplification)
{
    const std::string document = WithDoctype(
        Concatenate(1000, [](const std::string& i) { return "<!ATTLIST a b" + i + " CDATA 'c'>"; }),
        "<a>" + Repeat("<a/>", 16000) + "</a>");
    Session session(document);
    EXPECT_THAT(session.Parse(), c_isAmplificationError);
    EXPECT_LE(session.sink->units, ParseLimits().GetAmplificationLimit().threshold);
    EXPECT_GT(session.sink->elements, 0U);
}

TEST(ParseLimits, ManyDefaultAttributesOfAUnitAreAmplification)
{
    // Hardly any letters, but each attribute takes memory.
    for (const std::size_t elements : {2090U, 60000U}) {
        for (const bool isPlain : {true, false}) {
            const std::string attributes = Concatenate(
                2000, [](const std::string& i) { return " " + MakeShortName(i) + " CDATA ''"; });
            const std::string document =
                WithDoctype("<!ATTLIST a" + attributes + ">" + (isPlain ? "" : "<!ENTITY e ''>"),
                            "<a>" + Repeat("<a/>", elements) + "</a>");
            EXPECT_LT(document.size(), 280000U);
            Session session(document);
            EXPECT_THAT(session.Parse(), c_isAmplificationError);
            const std::uint64_t units = std::max<std::uint64_t>(
                ParseLimits().GetAmplificationLimit().threshold, 100 * document.size());
            EXPECT_LE(session.sink->attributeCount, units / 16);
        }
    }
}

TEST(ParseLimits, ElementsAndAttributesOfEntitiesAreAmplification)
{
    const std::string elements = Repeat("<b/>", 1500);
    const std::string attributes =
        "<b" + Concatenate(700, [](const std::string& i) { return " a" + i + "=\"\""; }) + "/>";
    for (const std::string& text : {elements, attributes}) {
        const std::string document =
            WithDoctype("<!ENTITY e '" + text + "'>", "<a>" + Repeat("&e;", 4000) + "</a>");
        EXPECT_LT(document.size(), 20000U);
        Session session(document);
        EXPECT_THAT(session.ParseExpanding(), c_isAmplificationError);
        const std::uint64_t units = ParseLimits().GetAmplificationLimit().threshold;
        EXPECT_LE(session.sink->elements * 48 + session.sink->attributeCount * 16, units);
        EXPECT_GT(session.sink->elements, 0U);
    }
}

TEST(ParseLimits, WhatIsHarmlessIsAccepted)
{
    Session defaults(WithDoctype(
        Concatenate(50, [](const std::string& i) { return "<!ATTLIST a b" + i + " CDATA 'c'>"; }) +
            "<!ENTITY e ''>",
        "<a>" + Repeat("<a/>", 20000) + "</a>"));
    EXPECT_THAT(defaults.Parse(), IsEmpty());
    Session text(WithDoctype("<!ENTITY e '" + std::string(5000, 'x') + "'>",
                             "<a>" + Repeat("&e;", 2000) + "</a>"));
    EXPECT_THAT(text.ParseExpanding(), IsEmpty());
    Session deep(Repeat("<a>", 3000) + Repeat("<a/>", 50000) + Repeat("</a>", 3000), c_openSchema);
    EXPECT_THAT(deep.Parse(), IsEmpty());
    Session unknown(
        "<a>" + Concatenate(30000, [](const std::string& i) { return "<b" + i + "/>"; }) + "</a>",
        c_openSchema);
    EXPECT_THAT(unknown.Parse(), IsEmpty());
}

TEST(ParseLimits, ExpansionWithinTheThresholdIsAllowedWhateverItsFactor)
{
    // A thousand times the document, as a small document may.
    Session session(WithDoctype("<!ENTITY e '" + std::string(1000, 'x') + "'>",
                                "<a>" + Repeat("&e;", 8000) + "</a>"));
    EXPECT_THAT(session.ParseExpanding(), IsEmpty());
    EXPECT_EQ(session.sink->units, 8000002U);
}

// Expansion

TEST(ParseLimits, ExpansionCountsTheTextOfAnEntityAndWhereItIsNested)
{
    const std::pair<std::string, std::uint64_t> documents[] = {
        {WithDoctype("<!ENTITY % e ' <!--c-->'>%e;", "<a/>"), 64 + 9},
        {WithDoctype("<!ENTITY e 'value'>", "<a>&e;&e;</a>"), 2 * (64 + 5)},
        {WithDoctype("<!ENTITY e 'value'>", "<a b='&e;'/>"), 64 + 5},
        {WithDoctype("<!ENTITY e 'value'><!ATTLIST x b CDATA '&e;'>", "<a/>"), 64 + 5},
        {WithDoctype("<!ENTITY e 'value'><!ENTITY f '&e;'>", "<a>&f;</a>"), 64 + 3 + 128 + 5},
        {WithDoctype("<!ENTITY % e ''><!ENTITY % f '&#37;e;'>%f;%e;", "<a/>"), 64 + 3 + 128 + 64},
        {WithDoctype("<!ENTITY e '<b>&f;</b>'><!ENTITY f '\xF0\x9F\x98\x80'>", "<a>&e;</a>"),
         64 + 10 + 128 + 2},
    };
    for (const auto& [document, work] : documents) {
        SCOPED_TRACE(document);
        Session session(document);
        session.parser->SetExpansionLimit(0, work);
        EXPECT_THAT(session.ParseExpanding(), IsEmpty());
        session.parser->SetExpansionLimit(0, work - 1);
        EXPECT_THAT(session.Parse(), c_isExpansionError);
        session.parser->SetExpansionLimit(1, work - 1);
        EXPECT_EQ(session.Parse().empty(), work <= document.size());
    }
}

TEST(ParseLimits, ExpansionCountsTheAttributesDeclaredForATag)
{
    Session session(WithDoctype("<!ATTLIST a b CDATA #IMPLIED c ID #IMPLIED>"
                                "<!ATTLIST a d CDATA 'e'><!ATTLIST x y CDATA 'z'>",
                                "<a><a/><b/></a>"));
    session.parser->SetExpansionLimit(0, 6);
    EXPECT_THAT(session.Parse(), IsEmpty());
    session.parser->SetExpansionLimit(0, 5);
    EXPECT_THAT(session.Parse(), c_isExpansionError);
}

TEST(ParseLimits, ExpansionCountsAQuarterOfTheSquareOfTheNamesOfAContentModel)
{
    const auto declare = [](const char* element) {
        return std::string("<!ELEMENT ") + element + " (b" +
               Concatenate(999, [](const std::string& i) { return "|b" + i; }) + ")*>";
    };
    Session session(WithDoctype("<!ENTITY e ''>" + declare("x") + declare("y"), "<a/>"));
    session.parser->SetExpansionLimit(0, 510000);
    EXPECT_THAT(session.Parse(), IsEmpty());
    session.parser->SetExpansionLimit(0, 490000);
    EXPECT_THAT(session.Parse(), c_isExpansionError);
}

TEST(ParseLimits, ExpansionCountsTheBucketsThatAreEmptiedForEachTag)
{
    // 14,629 attributes make the scanner's table 29257 buckets large, 14,628 only 3657.
    const auto make = [](int attributes) {
        return WithDoctype(
            "<!ENTITY e ''>",
            "<a><b" +
                Concatenate(attributes, [](const std::string& i) { return " c" + i + "=''"; }) +
                "/>" + Repeat("<b c=''/>", 10) + Repeat("<b/>", 10) + "</a>");
    };
    Session large(make(14629));
    large.parser->SetExpansionLimit(0, 11 * 914);
    EXPECT_THAT(large.Parse(), IsEmpty());
    large.parser->SetExpansionLimit(0, 11 * 914 - 1);
    EXPECT_THAT(large.Parse(), c_isExpansionError);
    Session small(make(14628));
    small.parser->SetExpansionLimit(0, 0);
    EXPECT_THAT(small.Parse(), IsEmpty());
}

TEST(ParseLimits, NoEntityCostsNothing)
{
    Session session(WithDoctype("<!ENTITY e 'value'>", "<a b='&lt;&#65;'>&amp;</a>"));
    session.parser->SetExpansionLimit(0, 0);
    EXPECT_THAT(session.Parse(), IsEmpty());
}

TEST(ParseLimits, DoublingParameterEntitiesEnd)
{
    Session few(WithDoctype(DoublingParameterEntities(8), "<a/>"));
    EXPECT_THAT(few.Parse(), IsEmpty());
    for (const int levels : {20, 40, 100}) {
        Session session(WithDoctype(DoublingParameterEntities(levels), "<a/>"));
        EXPECT_THAT(session.Parse(), c_isExpansionError);
        EXPECT_EQ(session.sink->elements, 0U);
    }
}

TEST(ParseLimits, AParameterEntityOfMuchTextUsedOftenEnds)
{
    Session session(WithDoctype(
        "<!ENTITY % e '<!--" + std::string(100000, 'x') + "-->'>" + Repeat("%e;", 25000), "<a/>"));
    EXPECT_THAT(session.Parse(), c_isExpansionError);
}

TEST(ParseLimits, DeeplyNestedParameterEntitiesEnd)
{
    Session few(WithDoctype(NestedParameterEntities(100), "<a/>"));
    EXPECT_THAT(few.Parse(), IsEmpty());
    Session session(WithDoctype(NestedParameterEntities(20000), "<a/>"));
    EXPECT_THAT(session.Parse(), c_isExpansionError);
}

TEST(ParseLimits, EntitiesInDefaultValuesEnd)
{
    const std::string nested = Concatenate(30, [](const std::string& i) {
        const std::string former = "&e" + i + ";";
        return "<!ENTITY e" + std::to_string(std::stoi(i) + 1) + " '" + former + former + "'>";
    });
    for (const std::string& declarations :
         {"<!ENTITY e '" + std::string(100000, 'x') + "'><!ATTLIST a b CDATA '" +
              Repeat("&e;", 35000) + "'>",
          "<!ENTITY e0 'x'>" + nested + "<!ATTLIST a b CDATA '&e30;'>",
          "<!ENTITY e0 ''>" + nested + "<!ATTLIST a b CDATA '&e30;'>"}) {
        // Where entities are allowed and where they are not: the scanner does not count these.
        Session session(WithDoctype(declarations, "<a/>"));
        EXPECT_THAT(session.Parse(), c_isExpansionError);
        EXPECT_THAT(session.ParseExpanding(), c_isExpansionError);
    }
}

TEST(ParseLimits, EntitiesWithoutTextEnd)
{
    // Nothing of this reaches the sink.
    Session session(WithDoctype("<!ENTITY e '<!--" + std::string(100000, 'x') + "-->'>",
                                "<a>" + Repeat("&e;", 10000) + "</a>"));
    EXPECT_THAT(session.ParseExpanding(), c_isExpansionError);
}

TEST(ParseLimits, ManyAttributeDeclarationsAndManyElementsEnd)
{
    // None has a default value.
    Session session(WithDoctype(
        Concatenate(10000,
                    [](const std::string& i) { return "<!ATTLIST a b" + i + " CDATA #IMPLIED>"; }),
        "<a>" + Repeat("<a/>", 100000) + "</a>"));
    EXPECT_THAT(session.Parse(), c_isExpansionError);
}

TEST(ParseLimits, AllExpansionsThatTheScannerAllowsFit)
{
    // Direct and nested ones of the lengths that are usual for names of characters.
    const std::string single = WithDoctype("<!ENTITY e 'a few characters more than one'>",
                                           "<a>" + Repeat("&e;", 50000) + "</a>");
    const std::string nested =
        WithDoctype("<!ENTITY f 'x'><!ENTITY e '&f;'>", "<a>" + Repeat("&e;", 25000) + "</a>");
    for (const std::string& document : {single, nested}) {
        Session session(document);
        EXPECT_THAT(session.ParseExpanding(), IsEmpty());
    }
}

// Validation

TEST(ParseLimits, DepthIsLimitedWhileValidatingOnly)
{
    for (const bool isValidating : {false, true}) {
        Session session(Nest(5), isValidating ? c_openSchema : nullptr);
        session.parser->SetValidationDepthLimit(5);
        EXPECT_THAT(session.Parse(), IsEmpty());
        session.parser->SetValidationDepthLimit(4);
        if (isValidating)
            EXPECT_THAT(session.Parse(), c_isDepthError);
        else
            EXPECT_THAT(session.Parse(), IsEmpty());
    }
}

TEST(ParseLimits, DepthIsThatOfOpenElements)
{
    Session session("<a>" + Repeat("<a><a/></a>", 10) + "</a>", c_openSchema);
    session.parser->SetValidationDepthLimit(3);
    EXPECT_THAT(session.Parse(), IsEmpty());
}

TEST(ParseLimits, TenThousandLevelsCanBeValidated)
{
    RunOnSmallStack([] {
        Session most(Nest(10000), c_openSchema);
        EXPECT_THAT(most.Parse(), IsEmpty());
        Session more(Nest(10001), c_openSchema);
        EXPECT_THAT(more.Parse(), c_isDepthError);
        EXPECT_EQ(more.sink->elements, 10000U);
        Session many(Nest(1000000), c_openSchema);
        EXPECT_THAT(many.Parse(), c_isDepthError);
    });
}

TEST(ParseLimits, ValidationWorkCountsDepthNamespacesAndElementsOfABucket)
{
    const std::pair<const char*, std::uint64_t> documents[] = {
        // The depth, and nothing for an element that the schema declares.
        {"<a/>", 1},
        {"<a><a/><a><a/></a></a>", 1 + 2 + 2 + 3},
        {"<a b='' c=''/>", 3 * 1},
        // A declaration is an attribute, too, and is in scope until its element ends.
        {"<a xmlns:p='u'><a/></a>", 2 * (1 + 1) + (2 + 1)},
        {"<a><a xmlns:p='u'/><a/></a>", 1 + 2 * (2 + 1) + 2},
        {"<a><b/><b/></a>", 1 + 2 * (2 + 32)},
        {"<a><b xmlns='u'/><b xmlns='v'/><b xmlns='v'/></a>",
         1 + (2 * (2 + 1) + 32) + 2 * (2 * (2 + 1) + 64)},
        // The hashes of letters are 29 apart.
        {"<a><b/><E/></a>", 1 + (2 + 32) + (2 + 64)},
        {"<a><b/><F/></a>", 1 + (2 + 32) + (2 + 32)},
    };
    for (const auto& [document, work] : documents) {
        SCOPED_TRACE(document);
        Session session(document, c_openSchema);
        const std::uint64_t threshold = (work + 7) / 8;
        session.parser->SetValidationWorkLimit(0, threshold);
        EXPECT_THAT(session.Parse(), IsEmpty());
        session.parser->SetValidationWorkLimit(0, threshold - 1);
        EXPECT_THAT(session.Parse(), c_isValidationWorkError);
    }
}

TEST(ParseLimits, ElementsThatASchemaDeclaresAreLookedUpForNothing)
{
    const std::string schema =
        "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'><xs:element name='a'>"
        "<xs:complexType><xs:choice minOccurs='0' maxOccurs='unbounded'>" +
        Concatenate(290, [](const std::string& i) { return "<xs:element name='b" + i + "'/>"; }) +
        "</xs:choice></xs:complexType></xs:element></xs:schema>";
    const std::string children =
        Concatenate(290, [](const std::string& i) { return "<b" + i + "/>"; });
    Session session("<a>" + Repeat(children, 20) + "</a>", schema.c_str());
    // The depth of each, and hardly more.
    session.parser->SetValidationWorkLimit(0, 290 * 20 * 2 / 8 + 8);
    EXPECT_THAT(session.Parse(), IsEmpty());
}

TEST(ParseLimits, ManyElementsThatNoSchemaKnowsEnd)
{
    const auto parse = [](const std::string& content) {
        Session session("<a>" + content + "</a>", c_openSchema);
        // An eighth of the limit, for it is the square that counts.
        session.parser->SetValidationWorkLimit(1, 8U << 20);
        return session.Parse();
    };
    EXPECT_THAT(parse(Concatenate(10000, [](const std::string& i) { return "<b" + i + "/>"; })),
                IsEmpty());
    EXPECT_THAT(parse(Concatenate(11500, [](const std::string& i) { return "<b" + i + "/>"; })),
                c_isValidationWorkError);
    EXPECT_THAT(
        parse(Concatenate(3000, [](const std::string& i) { return "<b xmlns='u" + i + "'/>"; })),
        c_isValidationWorkError);
}

TEST(ParseLimits, ManyNamespaceDeclarationsEnd)
{
    const std::string declarations =
        Concatenate(40000, [](const std::string& i) { return " xmlns:p" + i + "='u'"; });
    Session session("<a" + declarations + ">" + Repeat("<a/>", 40000) + "</a>", c_openSchema);
    EXPECT_THAT(session.Parse(), c_isValidationWorkError);
}

TEST(ParseLimits, ValidationWorkCountsTheModelsThatADocumentTypeDeclares)
{
    // The names times the particles, and a 64th of the cube of the names.
    const auto list = [](int names, const char* suffix) {
        return Concatenate(names - 1, [&](const std::string& i) { return ",b" + i + suffix; });
    };
    const std::pair<std::string, std::uint64_t> declarations[] = {
        {"<!ELEMENT x (b)>", 1},
        {"<!ELEMENT x (b?)>", 2},
        {"<!ELEMENT x ((b | c)*, d)>", 3 * 4},
        {"<!ELEMENT x (#PCDATA | b | c)*>", 3 * 4},
        {"<!ELEMENT x (b" + list(32, "") + ")>", 32 * 32 + 32 * 32 * 32 / 64},
        {"<!ELEMENT x (b?" + list(32, "?") + ")>", 32 * 64 + 32 * 32 * 32 / 64},
        {"<!ELEMENT x (b)><!ELEMENT y (b)>", 1 + 1},
        {"<!ATTLIST x y (b | c | d) 'b'>", 3 * 3},
        {"<!NOTATION b SYSTEM 'b'><!ATTLIST x y NOTATION (b) #IMPLIED>", 2 * 2},
        {"<!ATTLIST x y CDATA #IMPLIED>", 1},
    };
    for (const auto& [declaration, work] : declarations) {
        SCOPED_TRACE(declaration);
        // The document breaks off before anything else is counted.
        Session session(WithDoctype(declaration, ""), c_openSchema);
        session.parser->SetValidationWorkLimit(0, work);
        EXPECT_THAT(session.Parse(), testing::Not(Contains(HasSubstr("limit, Set"))));
        session.parser->SetValidationWorkLimit(0, work - 1);
        EXPECT_THAT(session.Parse(), c_isValidationWorkError);
    }
}

TEST(ParseLimits, ManyNamesInADeclarationEnd)
{
    const std::string names = Concatenate(10000, [](const std::string& i) { return "|e" + i; });
    const std::string optional =
        Concatenate(3000, [](const std::string& i) { return ",e" + i + "?"; });
    for (const std::string& declaration :
         {"<!ELEMENT a (#PCDATA" + names + ")*>", "<!ELEMENT a (b" + names + ")*>",
          "<!ELEMENT a (b" + optional + ")>", "<!ATTLIST a b (c" + names + ") #IMPLIED>"}) {
        Session session(WithDoctype(declaration, "<a/>"), c_targetSchema);
        EXPECT_THAT(session.Parse(), Contains(HasSubstr("(validation work limit, ")));
        EXPECT_EQ(session.sink->elements, 0U);
        // Nothing of it is work where nothing is validated.
        Session plain(WithDoctype(declaration, "<a/>"));
        EXPECT_THAT(plain.Parse(), IsEmpty());
    }
}

TEST(ParseLimits, OrdinaryModelsFit)
{
    // With models of 150 names.
    const std::string choice =
        "(b" + Concatenate(149, [](const std::string& i) { return "|b" + i; }) + ")*";
    const std::string sequence =
        "(b?" + Concatenate(149, [](const std::string& i) { return ",b" + i + "?"; }) + ")";
    for (const auto& [count, model] : {std::pair(300, choice), std::pair(40, sequence)}) {
        const std::string declarations = Concatenate(
            count, [&](const std::string& i) { return "<!ELEMENT b" + i + " " + model + ">"; });
        const std::string content = Concatenate(
            count, [](const std::string& i) { return "<b" + i + "><b0/></b" + i + ">"; });
        Session session(WithDoctype(declarations + "<!ELEMENT a ANY>", "<a>" + content + "</a>"),
                        c_targetSchema);
        session.parser->Parse();
        EXPECT_THAT(ToUtf8(session.parser->GetErrors()),
                    testing::Not(Contains(HasSubstr("limit, Set"))));
        EXPECT_EQ(session.sink->elements, 1U + 2U * static_cast<unsigned>(count));
    }
}

TEST(ParseLimits, AModelThatTakesExponentialMemoryEnds)
{
    const auto parse = [](std::size_t levels) {
        Session session(WithDoctype("<!ELEMENT b EMPTY><!ELEMENT c EMPTY><!ELEMENT a ((b|c)*,b" +
                                        Repeat(",(b|c)", levels) + ")>",
                                    "<a>" + Repeat("<b/>", levels + 1) + "</a>"),
                        c_targetSchema);
        return session.Parse();
    };
    EXPECT_THAT(parse(8), IsEmpty());
    EXPECT_THAT(parse(24), c_isValidationWorkError);
    EXPECT_THAT(parse(60), c_isValidationWorkError);
}

TEST(ParseLimits, ManySmallModelsOfExponentialSizeEnd)
{
    const std::string model = "((b|c)*,b" + Repeat(",(b|c)", 12) + ")";
    const std::string content = Repeat("<b/>", 13);
    const auto parse = [&](int count) {
        Session session(
            WithDoctype("<!ELEMENT b EMPTY><!ELEMENT c EMPTY><!ELEMENT a ANY>" +
                            Concatenate(count,
                                        [&](const std::string& i) {
                                            return "<!ELEMENT a" + i + " " + model + ">";
                                        }),
                        "<a>" +
                            Concatenate(count,
                                        [&](const std::string& i) {
                                            return "<a" + i + ">" + content + "</a" + i + ">";
                                        }) +
                            "</a>"),
            c_targetSchema);
        return session.Parse();
    };
    EXPECT_THAT(parse(10), IsEmpty());
    EXPECT_THAT(parse(1000), c_isValidationWorkError);
}

TEST(ParseLimits, MemoryThatAParseHoldsIsLimited)
{
    const char* const schema =
        "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'><xs:element name='a'>"
        "<xs:complexType><xs:sequence><xs:element name='b' maxOccurs='unbounded'><xs:complexType>"
        "<xs:attribute name='c' type='xs:ID'/></xs:complexType></xs:element></xs:sequence>"
        "</xs:complexType></xs:element></xs:schema>";
    const auto parse = [&](int count) {
        Session session(
            "<a>" + Concatenate(count, [](const std::string& i) { return "<b c='i" + i + "'/>"; }) +
                "</a>",
            schema);
        // Enough for the look-ups.
        session.parser->SetValidationWorkLimit(0, 1000000);
        return session.Parse();
    };
    // Identifiers are held to the end. The first mebibyte of all that is held is free.
    EXPECT_THAT(parse(2000), IsEmpty());
    EXPECT_THAT(parse(40000), AllOf(c_isValidationWorkError, Contains(HasSubstr("of memory"))));
}

TEST(ParseLimits, AContentModelThatTakesMoreStackThanThereIsEnds)
{
    const auto parse = [](const std::string& model) {
        Session session(WithDoctype("<!ELEMENT b EMPTY><!ELEMENT a " + model + ">", "<a><b/></a>"),
                        c_targetSchema);
        return session.Parse();
    };
    const auto makeModels = [](std::size_t levels) {
        const std::string open = Repeat("(", levels);
        return std::vector<std::string>{
            open + "b" + Repeat(")?", levels), open + "b" + Repeat("|b)", levels),
            open + "b" + Repeat(",b?)", levels), open + "b" + Repeat("|b)+", levels),
            "(b" + Repeat(",b?", levels) + ")"};
    };
    // Larger stacks take larger documents, which other limits allow more.
    RunOnSmallStack([&] {
        for (const std::string& model : makeModels(100))
            EXPECT_THAT(parse(model), IsEmpty());
        for (const std::string& model : makeModels(1500))
            EXPECT_THAT(parse(model), c_isStackError);
        // Names of mixed content are compared one after the other.
        EXPECT_THAT(parse("(#PCDATA" +
                          Concatenate(1500, [](const std::string& i) { return "|c" + i; }) +
                          "|b)*"),
                    IsEmpty());
    });
}

TEST(ParseLimits, AValueThatTakesMoreStackThanThereIsToMatchEnds)
{
    const auto parse = [](std::size_t words) {
        Session session("<a>" + Repeat("word ", words) + "</a>", c_wordsSchema.c_str());
        return session.Parse();
    };
    RunOnSmallStack([&] {
        EXPECT_THAT(parse(100), IsEmpty());
        EXPECT_THAT(parse(100000), c_isStackError);
    });
}

TEST(ParseLimits, AValueMayTakeMuchMemoryForAMomentToMatch)
{
    // A few hundred bytes a character, all of which are freed before the end of the element.
    std::string schema = c_wordsSchema;
    schema.replace(schema.find(c_wordsPattern), c_wordsPattern.size(), "(a|b)*");
    Session session("<a>" + Repeat("ab", 300000) + "</a>", schema.c_str());
    EXPECT_THAT(session.Parse(), IsEmpty());
}

TEST(ParseLimits, MemoryOfASchemaDoesNotCount)
{
    // Their values take some megabytes, more than the parse may hold.
    std::string schema = c_openSchema;
    schema.insert(schema.find("<xs:element"),
                  "<xs:simpleType name='t'><xs:restriction base='xs:string'>" +
                      Concatenate(20000,
                                  [](const std::string& i) {
                                      return "<xs:enumeration value='" + std::string(100, 'x') + i +
                                             "'/>";
                                  }) +
                      "</xs:restriction></xs:simpleType>");
    Session session("<a/>", schema.c_str());
    session.parser->SetValidationWorkLimit(0, 10);
    EXPECT_THAT(session.Parse(), IsEmpty());
}

TEST(ParseLimits, TheSinkMayChangeThemForTheNextParse)
{
    class LoweringSink : public CountingSink
    {
    public:
        void StartElement(TString&& name,
                          std::unordered_map<TString, TString>&& attributes) override
        {
            CountingSink::StartElement(std::move(name), std::move(attributes));
            limits->SetAmplificationLimit(0, 1);
            limits->SetValidationDepthLimit(1);
        }
        ParseLimits* limits = nullptr;
    };
    Utf8InputSource source("<a><a>text</a></a>", u"id", false);
    const auto sink = std::make_shared<LoweringSink>();
    const auto parser = XercesXMLParser::Create(source, sink);
    parser->LoadXSDString(c_openSchema, u"schema");
    sink->limits = parser.get();
    parser->Parse();
    EXPECT_THAT(ToUtf8(parser->GetErrors()), IsEmpty());
    parser->Parse();
    EXPECT_THAT(ToUtf8(parser->GetErrors()), c_isAmplificationError);
}

TEST(ParseLimits, WithoutSchemasManyNamesAreNoWork)
{
    Session session(
        "<a>" +
        Concatenate(100000,
                    [](const std::string& i) { return "<b" + i + " xmlns='u" + i + "'/>"; }) +
        "</a>");
    session.parser->SetValidationWorkLimit(0, 0);
    EXPECT_THAT(session.Parse(), IsEmpty());
}

// Schemas

TEST(ParseLimits, EntitiesOfASchemaAreLimited)
{
    Session session("<a/>", c_openSchema);
    const std::string schema =
        "<!DOCTYPE xs:schema [" + DoublingParameterEntities(40) + "]>" + c_openSchema;
    session.parser->LoadXSDString(TString::fromStdString(schema), u"hostile");
    EXPECT_TRUE(session.parser->HasFatallyErrored());
    EXPECT_THAT(
        ToUtf8(session.parser->GetErrors()),
        ElementsAre(AllOf(testing::StartsWith("Fatal Error"),
                          HasSubstr("(expansion limit, SetExpansionLimit) (id: hostile)"))));
    EXPECT_THAT(session.Parse(), IsEmpty());
}

TEST(ParseLimits, TextOfASchemaIsLimited)
{
    std::string schema = c_openSchema;
    schema.insert(schema.find("<xs:element"), "<xs:annotation><xs:documentation>" +
                                                  Repeat("&e;", 10000) +
                                                  "</xs:documentation></xs:annotation>");
    schema = "<!DOCTYPE xs:schema [<!ENTITY e '" + std::string(100000, 'x') + "'>]>" + schema;
    DOMParser parser;
    parser.AddXSDInputSource(std::make_unique<Utf8InputSource>(schema, u"hostile", false));
    EXPECT_THAT(ErrorsOf(*parser.ParseXmlString("<a/>", u"id")),
                testing::Contains(HasSubstr("(expansion limit, SetExpansionLimit) (id: hostile)")));
}

TEST(ParseLimits, ASchemaMayHaveEntities)
{
    std::string schema = c_openSchema;
    schema.insert(schema.find("name='a'") + 6, "&n;");
    schema = "<!DOCTYPE xs:schema [<!ENTITY n 'nn'>]>" + schema;
    Session session("<nna/>");
    session.parser->LoadXSDString(TString::fromStdString(schema), u"schema");
    EXPECT_FALSE(session.parser->HasErrors());
    EXPECT_THAT(session.Parse(), IsEmpty());
}

// All limits, wherever they are set

TEST(ParseLimits, AreSetOnEachParser)
{
    struct Case
    {
        std::string document;
        bool validates;
        std::function<void(ParseLimits&)> set;
        const char* setter;
    };
    const Case cases[] = {
        {"<a>text</a>", false, [](ParseLimits& limits) { limits.SetAmplificationLimit(0, 5); },
         "SetAmplificationLimit"},
        {WithDoctype("<!ENTITY % e ''>%e;", "<a/>"), false,
         [](ParseLimits& limits) { limits.SetExpansionLimit(0, 63); }, "SetExpansionLimit"},
        {"<a><a/></a>", true, [](ParseLimits& limits) { limits.SetValidationDepthLimit(1); },
         "SetValidationDepthLimit"},
        {"<a><b/></a>", true, [](ParseLimits& limits) { limits.SetValidationWorkLimit(0, 1); },
         "SetValidationWorkLimit"},
        {WithDoctype("<!ENTITY e ''>", "<a><bA/><ag/></a>"), false,
         [](ParseLimits& limits) { limits.SetNameCollisionLimit(1); }, "SetNameCollisionLimit"},
    };
    for (const Case& entry : cases) {
        const auto exceeds = ElementsAre(HasSubstr(entry.setter));
        const auto schema = [] {
            return std::make_unique<Utf8InputSource>(c_openSchema, u"schema", false);
        };
        DOMParser tree;
        StandaloneDOMParser standalone;
        if (entry.validates) {
            tree.AddXSDInputSource(schema());
            standalone.AddXSDInputSource(schema());
        }
        EXPECT_THAT(ErrorsOf(*tree.ParseXmlString(entry.document, u"id")), IsEmpty());
        entry.set(tree);
        EXPECT_THAT(ErrorsOf(*tree.ParseXmlString(entry.document, u"id")), exceeds);

        EXPECT_THAT(standalone.ParseXmlString(entry.document, u"id").errors, IsEmpty());
        entry.set(standalone);
        EXPECT_THAT(ToUtf8(standalone.ParseXmlString(entry.document, u"id").errors), exceeds);

        Session session(entry.document, entry.validates ? c_openSchema : nullptr);
        EXPECT_THAT(session.Parse(), IsEmpty());
        entry.set(*session.parser);
        EXPECT_THAT(session.Parse(), exceeds);
    }
}

TEST(ParseLimits, CanBeSwitchedOff)
{
    constexpr std::uint64_t c_off = std::numeric_limits<std::uint64_t>::max();
    const std::string text(1000000, 'x');
    Session session(WithDoctype("<!ENTITY e '" + text + "'>", "<a>" + Repeat("&e;", 20) + "</a>"));
    session.parser->SetAmplificationLimit(c_off, c_off);
    session.parser->SetExpansionLimit(c_off, c_off);
    EXPECT_THAT(session.ParseExpanding(), IsEmpty());
    EXPECT_EQ(session.sink->units, 20000002U);
    // Factors and thresholds switch off alone, too.
    session.parser->SetAmplificationLimit(c_off, 0);
    session.parser->SetExpansionLimit(0, c_off);
    EXPECT_THAT(session.Parse(), IsEmpty());
}

TEST(ParseLimits, TheTreeHoldsWhatCameBefore)
{
    DOMParser parser;
    parser.SetAmplificationLimit(0, 10);
    const auto dom = parser.ParseXmlString("<a><b>text</b><c>more text</c></a>", u"id");
    ASSERT_THAT(dom->GetErrors(), SizeIs(1));
    ASSERT_NE(dom->GetElement(u"b"), nullptr);
    EXPECT_EQ(dom->GetElement(u"b")->GetText(), u"text");
    EXPECT_EQ(parser.ParseXmlString("<a>x</a>", u"id")->GetErrors().size(), 0U);
}

TEST(ParseLimits, APosition)
{
    Session session("<a>\n<b/>\n<b/></a>");
    session.parser->SetAmplificationLimit(0, 5);
    EXPECT_THAT(session.Parse(),
                ElementsAre("Fatal Error(3,1): the document yields more than 5 units and 0 times "
                            "the bytes of the document (amplification limit, "
                            "SetAmplificationLimit) (id: id)"));
}
