#pragma once

#include <kesplatform/LogicException.h>

/// The line that callers know an assertion by. They see it, so it stays what it is when the code
/// moves to another line.
struct PublishedLine
{
    explicit constexpr PublishedLine(int line) noexcept : number(line) {}
    int number;
};

/// Throws the LogicException of a broken contract that was noticed in the source file `source` (its
/// name without extension) of this module, at `line` of it: __LINE__, which goes only with the name
/// of the file that it stands in, or a PublishedLine.
[[noreturn]] inline void ThrowAssertion(const char16_t* source, int line, const TString& text,
                                        const CorvinaError& error)
{
    ThrowLogicException(TString(u"modules/platform/kescorexml/main/parser/") + source, line, text,
                        error);
}
[[noreturn]] inline void ThrowAssertion(const char16_t* source, PublishedLine line,
                                        const TString& text, const CorvinaError& error)
{
    ThrowAssertion(source, line.number, text, error);
}
