// Sinks that stop or throw at any event: both scanners come to an end at the same place.

#include "support/BothScanners.h"
#include "support/ExpectSame.h"
#include "support/OddDocuments.h"

#include <kescorexml/Utf8InputSource.h>

#include <gtest/gtest.h>

#include <algorithm>

namespace {

/// As many as any of the documents that are not long.
constexpr std::size_t c_maximumEvents = 12;

std::size_t CountEvents(const std::string& bytes)
{
    Utf8InputSource source(bytes, u"id", false);
    ParseTrace unused;
    const auto sink = std::make_shared<TracingSink>(unused, SinkPlan());
    XercesXMLParser::Create(source, sink)->Parse();
    return std::min(sink->CountEvents(), c_maximumEvents);
}

/// Counts how many are alive.
class CountedSink : public TracingSink
{
public:
    CountedSink(ParseTrace& trace, int& alive) : TracingSink(trace, {}), m_alive(alive)
    {
        ++m_alive;
    }
    ~CountedSink() override { --m_alive; }

private:
    int& m_alive;
};

} // namespace

TEST(DirectEquivalence, SinksThatStopOrThrowAnywhereSeeTheSame)
{
    BothScanners both;
    for (const OddDocuments::Document& document : OddDocuments::All())
        ASSERT_TRUE(ExpectSame(both.CompareSinks(document.bytes, CountEvents(document.bytes))));
}

TEST(DirectEquivalence, ASinkThatStopsDoesNotSeeWhatIsWrongBehindIt)
{
    BothScanners both;
    for (const char* end : {"</b>", "&x;</a>", "", "\xFF</a>", "]]></a>", "<b></a>", "</a>x"}) {
        const std::string bytes = std::string("<a b='1'>x<c/>y<d></d>z") + end;
        ASSERT_TRUE(ExpectSame(both.CompareSinks(bytes, 9)));
    }
}

TEST(DirectEquivalence, WhateverASinkThrowsIsTheSame)
{
    BothScanners both;
    for (const char* end : {"</a>", "</b>", "&x;</a>"}) {
        const std::string bytes = std::string("<a>x<b/>y<c></c>z") + end;
        for (std::size_t i = 0; i < 16 * SinkPlan::c_kindsThrown; ++i) {
            SinkPlan plan;
            plan.thrown = static_cast<SinkPlan::Thrown>(i / 16);
            plan.throwFrom = 1 + i % 8;
            plan.throwsWhenAsked = i % 16 >= 8;
            ASSERT_TRUE(ExpectSame(both.CompareEvents(bytes, BothScanners::Source::Utf8, plan)));
            ASSERT_TRUE(ExpectSame(both.CompareNewParser(bytes, BothScanners::Source::Utf8, plan)));
            ASSERT_TRUE(ExpectSame(both.CompareEvents(bytes)));
        }
    }
}

TEST(DirectEquivalence, SinksThatParseInTheirEventsSeeTheSame)
{
    /// Parses another document, in the same way, in each of its events.
    class NestingSink : public SAXInterface
    {
    public:
        explicit NestingSink(std::vector<std::string>& seen) : m_seen(seen) {}
        void StartElement(TString&& name, std::unordered_map<TString, TString>&&) override
        {
            Note("<" + name.toStdString());
        }
        void EndElement() override { Note("/"); }
        void TextContent(const TString& text) override { Note(text.toStdString()); }

    private:
        void Note(const std::string& event)
        {
            m_seen.push_back(event);
            const auto document = m_parser.ParseXmlString("<x>y&amp;<z a='1'/></x>", u"inner");
            m_seen.push_back(document->GetConcatenatedErrors().toStdString());
        }
        std::vector<std::string>& m_seen;
        DOMParser m_parser;
    };

    for (const std::string& bytes : OddDocuments::Small()) {
        std::vector<std::string> seen[2];
        for (const bool isDirect : {false, true}) {
            const DirectScanning::Switch switched(isDirect);
            Utf8InputSource source(bytes, u"outer", false);
            const auto parser = XercesXMLParser::Create(
                source, std::make_shared<NestingSink>(seen[isDirect ? 1 : 0]));
            parser->Parse();
            for (const TString& error : parser->GetErrors())
                seen[isDirect ? 1 : 0].push_back(error.toStdString());
        }
        EXPECT_EQ(seen[0], seen[1]) << ToReadable(bytes);
    }
}

TEST(DirectEquivalence, AParserLetsGoOfItsSinkAtTheSameTime)
{
    for (const bool isDirect : {false, true}) {
        const DirectScanning::Switch switched(isDirect);
        ParseTrace trace;
        int alive = 0;
        Utf8InputSource source(std::string("<a>x<b/></a>"), u"id", false);
        auto parser = XercesXMLParser::Create(source, std::make_shared<CountedSink>(trace, alive));
        parser->Parse();
        EXPECT_EQ(alive, 1);
        parser->Reload(source, std::make_shared<CountedSink>(trace, alive));
        EXPECT_EQ(alive, 1);
        parser->Parse();
        parser.reset();
        EXPECT_EQ(alive, 0);
    }
}
