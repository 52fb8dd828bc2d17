#include <kescorexml/DOM.h>
#include <kescorexml/DOMPath.h>
#include <kescorexml/DOMPathCanopy.h>

#include "support/RandomNameTree.h"
#include "support/SmallStack.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <memory>
#include <type_traits>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr unsigned c_levels = 1024;

using Matches = std::vector<const DOMElement*>;

/// The two searches, written down as plainly as possible.
void SearchWithin(Matches& results, const DOMElement& element, const TString& name, unsigned depth)
{
    if (depth + 1 > c_levels)
        return;
    for (const auto& child : element.GetChildren()) {
        if (child->GetName() != name)
            continue;
        results.push_back(child.get());
        SearchWithin(results, *child, name, depth + 1);
    }
}

void SearchUnderneath(Matches& results, const DOMElement& element, const TString& name,
                      unsigned depth)
{
    if (depth + 1 > c_levels)
        return;
    for (const auto& child : element.GetChildren()) {
        if (child->GetName() == element.GetName())
            SearchUnderneath(results, *child, name, depth + 1);
        else if (child->GetName() == name || name == u"*")
            results.push_back(child.get());
    }
}

Matches ModelWithin(const DOMElement& start, const TString& canopyPath, const TString& name)
{
    Matches results;
    if (name == u"*")
        return results;
    for (const DOMElement* canopy : DOMPath::GetAll(start, canopyPath))
        SearchWithin(results, *canopy, name, 0);
    return results;
}

Matches ModelUnderneath(const DOMElement& start, const TString& canopyPath, const TString& path)
{
    Matches results;
    if (path.IsEmpty() || path.startsWith(u"/"))
        return results;
    Matches heads;
    for (const DOMElement* canopy : DOMPath::GetAll(start, canopyPath))
        SearchUnderneath(heads, *canopy, path.split(u'/').front(), 0);
    for (const DOMElement* head : heads) {
        for (const DOMElement* match : DOMPath::GetAll(*head, path))
            results.push_back(match);
    }
    return results;
}

template <typename T>
void ExpectSame(const std::vector<T*>& actual, const Matches& expected)
{
    EXPECT_TRUE(std::equal(actual.begin(), actual.end(), expected.begin(), expected.end()));
}

/// Three folders in one another, an item in each, an item inside the item of the first folder,
/// and a folder that is cut off from the canopy by another element.
class DOMPathCanopyTest : public testing::Test
{
protected:
    DOMPathCanopyTest() : root(u"root")
    {
        outer = root.AddNewChild(u"folder");
        item1 = outer->AddNewChild(u"item");
        part1 = item1->AddNewChild(u"part");
        item1->AddNewChild(u"item");
        middle = outer->AddNewChild(u"folder");
        item2 = middle->AddNewChild(u"item");
        inner = middle->AddNewChild(u"folder");
        item3 = inner->AddNewChild(u"item");
        part3 = item3->AddNewChild(u"part");
        other = outer->AddNewChild(u"other");
        other->AddNewChild(u"folder")->AddNewChild(u"item");
    }

    DOMElement root;
    DOMElement* outer;
    DOMElement* item1;
    DOMElement* part1;
    DOMElement* middle;
    DOMElement* item2;
    DOMElement* inner;
    DOMElement* item3;
    DOMElement* part3;
    DOMElement* other;
};

/// A chain of `levels` folders, an item in each but the first; `deepest` is the last folder.
std::unique_ptr<DOMElement> MakeFolders(unsigned levels, DOMElement** deepest)
{
    auto top = std::make_unique<DOMElement>(u"folder");
    *deepest = top.get();
    for (unsigned level = 1; level < levels; ++level) {
        *deepest = (*deepest)->AddNewChild(u"folder");
        (*deepest)->AddNewChild(u"item");
    }
    return top;
}

} // namespace

TEST_F(DOMPathCanopyTest, WithinYieldsTheUnbrokenChainParentsFirst)
{
    EXPECT_THAT(DOMPathCanopy::WithinCanopy(root, u"root/folder", u"folder"),
                ElementsAre(middle, inner));
    EXPECT_THAT(DOMPathCanopy::WithinCanopy(root, u"root", u"folder"),
                ElementsAre(outer, middle, inner));
    EXPECT_THAT(DOMPathCanopy::WithinCanopy(root, u"root", u"item"), IsEmpty());
}

TEST_F(DOMPathCanopyTest, WithinRefusesTheWildcard)
{
    DOMElement* starred = root.AddNewChild(u"*");
    EXPECT_THAT(DOMPathCanopy::WithinCanopy(root, u"root", u"*"), IsEmpty());
    EXPECT_THAT(DOMPathCanopy::UnderneathCanopy(root, u"root", u"*"), ElementsAre(outer, starred));
}

TEST_F(DOMPathCanopyTest, WithinListsNestedCanopiesOnceForEach)
{
    EXPECT_THAT(DOMPathCanopy::WithinCanopy(root, u"root//folder", u"folder"),
                ElementsAre(middle, inner, inner));
}

TEST_F(DOMPathCanopyTest, UnderneathYieldsTheItemsOfEveryLevelAndNothingInsideThem)
{
    EXPECT_THAT(DOMPathCanopy::UnderneathCanopy(root, u"root/folder", u"item"),
                ElementsAre(item1, item2, item3));
}

TEST_F(DOMPathCanopyTest, UnderneathGoesOnBelowTheHeads)
{
    EXPECT_THAT(DOMPathCanopy::UnderneathCanopy(root, u"root/folder", u"item/part"),
                ElementsAre(part1, part3));
    EXPECT_THAT(DOMPathCanopy::UnderneathCanopy(root, u"root/folder", u"*/part"),
                ElementsAre(part1, part3));
}

TEST_F(DOMPathCanopyTest, AHeadOfStarTakesEveryChildOutsideTheCanopy)
{
    EXPECT_THAT(DOMPathCanopy::UnderneathCanopy(root, u"root/folder", u"*"),
                ElementsAre(item1, item2, item3, other));
}

TEST_F(DOMPathCanopyTest, AHeadWithTheNameOfTheCanopyFindsNothing)
{
    EXPECT_THAT(DOMPathCanopy::UnderneathCanopy(root, u"root/folder", u"folder"), IsEmpty());
}

TEST_F(DOMPathCanopyTest, UnderneathRefusesEmptyPathsAndPathsThatBeginWithASeparator)
{
    // Would be the head if what stands before the separator were taken for a name.
    outer->AddNewChild(TString())->AddNewChild(u"item");
    for (const char16_t* path : {u"", u"/", u"/item", u"//item"})
        EXPECT_THAT(DOMPathCanopy::UnderneathCanopy(root, u"root/folder", path), IsEmpty());
}

TEST_F(DOMPathCanopyTest, AnAbsoluteCanopyPathStartsAtTheDocumentRoot)
{
    DOM dom;
    DOMElement* top = dom.GetRoot()->AppendChild(std::make_unique<DOMElement>(root));
    DOMElement& folder = top->GetChildren()[0];
    const auto within = DOMPathCanopy::WithinCanopy(root, u"root", u"folder");
    const auto underneath = DOMPathCanopy::UnderneathCanopy(root, u"root/folder", u"item");
    for (DOMElement* start : {dom.GetRoot(), top, &folder}) {
        ASSERT_EQ(DOMPathCanopy::WithinCanopy(*start, u"/root", u"folder").size(), within.size());
        EXPECT_EQ(DOMPathCanopy::WithinCanopy(*start, u"/root", u"folder").front(), &folder);
        EXPECT_EQ(DOMPathCanopy::UnderneathCanopy(*start, u"/root/folder", u"item").size(),
                  underneath.size());
        EXPECT_THAT(DOMPathCanopy::WithinCanopy(*start, u"/none", u"folder"), IsEmpty());
    }
    EXPECT_THAT(DOMPathCanopy::WithinCanopy(root, u"/root", u"folder"), IsEmpty())
        << "a detached element has no document root";
}

TEST_F(DOMPathCanopyTest, ConstElementsGiveConstMatches)
{
    const DOMElement& constant = root;
    const auto within = DOMPathCanopy::WithinCanopy(constant, u"root", u"folder");
    const auto underneath = DOMPathCanopy::UnderneathCanopy(constant, u"root/folder", u"item");
    EXPECT_TRUE((std::is_same_v<decltype(within), const Matches>));
    EXPECT_TRUE((std::is_same_v<decltype(underneath), const Matches>));
    EXPECT_THAT(within, ElementsAre(outer, middle, inner));
    EXPECT_THAT(underneath, ElementsAre(item1, item2, item3));
}

TEST(DOMPathCanopy, AgreesWithTheRulesOnRandomTrees)
{
    RandomNameTree random(77);
    const std::vector<TString> paths{u"a", u"//a", u"a/*", u"//b", u"*", u"//*"};
    const std::vector<TString> names{u"a", u"b", u"*", u"none"};
    const std::vector<TString> queries{u"a",   u"b",  u"*",  u"b/a", u"*/a", u"b//a",
                                       u"*/*", u"a/", u"/a", u"",    u"*//b"};
    std::size_t found = 0;
    for (int round = 0; round < 1500; ++round) {
        const auto tree = random.Make({u"a", u"a", u"b"}, 6, 3);
        const DOMElement& constant = *tree;
        const TString& canopyPath = random.Pick(paths);
        const TString& name = random.Pick(names);
        const TString& query = random.Pick(queries);
        const Matches within = ModelWithin(*tree, canopyPath, name);
        ExpectSame(DOMPathCanopy::WithinCanopy(*tree, canopyPath, name), within);
        ExpectSame(DOMPathCanopy::WithinCanopy(constant, canopyPath, name), within);
        const Matches underneath = ModelUnderneath(*tree, canopyPath, query);
        ExpectSame(DOMPathCanopy::UnderneathCanopy(*tree, canopyPath, query), underneath);
        ExpectSame(DOMPathCanopy::UnderneathCanopy(constant, canopyPath, query), underneath);
        found += within.size() + underneath.size();
    }
    EXPECT_GT(found, 1500U);
}

TEST(DOMPathCanopy, LooksAtExactly1024LevelsBelowACanopy)
{
    DOMElement* deepest = nullptr;
    const auto exact = MakeFolders(c_levels + 1, &deepest);
    EXPECT_EQ(DOMPathCanopy::WithinCanopy(*exact, u"folder", u"folder").size(), c_levels);
    EXPECT_EQ(DOMPathCanopy::WithinCanopy(*exact, u"folder", u"folder").back(), deepest);
    // The item of the last folder is one level deeper.
    EXPECT_EQ(DOMPathCanopy::UnderneathCanopy(*exact, u"folder", u"item").size(), c_levels - 1);

    const auto deeper = MakeFolders(c_levels + 50, &deepest);
    EXPECT_EQ(DOMPathCanopy::WithinCanopy(*deeper, u"folder", u"folder").size(), c_levels);
    EXPECT_EQ(DOMPathCanopy::UnderneathCanopy(*deeper, u"folder", u"item").size(), c_levels - 1);
}

TEST(DOMPathCanopy, DeepCanopiesNeedNoStack)
{
    RunOnSmallStack([] {
        DOMElement* deepest = nullptr;
        const auto folders = MakeFolders(100'000, &deepest);
        EXPECT_EQ(DOMPathCanopy::WithinCanopy(*folders, u"folder", u"folder").size(), c_levels);
        EXPECT_EQ(DOMPathCanopy::UnderneathCanopy(*folders, u"folder", u"item").size(),
                  c_levels - 1);
    });
}
