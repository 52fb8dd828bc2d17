#include "Statistics.h"

#include <kescorexml/DOMElement.h>

namespace {

void CountElement(const DOMElement& element, std::size_t level, Distribution& distribution)
{
    ++distribution.elements[element.GetName()];
    if (element.HasAttributes()) {
        for (const auto& [name, value] : element.GetAttributes())
            ++distribution.attributes[name];
    }
    if (element.HasText())
        distribution.textUnits[element.GetName()] += element.GetText().view().size();
    if (distribution.levels.size() < level)
        distribution.levels.resize(level);
    ++distribution.levels[level - 1];
}

} // namespace

Statistics Count(const DOM& document, Distribution* distribution)
{
    struct Level
    {
        const DOMElement* element;
        std::size_t nextChild;
    };

    Statistics statistics;
    std::vector<Level> open{{document.GetRoot(), 0}};
    while (!open.empty()) {
        Level& level = open.back();
        const auto children = level.element->GetChildren();
        if (level.nextChild == children.size()) {
            open.pop_back();
            continue;
        }
        const DOMElement& child = children[level.nextChild++];
        ++statistics.elements;
        if (child.HasAttributes())
            statistics.attributes += child.GetAttributes().size();
        statistics.textUnits += child.GetText().view().size();
        // The document itself is no level.
        if (open.size() > statistics.depth)
            statistics.depth = open.size();
        if (distribution != nullptr)
            CountElement(child, open.size(), *distribution);
        open.push_back({&child, 0});
    }
    return statistics;
}
