#pragma once

#include <kesplatform/Export.h>
#include <kesplatform/TString.h>

#include <initializer_list>
#include <span>
#include <type_traits>

/// A text with placeholders "%1" to "%9". A plain value.
class KESPLATFORM_EXPORT TFormatString
{
public:
    TFormatString() noexcept = default;
    /// A text with placeholders.
    TFormatString(TString format) noexcept : m_format(std::move(format)) {}
    template <OtherText::Any T>
    TFormatString(const T& format) : m_format(format)
    {
    }

    /// The text as it was given.
    [[nodiscard]] const TString& GetFormat() const noexcept { return m_format; }

    /// The text with every placeholder replaced in one pass, so that an argument that contains
    /// "%1" is left alone. A placeholder without argument and any other "%" stay as they are.
    template <typename... Arguments>
    [[nodiscard]] TString Format(const Arguments&... arguments) const
    {
        static_assert(sizeof...(Arguments) <= 9, "there are nine placeholders");
        const std::initializer_list<TString> texts{ToText(arguments)...};
        return Replace(std::span<const TString>(texts.begin(), texts.size()));
    }

private:
    static TString ToText(const TString& text) { return text; }
    static TString ToText(const char16_t* text) { return text; }
    template <typename Number>
    requires std::is_arithmetic_v<Number>
    static TString ToText(Number number) { return TString::number(number); }

    TString Replace(std::span<const TString> arguments) const;

    TString m_format;
};
