#pragma once

#include <kesplatform/Export.h>

#include <string_view>

/// The XML declaration that a document may begin with. Safe to use from several threads.
namespace XmlDeclaration {

/// What it begins with; white space follows.
inline constexpr std::string_view c_start = "<?xml";

/// The white space of XML.
inline constexpr std::string_view c_whitespace = " \t\r\n";

/// The encoding that it names, as it stands between the quotes: a part of `text`, which begins with
/// the document, in single bytes, without byte-order mark. Empty without declaration, when that
/// names none, and where it breaks off before.
KESPLATFORM_EXPORT std::string_view FindEncoding(std::string_view text) noexcept;

} // namespace XmlDeclaration
