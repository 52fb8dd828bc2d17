// The comparison of both scanners sees what there is to see.

#include "support/BothScanners.h"

#include <kescorexml/DOMElement.h>
#include <kescorexml/Utf8InputSource.h>

#include <gtest/gtest.h>

namespace {

ParseTrace TraceEvents(const std::string& bytes, const SinkPlan& plan = {})
{
    ParseTrace trace;
    Utf8InputSource source(bytes, u"id", false);
    const auto sink = std::make_shared<TracingSink>(trace, plan);
    const auto parser = XercesXMLParser::Create(source, sink);
    sink->Listen(*parser);
    parser->Parse();
    TraceMessages(trace, *parser);
    return trace;
}

ParseTrace TraceTree(const std::string& bytes, bool hasLineNumbers, bool keepsWhitespace)
{
    ParseTrace trace;
    DOMParser parser;
    parser.SetEnableLineNumbersOnElements(hasLineNumbers);
    Utf8InputSource source(bytes, u"id", false);
    TraceDocument(trace, *parser.ParseXmlInputSource(source, keepsWhitespace));
    return trace;
}

ParseTrace TraceStandalone(const std::string& bytes)
{
    ParseTrace trace;
    TraceResult(trace, StandaloneDOMParser().ParseXmlString(bytes, u"id"));
    return trace;
}

} // namespace

TEST(BothScanners, SeeWhatIsDifferentInEvents)
{
    const std::string bytes = "<a b='1'>x<c/></a>";
    EXPECT_EQ(TraceEvents(bytes), TraceEvents(bytes));
    for (const char* other :
         {"<a b='2'>x<c/></a>", "<a d='1'>x<c/></a>", "<e b='1'>x<c/></a>", "<a b='1'>y<c/></a>",
          "<a b='1' >x<c/></a>", "<a b='1'>x<c></c></a>", "<a b='1'>x<c/>\n</a>", "<a b='1'>x<c/>",
          "<a b='1'>x<c/></b>", "\n<a b='1'>x<c/></a>"})
        EXPECT_NE(TraceEvents(bytes), TraceEvents(other)) << other;
    // What is wrong is told, with its place.
    EXPECT_NE(TraceEvents("<a>&x;</a>"), TraceEvents("<a>&y;</a>"));
    EXPECT_NE(TraceEvents("<a>&x; </a>"), TraceEvents("<a> &x;</a>"));
}

TEST(BothScanners, SeeHowSinksBehave)
{
    const std::string bytes = "<a>x<b/>y<c></c></a>";
    std::vector<SinkPlan> plans(1);
    for (std::size_t event = 1; event < 6; event += 2) {
        plans.push_back({.stopFrom = event});
        plans.push_back({.throwFrom = event});
        plans.push_back({.throwFrom = event, .throwsWhenAsked = true});
    }
    for (std::size_t i = 0; i < plans.size(); ++i) {
        for (std::size_t j = 0; j < i; ++j)
            EXPECT_NE(TraceEvents(bytes, plans[i]), TraceEvents(bytes, plans[j])) << i << " " << j;
    }
}

TEST(BothScanners, SeeWhatIsDifferentInTrees)
{
    const std::string bytes = "<a b='1'>x<c/><d/></a>";
    EXPECT_EQ(TraceTree(bytes, true, true), TraceTree(bytes, true, true));
    EXPECT_EQ(TraceTree(bytes, false, false), TraceTree(" <a b='1'>x<c/> <d/></a>", false, false));
    EXPECT_NE(TraceTree(bytes, true, false), TraceTree("<a b='1'>x<c/> <d/></a>", true, false));
    EXPECT_NE(TraceTree(bytes, false, true), TraceTree("<a b='1'>x<c/> <d/></a>", false, true));
    for (const char* other : {"<a b='2'>x<c/><d/></a>", "<a>x<c/><d/></a>", "<a b='1'><c/><d/></a>",
                              "<a b='1'>x<d/><c/></a>", "<a b='1'>x<c><d/></c></a>",
                              "<a b='1'>x<c/><d/></a>x", "<a b='1'>x<c/><d/></b>"}) {
        EXPECT_NE(TraceTree(bytes, false, false), TraceTree(other, false, false)) << other;
        EXPECT_NE(TraceStandalone(bytes), TraceStandalone(other)) << other;
    }
    EXPECT_NE(TraceStandalone("<a>x<b/></a>"), TraceStandalone("<a><b/>x</a>"));
    const auto document = DOMParser().ParseXmlString(bytes, u"id");
    ParseTrace before;
    TraceDocument(before, *document);
    document->GetDocumentRoot()->SetEncoded(true);
    ParseTrace encoded;
    TraceDocument(encoded, *document);
    EXPECT_NE(encoded, before);
}

TEST(BothScanners, SeeWhichEntitiesAreSkipped)
{
    const auto refer = [](const std::string& name) {
        return "<!DOCTYPE a SYSTEM 'f'><a>&" + name + ";</a>";
    };
    EXPECT_EQ(TraceEvents(refer("x")), TraceEvents(refer("x")));
    EXPECT_NE(TraceEvents(refer("x")), TraceEvents(refer("y")));
    EXPECT_NE(TraceTree(refer("x"), false, false), TraceTree(refer("y"), false, false));
    EXPECT_NE(TraceStandalone(refer("x")), TraceStandalone(refer("y")));
}

TEST(BothScanners, TellDifferencesReadably)
{
    ParseTrace one;
    one.Line("same").Number(1).Line("T").Text(std::u16string_view(u"x\u20ACy"));
    ParseTrace other;
    other.Line("same").Number(1).Line("T").Text(std::u16string_view(u"x\u20ACz"));
    EXPECT_EQ(one.Difference(one, "a", "b"), "");
    EXPECT_EQ(one.Difference(other, "a", "b"),
              "both: ...\nsame 1\nT 3:x\\u20AC\n--- a: y\n--- b: z");
    EXPECT_EQ(ToReadable("a\n\xFF"), "a\\x0A\\xFF");
}
