#pragma once

#include <kesplatform/Export.h>
#include <kesplatform/TString.h>

#include <cstdint>

/// One kind of error of the suite: a 32-bit code and the identifier that goes with it, for example
/// 0x3473F8A4 and "DOMException_RequiredDOMAttribute_0x3473F8A4". A plain value.
class KESPLATFORM_EXPORT CorvinaError
{
public:
    /// Code 0 and an empty identifier: no error.
    CorvinaError() noexcept = default;
    /// An error of this code and identifier.
    CorvinaError(std::uint32_t code, TString identifier) noexcept
        : m_code(code), m_identifier(std::move(identifier))
    {
    }

    /// The code.
    [[nodiscard]] std::uint32_t GetCode() const noexcept { return m_code; }
    /// The identifier.
    [[nodiscard]] const TString& GetIdentifier() const noexcept { return m_identifier; }

    friend bool operator==(const CorvinaError&, const CorvinaError&) noexcept = default;

private:
    std::uint32_t m_code = 0;
    TString m_identifier;
};

namespace TError {

/// The record that travels with every error and warning message: which error it is, who is the
/// source of it and what state it leaves. The two small numbers belong to the suite's error
/// services; this library passes them on. A plain value.
class KESPLATFORM_EXPORT ErrorInfo
{
public:
    /// The same as NoError().
    ErrorInfo() noexcept = default;
    /// A record of these.
    ErrorInfo(CorvinaError error, int errorSource, int statusCode) noexcept
        : m_error(std::move(error)), m_errorSource(errorSource), m_statusCode(statusCode)
    {
    }

    /// A record that names no error; source and status are 0.
    [[nodiscard]] static ErrorInfo NoError() noexcept { return {}; }

    /// Which error it is.
    [[nodiscard]] const CorvinaError& GetError() const noexcept { return m_error; }
    /// Who is the source of it.
    [[nodiscard]] int GetErrorSource() const noexcept { return m_errorSource; }
    /// What state it leaves.
    [[nodiscard]] int GetStatusCode() const noexcept { return m_statusCode; }

    friend bool operator==(const ErrorInfo&, const ErrorInfo&) noexcept = default;

private:
    CorvinaError m_error;
    int m_errorSource = 0;
    int m_statusCode = 0;
};

} // namespace TError
