#include <kesplatform/TFormatString.h>

TString TFormatString::Replace(std::span<const TString> arguments) const
{
    const std::u16string_view format = m_format.view();
    TString result;
    std::size_t copied = 0;
    for (std::size_t at = format.find(u'%'); at != std::u16string_view::npos;
         at = format.find(u'%', at + 1)) {
        if (at + 1 >= format.size() || format[at + 1] < u'1' || format[at + 1] > u'9')
            continue;
        const auto index = static_cast<std::size_t>(format[at + 1] - u'1');
        if (index >= arguments.size())
            continue;
        result.append(format.substr(copied, at - copied));
        result.append(arguments[index]);
        copied = at + 2;
    }
    if (copied == 0)
        return m_format;
    return result.append(format.substr(copied));
}
