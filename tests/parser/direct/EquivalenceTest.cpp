// Documents that cover every construct, with the direct scanner and without: nobody can tell.

#include "support/BothScanners.h"
#include "support/Effort.h"
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

/// `part` as often as `count` says, with numbers in place of "#".
std::string Numbered(const std::string& part, int count)
{
    const std::size_t hash = part.find('#');
    std::string text;
    for (int i = 0; i < count; ++i) {
        text += part;
        if (hash != std::string::npos)
            text.replace(text.size() - part.size() + hash, 1, std::to_string(i));
    }
    return text;
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
    const auto& documents = OddDocuments::All();
    for (std::size_t i = 0; i < documents.size(); i += Effort::c_stride)
        ASSERT_TRUE(ExpectSame(both.CompareAll(documents[i].bytes)));
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

TEST(DirectEquivalence, ContentModelsEndADocumentAtTheSamePlace)
{
    const auto declare = [](const std::string& model) {
        return "<!DOCTYPE a [<!ELEMENT a " + model +
               "><!ATTLIST a x CDATA #IMPLIED>]><a><b/><a/></a>";
    };
    const std::vector<std::string> documents = {
        declare("(b,b,b,b,b)"),
        declare("((b|c),(d|e)*,f+)"),
        declare("(#PCDATA|b|c|d|e|f|g)*"),
        declare("((((((b?)+)*)?)+)*)"),
        declare("(b*|c+|d?|e*|f+|g?)?"),
        "<!DOCTYPE a [" + Numbered("<!ELEMENT b# (#PCDATA)>", 40) + "]><a/>",
        "<!DOCTYPE a [" + Numbered("<!ELEMENT b# (c?)*>", 40) + "]><a/>",
        "<!DOCTYPE a [" + Numbered("<!ELEMENT b# EMPTY>", 40) + "]><a/>"};
    for (std::uint64_t threshold = 0; threshold < 400; threshold += threshold < 20 ? 1 : 27) {
        ParseLimits limits;
        limits.SetExpansionLimit(0, threshold);
        BothScanners both({.limits = limits});
        for (const std::string& document : documents) {
            ASSERT_TRUE(ExpectSame(both.CompareEvents(document)));
            ASSERT_TRUE(
                ExpectSame(both.CompareDom(document, BothScanners::Source::Utf8, {true, true})));
        }
    }
    BothScanners both;
    for (const int names : {1'000, 5'000, 12'000, 30'000}) {
        ASSERT_TRUE(ExpectSame(both.CompareEvents(declare("(b" + Numbered(",b", names) + ")"))));
        ASSERT_TRUE(
            ExpectSame(both.CompareEvents(declare("(#PCDATA" + Numbered("|b#", names) + ")*"))));
    }
}

TEST(DirectEquivalence, DefaultsEndADocumentAtTheSamePlace)
{
    const std::string document =
        "<!DOCTYPE a [<!ATTLIST b x CDATA 'abc' y CDATA 'd' z NMTOKENS 'e f'>]><a>" +
        Numbered("<b/>", 4) + Numbered("<b x='#'/>", 4) + "</a>";
    for (std::uint64_t threshold = 100; threshold < 600; ++threshold) {
        ParseLimits limits;
        limits.SetAmplificationLimit(0, threshold);
        BothScanners both({.limits = limits});
        ASSERT_TRUE(ExpectSame(both.CompareEvents(document)));
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

TEST(DirectEquivalence, DeclarationsAndVeryManyNamesAreTheSame)
{
    // More than a parser keeps: 32 units each, beside their letters.
    constexpr int c_names = 30000;
    BothScanners both;
    const std::string elements = "<a>" + Numbered("<n#/>", c_names) + "</a>";
    const std::string attributes = "<a>" + Numbered("<n m#='1'/>", c_names) + "</a>";
    for (const std::string& content : {elements, attributes}) {
        EXPECT_TRUE(ExpectSame(both.CompareEvents(content)));
        EXPECT_EQ(both.GetLastVerdict(), DirectScanning::Verdict::Accepted);
        const std::string declared = "<!DOCTYPE a [<!ATTLIST a d CDATA 'x'>]>" + content;
        EXPECT_TRUE(ExpectSame(both.CompareEvents(declared)));
        EXPECT_EQ(both.GetLastVerdict(), DirectScanning::Verdict::DocumentType);
        EXPECT_TRUE(
            ExpectSame(both.CompareDom(declared, BothScanners::Source::Binary, {true, false})));
        // It is no matter of declarations alone.
        EXPECT_TRUE(ExpectSame(both.CompareEvents("<!DOCTYPE a [<!ATTLIST a d CDATA 'x'>]><a/>")));
        EXPECT_EQ(both.GetLastVerdict(), DirectScanning::Verdict::Accepted);
    }
}
