// Calls of an XercesXMLParser.

#include "calls/CallProgram.h"
#include "support/ParserInputs.h"
#include "support/Require.h"

namespace {

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

ParseTrace TraceUsable(XercesXMLParser& parser)
{
    ParseTrace trace;
    Utf8InputSource source(std::string(CallProgram::c_usable), u"usable", false);
    const auto sink = std::make_shared<TracingSink>(trace, SinkPlan());
    sink->Listen(parser);
    static_cast<ParseLimits&>(parser) = ParseLimits();
    parser.Reload(source, sink);
    parser.Parse();
    TraceMessages(trace, parser);
    return trace;
}

} // namespace

void CallProgram::CallParser()
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

void CallProgram::LoadSchema()
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

void CallProgram::MakeParser()
{
    m_parser =
        XercesXMLParser::Create(MakeSource(std::string(ParserInputs::c_documents[0])), MakeSink());
    m_lastEvent = c_unknown;
    m_isDone = false;
    m_expands = false;
    m_hasLimits = false;
    m_loads.emplace();
}

void CallProgram::Parse()
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

void CallProgram::Reload()
{
    const std::string bytes = ParserInputs::ReadDocument(m_reader);
    bool isReloaded = false;
    Attempt("reload", [&] {
        m_parser->Reload(MakeSource(bytes), MakeSink());
        isReloaded = true;
        m_lastEvent = c_unknown;
        m_isDone = false;
    });
    Expect(!m_isBusy || !isReloaded, "a parser that is at work takes no other source");
}

CallProgram::Location CallProgram::Ask()
{
    Location location = c_unknown;
    m_parser->GetCurrentLocation(location.first, location.second);
    m_trace.Line("at").Number(location.first).Number(location.second);
    return location;
}

void CallProgram::Look()
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
    for (const XMLDiagnostic& error : parser.GetErrorDiagnostics()) {
        hasFatalError |= error.GetKind() == XMLDiagnostic::Kind::FatalError;
        Expect(error.GetValue().IsEmpty() || !error.GetAttribute().IsEmpty(),
               "a value is that of an attribute");
    }
    Expect(!hasFatalError || parser.HasFatallyErrored(), "a fatal error is known to be there");
}

// Whatever was called before, it is as good as a new one

void CallProgram::CheckParserIsUsable()
{
    const ParseTrace trace = TraceUsable(*m_parser);
    m_hasLimits = false;
    // It has no sink but the one that has gone.
    m_parser->Reload(MakeSource(std::string(ParserInputs::c_documents[0])), MakeSink());
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
    const std::string difference = trace.Difference(TraceUsable(*fresh), "after all", "anew");
    Expect(difference.empty(), difference.c_str());
}
