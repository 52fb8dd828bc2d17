#include "support/BothScanners.h"

#include "support/RecordingMetrics.h"

#include <kescorexml/BinaryInputSource.h>
#include <kescorexml/FileInputSource.h>
#include <kescorexml/InputSourceUtils.h>
#include <kescorexml/StringInputSource.h>
#include <kescorexml/XMLDomFormatter.h>
#include <kesplatform/CorvinaException.h>

#include <exception>
#include <utility>
#include <vector>

namespace {

constexpr std::size_t c_xerces = 0;
constexpr std::size_t c_direct = 1;

/// How much of a document is shown with a difference.
constexpr std::size_t c_shownBytes = 2000;

const TString& Id()
{
    static const TString s_id(u"document");
    return s_id;
}

/// For a parser that is made before there is anything to parse.
Utf8InputSource& EmptySource()
{
    static Utf8InputSource s_source(std::string(), u"empty", false);
    return s_source;
}

const TString& Schema()
{
    static const TString s_schema(
        u"<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'>"
        "<xs:element name='a'><xs:complexType mixed='true'><xs:sequence>"
        "<xs:any processContents='lax' minOccurs='0' maxOccurs='unbounded'/>"
        "</xs:sequence><xs:attribute name='d' type='xs:token' default='added'/>"
        "<xs:anyAttribute processContents='lax'/></xs:complexType></xs:element></xs:schema>");
    return s_schema;
}

std::string_view GetName(BothScanners::Source source)
{
    switch (source) {
    case BothScanners::Source::Utf8:
        return "UTF-8";
    case BothScanners::Source::Utf8Skipping:
        return "UTF-8, white space skipped";
    case BothScanners::Source::Binary:
        return "bytes";
    case BothScanners::Source::BinarySkipping:
        return "bytes, white space skipped";
    case BothScanners::Source::String:
        return "string";
    case BothScanners::Source::StringSkipping:
        return "string, white space skipped";
    case BothScanners::Source::File:
        return "file";
    case BothScanners::Source::OpenFile:
        return "open file";
    }
    return "";
}

std::string Describe(const SinkPlan& plan)
{
    std::string text;
    if (plan.stopFrom != SinkPlan::c_never)
        text +=
            (plan.stopsOnce ? ", stops once at " : ", stops at ") + std::to_string(plan.stopFrom);
    if (plan.throwFrom != SinkPlan::c_never) {
        text += plan.throwsWhenAsked ? ", throws when asked after " : ", throws in ";
        text += std::to_string(plan.throwFrom);
    }
    return text;
}

std::string Join(std::string_view how, BothScanners::Source source, std::string_view more = {})
{
    return std::string(how) + " of " + std::string(GetName(source)) + std::string(more);
}

/// Writes down what is thrown instead of letting it out.
template <typename Work>
void TraceThrown(ParseTrace& trace, const Work& work)
{
    try {
        work();
    } catch (const CorvinaException& exception) {
        trace.Line("thrown").Text(exception.GetConcatenatedMessages());
    } catch (const std::exception& exception) {
        trace.Line("thrown").Text(std::string_view(exception.what()));
    } catch (...) {
        trace.Line("something was thrown");
    }
}

/// What a parse has left of a source.
void TraceSource(ParseTrace& trace, InputSource& source)
{
    trace.Line("source").Number(source.Size());
    TraceThrown(trace, [&] {
        std::string piece;
        if (source.GetBytes(piece, 16))
            trace.Text(std::string_view(piece));
    });
}

void TraceRecords(ParseTrace& trace, const RecordingMetrics& metrics,
                  const RecordingActivities& activities)
{
    for (const std::string& line : metrics.GetLines())
        trace.Line("metrics").Text(std::string_view(line));
    for (const art::ActivityRecord& record : activities.GetRecords()) {
        trace.Line("activity").Text(record.name);
        for (const auto& [key, value] : record.attributes)
            trace.Text(key).Text(value);
    }
}

template <typename TreeParser>
void TraceStatistics(ParseTrace& trace, TreeParser& parser)
{
    parser.SetStatisticsEventHandler([&trace](const DOMParserStatistics& statistics) {
        trace.Line("statistics").Number(static_cast<long long>(statistics.sourceSize));
        trace.Text(statistics.sourceId);
    });
}

void TraceText(ParseTrace& trace, const DOM& document)
{
    trace.Line("text");
    TraceThrown(trace,
                [&] { trace.Text(XMLDomFormatter::RenderAsXMLString(document, nullptr, true)); });
}

void Trace(ParseTrace& trace, const std::unique_ptr<DOM>& document)
{
    TraceDocument(trace, *document);
}

void Trace(ParseTrace& trace, const StandaloneParseResult& result)
{
    TraceResult(trace, result);
}

/// Hands the document to a parser in every form that both kinds of parsers take.
template <typename TreeParser>
void TraceFrontDoors(ParseTrace& trace, const TreeParser& parser, const std::string& bytes,
                     const TString& path)
{
    const auto attempt = [&](std::string_view how, const auto& parse) {
        trace.Line(how);
        TraceThrown(trace, [&] { Trace(trace, parse()); });
    };
    attempt("string", [&] { return parser.ParseXmlString(TString::fromStdString(bytes), Id()); });
    attempt("UTF-8", [&] { return parser.ParseXmlString(bytes, Id()); });
    attempt("terminated", [&] { return parser.ParseXmlString(bytes.c_str(), Id()); });
    attempt("bytes", [&] {
        return parser.ParseXmlBytes(std::vector<unsigned char>(bytes.begin(), bytes.end()));
    });
    attempt("file", [&] { return parser.ParseXmlFile(path); });
}

} // namespace

// One comparison

template <typename Work>
void BothScanners::RunOn(std::size_t side, ParseTrace& trace, const Work& work)
{
    const DirectScanning::Switch switched(side == c_direct);
    // A source that cannot be opened is not parsed at all.
    DirectScanning::SetLastVerdict(DirectScanning::Verdict::None);
    TraceThrown(trace, [&] { work(m_sides[side], trace); });
}

template <typename Work>
std::string BothScanners::Compare(std::string_view what, const std::string& bytes, const Work& work)
{
    std::array<ParseTrace, 2> traces;
    RunOn(c_xerces, traces[c_xerces], work);
    const bool isOff = DirectScanning::GetLastVerdict() != DirectScanning::Verdict::Accepted;
    RunOn(c_direct, traces[c_direct], work);
    m_lastVerdict = DirectScanning::GetLastVerdict();
    ++m_verdicts.at(static_cast<std::size_t>(m_lastVerdict));
    std::string difference =
        isOff ? traces[c_xerces].Difference(traces[c_direct], "by Xerces", "with direct scanner")
              : "the direct scanner was at work though it was switched off";
    if (difference.empty())
        return difference;
    return std::string(what) + " (" + DirectScanning::GetName(m_lastVerdict) + "), document of " +
           std::to_string(bytes.size()) +
           " bytes: " + ToReadable(std::string_view(bytes).substr(0, c_shownBytes)) + "\n" +
           difference + "\n";
}

void BothScanners::Prepare(XercesXMLParser& parser) const
{
    static_cast<ParseLimits&>(parser) = m_settings.limits;
    if (m_settings.expandsEntities)
        parser.AllowEntityExpansion_Insecure();
    if (m_settings.validates)
        parser.LoadXSDString(Schema(), u"schema");
}

XercesXMLParser& BothScanners::GetParser(Side& side) const
{
    if (side.parser == nullptr) {
        ParseTrace unused;
        side.parser = XercesXMLParser::Create(EmptySource(),
                                              std::make_shared<TracingSink>(unused, SinkPlan()));
        Prepare(*side.parser);
    }
    return *side.parser;
}

DOMParser& BothScanners::GetDomParser(Side& side, bool hasLineNumbers) const
{
    auto& parser = side.domParsers[hasLineNumbers ? 1 : 0];
    if (!parser) {
        parser.emplace();
        static_cast<ParseLimits&>(*parser) = m_settings.limits;
        parser->SetEnableLineNumbersOnElements(hasLineNumbers);
    }
    return *parser;
}

StandaloneDOMParser& BothScanners::GetStandaloneParser(Side& side) const
{
    auto& parser = side.standaloneParser;
    if (!parser) {
        parser.emplace();
        static_cast<ParseLimits&>(*parser) = m_settings.limits;
        if (m_settings.expandsEntities)
            parser->AllowEntityExpansion_Insecure();
    }
    return *parser;
}

const TString& BothScanners::WriteFile(const std::string& bytes)
{
    if (m_written != bytes) {
        if (!m_files)
            m_files.emplace();
        m_path = m_files->Write(u"document.xml", bytes).GetString();
        m_written = bytes;
    }
    return m_path;
}

std::unique_ptr<InputSource> BothScanners::MakeSource(const std::string& bytes, Source source)
{
    const bool isSkipping = source == Source::Utf8Skipping || source == Source::BinarySkipping ||
                            source == Source::StringSkipping;
    switch (source) {
    case Source::Utf8:
    case Source::Utf8Skipping:
        break;
    case Source::Binary:
    case Source::BinarySkipping:
        return std::make_unique<BinaryInputSource>(
            std::vector<unsigned char>(bytes.begin(), bytes.end()), Id(), isSkipping);
    case Source::String:
    case Source::StringSkipping:
        return std::make_unique<StringInputSource>(TString::fromStdString(bytes), Id(), isSkipping);
    case Source::File:
        return InputSourceUtils::InputSourceFromFileName(WriteFile(bytes), true);
    case Source::OpenFile:
        return std::make_unique<FileInputSource>(WriteFile(bytes));
    }
    return std::make_unique<Utf8InputSource>(bytes, Id(), isSkipping);
}

// Events

namespace {

/// All that a parse tells.
void TraceParse(ParseTrace& trace, XercesXMLParser& parser)
{
    trace.Line("before");
    TracePosition(trace, parser);
    TraceThrown(trace, [&] { parser.Parse(); });
    trace.Line("after");
    TracePosition(trace, parser);
    TraceMessages(trace, parser);
}

} // namespace

void BothScanners::RunParser(XercesXMLParser& parser, InputSource& source, const SinkPlan& plan,
                             ParseTrace& trace)
{
    const auto sink = std::make_shared<TracingSink>(trace, plan);
    sink->Listen(parser);
    parser.Reload(source, sink);
    TraceParse(trace, parser);
    TraceSource(trace, source);
}

std::string BothScanners::CompareEvents(const std::string& bytes, Source source,
                                        const SinkPlan& plan)
{
    return Compare(Join("events", source, Describe(plan)), bytes,
                   [&](Side& side, ParseTrace& trace) {
                       const std::unique_ptr<InputSource> input = MakeSource(bytes, source);
                       RunParser(GetParser(side), *input, plan, trace);
                   });
}

std::string BothScanners::CompareMetrics(const std::string& bytes, Source source)
{
    return Compare(Join("metrics", source), bytes, [&](Side& side, ParseTrace& trace) {
        const RecordingMetrics metrics;
        const RecordingActivities activities;
        const std::unique_ptr<InputSource> input = MakeSource(bytes, source);
        RunParser(GetParser(side), *input, {}, trace);
        TraceRecords(trace, metrics, activities);
    });
}

std::string BothScanners::CompareNewParser(const std::string& bytes, Source source,
                                           const SinkPlan& plan)
{
    return Compare(Join("a new parser", source, Describe(plan)), bytes,
                   [&](Side&, ParseTrace& trace) {
                       const RecordingMetrics metrics;
                       const RecordingActivities activities;
                       const std::unique_ptr<InputSource> input = MakeSource(bytes, source);
                       const auto sink = std::make_shared<TracingSink>(trace, plan);
                       const auto parser = XercesXMLParser::Create(*input, sink);
                       sink->Listen(*parser);
                       Prepare(*parser);
                       TraceParse(trace, *parser);
                       TraceParse(trace, *parser);
                       TraceSource(trace, *input);
                       TraceRecords(trace, metrics, activities);
                   });
}

// Trees

std::string BothScanners::CompareDom(const std::string& bytes, Source source, Tree tree)
{
    std::string what = tree.hasLineNumbers ? "document with line numbers" : "document";
    what += tree.keepsWhitespace ? " and all white space" : "";
    return Compare(Join(what, source), bytes, [&](Side& side, ParseTrace& trace) {
        const std::unique_ptr<InputSource> input = MakeSource(bytes, source);
        DOMParser& parser = GetDomParser(side, tree.hasLineNumbers);
        TraceStatistics(trace, parser);
        const auto document = parser.ParseXmlInputSource(*input, tree.keepsWhitespace);
        TraceText(trace, *document);
        TraceDocument(trace, *document);
        TraceSource(trace, *input);
    });
}

std::string BothScanners::CompareStandalone(const std::string& bytes, Source source,
                                            bool keepsWhitespace)
{
    const std::string what = keepsWhitespace ? "standalone, all white space" : "standalone";
    return Compare(Join(what, source), bytes, [&](Side& side, ParseTrace& trace) {
        const std::unique_ptr<InputSource> input = MakeSource(bytes, source);
        StandaloneDOMParser& parser = GetStandaloneParser(side);
        TraceStatistics(trace, parser);
        TraceResult(trace, parser.ParseXmlInputSource(*input, keepsWhitespace));
        TraceSource(trace, *input);
    });
}

std::string BothScanners::CompareFrontDoors(const std::string& bytes)
{
    const TString path = WriteFile(bytes);
    return Compare("front doors", bytes, [&](Side&, ParseTrace& trace) {
        const RecordingMetrics metrics;
        const RecordingActivities activities;
        DOMParser parser;
        static_cast<ParseLimits&>(parser) = m_settings.limits;
        parser.SetEnableLineNumbersOnElements(true);
        TraceStatistics(trace, parser);
        TraceFrontDoors(trace, parser, bytes, path);
        StandaloneDOMParser standaloneParser;
        static_cast<ParseLimits&>(standaloneParser) = m_settings.limits;
        TraceStatistics(trace, standaloneParser);
        TraceFrontDoors(trace, standaloneParser, bytes, path);
        TraceRecords(trace, metrics, activities);
    });
}

std::string BothScanners::CompareText(const std::u16string& text)
{
    const TString units{std::u16string_view(text)};
    return Compare("text", units.toStdString(), [&](Side& side, ParseTrace& trace) {
        StringInputSource input(units, Id(), false);
        RunParser(GetParser(side), input, {}, trace);
        DOMParser& domParser = GetDomParser(side, true);
        TraceStatistics(trace, domParser);
        TraceDocument(trace, *domParser.ParseXmlString(units, Id()));
        StandaloneDOMParser& standaloneParser = GetStandaloneParser(side);
        TraceStatistics(trace, standaloneParser);
        TraceResult(trace, standaloneParser.ParseXmlString(units, Id()));
    });
}

// Many comparisons

std::string BothScanners::CompareWith(const std::string& bytes, Source source)
{
    std::string differences = CompareEvents(bytes, source);
    differences += CompareNewParser(bytes, source);
    differences += CompareMetrics(bytes, source);
    differences += CompareDom(bytes, source, {false, false});
    differences += CompareDom(bytes, source, {true, true});
    differences += CompareStandalone(bytes, source, source == Source::Binary);
    if (source == Source::Utf8 || source == Source::Binary) {
        differences += CompareDom(bytes, source, {true, false});
        differences += CompareDom(bytes, source, {false, true});
    }
    return differences;
}

std::string BothScanners::CompareAll(const std::string& bytes)
{
    for (const Source source : c_sources) {
        std::string differences = CompareWith(bytes, source);
        if (!differences.empty())
            return differences;
    }
    return CompareFrontDoors(bytes);
}

std::string BothScanners::CompareSome(const std::string& bytes, std::size_t turn)
{
    const std::string difference = CompareEvents(bytes);
    switch (turn % 8) {
    case 0:
        return difference + CompareEvents(bytes, Source::Binary);
    case 1:
        return difference + CompareDom(bytes, Source::Binary, {true, true});
    case 2:
        return difference + CompareDom(bytes, Source::Utf8Skipping, {turn % 3 == 0, false});
    case 3:
        return difference + CompareStandalone(bytes, Source::Binary, turn % 3 == 0);
    case 4:
        return difference + CompareEvents(bytes, Source::Utf8Skipping);
    case 5:
        return difference + CompareMetrics(bytes, Source::String);
    case 6:
        return difference + CompareDom(bytes, Source::String, {turn % 3 == 0, true});
    default:
        return difference + CompareNewParser(bytes, Source::Binary);
    }
}

std::string BothScanners::CompareSinks(const std::string& bytes, std::size_t maxEvents)
{
    std::string differences;
    for (std::size_t event = 1; event <= maxEvents && differences.empty(); ++event) {
        SinkPlan plan;
        plan.stopFrom = event;
        differences += CompareEvents(bytes, Source::Utf8, plan);
        plan.stopsOnce = true;
        differences += CompareEvents(bytes, Source::Binary, plan);
        differences += CompareNewParser(bytes, Source::Utf8, plan);
        plan = {};
        plan.throwFrom = event;
        plan.thrown = static_cast<SinkPlan::Thrown>(event % SinkPlan::c_kindsThrown);
        differences += CompareEvents(bytes, Source::Utf8, plan);
        differences += CompareNewParser(bytes, Source::Binary, plan);
        plan.throwsWhenAsked = true;
        differences += CompareEvents(bytes, Source::Utf8, plan);
        // Nothing may be left of what was abandoned.
        differences += CompareEvents(bytes);
    }
    return differences;
}

std::size_t BothScanners::Count(DirectScanning::Verdict verdict) const
{
    return m_verdicts.at(static_cast<std::size_t>(verdict));
}
