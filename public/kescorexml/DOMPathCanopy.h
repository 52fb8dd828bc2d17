#pragma once

#include <kescorexml/DOMElement.h>
#include <kescorexml/Export.h>
#include <kesplatform/TString.h>

#include <vector>

/// Queries over documents in which elements nest inside elements of the same name, as folders do
/// in folders. A canopy is an element together with the unbroken chains of same-named elements
/// below it. `canopyPath` (see DOMPath) selects the canopy elements below or at `start`.
///
/// At most 1024 levels below a canopy element are searched; what is deeper is left out in silence.
/// Where canopies nest, an element that is found from several of them is listed once for each.
/// Const operations may run side by side.
namespace DOMPathCanopy {

/// The elements called `name` that are reached from a canopy element through nothing but elements
/// called `name`; parents before their descendants. The name "*" gives nothing.
[[nodiscard]] KESCOREXML_EXPORT std::vector<DOMElement*>
WithinCanopy(DOMElement& start, const TString& canopyPath, const TString& name);
[[nodiscard]] KESCOREXML_EXPORT std::vector<DOMElement const*>
WithinCanopy(DOMElement const& start, const TString& canopyPath, const TString& name);

/// Evaluates `path` (see DOMPath) at every element directly below a canopy that its first step
/// names. The first step may be "*": every child but those that continue the canopy. An empty path
/// and one that begins with "/" give nothing.
[[nodiscard]] KESCOREXML_EXPORT std::vector<DOMElement*>
UnderneathCanopy(DOMElement& start, const TString& canopyPath, const TString& path);
[[nodiscard]] KESCOREXML_EXPORT std::vector<DOMElement const*>
UnderneathCanopy(DOMElement const& start, const TString& canopyPath, const TString& path);

} // namespace DOMPathCanopy
