// Plain documents are read by the direct scanner, and nothing else is. That
// nobody can tell is tested elsewhere, and would be true of a scanner that
// declines everything.

#include "support/BothScanners.h"
#include "support/OddDocuments.h"
#include "support/RandomDocument.h"
#include "support/RealDocuments.h"

#include <kescorexml/BinaryInputSource.h>
#include <kescorexml/StringInputSource.h>
#include <kescorexml/Utf8InputSource.h>

#include <gtest/gtest.h>

#include <map>
#include <set>

namespace {

using DirectScanning::Verdict;

/// What became of the last document, as a word.
std::string LastVerdict()
{
    return DirectScanning::GetName(DirectScanning::GetLastVerdict());
}

/// Of a parse by a DOMParser.
std::string VerdictOn(const std::string& bytes)
{
    const DirectScanning::Switch switched(true);
    Utf8InputSource source(bytes, u"id", false);
    DOMParser().ParseXmlInputSource(source, false);
    return LastVerdict();
}

/// That of `files`, at least 95 of 100 are accepted.
void ExpectMostAccepted(const char* folder)
{
    const DirectScanning::Switch switched(true);
    std::vector<std::string> files = RealDocuments::Find(folder);
    if (!RealDocuments::AreAllWanted())
        files = RealDocuments::Sample(files, 40'000'000);
    ASSERT_FALSE(files.empty());
    std::map<std::string, std::size_t> verdicts;
    const DOMParser parser;
    for (const std::string& file : files) {
        parser.ParseXmlFile(file.c_str());
        ++verdicts[LastVerdict()];
    }
    std::string reasons;
    for (const auto& [verdict, count] : verdicts)
        reasons += verdict + " " + std::to_string(count) + "\n";
    EXPECT_GE(verdicts["accepted"] * 100, files.size() * 95) << reasons;
}

} // namespace

TEST(DirectAcceptance, PlainDocumentsAreAccepted)
{
    for (const OddDocuments::Document& document : OddDocuments::All()) {
        if (document.isPlain) {
            EXPECT_EQ(VerdictOn(document.bytes), "accepted") << ToReadable(document.bytes);
        }
    }
}

TEST(DirectAcceptance, EveryDoorLeadsToTheDirectScanner)
{
    const DirectScanning::Switch switched(true);
    const std::string text = "<?xml version='1.0'?>\n<a b='1'>x<c/>\n</a>";
    const TString units = TString::fromStdString(text);
    const std::vector<unsigned char> bytes(text.begin(), text.end());
    const TemporaryFiles files;
    const TString path = files.Write(u"a.xml", text).GetString();
    const auto expectAccepted = [](const char* how, const auto& parse) {
        DirectScanning::SetLastVerdict(Verdict::None);
        parse();
        EXPECT_EQ(LastVerdict(), "accepted") << how;
    };
    const auto expectAllAccepted = [&](const auto& parser) {
        expectAccepted("string", [&] { parser.ParseXmlString(units, u"id"); });
        expectAccepted("UTF-8", [&] { parser.ParseXmlString(text, u"id"); });
        expectAccepted("terminated", [&] { parser.ParseXmlString(text.c_str(), u"id"); });
        expectAccepted("bytes", [&] { parser.ParseXmlBytes(bytes); });
        expectAccepted("file", [&] { parser.ParseXmlFile(path); });
    };
    expectAllAccepted(DOMParser());
    expectAllAccepted(StandaloneDOMParser());
    BothScanners both;
    for (const BothScanners::Source source : BothScanners::c_sources) {
        EXPECT_EQ(both.CompareEvents(text, source), "");
        EXPECT_EQ(both.GetLastVerdict(), Verdict::Accepted) << static_cast<int>(source);
    }
}

TEST(DirectAcceptance, SinksThatStopOrThrowAreServedByTheDirectScanner)
{
    BothScanners both;
    EXPECT_EQ(both.CompareSinks("<a b='1'>x<c/>y<d></d>z</a>", 9), "");
    EXPECT_GE(both.Count(Verdict::Accepted), 9U);
}

TEST(DirectAcceptance, DocumentsWithDiagnosticsAreDeclined)
{
    for (const char* document :
         {"", "<a>", "<a></b>", "<a>&x;</a>", "<a>]]></a>", "<a b='1' b='2'/>", "<a/>x",
          "<a>\xFF</a>", "<a>&#0;</a>", "<!-- -- --><a/>", "<?xml?><a/>"})
        EXPECT_EQ(VerdictOn(document).find("accepted"), std::string::npos) << document;
}

TEST(DirectAcceptance, BytesAreAcceptedInTheEncodingsThatAreUtf8)
{
    const DirectScanning::Switch scope(true);
    for (const char* const name : {"UTF-8", "utf-8", "US-ASCII", "us-ascii"}) {
        const std::string text = std::string("<?xml version='1.0' encoding='") + name + "'?><a/>";
        DOMParser().ParseXmlBytes(std::vector<unsigned char>(text.begin(), text.end()));
        EXPECT_EQ(LastVerdict(), "accepted") << name;
    }
}

TEST(DirectAcceptance, TextIsAcceptedWhateverEncodingItDeclares)
{
    for (const char* const name : {"ISO-8859-1", "windows-1252", "Shift_JIS", "UTF-16"}) {
        const std::string declaration =
            std::string("<?xml version='1.0' encoding='") + name + "'?>";
        EXPECT_EQ(VerdictOn(declaration + "<a>\xC3\xA9</a>"), "accepted") << name;
    }
}

TEST(DirectAcceptance, DocumentsThatAreNotPlainAreDeclined)
{
    EXPECT_NE(VerdictOn("<?xml version='1.1'?><a/>"), "accepted");
    EXPECT_NE(VerdictOn("<!DOCTYPE a [<!ENTITY e 'x'>]><a/>"), "accepted");
    EXPECT_NE(VerdictOn("<!DOCTYPE a [<!ENTITY % e 'x'>]><a/>"), "accepted");
    EXPECT_NE(VerdictOn("<!DOCTYPE a [<!NOTATION n SYSTEM 's'>]><a/>"), "accepted");
}

TEST(DirectAcceptance, SwitchedOffNothingIsAccepted)
{
    const DirectScanning::Switch switched(false);
    Utf8InputSource source(std::string("<a/>"), u"id", false);
    DOMParser().ParseXmlInputSource(source, false);
    EXPECT_EQ(LastVerdict(), "disabled");
}

TEST(DirectAcceptance, ASwitchEndsWithItsScope)
{
    const DirectScanning::Switch outer(true);
    {
        const DirectScanning::Switch inner(false);
        EXPECT_FALSE(DirectScanning::IsEnabled());
    }
    EXPECT_TRUE(DirectScanning::IsEnabled());
}

TEST(DirectAcceptance, EachVerdictHasANameOfItsOwn)
{
    std::set<std::string> names;
    for (int i = 0; i <= static_cast<int>(Verdict::Markup); ++i)
        names.insert(DirectScanning::GetName(static_cast<Verdict>(i)));
    EXPECT_EQ(names.size(), static_cast<std::size_t>(Verdict::Markup) + 1);
    EXPECT_EQ(names.count(""), 0U);
}

TEST(DirectAcceptance, ValidatingParsersAndLowLimitsLeaveDocumentsToXerces)
{
    BothScanners validating({.validates = true});
    EXPECT_EQ(validating.CompareEvents("<a/>"), "");
    EXPECT_EQ(validating.GetLastVerdict(), Verdict::Schema);
    ParseLimits limits;
    limits.SetAmplificationLimit(0, 3);
    BothScanners limited({.limits = limits});
    EXPECT_EQ(limited.CompareEvents("<a>text</a>"), "");
    EXPECT_NE(limited.GetLastVerdict(), Verdict::Accepted);
}

TEST(DirectAcceptance, TheTestsOfEquivalenceLookAtManyAcceptedDocuments)
{
    RandomDocument random(20261122, 0);
    BothScanners both;
    for (int i = 0; i < 1000; ++i)
        EXPECT_EQ(both.CompareEvents(random.Next()), "");
    EXPECT_GE(both.Count(Verdict::Accepted), 200U);
    EXPECT_LE(both.Count(Verdict::Accepted), 950U);
}

TEST(DirectAcceptance, MostDocumentsOfTheMimeDatabaseAreAccepted)
{
    if (!RealDocuments::Exists("/usr/share/mime"))
        GTEST_SKIP() << "shared-mime-info is not installed";
    ExpectMostAccepted("/usr/share/mime");
}

TEST(DirectAcceptance, MostDocumentsOfTheLocaleRepositoryAreAccepted)
{
    if (!RealDocuments::Exists("/usr/share/unicode/cldr"))
        GTEST_SKIP() << "unicode-cldr-core is not installed";
    ExpectMostAccepted("/usr/share/unicode/cldr");
}
