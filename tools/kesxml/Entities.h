#pragma once

#include "Diagnostic.h"

#include <kescorexml/InputSource.h>

/// A warning for each entity that a document refers to in content or attribute values although it
/// is declared nowhere: a parser that does not read the external parts of the document type, where
/// it may be declared, leaves the references out. The position is that of the first reference.
///
/// REQUIRES: the document was parsed without errors, and the references to declared entities were
/// errors unless `mayBeDeclared`; then what the internal subset of the document type declares is
/// looked up. Leaves the source at its start.
Diagnostics FindSkippedEntities(InputSource& source, bool mayBeDeclared);

/// Says in each error about entities that are not allowed how to allow them.
void NameEntityOption(Diagnostics& diagnostics);
