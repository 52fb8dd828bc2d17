#include "markup/StartTagWalker.h"

#include <gtest/gtest.h>

#include <string>

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
