#pragma once

#include "direct/DirectScanner.h"
#include "scanner/DocumentTypeGuard.h"
#include "scanner/LocatingReader.h"
#include "scanner/ParseBudget.h"
#include "scanner/ScannerMemory.h"
#include "scanner/XercesXMLHandler.h"
#include "sinks/SAXSink.h"

#include <kescorexml/XercesXMLParser.h>

#include <xercesc/framework/XMLPScanToken.hpp>
#include <xercesc/sax2/SAX2XMLReader.hpp>
#include <xercesc/util/SecurityManager.hpp>

#include <span>

class IXercesInputSourceProvider;
class XercesInputSource;

/// Initialises Xerces on the first call; it stays so until the process ends. Whatever was created
/// after that call is destroyed before Xerces is shut down.
void EnsureXercesIsInitialised();

// Assertions, thrown in the source that they name.

/// About a document that gives no bytes to Xerces.
[[noreturn]] void ThrowNoXercesSource();
/// About a call that a sink may not make in an event.
[[noreturn]] void ThrowInEvent();

/// Marks a parser that calls its sink, which may not have it parse or load a schema then.
class ParseInProgress
{
public:
    explicit ParseInProgress(bool& flag) noexcept : m_flag(flag) { m_flag = true; }
    ~ParseInProgress() { m_flag = false; }
    ParseInProgress(const ParseInProgress&) = delete;
    ParseInProgress& operator=(const ParseInProgress&) = delete;

private:
    bool& m_flag;
};

/// The driver of one Xerces reader.
class XercesXMLParserImpl final : public XercesXMLParser
{
public:
    XercesXMLParserImpl(InputSource& source, std::shared_ptr<SAXInterface> sink);
    /// `sink` must live for as long as Parse may be called without a Reload before.
    XercesXMLParserImpl(InputSource& source, ScanSink& sink);
    ~XercesXMLParserImpl() override;

    /// As the other one, for a sink of that kind.
    void Reload(InputSource& source, ScanSink& sink);

    void LoadXSDSource(InputSource& xsdSource) override;
    void GetCurrentLocation(int& line, int& column) override;
    void Reload(InputSource& source, std::shared_ptr<SAXInterface> sink) override;
    std::vector<TString> GetXSDNames() const override;
    void AllowEntityExpansion_Insecure() override;
    /// Whether GetXSDNames has any.
    bool HasSchemas() const noexcept { return !m_schemas.empty(); }

protected:
    void ParseImpl() override;

private:
    /// What a document may have left in the scanner.
    enum class Remains
    {
        Nothing,
        /// It holds on to the version of the document.
        Version,
        /// That, and it has forgotten memory in a document type that is wrong: the reader is to be
        /// made anew when that is possible.
        Damage
    };

    /// What it takes to load one again.
    struct Schema
    {
        TString id;
        /// UTF-8. Null for what was no text.
        std::shared_ptr<const std::string> text;
        std::size_t errors = 0;
    };

    // In these, `extension`, which supplies schemas, may be null.

    void Start(ScanSink& sink, SAXInterfaceExtension* extension);
    /// From now on, events go to `sink`.
    void SendTo(ScanSink& sink, SAXInterfaceExtension* extension);
    /// A new reader, with new memory, in place of the last one, which stays when this throws. It
    /// knows of no schemas.
    void MakeReader();
    /// Content, error and declaration handler.
    static void SetXercesXMLHandler(xercesc::SAX2XMLReader& reader, XercesXMLHandler& handler);
    static void SetEntityResolver(xercesc::SAX2XMLReader& reader, XercesXMLHandler* handler);
    /// Logic assertion while the parser calls its sink.
    void RequireOutsideOfEvents() const;
    void SwitchToValidating();
    void LoadSchema(InputSource& source);
    /// Tells the handler what is wrong with it.
    void CompileSchema(const XercesInputSource& schema, const TString& id);
    /// Makes a reader that knows the schemas which were loaded. False when the handler has an error
    /// that says why there is none; there is none, either, when this throws.
    bool RestoreSchemas();
    bool CompileAgain(std::span<const Schema> schemas);
    /// Reader and memory. A parser with schemas restores them when it needs them.
    void DropReader() noexcept;
    void DoXercesParse();
    /// Reads the document without Xerces, if it is plain. False when Xerces is to read it.
    bool ScanDirectly(const XercesInputSource& document);
    DirectScanning::Verdict FindReasonForXerces() const;
    void ScanWithXerces(const XercesInputSource& document);
    /// What an unusual document has made the parser take, and the reader itself where it was
    /// refused memory while it has schemas.
    void GiveBack() noexcept;
    /// Calls `scan` and records what it throws.
    template <typename Scan>
    void RecordFailures(Scan&& scan);
    /// As the error that stands for it.
    void RecordThrown(const std::exception_ptr& thrown);
    void ScanDocument(const XercesInputSource& document);
    bool ScanProlog(const XercesInputSource& document, xercesc::XMLPScanToken& token);
    void ForgetXmlVersion();
    void CheckEnd(const XercesInputSource& document);
    /// Opens the accounts of a parse or of a load of a schema.
    void BeginBudget(const XercesInputSource& input, bool isValidating);
    void RecordLimit(const LimitExceeded& exceeded, const TString& id);
    void RecordRefusal(const XercesInputSource& input, const TString& id);
    void CollectHandlerErrors();

    ParsedNames m_names;
    DirectScanner m_directScanner{m_names};
    /// Or loading a schema.
    bool m_isParsing = false;
    /// The direct scanner is reading a document.
    bool m_isDirect = false;
    ParseBudget m_budget;
    DocumentTypeGuard m_documentType{m_budget};
    std::unique_ptr<xercesc::SecurityManager> m_securityManager;
    // Null while no document and no schema was left to Xerces, after a large one, and after one for
    // which memory failed if there are schemas.

    std::unique_ptr<ScannerMemory> m_memory;
    std::unique_ptr<LocatingReader> m_reader;
    /// What serves the sink of a caller outside of the library; else null.
    std::unique_ptr<SAXSink> m_saxSink;
    ScanSink* m_sink = nullptr;
    std::unique_ptr<XercesXMLHandler> m_handler;
    /// In load order.
    std::vector<Schema> m_schemas;
    bool m_noSchemaLoaded = true;
    Remains m_remains = Remains::Nothing;
};
