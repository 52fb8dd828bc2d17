#include "Targets.h"

#include "bytes/XercesInputSource.h"
#include "direct/DirectScanning.h"
#include "support/ByteReader.h"
#include "support/ParseTrace.h"
#include "support/ParserInputs.h"
#include "support/Require.h"

#include <kescorexml/DOM.h>
#include <kescorexml/DOMParser.h>
#include <kescorexml/StandaloneDOMParser.h>
#include <kescorexml/XercesXMLParser.h>
#include <kesplatform/CorvinaException.h>
#include <kesplatform/TLog.h>

#include <array>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace {

using Location = std::pair<int, int>;

/// What a parser leaves untouched when it knows no position.
constexpr Location c_unknown{-1, -2};

/// How deep calls may be made within calls.
constexpr int c_maximumDepth = 3;

/// A program of calls: each byte is one, or an argument of one. Sinks, sources and handlers of
/// statistics read what they do, while a parser calls them, from the same bytes.
class Program
{
public:
    Program(FuzzTargets::Bytes bytes, ParseTrace& trace) : m_reader(bytes), m_trace(trace)
    {
        MakeParser();
        m_dom.emplace();
        m_standalone.emplace();
    }
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    void Run();

    // What those call that parsers call.

    void MeetEvent();
    bool IsDone();
    TString ResolveSchema();
    void MeetSource();
    void MeetStatistics(const DOMParserStatistics& statistics);

private:
    class Sink;
    class Source;

    /// Within something that a parser calls, while it lives.
    class Depth
    {
    public:
        explicit Depth(int& depth) : m_depth(depth) { ++m_depth; }
        ~Depth() { --m_depth; }
        Depth(const Depth&) = delete;
        Depth& operator=(const Depth&) = delete;

    private:
        int& m_depth;
    };

    struct Load
    {
        std::string_view schema;
        TString id;
    };

    /// What is thrown from an event would not get here.
    void Expect(bool holds, const char* promise)
    {
        if (!holds && m_broken.empty())
            m_broken = promise;
    }
    template <typename Work>
    void Attempt(std::string_view what, const Work& work);

    void Step();
    void StepInside();
    void CallParser();
    void LoadSchema();
    void CallDom();
    void ParseDom(std::size_t door);
    void CallStandalone();
    void ParseStandalone(std::size_t door);
    template <typename TreeParser>
    void SetHandler(TreeParser& parser);

    void MakeParser();
    void Parse();
    void Reload();
    InputSource& MakeSource(const std::string& bytes);
    std::unique_ptr<InputSource> MakeOwnSource(const std::string& bytes);
    Location Ask();
    void Look();
    void CheckDocument(const std::unique_ptr<DOM>& document);
    void CheckParserIsUsable();
    void CheckTreeParsersAreUsable();

    ByteReader m_reader;
    ParseTrace& m_trace;
    std::string m_broken;
    int m_depth = 0;
    /// Parsing or loading a schema; then the parser is to stay the one that it is.
    bool m_isBusy = false;
    std::vector<std::unique_ptr<InputSource>> m_sources;
    std::unique_ptr<XercesXMLParser> m_parser;
    Location m_lastEvent = c_unknown;
    bool m_hasEventInParse = false;
    bool m_isDone = false;
    bool m_isDoneOnce = false;
    bool m_expands = false;
    bool m_hasLimits = false;
    /// All that the parser was told to load, while that is known.
    std::optional<std::vector<Load>> m_loads;
    std::optional<DOMParser> m_dom;
    bool m_domHasSchema = false;
    std::optional<StandaloneDOMParser> m_standalone;
    bool m_standaloneHasSchema = false;
};

class Program::Sink : public SAXInterfaceExtension
{
public:
    explicit Sink(Program& program) : m_program(program) {}
    void StartElement(TString&& name, std::unordered_map<TString, TString>&& attributes) override
    {
        m_program.m_trace.Line("<").Text(name);
        for (const auto& [key, value] : attributes)
            m_program.m_trace.Text(key).Text(value);
        const TString taken = std::move(name);
        m_program.MeetEvent();
    }
    void EndElement() override
    {
        m_program.m_trace.Line("/");
        m_program.MeetEvent();
    }
    void TextContent(const TString& text) override
    {
        m_program.m_trace.Line("T").Text(text);
        m_program.MeetEvent();
    }
    bool IsDone() override { return m_program.IsDone(); }
    TString ResolveSchemaLocation(const TString&, const TString& location) override
    {
        m_program.m_trace.Line("resolve").Text(location);
        return m_program.ResolveSchema();
    }
    TString FilterSchemaText(const TString& text, const TString&) override
    {
        m_program.StepInside();
        return text;
    }

private:
    Program& m_program;
};

/// Calls, too, when it is read.
class Program::Source : public Utf8InputSource
{
public:
    Source(Program& program, const std::string& bytes)
        : Utf8InputSource(bytes, u"calling", false), m_program(program)
    {
    }
    XercesInputSource GetXercesInputSource(ColonProcessingMode mode) override
    {
        m_program.MeetSource();
        return Utf8InputSource::GetXercesInputSource(mode);
    }
    void ResetToStart() override
    {
        m_program.MeetSource();
        Utf8InputSource::ResetToStart();
    }

private:
    Program& m_program;
};

template <typename Work>
void Program::Attempt(std::string_view what, const Work& work)
{
    m_trace.Line(what);
    try {
        work();
    } catch (const CorvinaException& exception) {
        m_trace.Line("thrown").Text(exception.GetConcatenatedMessages());
    } catch (const std::exception& exception) {
        m_trace.Line("thrown").Text(std::string_view(exception.what()));
    } catch (...) {
        m_trace.Line("something was thrown");
    }
}

// What is called

void Program::Run()
{
    while (!m_reader.IsAtEnd())
        Step();
    CheckParserIsUsable();
    CheckTreeParsersAreUsable();
    Require(m_broken.empty(), m_broken);
}

void Program::Step()
{
    switch (m_reader.Below(4)) {
    case 2:
        return CallDom();
    case 3:
        return CallStandalone();
    default:
        CallParser();
        Look();
    }
}

void Program::StepInside()
{
    if (m_depth >= c_maximumDepth)
        return;
    const Depth depth(m_depth);
    switch (m_reader.Below(16)) {
    case 9:
        return Look();
    case 10:
    case 11:
        return Step();
    case 12:
        m_isDone = true;
        return;
    case 13:
        m_isDoneOnce = true;
        return;
    case 14:
        // What is thrown in calls within calls goes through them all.
        return m_depth < c_maximumDepth ? Step() : void();
    case 15:
        m_trace.Line("throws");
        ThrowAs(static_cast<SinkPlan::Thrown>(m_reader.Below(SinkPlan::c_kindsThrown)));
    default:
        return;
    }
}

void Program::CallParser()
{
    switch (m_reader.Below(16)) {
    case 1:
        return Reload();
    case 2:
    case 3:
        return LoadSchema();
    case 4:
        m_expands = true;
        return m_parser->AllowEntityExpansion_Insecure();
    case 5:
        m_hasLimits = true;
        return ParserInputs::ReadLimit(m_reader, *m_parser);
    case 6:
        return m_parser->ClearErrorsAndWarnings();
    case 7:
        return m_parser->Warning(m_reader.Text(), TError::ErrorInfo::NoError());
    case 8:
        return m_parser->Error(m_reader.Text(), TError::ErrorInfo::NoError());
    case 9:
        return m_parser->FatalError(m_reader.Text(), TError::ErrorInfo::NoError());
    case 10:
        return Look();
    case 11:
        return m_isBusy ? void() : MakeParser();
    case 12:
        return m_isBusy ? void() : CheckParserIsUsable();
    default:
        Parse();
    }
}

void Program::LoadSchema()
{
    const bool wasBusy = std::exchange(m_isBusy, true);
    const std::size_t door = m_reader.Below(8);
    const std::size_t schema = m_reader.Below(std::size(ParserInputs::c_schemas));
    const std::string_view text = ParserInputs::c_schemas[schema];
    const TString& id = m_reader.Pick(ParserInputs::c_identifiers);
    if (!wasBusy && (m_hasLimits || door > 3 || schema >= ParserInputs::c_schemasByThemselves))
        m_loads.reset();
    else if (!wasBusy && m_loads)
        m_loads->push_back({text, id});
    Attempt("load", [&] {
        switch (door) {
        case 4:
            return m_parser->LoadXSDSource(MakeSource(std::string(text)));
        case 5:
            return m_parser->LoadXSDResource(m_reader.Pick(ParserInputs::c_resources));
        case 6:
            return m_parser->LoadXSDFile(ParserInputs::GetFiles().ReadOrMissing(m_reader));
        case 7:
            return m_parser->LoadXSDString(TString::fromStdString(std::string(text)), id);
        default:
            return m_parser->LoadXSDString(std::string(text), id);
        }
    });
    m_isBusy = wasBusy;
}

void Program::CallDom()
{
    const std::size_t choice = m_reader.Below(16);
    switch (choice) {
    case 10:
        m_domHasSchema = true;
        return Attempt("schema", [&] {
            m_dom->AddXSDInputSource(
                MakeOwnSource(std::string(m_reader.Pick(ParserInputs::c_schemas))));
        });
    case 11:
        m_domHasSchema = true;
        return Attempt("resource", [&] {
            m_dom->AddXSDResourceId(m_reader.Pick(ParserInputs::c_resourceIds));
        });
    case 12:
        m_dom->SetEnableLineNumbersOnElements(!m_dom->GetEnableLineNumbersOnElements());
        return m_dom->SetRestrictExternalPaths(!m_dom->GetRestrictExternalPaths());
    case 13:
        return SetHandler(*m_dom);
    case 14:
        return ParserInputs::ReadLimit(m_reader, *m_dom);
    case 15:
        // Its own handlers and sources may be at work.
        if (m_depth == 0) {
            m_dom.emplace();
            m_domHasSchema = false;
        }
        return;
    default:
        ParseDom(choice);
    }
}

void Program::ParseDom(std::size_t door)
{
    const std::string bytes = ParserInputs::ReadDocument(m_reader);
    Attempt("document", [&] {
        switch (door) {
        case 1:
            return CheckDocument(m_dom->ParseXmlString(TString::fromStdString(bytes), u"id"));
        case 2: {
            TString text = TString::fromStdString(bytes);
            CheckDocument(m_dom->ParseXmlString(std::move(text), u"id"));
            text = u"<moved/>";
            return CheckDocument(m_dom->ParseXmlString(std::move(text), u"id"));
        }
        case 3:
            return CheckDocument(m_dom->ParseXmlString(bytes, u"id"));
        case 4:
            return CheckDocument(m_dom->ParseXmlString(std::string(bytes), u"id"));
        case 5:
            return CheckDocument(m_dom->ParseXmlString(bytes.c_str(), u"id"));
        case 6: {
            auto vector = ParserInputs::ToBytes(bytes);
            CheckDocument(m_dom->ParseXmlBytes(vector));
            return CheckDocument(m_dom->ParseXmlBytes(std::move(vector)));
        }
        case 7:
            return CheckDocument(
                m_dom->ParseXmlFile(ParserInputs::GetFiles().ReadOrMissing(m_reader)));
        default:
            return CheckDocument(m_dom->ParseXmlInputSource(MakeSource(bytes), door == 8));
        }
    });
}

void Program::CallStandalone()
{
    const std::size_t choice = m_reader.Below(16);
    switch (choice) {
    case 10:
        m_standaloneHasSchema = true;
        return Attempt("schema", [&] {
            m_standalone->AddXSDInputSource(
                MakeOwnSource(std::string(m_reader.Pick(ParserInputs::c_schemas))));
        });
    case 11:
        m_standaloneHasSchema = true;
        return Attempt("resource", [&] {
            m_standalone->AddXSDResourceId(m_reader.Pick(ParserInputs::c_resourceIds));
        });
    case 12:
        return m_standalone->AllowEntityExpansion_Insecure();
    case 13:
        return SetHandler(*m_standalone);
    case 14:
        return ParserInputs::ReadLimit(m_reader, *m_standalone);
    case 15:
        if (m_depth == 0) {
            m_standalone.emplace();
            m_standaloneHasSchema = false;
        }
        return;
    default:
        ParseStandalone(choice);
    }
}

void Program::ParseStandalone(std::size_t door)
{
    const std::string bytes = ParserInputs::ReadDocument(m_reader);
    const auto check = [&](const StandaloneParseResult& result) {
        TraceResult(m_trace, result);
        Expect(result.root != nullptr, "a result has a root");
        Expect(result.errors.size() == result.diagnostics.size(), "each error is taken apart");
    };
    Attempt("result", [&] {
        switch (door) {
        case 1:
            return check(m_standalone->ParseXmlString(TString::fromStdString(bytes), u"id"));
        case 2:
            return check(m_standalone->ParseXmlString(bytes.c_str(), u"id"));
        case 3:
            return check(m_standalone->ParseXmlBytes(ParserInputs::ToBytes(bytes)));
        case 4:
            return check(
                m_standalone->ParseXmlFile(ParserInputs::GetFiles().ReadOrMissing(m_reader)));
        case 5:
            return check(m_standalone->ParseXmlString(bytes, u"id"));
        default:
            return check(m_standalone->ParseXmlInputSource(MakeSource(bytes), door == 6));
        }
    });
}

template <typename TreeParser>
void Program::SetHandler(TreeParser& parser)
{
    // Larger than what a function keeps in itself.
    const std::array<char, 64> ballast{};
    switch (m_reader.Below(4)) {
    case 1:
        return parser.SetStatisticsEventHandler(nullptr);
    case 2:
        // One that takes itself away.
        return parser.SetStatisticsEventHandler(
            [this, &parser, ballast](const DOMParserStatistics& statistics) {
                parser.SetStatisticsEventHandler(nullptr);
                m_trace.Number(ballast.front());
                MeetStatistics(statistics);
            });
    default:
        return parser.SetStatisticsEventHandler(
            [this, ballast](const DOMParserStatistics& statistics) {
                MeetStatistics(statistics);
                m_trace.Number(ballast.back());
            });
    }
}

// What parsers call

void Program::MeetEvent()
{
    const Location location = Ask();
    Expect(location.first >= 1 && location.second >= 1, "an event has a position");
    if (m_hasEventInParse)
        Expect(location >= m_lastEvent, "events come in the order of the document");
    m_hasEventInParse = true;
    m_lastEvent = location;
    StepInside();
}

bool Program::IsDone()
{
    return m_isDone || std::exchange(m_isDoneOnce, false);
}

TString Program::ResolveSchema()
{
    Expect(Ask() == m_lastEvent, "a schema that loads leaves the position of the last event");
    StepInside();
    return m_reader.Below(2) == 0 ? ParserInputs::GetFiles().GetSchema() : TString();
}

void Program::MeetSource()
{
    m_trace.Line("source");
    StepInside();
}

void Program::MeetStatistics(const DOMParserStatistics& statistics)
{
    m_trace.Line("statistics").Number(static_cast<long long>(statistics.sourceSize));
    m_trace.Text(statistics.sourceId);
    StepInside();
}

// Calls of several steps

void Program::MakeParser()
{
    m_parser = XercesXMLParser::Create(MakeSource(std::string(ParserInputs::c_documents[0])),
                                       std::make_shared<Sink>(*this));
    m_lastEvent = c_unknown;
    m_isDone = false;
    m_expands = false;
    m_hasLimits = false;
    m_loads.emplace();
}

void Program::Parse()
{
    const bool isNested = std::exchange(m_isBusy, true);
    if (!isNested)
        m_hasEventInParse = false;
    Attempt("parse", [&] { m_parser->Parse(); });
    m_isBusy = isNested;
    if (isNested)
        Expect(m_parser->HasErrors(), "no parse begins in an event");
    Expect(Ask() == m_lastEvent, "after a parse the position is that of the last event");
}

void Program::Reload()
{
    const std::string bytes = ParserInputs::ReadDocument(m_reader);
    bool isReloaded = false;
    Attempt("reload", [&] {
        m_parser->Reload(MakeSource(bytes), std::make_shared<Sink>(*this));
        isReloaded = true;
        m_lastEvent = c_unknown;
        m_isDone = false;
    });
    Expect(!m_isBusy || !isReloaded, "a parser that is at work takes no other source");
}

std::unique_ptr<InputSource> Program::MakeOwnSource(const std::string& bytes)
{
    if (m_reader.Below(4) == 3)
        return std::make_unique<Source>(*this, bytes);
    return ParserInputs::ReadSource(m_reader, bytes);
}

InputSource& Program::MakeSource(const std::string& bytes)
{
    return *m_sources.emplace_back(MakeOwnSource(bytes));
}

Location Program::Ask()
{
    Location location = c_unknown;
    m_parser->GetCurrentLocation(location.first, location.second);
    m_trace.Line("at").Number(location.first).Number(location.second);
    return location;
}

void CheckList(const std::vector<XMLDiagnostic>& diagnostics, const std::vector<TString>& messages,
               std::size_t records, bool isOfErrors)
{
    Require(diagnostics.size() == messages.size() && records == messages.size(),
            "each message is taken apart and has a record");
    for (std::size_t i = 0; i < messages.size(); ++i) {
        const XMLDiagnostic& diagnostic = diagnostics[i];
        RequireEqual(diagnostic.GetMessage(), messages[i], "a diagnostic gives its message");
        Require((diagnostic.GetKind() != XMLDiagnostic::Kind::Warning) == isOfErrors,
                "each kind stands in its list");
        Require(diagnostic.GetLine() >= 0 && diagnostic.GetColumn() >= 0,
                "a position is none or one");
    }
}

void Program::Look()
{
    const XercesXMLParser& parser = *m_parser;
    TraceMessages(m_trace, parser);
    Ask();
    for (const TString& name : parser.GetXSDNames())
        m_trace.Line("schema").Text(name);
    try {
        CheckList(parser.GetErrorDiagnostics(), parser.GetErrors(),
                  parser.GetMetadataForErrors().size(), true);
        CheckList(parser.GetWarningDiagnostics(), parser.GetWarnings(),
                  parser.GetMetadataForWarnings().size(), false);
    } catch (const Mismatch& mismatch) {
        Expect(false, mismatch.what());
    }
    Expect(parser.HasErrors() == !parser.GetErrors().empty(), "errors are known to be there");
    Expect(parser.HasWarnings() == !parser.GetWarnings().empty(), "warnings are known");
    bool hasFatalError = false;
    for (const XMLDiagnostic& error : parser.GetErrorDiagnostics())
        hasFatalError |= error.GetKind() == XMLDiagnostic::Kind::FatalError;
    Expect(!hasFatalError || parser.HasFatallyErrored(), "a fatal error is known to be there");
}

void Program::CheckDocument(const std::unique_ptr<DOM>& document)
{
    Expect(document != nullptr, "a parse gives a document");
    TraceDocument(m_trace, *document);
    Expect(document->GetErrors().size() == document->GetMetadataForErrors().size() &&
               document->GetErrors().size() == document->GetErrorDiagnostics().size(),
           "each error of a document is taken apart and has a record");
}

// Whatever was called before, parsers are as good as new ones

namespace Usable {

constexpr const char* c_document = "<a b='1'>x<c/>\ny&amp;<c>z</c></a>";

ParseTrace Trace(XercesXMLParser& parser)
{
    ParseTrace trace;
    Utf8InputSource source(std::string(c_document), u"usable", false);
    const auto sink = std::make_shared<TracingSink>(trace, SinkPlan());
    sink->Listen(parser);
    static_cast<ParseLimits&>(parser) = ParseLimits();
    parser.Reload(source, sink);
    parser.Parse();
    TraceMessages(trace, parser);
    return trace;
}

template <typename Result>
ParseTrace TraceTree(const Result& result)
{
    ParseTrace trace;
    if constexpr (requires { result->GetRoot(); })
        TraceDocument(trace, *result);
    else
        TraceResult(trace, result);
    return trace;
}

} // namespace Usable

void Program::CheckParserIsUsable()
{
    const ParseTrace trace = Usable::Trace(*m_parser);
    m_hasLimits = false;
    // It has no sink but the one that has gone.
    m_parser->Reload(MakeSource(std::string(ParserInputs::c_documents[0])),
                     std::make_shared<Sink>(*this));
    m_lastEvent = c_unknown;
    m_isDone = false;
    if (!m_loads)
        return;
    Utf8InputSource source(std::string("<a/>"), u"unused", false);
    ParseTrace unused;
    const auto fresh =
        XercesXMLParser::Create(source, std::make_shared<TracingSink>(unused, SinkPlan()));
    if (m_expands)
        fresh->AllowEntityExpansion_Insecure();
    for (const Load& load : *m_loads) {
        try {
            fresh->LoadXSDString(std::string(load.schema), load.id);
        } catch (const CorvinaException&) {
            continue;
        }
    }
    const std::string difference = trace.Difference(Usable::Trace(*fresh), "after all", "anew");
    Expect(difference.empty(), difference.c_str());
}

void Program::CheckTreeParsersAreUsable()
{
    if (!m_domHasSchema) {
        static_cast<ParseLimits&>(*m_dom) = ParseLimits();
        m_dom->SetStatisticsEventHandler(nullptr);
        m_dom->SetEnableLineNumbersOnElements(false);
        const auto trace = Usable::TraceTree(m_dom->ParseXmlString(Usable::c_document, u"x"));
        Expect(trace == Usable::TraceTree(DOMParser().ParseXmlString(Usable::c_document, u"x")),
               "a parser of documents is as good as a new one");
    }
    if (!m_standaloneHasSchema) {
        static_cast<ParseLimits&>(*m_standalone) = ParseLimits();
        m_standalone->SetStatisticsEventHandler(nullptr);
        const auto trace =
            Usable::TraceTree(m_standalone->ParseXmlString(Usable::c_document, u"x"));
        Expect(trace == Usable::TraceTree(
                            StandaloneDOMParser().ParseXmlString(Usable::c_document, u"x")),
               "a parser of standalone trees is as good as a new one");
    }
}

/// Nobody reads what is logged of files that are missing.
class Silence
{
public:
    Silence() : m_before(TLog::SetSink([](const TLog::Record&) {})) {}
    ~Silence() { TLog::SetSink(std::move(m_before)); }
    Silence(const Silence&) = delete;
    Silence& operator=(const Silence&) = delete;

private:
    TLog::Sink m_before;
};

ParseTrace RunProgram(FuzzTargets::Bytes bytes, bool isDirect)
{
    const Silence silence;
    const DirectScanning::Switch switched(isDirect);
    ParseTrace trace;
    Program(bytes, trace).Run();
    return trace;
}

} // namespace

/// Every public operation of the parsers at every moment: before and after parses, in events, while
/// a source is read, a schema loads or statistics are told, after stops and after what was thrown.
/// The parsers are usable afterwards, and both scanners lead to the same.
void FuzzTargets::ParserCalls(Bytes bytes)
{
    const ParseTrace direct = RunProgram(bytes, true);
    const ParseTrace xerces = RunProgram(bytes, false);
    const std::string difference = xerces.Difference(direct, "by Xerces", "with direct scanner");
    Require(difference.empty(), difference);
}
