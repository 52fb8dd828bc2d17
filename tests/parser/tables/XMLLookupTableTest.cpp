#include "support/RandomTree.h"

#include <kescorexml/XMLLookupTable.h>
#include <kesplatform/CorePlatformUtils.h>

#include <gtest/gtest.h>

#include <random>

namespace {

using Map = std::unordered_map<TString, TString>;

TEST(XMLLookupTable, PacksAMapAsSortedAttributes)
{
    const Map map{{u"b", u"x<y"}, {u"a", u"1"}};
    const TString packed = XmlUtils::PackStringLookupTableIntoXML(map, false);
    EXPECT_EQ(packed, u"<pack a='1' b='x&lt;y'>\n</pack>\n");
    EXPECT_EQ(XmlUtils::UnpackStringLookupTableFromXML(packed), map);
}

TEST(XMLLookupTable, PacksOnOneLineWithoutLineFeeds)
{
    const TString packed = XmlUtils::PackStringLookupTableIntoXML({{u"a", u"1"}}, true);
    EXPECT_EQ(packed, u"<pack a='1'></pack>");
    EXPECT_EQ(XmlUtils::UnpackStringLookupTableFromXML(packed), (Map{{u"a", u"1"}}));
}

TEST(XMLLookupTable, PacksNothingAsNothing)
{
    EXPECT_TRUE(XmlUtils::PackStringLookupTableIntoXML({}, false).IsEmpty());
    EXPECT_TRUE(XmlUtils::UnpackStringLookupTableFromXML(TString()).empty());
}

TEST(XMLLookupTable, ReadsBackWhatItPacked)
{
    RandomTree random(5);
    for (int i = 0; i < 50; ++i) {
        Map map;
        for (std::size_t entries = 1 + random.Below(20); entries > 0; --entries) {
            // What is no character does not read back: control units are written in a form of
            // their own, and half a pair of surrogates has no UTF-8.
            std::u16string value = u"\U0001F600";
            for (const char16_t unit : random.Text(200)) {
                const bool isSurrogate = unit >= 0xD800 && unit < 0xE000;
                if (CorePlatformUtils::IsValidCharacter(unit) && !isSurrogate)
                    value += unit;
            }
            map[random.Name()] = TString(value);
        }
        for (const bool suppressNewlines : {false, true})
            ASSERT_EQ(XmlUtils::UnpackStringLookupTableFromXML(
                          XmlUtils::PackStringLookupTableIntoXML(map, suppressNewlines)),
                      map);
    }
}

TEST(XMLLookupTable, KeysMayHoldColonsAlsoAtTheirBeginning)
{
    const Map map{{u":a", u"1"}, {u"a:b", u"2"}, {u"a", u"3"}, {u"xmlns:n", u"4"}};
    for (const bool suppressNewlines : {false, true})
        EXPECT_EQ(XmlUtils::UnpackStringLookupTableFromXML(
                      XmlUtils::PackStringLookupTableIntoXML(map, suppressNewlines)),
                  map);
}

TEST(XMLLookupTable, ValuesKeepTheirWhiteSpaceAndMarkup)
{
    const Map map{{u"lines", u" one\n\ttwo\r\n "}, {u"markup", u"<a b='c' d=\"e\">&amp;]]></a>"}};
    EXPECT_EQ(XmlUtils::UnpackStringLookupTableFromXML(
                  XmlUtils::PackStringLookupTableIntoXML(map, false)),
              map);
}

TEST(XMLLookupTable, NeverThrowsForDamagedText)
{
    const std::string packed =
        XmlUtils::PackStringLookupTableIntoXML({{u"a", u"x<y"}, {u"b", u"\u00E9"}}, false)
            .toStdString();
    std::mt19937 random(1);
    for (int round = 0; round < 2000; ++round) {
        std::string damaged = packed;
        for (int i = 0; i < 2; ++i)
            damaged[random() % damaged.size()] = static_cast<char>(random() % 256);
        EXPECT_NO_THROW(static_cast<void>(
            XmlUtils::UnpackStringLookupTableFromXML(TString::fromStdString(damaged))))
            << damaged;
    }
}

TEST(XMLLookupTable, GivesNothingForAnotherRoot)
{
    EXPECT_TRUE(XmlUtils::UnpackStringLookupTableFromXML(u"<other a='1'/>").empty());
    EXPECT_TRUE(XmlUtils::UnpackStringLookupTableFromXML(u"<other><pack a='1'/></other>").empty());
}

TEST(XMLLookupTable, GivesNothingForMalformedText)
{
    for (const char16_t* text :
         {u"<pack a='1'>", u"pack", u"<pack a='1' a='2'/>", u"   ", u"<pack a='1'/><pack/>"})
        EXPECT_TRUE(XmlUtils::UnpackStringLookupTableFromXML(text).empty()) << TString(text);
}

TEST(XMLLookupTable, IgnoresWhatIsInsideTheElement)
{
    EXPECT_EQ(XmlUtils::UnpackStringLookupTableFromXML(
                  u"\n<pack a='1'>text<pack a='2'/><x b='3'/></pack>"),
              (Map{{u"a", u"1"}}));
}

} // namespace
