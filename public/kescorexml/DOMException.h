#pragma once

#include <kescorexml/Export.h>
#include <kesplatform/CorvinaException.h>

/// Data that a document must have is missing. The message names it; the record says which kind.
/// Different objects may be used from different threads.
class KESCOREXML_EXPORT DOMException : public CorvinaException
{
public:
    /// The message and the record.
    DOMException(const TString& message, const TError::ErrorInfo& info);
    /// Copies share the causes.
    DOMException(const DOMException&) = default;
    ~DOMException() override;

    [[nodiscard]] DOMException* Clone() const override;
    [[noreturn]] void Throw() const override;
};
