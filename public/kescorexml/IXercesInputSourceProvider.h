#pragma once

#include <kescorexml/ColonProcessingMode.h>
#include <kescorexml/Export.h>

class XercesInputSource;

/// The side of an input source that the parser reads from. The parser takes only sources that have
/// it, and only the library can make the buffer that it hands out.
/// Different objects may be used from different threads.
class KESCOREXML_EXPORT IXercesInputSourceProvider
{
public:
    /// The whole document as a buffer of the parser, which may outlive the source.
    virtual XercesInputSource GetXercesInputSource(ColonProcessingMode mode) = 0;
    virtual ~IXercesInputSourceProvider();
};
