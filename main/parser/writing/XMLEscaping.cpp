#include "writing/XMLEscaping.h"

#include "writing/EightUnits.h"
#include "writing/TwoPassEscaping.h"

#include <QStringView>

#include <algorithm>

namespace {

// EightUnits knows by heart which units need an escape; nothing but these may.
constexpr bool IsKnownToEightUnits(const EscapeTable& table, bool keepsLineBreaks)
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

static_assert(IsKnownToEightUnits(c_escapeTable<MappingTableType::Attribute>, false));
static_assert(IsKnownToEightUnits(c_escapeTable<MappingTableType::LongContent>, true));

template <MappingTableType type>
std::size_t FindEscapeWith(std::u16string_view text) noexcept
{
    std::size_t i = 0;
    for (; i + EightUnits::c_count <= text.size(); i += EightUnits::c_count) {
        const std::size_t found = EightUnits::Load(text.data() + i).FindEscape<type>();
        if (found < EightUnits::c_count)
            return i + found;
    }
    for (; i < text.size(); ++i)
        if (NeedsEscape(c_escapeTable<type>, text[i]))
            return i;
    return std::u16string_view::npos;
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
    return TwoPassEscaping::Encode(text, clean, table, [](char16_t unit) {
        return CorePlatformUtils::IsValidCharacter(unit);
    });
}

std::size_t FindCDataClose(std::u16string_view text) noexcept
{
    // Qt's search for one unit looks at many at a time; the standard library's does not.
    const QStringView view(text.data(), static_cast<qsizetype>(text.size()));
    qsizetype at = 0;
    while ((at = view.indexOf(QChar(c_cdataClose.front()), at)) >= 0) {
        if (text.substr(static_cast<std::size_t>(at)).starts_with(c_cdataClose))
            return static_cast<std::size_t>(at);
        ++at;
    }
    return std::u16string_view::npos;
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
