#include <kescorexml/XMLParseException.h>

XMLParseException::XMLParseException(const TString& message) : CorvinaException(message) {}

XMLParseException::XMLParseException(const TString& message, const CorvinaError& error)
    : CorvinaException(message, TError::ErrorInfo(error, 4, 2))
{
}

XMLParseException::~XMLParseException() = default;

XMLParseException* XMLParseException::Clone() const
{
    return new XMLParseException(*this);
}

void XMLParseException::Throw() const
{
    throw XMLParseException(*this);
}
