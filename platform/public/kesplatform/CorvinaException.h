#pragma once

#include <kesplatform/Export.h>
#include <kesplatform/TError.h>
#include <kesplatform/TString.h>

#include <exception>
#include <memory>
#include <string>
#include <vector>

/// Base of the suite's exceptions: a message for people, an error record for programs, and
/// optionally the exception that caused this one. Copies share the causes, which never change.
/// Different objects may be used from different threads. Const operations may run side by side.
class KESPLATFORM_EXPORT CorvinaException : public std::exception
{
public:
    /// An exception whose record is TError::ErrorInfo::NoError().
    explicit CorvinaException(const TString& message);
    /// An exception with this record, and perhaps what caused it.
    CorvinaException(const TString& message, const TError::ErrorInfo& info);
    CorvinaException(const TString& message, const TError::ErrorInfo& info,
                     const CorvinaException& cause);
    /// Copies share the causes.
    CorvinaException(const CorvinaException&) = default;
    /// The same for assignment.
    CorvinaException& operator=(const CorvinaException&) = default;
    ~CorvinaException() override;

    /// A new copy of the dynamic type, owned by the caller.
    [[nodiscard]] virtual CorvinaException* Clone() const;
    /// Throws a copy of the dynamic type.
    [[noreturn]] virtual void Throw() const;
    /// The messages of this exception and of its causes, outermost first, joined with a line feed.
    [[nodiscard]] virtual TString GetConcatenatedMessages() const;
    /// The message of this exception alone.
    [[nodiscard]] virtual TString GetMessagesFront() const;
    /// One line for a log: every message with its error identifier where there is one.
    [[nodiscard]] virtual TString CollateMessagesForLog() const;

    /// The record for programs; lives as long as this exception.
    [[nodiscard]] const TError::ErrorInfo& GetErrorInfo() const noexcept { return m_info; }
    /// Null when nothing caused this exception; lives as long as this exception.
    [[nodiscard]] const CorvinaException* GetCause() const noexcept { return m_cause.get(); }
    /// The concatenated messages as UTF-8; valid as long as this exception.
    [[nodiscard]] const char* what() const noexcept override { return m_what.c_str(); }

private:
    TString m_message;
    TError::ErrorInfo m_info;
    std::shared_ptr<const CorvinaException> m_cause;
    std::string m_what;
};
