#include "support/RecordingMetrics.h"
#include "support/TemporaryFile.h"

#include <kescorexml/DOMElement.h>
#include <kescorexml/DOMParser.h>
#include <kescorexml/FileInputSource.h>
#include <kescorexml/StringInputSource.h>
#include <kescorexml/Utf8InputSource.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

/// What a second parse with one parser reports, without the scopes of the parser itself.
template <typename Function>
std::vector<std::string> LinesOf(Function&& parse)
{
    const RecordingMetrics metrics;
    parse();
    std::vector<std::string> lines;
    for (const std::string& line : metrics.GetLines()) {
        if (line.find("XercesXMLParser_") == std::string::npos &&
            line.find("XercesColonSanitizer") == std::string::npos)
            lines.push_back(line);
    }
    return lines;
}

} // namespace

TEST(DOMParserMetrics, AParsedTextReportsItsLengthAndTheSourceItsSizeAndBeginning)
{
    const DOMParser parser;
    const TString text = u" <a>\u00E9</a>";
    const auto lines =
        ElementsAre("+DOMParser_ParseXmlString", "DOMParser_ParseXmlString 'xmls'=9",
                    "+DOMParser_ParseXmlInputSource", "DOMParser_ParseXmlInputSource 'xmls'=10",
                    "DOMParser_ParseXmlInputSource 'xmlt'=<a>\xC3\xA9</a>",
                    "-DOMParser_ParseXmlInputSource", "-DOMParser_ParseXmlString");
    EXPECT_THAT(LinesOf([&] { parser.ParseXmlString(text, u"id"); }), lines);
    EXPECT_THAT(LinesOf([&] { parser.ParseXmlString(TString(text), u"id"); }), lines);
}

TEST(DOMParserMetrics, TheStatisticsHandlerIsCalledWithinTheScope)
{
    DOMParser parser;
    const RecordingMetrics metrics;
    int calls = 0;
    parser.SetStatisticsEventHandler([&](const DOMParserStatistics&) {
        ++calls;
        const std::vector<std::string> lines = metrics.GetLines();
        EXPECT_THAT(lines, testing::Contains("-XercesXMLParser_DoXercesParse"));
        EXPECT_THAT(lines, testing::Not(testing::Contains("-DOMParser_ParseXmlInputSource")));
    });
    parser.ParseXmlString("<a/>", u"id");
    EXPECT_EQ(calls, 1);
    EXPECT_THAT(metrics.GetLines(), testing::Contains("-DOMParser_ParseXmlInputSource"));
}

TEST(DOMParserMetrics, AParsedUtf8TextReportsItsBytes)
{
    const DOMParser parser;
    const std::string text = "<a>\xC3\xA9</a>";
    const auto lines =
        ElementsAre("+DOMParser_ParseXmlString", "DOMParser_ParseXmlString 'xmls'=9",
                    "+DOMParser_ParseXmlInputSource", "DOMParser_ParseXmlInputSource 'xmls'=9",
                    "DOMParser_ParseXmlInputSource 'xmlt'=<a>\xC3\xA9</a>",
                    "-DOMParser_ParseXmlInputSource", "-DOMParser_ParseXmlString");
    EXPECT_THAT(LinesOf([&] { parser.ParseXmlString(text, u"id"); }), lines);
    EXPECT_THAT(LinesOf([&] { parser.ParseXmlString(std::string(text), u"id"); }), lines);
    EXPECT_THAT(LinesOf([&] { parser.ParseXmlString(text.c_str(), u"id"); }), lines);
}

TEST(DOMParserMetrics, ParsedBytesHaveTheirOwnScope)
{
    const DOMParser parser;
    const std::vector<unsigned char> bytes = {'<', 'a', '/', '>'};
    const auto lines = ElementsAre("+DOMParser_ParseXmlBytes", "+DOMParser_ParseXmlInputSource",
                                   "DOMParser_ParseXmlInputSource 'xmls'=4",
                                   "DOMParser_ParseXmlInputSource 'xmlt'=<a/>",
                                   "-DOMParser_ParseXmlInputSource", "-DOMParser_ParseXmlBytes");
    EXPECT_THAT(LinesOf([&] { parser.ParseXmlBytes(bytes); }), lines);
    EXPECT_THAT(LinesOf([&] { parser.ParseXmlBytes(std::vector<unsigned char>(bytes)); }), lines);
}

TEST(DOMParserMetrics, AParsedFileReportsItsSource)
{
    const TemporaryFolder folder;
    const TString path = folder.Write("a.xml", " <a/>");
    EXPECT_THAT(
        LinesOf([&] { DOMParser().ParseXmlFile(path); }),
        ElementsAre("+InputSourceFromFileName", "-InputSourceFromFileName",
                    "+DOMParser_ParseXmlInputSource", "DOMParser_ParseXmlInputSource 'xmls'=5",
                    "DOMParser_ParseXmlInputSource 'xmlt'=<a/>", "-DOMParser_ParseXmlInputSource"));
}

TEST(DOMParserMetrics, ASchemaShowsInTheNameOfTheScope)
{
    DOMParser parser;
    parser.AddXSDResourceId(QtKesResourceId::FileformatZapXsd);
    StringInputSource source(u"<zap version='1'/>", u"id", false);
    EXPECT_THAT(LinesOf([&] { parser.ParseXmlInputSource(source, false); }),
                ElementsAre("+DOMParser_ParseXmlInputSource_withXSD",
                            "DOMParser_ParseXmlInputSource_withXSD 'xmls'=18",
                            "DOMParser_ParseXmlInputSource_withXSD 'xmlt'=<zap version='1'/>",
                            "-DOMParser_ParseXmlInputSource_withXSD"));
}

TEST(DOMParserMetrics, TheSampleIsAtMost128BytesAndDoesNotChangeTheParse)
{
    const TemporaryFolder folder;
    const std::string text = "<a>" + std::string(300, 'x') + "</a>";
    FileInputSource source(folder.Write("a.xml", text));
    std::unique_ptr<DOM> dom;
    const auto lines = LinesOf([&] { dom = DOMParser().ParseXmlInputSource(source, false); });
    EXPECT_THAT(lines,
                testing::Contains("DOMParser_ParseXmlInputSource 'xmlt'=" + text.substr(0, 128)));
    EXPECT_FALSE(dom->HasErrors());
    EXPECT_EQ(dom->GetDocumentRoot()->GetText().length(), 300);
}

TEST(DOMParserMetrics, WithoutASinkNothingIsReadFromTheSource)
{
    class CountingSource : public Utf8InputSource
    {
    public:
        CountingSource() : Utf8InputSource("<a/>", u"id", false) {}
        bool GetBytes(std::string& out, unsigned int maxBytes) override
        {
            ++reads;
            return Utf8InputSource::GetBytes(out, maxBytes);
        }
        void ResetToStart() override
        {
            ++resets;
            Utf8InputSource::ResetToStart();
        }
        int reads = 0;
        int resets = 0;
    };
    CountingSource source;
    DOMParser().ParseXmlInputSource(source, false);
    EXPECT_EQ(source.reads, 0);
    EXPECT_EQ(source.resets, 0);
    const RecordingMetrics metrics;
    DOMParser().ParseXmlInputSource(source, false);
    EXPECT_EQ(source.reads, 1);
    EXPECT_EQ(source.resets, 1);
}

TEST(DOMParserMetrics, AParsedFileIsAnActivityWithNameAndSize)
{
    const TemporaryFolder folder;
    const TString path = folder.Write("a.xml", "<a>\xC3\xA9</a>\n");
    const TString missing = folder.GetPath("missing.xml");
    const RecordingActivities activities;
    const DOMParser parser;
    parser.ParseXmlFile(path);
    parser.ParseXmlFile(missing);
    // What is told is the size of the source, in which the letter takes two bytes.
    const TString latin =
        folder.Write("l.xml", "<?xml version='1.0' encoding='ISO-8859-1'?><a>\xE9</a>");
    parser.ParseXmlFile(latin);
    parser.ParseXmlString("<a/>", u"id");
    ASSERT_EQ(activities.GetRecords().size(), 3U);
    const art::ActivityRecord& record = activities.GetRecords()[0];
    EXPECT_EQ(record.name, "dom-parser.parse-xml-file");
    EXPECT_THAT(record.attributes, ElementsAre(std::pair(TString(u"filename"), path),
                                               std::pair(TString(u"source-size"), TString(u"10"))));
    EXPECT_THAT(activities.GetRecords()[1].attributes,
                ElementsAre(std::pair(TString(u"filename"), missing)));
    EXPECT_THAT(activities.GetRecords()[2].attributes,
                ElementsAre(std::pair(TString(u"filename"), latin),
                            std::pair(TString(u"source-size"), TString(u"52"))));
}
