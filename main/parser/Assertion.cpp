#include "Assertion.h"

#include <kesplatform/LogicException.h>

void ThrowAssertion(const char16_t* source, int line, const TString& text,
                    const CorvinaError& error)
{
    ThrowLogicException(TString(u"modules/platform/kescorexml/main/parser/") + source, line, text,
                        error);
}
