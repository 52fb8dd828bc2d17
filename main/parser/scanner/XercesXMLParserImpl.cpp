#include "scanner/XercesXMLParserImpl.h"

#include "base/Assertion.h"
#include "base/KesErrors.h"
#include "bytes/OverlookedFaults.h"
#include "bytes/XercesInputSource.h"
#include "bytes/XercesMemory.h"
#include "bytes/XercesText.h"
#include "scanner/XmlVersionWatch.h"

#include <kescorexml/IXercesInputSourceProvider.h>
#include <kescorexml/LookupResource.h>
#include <kescorexml/XMLParseException.h>

#include <kesplatform/Metrics.h>
#include <kesplatform/VectorRegisters.h>

#include <xercesc/framework/MemBufInputSource.hpp>
#include <xercesc/parsers/SAX2XMLReaderImpl.hpp>
#include <xercesc/sax/SAXParseException.hpp>
#include <xercesc/util/OutOfMemoryException.hpp>
#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/util/XMLUni.hpp>

#include <string_view>
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

/// A scan that is left before its end still holds the document's stream; the next document would
/// be read on top of it.
class ScanInProgress
{
public:
    ScanInProgress(xercesc::SAX2XMLReader& reader, xercesc::XMLPScanToken& token)
        : m_reader(reader), m_token(token)
    {
    }
    ~ScanInProgress()
    {
        if (m_finished)
            return;
        try {
            m_reader.parseReset(m_token);
        } catch (...) {
            // An exception that crossed the scanner has made it let go already.
        }
    }
    ScanInProgress(const ScanInProgress&) = delete;
    ScanInProgress& operator=(const ScanInProgress&) = delete;

    /// False at the end of the document.
    bool Next()
    {
        m_finished = !m_reader.parseNext(m_token);
        return !m_finished;
    }

private:
    xercesc::SAX2XMLReader& m_reader;
    xercesc::XMLPScanToken& m_token;
    bool m_finished = false;
};

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

/// A scan during which memory may count; the scanner cleans up afterwards whatever it takes.
class CountedMemoryScope
{
public:
    explicit CountedMemoryScope(ParseBudget& budget) noexcept : m_budget(budget) {}
    ~CountedMemoryScope() { m_budget.EndMemory(); }
    CountedMemoryScope(const CountedMemoryScope&) = delete;
    CountedMemoryScope& operator=(const CountedMemoryScope&) = delete;

private:
    ParseBudget& m_budget;
};

/// Has the version watch installed among the reader's handlers.
class WatchedProlog
{
public:
    WatchedProlog(xercesc::SAX2XMLReader& reader, XmlVersionWatch& watch)
        : m_reader(reader), m_watch(watch)
    {
        m_reader.installAdvDocHandler(&m_watch);
    }
    ~WatchedProlog() { m_reader.removeAdvDocHandler(&m_watch); }
    WatchedProlog(const WatchedProlog&) = delete;
    WatchedProlog& operator=(const WatchedProlog&) = delete;

private:
    xercesc::SAX2XMLReader& m_reader;
    XmlVersionWatch& m_watch;
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
    std::unique_ptr<LocatingReader> reader(new (memory.get()) LocatingReader(memory.get()));
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
    m_xmlVersionSticks = false;
    m_isSpoilt = false;
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
        ThrowAssertion(u"XercesXMLParser", 322, u"xmlEntityResolver && sax2readerImpl",
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
    if (m_reader == nullptr || m_isSpoilt)
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
        m_isSpoilt = true;
        throw;
    }
}

void XercesXMLParserImpl::LoadXSDSource(InputSource& xsdSource)
{
    const Metrics::Scope scope("XercesXMLParser_LoadXSDSource");
    if (m_noSchemaLoaded)
        WithXercesMemory([this] { SwitchToValidating(); });
    if (xsdSource.Id().IsEmpty())
        ThrowAssertion(u"XercesXMLParser", 302, u"!xsdSource.Id().IsEmpty()",
                       KesErrorsError::LogicAssert_0xC83A570E());
    auto* const xercesableSource = dynamic_cast<IXercesInputSourceProvider*>(&xsdSource);
    if (xercesableSource == nullptr)
        ThrowAssertion(u"XercesXMLParser", 305, u"xercesableSource != nullptr",
                       KesErrorsError::LogicAssert_0xAB95E4EA());
    const XercesInputSource schema =
        xercesableSource->GetXercesInputSource(ColonProcessingMode::None);
    {
        // What a schema that could not be loaded has left belongs to no other.
        m_handler->resetErrors();
        const LoadingSchemaScope loading(*m_handler);
        BeginBudget(schema, false);
        try {
            WithXercesMemory([&] {
                const LocatingReader::Scope located(*m_reader, schema);
                m_reader->loadGrammar(schema(), xercesc::Grammar::SchemaGrammarType, true);
            });
        } catch (const LimitExceeded& exceeded) {
            RecordLimit(exceeded, xsdSource.Id());
        }
    }
    m_xsdNames.push_back(xsdSource.Id());
    CollectHandlerErrors();
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

void XercesXMLParserImpl::ParseImpl()
{
    if (HasErrors())
        ThrowAssertion(u"XercesXMLParser", 165, u"HasErrors() == false",
                       KesErrorsError::LogicAssert_0xE60C9000());
    DoXercesParse();
}

void XercesXMLParserImpl::DoXercesParse()
{
    const Metrics::Scope scope("XercesXMLParser_DoXercesParse");
    DirectScanning::SetLastVerdict(DirectScanning::Verdict::None);
    m_handler->resetErrors();
    m_handler->SetKeepsLocations(m_sink->AsksForLocations());
    m_sink->BeginDocument();
    auto* const xercesableSource = dynamic_cast<IXercesInputSourceProvider*>(&GetSource());
    if (xercesableSource == nullptr)
        ThrowNoXercesSource();
    const XercesInputSource document =
        xercesableSource->GetXercesInputSource(ColonProcessingMode::EncodeColonAttributes);
    BeginBudget(document, !m_noSchemaLoaded);
    if (ScanDirectly(document))
        return;
    static_cast<void>(document());
    RecordFailures([&] { ScanWithXerces(document); });
}

template <typename Scan>
void XercesXMLParserImpl::RecordFailures(Scan&& scan)
{
    const auto noError = TError::ErrorInfo::NoError();
    try {
        scan();
    } catch (const LimitExceeded& exceeded) {
        RecordLimit(exceeded, GetSource().Id());
        CollectHandlerErrors();
    } catch (const xercesc::OutOfMemoryException&) {
        Error(u"OutOfMemoryException", noError);
    } catch (const XMLParseException& exception) {
        const TString messages = exception.GetConcatenatedMessages();
        Error(messages, noError);
        FatalError(messages, noError);
    } catch (const SinkException& exception) {
        Error(exception.message, noError);
    } catch (const xercesc::XMLException& exception) {
        Error(GetTStringFromXMLChPtr(exception.getMessage(), -1), noError);
    } catch (...) {
        Error(u"Unexpected exception", noError);
    }
}

void XercesXMLParserImpl::ScanWithXerces(const XercesInputSource& document)
{
    // A new one would have to load all schemas again: what one that has them forgot stays until
    // the parser ends.
    if (m_reader == nullptr || (m_isSpoilt && m_noSchemaLoaded))
        MakeReader();
    ScanDocument(document);
    if (m_handler->SawErrors())
        CollectHandlerErrors();
}

DirectScanning::Verdict XercesXMLParserImpl::FindReasonForXerces() const
{
    using DirectScanning::Verdict;

    if (!DirectScanning::IsEnabled())
        return Verdict::Disabled;
    if (!m_noSchemaLoaded)
        return Verdict::Schema;
    // A sink that is done before the first event is told of no other, but of what is wrong before.
    if (m_sink->IsDone())
        return Verdict::Markup;
    return Verdict::Accepted;
}

bool XercesXMLParserImpl::ScanDirectly(const XercesInputSource& document)
{
    using DirectScanning::Verdict;

    Verdict verdict = FindReasonForXerces();
    if (verdict == Verdict::Accepted) {
        // Positions that a listener asks for are those behind the sanitizer.
        if (m_sink->PassesOn())
            document.Sanitize();
        const auto scan = [&] {
            m_isDirect = true;
            const bool isUtf8 = document.GetEncoding() == XercesEncoding::Utf8;
            verdict = m_directScanner.Scan({document.GetBytes(), isUtf8, m_budget.GetOutputLimit(),
                                            m_budget.GetScannerWorkLimit()},
                                           *m_sink);
            if (verdict != Verdict::Accepted)
                m_sink->Rewind();
        };
        RecordFailures(scan);
        if (verdict == Verdict::ColonName && !m_sink->PassesOn()) {
            document.Sanitize();
            RecordFailures(scan);
        }
        m_isDirect = false;
        // It may be asked for when the document is gone.
        if (m_sink->PassesOn() && m_directScanner.HasSentEvent()) {
            int line = 0;
            int column = 0;
            m_directScanner.GetCurrentLocation(line, column);
            m_handler->SetLocation(line, column);
        }
    }
    DirectScanning::SetLastVerdict(verdict);
    return verdict == Verdict::Accepted;
}

void XercesXMLParserImpl::ScanDocument(const XercesInputSource& document)
{
    ClearUpperVectorHalves();
    const CountedMemoryScope counted(m_budget);
    const LocatingReader::Scope located(*m_reader, document);
    xercesc::XMLPScanToken token;
    if (!ScanProlog(document, token))
        return;
    ScanInProgress scan(*m_reader, token);
    while (!m_handler->IsDone()) {
        if (!scan.Next()) {
            CheckEnd(document);
            return;
        }
    }
}

void XercesXMLParserImpl::CheckEnd(const XercesInputSource& document)
{
    if (m_handler->SawFatalError())
        return;
    const bool isUtf8 = document.GetEncoding() == XercesEncoding::Utf8;
    const auto fault = OverlookedFaults::Find(document.GetBytes(), isUtf8, document.MayHoldNull());
    if (fault)
        m_handler->RecordFatalError(fault->message, GetSource().Id(), fault->line, fault->column);
}

bool XercesXMLParserImpl::ScanProlog(const XercesInputSource& document,
                                     xercesc::XMLPScanToken& token)
{
    if (m_xmlVersionSticks)
        ForgetXmlVersion();
    // Until the prolog is known to have been harmless.
    m_xmlVersionSticks = true;
    m_isSpoilt = true;
    m_documentType.Reset();
    XmlVersionWatch watch;
    const WatchedProlog watched(*m_reader, watch);
    try {
        const bool complete = m_reader->parseFirst(document(), token);
        m_xmlVersionSticks = !complete || watch.SawOtherVersion();
        m_isSpoilt = !complete && m_documentType.HasBegun();
        return complete;
    } catch (const xercesc::XMLException&) {
        // An XML declaration that the scanner cannot even decode, before anything has a position.
        m_isSpoilt = m_documentType.HasBegun();
        throw;
    } catch (const xercesc::SAXParseException& exception) {
        m_isSpoilt = m_documentType.HasBegun();
        m_handler->fatalError(exception);
        return false;
    }
}

/// A scanner reads a document without XML declaration in the version of the last document that had
/// one. A new scanner would not, but would compile a schema again that the old one knows.
void XercesXMLParserImpl::ForgetXmlVersion()
{
    static constexpr std::string_view text = "<?xml version='1.0'?><a/>";
    const xercesc::MemBufInputSource document(reinterpret_cast<const XMLByte*>(text.data()),
                                              text.size(), XMLUni::fgZeroLenString);
    xercesc::XMLPScanToken token;
    // The element, of which the sink must not hear, stays unread.
    if (m_reader->parseFirst(document, token))
        m_reader->parseReset(token);
    m_xmlVersionSticks = false;
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

void XercesXMLParserImpl::CollectHandlerErrors()
{
    const auto noError = TError::ErrorInfo::NoError();
    for (const TString& message : m_handler->GetWarnings())
        Warning(message, noError);
    const std::vector<TString>& errors = m_handler->GetErrors();
    const std::size_t fatal = m_handler->SawFatalError() && !errors.empty() ? 1 : 0;
    for (std::size_t i = 0; i + fatal < errors.size(); ++i)
        Error(errors[i], noError);
    if (fatal != 0)
        FatalError(errors.back(), noError);
    m_handler->resetErrors();
}
