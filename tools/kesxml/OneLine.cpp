#include "OneLine.h"

#include <kescorexml/XMLFormatter.h>

#include <string>
#include <string_view>

namespace {

constexpr char16_t c_ellipsis = u'\u2026';

bool IsBlank(char16_t unit)
{
    return unit == u' ' || (unit >= u'\t' && unit <= u'\r') || unit == u'\u0085' ||
           unit == u'\u2028' || unit == u'\u2029';
}

/// Control characters, and those that embed or override a direction of writing.
bool IsUnsafe(char16_t unit)
{
    return unit < 0x20 || (unit >= 0x7F && unit <= 0x9F) || (unit >= 0x202A && unit <= 0x202E) ||
           (unit >= 0x2066 && unit <= 0x2069);
}

char16_t ToSafe(char16_t unit)
{
    return IsUnsafe(unit) ? u'\uFFFD' : unit;
}

bool IsFirstOfPair(char16_t unit)
{
    return unit >= 0xD800 && unit <= 0xDBFF;
}

/// Shortens `text`, if it is too long, to `limit` units, the last of them an ellipsis.
void Cut(std::u16string& text, std::size_t limit)
{
    if (text.size() <= limit)
        return;
    text.resize(limit - 1);
    while (!text.empty() && (text.back() == u' ' || IsFirstOfPair(text.back())))
        text.pop_back();
    text += c_ellipsis;
}

} // namespace

TString ToOneLine(const TString& text, std::size_t limit)
{
    std::u16string line;
    bool isBlankPending = false;
    for (const char16_t unit : text.view()) {
        if (IsBlank(unit)) {
            isBlankPending = !line.empty();
            continue;
        }
        if (isBlankPending)
            line += u' ';
        isBlankPending = false;
        line += ToSafe(unit);
        if (line.size() > limit)
            break;
    }
    Cut(line, limit);
    return TString(std::u16string_view(line));
}

TString ToAttributeText(const TString& value, std::size_t limit)
{
    // Cut first: an escape is not to be torn.
    std::u16string text(value.view().substr(0, limit == std::u16string::npos ? limit : limit + 1));
    Cut(text, limit);
    const TString escaped = XMLFormatter::EncodeAttributeString(TString(std::u16string_view(text)));
    text.assign(escaped.view());
    for (char16_t& unit : text)
        unit = ToSafe(unit);
    return TString(std::u16string_view(text));
}

TString ToSafeUnits(const TString& text)
{
    std::u16string safe(text.view());
    for (char16_t& unit : safe)
        unit = IsBlank(unit) ? u' ' : ToSafe(unit);
    return TString(std::u16string_view(safe));
}
