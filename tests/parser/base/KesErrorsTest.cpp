#include "base/KesErrors.h"

#include <gtest/gtest.h>

TEST(KesErrors, AreNamedByKindAndByTheCodeThatTheirFunctionsEndIn)
{
    EXPECT_EQ(KesErrorsError::LogicAssert_0xD5E47E3E(),
              CorvinaError(0xD5E47E3E, u"LogicException_LogicAssert_0xD5E47E3E"));
    EXPECT_EQ(KesErrorsError::MissingVersionAttribute_0xCA8DC404(),
              CorvinaError(0xCA8DC404, u"DOMException_MissingVersionAttribute_0xCA8DC404"));
    EXPECT_EQ(KesErrorsError::AutoGen_0x354BEE43(),
              CorvinaError(0x354BEE43, u"CorvinaException_AutoGen_0x354BEE43"));
}
