#pragma once

#include <kescorexml/Export.h>

/// Tells where a parser stands in its document.
class KESCOREXML_EXPORT SAXFileLocation
{
public:
    virtual ~SAXFileLocation();
    /// Line and column, both from 1. Leaves both as they are while nothing is known.
    virtual void GetCurrentLocation(int& line, int& column) = 0;
};
