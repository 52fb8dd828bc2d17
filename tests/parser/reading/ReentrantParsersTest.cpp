// Sources, handlers and sinks that call the parser which is calling them.

#include "bytes/XercesInputSource.h"
#include "support/ErrorsOf.h"
#include "support/ParserSession.h"

#include <kescorexml/DOMElement.h>
#include <kescorexml/DOMParser.h>
#include <kescorexml/StandaloneDOMParser.h>

#include <kesplatform/LogicException.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <functional>
#include <memory>
#include <string>
#include <utility>

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr const char* c_schema = "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'>"
                                 "<xs:element name='a' type='xs:string'/></xs:schema>";

/// What stands in the first line decides which scanner reads the rest.
const char* const c_firstLines[] = {"", "<!DOCTYPE a [<!ENTITY e 'x'>]>\n"};

/// Calls when it is read.
class CallingSource : public Utf8InputSource
{
public:
    CallingSource(const std::string& text, const TString& id, std::function<void()> call)
        : Utf8InputSource(text, id, false), m_call(std::move(call))
    {
    }
    XercesInputSource GetXercesInputSource(ColonProcessingMode mode) override
    {
        m_call();
        return Utf8InputSource::GetXercesInputSource(mode);
    }

private:
    std::function<void()> m_call;
};

/// A handler that puts none in its own place, and what it refers to afterwards: more than a
/// function keeps in itself.
template <typename Parser>
void SetHandlerThatGoes(Parser& parser, std::vector<std::string>& seen)
{
    std::array<char, 256> kept{};
    kept.fill('k');
    parser.SetStatisticsEventHandler([&parser, &seen, kept](const DOMParserStatistics&) {
        parser.SetStatisticsEventHandler(nullptr);
        // Lies where the handler did, if that is gone.
        const auto other = std::make_unique<decltype(kept)>();
        other->fill('o');
        seen.emplace_back(kept.begin(), kept.begin() + 4);
    });
}

} // namespace

TEST(ReentrantParsers, AHandlerOfStatisticsMayTakeItselfAway)
{
    std::vector<std::string> seen;
    DOMParser parser;
    SetHandlerThatGoes(parser, seen);
    parser.ParseXmlString("<a/>", u"id");
    parser.ParseXmlString("<a/>", u"id");
    EXPECT_THAT(seen, ElementsAre("kkkk"));
    StandaloneDOMParser standalone;
    SetHandlerThatGoes(standalone, seen);
    standalone.ParseXmlString("<a/>", u"id");
    standalone.ParseXmlString("<a/>", u"id");
    EXPECT_THAT(seen, ElementsAre("kkkk", "kkkk"));
}

TEST(ReentrantParsers, AHandlerOfStatisticsMayHaveADocumentParsed)
{
    DOMParser parser;
    std::string inner;
    parser.SetStatisticsEventHandler([&](const DOMParserStatistics& statistics) {
        if (statistics.sourceId == u"outer")
            inner =
                parser.ParseXmlString("<b/>", u"inner")->GetDocumentRoot()->GetName().toStdString();
    });
    const auto outer = parser.ParseXmlString("<a/>", u"outer");
    EXPECT_EQ(outer->GetDocumentRoot()->GetName(), u"a");
    EXPECT_EQ(inner, "b");
}

TEST(ReentrantParsers, ASourceMayHaveItsParserParseAnother)
{
    for (const std::string first : c_firstLines) {
        SCOPED_TRACE(first);
        const DOMParser parser;
        // With something to use again.
        parser.ParseXmlString("<x/>", u"id");
        std::unique_ptr<DOM> inner;
        CallingSource source(first + "<a><b/></a>", u"outer",
                             [&] { inner = parser.ParseXmlString(first + "<c>x</d>", u"inner"); });
        const auto outer = parser.ParseXmlInputSource(source, false);
        EXPECT_THAT(ErrorsOf(*outer), IsEmpty());
        EXPECT_EQ(outer->GetDocumentRoot()->GetName(), u"a");
        EXPECT_TRUE(outer->GetDocumentRoot()->HasChildren());
        EXPECT_THAT(ErrorsOf(*inner), ElementsAre(HasSubstr("(id: inner)")));
        EXPECT_EQ(inner->GetDocumentRoot()->GetName(), u"c");
        EXPECT_FALSE(parser.ParseXmlString("<y/>", u"id")->HasErrors());
    }
}

TEST(ReentrantParsers, ASchemaThatIsReadMayAddOthersForTheNextDocument)
{
    DOMParser parser;
    std::size_t added = 0;
    const auto addSome = [&] {
        // More than there is room for.
        for (; added < 8; ++added)
            parser.AddXSDInputSource(
                std::make_unique<Utf8InputSource>("<broken", TString::number(added), false));
    };
    parser.AddXSDInputSource(std::make_unique<CallingSource>(c_schema, u"a.xsd", addSome));
    EXPECT_THAT(ErrorsOf(*parser.ParseXmlString("<a/>", u"id")), IsEmpty());
    EXPECT_EQ(added, 8U);
    // Each is wrong in two ways.
    EXPECT_THAT(ErrorsOf(*parser.ParseXmlString("<a/>", u"id")), testing::SizeIs(16));
}

TEST(ReentrantParsers, NoDocumentIsParsedAndNothingIsBoundWhileASchemaIsRead)
{
    for (const std::string first : c_firstLines) {
        SCOPED_TRACE(first);
        ParserSession session(first + "<a>x</a>");
        int refused = 0;
        CallingSource schema(c_schema, u"a.xsd", [&] {
            session.parser->Parse();
            EXPECT_THAT(ToUtf8(session.parser->GetErrors()), ElementsAre("parsing in progress"));
            session.parser->ClearErrorsAndWarnings();
            EXPECT_THROW(session.parser->Reload(session.source, session.sink), LogicException);
            EXPECT_THROW(session.parser->LoadXSDString(c_schema, u"b.xsd"), LogicException);
            ++refused;
        });
        session.parser->LoadXSDSource(schema);
        EXPECT_EQ(refused, 1);
        EXPECT_THAT(session.sink->events, IsEmpty());
        EXPECT_EQ(session.Parse(), (ParseOutcome{{"<a>", "'x'", "</>"}, {}, {}, false}));
    }
}
