#pragma once

#include "bytes/ScanPosition.h"

#include <kesplatform/TString.h>

#include <cstddef>
#include <optional>
#include <string_view>

/// Bytes of documents in UTF-8 that are no characters. The scanner refuses them, but it decodes
/// ahead of what it reads: it reports where it was then, and drops a sequence for which the
/// document ends too early.
namespace Utf8Faults {

struct InvalidBytes : ScanPosition
{
    /// What to say in place of the scanner's words; empty where these are right.
    TString message;
    /// The scanner waits for more bytes than there are, and reports that the document ended.
    bool isCut = false;
};

/// The first of them: where the sequence begins that is none. Nothing when all bytes are UTF-8.
/// Takes time linear in the bytes.
std::optional<InvalidBytes> FindFirst(std::string_view bytes);

/// The offset of a sequence for which the scanner wants more bytes than there are, else npos. It
/// drops all of them, even markup, and refuses sequences that are wrong in other ways.
std::size_t FindCut(std::string_view bytes) noexcept;

/// Passes these bytes, which continue those before. Bytes of no character count as one unless they
/// would continue one.
void Pass(PositionCounter& counter, std::string_view bytes) noexcept;

/// Where that stands which follows these bytes, the first of a document in UTF-8.
ScanPosition LocateEnd(std::string_view bytes) noexcept;

} // namespace Utf8Faults
