#include "scanner/XercesXMLParserImpl.h"

#include "base/Assertion.h"
#include "base/KesErrors.h"
#include "bytes/XercesInputSource.h"
#include "bytes/XercesMemory.h"
#include "bytes/XercesText.h"

#include <kescorexml/IXercesInputSourceProvider.h>

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
    // Those of a reader that does not validate.
    SetFeatures(*reader, {{XMLUni::fgSAX2CoreNameSpaces, false},
                          {XMLUni::fgSAX2CoreValidation, false},
                          {XMLUni::fgXercesSkipDTDValidation, true},
                          {XMLUni::fgXercesSchemaFullChecking, false},
                          {XMLUni::fgXercesHandleMultipleImports, false}});
    m_handler->ForgetLocator();
    // The last reader goes before its memory.
    m_reader = std::move(reader);
    m_memory = std::move(memory);
    m_budget.ForgetTables();
    m_remains = Remains::Nothing;
}

XercesXMLParserImpl::~XercesXMLParserImpl() = default;

void XercesXMLParserImpl::DropReader() noexcept
{
    m_handler->ForgetLocator();
    m_budget.SetLocator(nullptr);
    m_reader.reset();
    m_memory.reset();
}

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
