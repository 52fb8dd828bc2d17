#pragma once

#include "Diagnostic.h"

#include <kescorexml/SkippedEntity.h>

#include <vector>

/// A warning for each of the entities that a document refers to although it is declared nowhere,
/// where its first reference stands: parsers leave the references out.
Diagnostics DescribeSkippedEntities(const std::vector<SkippedEntity>& entities,
                                    const TString& file);

/// Says in each error about entities that are not allowed how to allow them.
void NameEntityOption(Diagnostics& diagnostics);
