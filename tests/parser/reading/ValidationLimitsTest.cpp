#include "support/CollidingNames.h"
#include "support/LimitedParse.h"
#include "support/Repeat.h"
#include "support/SmallStack.h"

namespace {

using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::MatchesRegex;

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

std::string Nest(int levels)
{
    return Repeat("<a>", static_cast<std::size_t>(levels)) +
           Repeat("</a>", static_cast<std::size_t>(levels));
}

const auto c_isDepthError = IsOnlyError("validation depth", "SetValidationDepthLimit");
const auto c_isValidationWorkError = IsOnlyError("validation work", "SetValidationWorkLimit");
const auto c_isStackError =
    ElementsAre(MatchesRegex("Fatal Error\\([0-9]+,[0-9]+\\): validation takes more stack than the "
                             "thread has \\(id: id\\)"));

} // namespace

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

TEST(ParseLimits, FortyThousandLevelsCanBeValidated)
{
    RunOnSmallStack([] {
        Session most(Nest(40000), c_openSchema);
        EXPECT_THAT(most.Parse(), IsEmpty());
        Session more(Nest(40001), c_openSchema);
        EXPECT_THAT(more.Parse(), c_isDepthError);
        EXPECT_EQ(more.sink->elements, 40000U);
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
        // Attributes with a prefix are looked up, too, but for declarations.
        {"<a b='' c=''/>", 1},
        {"<a xml:b='' c=''/>", 2 * 1},
        // Of which four count one, until their element ends.
        {"<a xmlns:p='u' xmlns:q='u' xmlns:r='u' xmlns:s='u'><a/></a>", (1 + 1) + (2 + 1)},
        {"<a xmlns:p='u' xmlns:q='u' xmlns:r='u' xmlns:s='u' xmlns:t='u'><a/></a>",
         (1 + 1) + (2 + 1)},
        {"<a><a xmlns:p='u' xmlns:q='u' xmlns:r='u' xmlns:s='u' r:b=''/><a/></a>",
         1 + 2 * (2 + 1) + 2},
        {"<a><b/><b/></a>", 1 + 2 * (2 + 8)},
        {"<a><b xmlns='u'/><b xmlns='v'/><b xmlns='v'/></a>", 1 + (2 + 8) + 2 * (2 + 16)},
        // The hashes of letters are 29 apart.
        {"<a><b/><E/></a>", 1 + (2 + 8) + (2 + 16)},
        {"<a><b/><F/></a>", 1 + (2 + 8) + (2 + 8)},
    };
    for (const auto& [document, work] : documents) {
        SCOPED_TRACE(document);
        Session session(document, c_openSchema);
        const std::uint64_t threshold = (work + 3) / 4;
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
    session.parser->SetValidationWorkLimit(0, 290 * 20 * 2 / 4 + 4);
    EXPECT_THAT(session.Parse(), IsEmpty());
}

TEST(ParseLimits, ManyElementsThatNoSchemaKnowsEnd)
{
    const auto parse = [](const std::string& content) {
        Session session("<a>" + content + "</a>", c_openSchema);
        // An eighth of the limit, for it is the square that counts.
        session.parser->SetValidationWorkLimit(1, 32U << 20);
        return session.Parse();
    };
    EXPECT_THAT(parse(Concatenate(11500, [](const std::string& i) { return "<b" + i + "/>"; })),
                IsEmpty());
    EXPECT_THAT(parse(Concatenate(13500, [](const std::string& i) { return "<b" + i + "/>"; })),
                c_isValidationWorkError);
    // Those that share a bucket take more time.
    const auto shareABucket = [](unsigned count) {
        std::string text;
        for (const std::string& name : MakeCollidingNames(count))
            text += "<" + name + "/>";
        return text;
    };
    EXPECT_THAT(parse(shareABucket(5200)), IsEmpty());
    EXPECT_THAT(parse(shareABucket(5600)), c_isValidationWorkError);
    // Those that the caches hold take less time.
    EXPECT_THAT(
        parse(Repeat(Concatenate(4000, [](const std::string& i) { return "<b" + i + "/>"; }), 20)),
        IsEmpty());
    EXPECT_THAT(
        parse(Concatenate(6000, [](const std::string& i) { return "<b xmlns='u" + i + "'/>"; })),
        c_isValidationWorkError);
}

TEST(ParseLimits, ManyNamespaceDeclarationsEnd)
{
    const std::string declarations =
        Concatenate(40000, [](const std::string& i) { return " xmlns:p" + i + "='u'"; });
    Session session("<a" + declarations + ">" + Repeat("<a/>", 40000) + "</a>", c_openSchema);
    session.parser->SetValidationWorkLimit(100, 32U << 20);
    EXPECT_THAT(session.Parse(), c_isValidationWorkError);
}

TEST(ParseLimits, ValidationWorkCountsTheModelsThatADocumentTypeDeclares)
{
    // The names times the particles, and for each state a 64th of the square of the names.
    const auto list = [](int names, const char* suffix) {
        return Concatenate(names - 1, [&](const std::string& i) { return ",b" + i + suffix; });
    };
    const std::string choice = Concatenate(31, [](const std::string& i) { return "|b" + i; });
    const std::pair<std::string, std::uint64_t> declarations[] = {
        {"<!ELEMENT x (b)>", 1},
        {"<!ELEMENT x (b?)>", 2},
        {"<!ELEMENT x ((b | c)*, d)>", 3 * 4},
        {"<!ELEMENT x (#PCDATA | b | c)*>", 3 * 4},
        {"<!ELEMENT x (b" + list(32, "") + ")>", 32 * 32 + 32 * 32 * 32 / 64},
        {"<!ELEMENT x (b?" + list(32, "?") + ")>", 32 * 64 + 32 * 32 * 32 / 64},
        // There is no sequence, and one repetition, or one for each name.
        {"<!ELEMENT x (b" + choice + ")>", 32 * 32 + 32 * 32 * 1 / 64},
        {"<!ELEMENT x (b" + choice + ")*>", 32 * 33 + 32 * 32 * 2 / 64},
        {"<!ELEMENT x (b*" + Concatenate(31, [](const std::string& i) { return "|b" + i + "*"; }) +
             ")>",
         32 * 64 + 32 * 32 * 32 / 64},
        {"<!ELEMENT x (b)><!ELEMENT y (b)>", 1 + 1},
        {"<!ATTLIST x y (b | c | d | e | f) 'b'>", 5 * 5 / 4},
        {"<!NOTATION b SYSTEM 'b'><!ATTLIST x y NOTATION (b) #IMPLIED>", 2 * 2 / 4},
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
    const std::string names = Concatenate(20000, [](const std::string& i) { return "|e" + i; });
    const std::string optional =
        Concatenate(3000, [](const std::string& i) { return ",e" + i + "?"; });
    for (const std::string& declaration :
         {"<!ELEMENT a (#PCDATA" + names + ")*>", "<!ELEMENT a (b" + names + ")*>",
          "<!ELEMENT a (b" + optional + ")>", "<!ATTLIST a b (c" + names + ") #IMPLIED>"}) {
        Session session(WithDoctype(declaration, "<a/>"), c_targetSchema);
        session.parser->SetValidationWorkLimit(100, 64U << 20);
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
        session.parser->SetValidationWorkLimit(100, 64U << 20);
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
        session.parser->SetValidationWorkLimit(100, 64U << 20);
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
