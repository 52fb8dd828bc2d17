#include <kescorexml/DOMElementSearch.h>

#include "tree/DOMElementAccess.h"

#include <utility>
#include <vector>

namespace {

std::u16string_view AttributeView(const DOMElement& element, const TString& name)
{
    std::u16string_view value;
    DOMElementAccess::Attributes(element).View(name, value);
    return value;
}

bool Matches(const DOMElement& element, const TString& name, const TString& attrName,
             const TString& attrValue)
{
    if (!(element.GetName() == name))
        return false;
    if (attrName.IsEmpty())
        return true;
    const std::u16string_view value = AttributeView(element, attrName);
    return attrValue.IsEmpty() ? !value.empty() : value == attrValue.view();
}

} // namespace

namespace DOMElementSearch {

const DOMElement* FindChild(const DOMElement& element, const TString& name, const TString& attrName,
                            const TString& attrValue)
{
    for (const auto& child : DOMElementAccess::Children(element)) {
        if (child->GetName() == name && AttributeView(*child, attrName) == attrValue.view())
            return child.get();
    }
    return nullptr;
}

DOMElement* FindChild(DOMElement& element, const TString& name, const TString& attrName,
                      const TString& attrValue)
{
    return const_cast<DOMElement*>(FindChild(std::as_const(element), name, attrName, attrValue));
}

const DOMElement* FindElement(const DOMElement& element, const TString& name, int depth,
                              const TString& attrName, const TString& attrValue)
{
    if (Matches(element, name, attrName, attrValue))
        return &element;
    if (depth < 1 || !element.HasChildren())
        return nullptr;

    // The elements whose children are being looked at, each with the rest of them. An element at
    // level n is on the stack at index n, so the stack is never deeper than `depth`.
    struct Level
    {
        ElementList::const_iterator next;
        ElementList::const_iterator end;
    };
    std::vector<Level> open;
    const auto enter = [&open](const DOMElement& parent) {
        const ElementList& children = DOMElementAccess::Children(parent);
        open.push_back({children.begin(), children.end()});
    };
    enter(element);
    while (!open.empty()) {
        Level& level = open.back();
        if (level.next == level.end) {
            open.pop_back();
            continue;
        }
        const DOMElement& child = **level.next++;
        if (Matches(child, name, attrName, attrValue))
            return &child;
        if (child.HasChildren() && open.size() < static_cast<std::size_t>(depth))
            enter(child);
    }
    return nullptr;
}

DOMElement* FindElement(DOMElement& element, const TString& name, int depth,
                        const TString& attrName, const TString& attrValue)
{
    return const_cast<DOMElement*>(
        FindElement(std::as_const(element), name, depth, attrName, attrValue));
}

} // namespace DOMElementSearch
