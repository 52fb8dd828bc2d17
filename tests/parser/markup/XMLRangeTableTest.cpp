#include <kescorexml/XMLRangeTable.h>

#include "support/Assertions.h"
#include "support/RandomBytes.h"
#include "support/RangeModel.h"
#include "support/Repeat.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace {

using RangeModel::Answer;
using RangeModel::Ask;
using RangeModel::c_none;

TEST(XMLRangeTable, NumbersItsKinds)
{
    EXPECT_EQ(static_cast<std::uint32_t>(XMLRangeType::CData), 0U);
    EXPECT_EQ(static_cast<std::uint32_t>(XMLRangeType::Comment), 1U);
    EXPECT_EQ(static_cast<std::uint32_t>(XMLRangeType::Declaration), 2U);
    EXPECT_EQ(static_cast<std::uint32_t>(XMLRangeType::None), 0xFFFFFFFFU);
}

TEST(XMLRangeTable, HasNoRangesByDefault)
{
    XMLRangeTable table;
    EXPECT_EQ(Ask(table, 0), c_none);
    EXPECT_EQ(Ask(table, 1000), c_none);
    XMLRangeTable ofNothing{std::string()};
    EXPECT_EQ(Ask(ofNothing, 0), c_none);
}

TEST(XMLRangeTable, EndsARangeBehindItsTerminator)
{
    XMLRangeTable table("a<!-- x -->b");
    EXPECT_EQ(Ask(table, 0), c_none);
    EXPECT_EQ(Ask(table, 1), (Answer{XMLRangeType::Comment, 11}));
    EXPECT_EQ(Ask(table, 10), (Answer{XMLRangeType::Comment, 11}));
    EXPECT_EQ(Ask(table, 11), c_none);
    EXPECT_EQ(Ask(table, 1000), c_none);
}

TEST(XMLRangeTable, RunsToTheEndWithoutTerminator)
{
    XMLRangeTable table("<![CDATA[ ]] > -->");
    EXPECT_EQ(Ask(table, 17), (Answer{XMLRangeType::CData, 18}));
    EXPECT_EQ(Ask(table, 18), c_none);
}

TEST(XMLRangeTable, EndsADeclarationAtItsFirstBrace)
{
    XMLRangeTable table("<!DOCTYPE r><!ENTITY a '>'>");
    EXPECT_EQ(Ask(table, 0), (Answer{XMLRangeType::Declaration, 12}));
    EXPECT_EQ(Ask(table, 12), (Answer{XMLRangeType::Declaration, 25}));
    EXPECT_EQ(Ask(table, 25), c_none);
}

TEST(XMLRangeTable, TakesOtherSectionsForDeclarations)
{
    XMLRangeTable table("<![INCLUDE[>]]>");
    EXPECT_EQ(Ask(table, 0), (Answer{XMLRangeType::Declaration, 12}));
}

TEST(XMLRangeTable, KnowsNoQuotes)
{
    XMLRangeTable table("<a b='<!--'>-->");
    EXPECT_EQ(Ask(table, 6), (Answer{XMLRangeType::Comment, 15}));
}

TEST(XMLRangeTable, HasNoRangesInATextThatBeginsWithAnExclamationMark)
{
    XMLRangeTable table("!<a>");
    EXPECT_EQ(Ask(table, 0), c_none);
    EXPECT_EQ(Ask(table, 3), c_none);
    XMLRangeTable withMore("!<!-- x -->");
    EXPECT_EQ(Ask(withMore, 2), c_none);
}

TEST(XMLRangeTable, MayBeAskedForAPositionAgainButNotForOneBefore)
{
    XMLRangeTable table("a<!-- x -->b");
    EXPECT_EQ(Ask(table, 6), (Answer{XMLRangeType::Comment, 11}));
    EXPECT_EQ(Ask(table, 6), (Answer{XMLRangeType::Comment, 11}));
    ExpectAssertion([&] { Ask(table, 5); }, u"XMLRangeTable", 0,
                    u"GetRangeTypeAt must be called with increasing positions", u"1A238B43");
    EXPECT_EQ(Ask(table, 6), (Answer{XMLRangeType::Comment, 11}));
}

TEST(XMLRangeTable, MindsTheOrderOfPositionsOutsideOfItsRangesToo)
{
    // Without ranges, before the first, between two and behind the last.
    const auto expectOrder = [](const std::string& xml, std::size_t position) {
        XMLRangeTable table(xml);
        EXPECT_EQ(Ask(table, position), c_none) << xml;
        EXPECT_EQ(Ask(table, position), c_none) << xml;
        ExpectAssertion([&] { Ask(table, position - 1); }, u"XMLRangeTable", 0,
                        u"GetRangeTypeAt must be called with increasing positions", u"1A238B43");
        EXPECT_EQ(Ask(table, position), c_none) << xml;
    };
    expectOrder("", 7);
    expectOrder("text", 2);
    expectOrder("text", 100);
    expectOrder("text<!-- x -->", 2);
    expectOrder("<!a>text<!b>", 6);
    expectOrder("<!-- x -->text", 12);
    expectOrder("<!-- x -->text", 1000);
    XMLRangeTable empty;
    EXPECT_EQ(Ask(empty, 5), c_none);
    ExpectAssertion([&] { Ask(empty, 4); }, u"XMLRangeTable", 0,
                    u"GetRangeTypeAt must be called with increasing positions", u"1A238B43");
}

TEST(XMLRangeTable, CopiesWithItsPlaceInTheText)
{
    XMLRangeTable table("a<!-- x -->b<!c>");
    Ask(table, 6);
    XMLRangeTable copy(table);
    XMLRangeTable assigned;
    assigned = table;
    EXPECT_EQ(Ask(table, 12), (Answer{XMLRangeType::Declaration, 16}));
    for (XMLRangeTable* other : {&copy, &assigned}) {
        ExpectAssertion([&] { Ask(*other, 5); }, u"XMLRangeTable", 0,
                        u"GetRangeTypeAt must be called with increasing positions", u"1A238B43");
        EXPECT_EQ(Ask(*other, 6), (Answer{XMLRangeType::Comment, 11}));
        EXPECT_EQ(Ask(*other, 15), (Answer{XMLRangeType::Declaration, 16}));
    }
}

TEST(XMLRangeTable, MovesAndLeavesNothingToCopy)
{
    XMLRangeTable table("<!-- x -->");
    XMLRangeTable moved(std::move(table));
    EXPECT_EQ(Ask(moved, 0), (Answer{XMLRangeType::Comment, 10}));
    ExpectAssertion([&] { XMLRangeTable copy(table); }, u"XMLRangeTable", 0,
                    u"other.m_pImpl != nullptr", u"7DE85DF8");
    ExpectAssertion([&] { moved = table; }, u"XMLRangeTable", 0, u"other.m_pImpl != nullptr",
                    u"9D698885");
    EXPECT_EQ(Ask(moved, 1), (Answer{XMLRangeType::Comment, 10}));
    table = std::move(moved);
    EXPECT_EQ(Ask(table, 2), (Answer{XMLRangeType::Comment, 10}));
    const XMLRangeTable& same = table;
    table = same;
    EXPECT_EQ(Ask(table, 3), (Answer{XMLRangeType::Comment, 10}));
}

TEST(XMLRangeTable, AnswersAsAModelDoes)
{
    RandomBytes random(1);
    for (int round = 0; round < 40000; ++round) {
        const std::string xml =
            round % 2 == 0 ? random.Of("<>!-[]a", 60)
                           : random.Join({"<!", "<!--", "-->", "<![CDATA[", "]]>", ">", "!", "-",
                                          "]", "text that is longer than a register "},
                                         14);
        const std::vector<Answer> model = RangeModel::ListAnswers(xml);
        XMLRangeTable table(xml);
        for (std::size_t i = 0; i < model.size(); i += 1 + random.Below(4))
            ASSERT_EQ(Ask(table, i), model[i]) << xml << " at " << i;
    }
}

TEST(XMLRangeTable, WalksAMillionRangesInLinearTime)
{
    const std::string xml = Repeat("<!>!!", 1'000'000);
    XMLRangeTable table(xml);
    std::size_t inside = 0;
    for (std::size_t i = 0; i < xml.size(); ++i)
        inside += Ask(table, i) != c_none;
    EXPECT_EQ(inside, 3'000'000U);
    XMLRangeTable unclosed(Repeat("!", 5'000'000) + "<!--" + Repeat("-", 5'000'000));
    EXPECT_EQ(Ask(unclosed, 9'000'000), c_none);
    XMLRangeTable comment(Repeat("<!--", 1) + Repeat("-", 5'000'000));
    EXPECT_EQ(Ask(comment, 5'000'000), (Answer{XMLRangeType::Comment, 5'000'004}));
}

} // namespace
