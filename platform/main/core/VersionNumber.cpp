#include <kesplatform/VersionNumber.h>

#include <algorithm>
#include <limits>

namespace {

std::uint32_t ToPart(const TString& text)
{
    bool ok = false;
    const unsigned long long value = text.toULongLong(&ok);
    return ok && value <= std::numeric_limits<std::uint32_t>::max()
               ? static_cast<std::uint32_t>(value)
               : 0;
}

} // namespace

VersionNumber::VersionNumber(const TString& text, char16_t separator, char16_t suffixSeparator,
                             int /*flags*/)
    : m_separator(separator), m_suffixSeparator(suffixSeparator)
{
    const TString::size_type suffix = text.indexOf(suffixSeparator);
    if (suffix >= 0)
        m_suffix = text.mid(suffix + 1);
    for (const TString& part : text.left(suffix).split(separator))
        m_parts.push_back(ToPart(part));
}

TString VersionNumber::GetAsString() const
{
    TString text;
    for (std::size_t i = 0; i < m_parts.size(); ++i) {
        if (i > 0)
            text += m_separator;
        text += TString::number(m_parts[i]);
    }
    if (!m_suffix.IsEmpty()) {
        text += m_suffixSeparator;
        text += m_suffix;
    }
    return text;
}

TString VersionNumber::GetMajorAndMinorAsString(char16_t separator) const
{
    TString text = TString::number(Part(0));
    text += separator;
    text += TString::number(Part(1));
    return text;
}

std::uint32_t VersionNumber::Part(std::size_t index) const noexcept
{
    return index < m_parts.size() ? m_parts[index] : 0;
}

bool operator==(const VersionNumber& a, const VersionNumber& b) noexcept
{
    const std::size_t count = std::max(a.m_parts.size(), b.m_parts.size());
    for (std::size_t i = 0; i < count; ++i) {
        if (a.Part(i) != b.Part(i))
            return false;
    }
    return a.m_suffix == b.m_suffix;
}
