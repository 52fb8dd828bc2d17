#pragma once

#include <kescorexml/Export.h>

#include <kesplatform/TError.h>
#include <kesplatform/TString.h>

#include <vector>

/// Runs parses and keeps the warnings and errors of the last one, in the order reported. Fatal
/// errors stand among the errors. Different objects may be used from different threads.
class KESCOREXML_EXPORT Parser
{
public:
    Parser() = default;
    Parser(const Parser&) = delete;
    Parser& operator=(const Parser&) = delete;
    virtual ~Parser();

    /// Forgets what was recorded and parses. The outcome is read from the lists.
    void Parse();

    /// Empties the lists; HasFatallyErrored stays as it is.
    void ClearErrorsAndWarnings() noexcept;
    void Warning(const TString& message, const TError::ErrorInfo& info);
    void Error(const TString& message, const TError::ErrorInfo& info);
    void FatalError(const TString& message, const TError::ErrorInfo& info);

    bool HasErrors() const noexcept { return !m_errors.empty(); }
    bool HasWarnings() const noexcept { return !m_warnings.empty(); }
    bool HasFatallyErrored() const noexcept { return m_fatallyErrored; }
    /// Valid until the next parse or record.
    const std::vector<TString>& GetErrors() const noexcept { return m_errors; }
    const std::vector<TString>& GetWarnings() const noexcept { return m_warnings; }
    /// One entry for each message, in the same order.
    std::vector<TError::ErrorInfo> GetMetadataForErrors() const { return m_errorMetadata; }
    std::vector<TError::ErrorInfo> GetMetadataForWarnings() const { return m_warningMetadata; }

protected:
    virtual void ParseImpl() = 0;

private:
    std::vector<TString> m_warnings;
    std::vector<TError::ErrorInfo> m_warningMetadata;
    std::vector<TString> m_errors;
    std::vector<TError::ErrorInfo> m_errorMetadata;
    bool m_fatallyErrored = false;
};
