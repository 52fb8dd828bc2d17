#include <kescorexml/VersionSniffer.h>

#include "support/ScriptedInputSource.h"

#include <kescorexml/StringInputSource.h>

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

namespace {

/// The sniffed version as text; "none" when there is none.
std::string Sniff(InputSource& document, const TString& attribute = TString())
{
    const std::optional<VersionNumber> version = VersionSniffer(document, attribute);
    return version ? version->GetAsString().toStdString() : "none";
}

std::string Sniff(const std::string& text, const TString& attribute = TString())
{
    ScriptedInputSource document(text);
    return Sniff(document, attribute);
}

TEST(VersionSniffer, TakesTheVersionFromTheRootTag)
{
    EXPECT_EQ(Sniff("<zap version='10.4'/>"), "10.4");
    EXPECT_EQ(Sniff("<zap name=\"x\" version = \"18.1\"><version version='1'/></zap>"), "18.1");
}

TEST(VersionSniffer, LooksForVersionWhenNoNameIsGiven)
{
    const std::string text = "<zap format='1.2' version='3.4'/>";
    EXPECT_EQ(Sniff(text, TString()), "3.4");
    EXPECT_EQ(Sniff(text, u"version"), "3.4");
}

TEST(VersionSniffer, LooksForTheNameThatIsGiven)
{
    const std::string text = "<zap format='1.2' version='3.4' gr\xC3\xB6\xC3\x9F"
                             "e='5.6'/>";
    EXPECT_EQ(Sniff(text, u"format"), "1.2");
    EXPECT_EQ(Sniff(text, u"gr\u00F6\u00DFe"), "5.6");
    EXPECT_EQ(Sniff(text, u"Version"), "none");
}

TEST(VersionSniffer, IgnoresWhatStandsBeforeTheRootTag)
{
    EXPECT_EQ(Sniff("<?xml version='1.0'?><!-- <a version='2'> --><!DOCTYPE zap>\n"
                    "<?zap version='3'?><zap version='4.5'/>"),
              "4.5");
}

TEST(VersionSniffer, IgnoresWhatStandsAfterTheRootTag)
{
    EXPECT_EQ(Sniff("<zap><child version='1.0'/></zap>"), "none");
}

TEST(VersionSniffer, IgnoresTextThatOnlyLooksLikeTheAttribute)
{
    EXPECT_EQ(Sniff("<zap text=\"> version='1' \" xversion='2' version='3'/>"), "3");
}

TEST(VersionSniffer, ReadsPartsAndSuffix)
{
    ScriptedInputSource document("<zap version='10.4.2-beta'/>");
    const auto version = VersionSniffer(document, TString());
    ASSERT_TRUE(version);
    EXPECT_EQ(*version, VersionNumber(u"10.4.2-beta", u'.', u'-', 0));
    EXPECT_FALSE(*version == VersionNumber(u"10.4.2", u'.', u'-', 0));
}

TEST(VersionSniffer, LeavesBadVersionsToThePlatform)
{
    for (const char* value : {"", "x", "1.x", "&#49;"}) {
        ScriptedInputSource document(std::string("<zap version='") + value + "'/>");
        const auto version = VersionSniffer(document, TString());
        ASSERT_TRUE(version) << value;
        EXPECT_EQ(*version, VersionNumber(TString(value), u'.', u'-', 0)) << value;
    }
}

TEST(VersionSniffer, FindsNothingWithoutARootTag)
{
    for (const char* text : {"", "   ", "text", "<?xml version='1.0'?>", "<!-- <zap version='1'/>",
                             "<zap version='1'", "<zap version='1/>"})
        EXPECT_EQ(Sniff(std::string(text)), "none") << text;
}

TEST(VersionSniffer, FindsAVersionFarInsideALongRootTag)
{
    for (const std::size_t length : {400U, 480U, 490U, 500U, 511U, 512U, 513U, 2000U, 100000U}) {
        ScriptedInputSource document("<zap note='" + std::string(length, '>') +
                                     "' version='10.3'>...</zap>");
        EXPECT_EQ(Sniff(document), "10.3") << length;
        EXPECT_EQ(document.Position(), 0U) << length;
    }
}

TEST(VersionSniffer, IsIndifferentToHowTheBytesArrive)
{
    const std::string text =
        "<?xml version='1.0'?><!-- > --><!DOCTYPE a><a b='>' version=\"10.5\"></a>";
    for (std::size_t count = 1; count <= text.size(); ++count) {
        ScriptedInputSource document(text);
        document.DeliverAtMost(count);
        EXPECT_EQ(Sniff(document), "10.5") << count;
    }
}

TEST(VersionSniffer, AsksForFiveHundredAndTwelveBytesAtATime)
{
    ScriptedInputSource document("<!--" + std::string(5000, ' ') + "--><zap version='1'/>");
    EXPECT_EQ(Sniff(document), "1");
    EXPECT_EQ(document.LargestRequest(), 512U);
}

TEST(VersionSniffer, ReadsNoFurtherThanTheRootTag)
{
    const std::string rest(100000, ' ');
    ScriptedInputSource near("<zap version='1'>" + rest);
    EXPECT_EQ(Sniff(near), "1");
    EXPECT_EQ(near.Furthest(), 512U);

    ScriptedInputSource far("<!--" + std::string(1000, ' ') + "--><zap>" + rest);
    EXPECT_EQ(Sniff(far), "none");
    EXPECT_EQ(far.Furthest(), 1024U);
}

TEST(VersionSniffer, LeavesTheDocumentAtItsStart)
{
    for (const char* text : {"<zap version='1'/>", "<zap/>", "no tag", ""}) {
        ScriptedInputSource document{std::string(text)};
        Sniff(document);
        EXPECT_EQ(document.Position(), 0U) << text;
        EXPECT_EQ(document.Resets(), 1) << text;
    }
}

TEST(VersionSniffer, LeavesTheDocumentAtItsStartWhenReadingFails)
{
    ScriptedInputSource document("<!--" + std::string(2000, ' ') + "--><zap version='1'/>");
    document.FailAt(1024);
    EXPECT_THROW(static_cast<void>(VersionSniffer(document, TString())), std::runtime_error);
    EXPECT_EQ(document.Position(), 0U);
    EXPECT_EQ(document.Resets(), 1);
}

TEST(VersionSniffer, StopsWhenASourceDeliversEmptyChunks)
{
    ScriptedInputSource document("<zap version='1'/>");
    document.DeliverAtMost(0);
    EXPECT_EQ(Sniff(document), "none");
}

TEST(VersionSniffer, CopesWithAPrologOfManyMegabytes)
{
    const std::size_t size = 16U << 20;
    std::string instructions;
    while (instructions.size() < size)
        instructions += "<?p?><!-- > -->";
    EXPECT_EQ(Sniff("<!--" + std::string(size, '-') + "--><zap version='1.1'/>"), "1.1");
    EXPECT_EQ(Sniff(instructions + "<zap version='2.2'/>"), "2.2");
    EXPECT_EQ(Sniff("<zap a='" + std::string(size, '>') + "' version='3.3'/>"), "3.3");
    EXPECT_EQ(Sniff("<!--" + std::string(size, '>')), "none");
}

TEST(VersionSniffer, LetsTheDocumentBeReadFromItsStartAfterwards)
{
    const TString text = u"<zap version='10.2'>" + TString(3000, u'x') + u"</zap>";
    StringInputSource document(text, u"id", false);
    EXPECT_EQ(Sniff(document), "10.2");
    std::string bytes;
    ASSERT_TRUE(document.GetBytes(bytes, 1U << 20));
    EXPECT_EQ(bytes, text.toStdString());
}

} // namespace
