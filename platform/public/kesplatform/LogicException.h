#pragma once

#include <kesplatform/CorvinaException.h>
#include <kesplatform/Export.h>

/// A broken contract: the caller's program is wrong. Names the place that noticed it.
/// Different objects may be used from different threads.
class KESPLATFORM_EXPORT LogicException : public CorvinaException
{
public:
    /// The message is `text`; the record holds `error` with source 1 and status 2.
    LogicException(const TString& file, int line, const TString& text, const CorvinaError& error);
    /// Copies share the causes.
    LogicException(const LogicException&) = default;
    ~LogicException() override;

    [[nodiscard]] LogicException* Clone() const override;
    [[noreturn]] void Throw() const override;

    /// The source path without extension.
    [[nodiscard]] const TString& GetFile() const noexcept { return m_file; }
    /// The line in that source.
    [[nodiscard]] int GetLine() const noexcept { return m_line; }
    /// The condition as it stands in the source, or a sentence.
    [[nodiscard]] const TString& GetText() const noexcept { return m_text; }

private:
    TString m_file;
    int m_line;
    TString m_text;
};

/// Throws a LogicException made of the arguments.
[[noreturn]] KESPLATFORM_EXPORT void
ThrowLogicException(const TString& file, int line, const TString& text, const CorvinaError& error);
