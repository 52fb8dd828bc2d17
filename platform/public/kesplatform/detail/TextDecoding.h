#pragma once

#include <kesplatform/Export.h>
#include <kesplatform/TString.h>

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

/// Decodes the bytes of texts, strictly: what means no character is told, never replaced or
/// dropped. All converters come with ICU's library; none is looked for on the disk unless the
/// environment says where (ICU_DATA). What cannot be decoded is returned, nothing of it is thrown.
/// Safe to use from several threads.
namespace TextDecoding {

/// How the bytes of a text are to be read: past `byteOrderMarkLength` bytes, in the encoding
/// `name`.
struct Encoding
{
    /// As the text names it, or the one of its byte-order mark; empty for UTF-8.
    std::string name;
    std::size_t byteOrderMarkLength = 0;
};

/// Why nobody can tell the encoding of a text.
struct Failure
{
    /// A phrase for people.
    TString reason;
    /// The name that nobody knows; empty when that is not the reason.
    std::string unknownName;
};

/// A byte that does not decode.
struct Undecodable
{
    TString encoding;
    std::size_t offset = 0;
    /// The text ends before the character does that begins there.
    bool isCut = false;
};

/// The encoding by byte-order mark, else by the units of two or four bytes in which the text begins
/// with "<", else the one that an XML declaration names, else UTF-8. White space before the
/// declaration is passed over. A declared encoding in which the declaration could not have been
/// read the way it was (UTF-16 in a text of single bytes, or the other way round) is overruled by
/// the bytes. A text in EBCDIC that does not say in which is a Failure, and so is a declared name
/// that nobody knows; that includes encodings with states in which something may get lost
/// unnoticed, as in SCSU. With a Failure `encoding` means nothing.
[[nodiscard]] KESPLATFORM_EXPORT std::optional<Failure> FindEncoding(std::string_view bytes,
                                                                     Encoding& encoding);

/// Gives the text without its byte-order mark, or else the first byte that does not decode.
[[nodiscard]] std::optional<Undecodable> ToText(std::string_view bytes, const Encoding& encoding,
                                                TString& text);
/// The same as UTF-8. What is UTF-8 already is checked and moved.
[[nodiscard]] std::optional<Undecodable> ToUtf8(std::string&& bytes, const Encoding& encoding,
                                                std::string& utf8);

/// Whether the bytes are UTF-8 as they stand, byte-order mark included: the encoding is UTF-8, or
/// it agrees with US-ASCII, of which all bytes are. UTF-8 itself is not checked. REQUIRES: the
/// encoding is what FindEncoding gives for the bytes.
KESPLATFORM_EXPORT bool IsUtf8AsItIs(std::string_view bytes, const Encoding& encoding);

/// Appends the text without its byte-order mark, in UTF-8, up to the first byte that does not
/// decode; nothing when all do. REQUIRES: the encoding is what FindEncoding gives for the bytes,
/// and they are not UTF-8 as they stand.
[[nodiscard]] KESPLATFORM_EXPORT std::optional<Undecodable>
AppendUtf8(std::string_view bytes, const Encoding& encoding, std::string& utf8);

} // namespace TextDecoding
