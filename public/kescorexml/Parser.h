#pragma once

#include <kescorexml/Export.h>
#include <kescorexml/SkippedEntity.h>
#include <kescorexml/XMLDiagnostic.h>
#include <kescorexml/detail/DiagnosticList.h>

#include <kesplatform/TError.h>
#include <kesplatform/TString.h>

#include <utility>
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
    bool HasErrors() const noexcept { return !m_errors.GetDiagnostics().empty(); }
    /// Whether a warning was recorded.
    bool HasWarnings() const noexcept { return !m_warnings.GetDiagnostics().empty(); }
    /// Whether a fatal error was recorded.
    bool HasFatallyErrored() const noexcept { return m_fatallyErrored; }
    /// Valid until the next parse or record. The messages are put together when they are asked for.
    [[nodiscard]] const std::vector<TString>& GetErrors() const;
    /// Valid until the next parse or record. The messages are put together when they are asked for.
    [[nodiscard]] const std::vector<TString>& GetWarnings() const;
    /// The errors taken apart, one for each message, in the same order. Valid until the next parse
    /// or record.
    [[nodiscard]] const std::vector<XMLDiagnostic>& GetErrorDiagnostics() const noexcept
    {
        return m_errors.GetDiagnostics();
    }
    /// The same for warnings.
    [[nodiscard]] const std::vector<XMLDiagnostic>& GetWarningDiagnostics() const noexcept
    {
        return m_warnings.GetDiagnostics();
    }
    /// The entities to which the document of the last parse refers although nobody declares them,
    /// in the order of their first references. Nothing was read in their place, which is no error
    /// and no warning. Empty when the document was not read to its end. Valid until the next parse.
    [[nodiscard]] const std::vector<SkippedEntity>& GetSkippedEntities() const noexcept
    {
        return m_skippedEntities;
    }
    /// One record for each message, in the same order.
    [[nodiscard]] std::vector<TError::ErrorInfo> GetMetadataForErrors() const
    {
        return m_errors.GetMetadata();
    }
    /// One record for each message, in the same order.
    [[nodiscard]] std::vector<TError::ErrorInfo> GetMetadataForWarnings() const
    {
        return m_warnings.GetMetadata();
    }

protected:
    /// Parses and records; called by Parse.
    virtual void ParseImpl() = 0;

    /// Records what is known of a place, as its kind tells.
    void Record(XMLDiagnostic&& diagnostic, const TError::ErrorInfo& info);
    /// What GetSkippedEntities gives.
    void SetSkippedEntities(std::vector<SkippedEntity>&& entities) noexcept
    {
        m_skippedEntities = std::move(entities);
    }

private:
    DiagnosticList m_warnings;
    DiagnosticList m_errors;
    std::vector<SkippedEntity> m_skippedEntities;
    bool m_fatallyErrored = false;
};
