#include <kesplatform/DataValue.h>

#include <QLocale>

#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>

namespace {

constexpr int c_significantDigits = 6;

/// Room for the longest text of any number, date or date-time.
using Buffer = std::array<char, 64>;

template <typename Number>
TString ShortestText(Number number)
{
    Buffer buffer;
    const auto result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), number);
    return TString::fromUtf8({buffer.data(), result.ptr});
}

/// The C locale leaves group separators out unless it is asked.
const QLocale& GroupingLocale()
{
    static const QLocale s_locale = [] {
        QLocale locale = QLocale::c();
        locale.setNumberOptions(QLocale::DefaultNumberOptions);
        return locale;
    }();
    return s_locale;
}

template <typename... Fields>
TString Print(const char* format, Fields... fields)
{
    Buffer buffer;
    const int length = std::snprintf(buffer.data(), buffer.size(), format, fields...);
    return TString::fromUtf8({buffer.data(), static_cast<std::size_t>(length)});
}

/// Years of more than four digits carry a sign, as ISO 8601 wants it.
TString Text(const DataDate& date)
{
    const char* sign = date.year < 0 ? "-" : date.year > 9999 ? "+" : "";
    const long long year = std::llabs(date.year);
    return Print("%s%04lld-%02d-%02d", sign, year, date.month, date.day);
}

TString Text(const DataDateTime& value)
{
    TString text =
        Text(value.date) + Print("T%02d:%02d:%02d", value.hour, value.minute, value.second);
    if (value.millisecond != 0)
        text += Print(".%03d", value.millisecond);
    return text;
}

struct Formatter
{
    bool canonical;

    TString operator()(std::monostate) const { return {}; }
    TString operator()(bool value) const { return value ? u"true" : u"false"; }
    TString operator()(std::int64_t value) const
    {
        return canonical ? ShortestText(value)
                         : TString(GroupingLocale().toString(qlonglong{value}));
    }
    TString operator()(double value) const
    {
        // Not a number has no sign that would mean anything.
        if (std::isnan(value))
            return u"nan";
        return canonical ? ShortestText(value)
                         : TString(GroupingLocale().toString(value, 'g', c_significantDigits));
    }
    TString operator()(const TString& value) const { return value; }
    TString operator()(const DataDate& value) const { return Text(value); }
    TString operator()(const DataDateTime& value) const { return Text(value); }
};

} // namespace

TString DataValueFormatter::Format(const DataValue& value, const FormatOptions& options)
{
    return std::visit(Formatter{options.canonical}, value.Get());
}
