#include "OneLine.h"

#include <kescorexml/XMLFormatter.h>

#include <QString>

#include <string>
#include <string_view>

namespace {

constexpr char16_t c_ellipsis = u'\u2026';

bool IsBlank(char16_t unit)
{
    return unit == u' ' || (unit >= u'\t' && unit <= u'\r') || unit == u'\u0085' ||
           unit == u'\u2028' || unit == u'\u2029';
}

char16_t ToSafe(char16_t unit)
{
    return IsUnsafeUnit(unit) ? u'\uFFFD' : unit;
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

bool IsHalfOfAPair(std::u16string_view text, std::size_t i)
{
    const auto isSecond = [](char16_t unit) { return unit >= 0xDC00 && unit <= 0xDFFF; };
    if (IsFirstOfPair(text[i]))
        return i + 1 < text.size() && isSecond(text[i + 1]);
    return i > 0 && IsFirstOfPair(text[i - 1]);
}

/// "\x1B" for bytes and what is below U+0100, else "\u202E".
QString Escape(char16_t unit)
{
    if (unit == u'\n' || unit == u'\r' || unit == u'\t')
        return unit == u'\n' ? "\\n" : unit == u'\r' ? "\\r" : "\\t";
    const bool isByte = unit < 0x100 || (unit >= 0xDC80 && unit <= 0xDCFF);
    const QString digits = QString::number(isByte ? unit & 0xFF : unit, 16).toUpper();
    return isByte ? "\\x" + digits.rightJustified(2, '0') : "\\u" + digits.rightJustified(4, '0');
}

} // namespace

bool IsUnsafeUnit(char16_t unit)
{
    return unit < 0x20 || (unit >= 0x7F && unit <= 0x9F) || (unit >= 0x202A && unit <= 0x202E) ||
           (unit >= 0x2066 && unit <= 0x2069);
}

TString ToEscaped(const TString& text)
{
    const std::u16string_view units = text.view();
    QString escaped;
    for (std::size_t i = 0; i < units.size(); ++i) {
        const char16_t unit = units[i];
        const bool isSurrogate = unit >= 0xD800 && unit <= 0xDFFF;
        const bool isLineEnd = unit == u'\u2028' || unit == u'\u2029';
        if (IsUnsafeUnit(unit) || isLineEnd || (isSurrogate && !IsHalfOfAPair(units, i)))
            escaped += Escape(unit);
        else
            escaped += QChar(unit);
    }
    return escaped;
}

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

TString ToSafeLines(const TString& text)
{
    std::u16string safe(text.view());
    for (char16_t& unit : safe)
        unit = unit == u'\t' || unit == u'\n' ? unit : ToSafe(unit);
    return TString(std::u16string_view(safe));
}
