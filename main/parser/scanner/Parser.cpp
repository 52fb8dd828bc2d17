#include <kescorexml/Parser.h>

namespace {

/// Both lists grow or neither does.
void Record(std::vector<TString>& messages, std::vector<TError::ErrorInfo>& metadata,
            const TString& message, const TError::ErrorInfo& info)
{
    messages.push_back(message);
    try {
        metadata.push_back(info);
    } catch (...) {
        messages.pop_back();
        throw;
    }
}

} // namespace

Parser::~Parser() = default;

void Parser::Parse()
{
    ClearErrorsAndWarnings();
    m_fatallyErrored = false;
    ParseImpl();
}

void Parser::ClearErrorsAndWarnings() noexcept
{
    m_warnings.clear();
    m_warningMetadata.clear();
    m_errors.clear();
    m_errorMetadata.clear();
}

void Parser::Warning(const TString& message, const TError::ErrorInfo& info)
{
    Record(m_warnings, m_warningMetadata, message, info);
}

void Parser::Error(const TString& message, const TError::ErrorInfo& info)
{
    Record(m_errors, m_errorMetadata, message, info);
}

void Parser::FatalError(const TString& message, const TError::ErrorInfo& info)
{
    Error(message, info);
    m_fatallyErrored = true;
}
