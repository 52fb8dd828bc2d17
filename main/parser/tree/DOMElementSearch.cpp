#include <kescorexml/DOMElementSearch.h>

#include "tree/DOMElementAccess.h"
#include "tree/TreeWalk.h"

#include <utility>

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
    if (depth < 1)
        return nullptr;
    TreeWalk<const DOMElement> walk;
    walk.Enter(element);
    while (const DOMElement* below = walk.Next()) {
        if (Matches(*below, name, attrName, attrValue))
            return below;
        if (walk.Depth() < static_cast<std::size_t>(depth))
            walk.Enter(*below);
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
