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
    /// Records a warning.
    void Warning(const TString& message, const TError::ErrorInfo& info);
    /// Records an error.
    void Error(const TString& message, const TError::ErrorInfo& info);
    /// Records an error and that the parse came to an end by it.
    void FatalError(const TString& message, const TError::ErrorInfo& info);

    /// Whether an error was recorded.
    bool HasErrors() const noexcept { return !m_errors.empty(); }
    /// Whether a warning was recorded.
    bool HasWarnings() const noexcept { return !m_warnings.empty(); }
    /// Whether a fatal error was recorded.
    bool HasFatallyErrored() const noexcept { return m_fatallyErrored; }
    /// Valid until the next parse or record.
    const std::vector<TString>& GetErrors() const noexcept { return m_errors; }
    /// Valid until the next parse or record.
    const std::vector<TString>& GetWarnings() const noexcept { return m_warnings; }
    /// One entry for each message, in the same order.
    std::vector<TError::ErrorInfo> GetMetadataForErrors() const { return m_errorMetadata; }
    /// One entry for each message, in the same order.
    std::vector<TError::ErrorInfo> GetMetadataForWarnings() const { return m_warningMetadata; }

protected:
    /// Parses and records; called by Parse.
    virtual void ParseImpl() = 0;

private:
    std::vector<TString> m_warnings;
    std::vector<TError::ErrorInfo> m_warningMetadata;
    std::vector<TString> m_errors;
    std::vector<TError::ErrorInfo> m_errorMetadata;
    bool m_fatallyErrored = false;
};
