#pragma once

#include <kescorexml/detail/SlabList.h>

#include <memory>

class DOMElement;

/// The owned children of an element.
using ElementList = SlabList<std::unique_ptr<DOMElement>>;
