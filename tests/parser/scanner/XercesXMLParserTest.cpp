#include "support/ParserSession.h"
#include "support/RecordingMetrics.h"
#include "support/TemporaryFile.h"
#include "support/TemporaryFiles.h"

#include <kescorexml/DOMParser.h>
#include <kescorexml/FileInputSource.h>
#include <kescorexml/StandaloneDOMParser.h>
#include <kescorexml/XMLParseException.h>

#include <kesplatform/LogicException.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <xercesc/framework/XMLErrorCodes.hpp>
#include <xercesc/framework/XMLValidityCodes.hpp>
#include <xercesc/internal/EndOfEntityException.hpp>
#include <xercesc/sax/SAXParseException.hpp>
#include <xercesc/util/OutOfMemoryException.hpp>
#include <xercesc/util/RuntimeException.hpp>
#include <xercesc/util/XMLExceptMsgs.hpp>

#include <concepts>
#include <functional>

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

const char* const c_entityDocument = "<!DOCTYPE a [<!ENTITY e 'x'>]><a>&e;&e;</a>";

/// An input source that has no side for the parser.
class PlainSource : public InputSource
{
public:
    PlainSource() : InputSource(u"plain") {}
    bool GetNextLine(std::string&) override { return false; }
    bool GetBytes(std::string&, unsigned int) override { return false; }
    void ResetToStart() override {}
    std::int64_t Size() const override { return 0; }
};

template <typename Function>
void ExpectAssertion(Function&& function, int line, const char16_t* text, std::uint32_t code)
{
    try {
        function();
        ADD_FAILURE() << "nothing was thrown";
    } catch (const LogicException& exception) {
        EXPECT_EQ(exception.GetFile(), u"modules/platform/kescorexml/main/parser/XercesXMLParser");
        if (line != 0) {
            EXPECT_EQ(exception.GetLine(), line);
        }
        EXPECT_EQ(exception.GetText(), text);
        EXPECT_EQ(exception.GetErrorInfo().GetError().GetCode(), code);
    }
}

} // namespace

TEST(XercesXMLParser, RecordsNothingForAGoodDocument)
{
    ParserSession session("<a><b/></a>");
    EXPECT_EQ(session.Parse(), (ParseOutcome{{"<a>", "<b>", "</>", "</>"}, {}, {}, false}));
    EXPECT_THAT(session.parser->GetXSDNames(), IsEmpty());
}

TEST(XercesXMLParser, RefusesReferencesToInternalEntities)
{
    ParserSession session(c_entityDocument);
    const ParseOutcome outcome = session.Parse();
    EXPECT_THAT(outcome.errors, ElementsAre(HasSubstr("more than '0' entity expansions")));
    EXPECT_TRUE(outcome.fatal);
    EXPECT_THAT(session.parser->GetMetadataForErrors(), ElementsAre(TError::ErrorInfo::NoError()));
}

TEST(XercesXMLParser, RefusesReferencesInContentAndInAttributeValues)
{
    for (const char* content : {"<a>&e;</a>", "<a><b/>&e;</a>", "<a b='&e;'/>", "<a>&f;</a>"}) {
        ParserSession session(std::string("<!DOCTYPE a [<!ENTITY e 'x'><!ENTITY f '&e;'>]>") +
                              content);
        const ParseOutcome outcome = session.Parse();
        EXPECT_THAT(outcome.errors, ElementsAre(HasSubstr("more than '0' entity expansions")))
            << content;
        EXPECT_TRUE(outcome.fatal) << content;
    }
}

TEST(XercesXMLParser, ExpandsEntitiesOfDeclarationsWithoutPermission)
{
    const std::pair<const char*, const char*> documents[] = {
        {"<!ENTITY e 'text'><!ATTLIST a d CDATA '&e;'>", "<a d=text>"},
        {"<!ENTITY e 'te'><!ENTITY f '&e;xt'><!ATTLIST a d CDATA '&f;'>", "<a d=text>"},
        {"<!ENTITY % e \"<!ATTLIST a d CDATA 'text'>\">%e;", "<a d=text>"},
        {"<!ENTITY e 'text'>", "<a>"},
    };
    for (const auto& [declarations, start] : documents) {
        const std::string text = std::string("<!DOCTYPE a [") + declarations + "]><a/>";
        ParserSession session(text);
        EXPECT_EQ(session.Parse(), (ParseOutcome{{start, "</>"}, {}, {}, false})) << text;
    }
}

TEST(XercesXMLParser, ExpandsInternalEntitiesOnceAllowed)
{
    ParserSession session(c_entityDocument);
    session.parser->AllowEntityExpansion_Insecure();
    EXPECT_EQ(session.Parse(), (ParseOutcome{{"<a>", "'xx'", "</>"}, {}, {}, false}));
}

TEST(XercesXMLParser, ExpandsAtMostFiftyThousandEntities)
{
    for (const int count : {50000, 50001}) {
        std::string text = "<!DOCTYPE a [<!ENTITY e ''>]><a>";
        for (int i = 0; i < count; ++i)
            text += "&e;";
        ParserSession session(text + "</a>");
        session.parser->AllowEntityExpansion_Insecure();
        EXPECT_EQ(session.Parse().fatal, count > 50000) << count;
    }
}

TEST(XercesXMLParser, NeedsNoPermissionForPredefinedEntities)
{
    ParserSession session("<a b='&quot;&apos;'>&lt;&gt;&amp;&#x41;</a>");
    EXPECT_THAT(session.Parse().events, ElementsAre("<a b=\"'>", "'<>&A'", "</>"));
}

TEST(XercesXMLParser, StopsWithoutErrorWhenTheSinkIsDone)
{
    ParserSession session("<a><b></c>");
    session.sink->stopAfter = 1;
    EXPECT_EQ(session.Parse(), (ParseOutcome{{"<a>"}, {}, {}, false}));
}

TEST(XercesXMLParser, StopsAfterAnyEventWithoutReadingOn)
{
    const std::string text = "<a>x<b/>y<c z='1'>zz</c></a>";
    const std::vector<std::string> all = ParseUtf8(text).events;
    for (std::size_t stop = 1; stop <= all.size(); ++stop) {
        ParserSession session(text);
        session.sink->stopAfter = stop;
        const ParseOutcome outcome = session.Parse();
        EXPECT_THAT(outcome.errors, IsEmpty());
        ASSERT_GE(outcome.events.size(), stop);
        // Text does not stop a parse, and an empty element comes whole.
        EXPECT_LE(outcome.events.size(), stop + 2);
        EXPECT_TRUE(std::equal(outcome.events.begin(), outcome.events.end(), all.begin()));
    }
}

TEST(XercesXMLParser, StopsForASinkThatWasDoneOnlyForAMoment)
{
    struct Sink : RecordingSink
    {
        bool IsDone() override { return events.back() == "<b>"; }
    };
    for (const char* const text :
         {"<a><b/><c/></a>", "<!DOCTYPE a [<!ENTITY e 'x'>]><a><b/><c/></a>"}) {
        Utf8InputSource source(text, u"id", false);
        const auto sink = std::make_shared<Sink>();
        const auto parser = XercesXMLParser::Create(source, sink);
        parser->Parse();
        EXPECT_THAT(sink->events, ElementsAre("<a>", "<b>", "</>")) << text;
        EXPECT_FALSE(parser->HasErrors()) << text;
    }
}

TEST(XercesXMLParser, StaysDoneWithASinkThatWasDone)
{
    ParserSession session("<a/>");
    session.sink->stopAfter = 1;
    session.Parse();
    session.sink->events.clear();
    EXPECT_EQ(session.Parse(), ParseOutcome());
    session.sink->stopAfter = 0;
    session.parser->Reload(session.source, session.sink);
    EXPECT_THAT(session.Parse().events, ElementsAre("<a>", "</>"));
}

TEST(XercesXMLParser, RecordsAParseExceptionOfTheSinkTwice)
{
    ParserSession session("<a><b/></a>");
    session.sink->onEvent = [](const std::string& event) {
        if (event == "<b>")
            throw XMLParseException(u"enough", CorvinaError(5, u"Five"));
    };
    const ParseOutcome outcome = session.Parse();
    EXPECT_EQ(outcome, (ParseOutcome{{"<a>", "<b>"}, {"enough", "enough"}, {}, true}));
    EXPECT_THAT(session.parser->GetMetadataForErrors(),
                ElementsAre(TError::ErrorInfo::NoError(), TError::ErrorInfo::NoError()));
}

TEST(XercesXMLParser, RecordsAllMessagesOfAParseException)
{
    struct Nested : XMLParseException
    {
        Nested() : XMLParseException(u"front") {}
        TString GetConcatenatedMessages() const override { return u"front\nand its cause"; }
    };
    for (const char* const text : {"<a/>", "<!DOCTYPE a [<!ENTITY e 'x'>]><a/>"}) {
        ParserSession session(text);
        session.sink->onEvent = [](const std::string&) { throw Nested(); };
        EXPECT_THAT(session.Parse().errors,
                    ElementsAre("front\nand its cause", "front\nand its cause"));
    }
}

TEST(XercesXMLParser, RecordsOtherExceptionsOfTheSinkOnce)
{
    struct Case
    {
        std::function<void()> thrower;
        std::string message;
    };
    const std::vector<Case> cases = {
        {[] { throw std::runtime_error("x"); }, "Unexpected exception"},
        {[] { throw std::bad_alloc(); }, "Unexpected exception"},
        {[] { throw 42; }, "Unexpected exception"},
        {[] { throw CorvinaException(u"x"); }, "Unexpected exception"},
        {[] { throw xercesc::OutOfMemoryException(); }, "OutOfMemoryException"},
        // With these Xerces tells its own scanner that enough was read, or not read.
        {[] { throw xercesc::XMLErrs::ExpectedCommentOrCDATA; }, "Unexpected exception"},
        {[] { throw xercesc::XMLValid::ElementNotDefined; }, "Unexpected exception"},
        {[] { throw xercesc::EndOfEntityException(nullptr, 0); }, "Unexpected exception"},
        {[] { throw xercesc::SAXException("x"); }, "Unexpected exception"},
        {[] { throw xercesc::SAXParseException(u"x", u"p", u"s", 7, 8); }, "Unexpected exception"},
    };
    for (const char* const event : {"<a>", "'x'", "<b>", "</>"}) {
        for (std::size_t i = 0; i < 2 * cases.size(); ++i) {
            // Entities are read by Xerces.
            const Case& entry = cases[i / 2];
            SCOPED_TRACE(testing::Message() << event << " " << i / 2);
            ParserSession session(std::string(i % 2 == 0 ? "" : "<!DOCTYPE a [<!ENTITY e 'x'>]>") +
                                  "<a>x<b></b></a>");
            session.sink->onEvent = [&](const std::string& seen) {
                if (seen == event)
                    entry.thrower();
            };
            const ParseOutcome outcome = session.Parse();
            EXPECT_THAT(outcome.errors, ElementsAre(entry.message));
            EXPECT_FALSE(outcome.fatal);
            EXPECT_THAT(session.parser->GetMetadataForErrors(),
                        ElementsAre(TError::ErrorInfo::NoError()));
            EXPECT_FALSE(outcome.events.empty());
            EXPECT_EQ(outcome.events.back(), event);

            session.sink->onEvent = nullptr;
            session.sink->events.clear();
            session.parser->Reload(session.source, session.sink);
            EXPECT_EQ(session.Parse(),
                      (ParseOutcome{{"<a>", "'x'", "<b>", "</>", "</>"}, {}, {}, false}));
        }
    }
}

TEST(XercesXMLParser, RefusesToParseInAnEventOfItsOwn)
{
    for (const char* const text :
         {"<a>x<b></b></a>", "<!DOCTYPE a [<!ENTITY e 'x'>]><a>x<b></b></a>"}) {
        SCOPED_TRACE(text);
        ParserSession session(text);
        session.sink->onEvent = [&](const std::string& seen) {
            if (seen == "<b>")
                session.parser->Parse();
        };
        const ParseOutcome outcome = session.Parse();
        EXPECT_THAT(outcome.events, ElementsAre("<a>", "'x'", "<b>", "</>", "</>"));
        EXPECT_THAT(outcome.errors, ElementsAre("parsing in progress"));
        EXPECT_FALSE(outcome.fatal);
    }
}

TEST(XercesXMLParser, RefusesOtherSourcesAndSchemasInAnEventOfItsOwn)
{
    using Operation = std::function<void(ParserSession&)>;
    const TemporaryFiles files;
    const TString schema = u"<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'><xs:element "
                           u"name='a'/></xs:schema>";
    const TString path = files.Write(u"a.xsd", schema.toStdString()).GetString();
    Utf8InputSource other(std::string("<other/>"), u"other", false);
    const Operation operations[] = {
        [&](ParserSession& session) { session.parser->Reload(other, session.sink); },
        [&](ParserSession& session) { session.parser->LoadXSDString(schema, u"a.xsd"); },
        [&](ParserSession& session) { session.parser->LoadXSDFile(path); }};
    for (const char* const text :
         {"<a>x<b></b></a>", "<!DOCTYPE a [<!ENTITY e 'x'>]><a>x<b></b></a>"}) {
        for (const Operation& operation : operations) {
            SCOPED_TRACE(text);
            ParserSession session(text);
            int refused = 0;
            session.sink->onEvent = [&](const std::string& seen) {
                if (seen != "<b>")
                    return;
                ExpectAssertion([&] { operation(session); }, 0, u"!m_isParsing", 0x5E1D70C4);
                ++refused;
            };
            const ParseOutcome outcome = session.Parse();
            EXPECT_EQ(refused, 1);
            EXPECT_THAT(outcome.events, ElementsAre("<a>", "'x'", "<b>", "</>", "</>"));
            EXPECT_TRUE(outcome.errors.empty());
            operation(session);
        }
    }
}

TEST(XercesXMLParser, RecordsAnExceptionOfTheScannersOwnKindByItsMessageAlone)
{
    for (const char* const event : {"<a>", "'x'", "<b>", "</>"}) {
        // The second one is no document for the direct scanner.
        for (const char* const text :
             {"<a>x<b></b></a>", "<!DOCTYPE a [<!ENTITY e 'x'>]><a>x<b></b></a>"}) {
            ParserSession session(text);
            std::string message;
            session.sink->onEvent = [&](const std::string& seen) {
                if (seen != event)
                    return;
                const xercesc::RuntimeException exception("file", 1,
                                                          xercesc::XMLExcepts::CPtr_PointerIsZero);
                message = TString(reinterpret_cast<const char16_t*>(exception.getMessage()))
                              .toStdString();
                throw exception;
            };
            const ParseOutcome outcome = session.Parse();
            ASSERT_FALSE(message.empty());
            EXPECT_THAT(outcome.errors, ElementsAre(message));
            EXPECT_FALSE(outcome.fatal);
            EXPECT_THAT(session.parser->GetMetadataForErrors(),
                        ElementsAre(TError::ErrorInfo::NoError()));
            EXPECT_EQ(outcome.events.back(), event);
        }
    }
}

TEST(XercesXMLParser, DeliversNoTextOfAnAbandonedParseLater)
{
    ParserSession session("<a>text<b></c></a>");
    EXPECT_TRUE(session.Parse().fatal);
    ParserSession truncated("<a>text");
    EXPECT_TRUE(truncated.Parse().fatal);
    truncated.sink->events.clear();
    truncated.Parse();
    EXPECT_THAT(truncated.sink->events, ElementsAre("<a>"));
}

TEST(XercesXMLParser, ParsesTheSameSourceAgainWithoutReload)
{
    for (const char* const text :
         {"<a>x<b/></a>", "<a>x<b></a>", "", "<?xml version='1.1'?><a/>"}) {
        ParserSession session(text);
        const ParseOutcome first = session.Parse();
        session.sink->events.clear();
        EXPECT_EQ(session.Parse(), first);
    }
}

TEST(XercesXMLParser, ReloadBindsAnotherSourceAndSink)
{
    ParserSession session("<a/>");
    session.Parse();
    StringInputSource other(u"<b></c>", u"other", false);
    const auto sink = std::make_shared<RecordingSink>();
    session.parser->Reload(other, sink);
    session.parser->Parse();
    EXPECT_THAT(sink->events, ElementsAre("<b>"));
    EXPECT_THAT(session.sink->events, ElementsAre("<a>", "</>"));
    EXPECT_THAT(ToUtf8(session.parser->GetErrors()), ElementsAre(HasSubstr("(id: other)")));
}

TEST(XercesXMLParser, ReloadLetsGoOfTheFormerSink)
{
    ParserSession session("<a/>");
    const std::weak_ptr<RecordingSink> former = session.sink;
    session.sink = std::make_shared<RecordingSink>();
    EXPECT_FALSE(former.expired());
    session.parser->Reload(session.source, session.sink);
    EXPECT_TRUE(former.expired());
}

TEST(XercesXMLParser, AssertsThatAParseStartsWithoutErrors)
{
    struct Access : Parser
    {
        static void Run(Parser& parser) { (parser.*&Access::ParseImpl)(); }
    };
    ParserSession session("<a/>");
    session.parser->Error(u"e", TError::ErrorInfo::NoError());
    ExpectAssertion([&] { Access::Run(*session.parser); }, 165, u"HasErrors() == false",
                    0xE60C9000);
}

TEST(XercesXMLParser, AssertsThatItCanReadTheSource)
{
    PlainSource source;
    const auto parser = XercesXMLParser::Create(source, std::make_shared<RecordingSink>());
    ExpectAssertion([&] { parser->Parse(); }, 0, u"xercesableSource != nullptr", 0x7C41D09B);
}

TEST(XercesXMLParser, AssertsThatASchemaHasAnIdentifierAndCanBeRead)
{
    ParserSession session("<a/>");
    ExpectAssertion([&] { session.parser->LoadXSDString(u"<x/>", TString()); }, 302,
                    u"!xsdSource.Id().IsEmpty()", 0xC83A570E);
    PlainSource schema;
    ExpectAssertion([&] { session.parser->LoadXSDSource(schema); }, 305,
                    u"xercesableSource != nullptr", 0xAB95E4EA);
}

TEST(XercesXMLParser, LoadsTheBaseSchemasBeforeItLooksAtTheIdentifier)
{
    ParserSession session("<a/>");
    EXPECT_THROW(session.parser->LoadXSDString(u"<x/>", TString()), LogicException);
    EXPECT_THAT(session.parser->GetXSDNames(),
                ElementsAre(u"KQRC_FILEFORMAT_XML_XSD", u"KQRC_FILEFORMAT_USER_XSD"));
}

TEST(XercesXMLParser, SkipsNoWhiteSpaceBeforeASchema)
{
    ParserSession session("<a/>");
    session.parser->LoadXSDString(u" <?xml version='1.0'?><xs:schema "
                                  u"xmlns:xs='http://www.w3.org/2001/XMLSchema'/>",
                                  u"s.xsd");
    EXPECT_TRUE(session.parser->HasFatallyErrored());
}

TEST(XercesXMLParser, TreatsASchemaThatComesTwiceAlikeWhateverItHasParsedMeanwhile)
{
    const auto makeSchema = [](const TString& element) {
        return TString(u"<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'>"
                       u"<xs:complexType name='t'/><xs:element name='same' type='t'/>"
                       u"<xs:element name='") +
               element + u"' type='xs:int'/></xs:schema>";
    };
    const auto run = [&](const std::string& between, const TString& secondElement) {
        ParserSession session(between);
        session.parser->LoadXSDString(makeSchema(u"a"), u"s.xsd");
        session.Parse();
        Utf8InputSource next("<a>1</a>", u"next", false);
        session.parser->Reload(next, session.sink);
        session.Parse();
        session.parser->ClearErrorsAndWarnings();
        session.parser->LoadXSDString(makeSchema(secondElement), u"s.xsd");
        std::vector<std::string> all = ToUtf8(session.parser->GetErrors());
        for (const char* const text : {"<a>x</a>", "<b>x</b>", "<same><a/></same>"}) {
            Utf8InputSource source(text, u"after", false);
            session.parser->Reload(source, session.sink);
            session.Parse();
            for (const std::string& error : ToUtf8(session.parser->GetErrors()))
                all.push_back(error);
        }
        return all;
    };
    for (const TString& secondElement : {TString(u"a"), TString(u"b")}) {
        const std::vector<std::string> expected = run("<a>1</a>", secondElement);
        EXPECT_THAT(expected, testing::Not(IsEmpty()));
        for (const std::string between :
             {"<a>x</a>", "<a>", "", "<?xml version='1.1'?><a>1</a>",
              "<?xml version='1.1'?><!DOCTYPE a [<!ELEMENT a", "<?xml version='1.0' \xFF?><a/>",
              "<!DOCTYPE a [<!ELEMENT a (b,(c|d)) x>]><a/>",
              "<!DOCTYPE a [<!ENTITY e SYSTEM 'f'>]><a/>"})
            EXPECT_EQ(run(between, secondElement), expected) << between;
    }
}

TEST(XercesXMLParser, CannotBeCompared)
{
    EXPECT_FALSE(std::equality_comparable<XercesXMLParser>);
    EXPECT_FALSE(std::equality_comparable<DOMParser>);
    EXPECT_FALSE(std::equality_comparable<StandaloneDOMParser>);
    EXPECT_TRUE(std::equality_comparable<ParseLimits>);
}

TEST(XercesXMLParser, LetsExceptionsOfTheSourcePass)
{
    const TemporaryFolder folder;
    FileInputSource source(folder.Write("a.xml", std::string("\xFF\xFE<\0a\0/\0>\0", 10)));
    const auto parser = XercesXMLParser::Create(source, std::make_shared<RecordingSink>());
    EXPECT_THROW(parser->Parse(), CorvinaException);
    EXPECT_FALSE(parser->HasErrors());
}

TEST(XercesXMLParser, ReportsItsScopes)
{
    const RecordingMetrics metrics;
    ParserSession session("<a/>");
    session.Parse();
    EXPECT_THAT(metrics.GetLines(),
                ElementsAre("+XercesXMLParser_PrepareParserState",
                            "-XercesXMLParser_PrepareParserState", "+XercesXMLParser_DoXercesParse",
                            "+XercesColonSanitizer", "-XercesColonSanitizer",
                            "-XercesXMLParser_DoXercesParse"));
}

TEST(XercesXMLParser, ReportsNoOtherScopesWhenItNeedsAnotherReader)
{
    for (const char* const text :
         {"<!DOCTYPE a [<!ELEMENT a (b,(c|d)) x>]><a/>", "<!DOCTYPE a [<!ENTITY e 'x'>]><a/>"}) {
        ParserSession session(text);
        session.Parse();
        const RecordingMetrics metrics;
        session.Parse();
        EXPECT_THAT(metrics.GetLines(),
                    ElementsAre("+XercesXMLParser_DoXercesParse", "+XercesColonSanitizer",
                                "-XercesColonSanitizer", "-XercesXMLParser_DoXercesParse"))
            << text;
    }
}
