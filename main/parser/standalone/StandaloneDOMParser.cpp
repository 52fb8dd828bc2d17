#include <kescorexml/StandaloneDOMParser.h>

#include "base/LeadingWhitespace.h"
#include "bytes/XercesMemory.h"
#include "scanner/SchemaSources.h"
#include "scanner/XercesXMLParserImpl.h"
#include "sources/BorrowedUtf8Source.h"
#include "standalone/StandaloneTreeSink.h"

#include <kescorexml/BinaryInputSource.h>
#include <kescorexml/InputSourceUtils.h>
#include <kescorexml/StringInputSource.h>

#include <kesplatform/Metrics.h>

#include <cstdint>
#include <utility>

namespace {

constexpr std::uint64_t c_metricsFlags = 0x80000000000;

} // namespace

struct StandaloneDOMParser::State
{
    SchemaSources schemas;
    std::function<void(const DOMParserStatistics&)> statisticsHandler;
    bool allowEntityExpansion = false;
};

StandaloneDOMParser::StandaloneDOMParser() : m_state(std::make_unique<State>()) {}

StandaloneDOMParser::~StandaloneDOMParser() = default;

void StandaloneDOMParser::AddXSDResourceId(QtKesResourceId id)
{
    m_state->schemas.AddResource(id);
}

void StandaloneDOMParser::AddXSDInputSource(std::unique_ptr<InputSource> source)
{
    m_state->schemas.Add(std::move(source));
}

void StandaloneDOMParser::SetStatisticsEventHandler(
    std::function<void(const DOMParserStatistics&)> handler)
{
    m_state->statisticsHandler = std::move(handler);
}

void StandaloneDOMParser::AllowEntityExpansion_Insecure()
{
    m_state->allowEntityExpansion = true;
}

StandaloneParseResult StandaloneDOMParser::ParseXmlInputSource(InputSource& source,
                                                               bool keepWhitespaceText) const
{
    const Metrics::Scope scope("StandaloneDOMParser_ParseXmlInputSource", c_metricsFlags);
    StandaloneTreeSink tree(keepWhitespaceText);
    const std::unique_ptr<XercesXMLParserImpl> parser =
        WithXercesMemory([&] { return std::make_unique<XercesXMLParserImpl>(source, tree); });
    static_cast<ParseLimits&>(*parser) = *this;
    if (m_state->allowEntityExpansion)
        parser->AllowEntityExpansion_Insecure();
    m_state->schemas.LoadInto(*parser);
    parser->Parse();

    StandaloneParseResult result;
    if (parser->HasErrors()) {
        result.errors = parser->GetErrors();
        result.diagnostics = parser->GetErrorDiagnostics();
    }
    // It may put another in its own place.
    if (const auto handler = m_state->statisticsHandler)
        handler(DOMParserStatistics{static_cast<std::uint64_t>(source.Size()), source.Id()});
    result.skippedEntities = parser->GetSkippedEntities();
    result.root = tree.TakeRoot();
    return result;
}

StandaloneParseResult StandaloneDOMParser::ParseXmlFile(const TString& path) const
{
    const Metrics::Scope scope("StandaloneDOMParser_ParseXmlFile", c_metricsFlags);
    const std::unique_ptr<InputSource> source =
        InputSourceUtils::InputSourceFromFileName(path, true);
    return ParseXmlInputSource(*source, false);
}

StandaloneParseResult StandaloneDOMParser::ParseXmlString(const TString& xml, TString id) const
{
    const Metrics::Scope scope("StandaloneDOMParser_ParseXmlString", c_metricsFlags);
    StringInputSource source(xml.trimLeft(), id, false);
    return ParseXmlInputSource(source, false);
}

StandaloneParseResult StandaloneDOMParser::ParseXmlString(const std::string& utf8, TString id) const
{
    const Metrics::Scope scope("StandaloneDOMParser_ParseXmlString", c_metricsFlags);
    const std::size_t start = SkipLeadingWhitespace(utf8);
    if (start > 0) {
        // The size of a source counts what it skips.
        Utf8InputSource source(utf8.substr(start), id, false);
        return ParseXmlInputSource(source, false);
    }
    BorrowedUtf8Source source(utf8, id, false);
    return ParseXmlInputSource(source, false);
}

StandaloneParseResult StandaloneDOMParser::ParseXmlString(const char* utf8, TString id) const
{
    return ParseXmlString(std::string(utf8 == nullptr ? "" : utf8), std::move(id));
}

StandaloneParseResult
StandaloneDOMParser::ParseXmlBytes(const std::vector<unsigned char>& bytes) const
{
    const Metrics::Scope scope("StandaloneDOMParser_ParseXmlBytes", c_metricsFlags);
    BinaryInputSource source(bytes, TString(), false);
    return ParseXmlInputSource(source, false);
}
