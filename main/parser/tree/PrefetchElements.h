#pragma once

#include "base/Prefetch.h"

#include <kescorexml/DOMElement.h>

#include <algorithm>
#include <cstddef>

/// What a walk over a tree mostly does is wait for memory: elements lie apart, and each says only
/// when it has come where to go on. But a list of children names all of them, so the next ones can
/// be asked for before they are needed. These functions change nothing but time.

inline constexpr std::size_t c_prefetchDistance = 8;

inline void PrefetchElement(const DOMElement& element) noexcept
{
    // Takes an address, reads nothing. Name and list of children are nearly always in one line.
    PrefetchForReading(&element.GetName());
}

/// For a walk that begins with the first child.
inline void PrefetchFirst(const ElementList& children) noexcept
{
    const std::size_t count = std::min(children.size(), c_prefetchDistance);
    for (std::size_t i = 1; i < count; ++i)
        PrefetchElement(*children[i]);
}

/// For a walk that has come to the child at `index`.
inline void PrefetchNext(const ElementList& children, std::size_t index) noexcept
{
    if (index + c_prefetchDistance < children.size())
        PrefetchElement(*children[index + c_prefetchDistance]);
}

/// For one that destroys children from the last one on. A copy that failed leaves places without a
/// child.
inline void PrefetchLastForDestruction(const ElementList& children) noexcept
{
    constexpr std::size_t c_distance = 4;
    if (children.size() <= c_distance)
        return;
    if (const DOMElement* soon = children[children.size() - 1 - c_distance].get()) {
        const auto* bytes = reinterpret_cast<const char*>(soon);
        PrefetchForWriting(bytes);
        PrefetchForWriting(bytes + sizeof(DOMElement) - 1);
    }
}

/// What a parse made next after an element are its descendants, in the memory behind it.
inline void PrefetchDescendantsForDestruction(const DOMElement& element) noexcept
{
    PrefetchForWriting(&element + 8);
}
