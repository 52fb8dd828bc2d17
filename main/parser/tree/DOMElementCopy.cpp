// Copying and comparing of subtrees.

#include <kescorexml/DOMElement.h>

#include "tree/DOMElementAccess.h"

#include <utility>
#include <vector>

namespace {

/// An element whose children are being copied, with the next of them.
struct CloneLevel
{
    const DOMElement* source;
    DOMElement* target;
    std::size_t next;
};

} // namespace

void DOMElementAccess::CloneDescendants(DOMElement& target, const DOMElement& source, DOM* dom,
                                        const DOMElement& diagnosticsTarget)
{
    std::vector<std::pair<const DOMElement*, const DOMElement*>> remembered;
    const auto noteDiagnostics = [&](const DOMElement& from, const DOMElement& to) {
        if (dom != nullptr && Identity(from) != nullptr) {
            MakeIdentity(to);
            remembered.emplace_back(&from, &to);
        }
    };
    try {
        noteDiagnostics(source, diagnosticsTarget);
        std::vector<CloneLevel> open{{&source, &target, 0}};
        target.m_children.ReserveExactly(source.m_children.size());
        while (!open.empty()) {
            CloneLevel& level = open.back();
            if (level.next == level.source->m_children.size()) {
                open.pop_back();
                continue;
            }
            const DOMElement& from = *level.source->m_children[level.next++];
            auto copy = std::make_unique<DOMElement>(from.m_name);
            DOMElement& to = *copy;
            to.m_text = from.m_text;
            to.m_attributes.Take(to.m_attributes.PrepareReplacement(from.m_attributes));
            to.m_dom = dom;
            to.m_parent = level.target;
            level.target->m_children.PushBack(std::move(copy));
            noteDiagnostics(from, to);
            if (from.HasChildren()) {
                to.m_children.ReserveExactly(from.m_children.size());
                open.push_back({&from, &to, 0});
            }
        }
        if (!remembered.empty() && source.m_dom != nullptr)
            dom->CopyForClones(*source.m_dom, remembered);
    } catch (...) {
        target.DestroyChildren();
        throw;
    }
}

DOMElement::DOMElement(const DOMElement& other)
    : m_dom(other.m_dom), m_name(other.m_name), m_text(other.m_text),
      m_attributes(other.m_attributes)
{
    try {
        if (m_dom != nullptr)
            DOMElementAccess::MakeIdentity(*this);
        DOMElementAccess::CloneDescendants(*this, other, m_dom, *this);
    } catch (...) {
        DOMElementAccess::ForgetElement(*this);
        throw;
    }
    if (m_dom != nullptr)
        DOMElementAccess::LinkLoose(*this);
}

DOMElement& DOMElement::operator=(const DOMElement& other)
{
    if (this == &other)
        return *this;
    // Everything that may fail comes first, on copies, for which `other` may well be an ancestor or
    // a descendant of this element.
    AttributeStorage attributes = m_attributes.PrepareReplacement(other.m_attributes);
    const TString name = other.m_name;
    const TString text = other.m_text;
    DOMElement copy{TString()};
    DOMElementAccess::CloneDescendants(copy, other, m_dom, *this);

    m_name = name;
    m_text = text;
    m_encoded = false;
    m_attributes.Take(std::move(attributes));
    DestroyChildren();
    m_children.Swap(copy.m_children);
    for (const auto& child : m_children)
        child->m_parent = this;
    return *this;
}

bool DOMElement::operator!=(const DOMElement& other) const
{
    const auto differsItself = [](const DOMElement& a, const DOMElement& b) {
        return !(a.m_name == b.m_name && a.m_text == b.m_text &&
                 a.m_attributes.Equals(b.m_attributes) &&
                 a.m_children.size() == b.m_children.size());
    };
    if (differsItself(*this, other))
        return true;

    /// Two elements that are alike so far, with the next of their children.
    struct Level
    {
        const DOMElement* a;
        const DOMElement* b;
        std::size_t next;
    };
    std::vector<Level> open;
    if (HasChildren())
        open.push_back({this, &other, 0});
    while (!open.empty()) {
        Level& level = open.back();
        if (level.next == level.a->m_children.size()) {
            open.pop_back();
            continue;
        }
        const DOMElement& a = *level.a->m_children[level.next];
        const DOMElement& b = *level.b->m_children[level.next];
        ++level.next;
        if (&a != &b && differsItself(a, b))
            return true;
        if (&a != &b && a.HasChildren())
            open.push_back({&a, &b, 0});
    }
    return false;
}
