#include <kescorexml/detail/StandaloneContent.h>

#include "slabs/SlabListMembers.h"

#include <kescorexml/StandaloneDOMElement.h>

template class SlabList<StandaloneNode>;
