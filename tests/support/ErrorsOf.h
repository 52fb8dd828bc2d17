#pragma once

#include <kescorexml/DOM.h>
#include <kescorexml/DOMElement.h>

#include <list>
#include <string>
#include <vector>

/// The messages of all errors of a document, in their order.
inline std::vector<std::string> ErrorsOf(const DOM& dom)
{
    std::vector<std::string> result;
    for (const TString& error : dom.GetErrors())
        result.push_back(error.toStdString());
    return result;
}

/// Those of an element and its descendants.
inline std::vector<std::string> ErrorsOf(const DOMElement& element)
{
    std::list<TString> errors;
    element.GetErrors(errors);
    std::vector<std::string> result;
    for (const TString& error : errors)
        result.push_back(error.toStdString());
    return result;
}
