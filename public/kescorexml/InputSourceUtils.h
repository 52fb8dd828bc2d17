#pragma once

#include <kescorexml/Export.h>
#include <kescorexml/InputSource.h>

#include <memory>

namespace InputSourceUtils {

/// A source for a file: read whole and decoded up to 1,073,741,823 bytes, streamed above (then
/// `skipLeadingWhitespace` is ignored). The identifier is the file name.
///
/// TIO::Exception when the file cannot be examined, opened, read or decoded.
/// Safe to use from several threads.
[[nodiscard]] KESCOREXML_EXPORT std::unique_ptr<InputSource>
InputSourceFromFileName(const TString& fileName, bool skipLeadingWhitespace);

} // namespace InputSourceUtils
