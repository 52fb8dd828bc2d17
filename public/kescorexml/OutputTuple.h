#pragma once

#include <kescorexml/Export.h>

class Tuple;
class XMLFormatter;

/// Writes a row as one "tuple" element with a "value" element for each value, in order and without
/// attributes. The texts of the values are canonical and escaped as the formatter's mode says.
/// Different objects may be used from different threads.
KESCOREXML_EXPORT void OutputTuple(XMLFormatter& formatter, const Tuple& tuple);
