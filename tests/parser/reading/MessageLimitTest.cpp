#include "support/ParseOutcome.h"
#include "support/Repeat.h"

#include <kescorexml/DOM.h>
#include <kescorexml/DOMParser.h>
#include <kescorexml/StandaloneDOMParser.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <numeric>

namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::EndsWith;
using testing::Gt;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Lt;
using testing::SizeIs;
using testing::StartsWith;

constexpr std::uint64_t c_off = std::numeric_limits<std::uint64_t>::max();

const char* const c_schema =
    "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'><xs:element name='a'><xs:complexType>"
    "<xs:sequence><xs:element name='b' type='xs:int' minOccurs='0' maxOccurs='unbounded'/>"
    "</xs:sequence></xs:complexType></xs:element></xs:schema>";

/// Errors of different lengths in different lines.
const std::string c_document = "<a>\n<b>x</b>\n<b>some words</b>\n<b>1</b>\n<b/>\n"
                               "<b>words without any number</b>\n</a>";

std::unique_ptr<InputSource> MakeSchemaSource()
{
    return std::make_unique<Utf8InputSource>(c_schema, u"schema", false);
}

/// A parser for one document, which validates.
struct Session
{
    explicit Session(std::string text)
        : source(std::move(text), u"id", false),
          parser(XercesXMLParser::Create(source, std::make_shared<RecordingSink>()))
    {
        parser->LoadXSDString(c_schema, u"schema");
    }
    std::vector<XMLDiagnostic> Parse()
    {
        parser->Parse();
        return parser->GetErrorDiagnostics();
    }

    Utf8InputSource source;
    std::unique_ptr<XercesXMLParser> parser;
};

std::vector<std::string> MessagesOf(const std::vector<XMLDiagnostic>& diagnostics,
                                    std::size_t count)
{
    std::vector<std::string> messages;
    for (std::size_t i = 0; i < count; ++i)
        messages.push_back(diagnostics[i].GetMessage().toStdString());
    return messages;
}

std::vector<std::string> MessagesOf(const std::vector<XMLDiagnostic>& diagnostics)
{
    return MessagesOf(diagnostics, diagnostics.size());
}

/// What the first `count` messages take.
std::uint64_t CostOf(const std::vector<XMLDiagnostic>& diagnostics, std::size_t count)
{
    return std::accumulate(
        diagnostics.begin(), diagnostics.begin() + static_cast<std::ptrdiff_t>(count),
        std::uint64_t(0), [](std::uint64_t sum, const XMLDiagnostic& message) {
            return sum + static_cast<std::uint64_t>(message.GetText().length()) + 64;
        });
}

/// How a list ends of which so many are missing.
std::string GetText(std::uint64_t missing, std::uint64_t threshold)
{
    return std::to_string(missing) + " more from here on; all messages take more than " +
           std::to_string(threshold) +
           " units and 0 times the bytes of the document (message limit, SetMessageLimit)";
}

void ExpectMissing(const std::vector<XMLDiagnostic>& all, const std::vector<XMLDiagnostic>& some,
                   std::size_t kept, std::uint64_t threshold)
{
    ASSERT_EQ(some.size(), kept + 1);
    EXPECT_EQ(MessagesOf(some, kept), MessagesOf(all, kept));
    const XMLDiagnostic& end = some.back();
    EXPECT_EQ(end.GetText().toStdString(), GetText(all.size() - kept, threshold));
    EXPECT_EQ(end.GetKind(), XMLDiagnostic::Kind::Error);
    // Of the first that is missing.
    EXPECT_EQ(end.GetLine(), all[kept].GetLine());
    EXPECT_EQ(end.GetColumn(), all[kept].GetColumn());
    EXPECT_EQ(end.GetId(), all[kept].GetId());
}

} // namespace

TEST(MessageLimit, KeepsWhatFitsInAndSaysHowManyAreMissing)
{
    Session session(c_document);
    const std::vector<XMLDiagnostic> all = session.Parse();
    ASSERT_THAT(all, SizeIs(Gt(3U)));
    for (std::size_t kept = 0; kept <= all.size(); ++kept) {
        SCOPED_TRACE(kept);
        const std::uint64_t cost = CostOf(all, kept);
        const std::uint64_t least = kept == all.size() ? cost : CostOf(all, kept + 1) - 1;
        for (const std::uint64_t threshold : {cost, least}) {
            session.parser->SetMessageLimit(0, threshold);
            const std::vector<XMLDiagnostic> some = session.Parse();
            if (kept == all.size())
                EXPECT_EQ(MessagesOf(some), MessagesOf(all));
            else
                ExpectMissing(all, some, kept, threshold);
            EXPECT_TRUE(session.parser->HasErrors());
            EXPECT_FALSE(session.parser->HasFatallyErrored());
            EXPECT_THAT(session.parser->GetMetadataForErrors(), SizeIs(some.size()));
            EXPECT_EQ(ToUtf8(session.parser->GetErrors()), MessagesOf(some));
        }
    }
}

TEST(MessageLimit, HoldsOnEachParser)
{
    DOMParser tree;
    tree.AddXSDInputSource(MakeSchemaSource());
    const auto document = tree.ParseXmlString(c_document, u"id");
    const std::vector<XMLDiagnostic> all = document->GetErrorDiagnostics();
    const std::uint64_t threshold = CostOf(all, 2);
    tree.SetMessageLimit(0, threshold);
    const auto limited = tree.ParseXmlString(c_document, u"id");
    ExpectMissing(all, limited->GetErrorDiagnostics(), 2, threshold);
    EXPECT_THAT(limited->GetErrors(), SizeIs(3));
    EXPECT_THAT(limited->GetMetadataForErrors(), SizeIs(3));
    // The tree is whole all the same.
    EXPECT_EQ(*limited, *document);

    StandaloneDOMParser standalone;
    standalone.AddXSDInputSource(MakeSchemaSource());
    standalone.SetMessageLimit(0, threshold);
    const StandaloneParseResult result = standalone.ParseXmlString(c_document, u"id");
    ExpectMissing(all, result.diagnostics, 2, threshold);
    EXPECT_EQ(ToUtf8(result.errors), MessagesOf(result.diagnostics));
}

TEST(MessageLimit, NeverTakesAFatalErrorAway)
{
    Session session(c_document.substr(0, c_document.size() - 1));
    const std::vector<XMLDiagnostic> all = session.Parse();
    ASSERT_TRUE(session.parser->HasFatallyErrored());
    session.parser->SetMessageLimit(0, CostOf(all, 1));
    const std::vector<XMLDiagnostic> some = session.Parse();
    EXPECT_TRUE(session.parser->HasFatallyErrored());
    const std::vector<std::string> messages = MessagesOf(all);
    EXPECT_THAT(MessagesOf(some),
                ElementsAre(messages.front(), messages.back(),
                            AllOf(StartsWith("Error(3,"),
                                  HasSubstr(GetText(all.size() - 2, CostOf(all, 1))),
                                  EndsWith(" (id: id)"))));
}

TEST(MessageLimit, LeavesAFatalErrorAloneThatIsTheOnlyMessage)
{
    Utf8InputSource source(std::string("<a>"), u"id", false);
    const auto parser = XercesXMLParser::Create(source, std::make_shared<RecordingSink>());
    parser->Parse();
    const std::vector<std::string> expected = ToUtf8(parser->GetErrors());
    ASSERT_THAT(expected, SizeIs(1));
    parser->SetMessageLimit(0, 0);
    parser->Parse();
    EXPECT_EQ(ToUtf8(parser->GetErrors()), expected);
}

TEST(MessageLimit, CountsErrorsAndWarningsTogether)
{
    // Attributes of elements that nobody declares are a warning each.
    const std::string type = "<!DOCTYPE a [<!ATTLIST y d CDATA 'x'><!ATTLIST z d CDATA 'x'>]>";
    Utf8InputSource source(type + "<a><b>x</b><b>y</b></a>", u"id", false);
    const auto parser = XercesXMLParser::Create(source, std::make_shared<RecordingSink>());
    parser->LoadXSDString(c_schema, u"schema");
    parser->Parse();
    const std::vector<XMLDiagnostic> warnings = parser->GetWarningDiagnostics();
    const std::vector<XMLDiagnostic> errors = parser->GetErrorDiagnostics();
    ASSERT_THAT(warnings, SizeIs(2));
    ASSERT_THAT(errors, SizeIs(2));

    parser->SetMessageLimit(0, CostOf(warnings, 1));
    parser->Parse();
    EXPECT_THAT(MessagesOf(parser->GetWarningDiagnostics()),
                ElementsAre(warnings[0].GetMessage().toStdString(),
                            AllOf(StartsWith("Warning("), HasSubstr(": 1 more from here on;"))));
    EXPECT_THAT(MessagesOf(parser->GetErrorDiagnostics()),
                ElementsAre(AllOf(StartsWith("Error("), HasSubstr(": 2 more from here on;"))));

    parser->SetMessageLimit(0, CostOf(warnings, 2) + CostOf(errors, 1));
    parser->Parse();
    EXPECT_EQ(MessagesOf(parser->GetWarningDiagnostics()), MessagesOf(warnings));
    EXPECT_THAT(
        MessagesOf(parser->GetErrorDiagnostics()),
        ElementsAre(errors[0].GetMessage().toStdString(), HasSubstr(": 1 more from here on;")));
}

TEST(MessageLimit, IsMeasuredByTheBytesOfTheDocument)
{
    Session session(c_document);
    const std::vector<XMLDiagnostic> all = session.Parse();
    const std::uint64_t cost = CostOf(all, all.size());
    session.parser->SetMessageLimit(cost / c_document.size() + 1, 0);
    EXPECT_EQ(MessagesOf(session.Parse()), MessagesOf(all));
    session.parser->SetMessageLimit(1, 0);
    EXPECT_THAT(session.Parse(), SizeIs(Lt(all.size())));
}

TEST(MessageLimit, HoldsForEachParseAlone)
{
    Session session(c_document);
    const std::size_t count = session.Parse().size();
    session.parser->SetMessageLimit(0, CostOf(session.Parse(), count));
    for (int i = 0; i < 3; ++i)
        EXPECT_THAT(session.Parse(), SizeIs(count));
}

TEST(MessageLimit, HoldsForASchema)
{
    const std::string schema = "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'>" +
                               Repeat("<xs:element name='a' type='unknown'/>", 20) + "</xs:schema>";
    Utf8InputSource source(std::string("<a/>"), u"id", false);
    for (const bool isLimited : {false, true}) {
        const auto parser = XercesXMLParser::Create(source, std::make_shared<RecordingSink>());
        if (isLimited)
            parser->SetMessageLimit(0, 0);
        parser->LoadXSDString(TString::fromStdString(schema), u"schema");
        if (isLimited)
            EXPECT_THAT(ToUtf8(parser->GetErrors()),
                        ElementsAre(HasSubstr(" more from here on; all messages take more than")));
        else
            EXPECT_THAT(parser->GetErrors(), SizeIs(Gt(19U)));
    }
}

TEST(MessageLimit, LetsPassWhatHonestDocumentsHave)
{
    constexpr std::size_t c_count = 50'000;
    Session session("<a>" + Repeat("<b>not a number</b>", c_count) + "</a>");
    EXPECT_THAT(session.Parse(), SizeIs(c_count));
}

TEST(MessageLimit, KeepsManyLongMessagesFromFillingMemory)
{
    // Each quotes two thousand units of its value, and none is like another.
    std::string text = "<a>";
    constexpr std::size_t c_count = 20'000;
    for (std::size_t i = 0; i < c_count; ++i)
        text += "<b>" + std::to_string(i) + "x</b>";
    const std::string longSchema =
        "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'><xs:element name='a'>"
        "<xs:complexType><xs:sequence><xs:element name='b' minOccurs='0' maxOccurs='unbounded'>"
        "<xs:simpleType><xs:restriction base='xs:string'><xs:pattern value='" +
        Repeat("p", 3000) +
        "'/></xs:restriction></xs:simpleType></xs:element></xs:sequence></xs:complexType>"
        "</xs:element></xs:schema>";
    Utf8InputSource source(text + "</a>", u"id", false);
    const auto parser = XercesXMLParser::Create(source, std::make_shared<RecordingSink>());
    parser->LoadXSDString(TString::fromStdString(longSchema), u"schema");
    ASSERT_FALSE(parser->HasErrors());
    parser->Parse();
    std::uint64_t units = 0;
    const std::vector<XMLDiagnostic>& errors = parser->GetErrorDiagnostics();
    for (const XMLDiagnostic& error : errors)
        units += static_cast<std::uint64_t>(error.GetText().length());
    EXPECT_LT(units, 16U << 20);
    EXPECT_GT(units, 15U << 20);
    EXPECT_THAT(errors.back().GetText().toStdString(),
                StartsWith(std::to_string(c_count - (errors.size() - 1)) + " more from here on"));

    parser->SetMessageLimit(c_off, c_off);
    parser->Parse();
    EXPECT_THAT(parser->GetErrorDiagnostics(), SizeIs(c_count));
}
