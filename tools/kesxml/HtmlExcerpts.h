#pragma once

#include "Diagnostic.h"

#include <kescorexml/InputSource.h>

#include <QString>

/// The diagnostics of a document beside the lines that they speak of, with some lines around these
/// and a mark at the column. Long lines are cut around the columns. Diagnostics without a position
/// in this source come first, without lines. At most `limit` diagnostics are shown, errors rather
/// than warnings; of the others the number is told.
QString DrawExcerpts(const Diagnostics& diagnostics, InputSource& source, std::size_t limit);
