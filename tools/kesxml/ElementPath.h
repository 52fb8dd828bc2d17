#pragma once

#include <kescorexml/DOMElement.h>
#include <kesplatform/TString.h>

#include <cstddef>
#include <unordered_map>
#include <unordered_set>

/// The paths of the elements of one tree, which must not change meanwhile: "/a/b[2]/c", with the
/// position among the siblings of the same name where there are any. Of a long path only the last
/// steps are shown, after "/...". Over all elements the cost is linear.
class ElementPaths
{
public:
    TString Get(const DOMElement& element);

private:
    /// From 1; 0 for an element that has no sibling of its name.
    std::size_t GetIndex(const DOMElement& element);
    void NumberChildren(const DOMElement& parent);

    std::unordered_set<const DOMElement*> m_numbered;
    std::unordered_map<const DOMElement*, std::size_t> m_indices;
};
