#include <kescorexml/DOM.h>

#include "base/Assertion.h"
#include "base/KesErrors.h"
#include "tree/ElementLife.h"
#include "tree/LockedPair.h"
#include "tree/TreeAssertions.h"

#include <kescorexml/DOMElement.h>
#include <kescorexml/DOMElementSearch.h>

#include <utility>

namespace {

/// How deep GetElement looks.
constexpr int c_searchDepth = 1000;

} // namespace

DOM::DOM(bool restrictExternalPaths)
    : m_root(std::make_unique<DOMElement>(TString(u"Document"))),
      m_restrictExternalPaths(restrictExternalPaths)
{
    ElementLife::SetDocument(*m_root, this);
}

DOM::~DOM()
{
    // The root clears the registries, for which the lock must still be there.
    std::unique_ptr<DOMElement> root = std::move(m_root);
    root.reset();
    ElementLife::DetachAllLoose(*this);
}

bool DOM::GetRestrictExternalPaths() const
{
    const ScopedReadLock lock(m_lock);
    return m_restrictExternalPaths;
}

void DOM::DeepCopy(const DOM& other)
{
    const LockedPair locks(m_lock, other.m_lock);
    if (m_root == nullptr)
        ThrowAssertion(u"DOM", __LINE__, u"m_root", KesErrorsError::LogicAssert_0xD42E7B19());
    if (other.m_root == nullptr)
        ThrowAssertion(u"DOM", __LINE__, u"dom.m_root", KesErrorsError::LogicAssert_0x6F0895AC());
    if (this == &other) {
        ClearAllErrorsAndWarnings();
        return;
    }

    auto fieldRenames = other.m_fieldRenames;
    auto captionRenames = other.m_captionRenames;
    auto dataSourceRenames = other.m_dataSourceRenames;
    auto dataConnectionRenames = other.m_dataConnectionRenames;
    auto mapSourceRenames = other.m_mapSourceRenames;
    auto pathRenames = other.m_pathRenames;
    auto skippedEntities = other.m_skippedEntities;

    // The registries are cleared before the tree is copied, since copies do not displace messages
    // that are there; they come back if the copy fails.
    auto errors = std::exchange(m_errors, {});
    auto warnings = std::exchange(m_warnings, {});
    try {
        *m_root = *other.m_root;
    } catch (...) {
        m_errors.swap(errors);
        m_warnings.swap(warnings);
        throw;
    }
    m_fieldRenames.swap(fieldRenames);
    m_captionRenames.swap(captionRenames);
    m_dataSourceRenames.swap(dataSourceRenames);
    m_dataConnectionRenames.swap(dataConnectionRenames);
    m_mapSourceRenames.swap(mapSourceRenames);
    std::swap(m_pathRenames, pathRenames);
    m_skippedEntities.swap(skippedEntities);
    m_protectedDataSourceName = other.m_protectedDataSourceName;
    m_dsValidationCancelType = other.m_dsValidationCancelType;
    m_restrictExternalPaths = other.m_restrictExternalPaths;
}

bool DOM::operator==(const DOM& other) const
{
    return *m_root == *other.m_root;
}

DOMElement* DOM::GetDocumentRoot() noexcept
{
    return m_root->HasChildren() ? &m_root->GetChildren().front() : nullptr;
}

const DOMElement* DOM::GetDocumentRoot() const noexcept
{
    return const_cast<DOM*>(this)->GetDocumentRoot();
}

DOMElement* DOM::GetElement(const TString& name)
{
    return DOMElementSearch::FindElement(*m_root, name, c_searchDepth, TString(), TString());
}

const DOMElement* DOM::GetElement(const TString& name) const
{
    return const_cast<DOM*>(this)->GetElement(name);
}

void DOM::SetDSValidationCancelType(int type)
{
    const ScopedLock lock(m_lock);
    m_dsValidationCancelType = type;
}

int DOM::GetDSValidationCancelType() const
{
    const ScopedReadLock lock(m_lock);
    return m_dsValidationCancelType;
}

void DOM::SetProtectedDataSourceName(const TString& name)
{
    const ScopedLock lock(m_lock);
    m_protectedDataSourceName = name;
}

const TString& DOM::GetProtectedDataSourceName() const
{
    const ScopedReadLock lock(m_lock);
    return m_protectedDataSourceName;
}

void DOM::SetPathRenames(const PathRenames& renames)
{
    const ScopedLock lock(m_lock);
    m_pathRenames = renames;
}

const PathRenames& DOM::GetPathRenames() const
{
    const ScopedReadLock lock(m_lock);
    return m_pathRenames;
}

// Assertions

void TreeAssertions::ThrowCaptionHasBeenRenamed()
{
    ThrowAssertion(u"DOM", __LINE__, u"m_captionRenames.find(oldCaption) == m_captionRenames.end()",
                   KesErrorsError::LogicAssert_0xB37C21E5());
}
