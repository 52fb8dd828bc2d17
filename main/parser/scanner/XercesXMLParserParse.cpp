#include "scanner/XercesXMLParserImpl.h"

#include "base/Assertion.h"
#include "base/KesErrors.h"
#include "bytes/OverlookedFaults.h"
#include "bytes/XercesInputSource.h"
#include "bytes/XercesText.h"
#include "scanner/AttributeErrors.h"
#include "scanner/CollidingTags.h"
#include "scanner/SkippedEntities.h"
#include "scanner/XmlVersionWatch.h"

#include <kescorexml/IXercesInputSourceProvider.h>
#include <kescorexml/XMLParseException.h>

#include <kesplatform/Metrics.h>
#include <kesplatform/VectorRegisters.h>

#include <xercesc/framework/MemBufInputSource.hpp>
#include <xercesc/sax/SAXParseException.hpp>
#include <xercesc/util/IOException.hpp>
#include <xercesc/util/OutOfMemoryException.hpp>
#include <xercesc/util/XMLExceptMsgs.hpp>
#include <xercesc/util/XMLUni.hpp>

#include <optional>
#include <string_view>
#include <utility>

namespace {

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

/// Positions are those of the direct scanner, which points into the document, while this lives.
class DirectScan
{
public:
    DirectScan(bool& flag, DirectScanner& scanner) noexcept : m_flag(flag), m_scanner(scanner)
    {
        m_scanner.ForgetEvents();
        m_flag = true;
    }
    ~DirectScan()
    {
        m_scanner.ForgetEvents();
        m_flag = false;
    }
    DirectScan(const DirectScan&) = delete;
    DirectScan& operator=(const DirectScan&) = delete;

private:
    bool& m_flag;
    DirectScanner& m_scanner;
};

/// As Xerces's reader does.
[[noreturn]] void ThrowParseInProgress()
{
    throw xercesc::IOException("SAX2XMLReaderImpl", 0, xercesc::XMLExcepts::Gen_ParseInProgress);
}

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

/// The scanner could not decode the XML declaration, before anything had a position for it.
struct UndecodableDeclaration
{
    XMLDiagnostic ToDiagnostic(const TString& id) const
    {
        XMLDiagnostic diagnostic(XMLDiagnostic::Kind::Error, message, id, fault.line, fault.column);
        // The scanner speaks of no position, nor does the message.
        diagnostic = std::move(diagnostic).WithMessage(message);
        return fault.isCut ? diagnostic : std::move(diagnostic).AsInvalidUtf8();
    }

    TString message;
    Utf8Faults::InvalidBytes fault;
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

void XercesXMLParserImpl::ParseImpl()
{
    if (HasErrors())
        ThrowAssertion(u"XercesXMLParser", PublishedLine(165), u"HasErrors() == false",
                       KesErrorsError::LogicAssert_0xE60C9000());
    DoXercesParse();
}

void XercesXMLParserImpl::DoXercesParse()
{
    const Metrics::Scope scope("XercesXMLParser_DoXercesParse");
    if (m_isParsing) {
        RecordFailures([] { ThrowParseInProgress(); });
        return;
    }
    const ParseInProgress inProgress(m_isParsing);
    DirectScanning::SetLastVerdict(DirectScanning::Verdict::None);
    m_handler->resetErrors();
    m_handler->BeginDocument(m_sink->AsksForLocations());
    m_sink->BeginDocument();
    auto* const xercesableSource = dynamic_cast<IXercesInputSourceProvider*>(&GetSource());
    if (xercesableSource == nullptr)
        ThrowNoXercesSource();
    const XercesInputSource document =
        xercesableSource->GetXercesInputSource(ColonProcessingMode::EncodeColonAttributes);
    if (document.GetRefusal()) {
        RecordRefusal(document, GetSource().Id());
        CollectHandlerErrors();
        return;
    }
    BeginBudget(document, !m_noSchemaLoaded);
    if (ScanDirectly(document))
        return;
    static_cast<void>(document());
    // Also when memory runs out for what is to be recorded.
    struct GivingBack
    {
        XercesXMLParserImpl& parser;
        ~GivingBack() { parser.GiveBack(); }
    } const givingBack{*this};
    RecordFailures([&] { ScanWithXerces(document); });
}

/// Xerces keeps what it holds of a document until it reads the next one, which may never come: most
/// documents are read without it. What holds the open elements and the attributes of a tag, it
/// keeps for good.
void XercesXMLParserImpl::GiveBack() noexcept
{
    // More than a reader takes that has met ordinary documents.
    constexpr std::size_t c_maxKept = 1024 * 1024;
    m_names.ForgetUnlessSmall();
    m_handler->ForgetAttributes();
    m_handler->ForgetDeclaredEntities();
    m_budget.ForgetNames();
    if (m_memory == nullptr)
        return;
    if (m_noSchemaLoaded ? m_memory->GetHeld() > c_maxKept : m_memory->HasRefused())
        DropReader();
}

template <typename Scan>
void XercesXMLParserImpl::RecordFailures(Scan&& scan)
{
    try {
        scan();
    } catch (const SinkException& exception) {
        RecordThrown(exception.thrown);
    } catch (...) {
        RecordThrown(std::current_exception());
    }
}

void XercesXMLParserImpl::RecordThrown(const std::exception_ptr& thrown)
{
    const auto noError = TError::ErrorInfo::NoError();
    try {
        std::rethrow_exception(thrown);
    } catch (const LimitExceeded& exceeded) {
        RecordLimit(exceeded, GetSource().Id());
        CollectHandlerErrors();
    } catch (const xercesc::OutOfMemoryException&) {
        Error(u"OutOfMemoryException", noError);
    } catch (const ExternalEntityRefusal& refusal) {
        const TString id = GetSource().Id();
        Record(refusal.GetDiagnostic(XMLDiagnostic::Kind::Error, id), noError);
        Record(refusal.GetDiagnostic(XMLDiagnostic::Kind::FatalError, id), noError);
    } catch (const XMLParseException& exception) {
        const TString messages = exception.GetConcatenatedMessages();
        Error(messages, noError);
        FatalError(messages, noError);
    } catch (const UndecodableDeclaration& exception) {
        Record(exception.ToDiagnostic(GetSource().Id()), noError);
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
    if (m_noSchemaLoaded && (m_reader == nullptr || m_remains == Remains::Damage))
        MakeReader();
    if (m_reader == nullptr) {
        if (!RestoreSchemas()) {
            CollectHandlerErrors();
            return;
        }
        BeginBudget(document, true);
    }
    if (const auto tag = CollidingTags::FindFirst(document, GetNameCollisionLimit(),
                                                  !m_noSchemaLoaded, m_budget.GetTagReach()))
        m_budget.FailAtTag(tag->line, tag->column);
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
        const DirectScan inProgress(m_isDirect, m_directScanner);
        const auto scan = [&] {
            // Whatever the sink throws ends the parse.
            verdict = Verdict::Accepted;
            verdict = m_directScanner.Scan(
                {document.GetBytes(), m_budget.GetOutputLimit(), m_budget.GetScannerWorkLimit()},
                *m_sink);
            if (verdict != Verdict::Accepted)
                m_sink->Restart();
        };
        RecordFailures(scan);
        if (verdict == Verdict::ColonName && !m_sink->PassesOn()) {
            document.Sanitize();
            RecordFailures(scan);
        }
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
    std::optional<AttributeErrors> attributeErrors;
    if (!m_noSchemaLoaded && m_sink->AsksForAttributeErrors())
        attributeErrors.emplace(*m_reader, *m_handler);
    xercesc::XMLPScanToken token;
    if (!ScanProlog(document, token))
        return;
    if (attributeErrors)
        attributeErrors->BeginContent();
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
    const auto fault = OverlookedFaults::Find(document.GetBytes(), document.MayHoldNull());
    if (fault)
        m_handler->RecordFatalError(fault->message, GetSource().Id(), fault->line, fault->column);
    else if (m_documentType.HasBegun())
        SetSkippedEntities(
            SkippedEntities::Find(document.GetBytes(), m_handler->GetDeclaredEntities()));
}

bool XercesXMLParserImpl::ScanProlog(const XercesInputSource& document,
                                     xercesc::XMLPScanToken& token)
{
    if (m_remains != Remains::Nothing)
        ForgetXmlVersion();
    // Until the prolog is known to have been harmless.
    m_remains = Remains::Damage;
    m_documentType.Reset();
    const auto afterFailure = [this] {
        return m_documentType.HasBegun() ? Remains::Damage : Remains::Version;
    };
    XmlVersionWatch watch;
    const WatchedProlog watched(*m_reader, watch);
    try {
        const bool complete = m_reader->parseFirst(document(), token);
        if (complete)
            m_remains = watch.SawOtherVersion() ? Remains::Version : Remains::Nothing;
        else
            m_remains = afterFailure();
        return complete;
    } catch (const xercesc::XMLException& exception) {
        m_remains = afterFailure();
        if (exception.getCode() != xercesc::XMLExcepts::Reader_CouldNotDecodeFirstLine)
            throw;
        const auto fault = m_reader->FindFault();
        if (fault && !document.GetFault().IsEmpty()) {
            m_handler->RecordFatalError(fault->message, GetSource().Id(), fault->line,
                                        fault->column);
            return false;
        }
        if (fault)
            throw UndecodableDeclaration{GetTStringFromXMLChPtr(exception.getMessage(), -1),
                                         *fault};
        throw;
    } catch (const xercesc::SAXParseException& exception) {
        m_remains = afterFailure();
        m_handler->fatalError(exception);
        return false;
    }
}

/// A scanner reads a document without XML declaration in the version of the last document that had
/// one. A new scanner would not, but would compile a schema again that the old one knows.
void XercesXMLParserImpl::ForgetXmlVersion()
{
    static constexpr std::string_view c_text = "<?xml version='1.0'?><a/>";
    const xercesc::MemBufInputSource document(reinterpret_cast<const XMLByte*>(c_text.data()),
                                              c_text.size(), xercesc::XMLUni::fgZeroLenString);
    xercesc::XMLPScanToken token;
    // The element, of which the sink must not hear, stays unread.
    if (m_reader->parseFirst(document, token))
        m_reader->parseReset(token);
}
