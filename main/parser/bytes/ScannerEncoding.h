#pragma once

#include <kesplatform/EncodingTable.h>

#include <string_view>

/// How the scanner takes the bytes of a document that is not said to be UTF-8: by their byte-order
/// mark, by the pattern of their first bytes, and by their XML declaration.
struct ScannerEncoding
{
    /// What it is in. `bytes` begins with the document, and the result refers to them.
    static ScannerEncoding Find(std::string_view bytes);

    /// Whether that is UTF-8: the bytes begin neither with a byte-order mark nor with the pattern
    /// of another encoding, and their declaration, if any, names UTF-8, larger units, or nothing,
    /// or is one behind a byte-order mark that the scanner overlooks.
    static bool IsUtf8(std::string_view bytes);

    /// The encoding by which the bytes are to be decoded, where the scanner would overlook it; else
    /// empty. It looks for a declaration only where a blank stands behind "<?xml", while XML allows
    /// any white space there. Units of two or four bytes show by themselves; a declaration in
    /// single bytes that names such units is left to the scanner, as are names that are none.
    static std::string_view FindOverlooked(std::string_view bytes);

    /// How characters lie in the bytes; of single bytes in any encoding, that of UTF-8.
    const EncodingTable::Scheme* units = &EncodingTable::c_utf8;
    /// Whether bytes below 0x80 are ASCII; in EBCDIC they are not.
    bool isAscii = true;
    bool isUtf8 = true;
    /// The name of the encoding of single bytes that are no UTF-8; else empty.
    std::string_view declared;
};
