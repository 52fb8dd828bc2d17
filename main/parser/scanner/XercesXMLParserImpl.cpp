#include "scanner/XercesXMLParserImpl.h"

#include "base/Assertion.h"
#include "base/KesErrors.h"
#include "bytes/XercesInputSource.h"
#include "bytes/XercesMemory.h"
#include "bytes/XercesText.h"

#include <kescorexml/IXercesInputSourceProvider.h>
#include <kescorexml/LookupResource.h>

#include <kesplatform/Metrics.h>

#include <xercesc/parsers/SAX2XMLReaderImpl.hpp>
#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/util/XMLUni.hpp>

#include <utility>

using xercesc::XMLUni;

namespace {

constexpr XMLSize_t c_defaultEntityExpansionLimit = 50000;

class XercesGlobalState
{
public:
    XercesGlobalState()
    {
        WithXercesMemory([] {
            xercesc::XMLPlatformUtils::Initialize(XMLUni::fgXercescDefaultLocale, nullptr, nullptr,
                                                  nullptr);
        });
    }
    ~XercesGlobalState() { xercesc::XMLPlatformUtils::Terminate(); }
    XercesGlobalState(const XercesGlobalState&) = delete;
    XercesGlobalState& operator=(const XercesGlobalState&) = delete;
};

struct Feature
{
    const XMLCh* name;
    bool value;
};

template <std::size_t count>
void SetFeatures(xercesc::SAX2XMLReader& reader, const Feature (&features)[count])
{
    for (const Feature& feature : features)
        reader.setFeature(feature.name, feature.value);
}

class LoadingSchemaScope
{
public:
    explicit LoadingSchemaScope(XercesXMLHandler& handler) noexcept : m_handler(handler)
    {
        m_handler.SetLoadingSchema(true);
    }
    ~LoadingSchemaScope() { m_handler.SetLoadingSchema(false); }
    LoadingSchemaScope(const LoadingSchemaScope&) = delete;
    LoadingSchemaScope& operator=(const LoadingSchemaScope&) = delete;

private:
    XercesXMLHandler& m_handler;
};

} // namespace

void EnsureXercesIsInitialised()
{
    static const XercesGlobalState s_state;
}

XercesXMLParserImpl::XercesXMLParserImpl(InputSource& source, std::shared_ptr<SAXInterface> sink)
    : XercesXMLParser(source, sink), m_saxSink(std::make_unique<SAXSink>(std::move(sink)))
{
    Start(*m_saxSink, m_saxSink->GetExtension());
}

XercesXMLParserImpl::XercesXMLParserImpl(InputSource& source, ScanSink& sink)
    : XercesXMLParser(source, nullptr)
{
    Start(sink, nullptr);
}

void XercesXMLParserImpl::Start(ScanSink& sink, SAXInterfaceExtension* extension)
{
    m_handler = std::make_unique<XercesXMLHandler>(sink, extension, m_names, m_budget);
    m_sink = &sink;
    EnsureXercesIsInitialised();
    m_securityManager = std::make_unique<xercesc::SecurityManager>();
    m_securityManager->setEntityExpansionLimit(0);
    // The reader is made, and prepared, when a document or a schema needs it.
    const Metrics::Scope scope("XercesXMLParser_PrepareParserState");
}

void XercesXMLParserImpl::MakeReader()
{
    auto memory = std::make_unique<ScannerMemory>(m_budget);
    std::unique_ptr<LocatingReader> reader(new (memory.get())
                                               LocatingReader(memory.get(), m_budget));
    reader->setProperty(XMLUni::fgXercesSecurityManager, m_securityManager.get());
    SetXercesXMLHandler(*reader, *m_handler);
    reader->setLexicalHandler(&m_documentType);
    reader->setDTDHandler(&m_documentType);
    SetEntityResolver(*reader, m_handler.get());
    reader->setExitOnFirstFatalError(true);
    SetFeatures(*reader, {{XMLUni::fgXercesLoadExternalDTD, false},
                          {XMLUni::fgXercesDisableDefaultEntityResolution, true},
                          {XMLUni::fgXercesLoadSchema, false},
                          {XMLUni::fgXercesDynamic, false}});
    PrepareParserState(*reader);
    m_handler->ForgetLocator();
    // The last reader goes before its memory.
    m_reader = std::move(reader);
    m_memory = std::move(memory);
    m_budget.ForgetTables();
    m_remains = Remains::Nothing;
}

XercesXMLParserImpl::~XercesXMLParserImpl() = default;

void XercesXMLParserImpl::SetXercesXMLHandler(xercesc::SAX2XMLReader& reader,
                                              XercesXMLHandler& handler)
{
    reader.setContentHandler(&handler);
    reader.setErrorHandler(&handler);
    reader.setDeclarationHandler(&handler);
    handler.resetErrors();
}

void XercesXMLParserImpl::SetEntityResolver(xercesc::SAX2XMLReader& reader,
                                            XercesXMLHandler* handler)
{
    auto* const sax2readerImpl = dynamic_cast<xercesc::SAX2XMLReaderImpl*>(&reader);
    if (handler == nullptr || sax2readerImpl == nullptr)
        ThrowAssertion(u"XercesXMLParser", PublishedLine(322),
                       u"xmlEntityResolver && sax2readerImpl",
                       KesErrorsError::LogicAssert_0x9D18F6F8());
    sax2readerImpl->setXMLEntityResolver(handler);
}

void XercesXMLParserImpl::PrepareParserState(xercesc::SAX2XMLReader& reader)
{
    reader.resetCachedGrammarPool();
    if (m_noSchemaLoaded) {
        SetFeatures(reader, {{XMLUni::fgSAX2CoreNameSpaces, false},
                             {XMLUni::fgSAX2CoreValidation, false},
                             {XMLUni::fgXercesSkipDTDValidation, true},
                             {XMLUni::fgXercesSchemaFullChecking, false},
                             {XMLUni::fgXercesHandleMultipleImports, false}});
        return;
    }
    LoadXSDResource(LookupResource(QtKesResourceId::FileformatXmlXsd));
    LoadXSDResource(LookupResource(QtKesResourceId::FileformatUserXsd));
    SetFeatures(reader, {{XMLUni::fgSAX2CoreNameSpaces, true},
                         {XMLUni::fgSAX2CoreNameSpacePrefixes, true},
                         {XMLUni::fgSAX2CoreValidation, true},
                         {XMLUni::fgXercesIdentityConstraintChecking, true},
                         {XMLUni::fgXercesSkipDTDValidation, false},
                         {XMLUni::fgXercesSchemaFullChecking, true},
                         {XMLUni::fgXercesHandleMultipleImports, true},
                         {XMLUni::fgXercesSchema, true},
                         {XMLUni::fgXercesUseCachedGrammarInParse, true},
                         {XMLUni::fgXercesValidationErrorAsFatal, false}});
}

void XercesXMLParserImpl::SwitchToValidating()
{
    if (m_reader == nullptr || m_remains == Remains::Damage)
        MakeReader();
    m_memory->PrepareForSchemas();
    m_noSchemaLoaded = false;
    const Metrics::Scope scope("XercesXMLParser_PrepareParserState");
    try {
        PrepareParserState(*m_reader);
    } catch (...) {
        // A parser that went on without the base schemas would not validate, and say nothing.
        m_noSchemaLoaded = true;
        m_xsdNames.clear();
        // Where memory failed, the reader takes itself to be still at it.
        m_remains = Remains::Damage;
        throw;
    }
}

void XercesXMLParserImpl::LoadGrammar(const XercesInputSource& schema)
{
    WithXercesMemory([&] {
        const LocatingReader::Scope located(*m_reader, schema);
        try {
            m_reader->loadGrammar(schema(), xercesc::Grammar::SchemaGrammarType, true);
        } catch (const SinkException& exception) {
            std::rethrow_exception(exception.thrown);
        }
    });
}

void XercesXMLParserImpl::LoadXSDSource(InputSource& xsdSource)
{
    RequireOutsideOfEvents();
    const Metrics::Scope scope("XercesXMLParser_LoadXSDSource");
    if (m_noSchemaLoaded)
        WithXercesMemory([this] { SwitchToValidating(); });
    if (xsdSource.Id().IsEmpty())
        ThrowAssertion(u"XercesXMLParser", PublishedLine(302), u"!xsdSource.Id().IsEmpty()",
                       KesErrorsError::LogicAssert_0xC83A570E());
    auto* const xercesableSource = dynamic_cast<IXercesInputSourceProvider*>(&xsdSource);
    if (xercesableSource == nullptr)
        ThrowAssertion(u"XercesXMLParser", PublishedLine(305), u"xercesableSource != nullptr",
                       KesErrorsError::LogicAssert_0xAB95E4EA());
    {
        const ParseInProgress inProgress(m_isParsing);
        const XercesInputSource schema =
            xercesableSource->GetXercesInputSource(ColonProcessingMode::None);
        // What a schema that could not be loaded has left belongs to no other.
        m_handler->resetErrors();
        const LoadingSchemaScope loading(*m_handler);
        BeginBudget(schema, false);
        try {
            if (schema.GetRefusal())
                RecordRefusal(schema, xsdSource.Id());
            else
                LoadGrammar(schema);
        } catch (const LimitExceeded& exceeded) {
            RecordLimit(exceeded, xsdSource.Id());
        }
    }
    m_xsdNames.push_back(xsdSource.Id());
    CollectHandlerErrors();
}

void XercesXMLParserImpl::RequireOutsideOfEvents() const
{
    if (m_isParsing)
        ThrowInEvent();
}

void XercesXMLParserImpl::GetCurrentLocation(int& line, int& column)
{
    if (m_isDirect && m_directScanner.HasSentEvent())
        m_directScanner.GetCurrentLocation(line, column);
    else
        m_handler->GetCurrentLocationHandler(line, column);
}

void XercesXMLParserImpl::Reload(InputSource& source, std::shared_ptr<SAXInterface> sink)
{
    RequireOutsideOfEvents();
    auto saxSink = std::make_unique<SAXSink>(sink);
    SendTo(*saxSink, saxSink->GetExtension());
    m_saxSink = std::move(saxSink);
    XercesXMLParser::Reload(source, std::move(sink));
}

void XercesXMLParserImpl::Reload(InputSource& source, ScanSink& sink)
{
    SendTo(sink, nullptr);
    m_saxSink.reset();
    XercesXMLParser::Reload(source, nullptr);
}

void XercesXMLParserImpl::SendTo(ScanSink& sink, SAXInterfaceExtension* extension)
{
    m_names.ForgetUnlessSmall();
    auto handler = std::make_unique<XercesXMLHandler>(sink, extension, m_names, m_budget);
    if (m_reader != nullptr) {
        SetXercesXMLHandler(*m_reader, *handler);
        SetEntityResolver(*m_reader, handler.get());
    }
    m_handler = std::move(handler);
    m_sink = &sink;
}

void XercesXMLParserImpl::AllowEntityExpansion_Insecure()
{
    m_securityManager->setEntityExpansionLimit(c_defaultEntityExpansionLimit);
}

void XercesXMLParserImpl::BeginBudget(const XercesInputSource& input, bool isValidating)
{
    if (m_memory != nullptr)
        m_memory->Reset();
    m_budget.Begin(*this, input.GetBytes().size(), isValidating);
}

void XercesXMLParserImpl::RecordLimit(const LimitExceeded& exceeded, const TString& id)
{
    m_handler->RecordFatalError(exceeded.message, id, exceeded.line, exceeded.column);
}

void XercesXMLParserImpl::RecordRefusal(const XercesInputSource& input, const TString& id)
{
    const DocumentDecoding::Refusal& refusal = *input.GetRefusal();
    m_handler->RecordFatalError(refusal.message, id, refusal.line, refusal.column);
}

void XercesXMLParserImpl::CollectHandlerErrors()
{
    const auto noError = TError::ErrorInfo::NoError();
    m_handler->CloseMessages();
    for (const XMLDiagnostic& warning : m_handler->GetWarnings())
        Record(XMLDiagnostic(warning), noError);
    for (const XMLDiagnostic& error : m_handler->GetErrors())
        Record(XMLDiagnostic(error), noError);
    m_handler->resetErrors();
}
