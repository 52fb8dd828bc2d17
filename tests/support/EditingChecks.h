#pragma once

#include "support/TreeTesting.h"

#include <functional>

/// The record at `index` says that an insertion point is missing.
inline void ExpectMissLogged(const LogCapture& log, std::size_t index)
{
    ASSERT_LT(index, log.Count());
    const LogCapture::Entry entry = log.At(index);
    EXPECT_EQ(static_cast<int>(entry.severity), 3);
    EXPECT_EQ(entry.message,
              TString(u"DOMElement was asked to insert before a non-existent child."));
    EXPECT_EQ(
        entry.info,
        TError::ErrorInfo(CorvinaError(0xD78DE10E, u"LogSite_MissingDomElement_0xD78DE10E"), 2, 2));
}

/// The work throws an assertion of DOMElement with this text.
inline void ExpectAssertion(const std::function<void()>& work, const char* text)
{
    const auto assertion = CatchAssertion(work);
    ASSERT_TRUE(assertion.has_value()) << text;
    EXPECT_EQ(assertion->GetText(), TString(text));
    EXPECT_EQ(assertion->GetFile(), TString(u"modules/platform/kescorexml/main/parser/DOMElement"));
    EXPECT_TRUE(assertion->GetErrorInfo().GetError().GetIdentifier().startsWith(
        u"LogicException_LogicAssert_0x"));
}
