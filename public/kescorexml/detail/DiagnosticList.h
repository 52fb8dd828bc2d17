#pragma once

#include <kescorexml/XMLDiagnostic.h>

#include <kesplatform/TError.h>
#include <kesplatform/TString.h>

#include <vector>

/// The errors or the warnings of a parser, each with its record. Messages take memory only once
/// somebody has asked for them. Different objects may be used from different threads.
class DiagnosticList
{
public:
    /// Adds both or, when it throws, neither.
    void Add(XMLDiagnostic&& diagnostic, const TError::ErrorInfo& info);
    /// Gives back the memory, too.
    void Clear() noexcept;

    const std::vector<XMLDiagnostic>& GetDiagnostics() const noexcept { return m_diagnostics; }
    const std::vector<TError::ErrorInfo>& GetMetadata() const noexcept { return m_metadata; }
    /// Who has asked once may keep the reference, and finds there what is added later, too.
    const std::vector<TString>& GetMessages() const;

private:
    std::vector<XMLDiagnostic> m_diagnostics;
    std::vector<TError::ErrorInfo> m_metadata;
    /// As many as diagnostics, when they are kept; else none.
    mutable std::vector<TString> m_messages;
    mutable bool m_keepsMessages = false;
};
