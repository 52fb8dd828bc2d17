#pragma once

#include <kesplatform/TString.h>

#include <memory>
#include <string>

/// Gets attributes whose names begin with a colon, which XML allows and its namespaces do not,
/// through a parser that knows namespaces: the names are put under a prefix of their own before the
/// parse and restored after it. Safe to use from several threads.
namespace XercesColonSanitizer {

/// Puts the reserved prefix in place of the colon that begins an attribute's name in a start tag,
/// and declares that prefix in the root start tag. Nothing before the root element's name changes,
/// so an offset into leading white space stays valid. A text without such names is returned as it
/// is: the same pointer, nothing copied. Linear for every text, well formed or not. Metrics are the
/// caller's business.
std::shared_ptr<const std::string>
EncodeColonAttributeNames(const std::shared_ptr<const std::string>& input);

/// The name as it stood in the document; empty for the declaration that the encoding added.
TString RestoreEncodedAttributeNames(TString name);

} // namespace XercesColonSanitizer
