#include <kesplatform/VersionNumber.h>

#include <gtest/gtest.h>

namespace {

VersionNumber Read(const char16_t* text)
{
    return {text, u'.', u'-', 0};
}

} // namespace

TEST(VersionNumber, GivesItsTextBack)
{
    for (const char16_t* text : {u"18.1", u"10.4.2-beta", u"7", u"0.0", u"1.2.3.4-a-b.c"})
        EXPECT_EQ(TString(text), Read(text).GetAsString());
    EXPECT_EQ(TString(u"1_2+x"), VersionNumber(u"1_2+x", u'_', u'+', 0).GetAsString());
}

TEST(VersionNumber, GivesMajorAndMinor)
{
    EXPECT_EQ(TString(u"18_1"), Read(u"18.1").GetMajorAndMinorAsString(u'_'));
    EXPECT_EQ(TString(u"10.4"), Read(u"10.4.2-beta").GetMajorAndMinorAsString(u'.'));
    EXPECT_EQ(TString(u"7_0"), Read(u"7").GetMajorAndMinorAsString(u'_'));
    EXPECT_EQ(TString(u"0_0"), Read(u"").GetMajorAndMinorAsString(u'_'));
}

TEST(VersionNumber, ComparesPartsAsNumbers)
{
    EXPECT_EQ(Read(u"18.1"), Read(u"18.1"));
    EXPECT_EQ(Read(u"18.1"), Read(u"018.01"));
    EXPECT_NE(Read(u"18.1"), Read(u"18.10"));
    EXPECT_NE(Read(u"18.1"), Read(u"18.2"));
    EXPECT_NE(Read(u"18.1"), Read(u"1.18"));
}

TEST(VersionNumber, TakesAMissingPartForZero)
{
    EXPECT_EQ(Read(u"18"), Read(u"18.0"));
    EXPECT_EQ(Read(u"18.0.0"), Read(u"18"));
    EXPECT_EQ(Read(u""), Read(u"0"));
    EXPECT_NE(Read(u"18"), Read(u"18.0.1"));
}

TEST(VersionNumber, ComparesSuffixes)
{
    EXPECT_EQ(Read(u"1.0-beta"), Read(u"1-beta"));
    EXPECT_NE(Read(u"1.0-beta"), Read(u"1.0"));
    EXPECT_NE(Read(u"1.0-beta"), Read(u"1.0-Beta"));
    EXPECT_EQ(Read(u"1.0-"), Read(u"1.0"));
}

TEST(VersionNumber, TakesWhatIsNoNumberForZero)
{
    EXPECT_EQ(Read(u"0.1"), Read(u"x.1"));
    EXPECT_EQ(Read(u"1.0.2"), Read(u"1..2"));
    EXPECT_EQ(Read(u"0"), Read(u"4294967296"));
    EXPECT_NE(Read(u"0"), Read(u"4294967295"));
}
