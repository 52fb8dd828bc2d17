#include "writing/TwoPassEscaping.h"

#include "support/TreeTesting.h"

#include <gtest/gtest.h>

namespace {

/// Escapes an attribute value where the units from `first` to `last` may not stand in XML text.
TString EncodeWithout(char16_t first, char16_t last, const TString& text)
{
    return TwoPassEscaping::Encode(
        text, 0, c_escapeTable<MappingTableType::Attribute>,
        [first, last](char16_t unit) { return unit < first || unit > last; });
}

TEST(TwoPassEscaping, EscapesUnitsFromU0081OnThatAreInvalid)
{
    EXPECT_EQ(EncodeWithout(0x81, 0x81, u"a\u0081\u0082"), u"a\\x81;\u0082");
    EXPECT_EQ(EncodeWithout(0x81, 0xFFFF, u"\u00FF\u0100\u0FFF\u1000\uFFFF&"),
              u"\\xFF;\\x100;\\xFFF;\\x1000;\\xFFFF;&amp;");
}

TEST(TwoPassEscaping, AsksNobodyAboutUnitsBelowU0080)
{
    EXPECT_EQ(EncodeWithout(0, 0x7F, u"a?\u007F<"), u"a?\u007F&lt;");
}

TEST(TwoPassEscaping, LeavesAnInvalidU0080AloneWhereNothingElseIsEscaped)
{
    const TString text(u"a\u0080b");
    EXPECT_EQ(EncodeWithout(0x80, 0x80, text).utf16(), text.utf16());
}

TEST(TwoPassEscaping, AssertsAndLogsTheLengthOfATextThatAnInvalidU0080MakesLonger)
{
    const TString message(u"Encoded string length doesn't match the total encoded character count");
    const LogCapture log;
    const auto assertion = CatchAssertion([] { EncodeWithout(0x80, 0x80, u"\u0080<"); });
    ASSERT_TRUE(assertion.has_value());
    EXPECT_EQ(assertion->GetText(), message + u".");
    EXPECT_EQ(assertion->GetFile(), u"modules/platform/kescorexml/main/parser/XMLFormatter");
    EXPECT_EQ(assertion->GetErrorInfo().GetError().GetCode(), 0xF6B4AF4CU);
    EXPECT_EQ(assertion->GetErrorInfo().GetError().GetIdentifier(),
              u"LogicException_LogicAssert_0xF6B4AF4C");
    ASSERT_EQ(log.Count(), 1U);
    EXPECT_EQ(static_cast<int>(log.At(0).severity), 2);
    EXPECT_EQ(log.At(0).message,
              message + u". Input string is \"\u0080<\". Encoded string is \"\\x80;\". Encoded "
                        u"string length is 5. Character count after encoding is 9.");
}

TEST(EscapeTable, AssertsThatItKnowsTheType)
{
    const auto assertion =
        CatchAssertion([] { InitMappingTableType(static_cast<MappingTableType>(2)); });
    ASSERT_TRUE(assertion.has_value());
    EXPECT_EQ(assertion->GetText(), u"Unknown type passed to InitMappingTableType");
    EXPECT_EQ(assertion->GetFile(), u"modules/platform/kescorexml/main/parser/XMLFormatter");
    EXPECT_EQ(assertion->GetErrorInfo().GetError().GetCode(), 0xF6AD402CU);
    EXPECT_EQ(assertion->GetErrorInfo().GetError().GetIdentifier(),
              u"LogicException_LogicAssert_0xF6AD402C");
}

} // namespace
