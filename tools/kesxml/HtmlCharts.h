#pragma once

#include "Statistics.h"

#include <QString>

/// Charts of what is in a document, as tables with a bar beside each number. What there is too much
/// of is summed up in the last row. A chart of nothing is empty.
QString DrawCharts(const Distribution& distribution);
