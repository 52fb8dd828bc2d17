#pragma once

#include <kescorexml/detail/SlabList.h>
#include <kesplatform/TString.h>

#include <memory>

class StandaloneDOMElement;

/// A text, or an element and no text.
struct StandaloneNode
{
    TString text;
    std::unique_ptr<StandaloneDOMElement> element;

    bool IsText() const noexcept { return element == nullptr; }
};

/// What a StandaloneDOMElement holds: texts and child elements in order.
using StandaloneContent = SlabList<StandaloneNode>;
