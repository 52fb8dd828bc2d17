#include "SortedAttributes.h"

#include <algorithm>

std::vector<const AttributeMap::value_type*> SortByName(const AttributeMap& attributes)
{
    std::vector<const AttributeMap::value_type*> sorted;
    sorted.reserve(attributes.size());
    for (const auto& attribute : attributes)
        sorted.push_back(&attribute);
    std::sort(sorted.begin(), sorted.end(),
              [](const auto* a, const auto* b) { return a->first < b->first; });
    return sorted;
}
