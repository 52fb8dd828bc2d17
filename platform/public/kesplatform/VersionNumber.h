#pragma once

#include <kesplatform/Export.h>
#include <kesplatform/TString.h>

#include <cstdint>
#include <vector>

/// A version such as "18.1" or "10.4.2-beta": numeric parts and an optional suffix. A plain value.
class KESPLATFORM_EXPORT VersionNumber
{
public:
    /// Reads `text`: parts between `separator`s, then, after the first `suffixSeparator`, the
    /// suffix. A part that is no number counts as 0. `flags` is reserved and 0.
    VersionNumber(const TString& text, char16_t separator, char16_t suffixSeparator, int flags);

    /// The parts joined with the separator it was read with, and the suffix after its separator.
    [[nodiscard]] TString GetAsString() const;
    /// The first two parts joined with `separator`; a missing one is 0.
    [[nodiscard]] TString GetMajorAndMinorAsString(char16_t separator) const;

    /// Part by part, a missing one counting as 0, and by suffix.
    KESPLATFORM_EXPORT friend bool operator==(const VersionNumber& a,
                                              const VersionNumber& b) noexcept;

private:
    std::uint32_t Part(std::size_t index) const noexcept;

    std::vector<std::uint32_t> m_parts;
    TString m_suffix;
    char16_t m_separator;
    char16_t m_suffixSeparator;
};
