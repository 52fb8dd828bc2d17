#pragma once

#include "ParseArena.h"

#include <kescorexml/detail/AttributeStorage.h>
#include <kesplatform/TString.h>

#include <string_view>

/// A second interface of the module's own event sinks, for parsing at the least cost: the same
/// events as SAXInterface, with attributes packed and text not yet copied. The handler uses it
/// instead of SAXInterface when a sink has it, which then is never done before the document ends.
class CompactElementSink
{
public:
    virtual ~CompactElementSink() = default;

    /// Where the attributes that come next are packed into.
    virtual ParseArena& GetArena() = 0;
    virtual void StartCompactElement(TString&& name, AttributeStorage&& attributes) = 0;
    /// `text` is valid during the call.
    virtual void CompactTextContent(std::u16string_view text) = 0;
    virtual void EndCompactElement() = 0;
};
