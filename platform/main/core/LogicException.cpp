#include <kesplatform/LogicException.h>

namespace {

// What the suite's error services expect of a broken contract.
constexpr int c_errorSource = 1;
constexpr int c_statusCode = 2;

} // namespace

LogicException::LogicException(const TString& file, int line, const TString& text,
                               const CorvinaError& error)
    : CorvinaException(text, TError::ErrorInfo(error, c_errorSource, c_statusCode)), m_file(file),
      m_line(line), m_text(text)
{
}

LogicException::~LogicException() = default;

LogicException* LogicException::Clone() const
{
    return new LogicException(*this);
}

void LogicException::Throw() const
{
    throw *this;
}

void ThrowLogicException(const TString& file, int line, const TString& text,
                         const CorvinaError& error)
{
    throw LogicException(file, line, text, error);
}
