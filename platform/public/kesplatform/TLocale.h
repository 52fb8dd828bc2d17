#pragma once

#include <kesplatform/Export.h>
#include <kesplatform/TString.h>

/// A language, or a language and a region: "en", "de_DE". A plain value.
class KESPLATFORM_EXPORT LanguageCode
{
public:
    LanguageCode() noexcept = default;
    /// Takes a code such as "de_DE".
    explicit LanguageCode(TString isoString) noexcept : m_isoString(std::move(isoString)) {}

    /// The code.
    [[nodiscard]] const TString& GetISOString() const noexcept { return m_isoString; }
    /// The part before the first "_".
    [[nodiscard]] TString GetLanguage() const;

    friend bool operator==(const LanguageCode&, const LanguageCode&) noexcept = default;

private:
    TString m_isoString;
};

/// The locale of a session. A plain value.
class KESPLATFORM_EXPORT TLocale
{
public:
    /// The locale of a language.
    explicit TLocale(LanguageCode language) noexcept : m_language(std::move(language)) {}

    /// The language.
    [[nodiscard]] const LanguageCode& getLanguageCode() const noexcept { return m_language; }

private:
    LanguageCode m_language;
};
