#pragma once

#include <kesplatform/TString.h>

#include <cstddef>
#include <string>
#include <string_view>

/// Decodes the bytes of text files. Safe to use from several threads.
namespace TextDecoding {

/// How the bytes of a text are to be read: past `byteOrderMarkLength` bytes, in the encoding
/// `name`.
struct Encoding
{
    /// A name that iconv knows; empty for UTF-8.
    std::string name;
    std::size_t byteOrderMarkLength = 0;
};

/// A text that cannot be decoded; the reason is a phrase for people.
struct Failure
{
    TString reason;
};

/// A byte that does not decode.
struct Undecodable
{
    TString encoding;
    std::size_t offset;
};

/// The encoding by byte-order mark, else the one that an XML declaration names, else UTF-8. White
/// space before the declaration is passed over. A declared encoding in which the declaration could
/// not have been read the way it was (UTF-16 in a text of single bytes, or the other way round) is
/// overruled by the bytes. A declared name that nobody knows is a Failure.
Encoding FindEncoding(std::string_view bytes);

/// The text without its byte-order mark. Throws Undecodable for the first byte that is.
TString ToText(std::string_view bytes, const Encoding& encoding);
/// The same as UTF-8. What is UTF-8 already is checked and moved.
std::string ToUtf8(std::string&& bytes, const Encoding& encoding);

} // namespace TextDecoding
