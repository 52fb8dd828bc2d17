#pragma once

#include <kescorexml/DOMException.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>

/// The work throws a DOMException about missing data with this message and record.
inline void ExpectMissing(const std::function<void()>& work, const char* message,
                          std::uint32_t code, const char* identifier)
{
    try {
        work();
        ADD_FAILURE() << "nothing was thrown";
    } catch (const DOMException& exception) {
        EXPECT_EQ(exception.GetMessagesFront(), TString(message));
        EXPECT_EQ(exception.GetErrorInfo(),
                  TError::ErrorInfo(CorvinaError(code, TString(identifier)), 1, 2));
    }
}
