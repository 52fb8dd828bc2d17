#pragma once

#include <functional>
#include <optional>
#include <string>

/// What Xerces reports of a document, one event a line: elements with their attributes in order of
/// name, text, comments, processing instructions and CDATA sections. Nothing when it is not well
/// formed. Namespaces are off, and nothing outside the document is read. `restore` is applied to
/// the name of each attribute; those that it makes empty are left out.
std::optional<std::u16string>
ReadEvents(const std::string& xml,
           const std::function<std::u16string(const std::u16string&)>& restore);
