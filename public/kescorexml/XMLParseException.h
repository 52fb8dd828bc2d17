#pragma once

#include <kescorexml/Export.h>

#include <kesplatform/CorvinaException.h>

/// A parse that must be abandoned. Different objects may be used from different threads.
class KESCOREXML_EXPORT XMLParseException : public CorvinaException
{
public:
    /// The record names no error, or `error` with source 4 and status 2.
    explicit XMLParseException(const TString& message);
    XMLParseException(const TString& message, const CorvinaError& error);
    /// Copies share the causes.
    XMLParseException(const XMLParseException&) = default;
    /// The same for assignment.
    XMLParseException& operator=(const XMLParseException&) = default;
    ~XMLParseException() override;

    [[nodiscard]] XMLParseException* Clone() const override;
    [[noreturn]] void Throw() const override;
};
