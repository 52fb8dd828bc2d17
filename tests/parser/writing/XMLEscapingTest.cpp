#include "support/EscapingModel.h"
#include "support/FailingAllocations.h"
#include "support/RandomTree.h"
#include "support/TreeTesting.h"
#include "writing/EightUnits.h"
#include "writing/TwoPassEscaping.h"

#include <kescorexml/XMLFormatter.h>

#include <gtest/gtest.h>

#include <functional>
#include <new>
#include <string>

namespace {

TEST(XMLEscaping, WritesMarkupAsReferences)
{
    EXPECT_EQ(XMLFormatter::EncodeAttributeString(u"a<b&c"), TString(u"a&lt;b&amp;c"));
    EXPECT_EQ(XMLFormatter::EncodeAttributeString(u"'"), TString(u"&apos;"));
    EXPECT_EQ(XMLFormatter::EncodeAttributeString(u"\""), TString(u"&quot;"));
    EXPECT_EQ(XMLFormatter::EncodeAttributeString(u">"), TString(u"&gt;"));
    EXPECT_EQ(XMLFormatter::EncodeAttributeString(u"\t\n\r"), TString(u"&#9;&#10;&#13;"));
}

TEST(XMLEscaping, WritesOtherControlUnitsInHexadecimalWithoutLeadingZeros)
{
    EXPECT_EQ(XMLFormatter::EncodeAttributeString(TString(1, u'\0')), TString(u"\\x0;"));
    EXPECT_EQ(XMLFormatter::EncodeAttributeString(u"\u0001"), TString(u"\\x1;"));
    EXPECT_EQ(XMLFormatter::EncodeAttributeString(u"\u001F"), TString(u"\\x1F;"));
    EXPECT_EQ(XMLFormatter::EncodeAttributeString(u"\uFFFE"), TString(u"\\xFFFE;"));
    EXPECT_EQ(XMLFormatter::EncodeAttributeString(u"\uFFFF"), TString(u"\\xFFFF;"));
}

TEST(XMLEscaping, KnowsEveryUnitInAnAttribute)
{
    for (unsigned unit = 0; unit <= 0xFFFF; ++unit) {
        const TString text(1, static_cast<char16_t>(unit));
        ASSERT_EQ(XMLFormatter::EncodeAttributeString(text), EscapingModel::EscapeAttribute(text))
            << std::hex << unit;
    }
}

TEST(XMLEscaping, KnowsEveryUnitInLongContent)
{
    const TString filler(31, u'x');
    for (unsigned unit = 0; unit <= 0xFFFF; ++unit) {
        const TString text = filler + TString(1, static_cast<char16_t>(unit));
        ASSERT_EQ(XMLFormatter::EncodeContentString(text), EscapingModel::EscapeContent(text))
            << std::hex << unit;
    }
}

TEST(XMLEscaping, FindsTheUnitAtEveryPositionOfEveryLength)
{
    for (TString::size_type length = 1; length <= 40; ++length) {
        for (TString::size_type position = 0; position < length; ++position) {
            for (const char16_t unit : {u'&', u'\t', u'\u0002', u'\xFFFF'}) {
                const TString text = TString(position, u'a') + TString(1, unit) +
                                     TString(length - position - 1, u'b');
                EXPECT_EQ(XMLFormatter::EncodeAttributeString(text),
                          EscapingModel::EscapeAttribute(text));
                EXPECT_EQ(XMLFormatter::EncodeContentString(text),
                          EscapingModel::EscapeContent(text));
            }
        }
    }
}

TEST(XMLEscaping, ReturnsCleanTextItself)
{
    const TString attribute(u"plain \u20AC text that needs nothing, long enough for content");
    EXPECT_EQ(XMLFormatter::EncodeAttributeString(attribute).utf16(), attribute.utf16());
    const TString content(u"line one\n\tline two, long enough to keep both");
    EXPECT_EQ(XMLFormatter::EncodeContentString(content).utf16(), content.utf16());
    EXPECT_TRUE(XMLFormatter::EncodeAttributeString(TString()).IsEmpty());
    EXPECT_TRUE(XMLFormatter::EncodeContentString(TString()).IsEmpty());
}

TEST(XMLEscaping, AllocatesOnceForATextThatItChangesAndNeverForAnotherOne)
{
    const TString dirty = TString(40, u'x') + u"\u0001&\n";
    const TString section = TString(40, u'x') + u"<]]>";
    const TString clean(40, u'x');
    const std::function<TString()> changes[] = {
        [&] { return XMLFormatter::EncodeAttributeString(dirty); },
        [&] { return XMLFormatter::EncodeContentString(dirty); },
        [&] { return XMLFormatter::EncodeContentString(section); },
    };
    for (const auto& change : changes) {
        const TString expected = change();
        TString changed;
        bool hasFailed = false;
        {
            const FailingAllocations failing(1);
            changed = change();
            hasFailed = FailingAllocations::HasFailed();
        }
        EXPECT_EQ(changed, expected);
        EXPECT_FALSE(hasFailed);
        {
            const FailingAllocations failing(0);
            EXPECT_THROW(change(), std::bad_alloc);
        }
    }
    const FailingAllocations failing(0);
    EXPECT_NO_THROW(XMLFormatter::EncodeAttributeString(clean));
    EXPECT_NO_THROW(XMLFormatter::EncodeContentString(clean));
}

TEST(XMLEscaping, TreatsContentOfThirtyOneUnitsLikeAnAttribute)
{
    const TString shortText = TString(28, u'x') + u"\t\n\r";
    ASSERT_EQ(shortText.length(), 31);
    EXPECT_EQ(XMLFormatter::EncodeContentString(shortText), TString(28, u'x') + u"&#9;&#10;&#13;");
    const TString withMarkup = TString(30, u'x') + u"<";
    EXPECT_EQ(XMLFormatter::EncodeContentString(withMarkup), TString(30, u'x') + u"&lt;");
}

TEST(XMLEscaping, KeepsTabsAndLineFeedsInContentOfThirtyTwoUnits)
{
    const TString longText = TString(29, u'x') + u"\t\n\r";
    ASSERT_EQ(longText.length(), 32);
    EXPECT_EQ(XMLFormatter::EncodeContentString(longText), TString(29, u'x') + u"\t\n&#13;");
}

TEST(XMLEscaping, WrapsLongContentWithMarkupInOneSection)
{
    const TString text = TString(30, u'x') + u"<&";
    EXPECT_EQ(XMLFormatter::EncodeContentString(text), u"<![CDATA[" + text + u"]]>");
}

TEST(XMLEscaping, EscapesNothingInsideASection)
{
    const TString text = TString(30, u'x') + u"<\u0001\r\uFFFE";
    EXPECT_EQ(XMLFormatter::EncodeContentString(text), u"<![CDATA[" + text + u"]]>");
}

TEST(XMLEscaping, SplitsASectionAtItsEndMark)
{
    const TString filler(30, u'x');
    EXPECT_EQ(XMLFormatter::EncodeContentString(filler + u"<]]>]]>y"),
              u"<![CDATA[" + filler + u"<]]]]><![CDATA[>]]]]><![CDATA[>y]]>");
    EXPECT_EQ(XMLFormatter::EncodeContentString(u"]]>" + filler + u"<]]"),
              u"<![CDATA[]]]]><![CDATA[>" + filler + u"<]]]]>");
}

TEST(XMLEscaping, KeepsQuotesAroundLongContentOutsideTheSection)
{
    const TString inner = TString(29, u'x') + u"<";
    const TString text = u"\"" + inner + u"\"";
    ASSERT_EQ(text.length(), 32);
    EXPECT_EQ(XMLFormatter::EncodeContentString(text), u"&quot;<![CDATA[" + inner + u"]]>&quot;");
    EXPECT_EQ(XMLFormatter::EncodeContentString(u"\"" + inner + u"yy"),
              u"<![CDATA[\"" + inner + u"yy]]>");
}

TEST(XMLEscaping, AgreesWithTheModelOnRandomTexts)
{
    RandomTree random(20240229);
    for (int i = 0; i < 20000; ++i) {
        const TString text = random.Text(100);
        ASSERT_EQ(XMLFormatter::EncodeAttributeString(text), EscapingModel::EscapeAttribute(text));
        ASSERT_EQ(XMLFormatter::EncodeContentString(text), EscapingModel::EscapeContent(text));
    }
}

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

TEST(EightUnits, FindsTheFirstUnitToEscape)
{
    for (unsigned unit = 0; unit <= 0xFFFF; ++unit) {
        const auto c = static_cast<char16_t>(unit);
        const bool isClean = EscapingModel::EscapeUnit(c, false) == TString(1, c);
        const bool isCleanContent = EscapingModel::EscapeUnit(c, true) == TString(1, c);
        const std::size_t position = unit % EightUnits::c_count;
        std::u16string text(EightUnits::c_count, u'&');
        std::fill_n(text.begin(), position, u'a');
        text[position] = c;
        const auto next = std::min(position + 1, EightUnits::c_count);
        const EightUnits units = EightUnits::Load(text.data());
        ASSERT_EQ(units.FindEscape<MappingTableType::Attribute>(), isClean ? next : position)
            << std::hex << unit;
        ASSERT_EQ(units.FindEscape<MappingTableType::LongContent>(),
                  isCleanContent ? next : position)
            << std::hex << unit;
    }
}

TEST(EightUnits, CopiesTheEndsOfShortTexts)
{
    const std::u16string text = u"01234567";
    for (std::size_t count = 4; count <= 8; ++count) {
        std::u16string copy(10, u'-');
        EightUnits::LoadEnds(text.data(), count).StoreEnds(copy.data() + 1, count);
        EXPECT_EQ(copy, u"-" + text.substr(0, count) + std::u16string(9 - count, u'-'));
    }
}

} // namespace
