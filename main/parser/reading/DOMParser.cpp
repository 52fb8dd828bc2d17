#include <kescorexml/DOMParser.h>

#include "base/Assertion.h"
#include "base/KesErrors.h"
#include "bytes/XercesMemory.h"
#include "scanner/SchemaSources.h"
#include "scanner/XercesXMLParserImpl.h"
#include "sinks/TreeSink.h"
#include "sources/BorrowedUtf8Source.h"
#include "tree/DiagnosticsAccess.h"

#include <kescorexml/BinaryInputSource.h>
#include <kescorexml/DOMElement.h>
#include <kescorexml/InputSourceUtils.h>
#include <kescorexml/StringInputSource.h>

#include <kesplatform/ActivityScope.h>
#include <kesplatform/Metrics.h>
#include <kesplatform/TFile.h>

#include <utility>

namespace {

constexpr unsigned int c_sampleBytes = 128;

void CopyParserErrorsToElement(const Parser& parser, DOMElement& element)
{
    if (!parser.HasErrors())
        return;
    const std::vector<XMLDiagnostic>& errors = parser.GetErrorDiagnostics();
    const std::vector<TError::ErrorInfo> errorInfos = parser.GetMetadataForErrors();
    if (errors.size() != errorInfos.size())
        ThrowAssertion(u"DOMParser", PublishedLine(36), u"errors.size() == errorInfos.size()",
                       KesErrorsError::LogicAssert_0x46AC9E8D());
    DiagnosticsAccess::PushErrors(element, errors, errorInfos);
}

std::unique_ptr<DOM> MakeErrorDocument(const TString& message)
{
    auto dom = std::make_unique<DOM>();
    DOMElement* const element = dom->GetRoot()->AddNewChild(u"error", nullptr);
    const TError::ErrorInfo info(KesErrorsError::AutoGen_0x354BEE43(), 4, 2);
    element->Error(message, info, false, false);
    return dom;
}

} // namespace

class KESCOREXML_NO_EXPORT DOMParser::Impl
{
public:
    /// Whose code is running during a parse; what it throws is its own.
    enum class Stage
    {
        Document,
        Schemas,
        Statistics
    };

    /// The parser of one parse, which goes back to its place afterwards. Until then a source that
    /// is read may have others parsed, which are not to touch it.
    class Borrowed
    {
    public:
        Borrowed(Impl& impl, InputSource& source, ScanSink& sink)
            : m_impl(impl), m_parser(impl.CreateOrReuseExistingXercesParser(source, sink))
        {
        }
        ~Borrowed()
        {
            // One that has schemas is not used again.
            if (!m_parser->HasSchemas())
                m_impl.m_cachedParser = std::move(m_parser);
        }
        Borrowed(const Borrowed&) = delete;
        Borrowed& operator=(const Borrowed&) = delete;

        XercesXMLParserImpl& Get() const noexcept { return *m_parser; }

    private:
        Impl& m_impl;
        std::unique_ptr<XercesXMLParserImpl> m_parser;
    };

    std::unique_ptr<XercesXMLParserImpl> CreateOrReuseExistingXercesParser(InputSource& source,
                                                                           ScanSink& sink);

    /// `stage` always tells where the parse is.
    std::unique_ptr<DOM> Parse(InputSource& source, bool keepWhitespaceText,
                               const ParseLimits& limits, Stage& stage);

    std::unique_ptr<XercesXMLParserImpl> m_cachedParser;
    SchemaSources m_schemas;
    bool m_enableLineNumbersOnElements = false;
    bool m_restrictExternalPaths = false;
    std::function<void(const DOMParserStatistics&)> m_statisticsEventHandler;
};

std::unique_ptr<XercesXMLParserImpl>
DOMParser::Impl::CreateOrReuseExistingXercesParser(InputSource& source, ScanSink& sink)
{
    if (std::unique_ptr<XercesXMLParserImpl> parser = std::move(m_cachedParser)) {
        parser->Reload(source, sink);
        parser->ClearErrorsAndWarnings();
        return parser;
    }
    return WithXercesMemory([&] { return std::make_unique<XercesXMLParserImpl>(source, sink); });
}

DOMParser::DOMParser() : m_impl(std::make_unique<Impl>())
{
    // So that an object with static storage duration is destroyed before Xerces is shut down.
    EnsureXercesIsInitialised();
}

DOMParser::~DOMParser() = default;

void DOMParser::AddXSDResourceId(QtKesResourceId id)
{
    m_impl->m_schemas.AddResource(id);
}

void DOMParser::AddXSDInputSource(std::unique_ptr<InputSource> source)
{
    m_impl->m_schemas.Add(std::move(source));
}

void DOMParser::SetEnableLineNumbersOnElements(bool enable)
{
    m_impl->m_enableLineNumbersOnElements = enable;
}

bool DOMParser::GetEnableLineNumbersOnElements() const
{
    return m_impl->m_enableLineNumbersOnElements;
}

void DOMParser::SetRestrictExternalPaths(bool restrict)
{
    m_impl->m_restrictExternalPaths = restrict;
}

bool DOMParser::GetRestrictExternalPaths() const
{
    return m_impl->m_restrictExternalPaths;
}

void DOMParser::SetStatisticsEventHandler(std::function<void(const DOMParserStatistics&)> handler)
{
    m_impl->m_statisticsEventHandler = std::move(handler);
}

std::unique_ptr<DOM> DOMParser::ParseXmlInputSource(InputSource& source,
                                                    bool keepWhitespaceText) const
{
    Impl::Stage stage = Impl::Stage::Document;
    return m_impl->Parse(source, keepWhitespaceText, *this, stage);
}

std::unique_ptr<DOM> DOMParser::Impl::Parse(InputSource& source, bool keepWhitespaceText,
                                            const ParseLimits& limits, Stage& stage)
{
    const Metrics::Scope scope(m_schemas.IsEmpty() ? "DOMParser_ParseXmlInputSource"
                                                   : "DOMParser_ParseXmlInputSource_withXSD");
    if (scope.IsOpen()) {
        scope.Emit("'xmls'", source.Size());
        std::string sample;
        source.GetBytes(sample, c_sampleBytes);
        scope.Emit("'xmlt'", sample);
        source.ResetToStart();
    }
    auto dom = std::make_unique<DOM>(m_restrictExternalPaths);
    DOMElement& root = *dom->GetRoot();
    TreeSink tree(*dom, keepWhitespaceText);
    const Borrowed borrowed(*this, source, tree);
    XercesXMLParserImpl& parser = borrowed.Get();
    static_cast<ParseLimits&>(parser) = limits;
    if (m_enableLineNumbersOnElements)
        tree.SetLocationInterface(&parser);
    stage = Stage::Schemas;
    m_schemas.LoadInto(parser);
    stage = Stage::Document;
    CopyParserErrorsToElement(parser, root);
    parser.Parse();
    tree.Finish();
    CopyParserErrorsToElement(parser, root);
    DiagnosticsAccess::SetSkippedEntities(*dom, parser.GetSkippedEntities());
    // The parser waits for the next document, which may never come.
    parser.ClearErrorsAndWarnings();
    // It may put another in its own place.
    if (const auto handler = m_statisticsEventHandler) {
        const DOMParserStatistics statistics{static_cast<std::uint64_t>(source.Size()),
                                             source.Id()};
        stage = Stage::Statistics;
        handler(statistics);
    }
    return dom;
}

std::unique_ptr<DOM> DOMParser::ParseXmlString(const TString& text, const TString& id) const
{
    const Metrics::Scope scope("DOMParser_ParseXmlString");
    scope.Emit("'xmls'", text.length());
    StringInputSource source(text, id, true);
    return ParseXmlInputSource(source, false);
}

std::unique_ptr<DOM> DOMParser::ParseXmlString(TString&& text, const TString& id) const
{
    const TString taken = std::move(text);
    return ParseXmlString(taken, id);
}

std::unique_ptr<DOM> DOMParser::ParseXmlString(const std::string& utf8, const TString& id) const
{
    const Metrics::Scope scope("DOMParser_ParseXmlString");
    scope.Emit("'xmls'", static_cast<std::int64_t>(utf8.size()));
    BorrowedUtf8Source source(utf8, id, true);
    return ParseXmlInputSource(source, false);
}

std::unique_ptr<DOM> DOMParser::ParseXmlString(std::string&& utf8, const TString& id) const
{
    const std::string taken = std::move(utf8);
    return ParseXmlString(taken, id);
}

std::unique_ptr<DOM> DOMParser::ParseXmlString(const char* utf8, const TString& id) const
{
    return ParseXmlString(std::string(utf8), id);
}

std::unique_ptr<DOM> DOMParser::ParseXmlBytes(const std::vector<unsigned char>& bytes) const
{
    const Metrics::Scope scope("DOMParser_ParseXmlBytes");
    BinaryInputSource source(bytes, TString(), false);
    return ParseXmlInputSource(source, false);
}

std::unique_ptr<DOM> DOMParser::ParseXmlBytes(std::vector<unsigned char>&& bytes) const
{
    const std::vector<unsigned char> taken = std::move(bytes);
    return ParseXmlBytes(taken);
}

std::unique_ptr<DOM> DOMParser::ParseXmlFile(const TString& fileName) const
{
    art::ActivityScope activity("dom-parser.parse-xml-file");
    activity.AddAttribute(u"filename", fileName);
    Impl::Stage stage = Impl::Stage::Document;
    try {
        const std::unique_ptr<InputSource> source =
            InputSourceUtils::InputSourceFromFileName(fileName, true);
        if (!activity.IsClosed())
            activity.AddAttribute(u"source-size", source->Size());
        return m_impl->Parse(*source, false, *this, stage);
    } catch (const TIO::Exception& exception) {
        if (stage != Impl::Stage::Document)
            throw;
        return MakeErrorDocument(exception.GetConcatenatedMessages());
    }
}
