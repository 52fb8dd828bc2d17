#include "scanner/AttributeErrors.h"

#include "scanner/LocatingReader.h"
#include "scanner/XercesXMLHandler.h"

#include <xercesc/framework/XMLValidityCodes.hpp>
#include <xercesc/framework/psvi/PSVIAttribute.hpp>
#include <xercesc/framework/psvi/PSVIAttributeList.hpp>
#include <xercesc/util/XMLString.hpp>
#include <xercesc/util/XMLUni.hpp>
#include <xercesc/validators/schema/SchemaSymbols.hpp>

using xercesc::SchemaSymbols;
using xercesc::XMLErrorReporter;
using xercesc::XMLString;
using xercesc::XMLUni;
using xercesc::XMLValid;

namespace {

/// Whether it is xsi:nil or xsi:type, which the scanner never calls invalid, whatever it reports.
bool IsNeverInvalid(xercesc::PSVIAttributeList& attributes, XMLSize_t index)
{
    const XMLCh* const name = attributes.getAttributeNameAtIndex(index);
    return XMLString::equals(attributes.getAttributeNamespaceAtIndex(index),
                             SchemaSymbols::fgURI_XSI) &&
           (XMLString::equals(name, SchemaSymbols::fgATT_NILL) ||
            XMLString::equals(name, SchemaSymbols::fgXSI_TYPE));
}

} // namespace

AttributeErrors::AttributeErrors(LocatingReader& reader, XercesXMLHandler& handler)
    : m_reader(reader), m_handler(handler)
{
    m_reader.SetAttributeErrors(this);
    // The scanner gets its model of the schemas ready, without which it must not be asked, only for
    // whom asks when a document begins.
    m_reader.setPSVIHandler(this);
}

AttributeErrors::~AttributeErrors()
{
    m_reader.setPSVIHandler(nullptr);
    m_reader.SetAttributeErrors(nullptr);
}

void AttributeErrors::Ask()
{
    m_isAsking = true;
    m_reader.setPSVIHandler(this);
}

void AttributeErrors::Finish()
{
    if (m_isListEmpty)
        m_reader.setPSVIHandler(nullptr);
    m_isAsking = false;
    m_isSpoilt = false;
    m_isFirstInvalid = false;
    m_errors.clear();
    m_attributes = nullptr;
}

void AttributeErrors::BeginContent()
{
    // What is wrong with the attributes of a document type is no matter of a tag.
    Finish();
}

AttributeErrors::Fault AttributeErrors::FindFault(unsigned int code, const XMLCh* domain,
                                                  XMLErrorReporter::ErrTypes type)
{
    if (type != XMLErrorReporter::ErrType_Error)
        return Fault::None;
    // What a type has against a value.
    if (XMLString::equals(domain, XMLUni::fgExceptDomain))
        return Fault::Value;
    if (!XMLString::equals(domain, XMLUni::fgValidityDomain))
        return Fault::None;
    switch (code) {
    case XMLValid::AttNotDefinedForElement:
        return Fault::Declaration;
    case XMLValid::AttributeNotQualified:
    case XMLValid::AttributeNotUnQualified:
        return Fault::Namespace;
    case XMLValid::NotSameAsFixedValue:
        return Fault::FixedValue;
    case XMLValid::InvalidEmptyAttValue:
    case XMLValid::NoDatatypeValidatorForAttribute:
        return Fault::Value;
    default:
        return Fault::None;
    }
}

void AttributeErrors::Meet(unsigned int code, const XMLCh* domain, XMLErrorReporter::ErrTypes type)
{
    // A tag that the scanner has not told more of, as there is no schema for it, is over.
    if (m_attributes != nullptr)
        Finish();
    if (XMLString::equals(domain, XMLUni::fgValidityDomain))
        MeetSpoiler(code);
    const Fault fault = FindFault(code, domain, type);
    if (fault == Fault::None)
        return;
    // The only error before which the scanner makes up its mind about the attribute.
    if (m_errors.empty() && m_isListEmpty)
        m_isFirstInvalid = fault == Fault::Declaration;
    m_errors.push_back({fault, m_handler.GetErrors().size()});
    if (!m_isSpoilt)
        Ask();
}

void AttributeErrors::MeetSpoiler(unsigned int code)
{
    // An attribute that is valid but for another one of the tag.
    if (code == XMLValid::MultipleIdAttrs)
        m_isSpoilt = true;
    if (code != XMLValid::ProhibitedAttributePresent)
        return;
    // The scanner would look for the attribute in its list, and takes for granted that it is there,
    // which it is not when the scanner was asked later or has it there in another namespace.
    m_reader.setPSVIHandler(nullptr);
    m_isSpoilt = true;
}

void AttributeErrors::StartElement(const xercesc::RefVectorOf<xercesc::XMLAttr>& attributes,
                                   XMLSize_t count)
{
    m_attributes = &attributes;
    m_count = count;
    if (m_isSpoilt)
        Ask();
}

void AttributeErrors::EndElement()
{
    // Values of elements are refused just before their end.
    if (m_isAsking)
        Finish();
}

void AttributeErrors::handleElementPSVI(const XMLCh* /*localName*/, const XMLCh* /*uri*/,
                                        xercesc::PSVIElement* /*element*/)
{
}

void AttributeErrors::handleAttributesPSVI(const XMLCh* /*localName*/, const XMLCh* /*uri*/,
                                           xercesc::PSVIAttributeList* attributes)
{
    if (!m_errors.empty() && !m_isSpoilt)
        NameAttributes(*attributes);
    attributes->reset();
    m_isListEmpty = true;
    Finish();
}

void AttributeErrors::NameAttributes(xercesc::PSVIAttributeList& attributes)
{
    // The list begins with the first that something is wrong with, or with the first of all.
    const XMLSize_t listed = attributes.getLength();
    if (listed > m_count)
        return;
    std::vector<XMLSize_t> invalid;
    bool mayShare = true;
    for (XMLSize_t i = 0; i < listed; ++i) {
        const auto validity = attributes.getAttributePSVIAtIndex(i)->getValidity();
        if (validity == xercesc::PSVIItem::VALIDITY_INVALID || (i == 0 && m_isFirstInvalid))
            invalid.push_back(m_count - listed + i);
        mayShare &= !IsNeverInvalid(attributes, i);
    }
    std::size_t separate = 1;
    for (std::size_t i = 1; i < m_errors.size(); ++i)
        separate += CanBeOfTheSame(m_errors[i - 1].fault, m_errors[i].fault) ? 0U : 1U;
    if (invalid.size() == m_errors.size())
        NameInOrder(invalid, false);
    else if (mayShare && invalid.size() == separate)
        NameInOrder(invalid, true);
}

bool AttributeErrors::CanBeOfTheSame(Fault before, Fault fault) noexcept
{
    return before != Fault::Declaration && fault > before;
}

void AttributeErrors::NameInOrder(const std::vector<XMLSize_t>& invalid, bool mayShare)
{
    std::size_t place = 0;
    for (std::size_t i = 0; i < m_errors.size(); ++i) {
        if (i > 0 && !(mayShare && CanBeOfTheSame(m_errors[i - 1].fault, m_errors[i].fault)))
            ++place;
        const xercesc::XMLAttr& attribute = *m_attributes->elementAt(invalid[place]);
        m_handler.NameAttribute(m_errors[i].index, attribute.getQName(), attribute.getValue());
    }
}
