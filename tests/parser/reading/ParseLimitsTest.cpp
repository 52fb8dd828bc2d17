#include "support/ErrorsOf.h"
#include "support/LimitedParse.h"
#include "support/Repeat.h"

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
using testing::SizeIs;

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

/// Of amplification and expansion: those that are there at first take seconds to reach.
constexpr std::uint64_t c_lowThreshold = 24U << 20;

const auto c_isExpansionError = IsOnlyError("expansion", "SetExpansionLimit");

} // namespace

TEST(ParseLimits, AreOnFromTheStart)
{
    const ParseLimits limits;
    EXPECT_EQ(limits.GetAmplificationLimit(), (ParseLimits::Growth{100, 536870912}));
    EXPECT_EQ(limits.GetExpansionLimit(), (ParseLimits::Growth{100, 268435456}));
    EXPECT_EQ(limits.GetValidationDepthLimit(), 40000U);
    EXPECT_EQ(limits.GetValidationWorkLimit(), (ParseLimits::Growth{100, 268435456}));
    EXPECT_EQ(limits.GetNameCollisionLimit(), 4096U);
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
         3 * 47},
        {WithDoctype("<!ENTITY e '<b c=\"d\">x</b><e/>'>", "<a f=''>&e;<b/>&e;</a>"),
         4 * 47 + 2 * 47},
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
    session.parser->SetAmplificationLimit(0, 2 + 6 + 48);
    EXPECT_THAT(session.Parse(), IsEmpty());
    session.parser->SetAmplificationLimit(0, 2 + 6 + 47);
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
    session.parser->SetAmplificationLimit(100, 0);
    // The work is that of reading the entity, which is limited, too.
    EXPECT_THAT(session.ParseExpanding(), c_isAmplificationError);
    EXPECT_LE(session.sink->units, 100 * document.size());
}

TEST(ParseLimits, ALargeEntityUsedOftenInAttributesIsLimitedBeforeTheTagEnds)
{
    Session session(WithDoctype("<!ENTITY e '" + std::string(100000, 'x') + "'>",
                                "<a b='" + Repeat("&e;", 10000) + "'/>"));
    session.parser->SetExpansionLimit(100, c_lowThreshold);
    EXPECT_THAT(session.ParseExpanding(), c_isExpansionError);
    EXPECT_EQ(session.sink->elements, 0U);
}

TEST(ParseLimits, ManyDefaultAttributesOnManyElementsAreAmplification)
{
    const std::string document = WithDoctype(
        Concatenate(1000, [](const std::string& i) { return "<!ATTLIST a b" + i + " CDATA 'c'>"; }),
        "<a>" + Repeat("<a/>", 16000) + "</a>");
    Session session(document);
    session.parser->SetAmplificationLimit(100, c_lowThreshold);
    EXPECT_THAT(session.Parse(), c_isAmplificationError);
    EXPECT_LE(session.sink->units, c_lowThreshold);
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
            session.parser->SetAmplificationLimit(100, c_lowThreshold);
            EXPECT_THAT(session.Parse(), c_isAmplificationError);
            const std::uint64_t units =
                std::max<std::uint64_t>(c_lowThreshold, 100 * document.size());
            EXPECT_LE(session.sink->attributeCount, units / 48);
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
        session.parser->SetAmplificationLimit(100, c_lowThreshold);
        EXPECT_THAT(session.ParseExpanding(), c_isAmplificationError);
        EXPECT_LE((session.sink->elements + session.sink->attributeCount) * 48, c_lowThreshold);
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
        "<a>" + Concatenate(28000, [](const std::string& i) { return "<b" + i + "/>"; }) + "</a>",
        c_openSchema);
    EXPECT_THAT(unknown.Parse(), IsEmpty());
    // Whose attributes are looked up nowhere.
    Session attributes(Repeat("<a>", 3000) +
                           Repeat("<a b='' c='' d='' e='' f='' g='' h='' i=''/>", 50000) +
                           Repeat("</a>", 3000),
                       c_openSchema);
    EXPECT_THAT(attributes.Parse(), IsEmpty());
    const auto declare = [](const std::string& declaration) {
        Session session(WithDoctype(declaration, ""), c_openSchema);
        session.parser->Parse();
        return ToUtf8(session.parser->GetErrors());
    };
    const std::string names = Concatenate(8000, [](const std::string& i) { return "|e" + i; });
    for (const std::string& declaration :
         {"<!ELEMENT a (b" + names + ")*>", "<!ELEMENT a (#PCDATA" + names + ")*>",
          "<!ATTLIST a b (c" + names + ") #IMPLIED>"})
        EXPECT_THAT(declare(declaration), testing::Not(Contains(HasSubstr("limit, Set"))));
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
        {WithDoctype("<!ENTITY % e ' <!--c-->'>%e;", "<a/>"), 513 + 9},
        {WithDoctype("<!ENTITY e 'value'>", "<a>&e;&e;</a>"), 2 * (513 + 5)},
        {WithDoctype("<!ENTITY e 'value'>", "<a b='&e;'/>"), 513 + 5},
        {WithDoctype("<!ENTITY e 'value'><!ATTLIST x b CDATA '&e;'>", "<a/>"), 513 + 5},
        {WithDoctype("<!ENTITY e 'value'><!ENTITY f '&e;'>", "<a>&f;</a>"), 513 + 3 + 514 + 5},
        {WithDoctype("<!ENTITY % e ''><!ENTITY % f '&#37;e;'>%f;%e;", "<a/>"), 513 + 3 + 514 + 513},
        {WithDoctype("<!ENTITY e '<b>&f;</b>'><!ENTITY f '\xF0\x9F\x98\x80'>", "<a>&e;</a>"),
         513 + 10 + 514 + 2},
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
        session.parser->SetExpansionLimit(100, c_lowThreshold);
        EXPECT_THAT(session.Parse(), c_isExpansionError);
        EXPECT_EQ(session.sink->elements, 0U);
    }
}

TEST(ParseLimits, AParameterEntityOfMuchTextUsedOftenEnds)
{
    Session session(WithDoctype(
        "<!ENTITY % e '<!--" + std::string(100000, 'x') + "-->'>" + Repeat("%e;", 25000), "<a/>"));
    session.parser->SetExpansionLimit(100, c_lowThreshold);
    EXPECT_THAT(session.Parse(), c_isExpansionError);
}

TEST(ParseLimits, DeeplyNestedParameterEntitiesEnd)
{
    Session few(WithDoctype(NestedParameterEntities(100), "<a/>"));
    EXPECT_THAT(few.Parse(), IsEmpty());
    Session session(WithDoctype(NestedParameterEntities(20000), "<a/>"));
    session.parser->SetExpansionLimit(100, c_lowThreshold);
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
        session.parser->SetExpansionLimit(100, c_lowThreshold);
        EXPECT_THAT(session.Parse(), c_isExpansionError);
        EXPECT_THAT(session.ParseExpanding(), c_isExpansionError);
    }
}

TEST(ParseLimits, EntitiesWithoutTextEnd)
{
    // Nothing of this reaches the sink.
    Session session(WithDoctype("<!ENTITY e '<!--" + std::string(100000, 'x') + "-->'>",
                                "<a>" + Repeat("&e;", 10000) + "</a>"));
    session.parser->SetExpansionLimit(100, c_lowThreshold);
    EXPECT_THAT(session.ParseExpanding(), c_isExpansionError);
}

TEST(ParseLimits, ManyAttributeDeclarationsAndManyElementsEnd)
{
    // None has a default value.
    Session session(WithDoctype(
        Concatenate(10000,
                    [](const std::string& i) { return "<!ATTLIST a b" + i + " CDATA #IMPLIED>"; }),
        "<a>" + Repeat("<a/>", 100000) + "</a>"));
    session.parser->SetExpansionLimit(100, c_lowThreshold);
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
         [](ParseLimits& limits) { limits.SetExpansionLimit(0, 512); }, "SetExpansionLimit"},
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
