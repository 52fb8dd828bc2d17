#pragma once

#include "Diagnostic.h"

#include <kescorexml/DOM.h>

/// Names for each diagnostic of the file `file` the innermost element in which its position lies,
/// from the end of its start tag to the end of its end tag; an element that was never closed goes
/// on to the end. Of a diagnostic about an attribute, the path goes on to that. Needs the positions
/// of the elements. One walk over the document for all.
void NameElements(Diagnostics& diagnostics, const TString& file, const DOM& document);
