#pragma once

#include "bytes/TextPosition.h"

#include <kesplatform/TString.h>

#include <optional>
#include <string>
#include <string_view>

struct ScannerEncoding;

/// Faults in the bytes of a document that the scanner passes over in silence: it takes a null
/// character behind the root element for the end of the document, drops a character that the end of
/// the bytes has cut off, and replaces bytes that many encodings do not know.
namespace OverlookedFaults {

struct Fault : TextPosition
{
    TString message;
};

/// The fault of a document that the scanner has read to its end without a fatal error. `isUtf8` is
/// true when it was told to take the bytes for UTF-8; else the encoding is that of their byte-order
/// mark or their declaration. Where `mayHoldNull` is false, nobody looks for null characters.
/// Xerces must be initialised; throws xercesc::OutOfMemoryException.
std::optional<Fault> Find(std::string_view bytes, bool isUtf8, bool mayHoldNull);

/// The document as UTF-8, which it need not be; empty in EBCDIC. `isUtf8` is that of Find. Xerces
/// must be initialised; throws xercesc::OutOfMemoryException.
std::string ToUtf8(std::string_view bytes, bool isUtf8);

/// Where that stands which follows these bytes, the first of a document of that encoding. Single
/// bytes are UTF-8, or one character each where they are not ASCII. Xerces must be initialised;
/// throws xercesc::OutOfMemoryException.
TextPosition LocateEnd(std::string_view bytes, const ScannerEncoding& encoding);

} // namespace OverlookedFaults
