#pragma once

#include <kescorexml/Export.h>

/// Tells where a parser stands in its document: during an event behind the tag that brought it (a
/// text is told when the next tag has been read), and after a parse, however it ended, where the
/// last event was. An object is for one thread at a time, that on which the parse runs. Different
/// objects may be used from different threads.
class KESCOREXML_EXPORT SAXFileLocation
{
public:
    virtual ~SAXFileLocation();
    /// Line and column, both from 1. Leaves both as they are while nothing is known: until a parser
    /// that is new, or bound to another source, has delivered its first event.
    virtual void GetCurrentLocation(int& line, int& column) = 0;
};
