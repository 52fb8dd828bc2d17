#pragma once

#include <kesplatform/LogicException.h>

#include <gtest/gtest.h>

#include <string>

/// Runs `call` and expects the logic exception of the source file `source` of the library with this
/// text and error code. A line of 0 is any line.
template <class Call>
void ExpectAssertion(Call call, const char16_t* source, int line, const char16_t* text,
                     const char16_t* code)
{
    try {
        call();
        ADD_FAILURE() << "nothing was thrown";
    } catch (const LogicException& exception) {
        EXPECT_EQ(exception.GetFile(),
                  TString(u"modules/platform/kescorexml/main/parser/") + source);
        EXPECT_EQ(exception.GetText(), TString(text));
        EXPECT_EQ(exception.GetErrorInfo().GetError().GetIdentifier(),
                  TString(u"LogicException_LogicAssert_0x") + code);
        EXPECT_EQ(exception.GetErrorInfo().GetError().GetCode(),
                  std::stoul(TString(code).toStdString(), nullptr, 16));
        if (line != 0) {
            EXPECT_EQ(exception.GetLine(), line);
        }
    }
}
