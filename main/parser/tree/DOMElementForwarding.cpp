// What an element forwards to its document: diagnostics and renames.

#include <kescorexml/DOMElement.h>

#include "base/Assertion.h"
#include "base/KesErrors.h"

#include <kescorexml/DOM.h>

namespace {

DOM& RequireDocument(DOM* dom, const char16_t* operation, int line, CorvinaError (*error)())
{
    if (dom == nullptr) {
        const TString name = TString(u"DOMElement::") + operation;
        ThrowAssertion(u"DOMElement", line,
                       name + u" can only be called on a DOMElement that is attached to a DOM",
                       error());
    }
    return *dom;
}

} // namespace

// Diagnostics

void DOMElement::ClearErrors()
{
    DOM& dom =
        RequireDocument(m_dom, u"ClearErrors", __LINE__, KesErrorsError::LogicAssert_0x5333472D);
    dom.ClearErrors(*this);
}

void DOMElement::Error(const TString& message, const TError::ErrorInfo& info, bool reported,
                       bool cancel) const
{
    DOM& dom = RequireDocument(m_dom, u"Error", __LINE__, KesErrorsError::LogicAssert_0x680C7D53);
    dom.PushError(*this, message, info, reported, cancel);
}

void DOMElement::PrefixError(const TString& message, const TError::ErrorInfo& info,
                             bool reported) const
{
    DOM& dom =
        RequireDocument(m_dom, u"PrefixError", __LINE__, KesErrorsError::LogicAssert_0x72791866);
    dom.InsertError(*this, message, info, reported);
}

bool DOMElement::HasErrors() const
{
    const DOM& dom =
        RequireDocument(m_dom, u"HasErrors", __LINE__, KesErrorsError::LogicAssert_0x7CE5B379);
    return dom.HasErrors(*this);
}

bool DOMElement::HasUnreportedErrors() const
{
    const DOM& dom = RequireDocument(m_dom, u"HasUnreportedErrors", __LINE__,
                                     KesErrorsError::LogicAssert_0x87524E8C);
    return dom.HasUnreportedErrors(*this);
}

bool DOMElement::HasCancelErrors() const
{
    const DOM& dom = RequireDocument(m_dom, u"HasCancelErrors", __LINE__,
                                     KesErrorsError::LogicAssert_0x91BEE99F);
    return dom.HasCancelErrors(*this);
}

bool DOMElement::HasOnlyCancelErrors() const
{
    const DOM& dom = RequireDocument(m_dom, u"HasOnlyCancelErrors", __LINE__,
                                     KesErrorsError::LogicAssert_0x9C2B84B2);
    return dom.HasOnlyCancelErrors(*this);
}

void DOMElement::GetErrors(std::list<TString>& out) const
{
    const DOM& dom =
        RequireDocument(m_dom, u"GetErrors", __LINE__, KesErrorsError::LogicAssert_0xA6981FC5);
    dom.GetErrors(*this, out);
}

void DOMElement::GetMetadataForErrors(std::list<TError::ErrorInfo>& out) const
{
    const DOM& dom = RequireDocument(m_dom, u"GetMetadataForErrors", __LINE__,
                                     KesErrorsError::LogicAssert_0xB104BAD8);
    dom.GetErrors<std::list<TError::ErrorInfo>>(*this, out);
}

void DOMElement::ClearWarnings()
{
    DOM& dom =
        RequireDocument(m_dom, u"ClearWarnings", __LINE__, KesErrorsError::LogicAssert_0x5D9FE240);
    dom.ClearWarnings(*this);
}

void DOMElement::Warning(const TString& message, const TError::ErrorInfo& info) const
{
    DOM& dom = RequireDocument(m_dom, u"Warning", __LINE__, KesErrorsError::LogicAssert_0xBB7155EB);
    dom.PushWarning(*this, message, info);
}

void DOMElement::PrefixWarning(const TString& message, const TError::ErrorInfo& info) const
{
    DOM& dom =
        RequireDocument(m_dom, u"PrefixWarning", __LINE__, KesErrorsError::LogicAssert_0xC5DDF0FE);
    dom.InsertWarning(*this, message, info);
}

bool DOMElement::HasWarnings() const
{
    const DOM& dom =
        RequireDocument(m_dom, u"HasWarnings", __LINE__, KesErrorsError::LogicAssert_0xD04A8C11);
    return dom.HasWarnings(*this);
}

void DOMElement::GetWarnings(std::list<TString>& out) const
{
    const DOM& dom =
        RequireDocument(m_dom, u"GetWarnings", __LINE__, KesErrorsError::LogicAssert_0xDAB72724);
    dom.GetWarnings(*this, out);
}

void DOMElement::GetMetadataForWarnings(std::list<TError::ErrorInfo>& out) const
{
    const DOM& dom = RequireDocument(m_dom, u"GetMetadataForWarnings", __LINE__,
                                     KesErrorsError::LogicAssert_0xE523C237);
    dom.GetWarnings<std::list<TError::ErrorInfo>>(*this, out);
}

// Renames

void DOMElement::AddFieldRename(const FieldName& from, const FieldName& to)
{
    DOM& dom =
        RequireDocument(m_dom, u"AddFieldRename", __LINE__, KesErrorsError::LogicAssert_0x3E5A1107);
    dom.AddFieldRename(from, to);
}

void DOMElement::AddCaptionRename(const TString& from, const TString& to)
{
    DOM& dom = RequireDocument(m_dom, u"AddCaptionRename", __LINE__,
                               KesErrorsError::LogicAssert_0x48C6AC1A);
    dom.AddCaptionRename(from, to);
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
