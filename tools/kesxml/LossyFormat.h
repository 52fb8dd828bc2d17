#pragma once

#include "Diagnostic.h"

#include <kescorexml/DOM.h>
#include <kescorexml/InputSource.h>

#include <string>

/// Warnings of what a document holds and its tree does not, or elsewhere.
Diagnostics FindLosses(const DOM& document, InputSource& source);

/// What the tree holds, as the library writes it.
std::string FormatLossily(const DOM& document, bool escapeAll, bool header);
