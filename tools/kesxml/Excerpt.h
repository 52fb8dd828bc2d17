#pragma once

#include "Diagnostic.h"

#include <kescorexml/InputSource.h>

/// Gives each diagnostic of this source that has a position the line that it speaks of, and that of
/// bytes which are not UTF-8 the first of them. Reads the source from its start to the last of
/// these lines.
void AddExcerpts(Diagnostics& diagnostics, InputSource& source);
