#include "ElementPath.h"

#include <vector>

namespace {

constexpr std::size_t c_maxSteps = 100;

} // namespace

TString ElementPaths::Get(const DOMElement& element)
{
    // The document itself, the element without a parent, is no step.
    std::vector<const DOMElement*> steps;
    const DOMElement* step = &element;
    for (; step->GetParent() != nullptr && steps.size() < c_maxSteps; step = step->GetParent())
        steps.push_back(step);
    TString path = step->GetParent() != nullptr ? TString(u"/...") : TString();
    for (auto i = steps.rbegin(); i != steps.rend(); ++i) {
        path += u'/';
        path += (*i)->GetName();
        if (const std::size_t index = GetIndex(**i); index != 0)
            path += u"[" + TString::number(static_cast<unsigned long>(index)) + u"]";
    }
    return path;
}

std::size_t ElementPaths::GetIndex(const DOMElement& element)
{
    const DOMElement& parent = *element.GetParent();
    if (parent.GetChildren().size() < 2)
        return 0;
    if (m_numbered.insert(&parent).second)
        NumberChildren(parent);
    const auto found = m_indices.find(&element);
    return found == m_indices.end() ? 0 : found->second;
}

void ElementPaths::NumberChildren(const DOMElement& parent)
{
    struct Namesakes
    {
        const DOMElement* first;
        std::size_t count;
    };

    std::unordered_map<TString, Namesakes> names;
    for (const auto& child : parent.GetChildren()) {
        Namesakes& namesakes = names.try_emplace(child->GetName(), child.get(), 0).first->second;
        ++namesakes.count;
        if (namesakes.count == 2)
            m_indices.emplace(namesakes.first, 1);
        if (namesakes.count >= 2)
            m_indices.emplace(child.get(), namesakes.count);
    }
}
