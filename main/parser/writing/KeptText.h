#pragma once

#include <kesplatform/TString.h>

class XMLFormatter;

/// Where a formatter keeps its text.
class KeptText
{
public:
    /// The text of an XMLStringFormatter all of whose operations are its own, so that nobody can
    /// tell by which of them the text came about. Null for every other formatter, whose operations
    /// somebody may have replaced.
    static TString* Of(XMLFormatter& formatter) noexcept;
};
