// Calls of a DOMParser and a StandaloneDOMParser.

#include "calls/CallProgram.h"
#include "support/ParserInputs.h"

#include <array>

namespace {

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

} // namespace

void CallProgram::CallDom()
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

void CallProgram::ParseDom(std::size_t door)
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

void CallProgram::CallStandalone()
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

void CallProgram::ParseStandalone(std::size_t door)
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
void CallProgram::SetHandler(TreeParser& parser)
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

void CallProgram::CheckDocument(const std::unique_ptr<DOM>& document)
{
    Expect(document != nullptr, "a parse gives a document");
    TraceDocument(m_trace, *document);
    Expect(document->GetErrors().size() == document->GetMetadataForErrors().size() &&
               document->GetErrors().size() == document->GetErrorDiagnostics().size(),
           "each error of a document is taken apart and has a record");
}

// Whatever was called before, they are as good as new ones

void CallProgram::CheckTreeParsersAreUsable()
{
    if (!m_domHasSchema) {
        static_cast<ParseLimits&>(*m_dom) = ParseLimits();
        m_dom->SetStatisticsEventHandler(nullptr);
        m_dom->SetEnableLineNumbersOnElements(false);
        const auto trace = TraceTree(m_dom->ParseXmlString(c_usable, u"x"));
        Expect(trace == TraceTree(DOMParser().ParseXmlString(c_usable, u"x")),
               "a parser of documents is as good as a new one");
    }
    if (!m_standaloneHasSchema) {
        static_cast<ParseLimits&>(*m_standalone) = ParseLimits();
        m_standalone->SetStatisticsEventHandler(nullptr);
        const auto trace = TraceTree(m_standalone->ParseXmlString(c_usable, u"x"));
        Expect(trace == TraceTree(StandaloneDOMParser().ParseXmlString(c_usable, u"x")),
               "a parser of standalone trees is as good as a new one");
    }
}
