#pragma once

#include "bytes/ScanPosition.h"

#include <kesplatform/TString.h>

#include <optional>
#include <string>
#include <string_view>

/// The bytes of a document, decoded as files are: strictly, and all encodings by one decoder,
/// whatever the scanner would make of them. So the scanner reads nothing but UTF-8.
namespace DocumentDecoding {

/// A document that nobody can read, for the reason in the message.
struct Refusal : ScanPosition
{
    TString message;
};

/// How a document is to be read.
struct Result
{
    /// The document in UTF-8, where it is not in it as it stands, with a byte-order mark if it has
    /// one; up to its end or to what cannot be decoded, with bytes behind that which are never
    /// UTF-8.
    std::optional<std::string> utf8;
    /// Why that cannot; empty where all can.
    TString fault;
    std::optional<Refusal> refusal;
};

/// The encoding is that of the byte-order mark, or else that of the declaration, unless the bytes
/// themselves show that it cannot be. Of a declaration behind white space, which is one too late,
/// an unknown name is passed over. `bytes` begins with the document. A document in UTF-8 takes
/// no time.
Result Decode(std::string_view bytes);

} // namespace DocumentDecoding
