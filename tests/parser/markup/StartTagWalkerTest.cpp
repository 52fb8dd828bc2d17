#include "markup/StartTagWalker.h"

#include "support/GuardedString.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <string_view>

using XmlUtils::StringRange;

TEST(StartTagWalker, PassesTheInternalSubsetOfADocumentType)
{
    const std::string xml =
        "<!DOCTYPE a [<!ELEMENT b (c)> <d> '] <e>' <!-- ] <f> --> <?p ] <g>?>]><a b='c'>";
    const std::size_t tag = xml.find("<a ");
    StartTagWalker walker(xml);
    EXPECT_EQ(walker.GetStartTagAround(xml.find("<d>") + 1), StringRange());
    EXPECT_EQ(walker.GetStartTagAround(tag + 3), (StringRange{tag, 9}));
    EXPECT_EQ(walker.GetStartTagAround(tag + 6), StringRange());
    EXPECT_EQ(walker.GetRootTag(), (StringRange{tag, 9}));
}

TEST(StartTagWalker, ReadsNothingBehindTheText)
{
    constexpr std::string_view c_text = "<a/><";
    const GuardedBytes xml(c_text.size(), GuardedBytes::Place::End);
    std::copy(c_text.begin(), c_text.end(), xml.Get());
    StartTagWalker walker({xml.Get(), c_text.size()});
    EXPECT_EQ(walker.GetStartTagAround(1), (StringRange{0, 4}));
    EXPECT_EQ(walker.GetStartTagAround(4), StringRange());
}

TEST(StartTagWalker, TakesTheDashesThatOpenACommentForNoEndOfIt)
{
    for (const char* const comment : {"<!--> <b c='d'> -->", "<!---> <b c='d'> -->"}) {
        for (const bool isInSubset : {false, true}) {
            const std::string xml = isInSubset ? std::string("<!DOCTYPE a [") + comment + "]><a>"
                                               : comment + std::string("<a>");
            StartTagWalker walker(xml);
            EXPECT_EQ(walker.GetStartTagAround(xml.find("c=")), StringRange());
            EXPECT_EQ(walker.GetStartTagAround(xml.find("<a>") + 1),
                      (StringRange{xml.find("<a>"), 3}));
        }
    }
}
