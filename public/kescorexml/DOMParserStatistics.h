#pragma once

#include <kesplatform/TString.h>

#include <cstdint>

/// What a parser tells about a source that it has parsed. A plain value.
struct DOMParserStatistics
{
    /// In bytes.
    std::uint64_t sourceSize;
    /// The identifier of the source.
    TString sourceId;
};
