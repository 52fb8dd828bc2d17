#pragma once

#include "writing/EscapeTable.h"
#include "writing/XMLFormatterAssertions.h"

#include <kesplatform/TString.h>

#include <algorithm>
#include <cstddef>
#include <string_view>

/// Escaping into a text of its own: a first pass counts, so that the second one writes into a
/// single allocation of the right length. Both go unit by unit. `isValid` tells of units from 0x80
/// on whether they may stand in XML text. OnePassEscaping is the other way.
namespace TwoPassEscaping {

/// By how much the escaped text is longer than the text.
template <typename IsValid>
std::size_t CountExtraUnits(std::u16string_view text, const EscapeTable& table, IsValid isValid)
{
    std::size_t extra = 0;
    for (const char16_t unit : text) {
        if (unit < table.size() && table[unit].length != 0)
            extra += table[unit].length - 1U;
        // U+0080 is not looked at, on purpose: where it counts as invalid, a text that holds it
        // ends in the assertion below as soon as anything is escaped.
        else if (unit >= 0x81 && !isValid(unit))
            extra += HexadecimalEscape(unit).length - 1U;
    }
    return extra;
}

/// Writes the escaped text as far as there is room, and returns the length it should have had.
template <typename IsValid>
std::size_t Write(std::u16string_view text, const EscapeTable& table, IsValid isValid, char16_t* to,
                  std::size_t room)
{
    std::size_t written = 0;
    const auto append = [&](std::u16string_view piece) {
        if (written < room)
            std::copy_n(piece.data(), std::min(piece.size(), room - written), to + written);
        written += piece.size();
    };
    for (const char16_t unit : text) {
        if (unit < table.size() && table[unit].length != 0)
            append(table[unit].View());
        else if (unit >= 0x80 && !isValid(unit))
            append(HexadecimalEscape(unit).View());
        else
            append({&unit, 1});
    }
    return written;
}

/// The escaped text; the text itself when nothing makes it longer. The first `clean` units are
/// known to need nothing. A logic assertion, and a log entry, when the two passes disagree.
template <typename IsValid>
TString Encode(const TString& text, std::size_t clean, const EscapeTable& table, IsValid isValid)
{
    const std::u16string_view rest = text.view().substr(clean);
    const std::size_t extra = CountExtraUnits(rest, table, isValid);
    if (extra == 0)
        return text;
    const std::size_t length = text.view().size() + extra;
    TString encoded;
    char16_t* units = encoded.resizeForOverwrite(static_cast<TString::size_type>(length));
    std::copy_n(text.utf16(), clean, units);
    const std::size_t written = clean + Write(rest, table, isValid, units + clean, length - clean);
    if (written != length)
        ThrowLengthMismatch(text, encoded, written);
    return encoded;
}

} // namespace TwoPassEscaping
