#include <kescorexml/DOMException.h>

DOMException::DOMException(const TString& message, const TError::ErrorInfo& info)
    : CorvinaException(message, info)
{
}

DOMException::~DOMException() = default;

DOMException* DOMException::Clone() const
{
    return new DOMException(*this);
}

void DOMException::Throw() const
{
    throw DOMException(*this);
}
