#include <kescorexml/DOMElement.h>

#include "support/FailingAllocations.h"
#include "support/SmallStack.h"
#include "support/TreeTesting.h"

#include <kescorexml/DOMParser.h>

#include <random>
#include <string>

namespace {

constexpr int c_deep = 1'000'000;

void ExpectSameTexts(const DOMElement& a, const DOMElement& b)
{
    EXPECT_EQ(a.GetName(), b.GetName());
    EXPECT_EQ(a.GetText(), b.GetText());
    EXPECT_EQ(a.GetAttributes(), b.GetAttributes());
    ASSERT_EQ(a.GetChildren().size(), b.GetChildren().size());
    for (std::size_t i = 0; i < a.GetChildren().size(); ++i)
        ExpectSameTexts(a.GetChildren()[i], b.GetChildren()[i]);
}

std::unique_ptr<DOMElement> MakeFurnishedTree()
{
    auto root = MakeTree("r(a(b,c),d)");
    int line = 1;
    for (const char* name : {"r", "a", "b", "c", "d"}) {
        DOMElement& element = Find(*root, name);
        element.SetText(TString(u"text of ") + TString(name), true);
        element.SetAttribute(u"name", name);
        element.SetElementStartLocation(line, 1);
        element.SetElementEndLocation(line, 2);
        ++line;
    }
    return root;
}

void ExpectNoLocationsAndFlags(const DOMElement& element)
{
    EXPECT_EQ(element.GetStartLine(), 0);
    EXPECT_EQ(element.GetStartColumn(), 0);
    EXPECT_EQ(element.GetEndLine(), 0);
    EXPECT_EQ(element.GetEndColumn(), 0);
    EXPECT_FALSE(element.IsEncoded());
    for (const auto& child : element.GetChildren())
        ExpectNoLocationsAndFlags(*child);
}

DOMElement* MakeChain(DOMElement& top, int levels)
{
    DOMElement* last = &top;
    for (int i = 0; i < levels; ++i)
        last = last->AddNewChild(u"e");
    return last;
}

} // namespace

// Copies

TEST(DOMElementCopy, CopiesNamesTextsAttributesAndChildren)
{
    const auto root = MakeFurnishedTree();
    DOMElement copy(*root);
    ExpectSameTexts(copy, *root);
    ExpectNoLocationsAndFlags(copy);
    EXPECT_EQ(copy.GetParent(), nullptr);
    EXPECT_TRUE(copy.IsRootNode());
    EXPECT_EQ(copy.GetDOMManager(), nullptr);
    EXPECT_EQ(copy.GetChildren()[0].GetParent(), &copy);
    EXPECT_NE(&copy.GetChildren()[0], &root->GetChildren()[0]);
    EXPECT_EQ(root->GetStartLine(), 1);
}

TEST(DOMElementCopy, IsIndependentOfItsSource)
{
    auto root = MakeFurnishedTree();
    const DOMElement copy(*root);
    Find(*root, "c").SetText(u"changed");
    Find(*root, "c").SetAttribute(u"name", u"changed");
    root->RemoveChild(u"d");
    root.reset();
    EXPECT_EQ(Outline(copy), "r(a(b,c),d)");
    EXPECT_EQ(copy.GetChildren()[0].GetChildren()[1].GetText(), TString(u"text of c"));
    EXPECT_EQ(copy.GetChildren()[0].GetChildren()[1].GetAttribute(u"name"), TString(u"c"));
}

TEST(DOMElementCopy, IsAttachedToTheDocumentOfItsSourceWithCopiesOfTheDiagnostics)
{
    DOM dom;
    AddChildren(*dom.GetRoot(), "a(b),c");
    DOMElement& a = Find(dom, "a");
    AddError(a, "ea");
    AddError(Find(dom, "b"), "eb1");
    AddError(Find(dom, "b"), "eb2");
    AddWarning(Find(dom, "b"), "wb");
    AddError(Find(dom, "c"), "ec");
    DOMElement* copy = dom.GetRoot()->AppendChild(std::make_unique<DOMElement>(a));
    EXPECT_EQ(copy->GetDOMManager(), &dom);
    EXPECT_EQ(copy->GetChildren()[0].GetDOMManager(), &dom);
    std::list<TString> errors;
    copy->GetErrors(errors);
    EXPECT_EQ(JoinMessages(errors), "ea eb1 eb2");
    std::list<TString> warnings;
    copy->GetWarnings(warnings);
    EXPECT_EQ(JoinMessages(warnings), "wb");
    EXPECT_EQ(JoinErrors(dom), "ea eb1 eb2 ec ea eb1 eb2") << "the source keeps its own";
    copy->ClearErrors();
    EXPECT_TRUE(a.HasErrors());
}

TEST(DOMElementCopy, OfAnElementWithoutParentIsFineToo)
{
    DOM dom;
    dom.GetRoot()->AddNewChild(u"a");
    AddError(*dom.GetRoot(), "e");
    auto copy = std::make_unique<DOMElement>(*dom.GetRoot());
    EXPECT_EQ(Outline(*copy), "Document(a)");
    EXPECT_TRUE(copy->IsRootNode());
    EXPECT_EQ(JoinErrors(dom), "e");
    std::list<TString> errors;
    copy->GetErrors(errors);
    EXPECT_EQ(JoinMessages(errors), "e");
    dom.GetRoot()->AppendChild(std::move(copy));
    EXPECT_EQ(Outline(*dom.GetRoot()), "Document(a,Document(a))");
}

TEST(DOMElementCopy, OfARemovedElementHasNoParent)
{
    DOM dom;
    dom.GetRoot()->AddNewChild(u"a");
    const auto removed = dom.GetRoot()->RemoveChild(u"a");
    const DOMElement copy(*removed);
    EXPECT_EQ(copy.GetParent(), nullptr);
    EXPECT_TRUE(copy.IsRootNode());
    EXPECT_EQ(copy.GetDOMManager(), &dom);
}

TEST(DOMElementCopy, KeepsTheLoadFactorOfTheAttributes)
{
    DOMElement source(TString(u"a"));
    source.SetAttribute(u"k", u"v");
    source.GetAttributes().max_load_factor(0.25F);
    source.AddNewChild(u"b")->GetAttributes().max_load_factor(0.5F);
    const DOMElement copy(source);
    EXPECT_EQ(copy.GetAttributes().max_load_factor(), 0.25F);
    EXPECT_EQ(copy.GetChildren()[0].GetAttributes().max_load_factor(), 0.5F);
}

// Assignment

TEST(DOMElementCopy, AssignmentReplacesNameTextAttributesAndChildren)
{
    const auto source = MakeFurnishedTree();
    DOMElement target(TString(u"t"));
    AddChildren(target, "x(y),z");
    target.SetText(u"old", true);
    target.SetAttribute(u"old", u"1");
    target.SetElementStartLocation(7, 8);
    target.SetElementEndLocation(9, 10);
    EXPECT_EQ(&(target = *source), &target);
    ExpectSameTexts(target, *source);
    EXPECT_FALSE(target.IsEncoded());
    EXPECT_EQ(target.GetStartLine(), 7);
    EXPECT_EQ(target.GetStartColumn(), 8);
    EXPECT_EQ(target.GetEndLine(), 9);
    EXPECT_EQ(target.GetEndColumn(), 10);
    ExpectNoLocationsAndFlags(target.GetChildren()[0]);
    EXPECT_EQ(target.GetChildren()[0].GetParent(), &target);
    EXPECT_TRUE(source->IsEncoded());
}

TEST(DOMElementCopy, AssignmentToItselfChangesNothing)
{
    DOM dom;
    AddChildren(*dom.GetRoot(), "a(b)");
    DOMElement& a = Find(dom, "a");
    a.SetText(u"t", true);
    AddError(a, "e");
    const DOMElement* b = &a.GetChildren()[0];
    DOMElement& same = a;
    a = same;
    EXPECT_TRUE(a.IsEncoded());
    EXPECT_EQ(&a.GetChildren()[0], b);
    EXPECT_EQ(JoinErrors(dom), "e");
}

TEST(DOMElementCopy, AssignmentTakesTheLoadFactor)
{
    DOMElement source(TString(u"a"));
    source.SetAttribute(u"k", u"v");
    source.GetAttributes().max_load_factor(0.25F);
    DOMElement fresh(TString(u"b"));
    fresh = source;
    EXPECT_EQ(fresh.GetAttributes().max_load_factor(), 0.25F);
    DOMElement used(TString(u"c"));
    used.GetAttributes().max_load_factor(4.0F);
    used = source;
    EXPECT_EQ(used.GetAttributes().max_load_factor(), 0.25F);
    EXPECT_EQ(used.GetAttributes(), source.GetAttributes());
}

TEST(DOMElementCopy, AssignmentKeepsDocumentAndParent)
{
    DOM dom;
    DOM other;
    AddChildren(*dom.GetRoot(), "p(t)");
    AddChildren(*other.GetRoot(), "s(x)");
    DOMElement& target = Find(dom, "t");
    target = Find(other, "s");
    EXPECT_EQ(target.GetDOMManager(), &dom);
    EXPECT_EQ(target.GetParent(), &Find(dom, "p"));
    EXPECT_EQ(Find(dom, "x").GetDOMManager(), &dom);
    EXPECT_EQ(Outline(*dom.GetRoot()), "Document(p(s(x)))");
    EXPECT_EQ(Outline(*other.GetRoot()), "Document(s(x))");
}

TEST(DOMElementCopy, AssignmentCopiesDiagnosticsIntoTheTargetsDocument)
{
    DOM dom;
    DOM other;
    AddChildren(*dom.GetRoot(), "t(old)");
    AddChildren(*other.GetRoot(), "s(x)");
    AddError(Find(dom, "old"), "old");
    AddError(Find(other, "s"), "es");
    AddError(Find(other, "x"), "ex");
    AddWarning(Find(other, "x"), "wx");
    Find(dom, "t") = Find(other, "s");
    EXPECT_EQ(JoinErrors(dom), "es ex");
    EXPECT_EQ(JoinWarnings(dom), "wx");
    EXPECT_EQ(JoinErrors(other), "es ex");
    EXPECT_EQ(JoinWarnings(other), "wx");
}

TEST(DOMElementCopy, AssignmentKeepsDiagnosticsThatTheTargetHas)
{
    DOM dom;
    AddChildren(*dom.GetRoot(), "t,s");
    AddError(Find(dom, "t"), "own");
    AddError(Find(dom, "s"), "copied");
    AddWarning(Find(dom, "s"), "wcopied");
    DOMElement& t = Find(dom, "t");
    t = Find(dom, "s");
    std::list<TString> messages;
    t.GetErrors(messages);
    EXPECT_EQ(JoinMessages(messages), "own");
    messages.clear();
    t.GetWarnings(messages);
    EXPECT_EQ(JoinMessages(messages), "wcopied") << "errors and warnings are kept apart";
}

TEST(DOMElementCopy, AssignmentToADetachedElementLeavesDiagnosticsAlone)
{
    DOM dom;
    AddChildren(*dom.GetRoot(), "s(x)");
    AddError(Find(dom, "x"), "ex");
    {
        DOMElement target(TString(u"t"));
        target = Find(dom, "s");
        EXPECT_EQ(target.GetDOMManager(), nullptr);
        EXPECT_EQ(target.GetChildren()[0].GetDOMManager(), nullptr);
    }
    EXPECT_EQ(JoinErrors(dom), "ex");
}

TEST(DOMElementCopy, AssignmentFromADetachedElementErasesWhatTheOldChildrenHad)
{
    DOM dom;
    AddChildren(*dom.GetRoot(), "t(old)");
    AddError(Find(dom, "t"), "et");
    AddError(Find(dom, "old"), "old");
    Find(dom, "t") = *MakeTree("s(x)");
    EXPECT_EQ(JoinErrors(dom), "et");
    EXPECT_EQ(Find(dom, "x").GetDOMManager(), &dom);
}

TEST(DOMElementCopy, AssignmentFromADescendantEqualsACopyMadeBeforehand)
{
    const auto root = MakeFurnishedTree();
    DOMElement& a = Find(*root, "a");
    const DOMElement beforehand(Find(*root, "c"));
    a = Find(*root, "c");
    ExpectSameTexts(a, beforehand);
    EXPECT_EQ(Outline(*root), "r(c,d)");
    const DOMElement second(root->GetChildren()[0]);
    *root = root->GetChildren()[0];
    ExpectSameTexts(*root, second);
}

TEST(DOMElementCopy, AssignmentFromAnAncestorEqualsACopyMadeBeforehand)
{
    const auto root = MakeFurnishedTree();
    DOMElement& b = Find(*root, "b");
    const DOMElement beforehand(*root);
    b = *root;
    ExpectSameTexts(b, beforehand);
    EXPECT_EQ(Outline(*root), "r(a(r(a(b,c),d),c),d)");
    EXPECT_EQ(b.GetParent(), &Find(*root, "a"));
}

TEST(DOMElementCopy, AssignmentInsideADocumentCopiesDiagnosticsOfRelatives)
{
    DOM dom;
    AddChildren(*dom.GetRoot(), "a(b(c))");
    AddError(Find(dom, "b"), "eb");
    AddError(Find(dom, "c"), "ec");
    Find(dom, "a") = Find(dom, "b");
    EXPECT_EQ(Outline(*dom.GetRoot()), "Document(b(c))");
    EXPECT_EQ(JoinErrors(dom), "eb ec");
    Find(dom, "c") = Find(dom, "b");
    EXPECT_EQ(Outline(*dom.GetRoot()), "Document(b(b(c)))");
    EXPECT_EQ(JoinErrors(dom), "eb ec ec") << "the target keeps what it has";
}

// Equality

TEST(DOMElementCopy, EqualityComparesNameTextAttributesAndChildren)
{
    const auto make = [] {
        auto root = MakeTree("r(a(b),c)");
        Find(*root, "b").SetText(u"t");
        Find(*root, "b").SetAttribute(u"k", u"v");
        return root;
    };
    const auto one = make();
    const auto two = make();
    EXPECT_TRUE(*one == *two);
    EXPECT_FALSE(*one != *two);
    const auto expectDifferent = [&](const std::function<void(DOMElement&)>& change) {
        const auto changed = make();
        change(Find(*changed, "b"));
        EXPECT_TRUE(*one != *changed);
        EXPECT_TRUE(*changed != *one);
        EXPECT_FALSE(*one == *changed);
    };
    expectDifferent([](DOMElement& b) { b.SetName(u"x"); });
    expectDifferent([](DOMElement& b) { b.SetText(u"x"); });
    expectDifferent([](DOMElement& b) { b.SetAttribute(u"k", u"x"); });
    expectDifferent([](DOMElement& b) { b.SetAttribute(u"l", u"v"); });
    expectDifferent([](DOMElement& b) { b.RemoveAttribute(u"k"); });
    expectDifferent([](DOMElement& b) {
        b.RemoveAttribute(u"k");
        b.SetAttribute(u"l", u"v");
    });
    expectDifferent([](DOMElement& b) { b.AddNewChild(u"x"); });
    expectDifferent([](DOMElement& b) { b.GetParent()->AddNewChild(u"x"); });
    expectDifferent([](DOMElement& b) { b.GetParent()->RemoveChild(b); });
}

TEST(DOMElementCopy, EqualityIgnoresDocumentParentLocationAndFlag)
{
    DOM dom;
    AddChildren(*dom.GetRoot(), "p(a(b))");
    DOMElement& a = Find(dom, "a");
    const auto other = MakeTree("a(b)");
    EXPECT_TRUE(a == *other);
    a.SetElementStartLocation(1, 2);
    a.SetElementEndLocation(3, 4);
    a.SetEncoded(true);
    AddError(a, "e");
    EXPECT_TRUE(a == *other);
}

TEST(DOMElementCopy, EqualityIgnoresTheOrderOfAttributesButNotOfChildren)
{
    DOMElement one(TString(u"a"));
    DOMElement two(TString(u"a"));
    for (int i = 0; i < 40; ++i) {
        one.SetAttribute(TString::number(i), TString::number(i * i));
        two.SetAttribute(TString::number(39 - i), TString::number((39 - i) * (39 - i)));
    }
    EXPECT_TRUE(one == two);
    EXPECT_FALSE(*MakeTree("r(a,b)") == *MakeTree("r(b,a)"));
    EXPECT_TRUE(*MakeTree("r(a,b)") == *MakeTree("r(a,b)"));
}

TEST(DOMElementCopy, AnElementEqualsItself)
{
    const auto root = MakeFurnishedTree();
    EXPECT_TRUE(*root == *root);
    EXPECT_FALSE(*root != *root);
}

// Memory

TEST(DOMElementCopy, TakesFewAllocationsForManyElements)
{
    std::string text = "<a>";
    for (int i = 0; i < 5000; ++i)
        text += "<b k='v'>text<c/></b>";
    const std::unique_ptr<DOM> dom = DOMParser().ParseXmlString(text + "</a>", TString());
    DOM copy;
    const std::ptrdiff_t before = CountLiveAllocations();
    copy.DeepCopy(*dom);
    EXPECT_LT(CountLiveAllocations() - before, 100);
    EXPECT_TRUE(copy == *dom);
}

TEST(DOMElementCopy, OfAFewElementsHasOneAllocationForThem)
{
    auto root = MakeTree("r(a(b,c),d)");
    DOMElement copy{TString()};
    const std::ptrdiff_t before = CountLiveAllocations();
    copy = *root;
    EXPECT_LE(CountLiveAllocations() - before, 1);
    EXPECT_EQ(Outline(copy), "r(a(b,c),d)");
}

TEST(DOMElementCopy, OutlivesWhatItSharesTextsAndAttributesWith)
{
    DOM copy;
    std::unique_ptr<DOMElement> kept;
    {
        std::string text = "<a>";
        for (int i = 0; i < 3000; ++i)
            text += "<b k='value'>text<c>" + std::to_string(i) + "</c></b>";
        const std::unique_ptr<DOM> dom = DOMParser().ParseXmlString(text + "</a>", TString());
        // One that did not come from a parse, and what it is named after.
        DOMElement* const made = dom->GetDocumentRoot()->AddNewChild(u"made", nullptr);
        made->SetText(dom->GetDocumentRoot()->GetChildren()[0].GetText());
        copy.DeepCopy(*dom);
        DOM().DeepCopy(*dom);
        kept = copy.GetDocumentRoot()->RemoveChild(u"b");
    }
    EXPECT_EQ(kept->GetAttribute(u"k"), TString(u"value"));
    EXPECT_EQ(kept->GetChildren()[0].GetText(), TString(u"0"));
    const auto children = copy.GetDocumentRoot()->GetChildren();
    ASSERT_EQ(children.size(), 3000U);
    for (std::size_t i = 0; i + 1 < children.size(); ++i) {
        EXPECT_EQ(children[i].GetText(), TString(u"text"));
        EXPECT_EQ(children[i].GetAttribute(u"k"), TString(u"value"));
        EXPECT_EQ(children[i].GetChildren()[0].GetText().toInt(), static_cast<int>(i) + 1);
    }
    EXPECT_EQ(children[2999].GetText(), TString(u"text"));
}

// Depth

TEST(DOMElementCopy, DepthCostsNoStack)
{
    RunOnSmallStack([] {
        DOM dom;
        DOMElement* last = MakeChain(*dom.GetRoot(), c_deep);
        AddError(*last, "deep");
        const DOMElement copy(*dom.GetRoot());
        EXPECT_TRUE(copy == *dom.GetRoot());
        last->SetText(u"different");
        EXPECT_TRUE(copy != *dom.GetRoot());

        DOM other;
        *other.GetRoot() = *dom.GetRoot();
        EXPECT_TRUE(other == dom);
        EXPECT_EQ(JoinErrors(other), "deep");
        other.DeepCopy(dom);
        EXPECT_TRUE(other == dom);
        EXPECT_EQ(JoinErrors(other), "deep");
        *dom.GetRoot() = *dom.GetDocumentRoot();
        EXPECT_TRUE(other != dom);
    });
}
