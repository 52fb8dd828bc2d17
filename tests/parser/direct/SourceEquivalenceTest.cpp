// Sources of users, several threads, and memory that runs out: both scanners keep the same
// promises.

#include "direct/DirectScanning.h"
#include "support/FailingAllocations.h"
#include "support/OddDocuments.h"
#include "support/ParseOutcome.h"
#include "support/ParseTrace.h"
#include "support/ScriptedInputSource.h"

#include "bytes/XercesInputSource.h"

#include <kescorexml/DOMParser.h>
#include <kesplatform/CorvinaException.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <new>
#include <set>
#include <thread>

namespace {

/// Writes down what a parser asks of it.
class AskedSource : public Utf8InputSource
{
public:
    explicit AskedSource(std::vector<std::string>& asked, bool throws = false)
        : Utf8InputSource(std::string("<a>x<b/></a>"), u"asked", false), m_asked(asked),
          m_throws(throws)
    {
    }

    bool GetNextLine(std::string& out) override
    {
        m_asked.push_back("line");
        return Utf8InputSource::GetNextLine(out);
    }
    bool GetBytes(std::string& out, unsigned int maxBytes) override
    {
        m_asked.push_back("bytes " + std::to_string(maxBytes));
        return Utf8InputSource::GetBytes(out, maxBytes);
    }
    void ResetToStart() override
    {
        m_asked.push_back("reset");
        Utf8InputSource::ResetToStart();
    }
    std::int64_t Size() const override
    {
        m_asked.push_back("size");
        return Utf8InputSource::Size();
    }
    XercesInputSource GetXercesInputSource(ColonProcessingMode mode) override
    {
        m_asked.push_back("document " + std::to_string(static_cast<int>(mode)));
        if (m_throws)
            throw std::runtime_error("no document");
        return Utf8InputSource::GetXercesInputSource(mode);
    }

private:
    std::vector<std::string>& m_asked;
    bool m_throws;
};

/// How a parse in which memory ran out may end.
std::string DescribeEnd(const std::string& bytes, std::size_t allowed, bool& hasFailed)
{
    const auto sink = std::make_shared<RecordingSink>();
    Utf8InputSource source(bytes, u"an identifier that is not short", false);
    std::unique_ptr<XercesXMLParser> parser;
    std::string end = "no parser";
    {
        const FailingAllocations failing(allowed, 1);
        try {
            parser = XercesXMLParser::Create(source, sink);
            parser->Parse();
            end = "ends";
        } catch (const std::bad_alloc&) {
            end = parser == nullptr ? "no parser" : "thrown";
        }
        hasFailed = FailingAllocations::HasFailed();
    }
    if (parser == nullptr)
        return end;
    for (const TString& error : parser->GetErrors())
        end += ", " + error.toStdString();
    if (!parser->HasErrors() && end == "ends")
        end += sink->events == ParseUtf8(bytes).events ? " well" : " early, and says nothing";
    return end;
}

std::set<std::string> DescribeEnds(const std::string& bytes, bool isDirect)
{
    const DirectScanning::Switch switched(isDirect);
    std::set<std::string> ends;
    bool hasFailed = true;
    for (std::size_t allowed = 0; hasFailed && allowed < 10'000; ++allowed)
        ends.insert(DescribeEnd(bytes, allowed, hasFailed));
    EXPECT_FALSE(hasFailed);
    return ends;
}

} // namespace

TEST(DirectEquivalence, SourcesOfUsersAreAskedTheSame)
{
    std::vector<std::string> asked[2];
    for (const bool isDirect : {false, true}) {
        const DirectScanning::Switch switched(isDirect);
        std::vector<std::string>& questions = asked[isDirect ? 1 : 0];
        AskedSource source(questions);
        questions.push_back(ParseSource(source).events.size() == 5 ? "read" : "not read");
        DOMParser().ParseXmlInputSource(source, false);
        StandaloneDOMParser().ParseXmlInputSource(source, false);
        AskedSource failing(questions, true);
        EXPECT_THROW(ParseSource(failing), std::runtime_error);
        EXPECT_THROW(DOMParser().ParseXmlInputSource(failing, false), std::runtime_error);
    }
    EXPECT_EQ(asked[0], asked[1]);
}

TEST(DirectEquivalence, SourcesThatOnlyHaveBytesAreRefused)
{
    for (const bool isDirect : {false, true}) {
        const DirectScanning::Switch switched(isDirect);
        ScriptedInputSource source("<a/>");
        EXPECT_THROW(ParseSource(source), CorvinaException);
        EXPECT_THROW(DOMParser().ParseXmlInputSource(source, false), CorvinaException);
    }
}

TEST(DirectEquivalence, ThreadsThatParseAtTheSameTimeGetTheSame)
{
    const auto traceAll = [](const DOMParser& parser) {
        ParseTrace trace;
        for (const std::string& bytes : OddDocuments::Small()) {
            TraceDocument(trace, *parser.ParseXmlString(bytes, u"id"));
            const ParseOutcome outcome = ParseUtf8(bytes);
            for (const std::string& event : outcome.events)
                trace.Text(std::string_view(event));
        }
        return trace;
    };
    const DirectScanning::Switch switched(false);
    const ParseTrace expected = traceAll(DOMParser());
    const DirectScanning::Switch direct(true);
    std::vector<std::string> differences(4);
    std::vector<std::thread> threads;
    for (std::string& difference : differences) {
        threads.emplace_back([&] {
            const DOMParser parser;
            for (int i = 0; i < 5 && difference.empty(); ++i)
                difference = traceAll(parser).Difference(expected, "thread", "expected");
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    for (const std::string& difference : differences)
        EXPECT_EQ(difference, "");
}

TEST(DirectEquivalence, WhereMemoryRunsOutAParseEndsInOneOfTheWaysThatItHadBefore)
{
    // Xerces asserts that there is memory when it is initialised, which a parser has done.
    const DOMParser initialised;
    for (const char* bytes :
         {"<a b='1' c='a value that is not short'>some text that is not short<d/></a>",
          "<?xml version='1.0'?><r :colon='1'><a x='1' y='&amp;'>text<b/><![CDATA[more]]></a></r>",
          "<!DOCTYPE a [<!ATTLIST a b CDATA 'a default that is not short'>]><a><a/></a>"}) {
        std::set<std::string> known = DescribeEnds(bytes, false);
        for (const std::string& end : DescribeEnds(bytes, true))
            EXPECT_TRUE(known.contains(end)) << end;
        for (const std::string& end : known)
            EXPECT_EQ(end.find("says nothing"), std::string::npos) << end;
    }
}
