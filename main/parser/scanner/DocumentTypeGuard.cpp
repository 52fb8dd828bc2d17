#include "scanner/DocumentTypeGuard.h"

#include "bytes/XercesText.h"

#include <kesplatform/CorePlatformUtils.h>
#include <kesplatform/TFormatString.h>

#include <xercesc/sax/SAXParseException.hpp>

#include <QChar>
#include <QString>

namespace {

/// The length of the text when there is none.
std::size_t FindInvalidCharacter(std::u16string_view text)
{
    for (std::size_t at = 0; at < text.size(); ++at) {
        const char16_t unit = text[at];
        const bool beginsPair = QChar::isHighSurrogate(unit) && at + 1 < text.size() &&
                                QChar::isLowSurrogate(text[at + 1]);
        if (beginsPair)
            ++at;
        else if (QChar::isSurrogate(unit) || !CorePlatformUtils::IsValidCharacter(unit))
            return at;
    }
    return text.size();
}

} // namespace

void DocumentTypeGuard::startDTD(const XMLCh* /*name*/, const XMLCh* /*publicId*/,
                                 const XMLCh* systemId)
{
    m_hasBegun = true;
    m_budget.BeginDocumentType();
    RefuseInvalidCharacters(systemId);
}

void DocumentTypeGuard::notationDecl(const XMLCh* name, const XMLCh* /*publicId*/,
                                     const XMLCh* systemId)
{
    m_budget.MeetName(NameKind::Notation, ViewXMLCh(name));
    RefuseInvalidCharacters(systemId);
}

void DocumentTypeGuard::unparsedEntityDecl(const XMLCh* name, const XMLCh* /*publicId*/,
                                           const XMLCh* systemId, const XMLCh* /*notationName*/)
{
    m_budget.MeetName(NameKind::Entity, ViewXMLCh(name));
    RefuseInvalidCharacters(systemId);
}

void DocumentTypeGuard::RefuseInvalidCharacters(const XMLCh* systemId) const
{
    const std::u16string_view text = ViewXMLCh(systemId);
    const std::size_t invalid = FindInvalidCharacter(text);
    if (invalid == text.size())
        return;
    const TString number = QString::number(text[invalid], 16).toUpper();
    const TString message =
        TFormatString(u"invalid character 0x%1 in system identifier").Format(number);
    const XMLCh* const reason = GetInternalXMLChPtrFromTString(message);
    if (const xercesc::Locator* const locator = m_budget.GetLocator())
        throw xercesc::SAXParseException(reason, *locator);
    throw xercesc::SAXParseException(reason, nullptr, nullptr, 0, 0);
}
