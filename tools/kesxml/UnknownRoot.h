#pragma once

#include "Diagnostic.h"
#include "Document.h"

#include <kescorexml/InputSource.h>

/// A warning when no schema knows the document element: with a document type, a document is then
/// validated against that instead, and may be found fine whatever the schemas say.
///
/// REQUIRES: `reader`, which validates, found no errors in `source`. Looks no further than the
/// first megabyte. Leaves the source at its start.
Diagnostics FindUnknownRoot(InputSource& source, DocumentReader& reader);
