#include "markup/RootTagFinder.h"

#include "support/RandomBytes.h"
#include "support/ScannerModel.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using XmlUtils::StringRange;

TEST(RootTagFinder, AnswersForEveryHeadAsForTheWholeText)
{
    RandomBytes random(1);
    int found = 0;
    for (int round = 0; round < 30000; ++round) {
        const std::string text =
            round % 2 == 0 ? random.Of("<>!-[]?'\":=/a \n&", 30)
                           : random.Join({"<!--", "-->", "<!-", "<![", "]]", "]]>", "<?", "?>",
                                          "<!", "<", ">", "<r", "'", "\"", "-", "?"},
                                         10);
        RootTagFinder finder;
        std::string head;
        std::size_t fed = 0;
        while (fed < text.size()) {
            const std::size_t chunk = 1 + random.Below(3);
            head += text.substr(fed, chunk);
            fed += chunk;
            const StringRange tag = finder.Feed(head);
            ASSERT_EQ(tag, ScannerModel::RootTag(head)) << text << " up to " << head;
            found += tag.start != std::string::npos;
        }
    }
    EXPECT_GT(found, 1000);
}

TEST(RootTagFinder, GoesOnInsideATerminator)
{
    RootTagFinder finder;
    EXPECT_EQ(finder.Feed("<!-"), StringRange());
    EXPECT_EQ(finder.Feed("<!-- <a> --"), StringRange());
    EXPECT_EQ(finder.Feed("<!-- <a> --><"), StringRange());
    EXPECT_EQ(finder.Feed("<!-- <a> --><r b='"), StringRange());
    EXPECT_EQ(finder.Feed("<!-- <a> --><r b='>"), StringRange());
    EXPECT_EQ(finder.Feed("<!-- <a> --><r b='>'>"), (StringRange{12, 9}));
    EXPECT_EQ(finder.Feed("<!-- <a> --><r b='>'><s>"), (StringRange{12, 9}));
}

/// Feeds `text` byte by byte; reading each head from its start would take 10^12 steps.
void FeedByByte(const std::string& text, StringRange expected)
{
    RootTagFinder finder;
    std::string head;
    head.reserve(text.size());
    for (const char c : text) {
        ASSERT_EQ(finder.Feed(head), StringRange());
        head += c;
    }
    EXPECT_EQ(finder.Feed(head), expected);
}

TEST(RootTagFinder, ReadsAMillionHeadsInLinearTime)
{
    const std::string blanks(2'000'000, ' ');
    FeedByByte(blanks + "<r>", {blanks.size(), 3});
    FeedByByte("<!--" + blanks + "--><r>", {blanks.size() + 7, 3});
    FeedByByte("<r a='" + std::string(2'000'000, '>') + "'>", {0, 2'000'008});
    FeedByByte("<r" + blanks + ">", {0, 2'000'003});
}

} // namespace
