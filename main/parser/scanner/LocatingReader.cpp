#include "scanner/LocatingReader.h"

#include "bytes/XercesInputSource.h"
#include "bytes/XercesText.h"
#include "scanner/AttributeErrors.h"

#include <xercesc/framework/XMLErrorCodes.hpp>
#include <xercesc/sax/ErrorHandler.hpp>
#include <xercesc/util/SecurityManager.hpp>
#include <xercesc/util/XMLExceptMsgs.hpp>
#include <xercesc/util/XMLString.hpp>
#include <xercesc/util/XMLUni.hpp>

using xercesc::XMLExcepts;
using xercesc::XMLString;

namespace {

/// Whether an error is an exception of the decoder of UTF-8.
bool IsUndecodable(unsigned int code, const XMLCh* domain)
{
    return XMLString::equals(domain, xercesc::XMLUni::fgExceptDomain) &&
           code >= XMLExcepts::UTF8_FormatError && code <= XMLExcepts::UTF8_Exceeds_BytesLimit;
}

ElementTable FindTable(const xercesc::XMLElementDecl& declaration)
{
    if (declaration.getObjectType() != xercesc::XMLElementDecl::Schema)
        return ElementTable::NoDocumentType;
    return declaration.isDeclared() ? ElementTable::Schema : ElementTable::NoSchema;
}

} // namespace

LocatingReader::LocatingReader(xercesc::MemoryManager* manager, ParseBudget& budget)
    : SAX2XMLReaderImpl(manager), m_manager(manager), m_budget(budget)
{
}

void LocatingReader::startElement(const xercesc::XMLElementDecl& declaration, unsigned int uri,
                                  const XMLCh* prefix,
                                  const xercesc::RefVectorOf<xercesc::XMLAttr>& attributes,
                                  XMLSize_t count, bool isEmpty, bool isRoot)
{
    if (m_budget.CountsAttributes()) {
        XMLSize_t defaults = 0;
        for (XMLSize_t i = 0; i < count; ++i)
            defaults += attributes.elementAt(i)->getSpecified() ? 0U : 1U;
        m_budget.SetDefaultAttributes(defaults);
    }
    if (m_budget.IsValidating())
        m_budget.SetElementTable(FindTable(declaration));
    if (m_attributeErrors != nullptr)
        m_attributeErrors->StartElement(attributes, count);
    SAX2XMLReaderImpl::startElement(declaration, uri, prefix, attributes, count, isEmpty, isRoot);
}

void LocatingReader::endElement(const xercesc::XMLElementDecl& declaration, unsigned int uri,
                                bool isRoot, const XMLCh* prefix)
{
    if (m_attributeErrors != nullptr)
        m_attributeErrors->EndElement();
    SAX2XMLReaderImpl::endElement(declaration, uri, isRoot, prefix);
}

bool LocatingReader::IsInput(const XMLCh* systemId) const
{
    return m_input != nullptr && XMLString::equals(systemId, (*m_input)().getSystemId());
}

/// Whether an error is that of a document which refers to more entities than it may, while that is
/// none.
bool LocatingReader::IsRefusal(unsigned int code, const XMLCh* domain) const
{
    if (code != xercesc::XMLErrs::EntityExpansionLimitExceeded ||
        !XMLString::equals(domain, xercesc::XMLUni::fgXMLErrDomain))
        return false;
    const auto* const limits = static_cast<const xercesc::SecurityManager*>(
        getProperty(xercesc::XMLUni::fgXercesSecurityManager));
    return limits != nullptr && limits->getEntityExpansionLimit() == 0;
}

std::optional<Utf8Faults::InvalidBytes> LocatingReader::FindFault() const
{
    if (m_input == nullptr)
        return std::nullopt;
    auto fault = Utf8Faults::FindFirst(m_input->GetBytes());
    if (fault && !m_input->GetFault().IsEmpty())
        fault->message = m_input->GetFault();
    return fault;
}

void LocatingReader::error(unsigned int code, const XMLCh* domain,
                           xercesc::XMLErrorReporter::ErrTypes type, const XMLCh* text,
                           const XMLCh* systemId, const XMLCh* publicId, XMLFileLoc line,
                           XMLFileLoc column)
{
    std::optional<Utf8Faults::InvalidBytes> fault;
    if (type == xercesc::XMLErrorReporter::ErrType_Fatal && IsInput(systemId))
        fault = FindFault();
    const bool isUndecodable = fault && IsUndecodable(code, domain);
    // What else is fatal right before a character that is cut off is so because nothing follows.
    if (isUndecodable ||
        (fault && fault->isCut && fault->line == line && fault->column == column)) {
        line = fault->line;
        column = fault->column;
        if (!fault->message.IsEmpty())
            text = GetInternalXMLChPtrFromTString(fault->message);
    }
    const bool isInvalidUtf8 = isUndecodable && !fault->isCut && m_input->GetFault().IsEmpty();
    if (isInvalidUtf8 && getErrorHandler() != nullptr) {
        getErrorHandler()->fatalError(
            InvalidUtf8(text, publicId, systemId, line, column, m_manager));
        return;
    }
    if (IsRefusal(code, domain) && getErrorHandler() != nullptr) {
        getErrorHandler()->fatalError(
            EntityRefused(text, publicId, systemId, line, column, m_manager));
        return;
    }
    if (m_attributeErrors != nullptr)
        m_attributeErrors->Meet(code, domain, type);
    SAX2XMLReaderImpl::error(code, domain, type, text, systemId, publicId, line, column);
}
