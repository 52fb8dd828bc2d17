#include <kesplatform/CorvinaException.h>

namespace {

void AppendOnOneLine(TString& line, const TString& message)
{
    for (const char16_t unit : message)
        line += unit == u'\n' || unit == u'\r' ? u' ' : unit;
}

} // namespace

CorvinaException::CorvinaException(const TString& message)
    : CorvinaException(message, TError::ErrorInfo::NoError())
{
}

CorvinaException::CorvinaException(const TString& message, const TError::ErrorInfo& info)
    : m_message(message), m_info(info), m_what(message.toStdString())
{
}

CorvinaException::CorvinaException(const TString& message, const TError::ErrorInfo& info,
                                   const CorvinaException& cause)
    : m_message(message), m_info(info), m_cause(cause.Clone()),
      m_what((message + u"\n" + cause.GetConcatenatedMessages()).toStdString())
{
}

CorvinaException::~CorvinaException() = default;

CorvinaException* CorvinaException::Clone() const
{
    return new CorvinaException(*this);
}

void CorvinaException::Throw() const
{
    throw *this;
}

TString CorvinaException::GetConcatenatedMessages() const
{
    TString messages = GetMessagesFront();
    for (const CorvinaException* cause = GetCause(); cause != nullptr; cause = cause->GetCause()) {
        messages += u'\n';
        messages += cause->GetMessagesFront();
    }
    return messages;
}

TString CorvinaException::GetMessagesFront() const
{
    return m_message;
}

TString CorvinaException::CollateMessagesForLog() const
{
    TString line;
    for (const CorvinaException* e = this; e != nullptr; e = e->GetCause()) {
        if (e != this)
            line += u"; ";
        AppendOnOneLine(line, e->GetMessagesFront());
        const TString& identifier = e->GetErrorInfo().GetError().GetIdentifier();
        if (!identifier.IsEmpty()) {
            line += u" (";
            line += identifier;
            line += u')';
        }
    }
    return line;
}
