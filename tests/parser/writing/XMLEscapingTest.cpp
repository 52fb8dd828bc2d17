#include "support/EscapingModel.h"
#include "support/FailingAllocations.h"
#include "support/RandomTree.h"

#include <kescorexml/XMLFormatter.h>

#include <gtest/gtest.h>

#include <functional>
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
    }
    const FailingAllocations failing(0);
    EXPECT_NO_THROW(static_cast<void>(XMLFormatter::EncodeAttributeString(clean)));
    EXPECT_NO_THROW(static_cast<void>(XMLFormatter::EncodeContentString(clean)));
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

} // namespace
