#pragma once

#include "scanner/MessageList.h"
#include "scanner/ParseBudget.h"
#include "sinks/ScanSink.h"

#include <kescorexml/SAXInterface.h>
#include <kescorexml/XMLDiagnostic.h>
#include <kescorexml/XMLParseException.h>

#include <xercesc/sax/Locator.hpp>
#include <xercesc/sax2/DefaultHandler.hpp>
#include <xercesc/util/XMLEntityResolver.hpp>

#include <exception>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

/// What a sink threw, on its way through Xerces, which would take some of it for its own.
struct SinkException
{
    std::exception_ptr thrown;
};

/// A document may not say what stands in other files. Knows where it did.
class ExternalEntityRefusal final : public XMLParseException
{
public:
    /// `text` is that of the message, which has the position in its middle.
    ExternalEntityRefusal(const TString& message, const TString& text, unsigned long long line,
                          unsigned long long column)
        : XMLParseException(message), m_text(text), m_line(line), m_column(column)
    {
    }

    ExternalEntityRefusal* Clone() const override { return new ExternalEntityRefusal(*this); }
    [[noreturn]] void Throw() const override { throw *this; }

    /// For the document of that identifier.
    XMLDiagnostic GetDiagnostic(XMLDiagnostic::Kind kind, const TString& id) const
    {
        return XMLDiagnostic(kind, m_text, id, m_line, m_column)
            .WithMessage(GetConcatenatedMessages());
    }

private:
    TString m_text;
    unsigned long long m_line;
    unsigned long long m_column;
};

/// What Xerces calls back during a parse. It passes elements and text on to a sink, keeps Xerces's
/// diagnostics, refuses external entities and serves schema documents that the caller supplies.
class XercesXMLHandler : public xercesc::DefaultHandler, public xercesc::XMLEntityResolver
{
public:
    /// All of them must outlive the handler; names and budget may have served others before.
    /// `extension` supplies schemas and may be null.
    XercesXMLHandler(ScanSink& sink, SAXInterfaceExtension* extension, ParsedNames& names,
                     ParseBudget& budget);
    ~XercesXMLHandler() override;

    /// Of the last event whose location was kept; leaves both as they are before the first one.
    void GetCurrentLocationHandler(int& line, int& column) const;
    /// A document begins. Whether the locations of its events are kept, which they are not at
    /// first: somebody may ask.
    void BeginDocument(bool keepsLocations) noexcept
    {
        m_keepsLocations = keepsLocations;
        m_hasText = false;
    }
    /// That of an event which came from elsewhere.
    void SetLocation(int line, int column) noexcept
    {
        m_line = line;
        m_column = column;
    }

    bool SawErrors() const noexcept { return !m_errors.IsEmpty(); }
    bool SawFatalError() const noexcept { return m_sawFatalError; }
    /// Ends both lists with a message that tells how many messages are missing, if some are.
    void CloseMessages();
    const std::vector<XMLDiagnostic>& GetWarnings() const noexcept { return m_warnings.GetKept(); }
    /// Errors and fatal errors.
    const std::vector<XMLDiagnostic>& GetErrors() const noexcept { return m_errors.GetKept(); }
    /// The texts of the entities that the document has declared, by name; none of a parameter
    /// entity.
    const std::unordered_map<TString, TString>& GetDeclaredEntities() const noexcept
    {
        return m_declaredEntities;
    }
    void ForgetDeclaredEntities() noexcept
    {
        std::unordered_map<TString, TString>().swap(m_declaredEntities);
    }
    /// The parse need not or must not go on.
    bool IsDone() const noexcept { return m_sawFatalError || m_sink.IsDone(); }

    void RecordWarning(const XMLCh* message, const XMLCh* systemId, unsigned long long line,
                       unsigned long long column);
    void RecordWarning(const TString& message, const TString& systemId, unsigned long long line,
                       unsigned long long column);
    void RecordError(const XMLCh* message, const XMLCh* systemId, unsigned long long line,
                     unsigned long long column);
    void RecordError(const TString& message, const TString& systemId, unsigned long long line,
                     unsigned long long column);
    void RecordFatalError(const XMLCh* message, const XMLCh* systemId, unsigned long long line,
                          unsigned long long column);
    void RecordFatalError(const TString& message, const TString& systemId, unsigned long long line,
                          unsigned long long column);

    /// The error of that index among all, if it is kept, is about an attribute of that qualified
    /// name.
    void NameAttribute(std::size_t error, const XMLCh* name, const XMLCh* value);

    /// Those of the last tag, if there were many.
    void ForgetAttributes() noexcept;
    /// The locator belongs to a scanner that is about to end.
    void ForgetLocator() noexcept { m_locator = nullptr; }
    /// While a schema is loaded, what its document type refers to outside is taken as empty.
    void SetLoadingSchema(bool loading) noexcept { m_loadingSchema = loading; }

    void characters(const XMLCh* chars, XMLSize_t length) override;
    void endElement(const XMLCh* uri, const XMLCh* localName, const XMLCh* qName) override;
    void setDocumentLocator(const xercesc::Locator* locator) override;
    void startElement(const XMLCh* uri, const XMLCh* localName, const XMLCh* qName,
                      const xercesc::Attributes& attributes) override;
    void error(const xercesc::SAXParseException& exception) override;
    void fatalError(const xercesc::SAXParseException& exception) override;
    void warning(const xercesc::SAXParseException& exception) override;
    /// Empties the lists and the fatal flag; the locator and a sink that is done stay.
    void resetErrors() override;
    void externalEntityDecl(const XMLCh* name, const XMLCh* publicId,
                            const XMLCh* systemId) override;

    // For the accounts of the parse alone.
    void startPrefixMapping(const XMLCh* prefix, const XMLCh* uri) override;
    void endPrefixMapping(const XMLCh* prefix) override;
    void elementDecl(const XMLCh* name, const XMLCh* model) override;
    void internalEntityDecl(const XMLCh* name, const XMLCh* value) override;
    void attributeDecl(const XMLCh* elementName, const XMLCh* name, const XMLCh* type,
                       const XMLCh* mode, const XMLCh* value) override;

    using DefaultHandler::resolveEntity;
    xercesc::InputSource* resolveEntity(xercesc::XMLResourceIdentifier* id) override;

private:
    /// The locator knows nothing before and after a scan, and must not be asked then.
    void RememberLocation();
    /// A tag is there: the text before it, if there is any, is an event.
    void EndText();
    /// Calls `event`, which tells the sink, and returns what it returns.
    template <typename Event>
    static auto Tell(Event&& event);
    void Record(XMLDiagnostic::Kind kind, const TString& message, const TString& systemId,
                unsigned long long line, unsigned long long column);
    /// The same text, sharing its units with what was recorded before where it can.
    TString Share(const TString& text);
    void MeetIdentifiers(const xercesc::Attributes& attributes);
    void MeetEachIdentifier(std::u16string_view names);
    [[noreturn]] void FailBecauseExternalEntity(const XMLCh* name);

    ScanSink& m_sink;
    SAXInterfaceExtension* m_extension;
    const xercesc::Locator* m_locator = nullptr;
    /// Where the last event was; lines count from 1, and 0 is none.
    int m_line = 0;
    int m_column = 0;
    /// Those of the last start tag, which keep their room.
    std::vector<const char16_t*> m_attributeNames;
    std::vector<std::u16string_view> m_attributeValues;
    MessageList m_warnings{XMLDiagnostic::Kind::Warning};
    MessageList m_errors{XMLDiagnostic::Kind::Error};
    /// Texts and identifiers that were recorded; one schema finds the same wrong again and again.
    std::unordered_set<TString> m_recorded;
    std::unordered_map<TString, TString> m_declaredEntities;
    bool m_sawFatalError = false;
    bool m_loadingSchema = false;
    bool m_keepsLocations = false;
    /// Since the last tag.
    bool m_hasText = false;
    ParsedNames& m_names;
    ParseBudget& m_budget;
};
