#include <kescorexml/DOMElementSearch.h>

#include "support/TreeTesting.h"

#include <kescorexml/DOMElement.h>

#include <limits>
#include <random>

namespace {

/// The search by its definition, with recursion.
const DOMElement* FindRecursively(const DOMElement& element, const TString& name, int depth,
                                  const TString& attrName, const TString& attrValue)
{
    if (element.GetName() == name) {
        if (attrName.IsEmpty())
            return &element;
        const TString value = element.GetAttribute(attrName);
        if (attrValue.IsEmpty() ? !value.IsEmpty() : value == attrValue)
            return &element;
    }
    if (depth < 1)
        return nullptr;
    for (const auto& child : element.GetChildren()) {
        if (const DOMElement* found = FindRecursively(*child, name, depth - 1, attrName, attrValue))
            return found;
    }
    return nullptr;
}

DOMElement* FindByName(DOMElement& top, const TString& name, int depth)
{
    return DOMElementSearch::FindElement(top, name, depth, TString(), TString());
}

} // namespace

TEST(DOMElementSearch, FindChildWithoutAttributeGivesTheFirstWithThatName)
{
    const auto root = MakeTree("r(a,x(y),x)");
    EXPECT_EQ(DOMElementSearch::FindChild(*root, u"x", TString(), TString()),
              &root->GetChildren()[1]);
    EXPECT_EQ(DOMElementSearch::FindChild(*root, u"y", TString(), TString()), nullptr);
    EXPECT_EQ(DOMElementSearch::FindChild(*root, u"r", TString(), TString()), nullptr);
    EXPECT_EQ(DOMElementSearch::FindChild(std::as_const(*root), u"x", TString(), TString()),
              &root->GetChildren()[1]);
}

TEST(DOMElementSearch, FindChildComparesTheAttribute)
{
    const auto root = MakeTree("r(x,a,x,x)");
    root->GetChildren()[0].SetAttribute(u"k", u"1");
    root->GetChildren()[1].SetAttribute(u"k", u"2");
    root->GetChildren()[2].SetAttribute(u"k", u"2");
    root->GetChildren()[3].SetAttribute(u"k", u"2");
    EXPECT_EQ(DOMElementSearch::FindChild(*root, u"x", u"k", u"2"), &root->GetChildren()[2]);
    EXPECT_EQ(DOMElementSearch::FindChild(*root, u"x", u"k", u"3"), nullptr);
}

TEST(DOMElementSearch, FindChildWithEmptyValueMatchesAbsentAndEmptyAttributes)
{
    const auto root = MakeTree("r(x,x,x)");
    root->GetChildren()[0].SetAttribute(u"k", u"1");
    root->GetChildren()[2].SetAttribute(u"k", TString());
    EXPECT_EQ(DOMElementSearch::FindChild(*root, u"x", u"k", TString()), &root->GetChildren()[1]);
    root->RemoveChild(root->GetChildren()[1]);
    EXPECT_EQ(DOMElementSearch::FindChild(*root, u"x", u"k", TString()), &root->GetChildren()[1]);
    // A value is asked for that an absent attribute does not have.
    EXPECT_EQ(DOMElementSearch::FindChild(*root, u"x", TString(), u"v"), nullptr);
}

TEST(DOMElementSearch, FindElementAtDepthZeroLooksAtTheElementOnly)
{
    const auto root = MakeTree("x(x,y)");
    EXPECT_EQ(FindByName(*root, u"x", 0), root.get());
    EXPECT_EQ(FindByName(*root, u"y", 0), nullptr);
    EXPECT_EQ(FindByName(*root, u"x", -1), root.get());
    EXPECT_EQ(FindByName(*root, u"y", -1), nullptr);
    EXPECT_EQ(FindByName(*root, u"y", std::numeric_limits<int>::min()), nullptr);
}

TEST(DOMElementSearch, FindElementGoesNoDeeperThanAsked)
{
    const auto root = MakeTree("a(b(c(d)))");
    EXPECT_NE(FindByName(*root, u"b", 1), nullptr);
    EXPECT_EQ(FindByName(*root, u"c", 1), nullptr);
    EXPECT_NE(FindByName(*root, u"c", 2), nullptr);
    EXPECT_EQ(FindByName(*root, u"d", 2), nullptr);
    EXPECT_NE(FindByName(*root, u"d", std::numeric_limits<int>::max()), nullptr);
}

TEST(DOMElementSearch, FindElementIsDepthFirstInDocumentOrder)
{
    const auto root = MakeTree("r(a(b(x)),x)");
    EXPECT_EQ(FindByName(*root, u"x", 3),
              &root->GetChildren()[0].GetChildren()[0].GetChildren()[0]);
    EXPECT_EQ(FindByName(*root, u"x", 2), &root->GetChildren()[1]);
}

TEST(DOMElementSearch, FindElementWithEmptyValueSkipsMissingAndEmptyAttributes)
{
    const auto root = MakeTree("r(x,x,x,x)");
    root->GetChildren()[1].SetAttribute(u"k", TString());
    root->GetChildren()[2].SetAttribute(u"k", u"1");
    root->GetChildren()[3].SetAttribute(u"k", u"2");
    EXPECT_EQ(DOMElementSearch::FindElement(*root, u"x", 1, u"k", TString()),
              &root->GetChildren()[2]);
    EXPECT_EQ(DOMElementSearch::FindElement(std::as_const(*root), u"x", 1, u"k", u"2"),
              &root->GetChildren()[3]);
    EXPECT_EQ(DOMElementSearch::FindElement(*root, u"x", 1, u"k", u"3"), nullptr);
    EXPECT_EQ(DOMElementSearch::FindElement(*root, u"x", 1, TString(), u"ignored"),
              &root->GetChildren()[0]);
}

TEST(DOMElementSearch, FindElementGoesIntoAnElementWhoseAttributeDoesNotMatch)
{
    const auto root = MakeTree("x(x)");
    root->SetAttribute(u"k", u"1");
    root->GetChildren()[0].SetAttribute(u"k", u"2");
    EXPECT_EQ(DOMElementSearch::FindElement(*root, u"x", 1, u"k", u"2"), &root->GetChildren()[0]);
}

TEST(DOMElementSearch, AgreesWithTheRecursiveDefinitionOnRandomTrees)
{
    std::mt19937 random(11);
    const TString names[] = {u"a", u"b", u"c"};
    const TString values[] = {TString(), u"1", u"2"};
    for (int round = 0; round < 300; ++round) {
        DOMElement root(names[random() % 3]);
        std::vector<DOMElement*> all{&root};
        for (int i = 0; i < 20; ++i) {
            all.push_back(all[random() % all.size()]->AddNewChild(names[random() % 3]));
            if (random() % 2 == 0)
                all.back()->SetAttribute(u"k", values[random() % 3]);
        }
        for (int query = 0; query < 30; ++query) {
            const TString& name = names[random() % 3];
            const int depth = static_cast<int>(random() % 7) - 1;
            const TString attrName = random() % 3 == 0 ? TString() : TString(u"k");
            const TString& value = values[random() % 3];
            EXPECT_EQ(
                DOMElementSearch::FindElement(std::as_const(root), name, depth, attrName, value),
                FindRecursively(root, name, depth, attrName, value));
        }
    }
}
