// What an element forwards to its document: diagnostics and renames.

#include <kescorexml/DOMElement.h>

#include "tree/TreeAssertions.h"

#include <kescorexml/DOM.h>

using TreeAssertions::RequireDocument;

// Diagnostics

void DOMElement::ClearErrors()
{
    RequireDocument(m_dom, u"ClearErrors").ClearErrors(*this);
}

void DOMElement::Error(const TString& message, const TError::ErrorInfo& info, bool reported,
                       bool cancel) const
{
    RequireDocument(m_dom, u"Error").PushError(*this, message, info, reported, cancel);
}

void DOMElement::PrefixError(const TString& message, const TError::ErrorInfo& info,
                             bool reported) const
{
    RequireDocument(m_dom, u"PrefixError").InsertError(*this, message, info, reported);
}

bool DOMElement::HasErrors() const
{
    return RequireDocument(m_dom, u"HasErrors").HasErrors(*this);
}

bool DOMElement::HasUnreportedErrors() const
{
    return RequireDocument(m_dom, u"HasUnreportedErrors").HasUnreportedErrors(*this);
}

bool DOMElement::HasCancelErrors() const
{
    return RequireDocument(m_dom, u"HasCancelErrors").HasCancelErrors(*this);
}

bool DOMElement::HasOnlyCancelErrors() const
{
    return RequireDocument(m_dom, u"HasOnlyCancelErrors").HasOnlyCancelErrors(*this);
}

void DOMElement::GetErrors(std::list<TString>& out) const
{
    RequireDocument(m_dom, u"GetErrors").GetErrors(*this, out);
}

void DOMElement::GetMetadataForErrors(std::list<TError::ErrorInfo>& out) const
{
    RequireDocument(m_dom, u"GetMetadataForErrors")
        .GetErrors<std::list<TError::ErrorInfo>>(*this, out);
}

void DOMElement::ClearWarnings()
{
    RequireDocument(m_dom, u"ClearWarnings").ClearWarnings(*this);
}

void DOMElement::Warning(const TString& message, const TError::ErrorInfo& info) const
{
    RequireDocument(m_dom, u"Warning").PushWarning(*this, message, info);
}

void DOMElement::PrefixWarning(const TString& message, const TError::ErrorInfo& info) const
{
    RequireDocument(m_dom, u"PrefixWarning").InsertWarning(*this, message, info);
}

bool DOMElement::HasWarnings() const
{
    return RequireDocument(m_dom, u"HasWarnings").HasWarnings(*this);
}

void DOMElement::GetWarnings(std::list<TString>& out) const
{
    RequireDocument(m_dom, u"GetWarnings").GetWarnings(*this, out);
}

void DOMElement::GetMetadataForWarnings(std::list<TError::ErrorInfo>& out) const
{
    RequireDocument(m_dom, u"GetMetadataForWarnings")
        .GetWarnings<std::list<TError::ErrorInfo>>(*this, out);
}

// Renames

void DOMElement::AddFieldRename(const FieldName& from, const FieldName& to)
{
    RequireDocument(m_dom, u"AddFieldRename").AddFieldRename(from, to);
}

void DOMElement::AddCaptionRename(const TString& from, const TString& to)
{
    RequireDocument(m_dom, u"AddCaptionRename").AddCaptionRename(from, to);
}

FieldName DOMElement::RenameField(const FieldName& name) const
{
    return m_dom == nullptr ? name : m_dom->RenameField(name);
}

TString DOMElement::RenameDataConnection(const TString& name) const
{
    return m_dom == nullptr ? name : m_dom->RenameDataConnection(name);
}

TString DOMElement::RenameDataSource(const TString& name) const
{
    return m_dom == nullptr ? name : m_dom->RenameDataSource(name);
}

TString DOMElement::RenameMapSource(const TString& name) const
{
    return m_dom == nullptr ? name : m_dom->RenameMapSource(name);
}

TString DOMElement::GetCaptionRenameIfItExists(const TString& attrName) const
{
    return m_dom->GetCaptionRenameIfItExists(GetAttribute(attrName));
}

FieldName DOMElement::GetFieldName(const TString& attrName) const
{
    return RenameField(FieldName::ParseGlobal(GetAttribute(attrName)));
}

FieldName DOMElement::GetFieldName(const TString& attrName, FieldNameCache& cache) const
{
    return RenameField(FieldName::ParseGlobal(GetAttribute(attrName), cache));
}

FieldName DOMElement::GetTextAsFieldName() const
{
    return RenameField(FieldName::ParseGlobal(m_text));
}

FieldName DOMElement::GetTextAsFieldName(FieldNameCache& cache) const
{
    return RenameField(FieldName::ParseGlobal(m_text, cache));
}

FieldName DOMElement::GetLocalFieldName(const TString& attrName, const TString& dataSource) const
{
    FieldName name = FieldName::ParseLocal(GetAttribute(attrName));
    return MakeLocalName(RenameField(MakeGlobalName(dataSource, std::move(name))));
}

FieldName DOMElement::GetLocalFieldName(const TString& attrName, const TString& dataSource,
                                        FieldNameCache& cache) const
{
    FieldName name = FieldName::ParseLocal(GetAttribute(attrName), cache);
    return MakeLocalName(RenameField(MakeGlobalName(dataSource, std::move(name))));
}
