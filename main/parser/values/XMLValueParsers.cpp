#include <kescorexml/XMLValueParsers.h>

#include <kescorexml/XMLTokens.h>

namespace XMLValueParsers {

bool ParseBool(const TString& text) noexcept
{
    return text == XMLTokens::valueTrue;
}

bool ParseBool(const TString& text, bool defaultValue) noexcept
{
    return text.IsEmpty() ? defaultValue : ParseBool(text);
}

int ParseInt(const TString& text)
{
    return text.toInt(nullptr, 10);
}

std::uint32_t ParseUInt32(const TString& text)
{
    return static_cast<std::uint32_t>(text.toULongLong(nullptr, 10));
}

double ParseFloat(const TString& text)
{
    return text.toDouble();
}

} // namespace XMLValueParsers
