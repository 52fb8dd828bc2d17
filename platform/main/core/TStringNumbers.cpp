#include <kesplatform/TString.h>

#include <kesplatform/TCType.h>

#include <QString>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <string>
#include <system_error>

namespace {

/// The text without the blanks around it, in the Latin alphabet that numbers are written in; empty
/// when it holds anything else.
QStringView NumberText(const TString& text)
{
    const std::u16string_view units = text.view();
    const auto* first = std::find_if_not(units.begin(), units.end(), TCType::isSpace);
    const auto* last = units.end();
    while (last != first && TCType::isSpace(last[-1]))
        --last;
    // What is white space or a digit elsewhere in Unicode is not so here, and a zero is no end.
    if (std::any_of(first, last, [](char16_t unit) { return unit == 0 || unit > 0x7F; }))
        return {};
    return {first, last};
}

TString FromAscii(const char* first, const char* last)
{
    TString text;
    std::copy(first, last, text.resizeForOverwrite(last - first));
    return text;
}

template <typename Integer>
TString FromInteger(Integer value)
{
    char buffer[std::numeric_limits<Integer>::digits10 + 2];
    return FromAscii(buffer, std::to_chars(std::begin(buffer), std::end(buffer), value).ptr);
}

char ToUpper(char c)
{
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

} // namespace

int TString::toInt(bool* ok, int base) const
{
    return NumberText(*this).toInt(ok, base);
}

unsigned long long TString::toULongLong(bool* ok, int base) const
{
    return NumberText(*this).toULongLong(ok, base);
}

double TString::toDouble(bool* ok) const
{
    bool converted = false;
    const double value = NumberText(*this).toDouble(&converted);
    if (ok != nullptr)
        *ok = converted;
    return converted ? value : 0.0;
}

TString TString::number(int value)
{
    return FromInteger(value);
}

TString TString::number(unsigned int value)
{
    return FromInteger(value);
}

TString TString::number(long value)
{
    return FromInteger(value);
}

TString TString::number(unsigned long value)
{
    return FromInteger(value);
}

TString TString::number(long long value)
{
    return FromInteger(value);
}

TString TString::number(unsigned long long value)
{
    return FromInteger(value);
}

TString TString::number(double value, char format, int precision)
{
    const bool isUpper = format == 'E' || format == 'G';
    std::chars_format style = std::chars_format::general;
    if (format == 'e' || format == 'E')
        style = std::chars_format::scientific;
    else if (format == 'f')
        style = std::chars_format::fixed;
    const double unsignedIfNan =
        std::isnan(value) ? std::numeric_limits<double>::quiet_NaN() : value;
    const int digits = precision < 0 ? 6 : precision;

    // Sign, the digits before the point, the point, the digits after it or the exponent.
    constexpr std::size_t c_maximum = std::numeric_limits<double>::max_exponent10 + 10;
    std::string text(c_maximum + static_cast<std::size_t>(digits), '\0');
    const auto result =
        std::to_chars(text.data(), text.data() + text.size(), unsignedIfNan, style, digits);
    text.resize(static_cast<std::size_t>(result.ptr - text.data()));
    if (isUpper)
        std::transform(text.begin(), text.end(), text.begin(), ToUpper);
    return FromAscii(text.data(), text.data() + text.size());
}
