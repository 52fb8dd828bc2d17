#pragma once

#include "tree/ElementLife.h"
#include "tree/TreeAssertions.h"

#include <kescorexml/DOMElement.h>

/// Looks at `parent` and all that it names as its parents before elements that `moves` accepts are
/// put below it. Meeting one of these means that it would get into its own subtree. Meeting one
/// beyond an element that was removed from there is fine, but that element must not go on to name
/// its former parent, or the way upwards would lead in a circle: it is returned. Else null.
template <typename Moves>
DOMElement* FindStaleLinkTo(DOMElement& parent, Moves&& moves)
{
    DOMElement* removed = nullptr;
    for (DOMElement* element = &parent; element != nullptr; element = element->GetParent()) {
        if (moves(*element)) {
            if (removed == nullptr)
                TreeAssertions::ThrowOwnSubtree();
            return removed;
        }
        if (ElementLife::IsRemoved(*element))
            removed = element;
    }
    return nullptr;
}
