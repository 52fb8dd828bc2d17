#pragma once

#include <kesplatform/EncodingTable.h>
#include <kesplatform/Export.h>

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>

/// The XML declaration that a document may begin with. Safe to use from several threads.
namespace XmlDeclaration {

/// What it begins with; white space follows.
inline constexpr std::string_view c_start = "<?xml";

/// The white space of XML.
inline constexpr std::string_view c_whitespace = " \t\r\n";

/// The declaration that `bytes` begin with, read in the units of a scheme, up to its ">", as the
/// ASCII characters that it is made of. Empty when there is none that ends within 4,096 characters.
[[nodiscard]] inline std::string Read(std::string_view bytes, const EncodingTable::Scheme& scheme)
{
    constexpr std::size_t c_maximumLength = 4096;
    std::string text;
    if (!scheme.IsBeginOf(bytes, c_start))
        return text;
    while (text.size() < c_maximumLength) {
        const char character = scheme.ReadAscii(bytes, text.size() * scheme.unitSize);
        if (character == '\0')
            break;
        text += character;
        if (character == '>')
            return text;
    }
    return {};
}

/// Takes name="value", with white space before each of its parts, off the front of `text`. False
/// when there is no such thing; then nothing is said of the three.
inline bool TakePseudoAttribute(std::string_view& text, std::string_view& name,
                                std::string_view& value) noexcept
{
    const auto skipWhitespace = [&text] {
        text.remove_prefix(std::min(text.find_first_not_of(c_whitespace), text.size()));
    };
    skipWhitespace();
    name = text.substr(0, text.find_first_of("= \t\r\n?"));
    text.remove_prefix(name.size());
    skipWhitespace();
    if (name.empty() || !text.starts_with('='))
        return false;
    text.remove_prefix(1);
    skipWhitespace();
    if (!text.starts_with('\'') && !text.starts_with('"'))
        return false;
    const std::size_t end = text.find(text.front(), 1);
    if (end == std::string_view::npos)
        return false;
    value = text.substr(1, end - 1);
    text.remove_prefix(end + 1);
    return true;
}

/// The encoding that it names, as it stands between the quotes: a part of `text`, which begins with
/// the document, in single bytes, without byte-order mark. Empty without declaration, when that
/// names none, and where it breaks off before.
[[nodiscard]] KESPLATFORM_EXPORT std::string_view FindEncoding(std::string_view text) noexcept;

} // namespace XmlDeclaration
