// The rename maps of a document.

#include <kescorexml/DOM.h>

#include "tree/TreeAssertions.h"

#include <kescorexml/DOMElement.h>

void DOM::AddFieldRename(const FieldName& from, const FieldName& to)
{
    const ScopedLock lock(m_lock);
    m_fieldRenames.insert_or_assign(from, to);
}

void DOM::AddCaptionRename(const TString& oldCaption, const TString& newCaption)
{
    const ScopedLock lock(m_lock);
    if (!m_captionRenames.emplace(oldCaption, newCaption).second)
        TreeAssertions::ThrowCaptionHasBeenRenamed();
}

void DOM::AddDataSourceRename(const TString& from, const TString& to)
{
    const ScopedLock lock(m_lock);
    m_dataSourceRenames.insert_or_assign(from, to);
}

void DOM::AddDataConnectionRename(const TString& from, const TString& to)
{
    const ScopedLock lock(m_lock);
    m_dataConnectionRenames.insert_or_assign(from, to);
}

void DOM::AddMapSourceRename(const TString& from, const TString& to)
{
    const ScopedLock lock(m_lock);
    m_mapSourceRenames.insert_or_assign(from, to);
}

FieldName DOM::RenameField(FieldName name) const
{
    const ScopedReadLock lock(m_lock);
    if (name.IsEmpty() || name.GetRootValue() == m_protectedDataSourceName)
        return name;
    if (const auto source = m_dataSourceRenames.find(name.GetRootValue());
        source != m_dataSourceRenames.end())
        name.SetRootValue(source->second);
    const auto field = m_fieldRenames.find(name);
    return field == m_fieldRenames.end() ? name : field->second;
}

TString DOM::Lookup(const NameMap& names, const TString& name)
{
    const auto found = names.find(name);
    return found == names.end() ? name : found->second;
}

TString DOM::RenameDataSource(const TString& name) const
{
    const ScopedReadLock lock(m_lock);
    return Lookup(m_dataSourceRenames, name);
}

TString DOM::RenameDataConnection(const TString& name) const
{
    const ScopedReadLock lock(m_lock);
    return Lookup(m_dataConnectionRenames, name);
}

TString DOM::RenameMapSource(const TString& name) const
{
    const ScopedReadLock lock(m_lock);
    return Lookup(m_mapSourceRenames, name);
}

TString DOM::GetCaptionRenameIfItExists(const TString& caption) const
{
    const ScopedReadLock lock(m_lock);
    return Lookup(m_captionRenames, caption);
}

TString DOM::UnRenameDataSource(const TString& newName) const
{
    const ScopedReadLock lock(m_lock);
    for (const auto& [from, to] : m_dataSourceRenames) {
        if (to == newName)
            return from;
    }
    return newName;
}
