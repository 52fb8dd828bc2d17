#include <kescorexml/detail/ElementList.h>

#include "slabs/SlabListMembers.h"

#include <kescorexml/DOMElement.h>

template class SlabList<std::unique_ptr<DOMElement>>;
