// Where a parser says that it stands when no event is being delivered. While one is, see
// XercesXMLHandlerTest.cpp.

#include "support/ServingSink.h"
#include "support/TemporaryFile.h"

#include <kescorexml/FileInputSource.h>
#include <kescorexml/StringInputSource.h>
#include <kescorexml/Utf8InputSource.h>
#include <kescorexml/XMLParseException.h>
#include <kescorexml/XercesXMLParser.h>

#include <gtest/gtest.h>

#include <utility>

namespace {

using Location = std::pair<int, int>;

/// What GetCurrentLocation leaves when it knows nothing.
constexpr Location c_untouched{-1, -2};

/// What stands in the first line decides which scanner reads the rest.
const char* const c_firstLines[] = {"\n", "<!DOCTYPE a [<!ENTITY e 'x'>]>\n"};

Location Ask(SAXFileLocation& parser)
{
    Location location = c_untouched;
    parser.GetCurrentLocation(location.first, location.second);
    return location;
}

struct Session
{
    explicit Session(const std::string& text) : source(text, u"id", false) {}

    Utf8InputSource source;
    std::shared_ptr<ServingSink> sink = std::make_shared<ServingSink>();
    std::unique_ptr<XercesXMLParser> parser = XercesXMLParser::Create(source, sink);
};

} // namespace

TEST(CurrentLocation, IsUnknownBeforeTheFirstEvent)
{
    for (const char* const text : {"<a/>", "", "<!DOCTYPE a [<!ENTITY e SYSTEM 'f'>]><a/>",
                                   "<?xml version='1.0' nonsense?><a/>", "<a"}) {
        SCOPED_TRACE(text);
        Session session(text);
        EXPECT_EQ(Ask(*session.parser), c_untouched);
        if (std::string_view(text) == "<a/>")
            continue;
        session.parser->Parse();
        EXPECT_TRUE(session.sink->events.empty());
        EXPECT_EQ(Ask(*session.parser), c_untouched);
    }
}

TEST(CurrentLocation, IsThatOfTheLastEventAfterAParseHoweverItEnded)
{
    struct Case
    {
        std::string text;
        Location last;
        std::size_t stopAfter = 0;
    };
    const Case cases[] = {
        {"<a>\n<b>x</b>\n</a>\n<!-- more -->\n", {4, 5}},
        {"<a>\n<b>x\n</c>\n</a>", {3, 4}},
        {"<a>\n<b>x", {3, 4}},
        {"<a>\n<b>x</b>\n<c/>\n</a>", {3, 4}, 3},
        {"<a>\n<b>x</b>\n</a>", {2, 4}, 1},
        {"<a>\n<b></b>\n</a><z/>", {4, 5}},
        {"<a>\n<b/>&none;</a>", {3, 5}},
    };
    for (const char* const firstLine : c_firstLines) {
        for (const Case& entry : cases) {
            SCOPED_TRACE(firstLine + entry.text);
            Session session(firstLine + entry.text);
            session.sink->stopAfter = entry.stopAfter;
            Location inEvent;
            session.sink->onEvent = [&](const std::string& event) {
                if (event[0] == '<')
                    inEvent = Ask(*session.parser);
            };
            session.parser->Parse();
            EXPECT_EQ(Ask(*session.parser), entry.last);
            EXPECT_EQ(inEvent, entry.last);
        }
    }
}

TEST(CurrentLocation, IsThatOfTheEventThatThrew)
{
    for (const char* const firstLine : c_firstLines) {
        SCOPED_TRACE(firstLine);
        Session session(std::string(firstLine) + "<a>\n <b/></a>");
        session.sink->onEvent = [](const std::string& event) {
            if (event == "<b>")
                throw XMLParseException(u"enough");
        };
        session.parser->Parse();
        EXPECT_TRUE(session.parser->HasFatallyErrored());
        EXPECT_EQ(Ask(*session.parser).first, 3);
    }
}

TEST(CurrentLocation, IsThatOfTheLastEventWhereALimitEndedTheParse)
{
    for (const char* const firstLine : c_firstLines) {
        SCOPED_TRACE(firstLine);
        Session session(std::string(firstLine) + "<a>\n<b/><c>\n" + std::string(100, 'x') +
                        "\n</c></a>");
        session.parser->SetAmplificationLimit(0, 20);
        session.parser->Parse();
        EXPECT_TRUE(session.parser->HasFatallyErrored());
        EXPECT_EQ(Ask(*session.parser), Location(3, 8));
    }
}

TEST(CurrentLocation, IsNotThatOfATagAtWhichALimitEndedTheParse)
{
    for (const char* const firstLine : c_firstLines) {
        SCOPED_TRACE(firstLine);
        Session session(std::string(firstLine) + "<a>\n<bbbbbbbbbb/></a>");
        session.parser->SetAmplificationLimit(0, 0);
        session.parser->Parse();
        EXPECT_TRUE(session.parser->HasFatallyErrored());
        EXPECT_TRUE(session.sink->events.empty());
        EXPECT_EQ(Ask(*session.parser), c_untouched);

        session.parser->SetAmplificationLimit(0, 5);
        session.parser->Reload(session.source, session.sink);
        session.parser->Parse();
        EXPECT_TRUE(session.parser->HasFatallyErrored());
        // The text before the tag was delivered, when the tag had been read.
        EXPECT_EQ(session.sink->events.size(), 2U);
        EXPECT_EQ(Ask(*session.parser), Location(3, 14));

        Utf8InputSource tags(std::string(firstLine) + "<a><bbbbbbbbbb/></a>", u"id", false);
        session.parser->Reload(tags, session.sink);
        session.parser->Parse();
        EXPECT_TRUE(session.parser->HasFatallyErrored());
        EXPECT_EQ(session.sink->events.size(), 3U);
        EXPECT_EQ(Ask(*session.parser), Location(2, 4));
    }
}

TEST(CurrentLocation, StaysThatOfTheLastEventWhereTheNextParseHasNone)
{
    // A file is read from where it stands: the second parse finds its end.
    const TemporaryFolder folder;
    for (const char* const firstLine : c_firstLines) {
        SCOPED_TRACE(firstLine);
        FileInputSource file(folder.Write("a.xml", std::string(firstLine) + "<a>\n<b/></a>"));
        const auto sink = std::make_shared<ServingSink>();
        const auto parser = XercesXMLParser::Create(file, sink);
        parser->Parse();
        const Location last = Ask(*parser);
        EXPECT_EQ(last.second, 9);
        const std::size_t events = sink->events.size();
        parser->ClearErrorsAndWarnings();
        parser->Parse();
        EXPECT_EQ(sink->events.size(), events);
        EXPECT_EQ(Ask(*parser), last);
    }
}

TEST(CurrentLocation, IsUnknownAgainAfterAReload)
{
    for (const char* const firstLine : c_firstLines) {
        SCOPED_TRACE(firstLine);
        Session session(std::string(firstLine) + "<a/>");
        session.parser->Parse();
        EXPECT_NE(Ask(*session.parser), c_untouched);
        Utf8InputSource other("<!DOCTYPE a [<!ENTITY e SYSTEM 'f'>]><a/>", u"other", false);
        session.parser->Reload(other, session.sink);
        EXPECT_EQ(Ask(*session.parser), c_untouched);
        session.parser->Parse();
        EXPECT_TRUE(session.parser->HasFatallyErrored());
        EXPECT_EQ(Ask(*session.parser), c_untouched);
    }
}

TEST(CurrentLocation, CanBeAskedForWhileASchemaLoads)
{
    const TemporaryFolder folder;
    const TString included = folder.Write(
        "b.xsd", "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'><xs:element name='b'/>"
                 "</xs:schema>");
    for (const char* const firstLine : c_firstLines) {
        SCOPED_TRACE(firstLine);
        Session session(std::string(firstLine) + "<a>\n</a>");
        std::vector<Location> asked;
        session.sink->resolve = [&](const TString&) {
            asked.push_back(Ask(*session.parser));
            return included;
        };
        const auto load = [&](const TString& id) {
            session.parser->LoadXSDString(
                u"<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'>"
                u"<xs:include schemaLocation='b.xsd'/><xs:element name='a'/></xs:schema>",
                id);
        };
        load(u"before.xsd");
        session.parser->Parse();
        load(u"after.xsd");
        ASSERT_EQ(asked.size(), 2U);
        EXPECT_EQ(asked[0], c_untouched);
        EXPECT_EQ(asked[1], Location(3, 5));
    }
}
