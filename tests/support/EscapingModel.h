#pragma once

#include <kesplatform/TString.h>

#include <iomanip>
#include <sstream>
#include <string>

/// The escaping rules written down once more, one unit at a time and without regard to speed.
namespace EscapingModel {

inline TString Hexadecimal(char16_t unit)
{
    std::ostringstream text;
    text << "\\x" << std::hex << std::uppercase << static_cast<unsigned>(unit) << ';';
    return TString::fromStdString(text.str());
}

inline TString EscapeUnit(char16_t unit, bool isLongContent)
{
    switch (unit) {
    case u'&':
        return u"&amp;";
    case u'<':
        return u"&lt;";
    case u'>':
        return u"&gt;";
    case u'\'':
        return u"&apos;";
    case u'"':
        return u"&quot;";
    case u'\r':
        return u"&#13;";
    case u'\n':
        return isLongContent ? u"\n" : u"&#10;";
    case u'\t':
        return isLongContent ? u"\t" : u"&#9;";
    default:
        return unit < 0x20 || unit >= 0xFFFE ? Hexadecimal(unit) : TString(1, unit);
    }
}

inline TString EscapeAll(const TString& text, bool isLongContent)
{
    TString result;
    for (const char16_t unit : text)
        result += EscapeUnit(unit, isLongContent);
    return result;
}

inline TString EscapeAttribute(const TString& text)
{
    return EscapeAll(text, false);
}

inline TString EscapeContent(const TString& text)
{
    if (text.length() < 32)
        return EscapeAll(text, false);
    if (!text.contains(u'<'))
        return EscapeAll(text, true);
    const bool isQuoted = text.startsWith(u"\"") && text.endsWith(u"\"");
    TString result =
        isQuoted ? u"&quot;<![CDATA[" + text.mid(1, text.length() - 2) : u"<![CDATA[" + text;
    result.replace(u"]]>", u"]]]]><![CDATA[>");
    result += u"]]>";
    if (isQuoted)
        result += u"&quot;";
    return result;
}

} // namespace EscapingModel
