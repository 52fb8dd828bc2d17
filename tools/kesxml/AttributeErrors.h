#pragma once

#include "Diagnostic.h"
#include "Document.h"

#include <kescorexml/InputSource.h>

/// Finds out which errors of a validation are about an attribute, and names it in these. The parser
/// tells no more than where the start tag ends. So other, smaller documents are validated, which
/// hold each start tag in question several times: without attributes, and with each of them alone,
/// in elements with the start tags that enclose it. What is said of a tag because of an attribute
/// is about that.
///
/// Where that is no answer, as for an identifier that another element has too, nothing is named.
///
/// REQUIRES: `diagnostics` are what `reader`, which validates, found in `source`. Takes the time of
/// a walk over the document, and of those others, in which the trials take no more than twice its
/// size, or 64 KiB.
void NameAttributes(Diagnostics& diagnostics, InputSource& source, DocumentReader& reader);
