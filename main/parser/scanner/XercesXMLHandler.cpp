#include "scanner/XercesXMLHandler.h"

#include "bytes/XercesColonSanitizer.h"
#include "bytes/XercesText.h"
#include "markup/CharacterClasses.h"
#include "scanner/LocatingReader.h"

#include <kescorexml/CoreXml.h>

#include <kesplatform/TFile.h>
#include <kesplatform/TFormatString.h>
#include <kesplatform/Unicode.h>

#include <xercesc/framework/MemBufInputSource.hpp>
#include <xercesc/sax/SAXParseException.hpp>
#include <xercesc/sax2/Attributes.hpp>
#include <xercesc/util/XMLResourceIdentifier.hpp>
#include <xercesc/util/XMLUni.hpp>

#include <algorithm>

namespace {

using Kind = XMLDiagnostic::Kind;

/// Null gives the empty text.
const char16_t* ToTerminated(const XMLCh* text) noexcept
{
    return text == nullptr ? u"" : reinterpret_cast<const char16_t*>(text);
}

/// The units of all names and values.
std::size_t CountUnits(const xercesc::Attributes& attributes)
{
    std::size_t units = 0;
    for (XMLSize_t i = 0; i < attributes.getLength(); ++i) {
        units += ViewXMLCh(attributes.getQName(i)).size();
        units += ViewXMLCh(attributes.getValue(i)).size();
    }
    return units;
}

/// The attributes whose prefixes the scanner looks up.
std::uint64_t CountPrefixed(const xercesc::Attributes& attributes)
{
    std::uint64_t count = 0;
    for (XMLSize_t i = 0; i < attributes.getLength(); ++i) {
        const std::u16string_view name = ViewXMLCh(attributes.getQName(i));
        const bool isPrefixed = name.find(u':') != std::u16string_view::npos;
        count += isPrefixed && !name.starts_with(u"xmlns:") ? 1U : 0U;
    }
    return count;
}

/// The text that a schema compiler shall read, as UTF-8 whatever encoding it declares.
std::unique_ptr<xercesc::InputSource> MakeSchemaSource(const TString& text, const TString& path)
{
    const std::string utf8 = Unicode::toUtf8KeepingHalves(text.view());
    // One byte for each code unit: schema texts are ASCII.
    const auto length = static_cast<std::size_t>(text.length());
    auto bytes = std::make_unique<XMLByte[]>(length + 1);
    std::copy_n(utf8.begin(), length, bytes.get());
    auto source = std::make_unique<xercesc::MemBufInputSource>(
        bytes.get(), length, GetInternalXMLChPtrFromTString(path), true);
    static_cast<void>(bytes.release());
    source->setEncoding(xercesc::XMLUni::fgUTF8EncodingString);
    return source;
}

} // namespace

XercesXMLHandler::XercesXMLHandler(ScanSink& sink, SAXInterfaceExtension* extension,
                                   ParsedNames& names, ParseBudget& budget)
    : m_sink(sink), m_extension(extension), m_names(names), m_budget(budget)
{
}

XercesXMLHandler::~XercesXMLHandler() = default;

void XercesXMLHandler::GetCurrentLocationHandler(int& line, int& column) const
{
    if (m_line == 0)
        return;
    line = m_line;
    column = m_column;
}

void XercesXMLHandler::RememberLocation()
{
    if (!m_keepsLocations)
        return;
    m_line = static_cast<int>(m_locator->getLineNumber());
    m_column = static_cast<int>(m_locator->getColumnNumber());
}

template <typename Event>
auto XercesXMLHandler::Tell(Event&& event)
{
    try {
        return event();
    } catch (...) {
        throw SinkException{std::current_exception()};
    }
}

void XercesXMLHandler::EndText()
{
    if (!m_hasText)
        return;
    m_hasText = false;
    RememberLocation();
    Tell([this] { m_sink.EndText(); });
}

// Elements and text

void XercesXMLHandler::characters(const XMLCh* chars, XMLSize_t length)
{
    m_budget.AddText(length);
    m_hasText |= length != 0;
    m_sink.AppendText(ViewXMLCh(chars, length));
}

void XercesXMLHandler::startElement(const XMLCh* uri, const XMLCh* localName, const XMLCh* qName,
                                    const xercesc::Attributes& attributes)
{
    // A limit that the tag exceeds leaves the text before it with the sink, and the location where
    // the last event was.
    EndText();
    m_names.ForgetIfLarge();
    ParsedNames::Entry& name = m_names.FindElement(reinterpret_cast<const char16_t*>(qName));
    const XMLSize_t count = attributes.getLength();
    m_budget.StartElement(name.name.view(), name.declaredAttributes, uri, localName, count,
                          m_budget.IsValidating() ? CountPrefixed(attributes) : 0);
    if (m_budget.CountsAttributes())
        m_budget.AddAttributes(count, CountUnits(attributes));
    m_attributeNames.resize(count);
    m_attributeValues.resize(count);
    for (XMLSize_t i = 0; i < count; ++i) {
        m_attributeNames[i] = ToTerminated(attributes.getQName(i));
        m_attributeValues[i] = ViewXMLCh(attributes.getValue(i));
    }
    m_budget.CheckAttributeNames(m_attributeNames);
    if (m_budget.IsValidating())
        MeetIdentifiers(attributes);
    RememberLocation();
    Tell([&] { m_sink.StartElement({m_names, name, m_attributeNames, m_attributeValues}); });
}

void XercesXMLHandler::ForgetAttributes() noexcept
{
    constexpr std::size_t c_kept = 1024;
    if (m_attributeNames.capacity() <= c_kept)
        return;
    std::vector<const char16_t*>().swap(m_attributeNames);
    std::vector<std::u16string_view>().swap(m_attributeValues);
}

void XercesXMLHandler::MeetIdentifiers(const xercesc::Attributes& attributes)
{
    for (XMLSize_t i = 0; i < attributes.getLength(); ++i) {
        // And references to them, of which there may be several.
        if (ViewXMLCh(attributes.getType(i)).starts_with(u"ID"))
            MeetEachIdentifier(m_attributeValues[i]);
    }
}

void XercesXMLHandler::MeetEachIdentifier(std::u16string_view names)
{
    while (!names.empty()) {
        const auto* const end =
            std::find_if(names.data(), names.data() + names.size(),
                         [](char16_t c) { return CharacterClasses::IsWhitespace(c); });
        const auto length = static_cast<std::size_t>(end - names.data());
        if (length != 0)
            m_budget.MeetName(NameKind::Identifier, names.substr(0, length));
        names.remove_prefix(std::min(length + 1, names.size()));
    }
}

void XercesXMLHandler::endElement(const XMLCh* /*uri*/, const XMLCh* /*localName*/,
                                  const XMLCh* /*qName*/)
{
    EndText();
    m_budget.EndElement();
    RememberLocation();
    Tell([this] { m_sink.EndElement(); });
}

void XercesXMLHandler::setDocumentLocator(const xercesc::Locator* locator)
{
    m_locator = locator;
    m_budget.SetLocator(locator);
}

void XercesXMLHandler::startPrefixMapping(const XMLCh* prefix, const XMLCh* uri)
{
    m_budget.OpenNamespaceScope(ViewXMLCh(prefix), ViewXMLCh(uri));
}

void XercesXMLHandler::endPrefixMapping(const XMLCh* /*prefix*/)
{
    m_budget.CloseNamespaceScope();
}

void XercesXMLHandler::elementDecl(const XMLCh* name, const XMLCh* model)
{
    m_budget.DeclareElement(ViewXMLCh(name), ViewXMLCh(model));
}

void XercesXMLHandler::internalEntityDecl(const XMLCh* name, const XMLCh* value)
{
    const std::u16string_view text = ViewXMLCh(name);
    m_budget.DeclareEntity(text);
    if (text.starts_with(u'%'))
        return;
    m_budget.CheckTagsOfEntity(ViewXMLCh(value));
    m_declaredEntities.try_emplace(TString(text), ViewXMLCh(value));
}

void XercesXMLHandler::attributeDecl(const XMLCh* elementName, const XMLCh* name, const XMLCh* type,
                                     const XMLCh* /*mode*/, const XMLCh* /*value*/)
{
    m_budget.DeclareAttribute(ViewXMLCh(elementName), ViewXMLCh(name), ViewXMLCh(type));
}

// Diagnostics

TString XercesXMLHandler::Share(const TString& text)
{
    constexpr std::size_t c_maximumRecorded = 1024;
    if (m_recorded.size() == c_maximumRecorded)
        m_recorded.clear();
    return *m_recorded.insert(text).first;
}

void XercesXMLHandler::Record(Kind kind, const TString& message, const TString& systemId,
                              unsigned long long line, unsigned long long column)
{
    MessageList& list = kind == Kind::Warning ? m_warnings : m_errors;
    const auto units = static_cast<std::uint64_t>(message.length());
    if (m_budget.HasRoomForMessage(units) || kind == Kind::FatalError)
        list.Keep({kind, Share(message), Share(systemId), line, column});
    else
        list.Miss(systemId, line, column);
}

void XercesXMLHandler::RecordWarning(const XMLCh* message, const XMLCh* systemId,
                                     unsigned long long line, unsigned long long column)
{
    RecordWarning(GetTStringFromXMLChPtr(message, -1), GetTStringFromXMLChPtr(systemId, -1), line,
                  column);
}

void XercesXMLHandler::RecordWarning(const TString& message, const TString& systemId,
                                     unsigned long long line, unsigned long long column)
{
    Record(Kind::Warning, message, systemId, line, column);
}

void XercesXMLHandler::RecordError(const XMLCh* message, const XMLCh* systemId,
                                   unsigned long long line, unsigned long long column)
{
    RecordError(GetTStringFromXMLChPtr(message, -1), GetTStringFromXMLChPtr(systemId, -1), line,
                column);
}

void XercesXMLHandler::RecordError(const TString& message, const TString& systemId,
                                   unsigned long long line, unsigned long long column)
{
    Record(Kind::Error, message, systemId, line, column);
}

void XercesXMLHandler::RecordFatalError(const XMLCh* message, const XMLCh* systemId,
                                        unsigned long long line, unsigned long long column)
{
    RecordFatalError(GetTStringFromXMLChPtr(message, -1), GetTStringFromXMLChPtr(systemId, -1),
                     line, column);
}

void XercesXMLHandler::RecordFatalError(const TString& message, const TString& systemId,
                                        unsigned long long line, unsigned long long column)
{
    Record(Kind::FatalError, message, systemId, line, column);
    m_sawFatalError = true;
}

void XercesXMLHandler::warning(const xercesc::SAXParseException& exception)
{
    m_budget.SettleMemory();
    RecordWarning(exception.getMessage(), exception.getSystemId(), exception.getLineNumber(),
                  exception.getColumnNumber());
}

void XercesXMLHandler::error(const xercesc::SAXParseException& exception)
{
    m_budget.SettleMemory();
    if (m_budget.HasFailed())
        return;
    RecordError(exception.getMessage(), exception.getSystemId(), exception.getLineNumber(),
                exception.getColumnNumber());
}

void XercesXMLHandler::fatalError(const xercesc::SAXParseException& exception)
{
    RecordFatalError(exception.getMessage(), exception.getSystemId(), exception.getLineNumber(),
                     exception.getColumnNumber());
    if (dynamic_cast<const InvalidUtf8*>(&exception) != nullptr)
        m_errors.Last() = std::move(m_errors.Last()).AsInvalidUtf8();
    if (dynamic_cast<const EntityRefused*>(&exception) != nullptr)
        m_errors.Last() = std::move(m_errors.Last()).AsEntityRefused();
}

void XercesXMLHandler::NameAttribute(std::size_t error, const XMLCh* name, const XMLCh* value)
{
    if (error >= m_errors.GetKept().size())
        return;
    TString written =
        XercesColonSanitizer::RestoreEncodedAttributeNames(GetTStringFromXMLChPtr(name, -1));
    TString units = GetTStringFromXMLChPtr(value, -1);
    if (!m_budget.AddToMessages(static_cast<std::uint64_t>(written.length() + units.length())))
        return;
    written = Share(written);
    units = Share(units);
    m_errors.At(error) =
        std::move(m_errors.At(error)).AboutAttribute(std::move(written), std::move(units));
}

void XercesXMLHandler::CloseMessages()
{
    for (MessageList* list : {&m_warnings, &m_errors}) {
        if (!list->IsComplete())
            list->Close(m_budget.DescribeMessageLimit());
    }
}

void XercesXMLHandler::resetErrors()
{
    m_warnings.Clear();
    m_errors.Clear();
    m_recorded.clear();
    m_sawFatalError = false;
}

// What a document refers to outside of itself

void XercesXMLHandler::externalEntityDecl(const XMLCh* name, const XMLCh* /*publicId*/,
                                          const XMLCh* /*systemId*/)
{
    FailBecauseExternalEntity(name);
}

void XercesXMLHandler::FailBecauseExternalEntity(const XMLCh* name)
{
    XMLFileLoc line = 0;
    XMLFileLoc column = 0;
    if (m_locator != nullptr) {
        line = m_locator->getLineNumber();
        column = m_locator->getColumnNumber();
    }
    const TString text = CoreXml::LookupTStr(CoreXml::StringId::IDS_ERR_XML_ENTITY);
    const TString entity = GetTStringFromXMLChPtr(name, -1);
    const TString message = TFormatString(u"%1(%2,%3) '%4'").Format(text, line, column, entity);
    m_sawFatalError = true;
    throw ExternalEntityRefusal(message, TFormatString(u"%1 '%2'").Format(text, entity), line,
                                column);
}

xercesc::InputSource* XercesXMLHandler::resolveEntity(xercesc::XMLResourceIdentifier* id)
{
    using xercesc::XMLResourceIdentifier;

    switch (id->getResourceIdentifierType()) {
    case XMLResourceIdentifier::SchemaImport:
    case XMLResourceIdentifier::SchemaInclude:
        break;
    case XMLResourceIdentifier::ExternalEntity:
        // The schema compiler's own reader takes null as leave to look on the disk.
        if (m_loadingSchema)
            return MakeSchemaSource(TString(), GetTStringFromXMLChPtr(id->getSystemId(), -1))
                .release();
        return nullptr;
    default:
        return nullptr;
    }
    if (m_extension == nullptr)
        return nullptr;
    const TString base = GetTStringFromXMLChPtr(id->getBaseURI(), -1);
    const TString location = GetTStringFromXMLChPtr(id->getSystemId(), -1);
    const TString path = Tell([&] { return m_extension->ResolveSchemaLocation(base, location); });
    if (path.IsEmpty())
        return nullptr;
    const TString loaded = TFile::LoadTextFile(TPath(path), 1);
    const TString text = Tell([&] { return m_extension->FilterSchemaText(loaded, path); });
    return MakeSchemaSource(text, path).release();
}
