#pragma once

#include <kescorexml/Export.h>

#include <kesplatform/CorvinaException.h>

/// A parse that must be abandoned.
class KESCOREXML_EXPORT XMLParseException : public CorvinaException
{
public:
    explicit XMLParseException(const TString& message);
    XMLParseException(const TString& message, const CorvinaError& error);
    XMLParseException(const XMLParseException&) = default;
    XMLParseException& operator=(const XMLParseException&) = default;
    ~XMLParseException() override;

    XMLParseException* Clone() const override;
    [[noreturn]] void Throw() const override;
};
