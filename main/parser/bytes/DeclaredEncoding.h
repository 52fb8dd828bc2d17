#pragma once

#include <string_view>

/// The encoding that the XML declaration of a document in bytes names.
namespace DeclaredEncoding {

/// As it stands between the quotes; empty without declaration or without encoding in it. `bytes`
/// begins with the document, without mark, in an encoding that holds ASCII as single bytes.
std::string_view Find(std::string_view bytes);

/// The same where single bytes can be decoded by it: it is a name, and not that of larger units,
/// for which the scanner takes UTF-8.
std::string_view FindOfSingleBytes(std::string_view bytes);

/// The encoding by which the bytes of a document are to be decoded, where the scanner would
/// overlook it; else empty. It looks for a declaration only where a blank stands behind "<?xml",
/// while XML allows any white space there. Units of two or four bytes show by themselves; a
/// declaration in single bytes that names such units is left to the scanner, as are names that are
/// none.
std::string_view FindOverlooked(std::string_view bytes);

} // namespace DeclaredEncoding
