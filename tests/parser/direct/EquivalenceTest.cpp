// Documents that cover every construct, with the direct scanner and without: nobody can tell.

#include "support/BothScanners.h"
#include "support/ExpectSame.h"
#include "support/OddDocuments.h"

#include <kescorexml/Utf8InputSource.h>

#include <gtest/gtest.h>

namespace {

/// Parses with a parser of its own.
bool IsAcceptedByXerces(const std::string& bytes)
{
    const DirectScanning::Switch switched(false);
    Utf8InputSource source(bytes, u"id", false);
    ParseTrace unused;
    const auto parser =
        XercesXMLParser::Create(source, std::make_shared<TracingSink>(unused, SinkPlan()));
    parser->Parse();
    return !parser->HasErrors() && !parser->HasWarnings();
}

} // namespace

TEST(DirectEquivalence, TheDocumentsAreWhatTheySayTheyAre)
{
    EXPECT_GE(OddDocuments::All().size(), 500U);
    for (const OddDocuments::Document& document : OddDocuments::All()) {
        if (document.isPlain) {
            EXPECT_TRUE(IsAcceptedByXerces(document.bytes)) << ToReadable(document.bytes);
        }
    }
    EXPECT_GE(OddDocuments::Small().size(), 40U);
    for (const std::string& document : OddDocuments::Small())
        EXPECT_LT(document.size(), 200U) << ToReadable(document);
}

TEST(DirectEquivalence, OddDocumentsGiveTheSameThroughEveryDoor)
{
    BothScanners both;
    for (const OddDocuments::Document& document : OddDocuments::All())
        ASSERT_TRUE(ExpectSame(both.CompareAll(document.bytes)));
}

TEST(DirectEquivalence, OddDocumentsGiveTheSameToParsersThatHaveSeenNothing)
{
    for (const OddDocuments::Document& document : OddDocuments::All()) {
        BothScanners both;
        ASSERT_TRUE(ExpectSame(both.CompareEvents(document.bytes)));
        ASSERT_TRUE(ExpectSame(
            both.CompareDom(document.bytes, BothScanners::Source::Binary, {true, false})));
    }
}

TEST(DirectEquivalence, OddDocumentsLeaveNothingToTheNextOne)
{
    BothScanners both;
    for (const OddDocuments::Document& document : OddDocuments::All()) {
        ASSERT_TRUE(ExpectSame(both.CompareEvents(document.bytes, BothScanners::Source::Binary)));
        ASSERT_TRUE(ExpectSame(both.CompareMetrics("<a b='1'>x&#65;<c/>\n</a>")));
        ASSERT_TRUE(ExpectSame(both.CompareEvents("<a i=' x '>&e;</a>")));
        ASSERT_TRUE(ExpectSame(both.CompareEvents("<a>x<b>y</c></a>")));
        ASSERT_TRUE(ExpectSame(both.CompareMetrics("<b>\n<a c='2' b='1'/>\xC3\xA9</b>")));
    }
}

TEST(DirectEquivalence, PermissionToExpandEntitiesChangesNothing)
{
    BothScanners both({.expandsEntities = true});
    for (const OddDocuments::Document& document : OddDocuments::All()) {
        ASSERT_TRUE(ExpectSame(both.CompareEvents(document.bytes)));
        ASSERT_TRUE(
            ExpectSame(both.CompareNewParser(document.bytes, BothScanners::Source::Binary)));
        ASSERT_TRUE(
            ExpectSame(both.CompareStandalone(document.bytes, BothScanners::Source::Utf8, false)));
    }
}

TEST(DirectEquivalence, ParsersThatValidateAreTheSame)
{
    BothScanners both({.validates = true});
    for (const OddDocuments::Document& document : OddDocuments::All()) {
        ASSERT_TRUE(ExpectSame(both.CompareEvents(document.bytes)));
        EXPECT_NE(both.GetLastVerdict(), DirectScanning::Verdict::Accepted);
    }
}

TEST(DirectEquivalence, LowLimitsEndADocumentAtTheSamePlace)
{
    for (std::uint64_t threshold = 0; threshold < 40; threshold += threshold < 8 ? 1 : 7) {
        ParseLimits limits;
        limits.SetAmplificationLimit(0, threshold);
        BothScanners amplified({.limits = limits});
        limits.SetAmplificationLimit(threshold % 3, threshold);
        limits.SetExpansionLimit(0, threshold);
        BothScanners expanded({.limits = limits});
        for (const OddDocuments::Document& document : OddDocuments::All()) {
            ASSERT_TRUE(ExpectSame(amplified.CompareEvents(document.bytes)));
            ASSERT_TRUE(
                ExpectSame(expanded.CompareEvents(document.bytes, BothScanners::Source::Binary)));
        }
        for (const std::string& document : OddDocuments::Small()) {
            ASSERT_TRUE(ExpectSame(
                amplified.CompareDom(document, BothScanners::Source::Utf8, {true, true})));
            ASSERT_TRUE(
                ExpectSame(expanded.CompareStandalone(document, BothScanners::Source::Utf8, true)));
        }
    }
}
