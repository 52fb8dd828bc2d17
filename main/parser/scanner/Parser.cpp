#include <kescorexml/Parser.h>

#include <utility>

using Kind = XMLDiagnostic::Kind;

Parser::~Parser() = default;

void Parser::Parse()
{
    ClearErrorsAndWarnings();
    m_fatallyErrored = false;
    m_skippedEntities.clear();
    ParseImpl();
}

void Parser::ClearErrorsAndWarnings() noexcept
{
    m_warnings.Clear();
    m_errors.Clear();
}

void Parser::Record(XMLDiagnostic&& diagnostic, const TError::ErrorInfo& info)
{
    const Kind kind = diagnostic.GetKind();
    (kind == Kind::Warning ? m_warnings : m_errors).Add(std::move(diagnostic), info);
    if (kind == Kind::FatalError)
        m_fatallyErrored = true;
}

void Parser::Warning(const TString& message, const TError::ErrorInfo& info)
{
    Record(XMLDiagnostic(Kind::Warning, message), info);
}

void Parser::Error(const TString& message, const TError::ErrorInfo& info)
{
    Record(XMLDiagnostic(Kind::Error, message), info);
}

void Parser::FatalError(const TString& message, const TError::ErrorInfo& info)
{
    Record(XMLDiagnostic(Kind::FatalError, message), info);
}

const std::vector<TString>& Parser::GetErrors() const
{
    return m_errors.GetMessages();
}

const std::vector<TString>& Parser::GetWarnings() const
{
    return m_warnings.GetMessages();
}
