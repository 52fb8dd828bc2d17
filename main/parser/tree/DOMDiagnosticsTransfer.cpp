// Adopting, copying and moving errors and warnings from element to element and from document to
// document.

#include <kescorexml/DOM.h>

#include "tree/LockedPair.h"
#include "tree/RegistryMessages.h"

#include <kescorexml/DOMElement.h>
#include <kescorexml/DOMElementTraversal.h>

#include <utility>
#include <vector>

void DOM::CopyErrorsAndWarningsForNode(const DOMElement& node, const DOMElement* target)
{
    const DOM* from = node.GetDOMManager();
    if (from == nullptr)
        return;
    const LockedPair locks(m_lock, from->m_lock);
    CopyForClones(*from, {{&node, target == nullptr ? &node : target}});
}

void DOM::AdoptErrorsAndWarningsForNode(const DOMElement& node, const DOMElement* target)
{
    // The constness of the node says that the tree stays as it is; its document's diagnostics are
    // what this is about.
    DOM* from = const_cast<DOMElement&>(node).GetDOMManager();
    if (from == nullptr)
        return;
    const LockedPair locks(m_lock, from->m_lock);
    CopyForClones(*from, {{&node, target == nullptr ? &node : target}});
    from->EraseErrorsAndWarningsForNode(node);
}

void DOM::CopyForClones(const DOM& from,
                        const std::vector<std::pair<const DOMElement*, const DOMElement*>>& pairs)
{
    const LockedPair locks(m_lock, from.m_lock);
    Pending<RecordedError> errors;
    Pending<DOMWarningMessage> warnings;
    for (const auto& [node, key] : pairs) {
        AddCopy(errors, from.m_errors, *node, *key);
        AddCopy(warnings, from.m_warnings, *node, *key);
    }
    MakeRoomFor(m_errors, errors);
    MakeRoomFor(m_warnings, warnings);
    Merge(m_errors, errors);
    Merge(m_warnings, warnings);
}

void DOM::AdoptSubtree(const DOMElement& top, SubtreeScope scope)
{
    DOM* from = const_cast<DOMElement&>(top).GetDOMManager();
    if (from == nullptr)
        return;
    const DOMElement* oldRoot = from->GetRoot();
    const bool rootToo = scope == TopAndDescendants ? top.m_parent == oldRoot : &top == oldRoot;
    const LockedPair locks(m_lock, from->m_lock);
    if (from->m_errors.empty() && from->m_warnings.empty())
        return;

    std::vector<std::pair<const DOMElement*, const DOMElement*>> nodes;
    DOMElementTraversal::ConstPreorderGenerator elements(top);
    if (scope == DescendantsOnly)
        elements.Next();
    while (const DOMElement* element = elements.Next()) {
        if (ElementLife::Identity(*element) != nullptr)
            nodes.emplace_back(element, element);
    }
    if (rootToo && m_root != nullptr)
        nodes.emplace_back(oldRoot, m_root.get());
    CopyForClones(*from, nodes);
    for (const auto& [node, key] : nodes)
        from->EraseErrorsAndWarningsForNode(*node);
}

void DOM::MoveErrorsAndWarningsTo(DOM& other)
{
    const LockedPair locks(m_lock, other.m_lock);
    if (this == &other) {
        ClearAllErrorsAndWarnings();
        return;
    }
    other.ClearAllErrorsAndWarnings();
    other.m_errors.swap(m_errors);
    other.m_warnings.swap(m_warnings);
}
