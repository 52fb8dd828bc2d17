#pragma once

#include <kesplatform/LogicException.h>

/// Throws the LogicException of a broken contract that was noticed in the source file `source` (its
/// name without extension) of this module, at `line` of it: __LINE__ goes only with the name of the
/// file that it stands in. Callers see both, so a literal number is not for a tidy hand to change.
[[noreturn]] inline void ThrowAssertion(const char16_t* source, int line, const TString& text,
                                        const CorvinaError& error)
{
    ThrowLogicException(TString(u"modules/platform/kescorexml/main/parser/") + source, line, text,
                        error);
}
