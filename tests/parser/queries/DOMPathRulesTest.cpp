#include <kescorexml/DOM.h>
#include <kescorexml/DOMPath.h>

#include "support/PathModel.h"
#include "support/RandomNameTree.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <vector>

// Paths as the rules have them, which PathModel follows step by step.

namespace {

TString MakePath(RandomNameTree& random, int tokens)
{
    static const std::vector<TString> choices{u"", u"", u"*", u"a", u"b", u"a"};
    TString path;
    for (int i = 0; i < tokens; ++i) {
        if (i > 0)
            path += u"/";
        path += random.Pick(choices);
    }
    return path;
}

/// All ways to ask give what the model gives.
void ExpectAgreement(DOMElement& start, const TString& path)
{
    const std::vector<const DOMElement*> expected = PathModel(start, path).Matches();
    const DOMElement& constant = start;
    ASSERT_EQ(DOMPath::GetAll(constant, path), expected) << path;
    const std::vector<DOMElement*> mutableMatches = DOMPath::GetAll(start, path);
    ASSERT_TRUE(
        std::equal(mutableMatches.begin(), mutableMatches.end(), expected.begin(), expected.end()))
        << path;
    const DOMElement* first = expected.empty() ? nullptr : expected.front();
    ASSERT_EQ(DOMPath::GetFirst(start, path), first) << path;
    ASSERT_EQ(DOMPath::GetFirst(constant, path), first) << path;
    std::vector<const DOMElement*> walked;
    for (DOMElement& match : DOMPath::Walk(start, path))
        walked.push_back(&match);
    ASSERT_EQ(walked, expected) << path;
}

} // namespace

TEST(DOMPath, AgreesWithTheRulesOnRandomTreesAndPaths)
{
    RandomNameTree random(20240);
    std::size_t matches = 0;
    for (int round = 0; round < 6000; ++round) {
        const auto tree = random.Make({u"a", u"b", u"*", u""}, 5, 4);
        const TString path = MakePath(random, 1 + random.Below(7));
        ASSERT_NO_FATAL_FAILURE(ExpectAgreement(*tree, path));
        matches += DOMPath::GetAll(*tree, path).size();
    }
    EXPECT_GT(matches, 4000U) << "the paths match too little for this test to say much";
}

TEST(DOMPath, AgreesWithTheRulesFromElementsInsideADocument)
{
    RandomNameTree random(99);
    std::size_t matches = 0;
    for (int round = 0; round < 2000; ++round) {
        DOM dom;
        dom.GetRoot()->AppendChild(random.Make({u"a", u"b"}, 4, 3));
        const auto all = DOMPath::GetAll(*dom.GetDocumentRoot(), u"//*");
        DOMElement& start =
            *all[static_cast<std::size_t>(random.Below(static_cast<int>(all.size())))];
        const TString path = TString(u"/") + MakePath(random, 1 + random.Below(4));
        ASSERT_NO_FATAL_FAILURE(ExpectAgreement(start, path));
        matches += DOMPath::GetAll(start, path).size();
    }
    EXPECT_GT(matches, 1000U);
}

TEST(DOMPath, AgreesWithTheRulesOnPathsOfManySteps)
{
    RandomNameTree random(5);
    std::size_t matches = 0;
    for (int round = 0; round < 60; ++round) {
        // Deep and narrow, so that more steps than fit into a word have something to match.
        auto top = std::make_unique<DOMElement>(u"a");
        DOMElement* deepest = top.get();
        for (int level = 0; level < 150; ++level) {
            for (int side = random.Below(2); side > 0; --side)
                deepest->AppendChild(random.Make({u"a", u"b"}, 2, 2));
            deepest = deepest->AddNewChild(random.Below(4) == 0 ? u"b" : u"a");
        }
        for (const int tokens : {62, 63, 64, 65, 100, 130}) {
            TString path;
            for (int i = 0; i < tokens; ++i) {
                static const std::vector<TString> choices{u"*", u"*", u"*", u"*", u"", u"a"};
                path += random.Pick(choices);
                path += u"/";
            }
            path += u"a";
            ASSERT_NO_FATAL_FAILURE(ExpectAgreement(*top, path));
            matches += DOMPath::GetAll(*top, path).size();
        }
    }
    EXPECT_GT(matches, 300U);
}

TEST(DOMPath, AgreesWithTheRulesOnLongRunsOfSeparators)
{
    RandomNameTree random(17);
    for (int separators = 1; separators < 140; separators += 3) {
        DOMElement start(u"a");
        for (int i = 0; i < 150; ++i)
            start.AppendChild(random.Make({u"a", u"b"}, 2, 2));
        const TString path = TString(u"a") + TString(separators, u'/') + u"b";
        ASSERT_NO_FATAL_FAILURE(ExpectAgreement(start, path));
    }
}

TEST(DOMPath, AgreesWithTheRulesWhereStepsThatMayComeNextLieFarApart)
{
    RandomNameTree random(31);
    std::size_t matches = 0;
    for (int round = 0; round < 6; ++round) {
        // The deep step in front looks for a rare name, so that ways that have come far and such as
        // have just begun are under way together.
        auto top = std::make_unique<DOMElement>(u"b");
        DOMElement* deepest = top.get();
        for (int level = 0; level < 330; ++level) {
            if (random.Below(4) == 0)
                deepest->AppendChild(random.Make({u"a", u"b"}, 2, 2));
            deepest = deepest->AddNewChild(random.Below(90) == 0 ? u"b" : u"a");
        }
        for (const int tokens : {126, 127, 128, 129, 190, 191, 192, 193, 300}) {
            TString path(u"//b");
            for (int i = 0; i < tokens; ++i)
                path += random.Below(100) == 0 ? u"/" : u"/*";
            path += u"/a";
            ASSERT_NO_FATAL_FAILURE(ExpectAgreement(*top, path));
            matches += DOMPath::GetAll(*top, path).size();
        }
    }
    EXPECT_GT(matches, 100U);
}
