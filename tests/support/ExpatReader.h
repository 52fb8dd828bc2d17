#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// What Expat makes of a document, as a second opinion.
struct ExpatReading
{
    /// The events in the form of RecordingSink.
    std::vector<std::string> events;
    /// Empty when the document is well formed.
    std::string error;
    /// Where in the bytes the error is.
    std::size_t errorPosition = 0;
    /// As the XML declaration has it; nothing without one.
    std::optional<std::string> version;
    /// As the XML declaration has it; empty without one.
    std::string encoding;
    bool declaresEntities = false;
    /// Whether there is a reference to a parameter entity, which Expat passes over. It reads no
    /// declarations behind it.
    bool refersToParameterEntities = false;
    bool hasExternalSubset = false;
};

/// Reads without namespaces and without anything but the bytes.
ExpatReading ReadWithExpat(std::string_view bytes);
