// Where memory, or a limit, fails while a parser has schemas. What loading a schema does otherwise
// is tested in AbstractXMLParserTest.cpp.

#include "support/FailingAllocations.h"
#include "support/ParserSession.h"
#include "support/Repeat.h"
#include "support/ServingSink.h"
#include "support/TemporaryFile.h"
#include "support/Validation.h"

#include <kescorexml/Utf8InputSource.h>
#include <kescorexml/XercesXMLParser.h>

#include <gmock/gmock.h>

#include <limits>
#include <memory>
#include <new>
#include <string>
#include <vector>

namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

constexpr std::size_t c_all = std::numeric_limits<std::size_t>::max();

/// Where the memory for the reader of a document fails, which takes some ten allocations, the
/// scanner forgets the stream that it was to read.
constexpr std::ptrdiff_t c_maximumForgotten = 10;

const char* const c_schemaId = "s.xsd";

/// Keys, a reference to them, a unique value and a pattern, in a model of some size.
std::string ConstrainedSchema()
{
    std::string optional;
    for (int i = 0; i < 40; ++i)
        optional += "<xs:element name='c" + std::to_string(i) + "' minOccurs='0'/>";
    return SchemaOf("<xs:element name='a'><xs:complexType><xs:sequence>"
                    "<xs:element name='b' maxOccurs='9'><xs:complexType><xs:attribute name='i'>"
                    "<xs:simpleType><xs:restriction base='xs:string'>"
                    "<xs:pattern value='(a+)+(b|c)*'/></xs:restriction></xs:simpleType>"
                    "</xs:attribute><xs:attribute name='j' type='xs:int'/>"
                    "<xs:attribute name='k'/></xs:complexType></xs:element>" +
                    optional +
                    "</xs:sequence></xs:complexType>"
                    "<xs:key name='one'><xs:selector xpath='b'/><xs:field xpath='@i'/>"
                    "<xs:field xpath='@j'/></xs:key>"
                    "<xs:keyref name='two' refer='one'><xs:selector xpath='.//b'/>"
                    "<xs:field xpath='@i'/><xs:field xpath='@j'/></xs:keyref>"
                    "<xs:unique name='three'><xs:selector xpath='b'/><xs:field xpath='@k'/>"
                    "</xs:unique></xs:element>");
}

const std::string c_valid = "<a><b i='ab' j='1' k='x'/><b i='aac' j='2' k='y'/><c7/></a>";
/// Against the key, the unique value, the pattern and the model.
const std::string c_invalid =
    "<a><b i='ab' j='1' k='x'/><b i='ab' j='01' k='x'/><b i='d' j='3'/><d/></a>";

ParseOutcome ParseWith(XercesXMLParser& parser, const std::string& text)
{
    Utf8InputSource source(text, u"id", false);
    const auto sink = std::make_shared<RecordingSink>();
    parser.Reload(source, sink);
    parser.Parse();
    return GetOutcome(parser, *sink);
}

struct Outcomes
{
    std::vector<TString> schemas;
    ParseOutcome valid;
    ParseOutcome invalid;

    bool operator==(const Outcomes&) const = default;
};

Outcomes ParseBoth(XercesXMLParser& parser)
{
    // In this order, so that what the invalid one leaves shows when the parser is used again.
    const ParseOutcome valid = ParseWith(parser, c_valid);
    return {parser.GetXSDNames(), valid, ParseWith(parser, c_invalid)};
}

/// Of a parser of its own.
Outcomes ParseBothAnew(const std::vector<std::string>& schemas)
{
    ParserSession session(c_valid);
    for (const std::string& schema : schemas)
        EXPECT_THAT(session.Load(schema).errors, IsEmpty());
    return ParseBoth(*session.parser);
}

/// Whether memory failed.
template <typename Work>
bool RunWith(std::size_t allowed, std::size_t failures, Work&& work)
{
    const FailingAllocations failing(allowed, failures);
    try {
        work();
    } catch (const std::bad_alloc&) {
        EXPECT_TRUE(FailingAllocations::HasFailed());
    }
    return FailingAllocations::HasFailed();
}

/// Has memory fail at each allocation of the parse of a document, and then all from there on.
void ExpectToOutliveFailures(const std::string& text)
{
    const Outcomes expected = ParseBothAnew({ConstrainedSchema()});
    ParserSession session(text);
    ASSERT_THAT(session.Load(ConstrainedSchema()).errors, IsEmpty());
    const bool isValid = session.Parse().errors.empty();
    ASSERT_EQ(ParseBoth(*session.parser), expected);
    const std::ptrdiff_t before = CountLiveAllocations();
    for (const std::size_t failures : {std::size_t(1), c_all}) {
        for (std::size_t allowed = 0;; ++allowed) {
            session.sink = std::make_shared<RecordingSink>();
            session.parser->Reload(session.source, session.sink);
            bool hasThrown = true;
            const bool hasFailed = RunWith(allowed, failures, [&] {
                session.parser->Parse();
                hasThrown = false;
            });
            ASSERT_TRUE(isValid || hasThrown || session.parser->HasErrors()) << "after " << allowed;
            if (!hasFailed)
                break;
            ASSERT_EQ(ParseBoth(*session.parser), expected) << "after " << allowed;
        }
    }
    session.sink->events.clear();
    EXPECT_LE(CountLiveAllocations(), before + 2 * c_maximumForgotten);
}

/// Has memory fail while the last of the schemas is loaded, at allocations that are `step` apart.
void ExpectToLoadOrNot(const std::vector<std::string>& former, std::size_t step)
{
    const std::string schema = ConstrainedSchema();
    std::vector<std::string> all = former;
    all.push_back(schema);
    const Outcomes expectedBefore = ParseBothAnew(former);
    const Outcomes expected = ParseBothAnew(all);
    ASSERT_NE(expected, expectedBefore);
    const std::ptrdiff_t before = CountLiveAllocations();
    for (const std::size_t failures : {std::size_t(1), c_all}) {
        std::size_t thrown = 0;
        for (std::size_t allowed = 0;; allowed += step) {
            ParserSession session(c_valid);
            for (const std::string& one : former)
                session.Load(one);
            const TString text = TString::fromStdString(schema);
            bool hasThrown = true;
            const bool hasFailed = RunWith(allowed, failures, [&] {
                session.parser->LoadXSDString(text, c_schemaId);
                hasThrown = false;
            });
            thrown += hasThrown ? 1U : 0U;
            const bool hasErrors = session.parser->HasErrors();
            if (hasThrown) {
                ASSERT_EQ(ParseBoth(*session.parser), expectedBefore) << "after " << allowed;
                session.parser->ClearErrorsAndWarnings();
                ASSERT_THAT(session.Load(schema).errors, IsEmpty());
            }
            if (hasThrown || !hasErrors) {
                ASSERT_EQ(ParseBoth(*session.parser), expected) << "after " << allowed;
            }
            if (!hasFailed)
                break;
        }
        EXPECT_GT(thrown, 100U);
    }
    EXPECT_LE(CountLiveAllocations(), before + 8 * c_maximumForgotten);
}

/// Each particle stands in the one before.
std::string DeepModel(int names)
{
    std::string model = "(z";
    for (int i = 0; i < names; ++i)
        model += ",b" + std::to_string(i);
    return model + ")";
}

} // namespace

TEST(XercesXMLParserSchemas, NothingIsFreedTwiceWhenMemoryFailsAmongConstraints)
{
    ExpectToOutliveFailures(c_valid);
    ExpectToOutliveFailures(c_invalid);
}

TEST(XercesXMLParserSchemas, AreAsBeforeWhenMemoryFailsWhileOneMoreIsLoaded)
{
    ExpectToLoadOrNot({"<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema' "
                       "targetNamespace='urn:n'><xs:element name='z' type='xs:int'/></xs:schema>"},
                      5);
}

TEST(XercesXMLParserSchemas, AreNoneWhenMemoryFailsWhileTheFirstIsLoaded)
{
    ExpectToLoadOrNot({}, 11);
}

// What the scanner has half done when a limit stops it in the middle is no different from what it
// has when memory does.
TEST(XercesXMLParserSchemas, AreAsBeforeWhenALimitEndsAValidation)
{
    const Outcomes expected = ParseBothAnew({ConstrainedSchema()});
    ParserSession session(c_valid);
    ASSERT_THAT(session.Load(ConstrainedSchema()).errors, IsEmpty());
    const ParseLimits::Growth limit = session.parser->GetValidationWorkLimit();
    // A tag may take 32 KiB for nothing, of which the values that are no keys leave little.
    const std::string text =
        "<!DOCTYPE a [<!ENTITY e 'x'>]><a><b i='ab' j='1' k='" + std::string(2048, 'x') + "'/></a>";
    std::uint64_t allowed = 0;
    for (bool hasEnded = true; hasEnded; allowed += 16) {
        session.parser->SetValidationWorkLimit(0, allowed);
        hasEnded = ParseWith(*session.parser, text).fatal;
        session.parser->SetValidationWorkLimit(limit.factor, limit.threshold);
        ASSERT_EQ(ParseBoth(*session.parser), expected) << "after " << allowed;
    }
    EXPECT_GT(allowed, 1000U);
}

TEST(XercesXMLParserSchemas, ThatCannotBeLoadedAgainAreReportedInsteadOfForgotten)
{
    const TemporaryFolder folder;
    const TString path =
        folder.Write("types.xsd", SchemaOf("<xs:simpleType name='T'><xs:restriction base='xs:int'/>"
                                           "</xs:simpleType>"));
    const auto sink = std::make_shared<ServingSink>();
    sink->resolve = [&](const TString&) { return path; };
    ParserSession session("<a>5</a>");
    session.parser->Reload(session.source, sink);
    ASSERT_THAT(session
                    .Load(SchemaOf("<xs:include schemaLocation='types.xsd'/>"
                                   "<xs:element name='a' type='T'/>"))
                    .errors,
                IsEmpty());
    ASSERT_THAT(session.Parse().errors, IsEmpty());
    std::size_t allowed = 0;
    while (RunWith(allowed, 1, [&] { session.parser->Parse(); }) &&
           session.parser->GetErrors() != std::vector<TString>{u"OutOfMemoryException"})
        ++allowed;
    // It serves nothing any more.
    sink->resolve = nullptr;
    for (int i = 0; i < 2; ++i) {
        const ParseOutcome outcome = session.Parse();
        EXPECT_TRUE(outcome.fatal);
        EXPECT_THAT(outcome.errors, Contains(HasSubstr("the schema cannot be loaded as before")));
    }
    EXPECT_THAT(session.Load(SchemaOf("<xs:element name='b'/>")).errors,
                Contains(HasSubstr("the schema cannot be loaded as before")));
    sink->resolve = [&](const TString&) { return path; };
    EXPECT_THAT(session.Parse().errors, IsEmpty());
}

TEST(XercesXMLParserSchemas, ANamespaceDeclarationCostsNothingBehindItsElement)
{
    ParserSession session("<a>" + Repeat("<b xmlns:p='urn:p'/>", 20'000) + "</a>");
    ASSERT_THAT(session
                    .Load(SchemaOf("<xs:element name='a'><xs:complexType><xs:sequence>"
                                   "<xs:element name='b' maxOccurs='unbounded'/>"
                                   "</xs:sequence></xs:complexType></xs:element>"))
                    .errors,
                IsEmpty());
    session.parser->SetValidationWorkLimit(0, 1'000'000);
    EXPECT_THAT(session.Parse().errors, IsEmpty());
}

TEST(XercesXMLParserSchemas, LargeModelsOfADocumentAreTakenApartWithoutMemory)
{
    // The entity leaves it to the scanner.
    const std::string text =
        "<!DOCTYPE a [<!ENTITY e 'x'><!ELEMENT a " + DeepModel(5000) + ">]><a/>";
    auto session = std::make_unique<ParserSession>(text);
    ASSERT_THAT(session->Parse().errors, IsEmpty());
    RunWith(0, c_all, [&] { session.reset(); });
    std::size_t failed = 0;
    for (std::size_t allowed = 0;; allowed += 997) {
        ParserSession failing(text);
        bool hasThrown = true;
        const bool hasFailed = RunWith(allowed, c_all, [&] {
            failing.parser->Parse();
            hasThrown = false;
        });
        if (!hasFailed)
            break;
        EXPECT_TRUE(hasThrown || failing.parser->HasErrors());
        ++failed;
    }
    EXPECT_GT(failed, 10U);
}

TEST(XercesXMLParserSchemas, LargeModelsOfSchemasAreTakenApartWithoutMemory)
{
    const std::string schema =
        SchemaOf("<xs:element name='a'><xs:complexType>" +
                 Repeat("<xs:sequence><xs:element name='b'/>", 700) +
                 Repeat("</xs:sequence>", 700) + "</xs:complexType></xs:element>");
    auto session = std::make_unique<ParserSession>("<a/>");
    ASSERT_THAT(session->Load(schema).errors, IsEmpty());
    RunWith(0, c_all, [&] { session.reset(); });
    std::size_t failed = 0;
    for (std::size_t allowed = 0;; allowed += 1009) {
        ParserSession failing("<a/>");
        const TString text = TString::fromStdString(schema);
        if (!RunWith(allowed, c_all, [&] { failing.parser->LoadXSDString(text, c_schemaId); }))
            break;
        ++failed;
    }
    EXPECT_GT(failed, 10U);
}
