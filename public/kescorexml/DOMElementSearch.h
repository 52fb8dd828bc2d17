#pragma once

#include <kescorexml/Export.h>
#include <kesplatform/TString.h>

class DOMElement;

/// Looks for elements by name and, optionally, by one attribute. No recursion.
/// Const operations may run side by side.
namespace DOMElementSearch {

/// The first child in document order with that name whose GetAttribute(attrName) equals
/// `attrValue`, or null. So an empty value also matches children without the attribute.
[[nodiscard]] KESCOREXML_EXPORT DOMElement* FindChild(DOMElement& element, const TString& name,
                                                      const TString& attrName,
                                                      const TString& attrValue);
[[nodiscard]] KESCOREXML_EXPORT const DOMElement* FindChild(const DOMElement& element,
                                                            const TString& name,
                                                            const TString& attrName,
                                                            const TString& attrValue);

/// The first element in document order with that name, `element` itself first and at most `depth`
/// levels below it, or null. An empty `attrName` asks for nothing more; with it the attribute must
/// equal `attrValue` or, when that is empty, have any value that is not empty.
[[nodiscard]] KESCOREXML_EXPORT DOMElement* FindElement(DOMElement& element, const TString& name,
                                                        int depth, const TString& attrName,
                                                        const TString& attrValue);
[[nodiscard]] KESCOREXML_EXPORT const DOMElement* FindElement(const DOMElement& element,
                                                              const TString& name, int depth,
                                                              const TString& attrName,
                                                              const TString& attrValue);

} // namespace DOMElementSearch
