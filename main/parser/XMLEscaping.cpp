#include "XMLEscaping.h"

#include "UnitBlock.h"

#include <kesplatform/TFormatString.h>
#include <kesplatform/TLog.h>

#include <algorithm>

namespace {

// UnitBlock knows by heart which units need an escape; nothing but these may.
constexpr bool IsKnownToUnitBlock(const EscapeTable& table, bool keepsLineBreaks)
{
    for (unsigned unit = 0; unit <= 0xFFFF; ++unit) {
        const bool isLineBreak = unit == u'\t' || unit == u'\n';
        const bool expected = (unit < 0x20 && !(isLineBreak && keepsLineBreaks)) || unit == u'"' ||
                              unit == u'&' || unit == u'\'' || unit == u'<' || unit == u'>' ||
                              unit >= 0xFFFE;
        if (NeedsEscape(table, static_cast<char16_t>(unit)) != expected)
            return false;
    }
    return true;
}

static_assert(IsKnownToUnitBlock(c_escapeTable<MappingTableType::Attribute>, false));
static_assert(IsKnownToUnitBlock(c_escapeTable<MappingTableType::LongContent>, true));

template <MappingTableType type>
std::size_t FindEscapeWith(std::u16string_view text) noexcept
{
    std::size_t i = 0;
    for (; i + UnitBlock::size <= text.size(); i += UnitBlock::size) {
        const std::size_t found = UnitBlock::Load(text.data() + i).FindEscape<type>();
        if (found < UnitBlock::size)
            return i + found;
    }
    for (; i < text.size(); ++i)
        if (NeedsEscape(c_escapeTable<type>, text[i]))
            return i;
    return std::u16string_view::npos;
}

std::size_t CountExtraUnits(std::u16string_view text, const EscapeTable& table) noexcept
{
    std::size_t extra = 0;
    for (const char16_t unit : text) {
        if (unit < table.size() && table[unit].length != 0)
            extra += table[unit].length - 1U;
        else if (unit >= 0x81 && !CorePlatformUtils::IsValidCharacter(unit))
            extra += HexadecimalEscape(unit).length - 1U;
    }
    return extra;
}

/// Writes the escaped text as far as there is room, and returns the length it should have had.
std::size_t WriteEscaped(std::u16string_view text, const EscapeTable& table, char16_t* to,
                         std::size_t room) noexcept
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
        else if (unit >= 0x80 && !CorePlatformUtils::IsValidCharacter(unit))
            append(HexadecimalEscape(unit).View());
        else
            append({&unit, 1});
    }
    return written;
}

[[noreturn]] void ThrowLengthMismatch(const TString& text, const TString& encoded,
                                      std::size_t written)
{
    LogMessage(TLog::Info,
               TFormatString(u"Encoded string length doesn't match the total encoded character "
                             u"count. Input string is \"%1\". Encoded string is \"%2\". Encoded "
                             u"string length is %3. Character count after encoding is %4.")
                   .Format(text, encoded, encoded.length(), written));
    ThrowAssertion(u"XMLFormatter", __LINE__,
                   u"Encoded string length doesn't match the total encoded character count.",
                   KesErrorsError::LogicAssert_0xF6B4AF4C());
}

} // namespace

namespace XMLEscaping {

std::size_t FindEscape(std::u16string_view text, MappingTableType type) noexcept
{
    return type == MappingTableType::Attribute
               ? FindEscapeWith<MappingTableType::Attribute>(text)
               : FindEscapeWith<MappingTableType::LongContent>(text);
}

TString EncodeStringWithTable(const TString& text, MappingTableType type)
{
    const std::size_t clean = FindEscape(text.view(), type);
    if (clean == std::u16string_view::npos)
        return text;
    const EscapeTable& table = type == MappingTableType::Attribute
                                   ? c_escapeTable<MappingTableType::Attribute>
                                   : c_escapeTable<MappingTableType::LongContent>;
    const std::u16string_view rest = text.view().substr(clean);
    const std::size_t length = text.view().size() + CountExtraUnits(rest, table);
    TString encoded;
    char16_t* units = encoded.resizeForOverwrite(static_cast<TString::size_type>(length));
    std::copy_n(text.utf16(), clean, units);
    const std::size_t written = clean + WriteEscaped(rest, table, units + clean, length - clean);
    if (written != length)
        ThrowLengthMismatch(text, encoded, written);
    return encoded;
}

TString EncodeCData(std::u16string_view text)
{
    std::size_t length = 0;
    VisitCData(text, [&](std::u16string_view part) { length += part.size(); });
    TString encoded;
    char16_t* to = encoded.resizeForOverwrite(static_cast<TString::size_type>(length));
    VisitCData(text,
               [&](std::u16string_view part) { to = std::copy(part.begin(), part.end(), to); });
    return encoded;
}

} // namespace XMLEscaping
