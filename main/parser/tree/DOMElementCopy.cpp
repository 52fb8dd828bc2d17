// Copying and comparing of subtrees.

#include <kescorexml/DOMElement.h>

#include "slabs/AttributeBlock.h"
#include "slabs/ParseArena.h"
#include "slabs/SlabReferences.h"
#include "tree/ElementLife.h"
#include "tree/ParsedElements.h"
#include "tree/TreeWalk.h"

#include <kescorexml/DOM.h>

#include <cstddef>
#include <limits>
#include <memory>
#include <utility>
#include <vector>

class ElementCopy
{
public:
    /// Copies the descendants of `source` to `target`, which has none. The copies are attached to
    /// `dom`; unless that is null, they get the diagnostics of what they are copies of, and
    /// `diagnosticsTarget` those of `source`. Happens whole or not at all.
    static void CloneDescendants(DOMElement& target, const DOMElement& source, DOM* dom,
                                 const DOMElement& diagnosticsTarget);

private:
    /// Children that are being copied: the next one, and its place among those of `parent`, where
    /// there is nothing yet.
    struct OpenCopy
    {
        ElementList::const_iterator next;
        ElementList::const_iterator end;
        ElementList::iterator place;
        DOMElement* parent;
    };

    static std::size_t CountBytes(const DOMElement& source);
    static std::unique_ptr<DOMElement> CloneAlone(ParseArena& arena, SlabShares& shares,
                                                  const DOMElement& source, DOM* dom,
                                                  DOMElement& parent);
    /// As CloneDescendants, but leaves what it has made when it throws; `note` is told of each
    /// element and its copy.
    template <typename Note>
    static void CloneChildren(DOMElement& target, const DOMElement& source, DOM* dom, Note&& note);
};

/// What the descendants of an element take of an arena; very much when there are many.
std::size_t ElementCopy::CountBytes(const DOMElement& source)
{
    // What is left over of a slab is little beside these.
    constexpr std::size_t c_many = 1024;
    std::size_t elements = 0;
    std::size_t bytes = 0;
    TreeWalk<const DOMElement> walk;
    const auto enter = [&](const DOMElement& element) {
        const std::size_t list = (1 + element.m_children.size()) * sizeof(ElementList::value_type);
        elements += element.m_children.size();
        if (list <= ParseArena::c_maxObjectBytes)
            bytes += list;
        walk.Enter(element);
    };
    enter(source);
    while (const DOMElement* element = walk.Next()) {
        if (elements > c_many)
            return std::numeric_limits<std::size_t>::max();
        if (element->HasChildren())
            enter(*element);
    }
    return bytes + elements * ParseArena::RoundUp(sizeof(DOMElement));
}

/// What is copied shares the texts and the packed attributes of the original.
std::unique_ptr<DOMElement> ElementCopy::CloneAlone(ParseArena& arena, SlabShares& shares,
                                                    const DOMElement& source, DOM* dom,
                                                    DOMElement& parent)
{
    AttributeStorage attributes;
    if (const AttributeBlock* block = source.m_attributes.GetBlock()) {
        shares.Take(block->GetSlab());
        attributes.Adopt(const_cast<AttributeBlock*>(block));
    } else {
        attributes.Take(attributes.PrepareReplacement(source.m_attributes));
    }
    // Name and text of a parsed element mostly lie where the element does.
    ParseSlab* const slab =
        source.m_slabOffset == 0 ? nullptr : &ParseSlab::At(&source, source.m_slabOffset);
    std::unique_ptr<DOMElement> copy = ParsedElements::New(arena, shares.Share(source.m_name, slab),
                                                           std::move(attributes), dom, parent);
    copy->m_text = shares.Share(source.m_text, slab);
    return copy;
}

template <typename Note>
void ElementCopy::CloneChildren(DOMElement& target, const DOMElement& source, DOM* dom, Note&& note)
{
    ParseArena arena(CountBytes(source));
    SlabShares shares;
    std::vector<OpenCopy> open;
    std::vector<std::unique_ptr<DOMElement>> places;
    const auto enter = [&](const DOMElement& from, DOMElement& to) {
        const std::size_t count = from.m_children.size();
        if (places.size() < count)
            places.resize(count);
        to.m_children.FillIn(arena, places.data(), count);
        open.push_back(
            {from.m_children.begin(), from.m_children.end(), to.m_children.begin(), &to});
    };
    // No TreeWalk, of which there would have to be two: the copies go in step.
    enter(source, target);
    while (!open.empty()) {
        OpenCopy& copying = open.back();
        if (copying.next == copying.end) {
            open.pop_back();
            continue;
        }
        const DOMElement& from = **copying.next++;
        std::unique_ptr<DOMElement>& copy = *copying.place++;
        copy = CloneAlone(arena, shares, from, dom, *copying.parent);
        note(from, *copy);
        if (from.HasChildren())
            enter(from, *copy);
    }
}

void ElementCopy::CloneDescendants(DOMElement& target, const DOMElement& source, DOM* dom,
                                   const DOMElement& diagnosticsTarget)
{
    std::vector<std::pair<const DOMElement*, const DOMElement*>> remembered;
    const auto noteDiagnostics = [&](const DOMElement& from, const DOMElement& to) {
        if (dom != nullptr && ElementLife::Identity(from) != nullptr) {
            ElementLife::MakeIdentity(to);
            remembered.emplace_back(&from, &to);
        }
    };
    try {
        noteDiagnostics(source, diagnosticsTarget);
        if (source.HasChildren())
            CloneChildren(target, source, dom, noteDiagnostics);
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
            ElementLife::MakeIdentity(*this);
        ElementCopy::CloneDescendants(*this, other, m_dom, *this);
    } catch (...) {
        ElementLife::Forget(*this);
        throw;
    }
    if (m_dom != nullptr)
        ElementLife::LinkLoose(*this);
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
    ElementCopy::CloneDescendants(copy, other, m_dom, *this);

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

    // No TreeWalk, of which there would have to be two: these go in step and need one stack.
    /// Two elements that are alike so far, with the next of their children.
    struct OpenPair
    {
        const DOMElement* a;
        const DOMElement* b;
        std::size_t next;
    };
    std::vector<OpenPair> open;
    if (HasChildren())
        open.push_back({this, &other, 0});
    while (!open.empty()) {
        OpenPair& pair = open.back();
        if (pair.next == pair.a->m_children.size()) {
            open.pop_back();
            continue;
        }
        const DOMElement& a = *pair.a->m_children[pair.next];
        const DOMElement& b = *pair.b->m_children[pair.next];
        ++pair.next;
        if (&a != &b && differsItself(a, b))
            return true;
        if (&a != &b && a.HasChildren())
            open.push_back({&a, &b, 0});
    }
    return false;
}
