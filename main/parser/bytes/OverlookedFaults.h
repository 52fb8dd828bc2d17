#pragma once

#include "bytes/ScanPosition.h"

#include <optional>
#include <string_view>

/// Faults in the bytes of a document that the scanner passes over in silence: it takes a null
/// character behind the root element for the end of the document, and drops a character that the
/// end of the bytes has cut off.
namespace OverlookedFaults {

struct Fault : ScanPosition
{
    const char16_t* message;
};

/// The fault of a document in UTF-8 that the scanner has read to its end without a fatal error.
/// Where `mayHoldNull` is false, nobody looks for null characters. Takes time linear in the bytes.
std::optional<Fault> Find(std::string_view bytes, bool mayHoldNull);

} // namespace OverlookedFaults
